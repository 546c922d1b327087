#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace Vn
{

/// Sine, cosine and logarithm of which every step is an addition, a multiplication or a division, so that they give the
/// same bits on all platforms, where the C libraries' functions differ in the last place; and without a branch, so that
/// compilers run several side by side. Private to the library.
///
/// They are reckoned in double, for a float by shorter series, and rounded once. In double the error is below one unit in
/// the last place.
/// Tests: tests/base/rnmathtest.cpp.
namespace RnMath
{

/// Beyond this sine and cosine are the C library's: the reduction by multiples of pi / 2 would not be exact.
inline constexpr double angleLimit = 1048576.0;

struct SinCos
{
    double sine;
    double cosine;
};

/// c0 + c1 z + ..., pair by pair, so that no term waits for all others.
inline double sumOf6(double z, double c0, double c1, double c2, double c3, double c4, double c5)
{
    const double z2 = z * z;
    return (c0 + c1 * z) + z2 * ((c2 + c3 * z) + z2 * (c4 + c5 * z));
}

inline double sumOf8(double z, double c0, double c1, double c2, double c3, double c4, double c5, double c6,
                     double c7)
{
    const double z2 = z * z;
    return ((c0 + c1 * z) + z2 * (c2 + c3 * z)) + z2 * z2 * ((c4 + c5 * z) + z2 * (c6 + c7 * z));
}

/// Sine of `r + rest` for `r` up to pi / 4, by its series: exact enough to be rounded to T.
template <class T>
[[gnu::always_inline]] inline double sineNearZero(double r, double rest)
{
    const double z = r * r;
    if constexpr (std::is_same_v<T, float>) {
        const double sum =
            sumOf6(z, -1.0 / 6, 1.0 / 120, -1.0 / 5040, 1.0 / 362880, -1.0 / 39916800, 1.0 / 6227020800);
        return r + sum * (z * r);
    } else {
        const double sum = sumOf8(z, -1.0 / 6, 1.0 / 120, -1.0 / 5040, 1.0 / 362880, -1.0 / 39916800,
                                  1.0 / 6227020800, -1.0 / 1307674368000, 1.0 / 355687428096000);
        return r + (sum * (z * r) + rest * (1.0 - 0.5 * z));
    }
}

/// Cosine of `r + rest` likewise. 1 - z/2 leaves a rounding error, which joins the small terms.
template <class T>
[[gnu::always_inline]] inline double cosineNearZero(double r, double rest)
{
    const double z = r * r;
    const double half = 0.5 * z;
    const double head = 1.0 - half;
    if constexpr (std::is_same_v<T, float>) {
        const double sum =
            sumOf6(z, 1.0 / 24, -1.0 / 720, 1.0 / 40320, -1.0 / 3628800, 1.0 / 479001600, -1.0 / 87178291200);
        return head + z * z * sum;
    } else {
        const double sum = sumOf8(z, 1.0 / 24, -1.0 / 720, 1.0 / 40320, -1.0 / 3628800, 1.0 / 479001600,
                                  -1.0 / 87178291200, 1.0 / 20922789888000, -1.0 / 6402373705728000);
        return head + (((1.0 - head) - half) + (z * z * sum - r * rest));
    }
}

/// For an angle of `angleLimit` at most. The multiple of pi / 2 is taken off in three pieces, the first two of 33 bits,
/// so that their products are exact (W. J. Cody and W. Waite, Software Manual for the Elementary Functions, 1980).
template <class T>
[[gnu::always_inline]] inline SinCos sinCosInRange(double angle)
{
    constexpr double piece1 = 0x1.921fb544p+0;
    constexpr double piece2 = 0x1.0b4611a6p-34;
    constexpr double piece3 = 0x1.3198a2e037073p-69;
    constexpr double toInteger =
        0x1.8p+52;  // its sum with a small number rounds that to an integer, in the lowest bits
    const double shifted = angle * 0x1.45f306dc9c883p-1 + toInteger;
    const std::uint64_t quadrant = std::bit_cast<std::uint64_t>(shifted);
    const double multiple = shifted - toInteger;
    const double head = angle - multiple * piece1;
    const double r = head - multiple * piece2;
    const double rest = ((head - r) - multiple * piece2) - multiple * piece3;

    const std::uint64_t sine = std::bit_cast<std::uint64_t>(sineNearZero<T>(r, rest));
    const std::uint64_t cosine = std::bit_cast<std::uint64_t>(cosineNearZero<T>(r, rest));
    const std::uint64_t change = (sine ^ cosine) & (0 - (quadrant & 1));
    const std::uint64_t sineSign = (quadrant & 2) << 62;
    const std::uint64_t cosineSign = ((quadrant + 1) & 2) << 62;
    return {std::bit_cast<double>((sine ^ change) ^ sineSign),
            std::bit_cast<double>((cosine ^ change) ^ cosineSign)};
}

/// For any angle; not-a-number for infinities and not-a-number.
template <class T>
SinCos sinCos(double angle)
{
    if (std::fabs(angle) <= angleLimit) [[likely]]
        return sinCosInRange<T>(angle);
    return {std::sin(angle), std::cos(angle)};
}

template <class T>
T cosine(T angle)
{
    return static_cast<T>(sinCos<T>(static_cast<double>(angle)).cosine);
}

/// Natural logarithm of a normal positive number. The number is 2^k times one from sqrt(1/2) to sqrt(2), that is 1 + f,
/// and with s = f / (2 + f) log(1 + f) = 2 (s + s^3/3 + s^5/5 + ...), summed so that f stands alone.
template <class T>
[[gnu::always_inline]] inline double logOfNormal(double x)
{
    constexpr std::uint64_t rootHalf = 0x3FE6A09E667F3BCD;
    constexpr std::uint64_t bias = std::uint64_t(1024) << 52;  // keeps the exponent positive while it is cut out
    constexpr double ln2High = 0x1.62e42fefa2p-1;
    constexpr double ln2Low = 0x1.9ef35793c7673p-41;
    constexpr double toDouble = 0x1p+52;  // an integer or-ed into its lowest bits is added to it
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    const std::uint64_t biased = (bits - rootHalf + bias) >> 52;
    const double k = std::bit_cast<double>(biased | std::bit_cast<std::uint64_t>(toDouble)) - (toDouble + 1024.0);
    const double f = std::bit_cast<double>(bits - (biased << 52) + bias) - 1.0;
    const double s = f / (2.0 + f);
    const double z = s * s;
    double sum;
    if constexpr (std::is_same_v<T, float>)
        sum = sumOf8(z, 2.0 / 3, 2.0 / 5, 2.0 / 7, 2.0 / 9, 2.0 / 11, 2.0 / 13, 2.0 / 15, 2.0 / 17);
    else
        sum = sumOf6(z, 2.0 / 3, 2.0 / 5, 2.0 / 7, 2.0 / 9, 2.0 / 11, 2.0 / 13) +
              z * z * z * (z * z * z) * sumOf6(z, 2.0 / 15, 2.0 / 17, 2.0 / 19, 2.0 / 21, 2.0 / 23, 2.0 / 25);
    const double half = 0.5 * f * f;
    return k * ln2High - ((half - (s * (half + sum * z) + k * ln2Low)) - f);
}

/// For any number from 0 on.
template <class T>
T log(T x)
{
    const double wide = static_cast<double>(x);
    if (wide >= std::numeric_limits<double>::min() && wide <= std::numeric_limits<double>::max()) [[likely]]
        return static_cast<T>(logOfNormal<T>(wide));
    return static_cast<T>(std::log(wide));
}

/// Functions that the platform's C library serves: in float they are reckoned in double and rounded once, in double their
/// last place is the platform's.
template <class T>
T acos(T x)
{
    return static_cast<T>(std::acos(static_cast<double>(x)));
}

template <class T>
T exp(T x)
{
    return static_cast<T>(std::exp(static_cast<double>(x)));
}

}  // namespace RnMath
}  // namespace Vn
