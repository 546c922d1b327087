#include <base/dttime.h>

#include <base/dtex.h>

#include <ostream>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/dttime";
constexpr int commonRateLimit = 1000000;  ///< for either term

/// The rate at which two different rates meet: their product, not the least rate that would hold both.
Rational commonRate(Rational const& a, Rational const& b)
{
    const int above = DtWrap::times32(a.getNumerator(), b.getNumerator());
    const int below = DtWrap::times32(a.getDenominator(), b.getDenominator());
    // No divisor of both passes the one below, so this numerator stays beyond the limit in lowest terms too.
    if (below > 0 && above > static_cast<std::int64_t>(commonRateLimit) * below)
        return Rational(commonRateLimit, 1);
    const Rational product(above, below);
    const int numerator = product.getNumerator();
    const bool isPositive = numerator > 0;
    // The most negative numerator has no magnitude in 32 bits and passes for a small one, as its negation would.
    const int magnitude = isPositive ? numerator : DtWrap::times32(numerator, -1);
    if (magnitude > commonRateLimit)
        return Rational(isPositive ? commonRateLimit : -commonRateLimit, 1);
    if (product.getDenominator() > commonRateLimit) {
        static const Rational slowest(1, commonRateLimit);
        return isPositive ? slowest : Rational(-1, commonRateLimit);
    }
    return product;
}
}  // namespace

void DtTime::throwBadRate()
{
    throw DtEx::BadRate(sourceName, __LINE__);
}

DtTime DtTime::convertRate(Rational const& rate) const
{
    if (rate == _rate)
        return *this;
    return DtTime(_count.convert(_rate, rate, std::round_toward_zero), rate);
}

void DtTime::dump(std::ostream& stream) const
{
    stream << '(' << static_cast<std::int64_t>(_count) << " @ ";
    _rate.dump(stream);
    stream << ')';
}

/// All that may throw comes before the first store, so that a throw leaves this time as it was.
template <class Operation>
DtTime& DtTime::combine(DtTime const& other, Operation operation)
{
    if (other._rate == _rate) {
        _count = operation(_count, other._count);
        return *this;
    }
    const Rational common = commonRate(_rate, other._rate);
    const DtTime left = convertRate(common);
    const DtTime right = other.convertRate(common);
    _count = operation(left._count, right._count);
    _rate = common;
    return *this;
}

DtTime& DtTime::operator+=(DtTime const& other)
{
    return combine(other, [](std::int64_t a, std::int64_t b) { return DtWrap::plus(a, b); });
}

DtTime& DtTime::operator-=(DtTime const& other)
{
    return combine(other, [](std::int64_t a, std::int64_t b) { return DtWrap::minus(a, b); });
}

DtTime& DtTime::operator*=(DtTime const& other)
{
    return combine(other, [](std::int64_t a, std::int64_t b) { return DtWrap::times(a, b); });
}

DtTime& DtTime::operator/=(DtTime const& other)
{
    return combine(other, [](std::int64_t a, std::int64_t b) { return DtWrap::over(a, b); });
}

DtTime& DtTime::operator%=(DtTime const& other)
{
    return combine(other, [](std::int64_t a, std::int64_t b) { return DtWrap::modulo(a, b); });
}

DtTime& DtTime::operator+=(DtTimeIndex const& other)
{
    _count += other;
    return *this;
}

DtTime& DtTime::operator-=(DtTimeIndex const& other)
{
    _count -= other;
    return *this;
}

DtTime& DtTime::operator*=(DtTimeIndex const& other)
{
    _count *= other;
    return *this;
}

DtTime& DtTime::operator/=(DtTimeIndex const& other)
{
    _count /= other;
    return *this;
}

DtTime& DtTime::operator%=(DtTimeIndex const& other)
{
    _count %= other;
    return *this;
}

DtTime& DtTime::operator++()
{
    ++_count;
    return *this;
}

DtTime& DtTime::operator--()
{
    --_count;
    return *this;
}

DtTime DtTime::operator++(int)
{
    const DtTime before = *this;
    ++_count;
    return before;
}

DtTime DtTime::operator--(int)
{
    const DtTime before = *this;
    --_count;
    return before;
}

std::ostream& operator<<(std::ostream& stream, DtTime const& time)
{
    time.dump(stream);
    return stream;
}

}  // namespace Vn
