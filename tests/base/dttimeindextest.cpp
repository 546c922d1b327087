#include <base/dttimeindex.h>
#include <base/rationalex.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cstdint>
#include <limits>
#include <numeric>
#include <type_traits>

using Vn::DtTimeIndex;
using Vn::Rational;
using Vn::RationalEx;

namespace
{
struct ConvertRow
{
    std::int64_t count;
    int fromNumerator, fromDenominator, toNumerator, toDenominator;
    int style;
    std::int64_t expected;
    int isRefused;
};

constexpr ConvertRow convertRows[] = {
#include "../reference/convert.inc"
};

struct ClockRow
{
    std::int64_t count;
    int numerator, denominator;
    std::int64_t hours, minutes;
    std::uint64_t seconds;
};

constexpr ClockRow clockRows[] = {
#include "../reference/clock.inc"
};

std::int64_t converted(std::int64_t count, Rational const& from, Rational const& to, int style)
{
    // By its number, which need not be one of the enumeration's.
    return DtTimeIndex(count).convert(from, to, std::bit_cast<std::float_round_style>(style));
}

/// The rule word for word: products of 32 bits, their ratio in lowest terms, a product of 64 bits, a division.
std::int64_t convertedByTheRule(std::int64_t count, Rational const& from, Rational const& to)
{
    auto const product = [](int a, int b) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
    };
    const Rational ratio(product(from.getDenominator(), to.getNumerator()),
                         product(from.getNumerator(), to.getDenominator()));
    auto const scaled = static_cast<std::int64_t>(static_cast<std::uint64_t>(count) *
                                                  static_cast<std::uint64_t>(std::int64_t(ratio.getNumerator())));
    return scaled / ratio.getDenominator();
}

/// Numbers of every magnitude; Marsaglia's xorshift.
class Numbers
{
public:
    std::uint64_t bits()
    {
        _state ^= _state << 13;
        _state ^= _state >> 7;
        _state ^= _state << 17;
        return _state;
    }

    std::int64_t signedOf(unsigned width)
    {
        const unsigned kept = 1 + static_cast<unsigned>(bits() >> 32) % width;
        return static_cast<std::int64_t>(bits()) >> (64 - kept);
    }

    Rational rate()
    {
        const int denominator = static_cast<int>(signedOf(32));
        return Rational(static_cast<int>(signedOf(32)), denominator != 0 ? denominator : 1);
    }

private:
    std::uint64_t _state = 0x2545F4914F6CDD1D;
};
}  // namespace

static_assert(sizeof(DtTimeIndex) == 8);
static_assert(std::is_trivially_copyable_v<DtTimeIndex> && !std::is_polymorphic_v<DtTimeIndex>);
static_assert(std::is_convertible_v<std::int64_t, DtTimeIndex> && std::is_convertible_v<DtTimeIndex, std::int64_t>);

TEST(DtTimeIndex, isAPlainCount)
{
    EXPECT_EQ(std::int64_t(DtTimeIndex()), 0);
    DtTimeIndex index = std::int64_t(5);
    const std::int64_t back = index;
    EXPECT_EQ(back, 5);
    index = std::int64_t(7);
    EXPECT_EQ(std::int64_t(index), 7);
    const DtTimeIndex copy = index;
    index = DtTimeIndex(8);
    EXPECT_EQ(std::int64_t(copy), 7);
    EXPECT_EQ(std::int64_t(index), 8);
}

TEST(DtTimeIndex, readsOutUnscaled)
{
    EXPECT_EQ(DtTimeIndex(-3).getDouble(), -3.0);
    EXPECT_EQ(DtTimeIndex(16777217).getDouble(), 16777217.0);
    EXPECT_EQ(DtTimeIndex(16777217).getFloat(), 16777216.0f);
    EXPECT_EQ(DtTimeIndex(9007199254740993).getDouble(), 9007199254740992.0);
}

