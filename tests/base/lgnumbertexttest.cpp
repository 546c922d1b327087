#include <base/lgnumbertext_p.h>

#include "steps.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

using Vn::LgFixedText;
using Vn::LgNumberText;

namespace
{
template <class Number>
std::string ours(Number value)
{
    const LgFixedText<Number> text(value);
    return std::string(text.get(), text.getSize());
}

std::string theirs(double value)
{
    char text[400];
    std::snprintf(text, sizeof text, "%f", value);
    return text;
}

std::string theirs(long double value)
{
    char text[6000];
    std::snprintf(text, sizeof text, "%Lf", value);
    return text;
}

template <class Integer>
void expectDecimal(char const* format, Integer value)
{
    char text[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, format, value);
#pragma GCC diagnostic pop
    const LgNumberText number(value);
    EXPECT_EQ(std::string(number.get(), number.getSize()), text);
}

/// Values of all sizes, most of them of the sizes that programs have.
class Values
{
public:
    double next()
    {
        const std::uint64_t bits = _random();
        switch (_random() % 4) {
        case 0:
            return std::bit_cast<double>(bits);  // anything at all
        case 1:
            return static_cast<double>(static_cast<std::int64_t>(bits)) / 1e13;
        case 2:  // halves of millionths, which are exact
            return static_cast<double>(static_cast<std::int32_t>(bits)) / 128;
        default: {  // beside them
            const double half = static_cast<double>(static_cast<std::int32_t>(bits) >> (bits >> 59)) / 128;
            return std::nextafter(half, (bits >> 58 & 1) != 0 ? 1e300 : -1e300);
        }
        }
    }

private:
    std::mt19937_64 _random{20040229};
};
}  // namespace

TEST(LgNumberText, integersAreWhatPrintfMakesOfThem)
{
    for (const int value : {0, 1, -1, 9, 10, -10, 2147483647, -2147483647 - 1})
        expectDecimal("%d", value);
    expectDecimal("%u", std::numeric_limits<unsigned>::max());
    expectDecimal("%ld", std::numeric_limits<long>::max());
    expectDecimal("%ld", std::numeric_limits<long>::min());
    expectDecimal("%lu", std::numeric_limits<unsigned long>::max());
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random() >> random() % 64;
        expectDecimal("%d", static_cast<int>(bits));
        expectDecimal("%lu", static_cast<unsigned long>(bits));
        expectDecimal("%ld", -static_cast<long>(bits >> 1));
    }
}

TEST(LgFixedText, roundsTheExactValueHalfToEven)
{
    const struct
    {
        double value;
        char const* text;
    } table[] = {
        {0.0, "0.000000"},
        {-0.0, "-0.000000"},
        {1.0, "1.000000"},
        {-1.5, "-1.500000"},
        {1.0 / 128, "0.007812"},  // ...8125: down to even
        {3.0 / 128, "0.023438"},  // ...4375: up to even
        {-1.0 / 128, "-0.007812"},
        {127.0 / 128, "0.992188"},
        {0.1, "0.100000"},
        {2.5e-7, "0.000000"},
        {4.9e-7, "0.000000"},
        {5.1e-7, "0.000001"},
        {1e-300, "0.000000"},
        {-4.9e-324, "-0.000000"},
        {0.9999994, "0.999999"},
        {0.9999996, "1.000000"},  // carries into the whole part
        {9.9999996, "10.000000"},
        {-99.9999999, "-100.000000"},
        {123456789.123456789, "123456789.123457"},
        {9007199254740993.0, "9007199254740992.000000"},
        {18446744073709549568.0, "18446744073709549568.000000"},  // the last below 2^64
        {18446744073709551616.0, "18446744073709551616.000000"},
        {1e22, "10000000000000000000000.000000"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (auto const& row : table) {
        EXPECT_EQ(ours(row.value), row.text);
        if (row.value == row.value) {
            EXPECT_EQ(ours(static_cast<long double>(row.value)), row.text);
        }
    }
    EXPECT_EQ(ours(DBL_MAX).size(), 316u);
    EXPECT_EQ(ours(-DBL_MAX), "-" + ours(DBL_MAX));
    EXPECT_EQ(ours(DBL_MAX).substr(0, 20), "17976931348623157081");
}

TEST(LgFixedText, aMillionDoublesAreWhatPrintfMakesOfThem)
{
    Values values;
    for (int i = 0; i < VnTest::steps(1000000); ++i) {
        const double value = values.next();
        if (value == value) {
            ASSERT_EQ(ours(value), theirs(value)) << i;
        }
    }
}

TEST(LgFixedText, longDoublesAreWhatPrintfMakesOfThem)
{
#if defined(_WIN32)
    constexpr int count = 10000;  // its printf takes milliseconds for a large number
#else
    constexpr int count = 100000;
#endif
    Values values;
    for (int i = 0; i < VnTest::steps(count); ++i) {
        const double value = values.next();
        if (!(value == value))
            continue;
        ASSERT_EQ(ours(static_cast<long double>(value)), theirs(static_cast<long double>(value))) << i;
        const long double fine = static_cast<long double>(value) * (1 + LDBL_EPSILON * static_cast<long double>(i));
        ASSERT_EQ(ours(fine), theirs(fine)) << i;
    }
    EXPECT_EQ(ours(LDBL_MAX), theirs(LDBL_MAX));
    EXPECT_EQ(ours(-LDBL_MAX), theirs(-LDBL_MAX));
    EXPECT_EQ(ours(LDBL_MIN), "0.000000");
}

TEST(LgFixedText, anotherLocalesMarkBecomesAPoint)
{
    const struct
    {
        char const* before;
        char const* after;
    } table[] = {
        {"12,345678", "12.345678"},
        {"-12,345678", "-12.345678"},
        {"12\xD9\xAB"
         "345678",
         "12.345678"},  // three bytes less than a mark of three
        {"12.345678", "12.345678"},
        {"inf", "inf"},
        {"-inf", "-inf"},
        {"-nan(ind)", "-nan(ind)"},
        {"123456789", "123456789"},
    };
    for (auto const& row : table) {
        char text[32];
        std::snprintf(text, sizeof text, "%s", row.before);
        LgFixedText<long double>::restorePoint(text);
        EXPECT_STREQ(text, row.after);
    }
}
