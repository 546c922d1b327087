// Private to envvar.cpp, hmheapmgr.cpp and invalueform.cpp.
#pragma once

#include <charconv>
#include <limits>
#include <system_error>

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

/// The first character of the number in `text` for std::from_chars, which takes neither blanks nor a plus sign.
inline char const* skipToNumber(char const* text)
{
    text = skipBlanks(text);
    return text[0] == '+' && text[1] != '-' ? text + 1 : text;
}

/// A whole number at the beginning of a text.
template <class Integer>
struct WholeNumber
{
    Integer value;     ///< 0 if there is no number, the nearest limit if it is beyond the type
    char const* rest;  ///< behind the number; within the text's blanks if there is none
    bool isExact;      ///< there is a number, and the type holds it
};

template <class Integer>
WholeNumber<Integer> parseWholeNumber(char const* text)
{
    using Limits = std::numeric_limits<Integer>;
    char const* const first = skipToNumber(text);
    char const* last = *first == '-' ? first + 1 : first;
    while (isDigit(*last))
        ++last;
    Integer value = 0;
    const auto [rest, error] = std::from_chars(first, last, value);
    if (error == std::errc::result_out_of_range)
        return {*first == '-' ? Limits::min() : Limits::max(), rest, false};
    return {value, rest, error == std::errc()};
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
