// How the text of a setting becomes a value.
//
// Each family of types has one parser, which tells the value, where the text goes on, and whether the value is what the text
// says; read() takes the first of these, isWhole() the other two. So the two never disagree about what a text means.
//
// The parsers of numbers with a fraction stand on std::from_chars, which knows no locale and allocates nothing; where the
// standard library lacks it for these, numberFromCText() of invalueform_p.h does the same. It leaves open on which side a
// number lies outside its type; isBeyond() finds that from the text.
//
// What read() makes of some texts, with a * where isWhole() says no:
//
//     text        int    double       milliseconds   bool
//     "12"        12     12           12 ms          true *
//     "1.5s"      1 *    1.5 *        1500 ms        true *
//     "1e400"     1 *    the most *   1 ms *         true *
//     "off"       0 *    0 *          0 ms *         true *
//     ""          0 *    0 *          0 ms *         true
#include <base/invalueform.h>

#include <base/invalueform_p.h>
#include <base/invariable.h>
#include <base/wholenumber_p.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <system_error>

namespace Vn
{
namespace
{
/// A setting whose sources all have nothing has no text.
char const* orEmpty(char const* text)
{
    return text != nullptr ? text : "";
}

/// Whether `text` is `word` in any case. Compares ASCII letters only, so that no locale changes what a setting means.
bool isWord(char const* text, char const* word)
{
    while (*word != '\0' && (*text | 0x20) == *word) {
        ++text;
        ++word;
    }
    return *word == *text;  // both at their ends
}

/// The two ways to say no; everything else is yes.
bool isFalse(char const* text)
{
    return isWord(text, "false") || (text[0] == '0' && text[1] == '\0');
}

// ---- numbers with a fraction

/// A value, and where in its text it ends.
template <class T>
struct Parsed
{
    T value;
    char const* rest;
    bool isExact;  ///< the text has a value, and the type has room for it
};

/// Whether a number that lies outside its type lies beyond the limits, and not too near to 0. It stands without its sign, and has
/// a digit other than 0, as each type holds 0 itself.
bool isBeyond(std::string_view number)
{
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), mark);
    const std::size_t first = number.find_first_of("123456789");
    // Of that digit, give or take one: no number near 1 lies outside a type.
    const auto power = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    return power + (mark < number.size() ? wholeNumberOf<std::int32_t>(number.data() + mark + 1) : 0) > 0;
}

/// A setting is never "not a number": that compares with nothing, and spreads.
template <class Float>
Parsed<Float> parseNumber(char const* text)
{
    using Limits = std::numeric_limits<Float>;
    char const* first = skipBlanks(text);
    if (first[0] == '+' && first[1] != '-')
        ++first;  // std::from_chars takes no plus
    Float value = 0;
    const auto [rest, error] = numberFromChars(first, value);
    if (std::isnan(value))
        return {0, text, false};
    if (error != std::errc::result_out_of_range)
        return {value, rest, error == std::errc()};
    const bool isNegative = *first == '-';
    if (!isBeyond(std::string_view(first, rest).substr(isNegative ? 1 : 0)))
        return {0, rest, true};  // rounded, as each number is
    return {isNegative ? Limits::lowest() : Limits::max(), rest, false};
}

// ---- times

/// A part of a word, beyond ASCII as well.
bool isLetter(char character)
{
    const auto code = static_cast<unsigned char>(character);
    return ((code | 0x20) >= 'a' && (code | 0x20) <= 'z') || code >= 0x80;
}

/// A unit at the beginning of `text`, in milliseconds; milliseconds themselves if there is none. A longer word that begins like a
/// unit is none: "5 hundred" are no hours.
std::uint64_t takeUnit(char const*& text)
{
    constexpr struct
    {
        std::string_view name;
        std::uint64_t milliseconds;
    } units[] = {{"ms", 1}, {"s", 1000}, {"min", 60 * 1000}, {"h", 60 * 60 * 1000}};
    for (auto const& unit : units)
        if (std::strncmp(text, unit.name.data(), unit.name.size()) == 0 && !isLetter(text[unit.name.size()])) {
            text += unit.name.size();
            return unit.milliseconds;
        }
    return 1;
}

