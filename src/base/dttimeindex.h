#pragma once

#include <base/dtwrap.h>
#include <base/rational.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace Vn
{

/// A count of units of stream time, such as frames or samples. It holds no rate; functions that need one take it as
/// an argument, in counts per second.
///
///     const Vn::DtTimeIndex frames(1001);
///     frames.convert(Vn::Rational(30000, 1001), Vn::Rational(30, 1), std::round_toward_zero);    // 1002
///
/// Arithmetic wraps at 64 bits without a report. `index + 5` is ambiguous, because the index converts from and to a
/// plain integer: write `index + DtTimeIndex(5)` or `index += 5`.
///
/// A value of 8 bytes, without allocation and usable before any package starts. Each thread may use its own copy. For
/// a count that keeps its rate see DtTime.
/// Tests: tests/base/dttimeindextest.cpp.
class VN_BASE_EXPORT DtTimeIndex
{
public:
    /// @{
    /// Conversion from a plain integer, implicit on purpose; copies.
    ///
    ///     DtTimeIndex index;    // 0
    ///     index = 1001;
    ///
    DtTimeIndex(std::int64_t count = 0) : _count(count) {}
    DtTimeIndex(DtTimeIndex const&) = default;
    DtTimeIndex& operator=(DtTimeIndex const&) = default;
    DtTimeIndex& operator=(std::int64_t count)
    {
        _count = count;
        return *this;
    }
    /// @}

    /// Conversion to a plain integer; comparisons of two indices use it.
    operator std::int64_t() const { return _count; }

    /// @{
    /// The bare count, not scaled by any rate, rounded to the type's 53 or 24 bits.
    ///
    ///     DtTimeIndex(16777217).getDouble()  ->  16777217.0
    ///     DtTimeIndex(16777217).getFloat()   ->  16777216.0f
    ///
    double getDouble() const { return static_cast<double>(_count); }
    float getFloat() const { return static_cast<float>(_count); }
    /// @}

    /// @{
    /// Wraps at 64 bits: the largest count plus 1 is the most negative one.
    DtTimeIndex operator+(DtTimeIndex const& other) const { return DtWrap::plus(_count, other._count); }
    DtTimeIndex operator-(DtTimeIndex const& other) const { return DtWrap::minus(_count, other._count); }
    DtTimeIndex operator*(DtTimeIndex const& other) const { return DtWrap::times(_count, other._count); }
    /// @}

    /// @{
    /// The quotient is truncated toward zero; the remainder has the sign of this index.
    ///
    ///     -7 / 3  ->  -2
    ///     -7 % 3  ->  -1
    ///     -9223372036854775808 / -1  ->  -9223372036854775808
    ///
    /// A zero divisor is not checked: it is an integer division fault of the processor, which ends the program on
    /// most systems.
    DtTimeIndex operator/(DtTimeIndex const& other) const { return DtWrap::over(_count, other._count); }
    DtTimeIndex operator%(DtTimeIndex const& other) const { return DtWrap::modulo(_count, other._count); }
    /// @}

    /// @{
    /// As the operators without assignment: `+=`, `-=` and `*=` wrap, `/=` truncates toward zero, `%=` keeps the
    /// sign, and a zero divisor is not checked. Each returns this index.
    DtTimeIndex& operator+=(std::int64_t other) { return *this = DtWrap::plus(_count, other); }
    DtTimeIndex& operator-=(std::int64_t other) { return *this = DtWrap::minus(_count, other); }
    DtTimeIndex& operator*=(std::int64_t other) { return *this = DtWrap::times(_count, other); }
    DtTimeIndex& operator/=(std::int64_t other) { return *this = DtWrap::over(_count, other); }
    DtTimeIndex& operator%=(std::int64_t other) { return *this = DtWrap::modulo(_count, other); }
    /// @}

    /// @{
    /// One count up or down, wrapping at 64 bits. The postfix forms return the value from before.
    DtTimeIndex& operator++() { return *this += 1; }
    DtTimeIndex& operator--() { return *this -= 1; }
    DtTimeIndex operator++(int)
    {
        const DtTimeIndex before = *this;
        *this += 1;
        return before;
    }
    DtTimeIndex operator--(int)
    {
        const DtTimeIndex before = *this;
        *this -= 1;
        return before;
    }
    /// @}

    /// Converts this count from the rate `from` to the rate `to`, both in counts per second.
    ///
    /// `round_toward_zero` computes in integers. The products of the rates' terms wrap at 32 bits and the product
    /// with the count wraps at 64, without a report; as long as nothing wraps the result is exact but for the
    /// truncation. Throws RationalEx::ExDenominatorZero if `from`'s numerator times `to`'s denominator comes out as
    /// zero in 32 bits, above all if `from` is a null rate.
    ///
    /// The other styles compute in double, so counts beyond 2^53 lose their last digits. A value that is no style
    /// gives 0. A result that 64 bits cannot hold becomes the most negative index, and so does not-a-number.
    ///
    ///     style                        result before rounding: 2.1   2.5   -2.1   -2.5
    ///     round_toward_zero                                    2     2     -2     -2
    ///     round_to_nearest             halves go up            2     3     -2     -2
    ///     round_toward_infinity                                3     3     -2     -2
    ///     round_toward_neg_infinity                            2     2     -3     -3
    ///     round_indeterminate          away from zero          3     3     -3     -3
    ///
    DtTimeIndex convert(Rational const& from, Rational const& to, std::float_round_style style) const
    {
        if (style == std::round_toward_zero) {
            if (const std::optional<std::int64_t> count = convertUnwrapped(from, to))
                return *count;
        }
        return convertByStyle(from, to, style);
    }

    /// @{
    /// Hours, minutes within the hour (-59 to 59), and seconds within the minute with their fraction.
    ///
    ///     count      rate    hours  minutes  seconds
    ///     2251525    25/1    25     1        1.0        a day, an hour, a minute and a second
    ///     38         25/1    0      0        1.52
    ///     -3661      1/1     -1     -1       -1.0       all parts of a negative time are zero or negative
    ///
    /// All three truncate count times denominator, a 64-bit product that wraps, to whole seconds; the fraction of a
    /// second comes from double arithmetic. A rate with a zero numerator is not checked: it is an integer division
    /// fault of the processor.
    std::int64_t getHours(Rational const& rate) const;
    std::int64_t getMinutes(Rational const& rate) const;
    double getSeconds(Rational const& rate) const;
    /// @}

private:
    /// The fast path of `round_toward_zero`: as long as nothing wraps, the ratio need not be reduced. No count if a
    /// product passes its limits, is the most negative number, or would be a zero divisor; convertByStyle() then
    /// applies the rules for these cases.
    std::optional<std::int64_t> convertUnwrapped(Rational const& from, Rational const& to) const
    {
        std::int64_t multiplier = static_cast<std::int64_t>(from.getDenominator()) * to.getNumerator();
        std::int64_t divisor = static_cast<std::int64_t>(from.getNumerator()) * to.getDenominator();
        constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
        if (multiplier > limit || multiplier < -limit || divisor > limit || divisor < -limit || divisor == 0)
            return std::nullopt;
        // Makes the numerator carry the sign before the product is formed: only there is the wrap of the most
        // negative count noticed.
        if (divisor < 0) {
            multiplier = -multiplier;
            divisor = -divisor;
        }
        std::int64_t product;
        if (__builtin_mul_overflow(_count, multiplier, &product))
            return std::nullopt;
        return product / divisor;
    }

    /// Every style, by the full rules.
    DtTimeIndex convertByStyle(Rational const& from, Rational const& to, std::float_round_style style) const;

    std::int64_t _count;
};

}  // namespace Vn
