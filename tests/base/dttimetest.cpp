#include <base/dtex.h>
#include <base/dttime.h>
#include <base/rationalex.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <type_traits>
#include <vector>

using Vn::DtEx;
using Vn::DtTime;
using Vn::DtTimeIndex;
using Vn::Rational;
using Vn::RationalEx;

namespace
{
enum class Refusal
{
    None,
    BadRate,
    DenominatorZero
};

struct Time
{
    std::int64_t count;
    int numerator, denominator;

    DtTime made() const { return DtTime(count, numerator, denominator); }
};

struct TimesRow
{
    Time left, right;
    char operation;
    Time expected;
    Refusal refusal;
    std::int64_t crossLeft, crossRight;
};

constexpr TimesRow timesRows[] = {
#include "../reference/times.inc"
};

void expectTime(DtTime const& time, std::int64_t count, int numerator, int denominator)
{
    EXPECT_EQ(std::int64_t(time.getCount()), count);
    EXPECT_EQ(time.getRate().getNumerator(), numerator);
    EXPECT_EQ(time.getRate().getDenominator(), denominator);
}

template <class Right>
DtTime& assign(DtTime& left, char operation, Right const& right)
{
    switch (operation) {
    case '+':
        return left += right;
    case '-':
        return left -= right;
    case '*':
        return left *= right;
    case '/':
        return left /= right;
    default:
        return left %= right;
    }
}

template <class Right>
DtTime applied(DtTime const& left, char operation, Right const& right)
{
    switch (operation) {
    case '+':
        return left + right;
    case '-':
        return left - right;
    case '*':
        return left * right;
    case '/':
        return left / right;
    default:
        return left % right;
    }
}

/// The sum at the common rate, each step as plain integers. The product of the rates must not wrap to a null rate.
DtTime addedByTheRule(std::int64_t left, Rational const& a, std::int64_t right, Rational const& b)
{
    auto const wrapped = [](std::int64_t number) { return static_cast<int>(static_cast<std::uint32_t>(number)); };
    auto const product = [&wrapped](int x, int y) { return wrapped(std::int64_t(x) * y); };
    constexpr int limit = 1000000;
    Rational common(product(a.getNumerator(), b.getNumerator()), product(a.getDenominator(), b.getDenominator()));
    const int sign = common.getNumerator() > 0 ? 1 : -1;
    if (product(common.getNumerator(), sign) > limit)
        common = Rational(sign * limit, 1);
    else if (common.getDenominator() > limit)
        common = Rational(sign, limit);
    auto const converted = [&](std::int64_t count, Rational const& from) {
        if (from == common)
            return count;
        Rational const ratio(product(from.getDenominator(), common.getNumerator()),
                             product(from.getNumerator(), common.getDenominator()));
        const auto whole = static_cast<std::int64_t>(
            static_cast<std::uint64_t>(count) * static_cast<std::uint64_t>(std::int64_t(ratio.getNumerator())));
        return ratio.getDenominator() == -1 ? static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(whole))
                                            : whole / ratio.getDenominator();
    };
    const auto sum = static_cast<std::int64_t>(static_cast<std::uint64_t>(converted(left, a)) +
                                               static_cast<std::uint64_t>(converted(right, b)));
    return DtTime(sum, common);
}

std::string dumped(DtTime const& time)
{
    std::ostringstream stream;
    time.dump(stream);
    return stream.str();
}
}  // namespace

static_assert(sizeof(DtTime) == 16);
static_assert(std::is_trivially_copyable_v<DtTime> && !std::is_polymorphic_v<DtTime>);

TEST(DtTime, isZeroAtOneByDefault)
{
    expectTime(DtTime(), 0, 1, 1);
}

TEST(DtTime, refusesANullRate)
{
    constexpr char const* badRate = "Null rate not allowed in DtTime.";
    VnTest::expectThrow<DtEx::BadRate, std::logic_error>([] { DtTime(10, 0, 1); }, badRate);
    VnTest::expectThrow<DtEx::BadRate, std::logic_error>([] { DtTime(10, Rational(0, 1)); }, badRate);
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>([] { DtTime(10, 1, 0); },
                                                                              "Illegal zero denominator.");
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>([] { DtTime(10, 0, 0); },
                                                                              "Illegal zero denominator.");
}

TEST(DtTime, takesANegativeRate)
{
    expectTime(DtTime(10, 25, -1), 10, -25, 1);
}

TEST(DtTime, normalisesItsRate)
{
    expectTime(DtTime(10, 50, 2), 10, 25, 1);
}

