// Stream time beside integers of any size: every product is formed without a bound, and cut to 32 or 64 bits where the rules
// say that it wraps.
#include <base/dtex.h>
#include <base/dttime.h>
#include <base/rationalex.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace
{
using Vn::DtTime;
using Vn::DtTimeIndex;
using Vn::Rational;
using Wide = boost::multiprecision::cpp_int;

/// The value in [-2^(bits-1), 2^(bits-1)) that differs by a multiple of 2^bits.
Wide wrapped(Wide const& value, unsigned bits)
{
    const Wide modulus = Wide(1) << bits;
    Wide rest = value % modulus;
    if (rest < 0)
        rest += modulus;
    return rest >= modulus / 2 ? Wide(rest - modulus) : rest;
}

Wide absolute(Wide const& value)
{
    return value < 0 ? Wide(-value) : value;
}

/// A fraction as the rules normalise it; nothing for a denominator of zero.
struct Fraction
{
    Wide numerator, denominator;
};

std::optional<Fraction> normalised(Wide numerator, Wide denominator)
{
    if (denominator == 0)
        return std::nullopt;
    if (denominator < 0) {
        numerator = wrapped(-numerator, 32);
        denominator = wrapped(-denominator, 32);
    }
    if (numerator == 0)
        return Fraction{0, 1};
    // The most negative number has no absolute value in 32 bits, and leaves the fraction as it is.
    const Wide magnitude = wrapped(absolute(numerator), 32);
    if (magnitude <= 0 || denominator <= 0)
        return Fraction{numerator, denominator};
    const Wide divisor = gcd(magnitude, denominator);
    return Fraction{numerator / divisor, denominator / divisor};
}

Fraction termsOf(Rational const& rate)
{
    return {rate.getNumerator(), rate.getDenominator()};
}

bool isEqual(Fraction const& left, Fraction const& right)
{
    return left.numerator == right.numerator && left.denominator == right.denominator;
}

/// The count at another rate, as the integer path gives it; nothing where a denominator is zero.
std::optional<Wide> converted(Wide const& count, Fraction const& from, Fraction const& to)
{
    const std::optional<Fraction> ratio =
        normalised(wrapped(from.denominator * to.numerator, 32), wrapped(from.numerator * to.denominator, 32));
    if (!ratio)
        return std::nullopt;
    return wrapped(wrapped(count * ratio->numerator, 64) / ratio->denominator, 64);
}

/// Terms of a rate: those in use, small ones, limits, and any.
rc::Gen<int> anyTerm()
{
    return rc::gen::oneOf(
        rc::gen::element(1, 24, 25, 30, 1001, 24000, 30000, 44100, 48000, 90000, 1000000),
        rc::gen::inRange(-50, 50),
        rc::gen::element(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 65536, -65536, 46341),
        rc::gen::resize(1000, rc::gen::arbitrary<int>()));
}

rc::Gen<int> anyNonZeroTerm()
{
    return rc::gen::suchThat(anyTerm(), [](int term) { return term != 0; });
}

rc::Gen<std::int64_t> anyCount()
{
    return rc::gen::oneOf(rc::gen::inRange<std::int64_t>(-100000, 100000),
                          rc::gen::element(std::numeric_limits<std::int64_t>::min(),
                                           std::numeric_limits<std::int64_t>::max(), std::int64_t{1} << 53),
                          rc::gen::resize(1000, rc::gen::arbitrary<std::int64_t>()));
}

Rational anyRate()
{
    const int numerator = *anyNonZeroTerm();
    const int denominator = *anyNonZeroTerm();
    return Rational(numerator, denominator);
}

DtTime anyTime()
{
    const std::int64_t count = *anyCount();
    return DtTime(count, anyRate());
}
}  // namespace

TEST(StreamTimeProperty, aFractionIsReducedAsTheRulesSay)
{
    EXPECT_TRUE(rc::check([] {
        const int numerator = *anyTerm();
        const int denominator = *anyTerm();
        const std::optional<Fraction> expected = normalised(numerator, denominator);
        if (!expected) {
            RC_ASSERT_THROWS_AS(Rational(numerator, denominator), Vn::RationalEx::ExDenominatorZero);
            return;
        }
        const Rational made(numerator, denominator);
        RC_ASSERT(Wide(made.getNumerator()) == expected->numerator);
        RC_ASSERT(Wide(made.getDenominator()) == expected->denominator);
    }));
}

TEST(StreamTimeProperty, aCountIsConvertedAsUnboundedIntegersGiveIt)
{
    EXPECT_TRUE(rc::check([] {
        const std::int64_t count = *anyCount();
        const Rational from = anyRate();
        const Rational to = anyRate();
        const std::optional<Wide> expected = converted(count, termsOf(from), termsOf(to));
        if (!expected) {
            RC_ASSERT_THROWS_AS(DtTimeIndex(count).convert(from, to, std::round_toward_zero),
                                Vn::RationalEx::ExDenominatorZero);
            return;
        }
        const std::int64_t found = DtTimeIndex(count).convert(from, to, std::round_toward_zero);
        RC_ASSERT(Wide(found) == *expected);
    }));
}

