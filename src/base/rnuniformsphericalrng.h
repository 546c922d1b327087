#pragma once

#include <base/rnbirng.h>
#include <base/rnsphericalrng.h>

namespace Vn
{

/// Directions spread evenly over the sphere: by Archimedes the height is even, cos(theta) = 2 u0 - 1, phi = 2 pi u1.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformSphericalRng<float> directions(&source);
///     directions.getSequenceXYZ(n, x, y, z);
///
/// Sequences are made of the source's sequence points. In getSequenceXYZ() the source's first coordinate gives the
/// azimuth and its second the height, the other way round than in all other forms. phi is 2 pi times the coordinate,
/// unchecked.
///
/// The density is 1 / (4 pi) whatever the arguments. The source isn't owned and must outlive this object.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnUniformSphericalRng : public RnSphericalRng<T>
{
public:
    /// Throws ExInternalError ("_rng") for null.
    RnUniformSphericalRng(RnBiRng<T>* rng);

    ~RnUniformSphericalRng() override;

    void getSampleXYZ(T& x, T& y, T& z) override;
    void getSampleAngles(T& theta, T& phi) override;
    void getSampleCosine(T& cosTheta, T& phi) override;
    void getSequenceXYZ(unsigned int n, T* x, T* y, T* z) override;
    void getSequenceAngles(unsigned int n, T* theta, T* phi) override;
    void getSequenceCosine(unsigned int n, T* cosTheta, T* phi) override;

    T getPdfXYZ(T x, T y, T z) const override;
    T getPdfAngles(T theta, T phi) const override;
    T getPdfCosine(T cosTheta, T phi) const override;

    /// Restarts the source.
    void restart() override;

    /// "Uniform spherical"
    char const* getName() const override;

    /// The direction that a point of the unit square leads to; nothing is drawn.
    void mapToAngles(T u0, T u1, T& theta, T& phi) const;
    void mapToCosine(T u0, T u1, T& cosTheta, T& phi) const;
    void mapToXYZ(T u0, T u1, T& x, T& y, T& z) const;

private:
    RnBiRng<T>* _rng;
};

/// Directions spread evenly over the upper hemisphere, cos(theta) = u0. Otherwise as RnUniformSphericalRng, with the
/// density 1 / (2 pi), also for a direction below.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnUniformHemisphericalRng : public RnHemisphericalRng<T>
{
public:
    /// Throws ExInternalError ("_rng") for null.
    RnUniformHemisphericalRng(RnBiRng<T>* rng);

    ~RnUniformHemisphericalRng() override;

    void getSampleXYZ(T& x, T& y, T& z) override;
    void getSampleAngles(T& theta, T& phi) override;
    void getSampleCosine(T& cosTheta, T& phi) override;
    void getSequenceXYZ(unsigned int n, T* x, T* y, T* z) override;
    void getSequenceAngles(unsigned int n, T* theta, T* phi) override;
    void getSequenceCosine(unsigned int n, T* cosTheta, T* phi) override;

    T getPdfXYZ(T x, T y, T z) const override;
    T getPdfAngles(T theta, T phi) const override;
    T getPdfCosine(T cosTheta, T phi) const override;

    /// Restarts the source.
    void restart() override;

    /// "Uniform hemispherical"
    char const* getName() const override;

    /// The direction that a point of the unit square leads to; nothing is drawn.
    void mapToAngles(T u0, T u1, T& theta, T& phi) const;
    void mapToCosine(T u0, T u1, T& cosTheta, T& phi) const;
    void mapToXYZ(T u0, T u1, T& x, T& y, T& z) const;

private:
    RnBiRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnUniformSphericalRng<float>;
extern template class VN_BASE_EXPORT RnUniformSphericalRng<double>;
extern template class VN_BASE_EXPORT RnUniformHemisphericalRng<float>;
extern template class VN_BASE_EXPORT RnUniformHemisphericalRng<double>;

}  // namespace Vn
