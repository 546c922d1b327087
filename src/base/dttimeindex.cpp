// Conversion of counts between rates. There are two ways: in integers for truncation toward zero, which is what the rest
// of stream time uses, and in double for the other styles of rounding. Both have a fixed order of operations, because
// intermediate results wrap or are rounded and so decide the result.
#include <base/dttimeindex.h>

#include <cmath>

namespace Vn
{
namespace
{
/// Multiplies the count by the ratio of the rates, in four steps whose order decides what wraps: two products of 32
/// bits, their ratio in lowest terms, one product of 64 bits, one division that truncates toward zero.
///
///     1001 from 30000/1001 to 30/1  ->  ratio 1001/1000, product 1002001, result 1002
///
/// The header has a fast path for the case that nothing wraps, which needs no lowest terms; this is the full rule.
std::int64_t scaledInIntegers(std::int64_t count, Rational const& from, Rational const& to)
{
    const Rational ratio(DtWrap::times32(from.getDenominator(), to.getNumerator()),
                         DtWrap::times32(from.getNumerator(), to.getDenominator()));
    return DtWrap::over(DtWrap::times(count, ratio.getNumerator()), ratio.getDenominator());
}

/// The count at the other rate before it is rounded. The order of the operations decides the last bit and stays.
double scaledInDouble(std::int64_t count, Rational const& from, Rational const& to)
{
    double x = static_cast<double>(from.getDenominator()) * static_cast<double>(count);
    x = x / static_cast<double>(from.getNumerator());
    x = x * static_cast<double>(to.getNumerator());
    x = x / static_cast<double>(to.getDenominator());
    return x;
}

/// Seconds before the point, truncated toward zero. A zero numerator is an integer division fault.
std::int64_t wholeSeconds(std::int64_t count, Rational const& rate)
{
    return DtWrap::over(DtWrap::times(rate.getDenominator(), count), rate.getNumerator());
}
}  // namespace

DtTimeIndex DtTimeIndex::convertByStyle(Rational const& from, Rational const& to,
                                        std::float_round_style style) const
{
    if (style == std::round_toward_zero)
        return scaledInIntegers(_count, from, to);
    const double x = scaledInDouble(_count, from, to);
    switch (style) {
    case std::round_indeterminate:  // Intended: this library rounds away from zero; do not mend.
        return DtWrap::truncated(x >= 0.0 ? std::ceil(x) : std::floor(x));
    case std::round_to_nearest:  // Intended: halves go up, for negative numbers too; do not mend.
        return DtWrap::truncated(std::floor(x + 0.5));
    case std::round_toward_infinity:
        return DtWrap::truncated(std::ceil(x));
    case std::round_toward_neg_infinity:
        return DtWrap::truncated(std::floor(x));
    default:  // not a style; callers may pass any number through the enumeration
        return 0;
    }
}

std::int64_t DtTimeIndex::getHours(Rational const& rate) const
{
    return wholeSeconds(_count, rate) / 3600;
}

std::int64_t DtTimeIndex::getMinutes(Rational const& rate) const
{
    const std::int64_t seconds = wholeSeconds(_count, rate);
    return (seconds - (seconds / 3600) * 3600) / 60;
}

double DtTimeIndex::getSeconds(Rational const& rate) const
{
    // The whole seconds come from integers, so they are exact beyond 2^53 counts too. Only the fraction is computed
    // in floating point, where it loses digits then.
    const std::int64_t seconds = wholeSeconds(_count, rate);
    const double precise = static_cast<double>(_count) * static_cast<double>(rate.getDenominator()) /
                           static_cast<double>(rate.getNumerator());
    return static_cast<double>(seconds - (seconds / 60) * 60) + (precise - static_cast<double>(seconds));
}

}  // namespace Vn
