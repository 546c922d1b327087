#pragma once

#include <base/rnbirng.h>
#include <base/rnhammersleymultirng.h>

namespace Vn
{

/// A set of a known number of points in the unit square, for everything that takes an RnBiRng:
/// RnHammersleyMultiRng in two dimensions. Of all sources here it has the smallest error in an
/// integral, if the whole set is used.
///
///     Vn::RnHammersleyBiRng<float> source(256);
///     source.getSequence(256, x, y);    // the whole set
///
/// Each operation is that of RnHammersleyMultiRng, the difference between getSample() and
/// getSequence() included, and so are its promises for threads, ownership and edges.
/// See also: RnHaltonBiRng, for any number of points.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnHammersleyBiRng : public RnBiRng<T>
{
public:
    /// A set of `length` points, with base 2 for y.
    RnHammersleyBiRng(unsigned int length);

    /// A set of `length` points, with the base `prime` for y. The base is not checked.
    ///
    ///     (4, 2)  ->  (0.125, 0.5), (0.375, 0.25), (0.625, 0.75), (0.875, 0.125)
    ///     (4, 1)  ->  y is 0 everywhere
    RnHammersleyBiRng(unsigned int length, unsigned int prime);

    ~RnHammersleyBiRng() override;

    /// The next point; after the last one of the set, the ramp begins again. The second pass has
    /// the same x and new y.
    void getSample(T& x, T& y) override;

    /// Begins at the foot of the ramp in each call; see RnHammersleyMultiRng.
    ///
    /// Throws ExInternalError ("n <= _length") for more points than the set has, before anything is
    /// drawn.
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

    /// Takes the ramp and the radical inverse back to their starts.
    void restart() override;
    /// Sets the position in both coordinates to `index`, which is not checked against the length.
    ///
    ///     length 4, restart(2)  ->  (0.625, 0.75)
    ///     length 4, restart(5)  ->  (1.375, 0.375), beyond the ramp's upper end
    void restart(unsigned int index) { _multiRng.restart(index); }

    char const* getName() const override;

    /// Writes the base in use to `prime`.
    void getPrimeNumbers(unsigned int& prime) const { _multiRng.getPrimeNumbers(&prime); }

    /// Sets the base for y. The position stays; call restart() to begin the set anew.
    ///
    ///     length 4, after 2 points: setPrimeNumbers(3)  ->  (0.625, 1/9) comes next
    void setPrimeNumbers(unsigned int prime) { _multiRng.setPrimeNumbers(&prime); }

private:
    RnHammersleyMultiRng<T, 2> _multiRng;
};

extern template class VN_BASE_EXPORT RnHammersleyBiRng<float>;
extern template class VN_BASE_EXPORT RnHammersleyBiRng<double>;

}  // namespace Vn