TEST(DtTimeIndex, reckonsAsIntegersDo)
{
    const DtTimeIndex a(-7), b(3);
    EXPECT_EQ(std::int64_t(a + b), -4);
    EXPECT_EQ(std::int64_t(a - b), -10);
    EXPECT_EQ(std::int64_t(a * b), -21);
    EXPECT_EQ(std::int64_t(a / b), -2);
    EXPECT_EQ(std::int64_t(a % b), -1);
    DtTimeIndex index(-7);
    EXPECT_EQ(&(index += std::int64_t(17)), &index);
    EXPECT_EQ(std::int64_t(index), 10);
    EXPECT_EQ(std::int64_t(index -= 3), 7);
    EXPECT_EQ(std::int64_t(index *= 3), 21);
    EXPECT_EQ(std::int64_t(index /= 4), 5);
    EXPECT_EQ(std::int64_t(index %= 3), 2);
}

TEST(DtTimeIndex, stepsByOneCount)
{
    DtTimeIndex index(5);
    EXPECT_EQ(std::int64_t(index++), 5);
    EXPECT_EQ(std::int64_t(index), 6);
    EXPECT_EQ(std::int64_t(++index), 7);
    EXPECT_EQ(std::int64_t(index--), 7);
    EXPECT_EQ(std::int64_t(--index), 5);
    EXPECT_EQ(&++index, &index);
}

TEST(DtTimeIndex, wrapsAt64Bits)
{
    const DtTimeIndex largest(INT64_MAX), lowest(INT64_MIN), one(1), minusOne(-1);
    EXPECT_EQ(std::int64_t(largest + one), INT64_MIN);
    EXPECT_EQ(std::int64_t(lowest - one), INT64_MAX);
    EXPECT_EQ(std::int64_t(largest * DtTimeIndex(2)), -2);
    EXPECT_EQ(std::int64_t(lowest * minusOne), INT64_MIN);
    EXPECT_EQ(std::int64_t(lowest / minusOne), INT64_MIN);
    EXPECT_EQ(std::int64_t(lowest % minusOne), 0);
    DtTimeIndex index(INT64_MAX);
    EXPECT_EQ(std::int64_t(++index), INT64_MIN);
    EXPECT_EQ(std::int64_t(--index), INT64_MAX);
}

TEST(DtTimeIndex, convertsTowardZeroInIntegers)
{
    EXPECT_EQ(converted(1001, Rational(30000, 1001), Rational(30, 1), std::round_toward_zero), 1002);
    EXPECT_EQ(converted(-1001, Rational(30000, 1001), Rational(30, 1), std::round_toward_zero), -1002);
    EXPECT_EQ(converted(5, Rational(2, 1), Rational(1, 1), std::round_toward_zero), 2);
    EXPECT_EQ(converted(-5, Rational(2, 1), Rational(1, 1), std::round_toward_zero), -2);
    // Beyond 2^53 a double would lose the last digit.
    EXPECT_EQ(converted(9007199254740993, Rational(1, 1), Rational(3, 1), std::round_toward_zero),
              27021597764222979);
}

TEST(DtTimeIndex, convertsByTheStyle)
{
    const Rational tenth(10, 1), half(2, 1), one(1, 1);
    EXPECT_EQ(converted(-5, half, one, std::round_to_nearest), -2);
    EXPECT_EQ(converted(5, half, one, std::round_to_nearest), 3);
    EXPECT_EQ(converted(21, tenth, one, std::round_indeterminate), 3);
    EXPECT_EQ(converted(-21, tenth, one, std::round_indeterminate), -3);
    EXPECT_EQ(converted(21, tenth, one, std::round_toward_infinity), 3);
    EXPECT_EQ(converted(-21, tenth, one, std::round_toward_infinity), -2);
    EXPECT_EQ(converted(21, tenth, one, std::round_toward_neg_infinity), 2);
    EXPECT_EQ(converted(-21, tenth, one, std::round_toward_neg_infinity), -3);
}

