// Private to rncosinehemisphericalrng.imp, rnhistogramspherical.imp and rnuniformsphericalrng.imp.
//
// Directions from points of the unit square. All samplers take phi = 2 pi u1 and differ only in the
// cosine of the polar angle that they make of u0, so RnDirections has everything but that function.
// The samplers' classes have no base in common to hold this, as their bases are part of the
// interface.
//
// The three forms of a direction, for a cosine c and an azimuth phi, are (c, phi), (acos(c), phi)
// and the vector (r cos(phi), r sin(phi), c) with r = sqrt(1 - c c). The sine and cosine of phi are
// the library's own (rnmath_p.h), so that vectors have the same bits on every platform; acos() is
// the C library's.
//
// A sequence of directions begins as one sequence of the source, written straight into the caller's
// arrays, and is then transformed in place: no memory is allocated, and a source whose sequences
// differ from its single draws shows.
//
// Tests: tests/base/rnsphericaltest.cpp.
#pragma once

#include <base/rnbirng.h>
#include <base/rnmath_p.h>
#include <base/rnwide_p.h>

#include <cmath>

namespace Vn
{

/// A vector; of length 1 up to rounding where it stands for a direction.
template <class T>
struct RnVector
{
    T x, y, z;

    /// Hands the result over to the out-parameters of the public interface. These are to be three
    /// objects.
    void copyTo(T& toX, T& toY, T& toZ) const
    {
        toX = x;
        toY = y;
        toZ = z;
    }
};

/// A direction as a polar coordinate, theta or its cosine, and the azimuth in radians.
template <class T>
struct RnPolar
{
    T polar, azimuth;

    /// As RnVector::copyTo().
    void copyTo(T& toPolar, T& toAzimuth) const
    {
        toPolar = polar;
        toAzimuth = azimuth;
    }
};

/// Constants of directions, and the step from cosine and azimuth to a vector.
template <class T>
struct RnDirection
{
    static constexpr T twoPi = T(6.283185307179586);
    static constexpr T fourPi = T(12.566370614359172);

    /// Densities per unit of solid angle, in decimal digits, so that each is rounded once and not
    /// after a division.
    static constexpr T densityOnSphere = T(0.07957747154594767);      ///< 1 / (4 pi)
    static constexpr T densityOnHemisphere = T(0.15915494309189535);  ///< 1 / (2 pi)
    static constexpr T densityAtZenith = T(0.3183098861837907);       ///< 1 / pi, of a cosine distribution

    /// Azimuths per radian: 1 for the whole circle.
    static constexpr T turnsPerRadian = T(0.15915494309189535);

    /// The unit vector of a direction.
    ///
    ///     toXYZ(1, any phi)  ->  (0, 0, 1)
    ///     toXYZ(0, 0)        ->  (1, 0, 0)
    ///     toXYZ(1.5, 0)      ->  x and y are not-a-number, z is 1.5
    static RnVector<T> toXYZ(T cosine, T phi)
    {
        const RnMath::SinCos turn = RnMath::sinCos<T>(static_cast<double>(phi));
        const T r = std::sqrt(T(1) - cosine * cosine);
        return {r * static_cast<T>(turn.cosine), r * static_cast<T>(turn.sine), cosine};
    }
};

/// What all samplers of directions do, for a sampler whose `cosineOf` makes the cosine of the polar
/// angle of a number in [0, 1]. The map functions draw nothing; the draw functions take one point
/// of the source; the fill functions take `n` points by one getSequence().
template <class T, T (*cosineOf)(T)>
struct RnDirections
{
    using Direction = RnDirection<T>;

    /// The direction of a point of the unit square. Points outside are mapped by the same formulas:
    /// `u1` of 1.25 is the azimuth of 0.25 after a whole turn, and a `u0` outside may give a cosine
    /// that no angle has, thus not-a-number.
    /// @{
    static RnPolar<T> mapToCosine(T u0, T u1) { return {cosineOf(u0), Direction::twoPi * u1}; }
    static RnPolar<T> mapToAngles(T u0, T u1) { return {RnMath::acos(cosineOf(u0)), Direction::twoPi * u1}; }
    static RnVector<T> mapToXYZ(T u0, T u1) { return Direction::toXYZ(cosineOf(u0), Direction::twoPi * u1); }
    /// @}

