#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of points in the plane, as RnRng is a source of numbers.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformSphericalRng<float> directions(&source);
///
/// Beware of one difference to RnRng: some generators give other points in getSequence() than in
/// getSample(). They are RnSeparableBiRng, which pairs its draws otherwise, and RnHammersleyBiRng,
/// which begins its set anew. Their classes say how.
///
/// Threads: one thread at a time, shared sources included.
/// Ownership: sources are held by plain pointer and must outlive the generator. T is float or
/// double.
/// See also: docs/sampling.md, "Choosing a source"; RnSeparableBiRng, which makes points of any
/// RnRng.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnBiRng
{
public:
    /// A copy would draw the same points again, which is rarely meant.
    /// @{
    RnBiRng(RnBiRng const&) = delete;
    RnBiRng& operator=(RnBiRng const&) = delete;
    /// @}

    /// Draws one point into `x` and `y`, which are two different objects.
    virtual void getSample(T& x, T& y) = 0;

    /// Draws `n` points into the arrays `x` and `y`, which do not overlap. With `n` of 0 the arrays
    /// are not touched.
    virtual void getSequence(unsigned int n, T* x, T* y) = 0;

    /// The efficient range, a box that a consumer should work on: width, lower corner and upper
    /// corner.
    /// @{
    virtual void getEfficientWidth(T& x, T& y) const = 0;
    virtual void getEfficientMin(T& x, T& y) const = 0;
    virtual void getEfficientMax(T& x, T& y) const = 0;
    /// @}

    /// The share of the probability that lies in the box: 1 for a bounded distribution, less for
    /// one with tails.
    virtual T getEfficientFraction() const = 0;

    /// The probability density at the point (`x`, `y`), per unit of area. RnHistogramBiRng differs:
    /// see there.
    virtual T getPdf(T x, T y) const = 0;

    /// Goes back to the start of the sequence, as far as the class and its source promise.
    virtual void restart() = 0;

    /// A constant name to show to people, such as "Halton". Never null; it lives as long as the
    /// program.
    virtual char const* getName() const = 0;

    /// Leaves the source alone.
    virtual ~RnBiRng();

protected:
    /// For derived classes. The interface has no state.
    RnBiRng();
};

extern template class VN_BASE_EXPORT RnBiRng<float>;
extern template class VN_BASE_EXPORT RnBiRng<double>;

}  // namespace Vn
