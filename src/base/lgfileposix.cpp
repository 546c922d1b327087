// lgfileposix.cpp (Windows form: lgfilewindows.cpp)
#include <base/lgfile_p.h>

#include <base/osposix_p.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <streambuf>

namespace Vn
{

/// A whole line goes past the buffer as long as that is empty.
class LgFile::Buffer : public std::streambuf
{
public:
    Buffer(char const* path, bool isAppended)
        : _file(Posix::retry([path, isAppended] {
              return ::open(path, O_WRONLY | O_CREAT | O_CLOEXEC | (isAppended ? O_APPEND : O_TRUNC), 0666);
          }))
    {
        setp(_text, _text + sizeof _text);
    }

    ~Buffer() override { send(); }

    bool isOpen() const { return _file.isOpen(); }

    /// False if something is left unwritten.
    bool writeLine(char const* text, std::size_t size)
    {
        if (pptr() != pbase()) {
            if (put(text, size))
                return send();
            if (!send())
                return false;
        }
        const std::size_t done = write(text, size);
        put(text + done, size - done);
        return done == size;
    }

protected:
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
        if (offset != 0 || from != std::ios_base::cur)
            return pos_type(off_type(-1));
        const ::off_t place = ::lseek(_file.get(), 0, SEEK_CUR);
        return place < 0 ? pos_type(off_type(-1)) : pos_type(place + (pptr() - pbase()));
    }

private:
    /// All or nothing.
    bool put(char const* text, std::size_t size)
    {
        if (static_cast<std::size_t>(epptr() - pptr()) < size)
            return false;
        std::memcpy(pptr(), text, size);
        pbump(static_cast<int>(size));
        return true;
    }

    /// Empties the buffer, as far as the system takes it.
    bool send()
    {
        const std::size_t size = static_cast<std::size_t>(pptr() - pbase());
        const std::size_t left = size - write(pbase(), size);
        std::memmove(_text, pptr() - left, left);
        setp(_text, _text + sizeof _text);
        pbump(static_cast<int>(left));
        return left == 0;
    }

    /// How much was written before the system refused.
    std::size_t write(char const* text, std::size_t size) const
    {
        std::size_t done = 0;
        while (done < size) {
            const ::ssize_t now = Posix::retry([&] { return ::write(_file.get(), text + done, size - done); });
            if (now <= 0)
                break;
            done += static_cast<std::size_t>(now);
        }
        return done;
    }

    Posix::Descriptor _file;
    char _text[8192];
};

LgFile::LgFile(char const* path, bool isAppended)
    : std::ostream(nullptr), _buffer(std::make_unique<Buffer>(path, isAppended))
{
    rdbuf(_buffer.get());
    if (!_buffer->isOpen())
        setstate(failbit);
}

LgFile::~LgFile() = default;

void LgFile::writeLine(char const* text, std::size_t size)
{
    if (bad() && _buffer->isOpen())
        clear();
    if (rdbuf() != _buffer.get())  // a program has put another one in its place
        write(text, static_cast<std::streamsize>(size)).flush();
    else if (good() && !_buffer->writeLine(text, size))
        setstate(badbit);
}

}  // namespace Vn
