#pragma once

#include <base/rnsphericalrng.h>
#include <base/vector.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

/// Counts how often directions fall into bins over the upper hemisphere. The bins divide the cosine
/// of the polar angle and the azimuth evenly, so that all have the same solid angle.
///
///     Vn::RnHistogramHemispherical<float> histogram(8, 16);
///     histogram.addSampleCosine(cosTheta, phi);
///     histogram.dumpInventor(file);
///
/// A direction below the horizon, with a negative azimuth or with a not-a-number lies outside the
/// array and is dropped. A cosine or an azimuth above its range counts in the last bin.
///
/// Threads: one thread at a time.
/// Ownership: a value, which can be copied and assigned; it owns its bins. In float a bin that
/// grows by 1 stops at 2^24.
/// See also: RnHistogramSpherical, for directions below the horizon.
/// Tests: tests/base/rnhistogramsphericaltest.cpp.
template <class T>
class RnHistogramHemispherical
{
public:
    /// `nc` bins over the cosine, from 0 to 1, and `np` over the azimuth, from 0 to 2 pi. Throws
    /// std::bad_alloc without memory for `nc` times `np` numbers.
    RnHistogramHemispherical(unsigned int nc, unsigned int np);

    /// Copies bins and total. An assignment without memory for it throws std::bad_alloc and changes
    /// nothing.
    /// @{
    RnHistogramHemispherical(RnHistogramHemispherical const& other);
    RnHistogramHemispherical& operator=(RnHistogramHemispherical const& other);
    /// @}

    virtual ~RnHistogramHemispherical();

    /// Writes the bin of a direction to `ic` and `ip`, angles in radians. Each index is rounded
    /// down and may be out of range: a negative one is a large number here, and not-a-number gives
    /// 2147483648.
    ///
    ///     4 by 8 bins:  theta = 0, phi = 0     ->  4, 0: beyond the last bin
    ///                   theta = 1.57, phi = 1  ->  0, 1
    virtual void getBinAngles(T theta, T phi, unsigned int& ic, unsigned int& ip) const;

    /// As getBinAngles(), from the cosine of the polar angle. In addition an index above the last
    /// bin is lowered to it; negative ones are not raised.
    ///
    ///     4 by 8 bins:  cosTheta = 1, phi = 0  ->  3, 0
    ///                   cosTheta = -0.1        ->  4294967295
    virtual void getBinCosine(T cosTheta, T phi, unsigned int& ic, unsigned int& ip) const;

    /// Adds 1, or `weight`, to the direction's bin by getBinCosine() and to the total. An index
    /// beyond the array drops the sample.
    /// @{
    void addSampleAngles(T theta, T phi);
    void addSampleAngles(T theta, T phi, T weight);
    void addSampleCosine(T cosTheta, T phi);
    void addSampleCosine(T cosTheta, T phi, T weight);
    /// @}

    /// Draws `n` directions by getSampleCosine() and adds each under the cosine of its cosine, with
    /// weight 1. Recorded histograms depend on it. To see the sampler's distribution, draw and add
    /// by hand:
    ///
    ///     rng.getSampleCosine(cosTheta, phi);
    ///     histogram.addSampleCosine(cosTheta, phi);
    void addSamples(RnSphericalRng<T>& rng, unsigned int n);

    /// Element `ic` * nc + `ip`; 0 beyond the last. The bins are filled at ic * np + ip, so it
    /// finds what was filled only if nc and np are equal. The dumps are right for any counts.
    T getBinValue(unsigned int ic, unsigned int ip) const;

    /// The sum of all weights that fell into a bin.
    T getTotal() const { return _total; }

    /// Sets all bins and the total to 0.
    void clear();

    /// Writes a line for each bin, cosine by cosine: lower and upper cosine, lower and upper
    /// azimuth, content. Numbers are in the stream's current format.
    void dump(std::ostream& stream) const;

    /// Writes an Open Inventor scene: a point for each bin, along its direction, as far out as its
    /// density, with a square in the plane z = 0. In an empty histogram the coordinates are
    /// not-a-number.
    void dumpInventor(std::ostream& stream) const;

private:
    std::uint32_t _cosineCount;
    std::uint32_t _azimuthCount;
    Vector<T> _bins;
    T _cosineScale;   ///< bins in a range of cosines of length 1
    T _azimuthScale;  ///< bins per radian
    T _total;
};