/// Counted in whole numbers, as a double would miss milliseconds of long times. Digits beyond the twelfth behind the point
/// don't count: the twelfth of an hour is a few nanoseconds, and the next ones would need more than 64 bits.
Parsed<InMilliseconds> parseTime(char const* text)
{
    constexpr std::uint64_t lastFraction = 1'000'000'000'000;
    char const* at = skipBlanks(text);
    const bool isNegative = *at == '-';
    if (isNegative || *at == '+')
        ++at;
    const bool hasDigit = isDigit(at[0]) || (at[0] == '.' && isDigit(at[1]));
    if (!hasDigit)
        return {InMilliseconds(0), text, false};
    std::uint64_t whole = 0;
    bool isTooLong = false;
    for (; isDigit(*at); ++at) {
        const auto digit = static_cast<unsigned>(*at - '0');
        isTooLong =
            __builtin_mul_overflow(whole, 10u, &whole) || __builtin_add_overflow(whole, digit, &whole) || isTooLong;
    }
    std::uint64_t fraction = 0, parts = 1;
    if (*at == '.')
        for (++at; isDigit(*at); ++at)
            if (parts < lastFraction) {
                fraction = 10 * fraction + static_cast<unsigned>(*at - '0');
                parts *= 10;
            }
    char const* rest = skipBlanks(at);
    const std::uint64_t unit = takeUnit(rest);
    const std::uint64_t rounded = (fraction * unit + parts / 2) / parts;
    const std::uint64_t limit =
        static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + (isNegative ? 1 : 0);
    std::uint64_t count = 0;
    isTooLong = isTooLong || __builtin_mul_overflow(whole, unit, &count) ||
                __builtin_add_overflow(count, rounded, &count) || count > limit;
    count = isTooLong ? limit : count;
    // Negated before the conversion: the lowest time has no positive counterpart.
    return {InMilliseconds(static_cast<std::int64_t>(isNegative ? -count : count)), rest, !isTooLong};
}

template <class T>
auto parse(char const* text)
{
    if constexpr (std::is_same_v<T, InMilliseconds>)
        return parseTime(text);
    else if constexpr (std::is_floating_point_v<T>)
        return parseNumber<T>(text);
    else
        return parseWholeNumber<T>(text);
}

template <class T>
constexpr bool isText = std::is_same_v<T, char const*> || std::is_same_v<T, std::string>;
}  // namespace

template <class T>
char const* InValueForm<T>::getName() noexcept
{
    if constexpr (isText<T>)
        return "text";
    else if constexpr (std::is_same_v<T, bool>)
        return "true or false";
    else if constexpr (std::is_same_v<T, InMilliseconds>)
        return "time";
    else
        return std::is_floating_point_v<T> ? "number" : "whole number";
}

/// Fewer truth values than read() takes: "no" is true there, which nobody who writes it means.
template <class T>
bool InValueForm<T>::isWhole(char const* text) noexcept
{
    text = orEmpty(text);
    if constexpr (isText<T>)
        return true;
    else if constexpr (std::is_same_v<T, bool>)
        return *text == '\0' || std::strcmp(text, "1") == 0 || isWord(text, "true") || isFalse(text);
    else {
        const auto parsed = parse<T>(text);
        return parsed.isExact && *skipBlanks(parsed.rest) == '\0';
    }
}

template <class T>
T InValueForm<T>::read(char const* text)
{
    if constexpr (isText<T>)
        return orEmpty(text);
    else if constexpr (std::is_same_v<T, bool>)
        return !isFalse(orEmpty(text));
    else
        return parse<T>(orEmpty(text)).value;
}

/// Compiled once: the types that a setting can have.
template class InValueForm<int>;
template class InValueForm<long>;
template class InValueForm<bool>;
template class InValueForm<float>;
template class InValueForm<double>;
template class InValueForm<char const*>;
template class InValueForm<std::string>;
template class InValueForm<InMilliseconds>;

namespace
{
/// Whether `variable` has a value of type T; then what that type's form says.
template <class T, class Name, class Whole>
bool takeForm(InVariableBase const& variable, Name& name, Whole& isWhole)
{
    if (dynamic_cast<InVariable<T> const*>(&variable) == nullptr)
        return false;
    name = &InValueForm<T>::getName;
    isWhole = &InValueForm<T>::isWhole;
    return true;
}

/// The first of the types that the variable has.
template <class... T, class Name, class Whole>
void takeFormOf(InVariableBase const& variable, Name& name, Whole& isWhole)
{
    (takeForm<T>(variable, name, isWhole) || ...);
}
}  // namespace

/// The user's module has the class of the variable as well, and InVariable's mark makes it the library's type.
InVariableForm::InVariableForm(InVariableBase const& variable) noexcept
    : _getName(&InValueForm<char const*>::getName), _isWhole(&InValueForm<char const*>::isWhole)
{
    takeFormOf<int, long, bool, float, double, std::chrono::milliseconds>(variable, _getName, _isWhole);
}

}  // namespace Vn
