#pragma once

#include <base/rnsphericalrng.h>
#include <base/vector.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

/// Counts how often directions fall into bins over the upper hemisphere: bins of equal cosine times bins of equal azimuth,
/// all of the same solid angle.
///
///     Vn::RnHistogramHemispherical<float> histogram(8, 16);
///     histogram.addSampleCosine(cosTheta, phi);
///     histogram.dumpInventor(file);
///
/// phi is from 0 to 2 pi, the cosine from 0 to 1. What is above counts in the last bin. What is below, or is no number,
/// lies outside the array; it is dropped and isn't in the total.
///
/// addSamples() takes the cosine of what is a cosine already, so it doesn't show the sampler's distribution. To see that,
/// draw by getSampleCosine() and add by addSampleCosine().
///
/// A value; one thread at a time.
/// Tests: tests/base/rnhistogramsphericaltest.cpp.
template <class T>
class RnHistogramHemispherical
{
public:
    /// `nc` bins over the cosine and `np` over the azimuth.
    RnHistogramHemispherical(unsigned int nc, unsigned int np);

    RnHistogramHemispherical(RnHistogramHemispherical const& other);
    RnHistogramHemispherical& operator=(RnHistogramHemispherical const& other);

    virtual ~RnHistogramHemispherical();

    /// The bin of a direction, by rounding down. A negative index is a large number here; not-a-number leads to
    /// 2147483648. Only getBinCosine() brings what is beyond the last bin down to it.
    virtual void getBinAngles(T theta, T phi, unsigned int& ic, unsigned int& ip) const;
    virtual void getBinCosine(T cosTheta, T phi, unsigned int& ic, unsigned int& ip) const;

    /// Adds 1, or `weight`, to the direction's bin and to the total: to element ic * np + ip of getBinCosine(), if there
    /// is one.
    void addSampleAngles(T theta, T phi);
    void addSampleAngles(T theta, T phi, T weight);
    void addSampleCosine(T cosTheta, T phi);
    void addSampleCosine(T cosTheta, T phi, T weight);

    /// Draws `n` directions by getSampleCosine() and adds each under the cosine of its cosine.
    void addSamples(RnSphericalRng<T>& rng, unsigned int n);

    /// Element ic * nc + ip, so another one than was filled unless the counts are equal; 0 beyond the last.
    T getBinValue(unsigned int ic, unsigned int ip) const;
    T getTotal() const;

    /// Empties the bins.
    void clear();

    /// A line for each bin, cosine by cosine: lower and upper cosine, lower and upper azimuth, content.
    void dump(std::ostream& stream) const;

    /// An Open Inventor scene: a point for each bin, along its direction as far out as its density, with a square around
    /// the plane z = 0.
    void dumpInventor(std::ostream& stream) const;

private:
    std::uint32_t _cosineCount;
    std::uint32_t _azimuthCount;
    Vector<T> _bins;
    T _cosineScale;
    T _azimuthScale;
    T _total;
};

/// RnHistogramHemispherical over the whole sphere, with the cosine from -1 to 1.
/// Tests: tests/base/rnhistogramsphericaltest.cpp.
template <class T>
class RnHistogramSpherical
{
public:
    /// `nc` bins over the cosine and `np` over the azimuth.
    RnHistogramSpherical(unsigned int nc, unsigned int np);

    RnHistogramSpherical(RnHistogramSpherical const& other);
    RnHistogramSpherical& operator=(RnHistogramSpherical const& other);

    virtual ~RnHistogramSpherical();

    /// The bin of a direction, by rounding down. A negative index is a large number here; not-a-number leads to
    /// 2147483648. Only getBinCosine() brings what is beyond the last bin down to it.
    virtual void getBinAngles(T theta, T phi, unsigned int& ic, unsigned int& ip) const;
    virtual void getBinCosine(T cosTheta, T phi, unsigned int& ic, unsigned int& ip) const;

    /// Adds 1, or `weight`, to the direction's bin and to the total: to element ic * np + ip of getBinCosine(), if there
    /// is one.
    void addSampleAngles(T theta, T phi);
    void addSampleAngles(T theta, T phi, T weight);
    void addSampleCosine(T cosTheta, T phi);
    void addSampleCosine(T cosTheta, T phi, T weight);

    /// Draws `n` directions by getSampleCosine() and adds each under the cosine of its cosine.
    void addSamples(RnSphericalRng<T>& rng, unsigned int n);

    /// Element ic * nc + ip, so another one than was filled unless the counts are equal; 0 beyond the last.
    T getBinValue(unsigned int ic, unsigned int ip) const;
    T getTotal() const;

    /// Empties the bins.
    void clear();

    /// A line for each bin, cosine by cosine: lower and upper cosine, lower and upper azimuth, content.
    void dump(std::ostream& stream) const;

    /// An Open Inventor scene: a point for each bin, along its direction as far out as its density, with a square around
    /// the plane z = 0.
    void dumpInventor(std::ostream& stream) const;

private:
    std::uint32_t _cosineCount;
    std::uint32_t _azimuthCount;
    Vector<T> _bins;
    T _cosineScale;
    T _azimuthScale;
    T _total;
};

extern template class VN_BASE_EXPORT RnHistogramHemispherical<float>;
extern template class VN_BASE_EXPORT RnHistogramHemispherical<double>;
extern template class VN_BASE_EXPORT RnHistogramSpherical<float>;
extern template class VN_BASE_EXPORT RnHistogramSpherical<double>;

}  // namespace Vn
