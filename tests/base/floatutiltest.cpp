#include <base/floatutil.h>

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>
#include <vector>

using Vn::FloatUtil;

namespace
{
constexpr double wideNan = std::numeric_limits<double>::quiet_NaN();
constexpr float narrowNan = std::numeric_limits<float>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

struct DoubleRow
{
    std::uint64_t x, floor, ceil, round;
};

constexpr DoubleRow doubleRows[] = {
#include "../reference/doubles.inc"
};

struct FloatRow
{
    std::uint32_t x, floor, ceil, round;
};

constexpr FloatRow floatRows[] = {
#include "../reference/floats.inc"
};

/// The same bits, a zero's sign included; any not-a-number for any other.
template <class Float, class Bits>
bool isSame(Float value, Bits bits)
{
    const Float expected = std::bit_cast<Float>(bits);
    return std::isnan(expected) ? std::isnan(value) : std::bit_cast<Bits>(value) == bits;
}

/// floor and ceil of the language's library, with the one difference: no minus zero above -1.
template <class Float>
Float plainCeil(Float x)
{
    return x > Float(-1) && x < Float(0) ? Float(0) : static_cast<Float>(std::ceil(static_cast<double>(x)));
}

template <class Float>
Float plainFloor(Float x)
{
    return static_cast<Float>(std::floor(static_cast<double>(x)));
}
}  // namespace

TEST(FloatUtil, toleranceIsOneValueForEachType)
{
    EXPECT_EQ(std::bit_cast<std::uint32_t>(FloatUtil::getCompareEps(5.0f)), 0x38D1B717u);
    EXPECT_EQ(FloatUtil::getCompareEps(5.0), 1e-7);
    EXPECT_EQ(FloatUtil::getCompareEpsPrecision(5.0f), 5);
    EXPECT_EQ(FloatUtil::getCompareEpsPrecision(5.0), 8);
}

TEST(FloatUtil, equalIsWithinTheTolerance)
{
    EXPECT_TRUE(FloatUtil::isEqual(1.0f, 1.00009f));
    EXPECT_FALSE(FloatUtil::isEqual(1.0f, 1.0002f));
    EXPECT_TRUE(FloatUtil::isEqual(1.0, 1.00000009));
    EXPECT_FALSE(FloatUtil::isEqual(1.0, 1.0000002));
    EXPECT_FALSE(FloatUtil::isEqual(0.0, 1e-7));  // exactly the tolerance apart
    EXPECT_FALSE(FloatUtil::isEqual(0.0f, 0.0001f));
    EXPECT_TRUE(FloatUtil::isEqual(0.0f, 0.000099f));
    EXPECT_TRUE(FloatUtil::isEqual(0.0, 0.99e-7));
    EXPECT_FALSE(FloatUtil::isEqual(0.0, 0.5, 0.5));
    EXPECT_TRUE(FloatUtil::isEqual(0.0, 0.49, 0.5));
    EXPECT_TRUE(FloatUtil::isEqual(0.49f, 0.0f, 0.5f));
    EXPECT_FALSE(FloatUtil::isEqual(-0.5f, 0.0f, 0.5f));
}

TEST(FloatUtil, nothingScalesTheTolerance)
{
    EXPECT_FALSE(FloatUtil::isEqual(1000000.0f, 1000000.125f));
    EXPECT_TRUE(FloatUtil::isEqual(1e-30f, 2e-30f));
}

TEST(FloatUtil, notANumberEqualsAllByDefaultAndNoneWithATolerance)
{
    EXPECT_TRUE(FloatUtil::isEqual(wideNan, 1.0));
    EXPECT_TRUE(FloatUtil::isEqual(1.0, wideNan));
    EXPECT_TRUE(FloatUtil::isEqual(narrowNan, narrowNan));
    EXPECT_FALSE(FloatUtil::isEqual(wideNan, 1.0, 0.5));
    EXPECT_FALSE(FloatUtil::isEqual(wideNan, wideNan, 0.5));
    EXPECT_FALSE(FloatUtil::isEqual(1.0f, narrowNan, 0.5f));
}

