#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of directions. It gives each in one of three forms: a unit vector, two angles, or the
/// cosine of the polar angle with the azimuth.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnCosineHemisphericalRng<float> directions(&source);
///     float x, y, z;
///     directions.getSampleXYZ(x, y, z);    // z is up
///
/// theta is the polar angle from +z, from 0 to pi; phi is the azimuth from +x toward +y, from 0 to
/// 2 pi; both in radians. Densities are per unit of solid angle in all three forms: no form has a
/// factor for its change of variables, so the three agree for the same direction.
///
/// Threads: one thread at a time, shared sources included.
/// Ownership: the source is held by plain pointer and must outlive the generator. T is float or
/// double.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnSphericalRng
{
public:
    /// A copy would draw the same directions again, which is rarely meant.
    /// @{
    RnSphericalRng(RnSphericalRng const&) = delete;
    RnSphericalRng& operator=(RnSphericalRng const&) = delete;
    /// @}

    /// Draws one direction, in the form that the name tells. The arguments are different objects.
    /// The three forms draw alike: from the same state of the source they give the same direction.
    /// @{
    virtual void getSampleXYZ(T& x, T& y, T& z) = 0;
    virtual void getSampleAngles(T& theta, T& phi) = 0;
    virtual void getSampleCosine(T& cosTheta, T& phi) = 0;
    /// @}

    /// Draws `n` directions into arrays, which do not overlap. With `n` of 0 the arrays are not
    /// touched.
    ///
    /// The directions are made of the source's sequence points, so they differ from those of single
    /// draws if the source's getSequence() does. In getSequenceXYZ() the samplers of this library
    /// also swap the roles of the two coordinates.
    /// @{
    virtual void getSequenceXYZ(unsigned int n, T* x, T* y, T* z) = 0;
    virtual void getSequenceAngles(unsigned int n, T* theta, T* phi) = 0;
    virtual void getSequenceCosine(unsigned int n, T* cosTheta, T* phi) = 0;
    /// @}

    /// The probability density in a direction, per steradian. The arguments are not checked: they
    /// need not be of length 1, in range, or on the sampler's side of the horizon.
    /// @{
    virtual T getPdfXYZ(T x, T y, T z) const = 0;
    virtual T getPdfAngles(T theta, T phi) const = 0;
    virtual T getPdfCosine(T cosTheta, T phi) const = 0;
    /// @}

    /// Takes the source back to the start of its sequence.
    virtual void restart() = 0;

    /// A constant name to show to people, such as "Uniform spherical". Never null; it lives as long
    /// as the program.
    virtual char const* getName() const = 0;

    /// Leaves the source alone.
    virtual ~RnSphericalRng();

protected:
    /// For derived classes. The interface has no state.
    RnSphericalRng();
};

/// A source of directions whose z is never negative. It adds no operation: a function that can only
/// work with the upper hemisphere takes this type, and a sampler of the whole sphere does not
/// compile there.
///
///     int countBelow(Vn::RnHemisphericalRng<float>& directions);
///
/// Threads and ownership as RnSphericalRng.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnHemisphericalRng : public RnSphericalRng<T>
{
public:
    /// Leaves the source alone.
    ~RnHemisphericalRng() override;

protected:
    /// For derived classes. The interface has no state.
    RnHemisphericalRng();
};

extern template class VN_BASE_EXPORT RnSphericalRng<float>;
extern template class VN_BASE_EXPORT RnSphericalRng<double>;
extern template class VN_BASE_EXPORT RnHemisphericalRng<float>;
extern template class VN_BASE_EXPORT RnHemisphericalRng<double>;

}  // namespace Vn
