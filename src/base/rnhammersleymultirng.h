#pragma once

#include <base/rnmultirng.h>
#include <base/rnvandercorputrng.h>

#include <cstdint>

namespace Vn
{

/// A set of a known number of points, which fills the unit square or cube more evenly than a
/// sequence can: the first coordinate goes up a ramp, the others are radical inverses (J. M.
/// Hammersley, Monte Carlo methods for solving multivariable problems, Ann. N. Y. Acad. Sci. 86,
/// 1960).
///
///     Vn::RnHammersleyMultiRng<double, 2> source(4);
///     double point[2];
///     source.getSample(point);    // (0.125, 0.5)
///
/// getSample() and getSequence() differ, and programs rely on it. After `length` single draws the
/// ramp begins again while the radical inverses run on. getSequence() always begins at the foot of
/// the ramp and does not move the position that getSample() goes by, but it does advance the
/// radical inverses.
///
///     length 4, five single draws         ->  the fifth is (0.125, 0.625)
///     length 4, two sequences of 2        ->  the second begins with (0.125, 0.75)
///
/// Threads: one thread at a time.
/// Ownership: none.
/// Edges: bases are not checked; 0 and 1 give 0 in their dimension. With a length of 0 the first
/// coordinate is infinite. N is 2 or 3.
/// See also: RnHaltonMultiRng, for any number of points.
/// Tests: tests/base/rnquasitest.cpp.
template <class T, int N>
class RnHammersleyMultiRng : public RnMultiRng<T, N>
{
public:
    /// A set of `length` points, with base 2, or bases 2 and 3, from the second dimension on.
    RnHammersleyMultiRng(unsigned int length);

    /// `primes` is an array of N - 1 bases, which is copied.
    RnHammersleyMultiRng(unsigned int length, unsigned int const* const primes);

    ~RnHammersleyMultiRng() override;

    /// The next point; after the last one of the set, the ramp begins again.
    void getSample(T* const sample) override;

    /// Draws the first `n` points of the ramp, with the radical inverses that come next.
    ///
    /// Throws ExInternalError ("n <= _length") for more points than the set has, before anything is
    /// drawn.
    void getSequence(unsigned int n, T** const samples) override;

    /// The efficient range is [0, 1] in each dimension, with all of the probability in it.
    /// @{
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    T getEfficientFraction() const override;
    /// @}

    /// 1 where every coordinate is from 0 up to below 1; otherwise 0, also for not-a-number.
    T getPdf(T* const point) const override;

    /// Takes the ramp and the radical inverses back to their starts.
    void restart() override;

    /// Sets the position of all dimensions to `index`, which is not checked. From the length on,
    /// the next point lies beyond the upper end of the ramp, and the one after it is back on the
    /// ramp.
    ///
    ///     length 4, restart(2)  ->  (0.625, 0.75)
    ///     length 4, restart(5)  ->  (1.375, 0.375), then the ramp goes on at 0.625
    void restart(unsigned int index);

    char const* getName() const override;

    /// Writes the N - 1 bases in use to `primes`.
    void getPrimeNumbers(unsigned int* const primes) const;

    /// Sets N - 1 bases. The positions stay.
    void setPrimeNumbers(unsigned int const* const primes);

private:
    T getRampValue(std::uint32_t index) const;

    std::uint32_t _length;
    std::uint32_t _index;  ///< position on the ramp
    RnVanDerCorputRng<T> _inverses[N - 1];
};

extern template class VN_BASE_EXPORT RnHammersleyMultiRng<float, 2>;
extern template class VN_BASE_EXPORT RnHammersleyMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnHammersleyMultiRng<double, 2>;
extern template class VN_BASE_EXPORT RnHammersleyMultiRng<double, 3>;

}  // namespace Vn