TEST(FloatUtil, orderIsStrictAtTheTolerance)
{
    // Quarters are exact, so both sides of each limit around 1 are met.
    const struct
    {
        double a;
        bool isGreater, isGreaterEqual, isSmaller, isSmallerEqual;
    } table[] = {
        {0.25, false, false, true, true}, {0.5, false, false, false, true}, {0.75, false, true, false, true},
        {1.0, false, true, false, true},  {1.25, false, true, false, true}, {1.5, false, true, false, false},
        {1.75, true, true, false, false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.a);
        EXPECT_EQ(FloatUtil::isGreater(row.a, 1.0, 0.5), row.isGreater);
        EXPECT_EQ(FloatUtil::isGreaterEqual(row.a, 1.0, 0.5), row.isGreaterEqual);
        EXPECT_EQ(FloatUtil::isSmaller(row.a, 1.0, 0.5), row.isSmaller);
        EXPECT_EQ(FloatUtil::isSmallerEqual(row.a, 1.0, 0.5), row.isSmallerEqual);
        const float narrow = static_cast<float>(row.a);
        EXPECT_EQ(FloatUtil::isGreater(narrow, 1.0f, 0.5f), row.isGreater);
        EXPECT_EQ(FloatUtil::isGreaterEqual(narrow, 1.0f, 0.5f), row.isGreaterEqual);
        EXPECT_EQ(FloatUtil::isSmaller(narrow, 1.0f, 0.5f), row.isSmaller);
        EXPECT_EQ(FloatUtil::isSmallerEqual(narrow, 1.0f, 0.5f), row.isSmallerEqual);
    }
}

TEST(FloatUtil, orderTakesTheDefaultTolerance)
{
    EXPECT_FALSE(FloatUtil::isGreater(1.0, 1.0));
    EXPECT_FALSE(FloatUtil::isSmaller(1.0, 1.0));
    EXPECT_TRUE(FloatUtil::isGreaterEqual(1.0, 1.0));
    EXPECT_TRUE(FloatUtil::isSmallerEqual(1.0, 1.0));
    EXPECT_TRUE(FloatUtil::isGreater(1.0002f, 1.0f));
    EXPECT_FALSE(FloatUtil::isGreater(1.00005f, 1.0f));
    EXPECT_TRUE(FloatUtil::isSmaller(1.0f, 1.0002f));
    EXPECT_FALSE(FloatUtil::isSmaller(1.0f, 1.00005f));
    EXPECT_TRUE(FloatUtil::isGreaterEqual(0.99995f, 1.0f));
    EXPECT_FALSE(FloatUtil::isGreaterEqual(0.9998f, 1.0f));
    EXPECT_TRUE(FloatUtil::isSmallerEqual(1.00005f, 1.0f));
    EXPECT_FALSE(FloatUtil::isSmallerEqual(1.0002f, 1.0f));
    EXPECT_FALSE(FloatUtil::isGreater(wideNan, 1.0));
    EXPECT_FALSE(FloatUtil::isSmallerEqual(wideNan, 1.0));
}

TEST(FloatUtil, sumsAreFormedInTheOperandsType)
{
    // In float 16777216 + 0.5 is 16777216 again, in double it isn't.
    EXPECT_FALSE(FloatUtil::isSmallerEqual(16777216.0f, 16777216.0f, 0.5f));
    EXPECT_TRUE(FloatUtil::isSmallerEqual(16777216.0, 16777216.0, 0.5));
}

TEST(FloatUtil, absClearsTheSign)
{
    EXPECT_EQ(FloatUtil::abs(-2.5), 2.5);
    EXPECT_EQ(FloatUtil::abs(2.5f), 2.5f);
    EXPECT_FALSE(std::signbit(FloatUtil::abs(-0.0)));
    EXPECT_FALSE(std::signbit(FloatUtil::abs(-0.0f)));
    EXPECT_FALSE(std::signbit(FloatUtil::abs(std::copysign(wideNan, -1.0))));
    EXPECT_EQ(FloatUtil::abs(-infinity), infinity);
}

