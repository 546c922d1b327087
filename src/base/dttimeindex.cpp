#include <base/dttimeindex.h>

#include <cmath>

namespace Vn
{
namespace
{
/// Step for step as the rule has it: products that wrap, their ratio in lowest terms, then one product and one
/// truncating division.
std::int64_t scaledInIntegers(std::int64_t count, Rational const& from, Rational const& to)
{
    const Rational ratio(DtWrap::times32(from.getDenominator(), to.getNumerator()),
                         DtWrap::times32(from.getNumerator(), to.getDenominator()));
    return DtWrap::over(DtWrap::times(count, ratio.getNumerator()), ratio.getDenominator());
}

/// In exactly this order of operations, which decides the last bit.
double scaledInDouble(std::int64_t count, Rational const& from, Rational const& to)
{
    double x = static_cast<double>(from.getDenominator()) * static_cast<double>(count);
    x = x / static_cast<double>(from.getNumerator());
    x = x * static_cast<double>(to.getNumerator());
    x = x / static_cast<double>(to.getDenominator());
    return x;
}

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
    case std::round_indeterminate:
        return DtWrap::truncated(x >= 0.0 ? std::ceil(x) : std::floor(x));
    case std::round_to_nearest:
        return DtWrap::truncated(std::floor(x + 0.5));
    case std::round_toward_infinity:
        return DtWrap::truncated(std::ceil(x));
    case std::round_toward_neg_infinity:
        return DtWrap::truncated(std::floor(x));
    default:
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
    const std::int64_t seconds = wholeSeconds(_count, rate);
    const double precise = static_cast<double>(_count) * static_cast<double>(rate.getDenominator()) /
                           static_cast<double>(rate.getNumerator());
    return static_cast<double>(seconds - (seconds / 60) * 60) + (precise - static_cast<double>(seconds));
}

}  // namespace Vn
