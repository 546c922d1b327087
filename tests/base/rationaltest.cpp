#include <base/rational.h>
#include <base/rationalex.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <numeric>
#include <sstream>
#include <type_traits>

using Vn::Rational;
using Vn::RationalEx;

namespace
{
std::string dumped(Rational const& rational)
{
    std::ostringstream stream;
    rational.dump(stream);
    return stream.str();
}

void expectFraction(Rational const& rational, int numerator, int denominator)
{
    EXPECT_EQ(rational.getNumerator(), numerator);
    EXPECT_EQ(rational.getDenominator(), denominator);
}

/// The five comparisons as bits: <, <=, >, >=, ==.
int ordersOf(Rational const& a, Rational const& b)
{
    EXPECT_EQ(a != b, !(a == b));
    return (a < b) * 1 + (a <= b) * 2 + (a > b) * 4 + (a >= b) * 8 + (a == b) * 16;
}

/// Any 64 bits; Marsaglia's xorshift.
class Bits
{
public:
    std::uint64_t next()
    {
        _state ^= _state << 13;
        _state ^= _state >> 7;
        _state ^= _state << 17;
        return _state;
    }

    /// A number of any magnitude up to 32 bits, the extremes now and then.
    int term()
    {
        const std::uint64_t kind = next() >> 40;
        if (kind % 16 == 0)
            return kind % 32 == 0 ? INT_MIN : INT_MAX;
        return static_cast<int>(static_cast<std::int64_t>(next()) >> (32 + kind % 32));
    }

    Rational fraction()
    {
        const int denominator = term();
        return Rational(term(), denominator != 0 ? denominator : 1);
    }

private:
    std::uint64_t _state = 0x9E3779B97F4A7C15;
};

/// The five comparisons by their formulas.
int ordersByTheRule(Rational const& left, Rational const& right)
{
    const double a = static_cast<double>(left.getNumerator()) / left.getDenominator();
    const double b = static_cast<double>(right.getNumerator()) / right.getDenominator();
    const bool isSame =
        left.getNumerator() == right.getNumerator() && left.getDenominator() == right.getDenominator();
    return (b - 1e-7 > a) * 1 + (b + 1e-7 > a) * 2 + (a > b + 1e-7) * 4 + (a > b - 1e-7) * 8 + isSame * 16;
}

struct FractionRow
{
    int numerator, denominator, storedNumerator, storedDenominator;
};

constexpr FractionRow fractionRows[] = {
#include "../reference/fractions.inc"
};

struct OrderRow
{
    int leftNumerator, leftDenominator, rightNumerator, rightDenominator, orders;
};

constexpr OrderRow orderRows[] = {
#include "../reference/orders.inc"
};
}  // namespace

static_assert(sizeof(Rational) == 8);
static_assert(std::is_trivially_copyable_v<Rational> && !std::is_polymorphic_v<Rational>);

TEST(Rational, isOneByDefault)
{
    expectFraction(Rational(), 1, 1);
}

TEST(Rational, isStoredInLowestTermsWithTheSignAbove)
{
    const struct
    {
        int numerator, denominator, storedNumerator, storedDenominator;
    } table[] = {
        {2, -4, -1, 2},
        {0, -7, 0, 1},
        {0, 9, 0, 1},
        {6, 3, 2, 1},
        {-6, -3, 2, 1},
        {1, 1, 1, 1},
        {-1, 1, -1, 1},
        {30000, 1001, 30000, 1001},
        {60000, 2002, 30000, 1001},
        {17, 51, 1, 3},
        {INT_MAX, INT_MAX, 1, 1},
        {-INT_MAX, INT_MAX, -1, 1},
        {INT_MAX, -1, -INT_MAX, 1},
        {1, -INT_MAX, -1, INT_MAX},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(std::to_string(row.numerator) + "/" + std::to_string(row.denominator));
        expectFraction(Rational(row.numerator, row.denominator), row.storedNumerator, row.storedDenominator);
    }
}

