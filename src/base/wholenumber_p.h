// Private to envvar.cpp, hmheapmgr.cpp and invalueform.cpp.
#pragma once

#include <limits>
#include <type_traits>

namespace Vn
{

/// The first character of `text` that is no blank, as the C locale knows blanks.
inline char const* skipBlanks(char const* text)
{
    while (*text == ' ' || (*text >= '\t' && *text <= '\r'))
        ++text;
    return text;
}

inline bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// A whole number at the beginning of a text.
template <class Integer>
struct WholeNumber
{
    Integer value;     ///< 0 if there is no number, the nearest limit if it is beyond the type
    char const* rest;  ///< behind the number
    bool isExact;      ///< there is a number, and the type holds it
};

/// By hand, as each setting of a program comes here twice before `main`: std::from_chars takes three times as long for the
/// numbers of a digit or two that settings are.
template <class Integer>
WholeNumber<Integer> parseWholeNumber(char const* text)
{
    static_assert(std::is_signed_v<Integer>);
    using Limits = std::numeric_limits<Integer>;
    char const* at = skipBlanks(text);
    const bool isNegative = *at == '-';
    if (isNegative || *at == '+')
        ++at;
    char const* const first = at;
    Integer value = 0;
    bool isInRange = true;
    for (; isDigit(*at); ++at) {
        // Counted down for a negative number: the lowest one has no positive counterpart.
        const auto digit = static_cast<Integer>(isNegative ? '0' - *at : *at - '0');
        isInRange = isInRange && !__builtin_mul_overflow(value, Integer(10), &value) &&
                    !__builtin_add_overflow(value, digit, &value);
    }
    if (!isInRange)
        return {isNegative ? Limits::min() : Limits::max(), at, false};
    return {value, at, at != first};
}

/// The whole number that a text begins with, as atol() and atoi() read it. Where these are undefined, a number that
/// does not fit, the result is the nearest limit of `Integer`.
///
///     " 12x"          ->  12
///     "x", ""         ->  0
///     "99999999999"   ->  2147483647 for int
///
template <class Integer>
Integer wholeNumberOf(char const* text)
{
    return parseWholeNumber<Integer>(text).value;
}

}  // namespace Vn
