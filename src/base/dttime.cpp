// Arithmetic of two times has three steps: find a rate for both (commonRate), convert both counts to it with
// truncation toward zero (convertRate), and apply the operation to the counts. Times of equal rate skip the first
// two. The operators on a time and a bare count, and the comparisons in the header, need none of this: they work on
// counts and rate terms as they stand.
//
// Rates of streams are nearly always whole numbers, or whole numbers over 1001. combinedAtCommonRate() knows what the
// steps make of such rates without taking them; it leaves all others to combinedByTheRule(). Both give the same times,
// which a test compares over many rates.
//
// Everything that may throw comes before the first store, so an operator that throws leaves its left operand
// unchanged. All products go through DtWrap. With plain integers an overflow would be undefined behaviour, and the
// results of overflowing programs, which are part of the interface, would depend on the compiler.
#include <base/dttime.h>

#include <base/dtex.h>

#include <limits>
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

/// Whether a rate is as nearly all are: a positive whole number of counts a second, or such a number over 1001, as in
/// television.
bool isUsual(Rational const& rate)
{
    return rate.getNumerator() > 0 && (rate.getDenominator() == 1 || rate.getDenominator() == 1001);
}

/// Whether one rate's numerator and the other's usual denominator, which is 7 * 11 * 13 or 1, have no common divisor.
bool areCoprime(int numerator, int denominator)
{
    const unsigned n = static_cast<unsigned>(numerator);
    return denominator == 1 || (n % 7 != 0 && n % 11 != 0 && n % 13 != 0);
}

/// Whether the product of two usual rates is in lowest terms as it stands.
bool isReduced(Rational const& a, Rational const& b)
{
    return areCoprime(a.getNumerator(), b.getDenominator()) && areCoprime(b.getNumerator(), a.getDenominator());
}

/// `count` times the rate, truncated. Division by a constant is a multiplication.
std::int64_t timesUsual(std::int64_t count, Rational const& rate)
{
    const std::int64_t product = DtWrap::times(count, rate.getNumerator());
    return rate.getDenominator() == 1 ? product : product / 1001;
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

// Usual rates need no reduction. A product whose numerator is above the limit stays above it in lowest terms if there is no
// common divisor, or if it is above the limit times the denominator, which no common divisor exceeds.
//
// With n1/d1 and n2/d2 in lowest terms and the product as the common rate, the rule's factor for a count at n1/d1 is n2/d2,
// in lowest terms already, and the other way round. No product of terms can wrap at 32 bits: with a numerator up to the limit
// and a denominator up to 1001 none reaches 2^31.
DtTime DtTime::combinedAtCommonRate(DtTime left, DtTime right, Operator operation)
{
    if (!isUsual(left._rate) || !isUsual(right._rate))
        return combinedByTheRule(left, right, operation);
    const int n1 = left._rate.getNumerator(), n2 = right._rate.getNumerator();
    const int d1 = left._rate.getDenominator(), d2 = right._rate.getDenominator();
    const std::int64_t above = std::int64_t(n1) * n2;
    const int below = d1 * d2;
    if (above > commonRateLimit) {
        const bool staysAbove = above > std::int64_t(commonRateLimit) * below || isReduced(left._rate, right._rate);
        if (staysAbove && above <= std::numeric_limits<int>::max())
            return combinedAtTheLimit(left, right, operation);
        return combinedByTheRule(left, right, operation);
    }
    if (below > commonRateLimit || !isReduced(left._rate, right._rate))
        return combinedByTheRule(left, right, operation);
    return DtTime(applied(timesUsual(left._count, right._rate), timesUsual(right._count, left._rate), operation),
                  Rational(static_cast<int>(above), below, Rational::InLowestTerms()));
}

// The counts are converted as by the rule, which has the limit times a denominator, divided by a numerator; neither wraps. A
// ratio that could be reduced gives the same quotient as long as the count's product does not wrap, either.
DtTime DtTime::combinedAtTheLimit(DtTime left, DtTime right, Operator operation)
{
    std::int64_t a, b;
    if (__builtin_mul_overflow(std::int64_t(left._count), left._rate.getDenominator() * commonRateLimit, &a) ||
        __builtin_mul_overflow(std::int64_t(right._count), right._rate.getDenominator() * commonRateLimit, &b))
        return combinedByTheRule(left, right, operation);
    return DtTime(applied(a / left._rate.getNumerator(), b / right._rate.getNumerator(), operation),
                  Rational(commonRateLimit, 1, Rational::InLowestTerms()));
}

DtTime DtTime::combinedByTheRule(DtTime left, DtTime right, Operator operation)
{
    const Rational common = commonRate(left._rate, right._rate);
    left = left.convertRate(common);
    right = right.convertRate(common);
    return DtTime(applied(left._count, right._count, operation), common);
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
