// Private to rndirection_p.h and rngaussianrng.imp.
//
// Sine, cosine and logarithm with the same bits on every platform. The C libraries' functions
// differ in the last place, and samples must not. Every step here is an addition, a multiplication,
// a division or an operation on bits, which IEEE 754 rounds in one way only; the library is
// compiled without contraction to fused operations.
//
// The functions for the usual arguments have no branch, so that compilers run several in one vector
// register. They compute in double: for a float by a shorter series, whose result is rounded once
// to float; for a double with an error below one unit in the last place. Rare arguments (angles
// beyond a million, subnormal numbers, infinities) go to the C library.
//
// A series is summed by pairs (Estrin's scheme) and not by Horner's, which would make each term
// wait for the one before.
//
// Masks and exponents are written as bits of the double: sign in bit 63, eleven bits of exponent
// with a bias of 1023, 52 bits of fraction.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace Vn
{

/// Elementary functions for `T` of float or double. Tests: tests/base/rnmathtest.cpp.
namespace RnMath
{

/// 2^20 radians. Beyond it the first two products of the reduction by pi / 2 would no longer be
/// exact, and sine and cosine come from the C library.
inline constexpr double angleLimit = 1048576.0;

/// Both results of one reduction.
struct SinCos
{
    double sine;
    double cosine;
};

/// c0 + c1 z + c2 z^2 + ..., for 6 and for 8 coefficients.
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

/// Sine of `r + rest`, by the Taylor series, for `r` up to pi / 4 and a `rest` below its last
/// place. A float needs neither the last two terms nor the rest.
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

/// Cosine of `r + rest` likewise. 1 - z/2 is rounded; its error, computed exactly, joins the small
/// terms.
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

/// Sine and cosine of an angle of at most `angleLimit` in size.
///
/// The nearest multiple of pi / 2 is subtracted in three pieces, the first two of 33 bits, so that
/// their products with the multiple are exact (W. J. Cody and W. Waite, Software Manual for the
/// Elementary Functions, 1980). The quadrant, the lowest bits of the multiple, then swaps the two
/// results and sets their signs: by masks, as a branch would be a coin toss.
template <class T>
[[gnu::always_inline]] inline SinCos sinCosInRange(double angle)
{
    constexpr double piece1 = 0x1.921fb544p+0;
    constexpr double piece2 = 0x1.0b4611a6p-34;
    constexpr double piece3 = 0x1.3198a2e037073p-69;
    // Adding this rounds a small number to an integer, which then stands in the lowest bits of the
    // sum.
    constexpr double toInteger = 0x1.8p+52;
    // shifted's lowest bits are the nearest multiple of pi / 2 as an integer, two's complement for
    // negative angles.
    const double shifted = angle * 0x1.45f306dc9c883p-1 + toInteger;
    const std::uint64_t quadrant = std::bit_cast<std::uint64_t>(shifted);
    const double multiple = shifted - toInteger;
    const double head = angle - multiple * piece1;
    const double r = head - multiple * piece2;
    const double rest = ((head - r) - multiple * piece2) - multiple * piece3;

    // An odd quadrant swaps sine and cosine; quadrants 2 and 3 negate the sine, 1 and 2 the cosine.
    const std::uint64_t sine = std::bit_cast<std::uint64_t>(sineNearZero<T>(r, rest));
    const std::uint64_t cosine = std::bit_cast<std::uint64_t>(cosineNearZero<T>(r, rest));
    const std::uint64_t change = (sine ^ cosine) & (0 - (quadrant & 1));
    const std::uint64_t sineSign = (quadrant & 2) << 62;
    const std::uint64_t cosineSign = ((quadrant + 1) & 2) << 62;
    return {std::bit_cast<double>((sine ^ change) ^ sineSign),
            std::bit_cast<double>((cosine ^ change) ^ cosineSign)};
}

/// Sine and cosine of any angle in radians; both not-a-number for infinities and not-a-number.
template <class T>
SinCos sinCos(double angle)
{
    if (std::fabs(angle) <= angleLimit) [[likely]]
        return sinCosInRange<T>(angle);
    return {std::sin(angle), std::cos(angle)};
}

/// Cosine alone. The sine costs nothing more.
template <class T>
T cosine(T angle)
{
    return static_cast<T>(sinCos<T>(static_cast<double>(angle)).cosine);
}

/// Natural logarithm of a positive normal number.
///
/// The number is 2^k (1 + f), with 1 + f between sqrt(1/2) and sqrt(2). With s = f / (2 + f), log(1
/// + f) is 2 (s + s^3/3 + s^5/5 + ...), rearranged so that the largest term is f itself, which is
/// exact. ln 2 is in two pieces, the first with so few bits that k times it is exact.
template <class T>
[[gnu::always_inline]] inline double logOfNormal(double x)
{
    constexpr std::uint64_t rootHalf = 0x3FE6A09E667F3BCD;
    constexpr std::uint64_t bias = std::uint64_t(1024) << 52;  // keeps k + 1024 positive
    constexpr double ln2High = 0x1.62e42fefa2p-1;
    constexpr double ln2Low = 0x1.9ef35793c7673p-41;
    constexpr double toDouble = 0x1p+52;  // an integer written into its lowest bits is added to it
    // Measured from sqrt(1/2), the exponent's bits are k and the remaining ones are 1 + f.
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

/// Natural logarithm of any number.
///
///     0    ->  -infinity
///     -1   ->  not-a-number
///     inf  ->  infinity
template <class T>
T log(T x)
{
    const double wide = static_cast<double>(x);
    if (wide >= std::numeric_limits<double>::min() && wide <= std::numeric_limits<double>::max()) [[likely]]
        return static_cast<T>(logOfNormal<T>(wide));
    return static_cast<T>(std::log(wide));
}

/// Arc cosine and exponential function by the C library. A float's is computed in double and
/// rounded once, which in practice hides the libraries' differences; a double's last place is the
/// platform's. Only the angle theta and the Gaussian density depend on them.
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
