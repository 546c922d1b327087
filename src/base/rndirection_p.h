#pragma once

#include <base/rnmath_p.h>
#include <base/rnwide_p.h>

#include <cmath>

namespace Vn
{

/// Cosine and azimuth to a unit vector. Private to the library.
template <class T>
struct RnDirection
{
    static constexpr T twoPi = T(6.283185307179586);

    static void toXYZ(T cosine, T phi, T& x, T& y, T& z)
    {
        const RnMath::SinCos turn = RnMath::sinCos<T>(static_cast<double>(phi));
        const T r = std::sqrt(T(1) - cosine * cosine);
        x = r * static_cast<T>(turn.cosine);
        y = r * static_cast<T>(turn.sine);
        z = cosine;
    }

    /// Of numbers in [0, 1] from `x`, for the azimuth, and `z`, for the height: the vectors, in place.
    template <T (*cosineOf)(T)>
    static void fillXYZ(unsigned int n, T* x, T* y, T* z)
    {
        for (unsigned int i = 0; i < n;) {
            const unsigned int run = n - i < block ? n - i : block;
            if (areInRange(run, x + i)) {
                RnWide::run<turnBlock<cosineOf>>(run, x + i, y + i, z + i);
            } else {
                for (unsigned int j = i; j < i + run; ++j)
                    toXYZ(cosineOf(z[j]), twoPi * x[j], x[j], y[j], z[j]);
            }
            i += run;
        }
    }

private:
    static constexpr unsigned int block = 64;

    static bool areInRange(unsigned int n, T const* x)
    {
        unsigned int beyond = 0;
        for (unsigned int i = 0; i < n; ++i)
            beyond |= std::abs(twoPi * x[i]) <= T(RnMath::angleLimit) ? 0 : 1;
        return beyond == 0;
    }

    /// Simple loops without a branch, which compilers run side by side.
    template <T (*cosineOf)(T)>
    static void turnBlock(unsigned int n, T* x, T* y, T* z)
    {
        T sines[block], cosines[block];
        for (unsigned int i = 0; i < n; ++i) {
            const RnMath::SinCos turn = RnMath::sinCosInRange<T>(static_cast<double>(twoPi * x[i]));
            sines[i] = static_cast<T>(turn.sine);
            cosines[i] = static_cast<T>(turn.cosine);
        }
        for (unsigned int i = 0; i < n; ++i) {
            const T cosine = cosineOf(z[i]);
            const T r = std::sqrt(T(1) - cosine * cosine);
            x[i] = r * cosines[i];
            y[i] = r * sines[i];
            z[i] = cosine;
        }
    }
};

}  // namespace Vn
