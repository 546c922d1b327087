#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <system_error>

namespace vnlog
{

/// What std::from_chars says of a `double`, for standard libraries that have it for whole numbers only. vnlog sets no locale,
/// so the C library reads a point. Tests: tests/vnlog/loglinetest.cpp.
inline std::from_chars_result readDecimalByCLibrary(char const* begin, char const* end, double& value)
{
    // std::from_chars takes no blanks, no plus, and no hexadecimal digits.
    constexpr char unknown[] = {' ', '\t', '\n', '\v', '\f', '\r', '+'};
    constexpr char hexadecimal[] = {'x', 'X'};
    if (begin == end || std::find(std::begin(unknown), std::end(unknown), *begin) != std::end(unknown))
        return {begin, std::errc::invalid_argument};
    const std::string text(begin, std::find_first_of(begin, end, std::begin(hexadecimal), std::end(hexadecimal)));
    char* rest = nullptr;
    const double read = std::strtod(text.c_str(), &rest);
    if (rest == text.c_str())
        return {begin, std::errc::invalid_argument};
    char const* const stop = begin + (rest - text.c_str());
    const std::size_t digit = text.find_first_of("0123456789");
    const std::size_t first = text.find_first_not_of("-0.");
    const bool isNumber = digit != text.npos && text.find_first_not_of("-.") == digit;
    const bool isZero = first >= static_cast<std::size_t>(stop - begin) || text[first] < '1' || text[first] > '9';
    if (isNumber && (std::isinf(read) || (read == 0 && !isZero)))
        return {stop, std::errc::result_out_of_range};
    value = read;
    return {stop, std::errc()};
}

/// The number that the text between `begin` and `end` begins with.
inline std::from_chars_result readDecimal(char const* begin, char const* end, double& value)
{
#ifdef __cpp_lib_to_chars
    return std::from_chars(begin, end, value);
#else
    return readDecimalByCLibrary(begin, end, value);
#endif
}

}  // namespace vnlog
