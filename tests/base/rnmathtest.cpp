#include <base/rnmath_p.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace RnMath = Vn::RnMath;

namespace
{
struct Row
{
    std::uint64_t angle, sine, cosine, number, logarithm;
};

constexpr Row rows[] = {
#include "../reference/trigonometry.inc"
};

/// Units in the last place between two numbers of one sign.
std::int64_t unitsBetween(double value, std::uint64_t expected)
{
    return std::abs(static_cast<std::int64_t>(std::bit_cast<std::uint64_t>(value) - expected));
}
}  // namespace

TEST(RnMath, isWithinOneUnitOfTheExactResult)
{
    int inexact = 0;
    for (Row const& row : rows) {
        const RnMath::SinCos turn = RnMath::sinCos<double>(std::bit_cast<double>(row.angle));
        EXPECT_LE(unitsBetween(turn.sine, row.sine), 1) << std::bit_cast<double>(row.angle);
        EXPECT_LE(unitsBetween(turn.cosine, row.cosine), 1) << std::bit_cast<double>(row.angle);
        const double log = RnMath::log(std::bit_cast<double>(row.number));
        EXPECT_LE(unitsBetween(log, row.logarithm), 1) << std::bit_cast<double>(row.number);
        inexact += unitsBetween(turn.sine, row.sine) + unitsBetween(turn.cosine, row.cosine) != 0 ? 1 : 0;
    }
    EXPECT_LT(inexact, 40);  // a tenth of them; an error of 0.53 units would show in one of 17
}

TEST(RnMath, singlePrecisionIsRoundedOnce)
{
    for (Row const& row : rows) {
        const float angle = static_cast<float>(std::bit_cast<double>(row.angle));
        EXPECT_EQ(RnMath::cosine(angle), static_cast<float>(std::cos(static_cast<long double>(angle))));
        const float number = static_cast<float>(std::bit_cast<double>(row.number));
        if (number > 0 && std::isfinite(number)) {
            EXPECT_EQ(RnMath::log(number), static_cast<float>(std::log(static_cast<long double>(number))));
        }
    }
}

TEST(RnMath, takesTheEdges)
{
    const double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(RnMath::sinCos<double>(0.0).sine, 0.0);
    EXPECT_EQ(RnMath::sinCos<double>(0.0).cosine, 1.0);
    EXPECT_TRUE(std::isnan(RnMath::sinCos<double>(nan).sine));
    EXPECT_TRUE(std::isnan(RnMath::sinCos<double>(infinity).cosine));
    volatile double distant = 1e30;  // a compiler reckons a constant's sine better than some C libraries
    EXPECT_EQ(RnMath::sinCos<double>(distant).sine, std::sin(distant));
    EXPECT_EQ(RnMath::log(1.0), 0.0);
    EXPECT_EQ(RnMath::log(0.0), -infinity);
    EXPECT_EQ(RnMath::log(infinity), infinity);
    EXPECT_TRUE(std::isnan(RnMath::log(nan)));
    EXPECT_TRUE(std::isnan(RnMath::log(-1.0)));
    EXPECT_NEAR(RnMath::log(std::numeric_limits<double>::denorm_min()), -744.4400719213812, 1e-9);
}
