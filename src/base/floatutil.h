#pragma once

#include <base/baseexport.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace Vn
{

/// Compares floating-point numbers with a tolerance, rounds without a library call, and names the usual functions for
/// both types alike.
///
///     Vn::FloatUtil::isEqual(width, 1.0f);      // within 0.0001
///     Vn::FloatUtil::round(-2.5);               // -2: a half goes up
///
/// Tolerances are absolute and not scaled to the operands: 1000000.0f and 1000000.125f are unequal. Pass a tolerance
/// of your own for numbers of another size. Sums are formed in the operands' type.
///
/// Static functions without state; any thread may call them, before any package starts as well. Nothing throws.
/// Tests: tests/base/floatutiltest.cpp.
class VN_BASE_EXPORT FloatUtil
{
public:
    FloatUtil() = delete;

    /// @{
    /// The default tolerance: 0.0001 for float, 1e-7 for double. The argument only selects the type; its value is not
    /// used.
    static float getCompareEps(float) { return 0.0001f; }
    static double getCompareEps(double) { return 1e-7; }
    /// @}

    /// @{
    /// Decimal places that suffice to show a difference of the default tolerance: 5 for float, 8 for double.
    static int getCompareEpsPrecision(float) { return 5; }
    static int getCompareEpsPrecision(double) { return 8; }
    /// @}

    /// @{
    /// Whether two numbers differ by less than the tolerance: the default one, or `eps`.
    ///
    ///     isEqual(1.0f, 1.00009f)   ->  true
    ///     isEqual(1.0f, 1.0002f)    ->  false
    ///     isEqual(1.0, 1.5, 0.5)    ->  false: a difference of exactly `eps` is too large
    ///     isEqual(nan, 1.0)         ->  true
    ///     isEqual(nan, 1.0, 0.5)    ->  false
    ///
    // Intended: not-a-number equals everything with the default tolerance and nothing with a given one; do not mend.
    static bool isEqual(float a, float b) { return !(abs(a - b) >= getCompareEps(a)); }
    static bool isEqual(double a, double b) { return !(abs(a - b) >= getCompareEps(a)); }
    static bool isEqual(float a, float b, float eps) { return eps > abs(a - b); }
    static bool isEqual(double a, double b, double eps) { return eps > abs(a - b); }
    /// @}

    /// @{
    /// Order with a tolerance: the default one, or `eps`.
    ///
    ///     isGreater        a > b + eps     isSmaller        a < b - eps
    ///     isGreaterEqual   a > b - eps     isSmallerEqual   a < b + eps
    ///
    ///     isGreaterEqual(1.0, 1.4, 0.5)  ->  true
    ///     isGreaterEqual(1.0, 1.5, 0.5)  ->  false: every comparison is strict
    ///     isGreater(1.0, 1.0)            ->  false
    ///
    /// False if an operand is not-a-number.
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
    /// @}

    /// @{
    /// `x` with its sign bit cleared, also for a zero and for not-a-number.
    static float abs(float x) { return std::fabs(x); }
    static double abs(double x) { return std::fabs(x); }
    /// @}

    /// @{
    /// The standard library's trigonometric functions for the type. Angles are in radians.
    ///
    ///     acos(2.0)         ->  not-a-number: the domain is -1 to 1, for asin() as well
    ///     atan(infinity)    ->  pi / 2
    ///     atan2(0.0, -1.0)  ->  pi: `y` comes first, and the signs of both choose the quadrant
    ///
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
    /// @}

    /// @{
    /// The standard library's powers and logarithms for the type; log() is to the base e.
    ///
    ///     log(0.0)         ->  -infinity
    ///     log(-1.0)        ->  not-a-number
    ///     exp(1000.0)      ->  infinity
    ///     pow(0.0, 0.0)    ->  1
    ///     pow(-8.0, 0.5)   ->  not-a-number
    ///     sqrt(-1.0)       ->  not-a-number
    ///
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
    /// @}

    /// @{
    /// The remainder of `x` / `y` with the sign of `x`; exact.
    ///
    ///     mod(-5.5, 2.0)  ->  -1.5
    ///     mod(5.5, -2.0)  ->  1.5
    ///     mod(1.0, 0.0)   ->  not-a-number
    ///
    static float mod(float x, float y) { return std::fmod(x, y); }
    static double mod(double x, double y) { return std::fmod(x, y); }
    /// @}

    /// @{
    /// The square root of a * a + b * b, as that formula gives it, so the squares may overflow or vanish.
    ///
    ///     hypot(3.0, 4.0)      ->  5
    ///     hypot(1e200, 1e200)  ->  infinity
    ///     hypot(1e-200, 0.0)   ->  0
    ///
    // In the source file: a caller's compiler might fuse the product with the sum, which changes the last bit.
    static float hypot(float a, float b);
    static double hypot(double a, double b);
    /// @}

    /// @{
    /// The greatest whole number at or below `x`.
    ///
    ///     2.7    ->  2
    ///     -0.3   ->  -1
    ///     -0.0   ->  -0
    ///     1e300  ->  1e300
    ///
    /// Not-a-number and infinities are returned as they are. While the rounding direction is FE_DOWNWARD, a result of
    /// 0 may be -0.
    static float floor(float x);
    static double floor(double x);
    /// @}

    /// @{
    /// The least whole number at or above `x`.
    ///
    ///     2.3   ->  3
    ///     -0.3  ->  0, not -0
    ///     -0.0  ->  -0
    ///
    /// Otherwise as floor().
    static float ceil(float x);
    static double ceil(double x);
    /// @}

    /// @{
    /// floor(x + 0.5), in the type of `x`: halves go up.
    ///
    ///     2.5   ->  3
    ///     -2.5  ->  -2
    ///     -0.7  ->  -1
    ///     0.49999999999999994  ->  1, because the sum is rounded to 1
    ///
    // Intended: this is not the rounding of std::round(); do not mend.
    static float round(float x);
    static double round(double x);
    /// @}

    /// @{
    /// 1 or -1, never 0.
    ///
    ///     0.0, -0.0, 3.5      ->  1
    ///     -3.5, not-a-number  ->  -1
    ///
    static int sgn(float x) { return x >= 0.0f ? 1 : -1; }
    static int sgn(double x) { return x >= 0.0 ? 1 : -1; }
    /// @}

    /// @{
    /// One product with a constant of the type; a conversion and back may be off in the last bit.
    static float degreesToRadians(float x) { return x * 0.017453292f; }
    static double degreesToRadians(double x) { return x * 0.017453292519943295; }
    static float radiansToDegrees(float x) { return x * 57.295776f; }
    static double radiansToDegrees(double x) { return x * 57.29577951308232; }
    /// @}

    /// @{
    /// The kind of number, as in LtFPClass; isinf() is true for both infinities.
    static bool isfinite(float x) { return std::isfinite(x); }
    static bool isfinite(double x) { return std::isfinite(x); }
    static bool isnan(float x) { return std::isnan(x); }
    static bool isnan(double x) { return std::isnan(x); }
    static bool isinf(float x) { return std::isinf(x); }
    static bool isinf(double x) { return std::isinf(x); }
    /// @}

    /// A smooth step from `low` to `high` while `x` goes from `edge0` to `edge1`: the cubic 3t^2 - 2t^3, whose slope
    /// is 0 at both edges.
    ///
    ///     smoothStep(0, 1, x, 10, 20)    x = -1: 10    0: 10    0.5: 15    1: 20    2: 20    nan: 10
    ///     smoothStep(1, 1, x, 10, 20)    x = 0.9: 10   1: 20, without a division by zero
    ///
    static float smoothStep(float edge0, float edge1, float x, float low, float high);

private:
    /// What rounding needs to know of a type: an integer for its bits, the power of two from which all numbers are
    /// whole, and a bit that is set in every number from there on.
    template <class Float>
    struct Whole;

    /// A whole number less than 1 away from `x`, for an `x` whose magnitude is below the power of two. The sum with
    /// that power has no room for a fraction, so it is rounded to a whole number. Setting a bit that is set already
    /// changes nothing, but a compiler that may reorder sums cannot cancel the power then.
    template <class Float>
    static Float nearWhole(Float x)
    {
        const Float power = std::copysign(Whole<Float>::from, x);
        const auto bits = std::bit_cast<typename Whole<Float>::Bits>(x + power) | Whole<Float>::setBit;
        return std::bit_cast<Float>(bits) - power;
    }

#if defined(__SSE4_1__)
    /// @{
    /// floor() and ceil() of either type where the processor rounds with one instruction, which the library's functions
    /// then become. The comparisons return a whole number and not-a-number as they are. The sum makes +0 of the -0 that
    /// std::ceil() gives between -1 and 0.
    template <class Float>
    static Float floorOf(Float x)
    {
        const Float whole = std::floor(x);
        return whole < x ? whole : x;
    }

    template <class Float>
    static Float ceilOf(Float x)
    {
        const Float whole = std::ceil(x) + Float(0);
        return whole > x ? whole : x;
    }
    /// @}
#else
    /// @{
    /// floor() and ceil() of either type. There is no branch, so a compiler can round several numbers with one
    /// instruction. A whole number is returned as it is, which keeps the sign of a zero.
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
    /// @}
#endif
};

/// For float, which has 24 significant bits.
template <>
struct FloatUtil::Whole<float>
{
    using Bits = std::uint32_t;                    ///< an integer of the same size
    static constexpr float from = 8388608.0f;      ///< 2^23
    static constexpr Bits setBit = Bits(1) << 30;  ///< the exponent's highest bit, set from 2.0 on
};

/// For double, which has 53 significant bits.
template <>
struct FloatUtil::Whole<double>
{
    using Bits = std::uint64_t;                         ///< an integer of the same size
    static constexpr double from = 4503599627370496.0;  ///< 2^52
    static constexpr Bits setBit = Bits(1) << 62;       ///< the exponent's highest bit, set from 2.0 on
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
