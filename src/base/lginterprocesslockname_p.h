// Private to lginterprocesslockposix.cpp.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Vn
{

/// Name of the file behind a lock. Different locks have different files.
///
///     "renderer log"      ->  "renderer%20log"
///     "a/b"               ->  "a%2fb"
///     "" (the empty name) ->  ""
///     longer than 200     ->  its first 200 characters, "~" and 16 digits of a hash of the whole
///
/// Letters, digits, "-" and "_" stand for themselves, every other byte for "%" and two digits, so no name leaves the
/// folder of the locks.
inline std::string getLockFileName(std::string_view lock)
{
    // A file name has at most 255 bytes on the usual file systems.
    constexpr std::size_t longest = 200;
    constexpr char digits[] = "0123456789abcdef";
    std::string name;
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a, 64 bits
    for (const char character : lock) {
        const auto byte = static_cast<unsigned char>(character);
        hash = (hash ^ byte) * 0x100000001B3;
        const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_';
        if (isPlain)
            name += character;
        else
            name.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    if (name.size() <= longest)
        return name;
    name.resize(longest);
    name += '~';
    for (int shift = 60; shift >= 0; shift -= 4)
        name += digits[hash >> shift & 15];
    return name;
}

}  // namespace Vn
