#pragma once

#include <base/rnbirng.h>
#include <base/rnsphericalrng.h>

namespace Vn
{

/// Directions over the upper hemisphere with a density that falls with the cosine of the polar
/// angle, as the light that a matt surface takes in: cos(theta) = sqrt(u0) and phi = 2 pi u1, for a
/// point (u0, u1) of the unit square.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnCosineHemisphericalRng<float> directions(&source);
///     directions.getSequenceXYZ(n, x, y, z);
///
/// Sequences are made of the source's sequence points. getSequenceXYZ() takes the azimuth from the
/// source's first coordinate and the height from its second; all other forms do it the other way
/// round, and programs rely on it.
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Edges: the source's points should lie in the unit square; that is not checked.
/// See also: RnUniformHemisphericalRng, for an even density.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnCosineHemisphericalRng : public RnHemisphericalRng<T>
{
public:
    /// Directions of the points of `rng`. Throws ExInternalError ("_rng") for null.
    RnCosineHemisphericalRng(RnBiRng<T>* rng);

    RnCosineHemisphericalRng(RnCosineHemisphericalRng const&) = delete;
    RnCosineHemisphericalRng& operator=(RnCosineHemisphericalRng const&) = delete;

    /// The source lives on.
    ~RnCosineHemisphericalRng() override;

    /// The direction of one point of the source.
    /// @{
    void getSampleXYZ(T& x, T& y, T& z) override;
    void getSampleAngles(T& theta, T& phi) override;
    void getSampleCosine(T& cosTheta, T& phi) override;
    /// @}

    /// The directions of one sequence of the source; with its coordinates swapped in the XYZ form.
    /// @{
    void getSequenceXYZ(unsigned int n, T* x, T* y, T* z) override;
    void getSequenceAngles(unsigned int n, T* theta, T* phi) override;
    void getSequenceCosine(unsigned int n, T* cosTheta, T* phi) override;
    /// @}

    /// cos(theta) / pi per steradian, also where that is negative.
    ///
    ///     getPdfXYZ(0, 0, 1)   ->  1 / pi
    ///     getPdfXYZ(1, 0, 0)   ->  0
    ///     getPdfXYZ(0, 0, -1)  ->  -1 / pi: check for the horizon yourself
    /// @{
    T getPdfXYZ(T x, T y, T z) const override;
    T getPdfAngles(T theta, T phi) const override;
    T getPdfCosine(T cosTheta, T phi) const override;
    /// @}

    /// Restarts the source.
    void restart() override;

    char const* getName() const override;

    /// The direction of the point (`u0`, `u1`), both from 0 to 1. Nothing is drawn.
    ///
    ///     mapToCosine(0.25, 0)  ->  cosTheta is 0.5, so theta is pi / 3
    ///     mapToXYZ(0, 0)        ->  (1, 0, 0): the horizon
    ///     mapToXYZ(-0.1, 0)     ->  not-a-number in all three
    /// @{
    void mapToAngles(T u0, T u1, T& theta, T& phi) const;
    void mapToCosine(T u0, T u1, T& cosTheta, T& phi) const;
    void mapToXYZ(T u0, T u1, T& x, T& y, T& z) const;
    /// @}

private:
    RnBiRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnCosineHemisphericalRng<float>;
extern template class VN_BASE_EXPORT RnCosineHemisphericalRng<double>;

}  // namespace Vn
