#pragma once

#include <base/rnmultirng.h>
#include <base/rnvandercorputrng.h>

#include <cstdint>

namespace Vn
{

/// A set of a known number of points that fills the unit square or cube more evenly than a sequence can: the first
/// coordinate goes up a ramp, the others are radical inverses (J. M. Hammersley, Monte Carlo methods for solving
/// multivariable problems, Ann. N. Y. Acad. Sci. 86, 1960).
///
///     Vn::RnHammersleyMultiRng<double, 2> source(4);
///     double point[2];
///     source.getSample(point);    // (0.125, 0.5)
///
/// After `length` single draws the ramp begins again while the radical inverses run on. getSequence() always begins at
/// the start of the ramp, neither reads nor moves the ramp's position, and moves the radical inverses: it isn't the same as
/// single draws. Any bases are taken. With a length of 0 the first coordinate is infinite.
/// Tests: tests/base/rnquasitest.cpp.
template <class T, int N>
class RnHammersleyMultiRng : public RnMultiRng<T, N>
{
public:
    /// Bases 2 and 3 from the second dimension on.
    RnHammersleyMultiRng(unsigned int length);
    /// N - 1 bases.
    RnHammersleyMultiRng(unsigned int length, unsigned int const* const primes);

    ~RnHammersleyMultiRng() override;

    void getSample(T* const sample) override;
    /// Throws ExInternalError ("n <= _length") for more points than the set has, and then has done nothing.
    void getSequence(unsigned int n, T** const samples) override;

    /// 1, 0 and 1 in each dimension; 1.
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    T getEfficientFraction() const override;
    /// 1 where all coordinates are from 0 up to below 1, otherwise 0.
    T getPdf(T* const point) const override;

    /// Ramp and radical inverses back to their start.
    void restart() override;
    /// Sets the positions of all dimensions. One at or beyond the length puts one point beyond the ramp's end.
    void restart(unsigned int index);

    /// "Hammersley"
    char const* getName() const override;

    /// N - 1 bases out, or in; the sequence goes on from where it is.
    void getPrimeNumbers(unsigned int* const primes) const;
    void setPrimeNumbers(unsigned int const* const primes);

private:
    T getRampValue(std::uint32_t index) const;

    std::uint32_t _length;
    std::uint32_t _index;  ///< on the ramp
    RnVanDerCorputRng<T> _inverses[N - 1];
};

extern template class VN_BASE_EXPORT RnHammersleyMultiRng<float, 2>;
extern template class VN_BASE_EXPORT RnHammersleyMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnHammersleyMultiRng<double, 2>;
extern template class VN_BASE_EXPORT RnHammersleyMultiRng<double, 3>;

}  // namespace Vn
