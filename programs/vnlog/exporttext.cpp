#include "exporttext.h"

#include <chrono>
#include <cstdio>

namespace vnlog
{
namespace
{
constexpr std::string_view replacement = "\xef\xbf\xbd";

bool isBetween(std::string_view bytes, std::size_t at, unsigned least, unsigned most)
{
    if (at >= bytes.size())
        return false;
    const unsigned byte = static_cast<unsigned char>(bytes[at]);
    return byte >= least && byte <= most;
}

struct Character
{
    std::size_t length;  ///< bytes that it takes, or that belong to its beginning; at least 1
    bool isWhole;
};

/// The character that `bytes`, which isn't empty, begins with. The second byte's limits keep out longer forms than needed,
/// surrogates, and numbers beyond U+10FFFF.
Character readCharacter(std::string_view bytes)
{
    const unsigned first = static_cast<unsigned char>(bytes[0]);
    if (first < 0x80)
        return {1, true};
    if (first < 0xC2 || first > 0xF4)
        return {1, false};
    const std::size_t size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const unsigned least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (!isBetween(bytes, 1, least, most))
        return {1, false};
    std::size_t length = 2;
    while (length < size && isBetween(bytes, length, 0x80, 0xBF))
        ++length;
    return {length, length == size};
}
}  // namespace

bool isUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const Character character = readCharacter(bytes);
        if (!character.isWhole)
            return false;
        bytes.remove_prefix(character.length);
    }
    return true;
}

std::string toUtf8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const Character character = readCharacter(bytes);
        text += character.isWhole ? bytes.substr(0, character.length) : replacement;
        bytes.remove_prefix(character.length);
    }
    return text;
}

std::string toBase64(std::string_view bytes)
{
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0u);
        for (std::size_t j = 0; j < 4; ++j)
            text += i + j <= bytes.size() ? digits[group >> (18 - 6 * j) & 63] : '=';
    }
    return text;
}

std::string toTimeText(std::int64_t nanoseconds)
{
    using namespace std::chrono;
    // Rounded down by hand: the library's floor() overflows for the earliest times.
    constexpr std::int64_t perSecond = 1'000'000'000;
    const std::int64_t fraction = (nanoseconds % perSecond + perSecond) % perSecond;
    const sys_seconds second(seconds(nanoseconds / perSecond - (nanoseconds % perSecond < 0 ? 1 : 0)));
    const sys_days day = floor<days>(second);
    const year_month_day date(day);
    const hh_mm_ss time(second - day);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%09lldZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()), static_cast<long long>(fraction));
    return text;
}

std::string toTitle(std::string_view text, std::size_t most)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    std::size_t length = 0;
    while (length < line.size()) {
        const std::size_t next = length + readCharacter(line.substr(length)).length;
        if (next > most)
            break;
        length = next;
    }
    return std::string(line.substr(0, length)) + (length < text.size() ? "..." : "");
}

}  // namespace vnlog
