// Texts that come from outside (file names, arguments, messages of the system) may hold bytes that a terminal obeys: one that
// sets its title, moves the cursor over what stands there, or turns the direction of writing. shown() goes through the text
// character by character and writes each of these as an escape that reads like C++:
//
//     "a\nb"          ->  a\nb           (a backslash and an n)
//     "\x1b[31mred"   ->  \x1b[31mred
//     "caf\xc3\xa9"   ->  café           (whole UTF-8 is left as it is)
//     "caf\xe9"       ->  caf\xe9 as one byte, which a terminal of eight bits shows and another one replaces
//
// A backslash of the text itself stays single, since the result is for eyes and is never read back.
#include <base/osterminal.h>

#include <base/osenv.h>
#include <base/osterminal_p.h>

#include <cstdint>
#include <cstdio>

namespace Vn
{
namespace
{
/// One character of a text, and how many bytes it takes.
struct Character
{
    std::uint32_t code;
    std::size_t size;
};

/// The UTF-8 character that `text` begins with. A byte that begins none stands for itself.
Character firstOf(std::string_view text)
{
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::uint32_t first = byteAt(0);
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 1;
    if (size == 1 || first >= 0xF8 || size > text.size())
        return {first, 1};
    std::uint32_t code = first & (0xFFu >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80)
            return {first, 1};
        code = code << 6 | (byteAt(i) & 0x3Fu);
    }
    return {code, size};
}

/// C0, delete and C1. A single byte from 0x80 to 0x9F is C1 for terminals of eight bits.
bool isControl(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

/// Marks and overrides of the writing direction, and the separators of lines and paragraphs.
bool changesOrder(std::uint32_t code)
{
    return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

std::string escapeOf(std::uint32_t code)
{
    switch (code) {
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    case '\r':
        return "\\r";
    default:
        char text[16];
        std::snprintf(text, sizeof text, code < 0x100 ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(code));
        return text;
    }
}
}  // namespace

bool OsTerminal::isStandardOutput()
{
    return System::isTerminal(1);
}

bool OsTerminal::isStandardError()
{
    return System::isTerminal(2);
}

/// The terminal's own answer goes before COLUMNS, which a shell sets once and rarely exports.
int OsTerminal::getColumns()
{
    return columnsOf(System::getTerminalColumns(), OsEnv::getVariable("COLUMNS"));
}

/// Most texts hold nothing to escape, so one allocation of their own size does.
std::string OsTerminal::shown(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstOf(text);
        if (isControl(character.code) || changesOrder(character.code))
            result += escapeOf(character.code);
        else
            result += text.substr(0, character.size);
        text.remove_prefix(character.size);
    }
    return result;
}

}  // namespace Vn
