#pragma once

#include <base/exbase.h>
#include <base/lgtext.h>

#include <exception>
#include <type_traits>

namespace Vn
{

class DtTime;
class OsFilePath;
class Rational;

template <class T>
class Interval;

// The library's own values in log messages, each with the text that its operator for std::ostream writes to a new stream.
// Only a value's own header makes the value complete, so this one costs little. Tests: tests/base/lgtexttest.cpp.

/// Writes `(30000/1001=29.97)`: the terms, and the value with six significant digits.
VN_BASE_EXPORT LgStream& operator<<(LgStream& stream, Rational const& value);

/// Writes `(100 @ (25/1=25))`: the count and the rate.
VN_BASE_EXPORT LgStream& operator<<(LgStream& stream, DtTime const& time);

/// Writes the path as it is. A path of 32,768 bytes or more never fits: a "#" stands in its place.
VN_BASE_EXPORT LgStream& operator<<(LgStream& stream, OsFilePath const& path);

/// `[lower, upper]` in one piece; each bound has six significant digits.
VN_BASE_EXPORT LgStream& writeInterval(LgStream& stream, double lower, double upper);

/// Writes `[0.5, 3]`: both bounds as they stand, in one piece and with six significant digits. Of other types than float and
/// double each bound is a piece of its own, in the type's own form.
template <class T>
LgStream& operator<<(LgStream& stream, Interval<T> const& interval)
{
    if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>)
        return writeInterval(stream, interval.getLower(), interval.getUpper());
    else
        return stream << '[' << interval.getLower() << ", " << interval.getUpper() << ']';
}

/// An exception of the library's that is known as such alone.
template <class T>
concept LgFamilyOfExceptions =
    std::is_convertible_v<T const*, ExBase const*> && !std::is_convertible_v<T const*, std::exception const*>;

/// Writes the reason of an exception that is caught as a family of the library, `Vn::ExBase const&` or `Vn::InEx const&`.
/// Where the type is a std::exception as well, lgtext.h has the operator; both write the same text.
template <class Exception>
requires LgFamilyOfExceptions<Exception> LgStream& operator<<(LgStream& stream, Exception const& exception)
{
    return stream << static_cast<ExBase const&>(exception).getReason();
}

/// The same on the standard output.
template <class Exception>
requires LgFamilyOfExceptions<Exception> LgStandardOutput& operator<<(LgStandardOutput& output,
                                                                      Exception const& exception)
{
    return output << static_cast<ExBase const&>(exception).getReason();
}

}  // namespace Vn
