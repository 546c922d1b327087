#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of directions, in three forms: as unit vectors, as angles, and as the cosine of the polar angle with the
/// azimuth.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnCosineHemisphericalRng<float> directions(&source);
///     float x, y, z;
///     directions.getSampleXYZ(x, y, z);    // z is up
///
/// theta is the polar angle from +z, phi the azimuth from +x toward +y, both in radians. Densities are per unit of
/// solid angle in all three forms. For float and double. A generator belongs to one thread at a time and isn't copied.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnSphericalRng
{
public:
    RnSphericalRng(RnSphericalRng const&) = delete;
    RnSphericalRng& operator=(RnSphericalRng const&) = delete;

    /// Draws one direction.
    virtual void getSampleXYZ(T& x, T& y, T& z) = 0;
    virtual void getSampleAngles(T& theta, T& phi) = 0;
    virtual void getSampleCosine(T& cosTheta, T& phi) = 0;

    /// Draws `n` directions into arrays. With 0 these aren't touched.
    virtual void getSequenceXYZ(unsigned int n, T* x, T* y, T* z) = 0;
    virtual void getSequenceAngles(unsigned int n, T* theta, T* phi) = 0;
    virtual void getSequenceCosine(unsigned int n, T* cosTheta, T* phi) = 0;

    /// The density in a direction. The arguments aren't checked.
    virtual T getPdfXYZ(T x, T y, T z) const = 0;
    virtual T getPdfAngles(T theta, T phi) const = 0;
    virtual T getPdfCosine(T cosTheta, T phi) const = 0;

    /// Goes back to the start of the sequence, as far as the source does.
    virtual void restart() = 0;

    /// A constant name for people.
    virtual char const* getName() const = 0;

    virtual ~RnSphericalRng();

protected:
    RnSphericalRng();
};

/// A source of directions with z at or above 0, for callers that can't do with others.
template <class T>
class RnHemisphericalRng : public RnSphericalRng<T>
{
public:
    ~RnHemisphericalRng() override;

protected:
    RnHemisphericalRng();
};

extern template class VN_BASE_EXPORT RnSphericalRng<float>;
extern template class VN_BASE_EXPORT RnSphericalRng<double>;
extern template class VN_BASE_EXPORT RnHemisphericalRng<float>;
extern template class VN_BASE_EXPORT RnHemisphericalRng<double>;

}  // namespace Vn