TEST(FloatUtil, namesTheUsualFunctionsInBothTypes)
{
    const struct
    {
        char const* what;
        double wide, expected;
        float narrow, expectedNarrow;
    } table[] = {
        {"acos", FloatUtil::acos(0.3), std::acos(0.3), FloatUtil::acos(0.3f), std::acos(0.3f)},
        {"asin", FloatUtil::asin(0.3), std::asin(0.3), FloatUtil::asin(0.3f), std::asin(0.3f)},
        {"atan", FloatUtil::atan(0.3), std::atan(0.3), FloatUtil::atan(0.3f), std::atan(0.3f)},
        {"atan2", FloatUtil::atan2(-3.0, -2.0), std::atan2(-3.0, -2.0), FloatUtil::atan2(-3.0f, -2.0f),
         std::atan2(-3.0f, -2.0f)},
        {"cos", FloatUtil::cos(0.3), std::cos(0.3), FloatUtil::cos(0.3f), std::cos(0.3f)},
        {"sin", FloatUtil::sin(0.3), std::sin(0.3), FloatUtil::sin(0.3f), std::sin(0.3f)},
        {"tan", FloatUtil::tan(0.3), std::tan(0.3), FloatUtil::tan(0.3f), std::tan(0.3f)},
        {"exp", FloatUtil::exp(0.3), std::exp(0.3), FloatUtil::exp(0.3f), std::exp(0.3f)},
        {"log", FloatUtil::log(0.3), std::log(0.3), FloatUtil::log(0.3f), std::log(0.3f)},
        {"log10", FloatUtil::log10(0.3), std::log10(0.3), FloatUtil::log10(0.3f), std::log10(0.3f)},
        {"pow", FloatUtil::pow(0.3, 1.7), std::pow(0.3, 1.7), FloatUtil::pow(0.3f, 1.7f), std::pow(0.3f, 1.7f)},
        {"sqrt", FloatUtil::sqrt(0.3), std::sqrt(0.3), FloatUtil::sqrt(0.3f), std::sqrt(0.3f)},
        {"mod", FloatUtil::mod(-7.5, 2.0), -1.5, FloatUtil::mod(-7.5f, 2.0f), -1.5f},
        {"hypot", FloatUtil::hypot(3.0, 4.0), 5.0, FloatUtil::hypot(3.0f, 4.0f), 5.0f},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.wide, row.expected);
        EXPECT_EQ(row.narrow, row.expectedNarrow);
    }
}

TEST(FloatUtil, hypotTakesNoCareOfItsSquares)
{
    EXPECT_EQ(FloatUtil::hypot(1e200, 1.0), infinity);
    EXPECT_EQ(FloatUtil::hypot(1e-200, 0.0), 0.0);
    EXPECT_EQ(FloatUtil::hypot(1e30f, 1.0f), std::numeric_limits<float>::infinity());
}

TEST(FloatUtil, hypotRoundsEachSquareByItself)
{
    // From exact fractions: with the first square left unrounded the last digit would be ...a, ...c and ...a.
    EXPECT_EQ(FloatUtil::hypot(0x1.3e3f403486b4ep+0, 0x1.2c9ac506aaf31p+0), 0x1.b5c5a07d5f4d9p+0);
    EXPECT_EQ(FloatUtil::hypot(0x1.2b0757bcc8ab8p+0, 0x1.951245767cd7ap+0), 0x1.f77d21ddc9b1bp+0);
    EXPECT_EQ(FloatUtil::hypot(0x1.a6592c9d0724ap-1, 0x1.2217bf72d746dp+0), 0x1.66d0b0666bddbp+0);
}

TEST(FloatUtil, roundsDoublesAsTheReferenceDoes)
{
    for (DoubleRow const& row : doubleRows) {
        const double x = std::bit_cast<double>(row.x);
        EXPECT_TRUE(isSame(FloatUtil::floor(x), row.floor)) << "floor of " << x;
        EXPECT_TRUE(isSame(FloatUtil::ceil(x), row.ceil)) << "ceil of " << x;
        EXPECT_TRUE(isSame(FloatUtil::round(x), row.round)) << "round of " << x;
    }
}

TEST(FloatUtil, roundsFloatsAsTheReferenceDoes)
{
    for (FloatRow const& row : floatRows) {
        const float x = std::bit_cast<float>(row.x);
        EXPECT_TRUE(isSame(FloatUtil::floor(x), row.floor)) << "floor of " << x;
        EXPECT_TRUE(isSame(FloatUtil::ceil(x), row.ceil)) << "ceil of " << x;
        EXPECT_TRUE(isSame(FloatUtil::round(x), row.round)) << "round of " << x;
    }
}

TEST(FloatUtil, aHalfGoesUp)
{
    EXPECT_EQ(FloatUtil::round(2.5), 3.0);
    EXPECT_EQ(FloatUtil::round(-2.5), -2.0);
    EXPECT_EQ(FloatUtil::round(2.5f), 3.0f);
    EXPECT_EQ(FloatUtil::round(-2.5f), -2.0f);
    EXPECT_EQ(FloatUtil::round(-0.7), -1.0);
    EXPECT_EQ(FloatUtil::round(-0.3), 0.0);
    EXPECT_FALSE(std::signbit(FloatUtil::round(-0.3)));
}

TEST(FloatUtil, roundFollowsItsSum)
{
    EXPECT_EQ(FloatUtil::round(0.49999999999999994), 1.0);
    EXPECT_EQ(FloatUtil::round(0.49999997f), 1.0f);
    EXPECT_EQ(FloatUtil::round(4503599627370497.0), 4503599627370498.0);  // + 0.5 goes to the even neighbour
}