TEST(Rational, staysUnreducedWithTheMostNegativeNumber)
{
    expectFraction(Rational(INT_MIN, 2), INT_MIN, 2);
    expectFraction(Rational(INT_MIN, INT_MIN), INT_MIN, INT_MIN);
    expectFraction(Rational(INT_MIN, -2), INT_MIN, 2);  // its negation is itself
    expectFraction(Rational(2, INT_MIN), -2, INT_MIN);  // and below the line it stays negative
    expectFraction(Rational(-2, INT_MIN), 2, INT_MIN);
    expectFraction(Rational(0, INT_MIN), 0, 1);
    expectFraction(Rational(INT_MIN + 1, 2), INT_MIN + 1, 2);
    expectFraction(Rational(INT_MIN + 2, 2), INT_MIN / 2 + 1, 1);  // its neighbours are as any other number
}

TEST(Rational, refusesAZeroDenominatorAndKeepsItsValue)
{
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>([] { Rational(1, 0); },
                                                                              "Illegal zero denominator.");
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>([] { Rational(0, 0); },
                                                                              "Illegal zero denominator.");
    Rational kept(3, 4);
    EXPECT_THROW(kept.setValue(1, 0), RationalEx);
    expectFraction(kept, 3, 4);
    kept.setValue(10, 4);
    expectFraction(kept, 5, 2);
}

TEST(Rational, namesItsSourceInTheException)
{
    try {
        Rational(1, 0);
        FAIL();
    } catch (RationalEx const& caught) {
        EXPECT_STREQ(caught.getFileName(), "src/base/rational");
    }
}

TEST(Rational, storesWhatTheReferenceStores)
{
    for (FractionRow const& row : fractionRows) {
        SCOPED_TRACE(std::to_string(row.numerator) + "/" + std::to_string(row.denominator));
        if (row.denominator == 0)
            EXPECT_THROW(Rational(row.numerator, row.denominator), RationalEx::ExDenominatorZero);
        else
            expectFraction(Rational(row.numerator, row.denominator), row.storedNumerator, row.storedDenominator);
    }
}

TEST(Rational, isInLowestTermsForEverySmallFraction)
{
    for (int numerator = -150; numerator <= 150; ++numerator) {
        for (int denominator = -150; denominator <= 150; ++denominator) {
            if (denominator == 0)
                continue;
            // The lowest denominator is the first that makes the numerator whole.
            int lowest = 1;
            while (numerator * lowest % denominator != 0)
                ++lowest;
            const Rational rational(numerator, denominator);
            ASSERT_EQ(rational.getDenominator(), lowest) << numerator << '/' << denominator;
            ASSERT_EQ(rational.getNumerator(), numerator * lowest / denominator) << numerator << '/' << denominator;
        }
    }
}

TEST(Rational, hasQuotientsInDoubleAndFloat)
{
    const Rational ntsc(30000, 1001);
    EXPECT_EQ(ntsc.getDouble(), 30000.0 / 1001.0);
    EXPECT_EQ(ntsc.getFloat(), 30000.0f / 1001.0f);
    EXPECT_EQ(ntsc.getReciprocalDouble(), 1001.0 / 30000.0);
    EXPECT_EQ(ntsc.getReciprocalFloat(), 1001.0f / 30000.0f);
    // Each term is brought to float first, so that this isn't the double quotient cut short.
    const Rational wide(16777217, 3);
    EXPECT_EQ(wide.getFloat(), 16777216.0f / 3.0f);
    EXPECT_EQ(wide.getReciprocalFloat(), 3.0f / 16777216.0f);
    EXPECT_EQ(Rational(0, 1).getReciprocalDouble(), std::numeric_limits<double>::infinity());
}

TEST(Rational, dumpsBothTermsAndTheValue)
{
    EXPECT_EQ(dumped(Rational(25, 1)), "(25/1=25)");
    EXPECT_EQ(dumped(Rational(-1, 2)), "(-1/2=-0.5)");
    EXPECT_EQ(dumped(Rational(30000, 1001)), "(30000/1001=29.97)");
}