/// Counts how often directions fall into bins over the whole sphere. The bins divide the cosine of
/// the polar angle and the azimuth evenly, so that all have the same solid angle.
///
///     Vn::RnHistogramSpherical<float> histogram(8, 16);
///     histogram.addSampleCosine(cosTheta, phi);
///     histogram.dumpInventor(file);
///
/// All is as in RnHistogramHemispherical, but cosines are from -1 to 1, so that only a negative
/// azimuth or a not-a-number is dropped. The two classes have no base in common.
///
/// Threads: one thread at a time.
/// Ownership: a value, which can be copied and assigned; it owns its bins.
/// Tests: tests/base/rnhistogramsphericaltest.cpp.
template <class T>
class RnHistogramSpherical
{
public:
    /// `nc` bins over the cosine, from -1 to 1, and `np` over the azimuth, from 0 to 2 pi. Throws
    /// std::bad_alloc without memory for `nc` times `np` numbers.
    RnHistogramSpherical(unsigned int nc, unsigned int np);

    /// Copies bins and total. An assignment without memory for it throws std::bad_alloc and changes
    /// nothing.
    /// @{
    RnHistogramSpherical(RnHistogramSpherical const& other);
    RnHistogramSpherical& operator=(RnHistogramSpherical const& other);
    /// @}

    virtual ~RnHistogramSpherical();

    /// Writes the bin of a direction to `ic` and `ip`, angles in radians. Each index is rounded
    /// down and may be out of range: a negative one is a large number here, and not-a-number gives
    /// 2147483648.
    ///
    ///     4 by 8 bins:  theta = 0, phi = 0     ->  4, 0: beyond the last bin
    ///                   theta = 3.14, phi = 1  ->  0, 1
    virtual void getBinAngles(T theta, T phi, unsigned int& ic, unsigned int& ip) const;

    /// As getBinAngles(), from the cosine of the polar angle. In addition an index above the last
    /// bin is lowered to it; negative ones are not raised.
    ///
    ///     4 by 8 bins:  cosTheta = 1, phi = 0   ->  3, 0
    ///                   cosTheta = -1, phi = 7  ->  0, 7
    virtual void getBinCosine(T cosTheta, T phi, unsigned int& ic, unsigned int& ip) const;

    /// Adds 1, or `weight`, to the direction's bin by getBinCosine() and to the total. An index
    /// beyond the array drops the sample.
    /// @{
    void addSampleAngles(T theta, T phi);
    void addSampleAngles(T theta, T phi, T weight);
    void addSampleCosine(T cosTheta, T phi);
    void addSampleCosine(T cosTheta, T phi, T weight);
    /// @}

    /// Draws `n` directions by getSampleCosine() and adds each under the cosine of its cosine, with
    /// weight 1. Recorded histograms depend on it. To see the sampler's distribution, draw and add
    /// by hand:
    ///
    ///     rng.getSampleCosine(cosTheta, phi);
    ///     histogram.addSampleCosine(cosTheta, phi);
    void addSamples(RnSphericalRng<T>& rng, unsigned int n);

    /// Element `ic` * nc + `ip`; 0 beyond the last. The bins are filled at ic * np + ip, so it
    /// finds what was filled only if nc and np are equal. The dumps are right for any counts.
    T getBinValue(unsigned int ic, unsigned int ip) const;

    /// The sum of all weights that fell into a bin.
    T getTotal() const { return _total; }

    /// Sets all bins and the total to 0.
    void clear();

    /// Writes a line for each bin, cosine by cosine: lower and upper cosine, lower and upper
    /// azimuth, content. Numbers are in the stream's current format.
    void dump(std::ostream& stream) const;

    /// Writes an Open Inventor scene: a point for each bin, along its direction, as far out as its
    /// density, with a square in the plane z = 0. In an empty histogram the coordinates are
    /// not-a-number.
    void dumpInventor(std::ostream& stream) const;

private:
    std::uint32_t _cosineCount;
    std::uint32_t _azimuthCount;
    Vector<T> _bins;
    T _cosineScale;   ///< bins in a range of cosines of length 1
    T _azimuthScale;  ///< bins per radian
    T _total;
};

extern template class VN_BASE_EXPORT RnHistogramHemispherical<float>;
extern template class VN_BASE_EXPORT RnHistogramHemispherical<double>;
extern template class VN_BASE_EXPORT RnHistogramSpherical<float>;
extern template class VN_BASE_EXPORT RnHistogramSpherical<double>;

}  // namespace Vn
