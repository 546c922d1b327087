#pragma once

#include <base/rnbirng.h>
#include <base/rnhaltonmultirng.h>

namespace Vn
{

/// Points that fill the unit square evenly, for everything that takes an RnBiRng: RnHaltonMultiRng
/// in two dimensions. The usual choice for directions and pixels when the number of points is not
/// known beforehand.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformSphericalRng<float> directions(&source);
///
/// Each operation is that of RnHaltonMultiRng, and so are its promises for threads, ownership and
/// edges.
/// See also: RnHammersleyBiRng, for a known number of points.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnHaltonBiRng : public RnBiRng<T>
{
public:
    /// Bases 2 and 3.
    RnHaltonBiRng();

    /// A base for x and a base for y; small primes are best. Neither is checked.
    ///
    ///     (2, 3)    ->  (0.5, 1/3), (0.25, 2/3), (0.75, 1/9), ...
    ///     (17, 19)  ->  stripes until some hundred points are drawn
    ///     (2, 2)    ->  all points on the diagonal
    RnHaltonBiRng(unsigned int prime0, unsigned int prime1);

    ~RnHaltonBiRng() override;

    /// The next point; its index in the sequence is one more than that of the last point.
    void getSample(T& x, T& y) override;
    /// The points of single draws, faster.
    void getSequence(unsigned int n, T* x, T* y) override;

    /// The efficient range is [0, 1] in both coordinates, with all of the probability in it.
    /// @{
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    /// @}

    /// 1 where both coordinates are from 0 up to below 1; otherwise 0.
    T getPdf(T x, T y) const override;

    /// Goes back to the start: the next point is point 1, (1 / prime0, 1 / prime1).
    void restart() override;
    /// Goes to any place: the next point is point `index` + 1. This is how several threads share
    /// one sequence: each has a generator of its own that starts at another index.
    ///
    ///     restart(2)           ->  (0.75, 1/9) comes next
    ///     restart(4294967295)  ->  (0, 0), then point 1
    void restart(unsigned int index) { _multiRng.restart(index); }

    char const* getName() const override;

    /// Writes the bases in use to `prime0`, for x, and `prime1`, for y.
    void getPrimeNumbers(unsigned int& prime0, unsigned int& prime1) const;

    /// Goes on from the same index in other bases. To begin the sequence of the new bases, call
    /// restart() too.
    ///
    ///     after 2 points: setPrimeNumbers(5, 7)  ->  (3/5, 3/7) comes next
    void setPrimeNumbers(unsigned int prime0, unsigned int prime1);

private:
    RnHaltonMultiRng<T, 2> _multiRng;
};

extern template class VN_BASE_EXPORT RnHaltonBiRng<float>;
extern template class VN_BASE_EXPORT RnHaltonBiRng<double>;

}  // namespace Vn