TEST(Rational, dumpsInTheStreamsNumberFormat)
{
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(3) << std::showpos;
    Rational(30000, 1001).dump(stream);
    EXPECT_EQ(stream.str(), "(+30000/+1001=+29.970)");
}

TEST(Rational, equalityIsExactAndOrderIsNot)
{
    const Rational third(1, 3), nearly(33333333, 100000000);
    EXPECT_FALSE(third == nearly);
    EXPECT_TRUE(third != nearly);
    EXPECT_FALSE(third < nearly);
    EXPECT_FALSE(third > nearly);
    EXPECT_TRUE(third <= nearly);
    EXPECT_TRUE(third >= nearly);
}

TEST(Rational, toleranceIsTheSameAtEveryMagnitude)
{
    // Two neighbours in 1/20000000, half a tolerance apart: neither is below the other, at 1 as at 100.
    for (int base : {1, 100}) {
        SCOPED_TRACE(base);
        const Rational low(base * 20000000, 20000000), high(base * 20000000 + 1, 20000000);
        EXPECT_EQ(ordersOf(low, high), 2 + 8);
        EXPECT_EQ(ordersOf(high, low), 2 + 8);
        const Rational higher(base * 20000000 + 3, 20000000);
        EXPECT_EQ(ordersOf(low, higher), 1 + 2);
        EXPECT_EQ(ordersOf(higher, low), 4 + 8);
    }
}

TEST(Rational, comparesAsTheReferenceDoes)
{
    for (OrderRow const& row : orderRows) {
        const Rational left(row.leftNumerator, row.leftDenominator);
        const Rational right(row.rightNumerator, row.rightDenominator);
        EXPECT_EQ(ordersOf(left, right), row.orders) << row.leftNumerator << '/' << row.leftDenominator << " and "
                                                     << row.rightNumerator << '/' << row.rightDenominator;
    }
}

TEST(Rational, theShortWayOfComparingIsTheRuleInMillionsOfCases)
{
    Bits bits;
    for (int i = 0; i < 2000000; ++i) {
        const Rational a = bits.fraction(), b = bits.fraction();
        ASSERT_EQ(ordersOf(a, b), ordersByTheRule(a, b)) << a.getNumerator() << '/' << a.getDenominator() << " and "
                                                         << b.getNumerator() << '/' << b.getDenominator();
    }
}

TEST(Rational, theShortWayOfComparingIsTheRuleAroundTheTolerance)
{
    // Neighbours of a fraction, from equal to some hundred tolerances away, where the way is chosen.
    Bits bits;
    for (int i = 0; i < 2000000; ++i) {
        const int denominator = 1 + static_cast<int>(bits.next() % 2000000000);
        const int numerator = static_cast<int>(static_cast<std::int64_t>(bits.next()) >> (33 + bits.next() % 31));
        const int step = static_cast<int>(
            static_cast<std::int64_t>(bits.next() % static_cast<std::uint64_t>(denominator / 50000 + 2)));
        const Rational a(numerator, denominator);
        const Rational b(bits.next() % 2 == 0 ? numerator + step : numerator - step, denominator);
        ASSERT_EQ(ordersOf(a, b), ordersByTheRule(a, b)) << numerator << " and " << step << " over " << denominator;
        ASSERT_EQ(ordersOf(b, a), ordersByTheRule(b, a)) << numerator << " and " << step << " over " << denominator;
    }
}

TEST(Rational, lowestTermsAreThoseOfTheLibrarysDivisorInMillionsOfCases)
{
    Bits bits;
    for (int i = 0; i < 2000000; ++i) {
        const int numerator = bits.term(), denominator = bits.term();
        if (numerator == INT_MIN || denominator == INT_MIN || denominator == 0)
            continue;
        const int divisor = std::gcd(numerator, denominator) * (denominator < 0 ? -1 : 1);
        const Rational rational(numerator, denominator);
        ASSERT_EQ(rational.getNumerator(), numerator / divisor) << numerator << '/' << denominator;
        ASSERT_EQ(rational.getDenominator(), denominator / divisor) << numerator << '/' << denominator;
    }
}
