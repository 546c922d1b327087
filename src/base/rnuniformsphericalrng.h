#pragma once

#include <base/rnbirng.h>
#include <base/rnsphericalrng.h>

namespace Vn
{

/// Directions spread evenly over the sphere: cos(theta) = 2 u0 - 1 and phi = 2 pi u1, for a point
/// (u0, u1) of the unit square (Archimedes: equal heights of a sphere have equal areas).
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformSphericalRng<float> directions(&source);
///     directions.getSequenceXYZ(n, x, y, z);
///
/// Sequences are made of the source's sequence points. getSequenceXYZ() takes the azimuth from the
/// source's first coordinate and the height from its second; all other forms do it the other way
/// round, and programs rely on it.
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Edges: the source's points should lie in the unit square; that is not checked.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnUniformSphericalRng : public RnSphericalRng<T>
{
public:
    /// Directions of the points of `rng`. Throws ExInternalError ("_rng") for null.
    RnUniformSphericalRng(RnBiRng<T>* rng);

    RnUniformSphericalRng(RnUniformSphericalRng const&) = delete;
    RnUniformSphericalRng& operator=(RnUniformSphericalRng const&) = delete;

    /// The source lives on.
    ~RnUniformSphericalRng() override;

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

    /// 1 / (4 pi) per steradian, whatever the arguments.
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
    ///     mapToXYZ(0.5, 0)     ->  (1, 0, 0) up to rounding
    ///     mapToXYZ(1, any)     ->  (0, 0, 1)
    ///     mapToAngles(0, any)  ->  theta is pi
    ///     mapToXYZ(1.5, 0)     ->  x and y are not-a-number
    /// @{
    void mapToAngles(T u0, T u1, T& theta, T& phi) const;
    void mapToCosine(T u0, T u1, T& cosTheta, T& phi) const;
    void mapToXYZ(T u0, T u1, T& x, T& y, T& z) const;
    /// @}

private:
    RnBiRng<T>* _rng;
};

/// Directions spread evenly over the upper hemisphere: cos(theta) = u0 and phi = 2 pi u1.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformHemisphericalRng<float> directions(&source);
///     directions.getSequenceXYZ(n, x, y, z);    // no z is negative
///
/// Sequences, threads, ownership and edges are those of RnUniformSphericalRng.
/// Tests: tests/base/rnsphericaltest.cpp.
template <class T>
class RnUniformHemisphericalRng : public RnHemisphericalRng<T>
{
public:
    /// Directions of the points of `rng`. Throws ExInternalError ("_rng") for null.
    RnUniformHemisphericalRng(RnBiRng<T>* rng);

    RnUniformHemisphericalRng(RnUniformHemisphericalRng const&) = delete;
    RnUniformHemisphericalRng& operator=(RnUniformHemisphericalRng const&) = delete;

    /// The source lives on.
    ~RnUniformHemisphericalRng() override;

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

    /// 1 / (2 pi) per steradian, whatever the arguments: below the horizon too.
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
    ///     mapToXYZ(0, 0)       ->  (1, 0, 0): the horizon
    ///     mapToXYZ(1, any)     ->  (0, 0, 1): the zenith
    /// @{
    void mapToAngles(T u0, T u1, T& theta, T& phi) const;
    void mapToCosine(T u0, T u1, T& cosTheta, T& phi) const;
    void mapToXYZ(T u0, T u1, T& x, T& y, T& z) const;
    /// @}

private:
    RnBiRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnUniformSphericalRng<float>;
extern template class VN_BASE_EXPORT RnUniformSphericalRng<double>;
extern template class VN_BASE_EXPORT RnUniformHemisphericalRng<float>;
extern template class VN_BASE_EXPORT RnUniformHemisphericalRng<double>;

}  // namespace Vn
