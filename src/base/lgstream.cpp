// The ring of characters.
//
// The writer fills cells and moves `_writeIndex`; a zero ends a string, and `_stringEnd` says where the last
// complete string ends. The reader looks at `_stringEnd` alone, never at `_writeIndex`: characters of a message that
// is still being written are invisible to it. Each index has one writer; it is published with release after the
// cells, and watched with acquire before them.
//
// One cell always stays free, since equal indices mean empty. If a terminator lands in the last free cell, the step
// over it would make a full ring look empty: the step is pending then (`_pendingAdvance`) until the reader has freed
// two cells.
//
// Most writes end before `_directEnd` and are done inline in lgstream.h, without a look at the reader's index. What
// is here handles the wrap, the nearly full ring and the pending step.
//
// model: tests/models/stream.pml, the ring alone; model: tests/models/queue.pml, within a queue.
#include <base/lgstream.h>

#include <base/lgnumbertext_p.h>
#include <base/relaxed_p.h>

#include <algorithm>

namespace Vn
{

/// The buffer is zeroed: the reader may look at the cell before the first string.
LgStream::LgStream()
    : _buffer(new char[ringSize]()), _overflowed(false), _pendingAdvance(false), _outputFlags(0), _directEnd(0)
{
    updateDirectEnd(_readIndex);
}

LgStream::~LgStream()
{
    delete[] _buffer;
}

/// A number goes straight into the ring where there is room for the longest of its type. Elsewhere it becomes text on the
/// stack and then takes the way of every text, so a number is refused whole. The cells behind the write index are the
/// writer's alone until the index is moved.
template <class Text, class Number>
LgStream& LgStream::writeNumber(Number value)
{
    const std::uint32_t cell = _writeIndex.get();
    if (cell + Text::longestDirect < _directEnd && Text::isDirect(value)) {
        char const* const end = Text::put(_buffer + cell, value);
        advanceTo(static_cast<std::uint32_t>(end - _buffer));
        return *this;
    }
    const Text text(value);
    return write(text.get(), text.getSize());
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
    return writeNumber<LgNumberText<int>>(value);
}

LgStream& LgStream::operator<<(unsigned int value)
{
    return writeNumber<LgNumberText<unsigned>>(value);
}

LgStream& LgStream::operator<<(long value)
{
    return writeNumber<LgNumberText<long>>(value);
}

LgStream& LgStream::operator<<(unsigned long value)
{
    return writeNumber<LgNumberText<unsigned long>>(value);
}

/// Widening changes no digit: every float is a double.
LgStream& LgStream::operator<<(float value)
{
    return *this << double(value);
}

LgStream& LgStream::operator<<(double value)
{
    return writeNumber<LgFixedText<double>>(value);
}

LgStream& LgStream::operator<<(long double value)
{
    return writeNumber<LgFixedText<long double>>(value);
}

LgStream& LgStream::operator<<(void const* address)
{
    const LgAddressText text(address);
    return write(text.get(), text.getSize());
}

/// The reader only ever makes room, so the answer holds until the writer writes.
std::uint32_t LgStream::getNumCharacters() const
{
    return getRoomBefore(_readIndex.loadAcquire());
}

bool LgStream::isFull() const
{
    return isFullBefore(_readIndex.loadAcquire());
}

/// Relaxed, here and in setOverflowed(): writer and reader both change the mark, and no other memory is read because
/// of it. A value seen late only changes what hasOverflowed() says.
bool LgStream::hasOverflowed() const
{
    return loadRelaxed(_overflowed);
}

void LgStream::setOverflowed(bool overflowed)
{
    storeRelaxed(_overflowed, overflowed);
}

/// While a step is pending, one free cell isn't enough: the step over the zero would take it, and the step behind the
/// new character would bring the writer onto the reader, which is how an empty ring looks.
bool LgStream::isFullBefore(Index readIndex) const
{
    return _writeIndex + 1 == readIndex || (_pendingAdvance && _writeIndex + 2 == readIndex);
}

/// Characters that fit between the write index and `readIndex`, one cell left free.
std::uint32_t LgStream::getRoomBefore(Index readIndex) const
{
    if (isFullBefore(readIndex))
        return 0;
    return readIndex - (_writeIndex + (_pendingAdvance ? 2 : 1));
}

/// Makes the pending step if there is one. False, with the loss marked, if there is no room for a character.
bool LgStream::makePendingStep(Index readIndex)
{
    if (isFullBefore(readIndex)) {
        markOverflow();
        return false;
    }
    if (_pendingAdvance) {
        _writeIndex.storeRelease(_writeIndex + 1);
        _pendingAdvance = false;
    }
    return true;
}

/// Marks the loss and terminates what was written, without moving an index.
void LgStream::markOverflow()
{
    setOverflowed(true);
    // The zero whose step is pending belongs to a string that the reader may be copying: even writing the same value
    // there would be a race.
    char& cell = _buffer[_writeIndex.get()];
    if (cell != '\0')
        cell = '\0';
    setFlags(stringTerminated);
}

/// The slow form of the inline operator.
void LgStream::writeCharacter(char character)
{
    // Loaded once, so that all decisions of this step see the same room; it can only have grown since.
    const Index readIndex = _readIndex.loadAcquire();
    if (!makePendingStep(readIndex))
        return;
    storeText(&character, 1);
    setFlags(textWritten);
    updateDirectEnd(readIndex);
}

/// All or nothing: a text that doesn't fit becomes "#", and shorter ones behind it may still fit.
void LgStream::writeText(char const* text, std::size_t length)
{
    const Index readIndex = _readIndex.loadAcquire();
    if (!makePendingStep(readIndex))
        return;
    if (length > getRoomBefore(readIndex)) {
        setOverflowed(true);
        storeText("#", 1);
        _buffer[_writeIndex.get()] = '\0';
    } else
        storeText(text, static_cast<std::uint32_t>(length));
    setFlags(textWritten);
    updateDirectEnd(readIndex);
}

/// Copies in up to two parts. The caller has checked that there is room.
void LgStream::storeText(char const* text, std::uint32_t length)
{
    const std::uint32_t cell = _writeIndex.get();
    const std::uint32_t beforeTheWrap = std::min(length, ringSize - cell);
    std::copy_n(text, beforeTheWrap, _buffer + cell);
    std::copy_n(text + beforeTheWrap, length - beforeTheWrap, _buffer);
    _writeIndex.storeRelease(_writeIndex + length);
}

/// The slow form of completeString().
void LgStream::completeNearTheEnd()
{
    const Index readIndex = _readIndex.loadAcquire();
    char& cell = _buffer[_writeIndex.get()];
    // A zero here may be that of a string that the reader is copying: see markOverflow().
    if (cell != '\0')
        cell = '\0';
    _stringEnd.storeRelease(_writeIndex);
    _pendingAdvance = _writeIndex + 1 == readIndex;
    if (!_pendingAdvance)
        _writeIndex.storeRelease(_writeIndex + 1);
    setFlags(stringTerminated);
    updateDirectEnd(readIndex);
}

/// Computes anew how far the inline forms may write.
void LgStream::updateDirectEnd(Index readIndex)
{
    const std::uint32_t cell = _writeIndex.get();
    _directEnd = _pendingAdvance ? 0 : std::min(cell + getRoomBefore(readIndex), ringSize - 1);
}

/// Whether characters were written that no terminator of their own follows.
bool LgStream::isStringOpen() const
{
    return _stringEnd != (_pendingAdvance ? _writeIndex : _writeIndex - 1);
}

/// Removes an empty string that was terminated since the mark was taken. The reader hasn't been told of it, as no
/// entry has been published.
void LgStream::removeEmptyString(Mark const& mark)
{
    if (mark.pendingAdvance)
        return;  // only the step over the zero of the string before has been made
    _stringEnd.storeRelease(mark.stringEnd);
    _writeIndex.storeRelease(mark.writeIndex);
    _pendingAdvance = false;
    updateDirectEnd(_readIndex.loadAcquire());
}

LgStream& LgStream::operator>>(char* destination)
{
    take(destination);
    return *this;
}

/// Copies before it publishes the read index: the writer may fill the cells from then on. The index stays on the
/// terminator, which the next call steps over.
std::uint32_t LgStream::take(char* destination)
{
    *destination = '\0';
    if (_stringEnd.loadAcquire() == _readIndex)
        return 0;
    const Index first = findNext();
    const std::uint32_t length = getLengthFrom(first);
    const std::uint32_t beforeTheWrap = std::min(length, ringSize - first.get());
    std::memcpy(destination, _buffer + first.get(), beforeTheWrap);
    std::memcpy(destination + beforeTheWrap, _buffer, length - beforeTheWrap);
    destination[length] = '\0';
    setOverflowed(false);
    _readIndex.storeRelease(first + length);
    return length;
}

std::uint32_t LgStream::getNextSize() const
{
    return _stringEnd.loadAcquire() == _readIndex ? 0 : getLengthFrom(findNext());
}

/// Where the next string begins. The read index may stand on the terminator of the string before.
LgStream::Index LgStream::findNext() const
{
    return _buffer[_readIndex.get()] == '\0' ? _readIndex + 1 : _readIndex;
}

/// Characters up to the next terminator. There is one, unless the calling order was broken; the search ends after one
/// turn of the ring in any case.
std::uint32_t LgStream::getLengthFrom(Index first) const
{
    // At most two parts, each searched with memchr().
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
