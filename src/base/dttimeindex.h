#pragma once

#include <base/dtwrap.h>
#include <base/rational.h>

#include <cstdint>
#include <limits>

namespace Vn
{

/// A count of units of stream time. It carries no rate: whoever reads it hands the rate in, in counts per second.
///
///     const Vn::DtTimeIndex frames(1001);
///     frames.convert(Vn::Rational(30000, 1001), Vn::Rational(30, 1), std::round_toward_zero);    // 1002
///
/// Arithmetic wraps at 64 bits, and nothing is reported. `index + 5` is ambiguous, as the index converts from and to
/// a plain integer: wrap the number, `index + DtTimeIndex(5)`, or use `+=`.
///
/// A value of 8 bytes; no allocation, no start-up, any thread its own copy.
/// Tests: tests/base/dttimeindextest.cpp.
class VN_BASE_EXPORT DtTimeIndex
{
public:
    DtTimeIndex(std::int64_t count = 0) : _count(count) {}
    DtTimeIndex(DtTimeIndex const&) = default;
    DtTimeIndex& operator=(DtTimeIndex const&) = default;
    DtTimeIndex& operator=(std::int64_t count)
    {
        _count = count;
        return *this;
    }

    operator std::int64_t() const { return _count; }

    /// The bare count, not scaled by any rate.
    double getDouble() const { return static_cast<double>(_count); }
    float getFloat() const { return static_cast<float>(_count); }

    DtTimeIndex operator+(DtTimeIndex const& other) const { return DtWrap::plus(_count, other._count); }
    DtTimeIndex operator-(DtTimeIndex const& other) const { return DtWrap::minus(_count, other._count); }
    DtTimeIndex operator*(DtTimeIndex const& other) const { return DtWrap::times(_count, other._count); }

    /// Truncates toward zero. A zero divisor isn't looked at: it is the machine's integer division fault, which ends
    /// the program on most processors.
    DtTimeIndex operator/(DtTimeIndex const& other) const { return DtWrap::over(_count, other._count); }

    /// Has the sign of this index. A zero divisor is the machine's fault, as in a division.
    DtTimeIndex operator%(DtTimeIndex const& other) const { return DtWrap::modulo(_count, other._count); }

    DtTimeIndex& operator+=(std::int64_t other) { return *this = DtWrap::plus(_count, other); }
    DtTimeIndex& operator-=(std::int64_t other) { return *this = DtWrap::minus(_count, other); }
    DtTimeIndex& operator*=(std::int64_t other) { return *this = DtWrap::times(_count, other); }

    /// As the operators without assignment, a zero divisor included.
    DtTimeIndex& operator/=(std::int64_t other) { return *this = DtWrap::over(_count, other); }
    DtTimeIndex& operator%=(std::int64_t other) { return *this = DtWrap::modulo(_count, other); }

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

    /// This count, taken at the rate `from`, at the rate `to`.
    ///
    /// `round_toward_zero` is exact in integers as long as nothing wraps: the rates' products wrap at 32 bits, their
    /// reduced ratio times the count at 64. Throws RationalEx::ExDenominatorZero if `from`'s numerator times `to`'s
    /// denominator comes out as zero, for a null rate above all.
    ///
    /// The other styles reckon in double. `round_indeterminate` goes away from zero, `round_to_nearest` takes halves
    /// toward positive infinity. What 64 bits don't hold becomes the most negative index. A value that is no style
    /// gives 0.
    DtTimeIndex convert(Rational const& from, Rational const& to, std::float_round_style style) const
    {
        std::int64_t count;
        if (style == std::round_toward_zero && convertUnwrapped(from, to, count))
            return count;
        return convertByStyle(from, to, style);
    }

    /// Whole hours. As the two below, it starts from whole seconds, truncated toward zero from a 64-bit product that
    /// may wrap; for a negative time all three are zero or negative. A zero numerator of the rate isn't looked at: it
    /// is the machine's integer division fault.
    std::int64_t getHours(Rational const& rate) const;

    /// Minutes within the hour.
    std::int64_t getMinutes(Rational const& rate) const;

    /// Seconds within the minute. The whole part is exact, the fraction comes from double arithmetic.
    double getSeconds(Rational const& rate) const;

private:
    /// The usual case of `round_toward_zero`: without a wrap the result doesn't need the ratio in lowest terms. False
    /// if a product passes its limits, is the most negative number, or would be a zero divisor.
    bool convertUnwrapped(Rational const& from, Rational const& to, std::int64_t& count) const
    {
        std::int64_t multiplier = static_cast<std::int64_t>(from.getDenominator()) * to.getNumerator();
        std::int64_t divisor = static_cast<std::int64_t>(from.getNumerator()) * to.getDenominator();
        constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
        if (multiplier > limit || multiplier < -limit || divisor > limit || divisor < -limit || divisor == 0)
            return false;
        // The sign goes above the line before the product, as there the most negative count wraps.
        if (divisor < 0) {
            multiplier = -multiplier;
            divisor = -divisor;
        }
        std::int64_t product;
        if (__builtin_mul_overflow(_count, multiplier, &product))
            return false;
        count = product / divisor;
        return true;
    }

    DtTimeIndex convertByStyle(Rational const& from, Rational const& to, std::float_round_style style) const;

    std::int64_t _count;
};

}  // namespace Vn