TEST(FloatUtil, ceilBelowOneHasNoMinusZero)
{
    EXPECT_FALSE(std::signbit(FloatUtil::ceil(-0.5)));
    EXPECT_FALSE(std::signbit(FloatUtil::ceil(-0.5f)));
    EXPECT_TRUE(std::signbit(FloatUtil::ceil(-0.0)));
    EXPECT_TRUE(std::signbit(FloatUtil::floor(-0.0)));
    EXPECT_FALSE(std::signbit(FloatUtil::floor(0.5)));
}

TEST(FloatUtil, floorAndCeilGiveNotANumberBackBitForBit)
{
    for (const std::uint64_t bits :
         {0x7FF8000000000001u, 0xFFF8123456789ABCu, 0x7FF0000000000001u, 0xFFF0000000000001u}) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(FloatUtil::floor(std::bit_cast<double>(bits))), bits);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(FloatUtil::ceil(std::bit_cast<double>(bits))), bits);
    }
    for (const std::uint32_t bits : {0x7FC00001u, 0xFFC12345u, 0x7F800001u, 0xFF800001u}) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(FloatUtil::floor(std::bit_cast<float>(bits))), bits);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(FloatUtil::ceil(std::bit_cast<float>(bits))), bits);
    }
}

TEST(FloatUtil, floorAndCeilDontDependOnTheRoundingDirection)
{
    const int before = std::fegetround();
    for (const int direction : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        ASSERT_EQ(std::fesetround(direction), 0);
        for (int i = -4000; i <= 4000; ++i) {
            // Eighths, around zero and up to where the type has no room for them.
            for (const double offset : {0.0, 70368744177664.0, 562949953421311.0}) {
                volatile double x = (i < 0 ? -offset : offset) + i / 8.0;
                const double below = (i < 0 ? -offset : offset) + (i >> 3);
                const double above = (i < 0 ? -offset : offset) - (-i >> 3);
                ASSERT_EQ(FloatUtil::floor(x), below) << x << " in direction " << direction;
                ASSERT_EQ(FloatUtil::ceil(x), above) << x << " in direction " << direction;
            }
            volatile float x = static_cast<float>(i) / 8.0f;
            ASSERT_EQ(FloatUtil::floor(x), static_cast<float>(i >> 3)) << x << " in direction " << direction;
            ASSERT_EQ(FloatUtil::ceil(x), static_cast<float>(-(-i >> 3))) << x << " in direction " << direction;
        }
    }
    std::fesetround(before);
}

/// Loops that a compiler may do several numbers at a time in.
template <class Float, class Bits>
void expectLoopsAreAsSingleNumbers()
{
    std::vector<Float> numbers, floors, ceilings, rounded;
    for (std::uint64_t i = 0; i < 4099; ++i)
        numbers.push_back(
            std::bit_cast<Float>(static_cast<Bits>(i * 0x9E3779B97F4A7C15 >> (64 - 8 * sizeof(Float)))));
    for (const double number : {0.0, -0.0, 0.5, -0.5, -1.0, 8388607.5, 4503599627370495.5, -4503599627370496.0})
        numbers.push_back(static_cast<Float>(number));
    floors.resize(numbers.size());
    ceilings.resize(numbers.size());
    rounded.resize(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i)
        floors[i] = FloatUtil::floor(numbers[i]);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        ceilings[i] = FloatUtil::ceil(numbers[i]);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        rounded[i] = FloatUtil::round(numbers[i]);
    const auto bits = [](Float number) { return std::isnan(number) ? Bits(1) : std::bit_cast<Bits>(number); };
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        volatile Float alone = numbers[i];
        EXPECT_EQ(bits(floors[i]), bits(plainFloor<Float>(alone))) << numbers[i];
        EXPECT_EQ(bits(ceilings[i]), bits(plainCeil<Float>(alone))) << numbers[i];
        EXPECT_EQ(bits(rounded[i]), bits(plainFloor<Float>(alone + Float(0.5)))) << numbers[i];
    }
}

TEST(FloatUtil, loopsRoundAsSingleNumbersDo)
{
    expectLoopsAreAsSingleNumbers<float, std::uint32_t>();
    expectLoopsAreAsSingleNumbers<double, std::uint64_t>();
}