TEST(StreamTimeProperty, aConversionIsExactWhereNothingWraps)
{
    EXPECT_TRUE(rc::check([] {
        const std::int64_t count = *rc::gen::inRange<std::int64_t>(-1000000000000, 1000000000000);
        const auto term = rc::gen::inRange(1, 40000);
        const int terms[] = {*term, *term, *term, *term};  // a list, which has an order
        const Rational from(terms[0], terms[1]);
        const Rational to(terms[2], terms[3]);
        const Wide numerator = Wide(count) * from.getDenominator() * to.getNumerator();
        const Wide denominator = Wide(from.getNumerator()) * to.getDenominator();
        RC_PRE(Wide(from.getDenominator()) * to.getNumerator() <= INT32_MAX);
        RC_PRE(denominator <= INT32_MAX);
        RC_PRE(absolute(numerator) <= INT64_MAX);
        const std::int64_t found = DtTimeIndex(count).convert(from, to, std::round_toward_zero);
        RC_ASSERT(Wide(found) == numerator / denominator);
    }));
}

TEST(StreamTimeProperty, timesCompareByTheirProducts)
{
    EXPECT_TRUE(rc::check([] {
        const DtTime a = anyTime();
        const DtTime b = anyTime();
        const auto product = [](DtTime const& first, DtTime const& second) {
            return wrapped(Wide(first.getRate().getDenominator()) * second.getRate().getNumerator() *
                               static_cast<std::int64_t>(first.getCount()),
                           64);
        };
        const Wide left = product(a, b);
        const Wide right = product(b, a);
        RC_ASSERT((a == b) == (left == right));
        RC_ASSERT((a != b) == (left != right));
        RC_ASSERT((a < b) == (left < right));
        RC_ASSERT((a <= b) == (left <= right));
        RC_ASSERT((a > b) == (left > right));
        RC_ASSERT((a >= b) == (left >= right));
    }));
}

TEST(StreamTimeProperty, sumsAreFormedAtTheCommonRate)
{
    EXPECT_TRUE(rc::check([] {
        const DtTime a = anyTime();
        const DtTime b = anyTime();
        RC_PRE(!a.isRateEqual(b));
        const std::optional<Fraction> product =
            normalised(wrapped(Wide(a.getRate().getNumerator()) * b.getRate().getNumerator(), 32),
                       wrapped(Wide(a.getRate().getDenominator()) * b.getRate().getDenominator(), 32));
        RC_PRE(product.has_value() && product->numerator != 0);
        Fraction common = *product;
        const int sign = common.numerator > 0 ? 1 : -1;
        // The most negative numerator stays negative, so it isn't over the limit.
        if (wrapped(absolute(common.numerator), 32) > 1000000)
            common = {sign * 1000000, 1};
        else if (common.denominator > 1000000)
            common = {sign, 1000000};
        const auto at = [&common](DtTime const& time) -> std::optional<Wide> {
            const std::int64_t count = time.getCount();
            const Fraction own = termsOf(time.getRate());
            return isEqual(own, common) ? std::optional<Wide>(count) : converted(count, own, common);
        };
        const std::optional<Wide> left = at(a);
        const std::optional<Wide> right = at(b);
        if (!left || !right) {
            RC_ASSERT_THROWS_AS(a + b, Vn::RationalEx::ExDenominatorZero);
            return;
        }
        const auto countOf = [](DtTime const& time) { return static_cast<std::int64_t>(time.getCount()); };
        RC_ASSERT(isEqual(termsOf((a + b).getRate()), common));
        RC_ASSERT(Wide(countOf(a + b)) == wrapped(*left + *right, 64));
        RC_ASSERT(Wide(countOf(a - b)) == wrapped(*left - *right, 64));
        RC_ASSERT(Wide(countOf(a * b)) == wrapped(*left * *right, 64));
        RC_PRE(*right != 0);
        RC_ASSERT(Wide(countOf(a / b)) == wrapped(*left / *right, 64));
        RC_ASSERT(Wide(countOf(a % b)) == *left % *right);
    }));
}

TEST(StreamTimeProperty, hoursMinutesAndSecondsAddUpToTheWholeSeconds)
{
    EXPECT_TRUE(rc::check([] {
        const std::int64_t count = *anyCount();
        const Rational rate = anyRate();
        const Wide seconds = wrapped(wrapped(Wide(rate.getDenominator()) * count, 64) / rate.getNumerator(), 64);
        const DtTimeIndex index(count);
        RC_ASSERT(Wide(static_cast<std::int64_t>(index.getHours(rate))) == seconds / 3600);
        RC_ASSERT(Wide(static_cast<std::int64_t>(index.getMinutes(rate))) == seconds % 3600 / 60);
    }));
}
