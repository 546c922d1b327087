// Private to invalueform.cpp; implemented in invalueformposix.cpp.
#pragma once

#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

namespace Vn
{

/// The number that `text` begins with, by the C library: in the form of strtod(), with a point in every locale, and rounded
/// to the nearest. `rest` is where it ends; `text` itself if there is none. Doesn't change errno.
void readByCLibrary(char const* text, char const*& rest, float& value);
void readByCLibrary(char const* text, char const*& rest, double& value);

/// What std::from_chars says of a decimal number, for standard libraries that have it for whole numbers only. It reads
/// the same texts to the same bits; std::from_chars takes no blanks, no plus, and no hexadecimal digits.
template <class Float>
std::from_chars_result numberFromCText(char const* text, Float& value)
{
    char const* const digits = text + (*text == '-' ? 1 : 0);
    const bool canBegin =
        (*digits >= '0' && *digits <= '9') || *digits == '.' || (*digits | 0x20) == 'i' || (*digits | 0x20) == 'n';
    if (!canBegin)
        return {text, std::errc::invalid_argument};
    if (digits[0] == '0' && (digits[1] | 0x20) == 'x') {
        value = digits == text ? Float(0) : -Float(0);
        return {digits + 1, std::errc()};
    }
    char const* rest = text;
    Float read = 0;
    readByCLibrary(text, rest, read);
    if (rest == text)
        return {text, std::errc::invalid_argument};
    // Only a number has digits. One with no place in the type became infinite or, if it isn't 0 itself, 0.
    const bool isNumber = (*digits >= '0' && *digits <= '9') || *digits == '.';
    char const* const first = digits + std::strspn(digits, "0.");
    // Behind zeros and the point stands a digit from 1 on, the exponent's letter, or nothing of the number.
    const bool isZero = first >= rest || *first > '9';
    if (isNumber && (!std::isfinite(read) || (read == 0 && !isZero)))
        return {rest, std::errc::result_out_of_range};
    value = read;
    return {rest, std::errc()};
}

/// The number that `text` begins with. As std::from_chars, which doesn't change `value` when it tells an error.
template <class Float>
std::from_chars_result numberFromChars(char const* text, Float& value)
{
#ifdef __cpp_lib_to_chars
    return std::from_chars(text, text + std::strlen(text), value);
#else
    return numberFromCText(text, value);
#endif
}

}  // namespace Vn