TEST(FloatUtil, roundsEveryFloatLikeTheLanguagesLibrary)
{
    // Every one of the 2^32 with VN_TEST_EVERY_FLOAT set, a slice of a million otherwise.
    const std::uint64_t step = std::getenv("VN_TEST_EVERY_FLOAT") != nullptr ? 1 : 4093;
    std::uint64_t wrong = 0;
    float firstWrong = 0.0f;
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFFu; bits += step) {
        const float x = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        const bool isRight =
            std::isnan(x) ? std::isnan(FloatUtil::floor(x)) && std::isnan(FloatUtil::ceil(x)) &&
                                std::isnan(FloatUtil::round(x))
                          : isSame(FloatUtil::floor(x), std::bit_cast<std::uint32_t>(plainFloor(x))) &&
                                isSame(FloatUtil::ceil(x), std::bit_cast<std::uint32_t>(plainCeil(x))) &&
                                isSame(FloatUtil::round(x), std::bit_cast<std::uint32_t>(plainFloor(x + 0.5f)));
        if (!isRight && wrong++ == 0)
            firstWrong = x;
    }
    EXPECT_EQ(wrong, 0u) << "the first is " << firstWrong;
}

TEST(FloatUtil, sgnHasNoZero)
{
    static_assert(std::is_same_v<decltype(FloatUtil::sgn(1.0)), int>);
    EXPECT_EQ(FloatUtil::sgn(0.0), 1);
    EXPECT_EQ(FloatUtil::sgn(-0.0), 1);
    EXPECT_EQ(FloatUtil::sgn(0.0f), 1);
    EXPECT_EQ(FloatUtil::sgn(-0.0f), 1);
    EXPECT_EQ(FloatUtil::sgn(3.0), 1);
    EXPECT_EQ(FloatUtil::sgn(-3.0f), -1);
    EXPECT_EQ(FloatUtil::sgn(wideNan), -1);
    EXPECT_EQ(FloatUtil::sgn(narrowNan), -1);
}

TEST(FloatUtil, convertsAnglesByOneFactor)
{
    EXPECT_EQ(FloatUtil::degreesToRadians(180.0), 180.0 * 0.017453292519943295);
    EXPECT_EQ(FloatUtil::degreesToRadians(180.0f), 180.0f * 0.017453292f);
    EXPECT_EQ(FloatUtil::radiansToDegrees(2.0), 2.0 * 57.29577951308232);
    EXPECT_EQ(FloatUtil::radiansToDegrees(2.0f), 2.0f * 57.295776f);
}

TEST(FloatUtil, classifies)
{
    const struct
    {
        double x;
        bool isfinite, isnan, isinf;
    } table[] = {{0.0, true, false, false},
                 {-1e30, true, false, false},
                 {infinity, false, false, true},
                 {-infinity, false, false, true},
                 {wideNan, false, true, false}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.x);
        EXPECT_EQ(FloatUtil::isfinite(row.x), row.isfinite);
        EXPECT_EQ(FloatUtil::isnan(row.x), row.isnan);
        EXPECT_EQ(FloatUtil::isinf(row.x), row.isinf);
        const float narrow = static_cast<float>(row.x);
        EXPECT_EQ(FloatUtil::isfinite(narrow), row.isfinite);
        EXPECT_EQ(FloatUtil::isnan(narrow), row.isnan);
        EXPECT_EQ(FloatUtil::isinf(narrow), row.isinf);
    }
}

TEST(FloatUtil, smoothStepGoesFromLowToHigh)
{
    EXPECT_EQ(FloatUtil::smoothStep(0, 1, 0.5f, 10, 20), 15.0f);
    EXPECT_EQ(FloatUtil::smoothStep(0, 1, 0, 10, 20), 10.0f);
    EXPECT_EQ(FloatUtil::smoothStep(0, 1, 1, 10, 20), 20.0f);
    EXPECT_EQ(FloatUtil::smoothStep(0, 1, -1, 10, 20), 10.0f);
    EXPECT_EQ(FloatUtil::smoothStep(0, 1, 2, 10, 20), 20.0f);
    EXPECT_EQ(FloatUtil::smoothStep(2, 4, 2.5f, 0, 1), 0.15625f);  // 3/16 - 2/64
    EXPECT_EQ(FloatUtil::smoothStep(0, 1, narrowNan, 10, 20), 10.0f);
}

TEST(FloatUtil, smoothStepOverEqualEdgesIsAStep)
{
    EXPECT_EQ(FloatUtil::smoothStep(1, 1, 0.999f, 10, 20), 10.0f);
    EXPECT_EQ(FloatUtil::smoothStep(1, 1, 1, 10, 20), 20.0f);
}
