#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of points in N dimensions, as RnRng is a source of numbers.
///
///     Vn::RnHaltonMultiRng<double, 3> source;
///     double point[3];
///     source.getSample(point);
///
/// A single point is an array of N values; many points are N arrays, one for each dimension. All
/// arrays are the caller's.
///
/// Threads: one thread at a time, shared sources included.
/// Ownership: sources are held by plain pointer and must outlive the generator. T is float or
/// double; N is 2, 3 or 4.
/// See also: docs/sampling.md, "Choosing a source"; RnSeparableMultiRng, which makes points of any
/// RnRng.
/// Tests: tests/base/rnquasitest.cpp.
template <class T, int N>
class RnMultiRng
{
public:
    /// A copy would draw the same points again, which is rarely meant.
    /// @{
    RnMultiRng(RnMultiRng const&) = delete;
    RnMultiRng& operator=(RnMultiRng const&) = delete;
    /// @}

    /// Draws one point into `sample`, an array of N values.
    virtual void getSample(T* const sample) = 0;

    /// Draws `n` points: `samples[d]` is an array that takes the `n` values of dimension d. With
    /// `n` of 0 no array is touched.
    ///
    ///     float x[64], y[64], z[64];
    ///     float* arrays[] = {x, y, z};
    ///     source.getSequence(64, arrays);
    virtual void getSequence(unsigned int n, T** const samples) = 0;

    /// The efficient range, a box that a consumer should work on: width, lower corner and upper
    /// corner, N values each.
    /// @{
    virtual void getEfficientWidth(T* const width) const = 0;
    virtual void getEfficientMin(T* const min) const = 0;
    virtual void getEfficientMax(T* const max) const = 0;
    /// @}

    /// The share of the probability that lies in the box: 1 for a bounded distribution, less for
    /// one with tails.
    virtual T getEfficientFraction() const = 0;

    /// The probability density at `point`, an array of N values that is not changed, per unit of
    /// volume.
    virtual T getPdf(T* const point) const = 0;

    /// Goes back to the start of the sequence, as far as the class and its source promise.
    virtual void restart() = 0;

    /// A constant name to show to people, such as "Niederreiter". Never null; it lives as long as
    /// the program.
    virtual char const* getName() const = 0;

    /// Leaves the source alone.
    virtual ~RnMultiRng();

protected:
    /// For derived classes. The interface has no state.
    RnMultiRng();
};

extern template class VN_BASE_EXPORT RnMultiRng<float, 2>;
extern template class VN_BASE_EXPORT RnMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnMultiRng<float, 4>;
extern template class VN_BASE_EXPORT RnMultiRng<double, 2>;
extern template class VN_BASE_EXPORT RnMultiRng<double, 3>;
extern template class VN_BASE_EXPORT RnMultiRng<double, 4>;

}  // namespace Vn
