#pragma once

#include <base/baseexport.h>
#include <base/lgringindex.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vn
{

/// The text of a queue's messages: a ring of 32,768 characters, which one thread fills and another one empties.
///
///     stream << "evicted " << 17 << " pages" << Vn::ends;    // the writer
///
///     char text[32768];                                       // the reader
///     stream >> text;                                         // "evicted 17 pages"
///
/// What this class can't write, headers of their own can: lgtext.h, lgduration.h, lgvalues.h and lgstreamed.h.
///
/// A message is its characters and one zero. Neither side waits and neither allocates: what doesn't fit is lost, and
/// a "#" stands where a whole text was refused. Numbers have the C library's form ("%d", "%f" and so on) in the "C"
/// locale, whatever the program's locale is.
///
/// One thread calls what is under "Writer", another one what is under "Reader". A copy shares the ring with its
/// source, and only one of the two may be destroyed.
/// Tests: tests/base/lgstreamtest.cpp.
class VN_BASE_EXPORT LgStream
{
public:
    /// What the writer has done since resetOutputFlags().
    enum OutputFlags
    {
        textWritten = 0x1,      ///< text was written since the last reset, even an empty one
        stringTerminated = 0x2  ///< the string has ended, by completeString() or because the ring was full
    };

    /// An empty ring; allocates its 32 KiB. Throws `std::bad_alloc`.
    LgStream();

    /// @{
    /// Shares the ring with the source; only one of the two may be used and destroyed.
    LgStream(LgStream const&) = default;
    LgStream& operator=(LgStream const&) = default;
    /// @}

    /// Frees the ring.
    ~LgStream();

    // Writer.

    /// @{
    /// One raw character. Zero would terminate the string. In a full ring the character is lost without a mark.
    LgStream& operator<<(char character)
    {
        const std::uint32_t cell = _writeIndex.get();
        if (cell + 1 < _directEnd) {
            _buffer[cell] = character;
            advanceTo(cell + 1);
        } else
            writeCharacter(character);
        return *this;
    }
    LgStream& operator<<(signed char character) { return *this << static_cast<char>(character); }
    LgStream& operator<<(unsigned char character) { return *this << static_cast<char>(character); }
    /// @}

    /// @{
    /// All of the text, or a "#" if there isn't room for all; nothing at all if there is no room for a "#".
    ///
    ///     room for 5, "abc" then "defg" then "h"  ->  "abc#h"
    ///     null, ""                                ->  nothing, but textWritten is set
    ///
    /// An empty text that is the first string of a new ring comes out behind the string that follows it, if the
    /// reader hasn't asked for it by then.
    LgStream& operator<<(char const* text)
    {
        return text != nullptr ? write(text, std::strlen(text)) : write("", 0);
    }
    LgStream& operator<<(char* text) { return *this << static_cast<char const*>(text); }
    /// @}

    /// "true" or "false".
    LgStream& operator<<(bool value) { return value ? write("true", 4) : write("false", 5); }

    /// @{
    /// The number in decimal. The operator for `long long`, which 64-bit numbers are on Windows, is in lgtext.h.
    LgStream& operator<<(short value);
    LgStream& operator<<(unsigned short value);
    LgStream& operator<<(int value);
    LgStream& operator<<(unsigned int value);
    LgStream& operator<<(long value);
    LgStream& operator<<(unsigned long value);
    /// @}

    /// @{
    /// Six digits behind the point, rounded half to even from the exact value.
    ///
    ///     0.5  ->  "0.500000"        -0.0      ->  "-0.000000"
    ///     1e6  ->  "1000000.000000"  infinity  ->  "inf"
    LgStream& operator<<(float value);
    LgStream& operator<<(double value);
    LgStream& operator<<(long double value);
    /// @}

    /// @{
    /// The address as the platform's "%p" shows it.
    LgStream& operator<<(void const* address);
    LgStream& operator<<(void* address) { return *this << static_cast<void const*>(address); }
    /// @}

    /// Calls `function`, which is `ends`.
    LgStream& operator<<(LgStream& (*function)(LgStream&)) { return function(*this); }

    /// Terminates the string. Once for each message: a second call leaves a string that belongs to no entry.
    void completeString()
    {
        const std::uint32_t cell = _writeIndex.get();
        if (cell + 1 < _directEnd) {
            _buffer[cell] = '\0';
            // model: tests/models/stream.pml.
            _stringEnd.storeRelease(Index(cell));
            _writeIndex.storeRelease(Index(cell + 1));
            setFlags(stringTerminated);
        } else
            completeNearTheEnd();
    }

    /// @{
    /// The OutputFlags since the last reset.
    unsigned getOutputFlags() const { return _outputFlags; }
    void resetOutputFlags() { _outputFlags = 0; }
    /// @}

    // Reader.

    /// Takes the next string, or the empty one if there is none. `destination` holds getNextSize() + 1 bytes, 32,768
    /// at the most.
    LgStream& operator>>(char* destination);

    /// Length of the string that operator>> would take; 0 if there is none.
    std::uint32_t getNextSize() const;

    // State. The room and isFull() as the writer sees them: only the writer asks.

    /// Length of the longest text that always fits an empty ring: 32,766.
    static std::uint32_t getMaxSize() { return ringSize - 2; }

    /// Characters that fit, 0 to 32,767. Exact for the writer until the reader takes a string, which only makes room.
    std::uint32_t getNumCharacters() const;

    /// Whether not even one character fits.
    bool isFull() const;

    /// Whether text was lost since the reader last took a string. Any thread may ask.
    bool hasOverflowed() const;

private:
    friend class LgLine;
    friend class LgQueue;
    friend class LgText;

    static constexpr std::uint32_t ringSize = 32768;
    using Index = LgRingIndex<ringSize>;

    /// Where the writer stands.
    struct Mark
    {
        Index writeIndex;
        Index stringEnd;
        bool pendingAdvance = false;
    };

    /// What operator>> does; the length of what it took.
    std::uint32_t take(char* destination);

    LgStream& write(char const* text, std::size_t length)
    {
        const std::uint32_t cell = _writeIndex.get();
        if (length < _directEnd && cell + length < _directEnd) {
            std::memcpy(_buffer + cell, text, length);
            advanceTo(static_cast<std::uint32_t>(cell + length));
        } else
            writeText(text, length);
        return *this;
    }

    template <class Text, class Number>
    LgStream& writeNumber(Number value);

    /// Shows the characters up to the cell `end` as written; the ring doesn't wrap before it.
    void advanceTo(std::uint32_t end)
    {
        _writeIndex.storeRelease(Index(end));
        setFlags(textWritten);
    }

    void setFlags(OutputFlags flags) { _outputFlags = (_outputFlags | flags) & 0x3; }

    // The same where the ring wraps or is nearly full.
    void writeCharacter(char character);
    void writeText(char const* text, std::size_t length);
    void completeNearTheEnd();

    // Each step looks at the reader's index once and hands it on, so that all its decisions see the same room.
    bool isFullBefore(Index readIndex) const;
    std::uint32_t getRoomBefore(Index readIndex) const;
    bool makePendingStep(Index readIndex);
    void markOverflow();
    void storeText(char const* text, std::uint32_t length);
    void updateDirectEnd(Index readIndex);
    bool isStringOpen() const;
    Index findNext() const;
    std::uint32_t getLengthFrom(Index first) const;
    Mark getMark() const { return {_writeIndex, _stringEnd, _pendingAdvance}; }
    void removeEmptyString(Mark const& mark);
    bool hasRoom() const { return _writeIndex.get() + 1 < _directEnd || !isFull(); }
    void setOverflowed(bool overflowed);

    char* _buffer;
    Index _readIndex;      ///< next cell that the reader looks at; the reader's
    Index _writeIndex;     ///< next cell that the writer fills; the writer's
    Index _stringEnd;      ///< the zero of the last string that has ended; the writer's
    bool _overflowed;      ///< set by the writer and cleared by the reader
    bool _pendingAdvance;  ///< there was no room to step over the last string's zero
    unsigned char _outputFlags : 2;

    /// The writer's own: while the write index stays below this after a step, the step neither wraps nor needs a
    /// look at the reader's index, and there is room for one more character. May be stale: it never promises more
    /// room than there is. 0 while an advance is pending.
    std::uint32_t _directEnd;
};

/// Terminates the message: `stream << "text" << Vn::ends`.
inline LgStream& ends(LgStream& stream)
{
    stream.completeString();
    return stream;
}

}  // namespace Vn
