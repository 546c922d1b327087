#pragma once

#include <base/rnmultirng.h>
#include <base/rnvandercorputrng.h>

namespace Vn
{

/// Points that fill the unit square or cube evenly, any number of them: one RnVanDerCorputRng for
/// each dimension, with bases that have no divisor in common (J. H. Halton, On the efficiency of
/// certain quasi-random sequences, Numer. Math. 2, 1960).
///
///     Vn::RnHaltonMultiRng<float, 3> source;
///     float point[3];
///     source.getSample(point);    // 0.5, 1/3, 0.2
///
/// Keep bases small: with two large ones, such as 17 and 19, the first few hundred points lie in
/// stripes. All dimensions stay on one index.
///
/// Threads: one thread at a time.
/// Ownership: none.
/// Edges: nothing throws. Bases are not checked; 0 and 1 give 0 in their dimension, and equal bases
/// give equal coordinates. N is 2 or 3.
/// See also: RnNiederreiterMultiRng, for four dimensions.
/// Tests: tests/base/rnquasitest.cpp.
template <class T, int N>
class RnHaltonMultiRng : public RnMultiRng<T, N>
{
public:
    /// Bases 2 and 3, or 2, 3 and 5.
    RnHaltonMultiRng();

    /// `primes` is an array of N bases, which is copied.
    RnHaltonMultiRng(unsigned int const* const primes);

    ~RnHaltonMultiRng() override;

    /// The next point; its index in the sequence is one more than that of the last point.
    void getSample(T* const sample) override;
    /// Fills one dimension after the other. The points are those of single draws.
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

    /// Goes back to the start: the next point is point 1.
    void restart() override;
    /// Goes to any place: the next point is point `index` + 1, in all dimensions.
    ///
    ///     restart(2)           ->  (0.75, 1/9, 0.6) comes next
    ///     restart(4294967295)  ->  0 in all dimensions, then point 1
    void restart(unsigned int index);

    char const* getName() const override;

    /// Writes the N bases in use to `primes`.
    void getPrimeNumbers(unsigned int* const primes) const;

    /// Sets N bases, which are copied. The index stays, so the sequence goes on from where it was,
    /// in the new bases. To begin their sequence, call restart() too.
    ///
    ///     after 2 points: bases 5 and 7  ->  (3/5, 3/7) comes next
    void setPrimeNumbers(unsigned int const* const primes);

private:
    RnVanDerCorputRng<T> _inverses[N];
};

extern template class VN_BASE_EXPORT RnHaltonMultiRng<float, 2>;
extern template class VN_BASE_EXPORT RnHaltonMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnHaltonMultiRng<double, 2>;
extern template class VN_BASE_EXPORT RnHaltonMultiRng<double, 3>;

}  // namespace Vn