TEST(DtTimeIndex, aValueThatIsNoStyleGivesZero)
{
    for (int style : {7, 4, -2, INT_MAX, INT_MIN})
        EXPECT_EQ(converted(100, Rational(1, 1), Rational(2, 1), style), 0) << style;
}

TEST(DtTimeIndex, floatingResultsBeyond64BitsAreTheMostNegativeCount)
{
    for (int style : {-1, 1, 2, 3}) {
        SCOPED_TRACE(style);
        EXPECT_EQ(converted(INT64_MAX, Rational(1, 1), Rational(2, 1), style), INT64_MIN);
        EXPECT_EQ(converted(INT64_MAX, Rational(1, 1), Rational(1, 1), style), INT64_MIN);  // 2^63 in double
        EXPECT_EQ(converted(INT64_MIN, Rational(1, 1), Rational(2, 1), style), INT64_MIN);
        EXPECT_EQ(converted(9223372036854774784, Rational(1, 1), Rational(1, 1), style), 9223372036854774784);
        EXPECT_EQ(converted(5, Rational(0, 1), Rational(1, 1), style), INT64_MIN);  // an infinity
        EXPECT_EQ(converted(0, Rational(0, 1), Rational(1, 1), style), INT64_MIN);  // not-a-number
    }
}

TEST(DtTimeIndex, rateProductsWrapAt32Bits)
{
    // 1001 times a billion is beyond 32 bits: what is left of it makes the ratio.
    const Rational ntsc(30000, 1001), nanoseconds(1000000000, 1);
    const Rational wrapped(static_cast<int>(1001u * 1000000000u), 30000);
    const std::int64_t expected = 90 * std::int64_t(wrapped.getNumerator()) / wrapped.getDenominator();
    EXPECT_EQ(converted(90, ntsc, nanoseconds, std::round_toward_zero), expected);
    EXPECT_NE(expected, 3003000000);
    // The same instants at 30000/1, 1001 to a frame, convert without a wrap.
    EXPECT_EQ(converted(90 * 1001, Rational(30000, 1), nanoseconds, std::round_toward_zero), 3003000000);
}

TEST(DtTimeIndex, aDivisorThatComesOutAsZeroIsRefused)
{
    auto const convert = [](Rational const& from, Rational const& to) {
        return [from, to] { converted(1, from, to, std::round_toward_zero); };
    };
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>(
        convert(Rational(0, 1), Rational(25, 1)), "Illegal zero denominator.");
    // 65536 * 65536 is nothing in 32 bits.
    VnTest::expectThrow<RationalEx::ExDenominatorZero, std::invalid_argument>(
        convert(Rational(65536, 1), Rational(1, 65536)), "Illegal zero denominator.");
    EXPECT_EQ(converted(1, Rational(25, 1), Rational(0, 1), std::round_toward_zero), 0);
}

TEST(DtTimeIndex, convertsAsTheReferenceDoes)
{
    for (ConvertRow const& row : convertRows) {
        SCOPED_TRACE(testing::Message()
                     << row.count << " from " << row.fromNumerator << '/' << row.fromDenominator << " to "
                     << row.toNumerator << '/' << row.toDenominator << " by " << row.style);
        const Rational from(row.fromNumerator, row.fromDenominator), to(row.toNumerator, row.toDenominator);
        if (row.isRefused != 0)
            EXPECT_THROW(converted(row.count, from, to, row.style), RationalEx::ExDenominatorZero);
        else
            EXPECT_EQ(converted(row.count, from, to, row.style), row.expected);
    }
}

TEST(DtTimeIndex, theShortWayIsTheRuleInMillionsOfCases)
{
    Numbers numbers;
    std::uint64_t compared = 0;
    for (int i = 0; i < 3000000; ++i) {
        const std::int64_t count = numbers.signedOf(64);
        const Rational from = numbers.rate(), to = numbers.rate();
        std::int64_t expected;
        try {
            expected = convertedByTheRule(count, from, to);
        } catch (RationalEx::ExDenominatorZero const&) {
            EXPECT_THROW(converted(count, from, to, std::round_toward_zero), RationalEx::ExDenominatorZero);
            continue;
        }
        ++compared;
        ASSERT_EQ(converted(count, from, to, std::round_toward_zero), expected)
            << count << " from " << from.getNumerator() << '/' << from.getDenominator() << " to "
            << to.getNumerator() << '/' << to.getDenominator();
    }
    EXPECT_GT(compared, 2000000u);
}

