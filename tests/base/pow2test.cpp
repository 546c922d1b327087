#include <base/exinternalerror.h>
#include <base/pow2.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

using Vn::Pow2;

TEST(Pow2, expTakesItsArgumentModulo32)
{
    EXPECT_EQ(Pow2::exp(0), 1u);
    EXPECT_EQ(Pow2::exp(1), 2u);
    EXPECT_EQ(Pow2::exp(31), 2147483648u);
    EXPECT_EQ(Pow2::exp(32), 1u);
    EXPECT_EQ(Pow2::exp(33), 2u);
    EXPECT_EQ(Pow2::exp(4294967295u), 2147483648u);
}

TEST(Pow2, ceilIsTheLeastPowerAtOrAbove)
{
    const struct
    {
        unsigned n, expected;
    } table[] = {
        {0, 0},
        {1, 1},
        {2, 2},
        {3, 4},
        {4, 4},
        {5, 8},
        {1073741824u, 1073741824u},
        {1073741825u, 2147483648u},
        {2147483647u, 2147483648u},
        {2147483648u, 2147483648u},
    };
    for (auto const& row : table)
        EXPECT_EQ(Pow2::ceil(row.n), row.expected) << row.n;
}

TEST(Pow2, ceilBeyondTheLargestPowerIsOne)
{
    EXPECT_EQ(Pow2::ceil(2147483649u), 1u);
    EXPECT_EQ(Pow2::ceil(4294967295u), 1u);
}

TEST(Pow2, log2FloorIsTheHighestSetBit)
{
    EXPECT_EQ(Pow2::log2Floor(1), 0u);
    EXPECT_EQ(Pow2::log2Floor(3), 1u);
    EXPECT_EQ(Pow2::log2Floor(2147483648u), 31u);
    EXPECT_EQ(Pow2::log2Floor(4294967295u), 31u);
}

TEST(Pow2, log2FloorOfZeroIsRefusedInsteadOfSearchingForEver)
{
    VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>([] { Pow2::log2Floor(0); },
                                                                 "Assertion 'n != 0' failed.");
}

TEST(Pow2, log2CeilIsTheLeastSufficientExponent)
{
    const struct
    {
        unsigned n, expected;
    } table[] = {
        {0, 32}, {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {2147483648u, 31}, {2147483649u, 32}, {4294967295u, 32},
    };
    for (auto const& row : table)
        EXPECT_EQ(Pow2::log2Ceil(row.n), row.expected) << row.n;
}

TEST(Pow2, agreesWithCountingForEverySmallNumber)
{
    for (unsigned n = 1; n < 70000; ++n) {
        unsigned power = 1, exponent = 0;
        for (; power < n; power *= 2)
            ++exponent;
        ASSERT_EQ(Pow2::ceil(n), power) << n;
        ASSERT_EQ(Pow2::log2Ceil(n), exponent) << n;
        ASSERT_EQ(Pow2::log2Floor(n), power == n ? exponent : exponent - 1) << n;
    }
}
