// How a line gets to its file
//
// Nearly always in one system call, past the buffer: nothing waits, and the line is written as it is. Only what the system
// refuses goes into the buffer. From then on lines queue there in their order, each call tries again from the front, and
// what finds no room in the buffer is dropped and counted. The count stands in their place, before the next line that finds
// room.
//
// A file that several processes write, under their common lock, needs more care:
// - A writer that is killed within its system call leaves part of a line. The next one to write looks at the byte at the
//   end of the file, unless the file is exactly as long as it has left it itself, and ends that line first.
// - If the disk has room for part of a line only, the others would write behind that part. So it is taken back, and the
//   whole line waits.
// A file without a lock is left as it is: the rest of the line waits and completes it. Taking something back from a file
// into which others may be writing could cost them a line.
#include <base/lgfile_p.h>

#include <base/lgline_p.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <streambuf>

namespace Vn
{

class LgFile::Buffer : public std::streambuf
{
public:
    explicit Buffer(bool isShared) : _isShared(isShared) { setp(_waiting, _waiting + sizeof _waiting); }

    ~Buffer() override
    {
        // Not into a shared file: this thread may not hold the lock now, and would write into another process's line.
        if (!_isShared)
            send();
    }

    System::LogOutput& getOutput() { return _output; }

    /// False if something was left unwritten.
    bool writeLines(std::string_view text, std::int32_t messages);

    /// Writes what waits. False if the system doesn't take all of it.
    bool send();

    /// Lines that were dropped and not reported yet.
    std::int32_t getDropped() const { return _dropped; }
    void clearDropped() { _dropped = 0; }

    /// Bytes that the buffer can still take.
    std::size_t getRoom() const { return static_cast<std::size_t>(epptr() - pptr()); }

protected:
    /// For those who write to the stream and not by lines: the buffer is full.
    int_type overflow(int_type character) override
    {
        if (!send())
            return traits_type::eof();
        if (!traits_type::eq_int_type(character, traits_type::eof()))
            sputc(traits_type::to_char_type(character));
        return traits_type::not_eof(character);
    }

    int sync() override { return send() ? 0 : -1; }

    /// Tells the place, for tellp(); a log isn't written anywhere but at its end.
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override
    {
        const std::optional<std::uint64_t> size = _output.getSize();
        if (offset != 0 || from != std::ios_base::cur || !size)
            return pos_type(off_type(-1));
        return pos_type(static_cast<off_type>(*size) + (pptr() - pbase()));
    }

private:
    bool endTornLine();
    std::size_t write(std::string_view text);
    void bufferOrDrop(std::string_view text, std::int32_t messages);

    System::LogOutput _output;
    const bool _isShared;
    std::optional<std::uint64_t> _ownEnd;  ///< the file's size behind our last write
    std::int32_t _dropped = 0;             ///< messages
    char _waiting[65536];                  ///< the longest line twice; read and written by the stream's pointers
};

/// Ends the line that a killed writer has left, so that the next byte begins a line. False if the system refuses. The size is
/// asked first: as a rule it is the one that our own last write left, and the end needs no look.
bool LgFile::Buffer::endTornLine()
{
    const std::optional<std::uint64_t> size = _output.getSize();
    if (!size || *size == 0 || size == _ownEnd || _output.endsLineAt(*size))
        return true;
    return _output.append("\n") == 1;
}

/// Returns how much of `text` is in the file. In a shared file that is whole lines: what the system took of a further line is
/// removed again, as other processes would write behind it. A pipe or a device has no size: nothing is looked at there, and
/// nothing taken back.
std::size_t LgFile::Buffer::write(std::string_view text)
{
    if (_isShared && !endTornLine())
        return 0;
    std::size_t done = _output.append(text);
    if (_isShared && done != text.size()) {
        const std::size_t wholeLines = text.substr(0, done).rfind('\n') + 1;
        if (_output.removeFromEnd(done - wholeLines))
            done = wholeLines;
    }
    if (_isShared)
        _ownEnd = _output.getSize();
    return done;
}

/// What the system refuses stays at the front of the buffer, in its order.
bool LgFile::Buffer::send()
{
    const std::size_t size = static_cast<std::size_t>(pptr() - pbase());
    if (size == 0)
        return true;
    const std::size_t left = size - write({pbase(), size});
    std::memmove(_waiting, pptr() - left, left);
    setp(_waiting, _waiting + sizeof _waiting);
    pbump(static_cast<int>(left));
    return left == 0;
}

/// All or nothing. Once a line was dropped, later ones are dropped as well until reportDropped() has found room: the count
/// stands in the place of all of them, so it must come before the next line.
void LgFile::Buffer::bufferOrDrop(std::string_view text, std::int32_t messages)
{
    if (_dropped == 0 && text.size() <= getRoom()) {
        std::memcpy(pptr(), text.data(), text.size());
        pbump(static_cast<int>(text.size()));
    } else {
        _dropped += std::min(messages, std::numeric_limits<std::int32_t>::max() - _dropped);
    }
}

/// Nothing overtakes what waits: it is sent first, and the text waits behind it if that fails.
bool LgFile::Buffer::writeLines(std::string_view text, std::int32_t messages)
{
    if (_dropped != 0 || !send()) {
        bufferOrDrop(text, messages);
        return false;
    }
    const std::size_t done = write(text);
    if (done == text.size())
        return true;
    bufferOrDrop(text.substr(done), messages);
    return false;
}

LgFile::LgFile(char const* path, Origin origin, bool isShared)
    : std::ostream(nullptr), _buffer(std::make_unique<Buffer>(isShared))
{
    rdbuf(_buffer.get());
    if (!_buffer->getOutput().open(path, origin))
        setstate(failbit);
}

LgFile::~LgFile() = default;

bool LgFile::isOpen() const
{
    return _buffer->getOutput().isOpen();
}

void LgFile::beginAnew()
{
    if (isOpen() && !_buffer->getOutput().makeEmpty())
        setstate(failbit);
}

std::optional<System::FileIdentity> LgFile::getIdentity() const
{
    if (!isOpen())
        return {};
    return _buffer->getOutput().getIdentity();
}

/// A stream that has failed for another reason than a refused write stays failed: it could not be opened, or the program has
/// said so.
/// A file that can't be opened or emptied has failed without being bad, and stays so.
void LgFile::tryAgain()
{
    // Whoever writes to a bad stream sets failbit as well: a program that writes here itself, for one.
    if (bad() && isOpen())
        clear(rdstate() & ~(badbit | failbit));
}

void LgFile::writeLines(std::string_view text, std::int32_t messages)
{
    tryAgain();
    if (rdbuf() != _buffer.get())  // a program has put another one in its place
        write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    else if (good() && !_buffer->writeLines(text, messages))
        setstate(badbit);
}

/// Sends what waits first, which may make the room. The line of the count may wait in the buffer itself.
void LgFile::reportDropped(std::uint64_t ticks, unsigned long threadId, bool hasPrefix, std::size_t nextSize)
{
    tryAgain();
    if (_buffer->getDropped() == 0 || !good())
        return;
    _buffer->send();
    LgLine line;
    if (hasPrefix)
        line.putPrefix(ticks, threadId, LgTypes::Informational);
    line.putOverflow(_buffer->getDropped());
    if (line.getText().size() + nextSize > _buffer->getRoom())
        return;  // the next line will be dropped as well, and counted
    _buffer->clearDropped();
    writeLines(line.getText());
}

}  // namespace Vn