TEST(DtTime, isCopiedFieldByField)
{
    const DtTime time(7, 25, 1);
    DtTime copy(time);
    expectTime(copy, 7, 25, 1);
    copy = DtTime(8, 30, 1);
    expectTime(copy, 8, 30, 1);
}

TEST(DtTime, ratesAreEqualExactlyOrNotAtAll)
{
    EXPECT_TRUE(DtTime(1, 25, 1).isRateEqual(DtTime(2, 50, 2)));
    EXPECT_FALSE(DtTime(25, 25, 1).isRateEqual(DtTime(30, 30, 1)));
    EXPECT_FALSE(
        DtTime(1, 1, 3).isRateEqual(DtTime(1, 33333333, 100000000)));  // closer than the order operators see
}

TEST(DtTime, dumpsCountAndRate)
{
    EXPECT_EQ(dumped(DtTime(100, 25, 1)), "(100 @ (25/1=25))");
    std::ostringstream stream;
    EXPECT_EQ(&(stream << DtTime(-5, 1, 2)), &stream);
    EXPECT_EQ(stream.str(), "(-5 @ (1/2=0.5))");
}

TEST(DtTime, convertsItsRateTowardZero)
{
    expectTime(DtTime(1001, 30000, 1001).convertRate(Rational(30, 1)), 1002, 30, 1);
    expectTime(DtTime(-5, 2, 1).convertRate(Rational(1, 1)), -2, 1, 1);
    expectTime(DtTime(5, 25, 1).convertRate(Rational(25, 1)), 5, 25, 1);
    VnTest::expectThrow<DtEx::BadRate, std::logic_error>([] { DtTime(5, 25, 1).convertRate(Rational(0, 1)); },
                                                         "Null rate not allowed in DtTime.");
}

TEST(DtTime, anEqualRateSkipsTheConversion)
{
    // Converting would wrap: 65536 * 65536 over itself is zero over zero in 32 bits.
    expectTime(DtTime(5, 65536, 65537).convertRate(Rational(65536, 65537)), 5, 65536, 65537);
    EXPECT_THROW(DtTime(5, 65536, 65537).convertRate(Rational(1, 65536)), RationalEx::ExDenominatorZero);
}

TEST(DtTime, reckonsWithABareCountAtItsOwnRate)
{
    const DtTime time(-7, 30000, 1001);
    expectTime(time + DtTimeIndex(3), -4, 30000, 1001);
    expectTime(time - DtTimeIndex(3), -10, 30000, 1001);
    expectTime(time * DtTimeIndex(3), -21, 30000, 1001);
    expectTime(time / DtTimeIndex(3), -2, 30000, 1001);
    expectTime(time % DtTimeIndex(3), -1, 30000, 1001);
    for (char operation : {'+', '-', '*', '/', '%'}) {
        DtTime changed = time;
        EXPECT_EQ(&assign(changed, operation, DtTimeIndex(3)), &changed);
        EXPECT_TRUE(changed.isRateEqual(time));
        EXPECT_EQ(std::int64_t(changed.getCount()),
                  std::int64_t(applied(time, operation, DtTimeIndex(3)).getCount()));
    }
}

TEST(DtTime, stepsByOneUnitOfItsRate)
{
    DtTime time(5, 25, 1);
    expectTime(time++, 5, 25, 1);
    expectTime(time, 6, 25, 1);
    expectTime(++time, 7, 25, 1);
    expectTime(time--, 7, 25, 1);
    expectTime(--time, 5, 25, 1);
    EXPECT_EQ(&++time, &time);
    EXPECT_EQ(&--time, &time);
}

TEST(DtTime, equalityMeansTheSameInstant)
{
    const DtTime a(25, 25, 1), b(30, 30, 1), later(31, 30, 1);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_TRUE(a <= b && a >= b && !(a < b) && !(a > b));
    EXPECT_TRUE(a < later && a <= later && a != later && !(a == later) && !(a > later) && !(a >= later));
    EXPECT_TRUE(later > a && later >= a && !(later < a) && !(later <= a));
}

TEST(DtTime, comparesExactlyWhereDoublesAreTooCoarse)
{
    // A year at 48 kHz against a position one count of 44.1 kHz away.
    const std::int64_t seconds = 365 * 86400;
    const DtTime year(seconds * 48000, 48000, 1);
    EXPECT_TRUE(year == DtTime(seconds * 44100, 44100, 1));
    EXPECT_TRUE(year < DtTime(seconds * 44100 + 1, 44100, 1));
    EXPECT_TRUE(year > DtTime(seconds * 44100 - 1, 44100, 1));
    // Equal seconds in double and yet apart: 2^53 + 1 is no double.
    EXPECT_TRUE(DtTime(9007199254740993, 1, 1) > DtTime(9007199254740992, 1, 1));
}

