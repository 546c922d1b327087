#pragma once

#include <base/baseexport.h>

#include <cstdint>
#include <ratio>
#include <string>
#include <type_traits>

namespace Vn
{

class InVariableBase;

/// What std::chrono::milliseconds counts in: each standard library chooses among the types of 64 bits.
#ifdef _LIBCPP_VERSION
using InMillisecondsRep = long long;
#else
using InMillisecondsRep = std::int64_t;
#endif

/// Whether T is std::chrono::milliseconds. Told by what the type has, as its header would double
/// the time that a source with a setting takes to compile.
template <class T>
concept InTimeType =
    std::is_same_v<typename T::period, std::milli> && std::is_same_v<typename T::rep, InMillisecondsRep>;

/// A number of milliseconds: what InValueForm has in the place of the durations.
enum class InMilliseconds : std::int64_t
{
};

/// The types that a setting can have.
template <class T>
concept InSettingType =
    std::is_same_v<T, int> || std::is_same_v<T, long> || std::is_same_v<T, bool> || std::is_same_v<T, float> ||
    std::is_same_v<T, double> || std::is_same_v<T, char const*> || std::is_same_v<T, std::string> || InTimeType<T>;

/// How the text of a setting is read as a value of type T, and whether the whole text is such a value.
///
///     using Form = Vn::InValueForm<int>;
///     Form::read("12 apples")       // 12, which is what InVariable<int> gives
///     Form::isWhole("12 apples")    // false
///     Form::getName()               // "whole number", for a message to whoever typed it
///
/// Reading takes what it understands from the beginning of the text and never fails. So a program that wants to refuse
/// a mistyped value asks isWhole() before. The result of both is the same under every locale.
///
/// Nothing is kept, and nothing is allocated but the text of a std::string. Thread-safe.
/// Tests: tests/base/invalueformtest.cpp.
template <class T>
class InValueForm
{
    static_assert(InSettingType<T> || std::is_same_v<T, InMilliseconds>,
                  "a setting is an int, long, bool, float, double, char const*, std::string "
                  "or std::chrono::milliseconds");

public:
    /// What such a text is called, as in "-d wants a NAME":
    ///
    ///     int, long                  "whole number"
    ///     float, double              "number"
    ///     bool                       "true or false"
    ///     std::chrono::milliseconds  "time"
    ///     char const*, std::string   "text"
    ///
    static char const* getName() noexcept;

    /// Whether all of `text` is a value of the type; null counts as empty.
    ///
    ///     int, long      "12"  " -3 "  "+7"                   not "", "12abc", "1.5", "99999999999999999999"
    ///     float, double  "1.5"  ".5"  "-2e3"  "inf"           not "", "1,5", "0x10", "nan", "1e999"
    ///     bool           ""  "0"  "1"  "true"  "False"        not "no", "off", "2", " 0": these read as true
    ///     milliseconds   "250"  "250ms"  "1.5 s"  "-2min"     not "", "5m", "5 minutes", "1e3"
    ///     texts          each
    ///
    /// Blanks around a number or a time count as nothing. The empty text is true because an option without a value
    /// has it.
    static bool isWhole(char const* text) noexcept;

    /// The value that `text` begins with, behind blanks; null counts as empty.
    ///
    ///     int, long      "12abc" -> 12, "abc" and "" -> 0; beyond the type the nearest limit
    ///     float, double  "1.5x" -> 1.5, "1,5" -> 1, "abc", "nan" and "" -> 0, "inf" -> infinity; beyond the type the
    ///                    largest finite value of that sign, and 0 for what is nearer to 0 than any value of the type
    ///     bool           "0", and "false" in any case -> false; all else -> true
    ///     milliseconds   "250" and "250ms" -> 250, "1.5s" -> 1500, "2min" -> 120000, "1 h" -> 3600000, "0.0004s" -> 0;
    ///                    a text behind the number that is no unit counts as nothing, so "5m" and "5 minutes" -> 5;
    ///                    "" -> 0;
    ///                    to the nearest millisecond, halves away from 0; beyond the type the nearest limit
    ///     char const*    `text` itself
    ///     std::string    a copy
    ///
    /// Numbers are decimal, with "." and an exponent as in C; hexadecimal ones are not read ("0x10" -> 0).
    static T read(char const* text);
};

extern template class VN_BASE_EXPORT InValueForm<int>;
extern template class VN_BASE_EXPORT InValueForm<long>;
extern template class VN_BASE_EXPORT InValueForm<bool>;
extern template class VN_BASE_EXPORT InValueForm<float>;
extern template class VN_BASE_EXPORT InValueForm<double>;
extern template class VN_BASE_EXPORT InValueForm<char const*>;
extern template class VN_BASE_EXPORT InValueForm<std::string>;
extern template class VN_BASE_EXPORT InValueForm<InMilliseconds>;

/// The form of a time.
template <InTimeType T>
class InValueForm<T>
{
public:
    /// @{
    /// As above.
    static char const* getName() noexcept { return InValueForm<InMilliseconds>::getName(); }
    static bool isWhole(char const* text) noexcept { return InValueForm<InMilliseconds>::isWhole(text); }
    static T read(char const* text)
    {
        return T(static_cast<typename T::rep>(InValueForm<InMilliseconds>::read(text)));
    }
    /// @}
};

/// The form of a variable whose type only the running program knows.
///
///     const Vn::InVariableForm form(*Vn::InVariableBase::queryViaHandle("palette.depth"));
///     if (!form.isWhole(text))
///         std::cerr << text << " is no " << form.getName() << "\n";    // "12 apples is no whole number"
///
/// A variable of a class that is no InVariable has the form of a text. Copies are cheap; thread-safe.
/// Tests: tests/base/invalueformtest.cpp.
class VN_BASE_EXPORT InVariableForm
{
public:
    /// `variable` isn't needed afterwards.
    explicit InVariableForm(InVariableBase const& variable) noexcept;

    /// @{
    /// As in InValueForm of the variable's type.
    char const* getName() const noexcept { return _getName(); }
    bool isWhole(char const* text) const noexcept { return _isWhole(text); }
    /// @}

private:
    char const* (*_getName)() noexcept;
    bool (*_isWhole)(char const* text) noexcept;
};

}  // namespace Vn
