#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of points in N dimensions, as RnRng is one of numbers.
///
///     Vn::RnHaltonMultiRng<double, 3> source;
///     double point[3];
///     source.getSample(point);
///
/// For float and double and N of 2, 3 and 4. Single points are arrays of N values. A generator belongs to one thread
/// at a time and isn't copied.
/// Tests: tests/base/rnquasitest.cpp.
template <class T, int N>
class RnMultiRng
{
public:
    RnMultiRng(RnMultiRng const&) = delete;
    RnMultiRng& operator=(RnMultiRng const&) = delete;

    /// Draws one point.
    virtual void getSample(T* const sample) = 0;

    /// Draws `n` points: `samples[d]` is an array that takes the `n` values of dimension d.
    virtual void getSequence(unsigned int n, T** const samples) = 0;

    /// The box that a consumer takes for the generator's domain, and the share of the probability in it.
    virtual void getEfficientWidth(T* const width) const = 0;
    virtual void getEfficientMin(T* const min) const = 0;
    virtual void getEfficientMax(T* const max) const = 0;
    virtual T getEfficientFraction() const = 0;

    /// The density at a point.
    virtual T getPdf(T* const point) const = 0;

    /// Goes back to the start of the sequence, as far as the class promises.
    virtual void restart() = 0;

    /// A constant name for people.
    virtual char const* getName() const = 0;

    virtual ~RnMultiRng();

protected:
    RnMultiRng();
};

extern template class VN_BASE_EXPORT RnMultiRng<float, 2>;
extern template class VN_BASE_EXPORT RnMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnMultiRng<float, 4>;
extern template class VN_BASE_EXPORT RnMultiRng<double, 2>;
extern template class VN_BASE_EXPORT RnMultiRng<double, 3>;
extern template class VN_BASE_EXPORT RnMultiRng<double, 4>;

}  // namespace Vn
