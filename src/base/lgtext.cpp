// Texts with a length, and 64-bit numbers, for the stream of a queue.
//
// Texts lie in the ring one behind the other, each ended by a zero, so a zero byte within a message would end it early and
// shift all that follow. A std::string may hold some. Each is shown as a backslash and a 0, and the length is counted with
// them before the first character is written, as a message is taken whole or refused whole.
#include <base/lgtext.h>

#include <base/lgnumbertext_p.h>

#include <algorithm>
#include <limits>
#include <ostream>

namespace Vn
{
namespace
{
constexpr std::string_view shownZero = "\\0";

/// Hands the text to `put` piece by piece, each zero byte as a piece of its own.
template <class Put>
void showZeros(std::string_view text, Put const& put)
{
    for (;;) {
        const std::size_t end = std::min(text.find('\0'), text.size());
        if (end != 0)
            put(text.substr(0, end));
        if (end == text.size())
            return;
        put(shownZero);
        text.remove_prefix(end + 1);
    }
}
}  // namespace

LgStream& LgText::putWithZeros(LgStream& stream, std::string_view text)
{
    const std::size_t length =
        text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\0')) * (shownZero.size() - 1);
    // More than any ring has room for, so that the text is refused as a whole; its characters aren't looked at.
    if (length > stream.getNumCharacters())
        return stream.write("", std::numeric_limits<std::size_t>::max());
    showZeros(text, [&stream](std::string_view piece) { stream.write(piece.data(), piece.size()); });
    return stream;
}

LgStream& LgText::putNumber(LgStream& stream, long long value)
{
    const LgNumberText<long long> text(value);
    return stream.write(text.get(), text.getSize());
}

LgStream& LgText::putNumber(LgStream& stream, unsigned long long value)
{
    const LgNumberText<unsigned long long> text(value);
    return stream.write(text.get(), text.getSize());
}

/// Standard output would take a zero, but a line should read the same in the file and in its echo.
LgStandardOutput& LgStandardOutput::write(std::string_view text)
{
    showZeros(text, [this](std::string_view piece) { pass(piece); });
    return *this;
}

}  // namespace Vn