TEST(DtTimeIndex, theShortWayIsTheRuleAtTheEdgesOf32And64Bits)
{
    int const terms[] = {INT_MIN, INT_MIN + 1, -65536, -46341, -2,    -1,    1,
                         2,       3,           46340,  46341,  65535, 65536, INT_MAX};
    const std::int64_t counts[] = {INT64_MIN,     INT64_MIN + 1, -(std::int64_t(1) << 32), -3,       -1, 0, 1, 3,
                                   INT64_MAX / 3, INT64_MAX / 2, INT64_MAX / 2 + 1,        INT64_MAX};
    for (int a : terms) {
        for (int b : terms) {
            for (int c : terms) {
                for (int d : terms) {
                    const Rational from(a, b), to(c, d);
                    for (std::int64_t count : counts) {
                        std::int64_t expected;
                        try {
                            expected = convertedByTheRule(count, from, to);
                        } catch (RationalEx::ExDenominatorZero const&) {
                            EXPECT_THROW(converted(count, from, to, std::round_toward_zero), RationalEx);
                            continue;
                        }
                        ASSERT_EQ(converted(count, from, to, std::round_toward_zero), expected)
                            << count << " from " << a << '/' << b << " to " << c << '/' << d;
                    }
                }
            }
        }
    }
}

TEST(DtTimeIndex, readsOutAsHoursMinutesAndSeconds)
{
    const DtTimeIndex dayHourMinuteSecond(90061 * 25);
    EXPECT_EQ(dayHourMinuteSecond.getHours(Rational(25, 1)), 25);
    EXPECT_EQ(dayHourMinuteSecond.getMinutes(Rational(25, 1)), 1);
    EXPECT_EQ(dayHourMinuteSecond.getSeconds(Rational(25, 1)), 1.0);
    const DtTimeIndex negative(-3661);
    EXPECT_EQ(negative.getHours(Rational(1, 1)), -1);
    EXPECT_EQ(negative.getMinutes(Rational(1, 1)), -1);
    EXPECT_EQ(negative.getSeconds(Rational(1, 1)), -1.0);
    EXPECT_EQ(DtTimeIndex(61 * 4 + 1).getSeconds(Rational(4, 1)), 1.25);
    EXPECT_EQ(DtTimeIndex(-61 * 4 - 1).getSeconds(Rational(4, 1)), -1.25);
}

TEST(DtTimeIndex, readsOutAsTheReferenceDoes)
{
    for (ClockRow const& row : clockRows) {
        SCOPED_TRACE(testing::Message() << row.count << " at " << row.numerator << '/' << row.denominator);
        const Rational rate(row.numerator, row.denominator);
        const DtTimeIndex index(row.count);
        EXPECT_EQ(index.getHours(rate), row.hours);
        EXPECT_EQ(index.getMinutes(rate), row.minutes);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(index.getSeconds(rate)), row.seconds);
    }
}

TEST(DtTimeIndex, holdsAYearAtEveryUsualRateWithoutLosingACount)
{
    // Frame n of 30000/1001 is at 1001 n counts of 30000/1, both ways, for every frame of a year and a bit.
    const Rational ntsc(30000, 1001), exact(30000, 1);
    for (std::int64_t frame = 0; frame < 1000000000; frame += 997) {
        ASSERT_EQ(converted(frame, ntsc, exact, std::round_toward_zero), frame * 1001);
        ASSERT_EQ(converted(frame * 1001, exact, ntsc, std::round_toward_zero), frame);
    }
}
