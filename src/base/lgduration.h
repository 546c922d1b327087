#pragma once

#include <base/lgtext.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace Vn
{

/// The text of a std::chrono duration: its number and its unit, as C++ writes them to a stream.
///
///     std::chrono::milliseconds(250)      ->  "250ms"
///     std::chrono::duration<double>(1.5)  ->  "1.5s", six significant digits
///     -90min                              ->  "-90min"
///     std::chrono::microseconds(7)        ->  "7us"
///
/// The units are as, fs, ps, ns, us, ms, cs, ds, s, das, hs, ks, Ms, Gs, Ts, Ps, Es, min, h and d. Any other period stands in
/// brackets, in seconds:
///
///     std::chrono::weeks(2)               ->  "2[604800]s"
///     duration<int, std::ratio<1, 30>>    ->  "5[1/30]s"
///
/// The text is in this object; nothing is allocated, nothing throws. Tests: tests/base/lgtexttest.cpp.
class VN_BASE_EXPORT LgDurationText
{
public:
    /// For numbers of any arithmetic type; `long double` is shown as a double.
    template <LgArithmetic Number, class Period>
    explicit LgDurationText(std::chrono::duration<Number, Period> const& duration)
    {
        using Reduced = typename Period::type;
        if constexpr (std::is_floating_point_v<Number>)
            write(static_cast<double>(duration.count()), Reduced::num, Reduced::den);
        else if constexpr (std::is_signed_v<Number>)
            write(static_cast<long long>(duration.count()), Reduced::num, Reduced::den);
        else
            write(static_cast<unsigned long long>(duration.count()), Reduced::num, Reduced::den);
    }

    /// The text, valid as long as this object.
    std::string_view get() const { return {_text, _size}; }

private:
    void write(double count, std::intmax_t numerator, std::intmax_t denominator);
    void write(long long count, std::intmax_t numerator, std::intmax_t denominator);
    void write(unsigned long long count, std::intmax_t numerator, std::intmax_t denominator);

    template <class Count>
    void writeAny(Count count, std::intmax_t numerator, std::intmax_t denominator);

    // A count of 20 characters, and two numbers of 19 digits in brackets.
    char _text[64];
    std::size_t _size;
};

/// @{
/// Writes the duration with its unit: "250ms".
template <LgArithmetic Number, class Period>
LgStream& operator<<(LgStream& stream, std::chrono::duration<Number, Period> const& duration)
{
    return stream << LgDurationText(duration).get();
}

template <LgArithmetic Number, class Period>
LgStandardOutput& operator<<(LgStandardOutput& output, std::chrono::duration<Number, Period> const& duration)
{
    return output << LgDurationText(duration).get();
}
/// @}

}  // namespace Vn
