#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of points in the plane, as RnRng is one of numbers.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformSphericalRng<float> directions(&source);
///
/// For float and double. A generator belongs to one thread at a time and isn't copied. Some generators pair their
/// numbers otherwise in getSequence() than in getSample(); their classes say so.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnBiRng
{
public:
    RnBiRng(RnBiRng const&) = delete;
    RnBiRng& operator=(RnBiRng const&) = delete;

    /// Draws one point.
    virtual void getSample(T& x, T& y) = 0;

    /// Draws `n` points into the two arrays.
    virtual void getSequence(unsigned int n, T* x, T* y) = 0;

    /// The box that a consumer takes for the generator's domain, and the share of the probability in it.
    virtual void getEfficientWidth(T& x, T& y) const = 0;
    virtual void getEfficientMin(T& x, T& y) const = 0;
    virtual void getEfficientMax(T& x, T& y) const = 0;
    virtual T getEfficientFraction() const = 0;

    /// The density at a point.
    virtual T getPdf(T x, T y) const = 0;

    /// Goes back to the start of the sequence, as far as the class promises.
    virtual void restart() = 0;

    /// A constant name for people.
    virtual char const* getName() const = 0;

    virtual ~RnBiRng();

protected:
    RnBiRng();
};

extern template class VN_BASE_EXPORT RnBiRng<float>;
extern template class VN_BASE_EXPORT RnBiRng<double>;

}  // namespace Vn
