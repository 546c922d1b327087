#include <base/lgstream.h>

#include <base/lgnumbertext_p.h>

#include <algorithm>

namespace Vn
{

LgStream::LgStream()
    : _buffer(new char[ringSize]()), _overflowed(false), _pendingAdvance(false), _outputFlags(0), _directEnd(0)
{
    findDirectEnd(_readIndex);
}

LgStream::~LgStream()
{
    delete[] _buffer;
}

LgStream& LgStream::operator<<(short value)
{
    return *this << int(value);
}

LgStream& LgStream::operator<<(unsigned short value)
{
    return *this << unsigned(value);
}

LgStream& LgStream::operator<<(int value)
{
    const LgNumberText text(value);
    return write(text.get(), text.getSize());
}

LgStream& LgStream::operator<<(unsigned int value)
{
    const LgNumberText text(value);
    return write(text.get(), text.getSize());
}

LgStream& LgStream::operator<<(long value)
{
    const LgNumberText text(value);
    return write(text.get(), text.getSize());
}

LgStream& LgStream::operator<<(unsigned long value)
{
    const LgNumberText text(value);
    return write(text.get(), text.getSize());
}

LgStream& LgStream::operator<<(float value)
{
    return *this << double(value);
}

LgStream& LgStream::operator<<(double value)
{
    const LgFixedText<double> text(value);
    return write(text.get(), text.getSize());
}

LgStream& LgStream::operator<<(long double value)
{
    const LgFixedText<long double> text(value);
    return write(text.get(), text.getSize());
}

LgStream& LgStream::operator<<(void const* address)
{
    const LgAddressText text(address);
    return write(text.get(), text.getSize());
}

std::uint32_t LgStream::getNumCharacters() const
{
    return getRoomBefore(_readIndex.watch());
}

bool LgStream::isFull() const
{
    return isFullBefore(_readIndex.watch());
}

// Relaxed, here and in setOverflowed(): both sides change the mark, and one that is seen late only misleads whoever
// looks at it.
bool LgStream::hasOverflowed() const
{
    return std::atomic_ref(const_cast<bool&>(_overflowed)).load(std::memory_order_relaxed);
}

void LgStream::setOverflowed(bool overflowed)
{
    std::atomic_ref(_overflowed).store(overflowed, std::memory_order_relaxed);
}

/// While an advance is pending, one free cell isn't enough: the step over the zero would take it, and the step behind
/// the new character would bring the writer onto the reader, which is how an empty ring looks.
bool LgStream::isFullBefore(Index readIndex) const
{
    return _writeIndex + 1 == readIndex || (_pendingAdvance && _writeIndex + 2 == readIndex);
}

std::uint32_t LgStream::getRoomBefore(Index readIndex) const
{
    if (isFullBefore(readIndex))
        return 0;
    return readIndex - (_writeIndex + (_pendingAdvance ? 2 : 1));
}

/// Steps behind the last string if that is still to be done. False if there is no room for a character.
bool LgStream::prepareWriting(Index readIndex)
{
    if (isFullBefore(readIndex)) {
        refuse();
        return false;
    }
    if (_pendingAdvance) {
        _writeIndex.publish(_writeIndex + 1);
        _pendingAdvance = false;
    }
    return true;
}

void LgStream::refuse()
{
    setOverflowed(true);
    // The zero that waits for its advance belongs to a string that the reader may be taking: it is left alone.
    char& cell = _buffer[_writeIndex.get()];
    if (cell != '\0')
        cell = '\0';
    setFlags(stringTerminated);
}

void LgStream::writeCharacter(char character)
{
    const Index readIndex = _readIndex.watch();
    if (!prepareWriting(readIndex))
        return;
    storeText(&character, 1);
    setFlags(textWritten);
    findDirectEnd(readIndex);
}

void LgStream::writeText(char const* text, std::size_t length)
{
    const Index readIndex = _readIndex.watch();
    if (!prepareWriting(readIndex))
        return;
    if (length > getRoomBefore(readIndex)) {
        setOverflowed(true);
        storeText("#", 1);
        _buffer[_writeIndex.get()] = '\0';
    } else
        storeText(text, static_cast<std::uint32_t>(length));
    setFlags(textWritten);
    findDirectEnd(readIndex);
}

/// There is room.
void LgStream::storeText(char const* text, std::uint32_t length)
{
    const std::uint32_t cell = _writeIndex.get();
    const std::uint32_t beforeTheWrap = std::min(length, ringSize - cell);
    std::copy_n(text, beforeTheWrap, _buffer + cell);
    std::copy_n(text + beforeTheWrap, length - beforeTheWrap, _buffer);
    _writeIndex.publish(_writeIndex + length);
}

void LgStream::completeAtTheEdge()
{
    const Index readIndex = _readIndex.watch();
    char& cell = _buffer[_writeIndex.get()];
    if (cell != '\0')  // else it may be that of a string that the reader is taking
        cell = '\0';
    _stringEnd.publish(_writeIndex);
    _pendingAdvance = _writeIndex + 1 == readIndex;
    if (!_pendingAdvance)
        _writeIndex.publish(_writeIndex + 1);
    setFlags(stringTerminated);
    findDirectEnd(readIndex);
}

void LgStream::findDirectEnd(Index readIndex)
{
    const std::uint32_t cell = _writeIndex.get();
    _directEnd = _pendingAdvance ? 0 : std::min(cell + getRoomBefore(readIndex), ringSize - 1);
}

/// Whether characters were written that no zero of their own follows.
bool LgStream::isStringOpen() const
{
    return _stringEnd != (_pendingAdvance ? _writeIndex : _writeIndex - 1);
}

/// Takes an empty string back that was ended since the mark was taken. The reader hasn't heard of it.
void LgStream::takeBack(Mark const& mark)
{
    if (mark.pendingAdvance)
        return;  // only the step over the zero of the string before has been made
    _stringEnd.publish(mark.stringEnd);
    _writeIndex.publish(mark.writeIndex);
    _pendingAdvance = false;
    findDirectEnd(_readIndex.watch());
}

LgStream& LgStream::operator>>(char* destination)
{
    take(destination);
    return *this;
}

std::uint32_t LgStream::take(char* destination)
{
    *destination = '\0';
    if (_stringEnd.watch() == _readIndex)
        return 0;
    const Index first = findNext();
    const std::uint32_t length = getLengthFrom(first);
    const std::uint32_t beforeTheWrap = std::min(length, ringSize - first.get());
    std::memcpy(destination, _buffer + first.get(), beforeTheWrap);
    std::memcpy(destination + beforeTheWrap, _buffer, length - beforeTheWrap);
    destination[length] = '\0';
    setOverflowed(false);
    _readIndex.publish(first + length);
    return length;
}

std::uint32_t LgStream::getNextSize() const
{
    return _stringEnd.watch() == _readIndex ? 0 : getLengthFrom(findNext());
}

/// Where the next string begins: the reader may stand on the zero of the one before.
LgStream::Index LgStream::findNext() const
{
    return _buffer[_readIndex.get()] == '\0' ? _readIndex + 1 : _readIndex;
}

/// Characters up to the next zero. There is one, and in a ring that somebody has broken the search ends all the same.
std::uint32_t LgStream::getLengthFrom(Index first) const
{
    const auto lengthIn = [](char const* text, std::size_t size) {
        auto const* const end = static_cast<char const*>(std::memchr(text, '\0', size));
        return static_cast<std::uint32_t>(end != nullptr ? static_cast<std::size_t>(end - text) : size);
    };
    const std::uint32_t beforeTheWrap = ringSize - first.get();
    const std::uint32_t length = lengthIn(_buffer + first.get(), beforeTheWrap);
    if (length < beforeTheWrap)
        return length;
    return std::min(length + lengthIn(_buffer, first.get()), ringSize - 1);
}

}  // namespace Vn
