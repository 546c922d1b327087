#pragma once

#include <base/baseexport.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace Vn
{

/// Comparison of floating-point numbers with a tolerance, rounding without a library call, and thin names for the
/// usual functions.
///
///     Vn::FloatUtil::isEqual(width, 1.0f);      // within 0.0001
///     Vn::FloatUtil::round(-2.5);               // -2: a half goes up
///
/// Tolerances are absolute: nothing scales them to the operands. Sums are formed in the operands' type. Static only,
/// without state; any thread, no start-up.
/// Tests: tests/base/floatutiltest.cpp.
class VN_BASE_EXPORT FloatUtil
{
public:
    FloatUtil() = delete;

    /// The default tolerance of the argument's type: 0.0001 for float, 1e-7 for double.
    static float getCompareEps(float) { return 0.0001f; }
    static double getCompareEps(double) { return 1e-7; }

    /// Decimal places that go with it: 5 for float, 8 for double.
    static int getCompareEpsPrecision(float) { return 5; }
    static int getCompareEpsPrecision(double) { return 8; }

    /// Not-a-number equals everything with the default tolerance, and nothing with a given one.
    static bool isEqual(float a, float b) { return !(abs(a - b) >= getCompareEps(a)); }
    static bool isEqual(double a, double b) { return !(abs(a - b) >= getCompareEps(a)); }
    static bool isEqual(float a, float b, float eps) { return eps > abs(a - b); }
    static bool isEqual(double a, double b, double eps) { return eps > abs(a - b); }

    // Each comparison is strict at the tolerance: a number below by exactly that is not greater or equal.
    static bool isGreater(float a, float b) { return isGreater(a, b, getCompareEps(a)); }
    static bool isGreater(double a, double b) { return isGreater(a, b, getCompareEps(a)); }
    static bool isGreater(float a, float b, float eps) { return a > b + eps; }
    static bool isGreater(double a, double b, double eps) { return a > b + eps; }

    static bool isGreaterEqual(float a, float b) { return isGreaterEqual(a, b, getCompareEps(a)); }
    static bool isGreaterEqual(double a, double b) { return isGreaterEqual(a, b, getCompareEps(a)); }
    static bool isGreaterEqual(float a, float b, float eps) { return a > b - eps; }
    static bool isGreaterEqual(double a, double b, double eps) { return a > b - eps; }

    static bool isSmaller(float a, float b) { return isSmaller(a, b, getCompareEps(a)); }
    static bool isSmaller(double a, double b) { return isSmaller(a, b, getCompareEps(a)); }
    static bool isSmaller(float a, float b, float eps) { return b - eps > a; }
    static bool isSmaller(double a, double b, double eps) { return b - eps > a; }

    static bool isSmallerEqual(float a, float b) { return isSmallerEqual(a, b, getCompareEps(a)); }
    static bool isSmallerEqual(double a, double b) { return isSmallerEqual(a, b, getCompareEps(a)); }
    static bool isSmallerEqual(float a, float b, float eps) { return b + eps > a; }
    static bool isSmallerEqual(double a, double b, double eps) { return b + eps > a; }

    /// Clears the sign bit, a zero's and a not-a-number's too.
    static float abs(float x) { return std::fabs(x); }
    static double abs(double x) { return std::fabs(x); }

    static float acos(float x) { return std::acos(x); }
    static double acos(double x) { return std::acos(x); }
    static float asin(float x) { return std::asin(x); }
    static double asin(double x) { return std::asin(x); }
    static float atan(float x) { return std::atan(x); }
    static double atan(double x) { return std::atan(x); }
    static float atan2(float y, float x) { return std::atan2(y, x); }
    static double atan2(double y, double x) { return std::atan2(y, x); }
    static float cos(float x) { return std::cos(x); }
    static double cos(double x) { return std::cos(x); }
    static float sin(float x) { return std::sin(x); }
    static double sin(double x) { return std::sin(x); }
    static float tan(float x) { return std::tan(x); }
    static double tan(double x) { return std::tan(x); }
    static float exp(float x) { return std::exp(x); }
    static double exp(double x) { return std::exp(x); }
    static float log(float x) { return std::log(x); }
    static double log(double x) { return std::log(x); }
    static float log10(float x) { return std::log10(x); }
    static double log10(double x) { return std::log10(x); }
    static float pow(float x, float y) { return std::pow(x, y); }
    static double pow(double x, double y) { return std::pow(x, y); }
    static float sqrt(float x) { return std::sqrt(x); }
    static double sqrt(double x) { return std::sqrt(x); }

    /// Remainder of the truncated quotient, with the sign of `x`.
    static float mod(float x, float y) { return std::fmod(x, y); }
    static double mod(double x, double y) { return std::fmod(x, y); }

    /// The plain formula: the squares may overflow or vanish. Not in the header, where a caller's compiler might fuse
    /// the product with the sum and change the last bit.
    static float hypot(float a, float b);
    static double hypot(double a, double b);

    /// The greatest whole number at or below `x`. Not-a-number, infinities and both zeros come back as they are. (While
    /// the rounding direction is FE_DOWNWARD, a result of 0 from another number may be -0.)
    static float floor(float x);
    static double floor(double x);

    /// The least whole number at or above `x`, as floor(); between -1 and 0 it is +0.
    static float ceil(float x);
    static double ceil(double x);

    /// floor(x + 0.5), so a half goes up, and a number whose sum with 0.5 isn't exact goes where the sum goes:
    /// 0.49999999999999994 gives 1.
    static float round(float x);
    static double round(double x);

    /// 1 at or above 0, either zero included; else -1, not-a-number included.
    static int sgn(float x) { return x >= 0.0f ? 1 : -1; }
    static int sgn(double x) { return x >= 0.0 ? 1 : -1; }

    static float degreesToRadians(float x) { return x * 0.017453292f; }
    static double degreesToRadians(double x) { return x * 0.017453292519943295; }
    static float radiansToDegrees(float x) { return x * 57.295776f; }
    static double radiansToDegrees(double x) { return x * 57.29577951308232; }

    static bool isfinite(float x) { return std::isfinite(x); }
    static bool isfinite(double x) { return std::isfinite(x); }
    static bool isnan(float x) { return std::isnan(x); }
    static bool isnan(double x) { return std::isnan(x); }
    static bool isinf(float x) { return std::isinf(x); }
    static bool isinf(double x) { return std::isinf(x); }

    /// From `low` below `edge0` to `high` at and above `edge1`, by a cubic with flat ends between them. Not-a-number
    /// gives `low`; equal edges make a step, and nothing is divided by zero.
    static float smoothStep(float edge0, float edge1, float x, float low, float high);

private:
    /// The bits of a type; the power of two from which on a number has no room for a fraction; and a bit that is set in
    /// every number from there on.
    template <class Float>
    struct Whole;

    /// A whole number less than 1 away from `x`, for an `x` that has room for a fraction: the sum with the power of two
    /// has none. The bit is set anyhow; setting it keeps a compiler that may reorder sums from cancelling the power.
    template <class Float>
    static Float nearWhole(Float x)
    {
        const Float power = std::copysign(Whole<Float>::from, x);
        const auto bits = std::bit_cast<typename Whole<Float>::Bits>(x + power) | Whole<Float>::setBit;
        return std::bit_cast<Float>(bits) - power;
    }

    // Without a branch and in sums that are made in any case, so that a compiler can do several numbers at a time. A
    // number that is whole comes back as it is, and so does its sign if it is zero.

    template <class Float>
    static Float floorOf(Float x)
    {
        const Float close = nearWhole(x);
        const Float whole = close + (close > x ? Float(-1) : Float(0));
        return bool((std::fabs(x) < Whole<Float>::from) & (whole != x)) ? whole : x;
    }

    template <class Float>
    static Float ceilOf(Float x)
    {
        const Float close = nearWhole(x);
        const Float whole = close + (close < x ? Float(1) : Float(0));
        return bool((std::fabs(x) < Whole<Float>::from) & (whole != x)) ? whole : x;
    }
};

template <>
struct FloatUtil::Whole<float>
{
    using Bits = std::uint32_t;
    static constexpr float from = 8388608.0f;
    static constexpr Bits setBit = Bits(1) << 30;
};

template <>
struct FloatUtil::Whole<double>
{
    using Bits = std::uint64_t;
    static constexpr double from = 4503599627370496.0;
    static constexpr Bits setBit = Bits(1) << 62;
};

inline float FloatUtil::floor(float x)
{
    return floorOf(x);
}

inline double FloatUtil::floor(double x)
{
    return floorOf(x);
}

inline float FloatUtil::ceil(float x)
{
    return ceilOf(x);
}

inline double FloatUtil::ceil(double x)
{
    return ceilOf(x);
}

inline float FloatUtil::round(float x)
{
    return floorOf(x + 0.5f);
}

inline double FloatUtil::round(double x)
{
    return floorOf(x + 0.5);
}

}  // namespace Vn