TEST(DtTime, aNegativeRateTurnsTheOrderAround)
{
    const DtTime forward(1, 25, 1), backward(1, -25, 1);
    // 1/25 s is above -1/25 s, and the products say the reverse.
    EXPECT_FALSE(forward > backward);
    EXPECT_TRUE(forward < backward);
}

TEST(DtTime, crossProductsWrapAt64Bits)
{
    const DtTime a(INT64_MAX, 3, 1), b(1, 7, 1);
    EXPECT_EQ(std::int64_t(Vn::crossMultLhs(a, b)), 9223372036854775801);  // 7 * (2^63 - 1), less 3 * 2^64
    EXPECT_EQ(std::int64_t(Vn::crossMultRhs(a, b)), 3);
    // Half of 2^64 twice over is nothing, so the larger time seems to equal zero.
    const DtTime huge(std::int64_t(1) << 62, 1, 1), zero(0, 4, 1);
    EXPECT_EQ(std::int64_t(Vn::crossMultLhs(huge, zero)), 0);
    EXPECT_TRUE(huge == zero);
    // Equal rates aren't cut short: these products wrap as well.
    EXPECT_TRUE(DtTime(std::int64_t(1) << 62, 4, 1) == DtTime(0, 4, 1));
}

TEST(DtTime, equalRatesCombineWithoutConversion)
{
    expectTime(DtTime(10, 25, 1) + DtTime(10, 25, 1), 20, 25, 1);
    expectTime(DtTime(1, 2000, 1) + DtTime(1, 2000, 1), 2, 2000, 1);
    expectTime(DtTime(-7, 25, 1) % DtTime(3, 25, 1), -1, 25, 1);
    expectTime(DtTime(-7, 25, 1) / DtTime(3, 25, 1), -2, 25, 1);
    expectTime(DtTime(-7, 25, 1) * DtTime(3, 25, 1), -21, 25, 1);
    expectTime(DtTime(-7, 25, 1) - DtTime(3, 25, 1), -10, 25, 1);
    expectTime(DtTime(INT64_MAX, 25, 1) + DtTime(1, 25, 1), INT64_MIN, 25, 1);
}

TEST(DtTime, differentRatesMeetAtTheirProduct)
{
    expectTime(DtTime(25, 25, 1) + DtTime(30, 30, 1), 1500, 750, 1);
    expectTime(DtTime(25, 25, 1) - DtTime(30, 30, 1), 0, 750, 1);
    expectTime(DtTime(25, 25, 1) * DtTime(30, 30, 1), 750 * 750, 750, 1);
    expectTime(DtTime(25, 25, 1) / DtTime(30, 30, 1), 1, 750, 1);
    expectTime(DtTime(25, 25, 1) % DtTime(30, 30, 1), 0, 750, 1);
}

TEST(DtTime, theCommonRateCollapsesOntoItsLimit)
{
    expectTime(DtTime(1, 2000, 1) + DtTime(1, 3000, 1), 833, 1000000, 1);
    expectTime(DtTime(1, 1, 2000) + DtTime(1, 1, 3000), 0, 1, 1000000);
    expectTime(DtTime(500, 1, 2000) + DtTime(1000, 1, 3000), 4, 1, 1000000);
    // Both sides of the limit, for either term.
    expectTime(DtTime(0, 1000, 1) + DtTime(0, 1000, 3), 0, 1000000, 3);
    expectTime(DtTime(0, 1000, 1) + DtTime(0, 1001, 1), 0, 1000000, 1);
    expectTime(DtTime(0, 1, 1000) + DtTime(0, 3, 1000), 0, 3, 1000000);
    expectTime(DtTime(0, 1, 1000) + DtTime(0, 1, 1001), 0, 1, 1000000);
    // The sign stays.
    expectTime(DtTime(0, -2000, 1) + DtTime(0, 3000, 1), 0, -1000000, 1);
    expectTime(DtTime(0, 1, -2000) + DtTime(0, 1, 3000), 0, -1, 1000000);
    // A large numerator is looked at first.
    expectTime(DtTime(0, 2000, 1009) + DtTime(0, 3001, 1013), 0, 1000000, 1);
}

