#pragma once

#include <base/rnmultirng.h>
#include <base/rnvandercorputrng.h>

namespace Vn
{

/// Points that fill the unit square or cube evenly: one RnVanDerCorputRng for each dimension, with bases that have no
/// divisor in common (J. H. Halton, On the efficiency of certain quasi-random sequences, Numer. Math. 2, 1960).
///
///     Vn::RnHaltonMultiRng<float, 3> source;
///     float point[3];
///     source.getSample(point);    // 0.5, 1/3, 0.2
///
/// Any bases are taken. All dimensions stay on one index.
/// Tests: tests/base/rnquasitest.cpp.
template <class T, int N>
class RnHaltonMultiRng : public RnMultiRng<T, N>
{
public:
    /// Bases 2, 3 and 5.
    RnHaltonMultiRng();
    /// N bases.
    RnHaltonMultiRng(unsigned int const* const primes);

    ~RnHaltonMultiRng() override;

    void getSample(T* const sample) override;
    /// Fills one dimension after the other; the points are those of single draws.
    void getSequence(unsigned int n, T** const samples) override;

    /// 1, 0 and 1 in each dimension; 1.
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    T getEfficientFraction() const override;
    /// 1 where all coordinates are from 0 up to below 1, otherwise 0.
    T getPdf(T* const point) const override;

    /// Back to point 1.
    void restart() override;
    /// The next point is point `index` + 1.
    void restart(unsigned int index);

    /// "Halton"
    char const* getName() const override;

    /// N bases out, or in; the sequence goes on from where it is.
    void getPrimeNumbers(unsigned int* const primes) const;
    void setPrimeNumbers(unsigned int const* const primes);

private:
    RnVanDerCorputRng<T> _inverses[N];
};

extern template class VN_BASE_EXPORT RnHaltonMultiRng<float, 2>;
extern template class VN_BASE_EXPORT RnHaltonMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnHaltonMultiRng<double, 2>;
extern template class VN_BASE_EXPORT RnHaltonMultiRng<double, 3>;

}  // namespace Vn
