// Arithmetic of two times has three steps: find a rate for both (commonRate), convert both counts to it with
// truncation toward zero (convertRate), and apply the operation to the counts. Times of equal rate skip the first
// two. The operators on a time and a bare count, and the comparisons in the header, need none of this: they work on
// counts and rate terms as they stand.
//
// Everything that may throw comes before the first store, so an operator that throws leaves its left operand
// unchanged. All products go through DtWrap. With plain integers an overflow would be undefined behaviour, and the
// results of overflowing programs, which are part of the interface, would depend on the compiler.
#include <base/dttime.h>

#include <base/dtex.h>

#include <ostream>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/dttime";
constexpr int commonRateLimit = 1000000;  ///< for either term

/// The common rate of two different rates: the product, with either term limited to 1,000,000.
///
///     25/1, 30/1          ->  750/1
///     2000/1, 3000/1      ->  1000000/1
///     1/2000, 1/3000      ->  1/1000000
///     2000/1, -3000/1     ->  -1000000/1
///
// Intended: neither the least common multiple, nor the nearest rate within the limit. The rule decides the rate and
// the truncation of every combined time, so it is part of the interface; do not mend.
Rational commonRate(Rational const& a, Rational const& b)
{
    const int above = DtWrap::times32(a.getNumerator(), b.getNumerator());
    const int below = DtWrap::times32(a.getDenominator(), b.getDenominator());
    // A shortcut, which saves the reduction. The common divisor is at most the denominator, so a numerator beyond the
    // limit times the denominator stays beyond the limit when the fraction is reduced.
    if (below > 0 && above > static_cast<std::int64_t>(commonRateLimit) * below)
        return Rational(commonRateLimit, 1);
    const Rational product(above, below);
    const int numerator = product.getNumerator();
    const bool isPositive = numerator > 0;
    // Intended: the most negative numerator has no magnitude in 32 bits. Its negation is still negative, so it counts
    // as within the limit; do not mend.
    const int magnitude = isPositive ? numerator : DtWrap::times32(numerator, -1);
    if (magnitude > commonRateLimit)
        return Rational(isPositive ? commonRateLimit : -commonRateLimit, 1);
    if (product.getDenominator() > commonRateLimit) {
        static const Rational slowest(1, commonRateLimit);  // the only shared object, never changed
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
    // A copy, without a conversion and without the check for a null rate.
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

/// `operation` takes two counts. Nothing is stored before both conversions have succeeded.
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

// Intended: multiplication, division and remainder treat the counts as plain numbers and leave the common rate to the
// result, so a product is not in square seconds; do not mend.

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

// With a bare count, in units of this time's own rate: no conversion, and nothing throws.

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