TEST(DtTime, theCommonRateIsTheSameFromEitherSide)
{
    const Time rates[] = {{0, 25, 1}, {0, 30000, 1001}, {0, 48000, 1}, {0, 1, 60}, {0, 1, 1234567}, {0, -7, 3}};
    for (Time const& a : rates) {
        for (Time const& b : rates)
            EXPECT_TRUE((a.made() + b.made()).isRateEqual(b.made() + a.made()));
    }
}

TEST(DtTime, aWrappedCommonRateIsRefusedAndTheLeftTimeStays)
{
    const struct
    {
        char const* what;
        Time left, right;
        Refusal refusal;
    } table[] = {
        {"numerators wrap to nothing", {5, 65536, 1}, {7, 65536, 3}, Refusal::BadRate},
        {"denominators wrap to nothing", {5, 1, 65536}, {7, 3, 65536}, Refusal::DenominatorZero},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        for (char operation : {'+', '-', '*', '/', '%'}) {
            DtTime left = row.left.made();
            const DtTime right = row.right.made();
            if (row.refusal == Refusal::BadRate)
                EXPECT_THROW(assign(left, operation, right), DtEx::BadRate);
            else
                EXPECT_THROW(assign(left, operation, right), RationalEx::ExDenominatorZero);
            expectTime(left, row.left.count, row.left.numerator, row.left.denominator);
        }
    }
}

TEST(DtTime, combinesWithItself)
{
    DtTime time(10, 25, 1);
    DtTime const& same = time;
    time += same;
    expectTime(time, 20, 25, 1);
    time -= same;
    expectTime(time, 0, 25, 1);
}

TEST(DtTime, combinesAndComparesAsTheReferenceDoes)
{
    for (TimesRow const& row : timesRows) {
        const DtTime left = row.left.made(), right = row.right.made();
        SCOPED_TRACE(testing::Message() << left << ' ' << row.operation << ' ' << right);
        EXPECT_EQ(std::int64_t(Vn::crossMultLhs(left, right)), row.crossLeft);
        EXPECT_EQ(std::int64_t(Vn::crossMultRhs(left, right)), row.crossRight);
        EXPECT_EQ(left < right, row.crossLeft < row.crossRight);
        EXPECT_EQ(left == right, row.crossLeft == row.crossRight);
        EXPECT_EQ(left >= right, row.crossLeft >= row.crossRight);
        switch (row.refusal) {
        case Refusal::None: {
            DtTime changed = left;
            EXPECT_EQ(&assign(changed, row.operation, right), &changed);
            expectTime(changed, row.expected.count, row.expected.numerator, row.expected.denominator);
            expectTime(applied(left, row.operation, right), row.expected.count, row.expected.numerator,
                       row.expected.denominator);
            break;
        }
        case Refusal::BadRate:
            EXPECT_THROW(applied(left, row.operation, right), DtEx::BadRate);
            break;
        case Refusal::DenominatorZero:
            EXPECT_THROW(applied(left, row.operation, right), RationalEx::ExDenominatorZero);
            break;
        }
    }
}

TEST(DtTime, anyTwoRatesMeetByTheRuleStepByStep)
{
    std::vector<Rational> rates;
    for (int numerator :
         {1, 6, 7, 11, 13, 25, 91, 143, 1000, 1001, 24000, 30000, 44100, 48000, 1000000, 2147483647, -25})
        for (int denominator : {1, 2, 7, 1000, 1001, 1003, 2002, 65537})
            if (Rational const rate(numerator, denominator); rate.getNumerator() == numerator)
                rates.push_back(rate);
    constexpr std::int64_t counts[][2] = {{1, -1},          {1000, 1001},           {-98765, 43},
                                          {3000000000, -7}, {INT64_MAX, 123456789}, {INT64_MIN, INT64_MIN + 1}};
    for (Rational const& a : rates) {
        for (Rational const& b : rates) {
            if (a == b)
                continue;
            for (auto const& [left, right] : counts) {
                const DtTime expected = addedByTheRule(left, a, right, b);
                ASSERT_EQ(dumped(DtTime(left, a) + DtTime(right, b)), dumped(expected))
                    << dumped(DtTime(left, a)) << " + " << dumped(DtTime(right, b));
            }
        }
    }
}

TEST(DtEx, mismatchedClockRatesAreThereForCallers)
{
    VnTest::expectThrow<DtEx::BadRefRate, std::logic_error>([] { throw DtEx::BadRefRate("src/base/x", 1); },
                                                            "Mismatched reference clock rates.");
}
