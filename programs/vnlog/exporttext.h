#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vnlog
{
/// Whether the bytes are well-formed UTF-8: shortest forms, no surrogates, up to U+10FFFF.
bool isUtf8(std::string_view bytes);

/// The same text with U+FFFD for each part that isn't UTF-8: the longest beginning of a character, or a single byte.
///
///     "caf\xc3\xa9"   ->  as it is
///     "a\xff\xff"     ->  "a\ufffd\ufffd"
///     "a\xe2\x82 b"   ->  "a\ufffd b"
///
std::string toUtf8(std::string_view bytes);

/// Base64 with padding, in one line.
std::string toBase64(std::string_view bytes);

/// A time since 1970 as RFC 3339 writes it, in UTC with nine digits of a second: "2026-11-22T17:20:21.001432987Z".
std::string toTimeText(std::int64_t nanoseconds);

/// At most `most` bytes of the first line of a UTF-8 text, whole characters, with "..." where something was left out.
std::string toTitle(std::string_view text, std::size_t most);

}  // namespace vnlog