    /// The direction of the source's next point.
    /// @{
    static RnPolar<T> drawCosine(RnBiRng<T>& source)
    {
        T u0, u1;
        source.getSample(u0, u1);
        return mapToCosine(u0, u1);
    }

    static RnPolar<T> drawAngles(RnBiRng<T>& source)
    {
        T u0, u1;
        source.getSample(u0, u1);
        return mapToAngles(u0, u1);
    }

    static RnVector<T> drawXYZ(RnBiRng<T>& source)
    {
        T u0, u1;
        source.getSample(u0, u1);
        return mapToXYZ(u0, u1);
    }
    /// @}

    /// `n` directions into `cosTheta` and `phi`. There are two loops, each over one array, since
    /// compilers vectorise these even where they cannot prove that the arrays do not overlap.
    static void fillCosine(RnBiRng<T>& source, unsigned int n, T* cosTheta, T* phi)
    {
        source.getSequence(n, cosTheta, phi);
        for (unsigned int i = 0; i < n; ++i)
            cosTheta[i] = cosineOf(cosTheta[i]);
        for (unsigned int i = 0; i < n; ++i)
            phi[i] = Direction::twoPi * phi[i];
    }

    /// `n` directions into `theta` and `phi`. The arc cosine is a call for each, so there is
    /// nothing to vectorise.
    static void fillAngles(RnBiRng<T>& source, unsigned int n, T* theta, T* phi)
    {
        source.getSequence(n, theta, phi);
        for (unsigned int i = 0; i < n; ++i)
            mapToAngles(theta[i], phi[i]).copyTo(theta[i], phi[i]);
    }

    /// `n` directions as vectors. The blocks are small enough for the intermediate results to stay
    /// in the cache.
    static void fillXYZ(RnBiRng<T>& source, unsigned int n, T* x, T* y, T* z)
    {
        // Intended: the source's first coordinate becomes the azimuth and its second the height,
        // the reverse of the other forms. Pictures and tables made with these vectors depend on it;
        // do not mend.
        source.getSequence(n, x, z);
        for (unsigned int done = 0; done < n;) {
            const unsigned int run = n - done < block ? n - done : block;
            turnRun(run, x + done, y + done, z + done);
            done += run;
        }
    }

private:
    static constexpr unsigned int block = 64;  ///< points that are turned at a time

    /// Turns one block of `x`, for the azimuth, and `z`, for the height, into vectors in place. A
    /// block with an azimuth too far for the fast sine goes point by point; a source that keeps to
    /// the unit square has none.
    static void turnRun(unsigned int run, T* x, T* y, T* z)
    {
        if (areInRange(run, x)) {
            RnWide::run<turnInLanes>(run, x, y, z);
            return;
        }
        for (unsigned int i = 0; i < run; ++i)
            mapToXYZ(z[i], x[i]).copyTo(x[i], y[i], z[i]);
    }

    /// Whether RnMath::sinCosInRange() serves all `n` azimuths. False for not-a-number. Counts
    /// instead of leaving early, as a loop without an exit is vectorised.
    static bool areInRange(unsigned int n, T const* x)
    {
        unsigned int beyond = 0;
        for (unsigned int i = 0; i < n; ++i)
            beyond |= std::abs(Direction::twoPi * x[i]) <= T(RnMath::angleLimit) ? 0 : 1;
        return beyond == 0;
    }

    /// Loops without a branch, for vector registers. Sine and cosine go through arrays of their
    /// own, as they are computed in double and the second loop is in T.
    static void turnInLanes(unsigned int n, T* x, T* y, T* z)
    {
        T sines[block], cosines[block];
        for (unsigned int i = 0; i < n; ++i) {
            const RnMath::SinCos turn = RnMath::sinCosInRange<T>(static_cast<double>(Direction::twoPi * x[i]));
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
