// Private to lgfile.cpp and lgreader.cpp.
#pragma once

#include <base/lgnumbertext_p.h>
#include <base/lgstream.h>
#include <base/lgtypes.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Vn
{

/// The line of a message as the outputs show it, put together on the stack and written in one piece.
///
///     LgLine line;
///     line.putPrefix(ticks, threadId, LgTypes::Warning);
///     line.putText(stream);    // "0000000001 0000000005 (0x00001a2b) Warning: Cache evicted 17 pages\n"
///
/// One prefix and one text at most: the buffer has room for exactly these. Without standard streams, so that no
/// locale and no format of the program changes a line.
class LgLine
{
public:
    /// Ticks since the logger's start in two halves of 32 bits, thread and level. The halves are two numbers, not
    /// one: the first counts units of 2^32 ticks.
    void putPrefix(std::uint64_t ticks, unsigned long threadId, LgTypes::Level level)
    {
        putPadded<10, 10>(static_cast<std::uint32_t>(ticks >> 32));
        put(" ");
        putPadded<10, 10>(static_cast<std::uint32_t>(ticks));
        put(" (0x");
        putPadded<16, 8>(static_cast<std::uint32_t>(threadId));
        put(") ");
        put(LgTypes::levelToString(level));
        put(": ");
        _hasPrefix = true;
    }

    /// The text of an overflow entry, "Event overflow [12]", with its line end.
    void putOverflow(std::int32_t count)
    {
        put("Event overflow [");
        _size = static_cast<std::size_t>(std::to_chars(_text + _size, _text + sizeof _text, count).ptr - _text);
        put("]\n");
    }

    /// Takes the next text off the stream, empty if there is none, and ends the line.
    void putText(LgStream& stream)
    {
        _size += stream.take(_text + _size);
        _text[_size++] = '\n';
    }

    /// What was put so far, line end included; valid while the line exists.
    std::string_view getText() const { return {_text, _size}; }
    bool hasPrefix() const { return _hasPrefix; }

private:
    /// Appends without a check: only fixed texts come here.
    void put(char const* text)
    {
        const std::size_t length = std::strlen(text);
        std::memcpy(_text + _size, text, length);
        _size += length;
    }

    /// Zero-filled to `width`, which is even.
    template <unsigned base, std::size_t width>
    void putPadded(std::uint32_t number)
    {
        lgPutPadded<base, width>(_text + _size, number);
        _size += width;
    }

    /// Not initialised: 32 KiB of zeros for each line would cost more than the line.
    char _text[64 + LgStream::ringSize];  ///< the longest prefix, the longest text and the line end
    std::size_t _size = 0;
    bool _hasPrefix = false;
};

}  // namespace Vn
