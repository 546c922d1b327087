#pragma once

#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Numbers that fill [0, 1) evenly, ever finer: the radical inverses of 1, 2, 3 and so on. A
/// radical inverse is a number's digits in some base, mirrored at the point (J. G. van der Corput,
/// Verteilungsfunktionen, Proc. Akad. Wet. Amsterdam 38, 1935).
///
///     Vn::RnVanDerCorputRng<double> halves;       // 0.5, 0.25, 0.75, 0.125, 0.625, ...
///     Vn::RnVanDerCorputRng<double> thirds(3);    // 1/3, 2/3, 1/9, 4/9, 7/9, ...
///
/// Do not make points of consecutive numbers: these are correlated. Take RnHaltonBiRng, which has a
/// base for each coordinate.
///
/// The bits are defined: a point is the sum of digit times weight from the lowest digit on, in T,
/// and each weight is the one before times the rounded inverse of the base. Except for powers of
/// two a division would give other bits. In float the digits beyond its precision add nothing.
///
/// Threads: one thread at a time.
/// Ownership: none.
/// Edges: nothing throws. The index has 32 bits; when it wraps, the point is 0 and the sequence
/// starts again. Bases 0 and 1 have no digits and give 0 for every point.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnVanDerCorputRng : public RnRng<T>
{
public:
    /// Base 2.
    RnVanDerCorputRng();

    /// Any base from 2 on; a prime if several sequences are to be combined. That is not checked.
    RnVanDerCorputRng(unsigned int base);

    ~RnVanDerCorputRng() override;

    /// The next point: the radical inverse of the index plus 1.
    T operator()() override;
    /// A draw times `max`: from 0 to below `max`. Neither bound is checked here or below.
    ///
    ///     first point 0.5: sequence(8.0) -> 4, sequence(-8.0) -> -4
    T operator()(T max);
    /// A draw times (`max` - `min`), plus `min`: from `min` to `max`, which rounding may reach.
    ///
    ///     first point 0.5: sequence(2.0, 4.0) -> 3
    T operator()(T min, T max);
    /// The next point, or the next `n` points, with the same bits. Sequences are fastest for the
    /// bases 2, 3 and 5, and gain from tables for any base up to 1024.
    /// @{
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;
    /// @}

    /// The efficient range is [0, 1], with all of the probability in it.
    /// @{
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    /// @}

    /// 1 from 0 up to below 1; otherwise 0, also for not-a-number.
    T getPdf(T x) const override;

    /// Goes back to the start: the next point is point 1. Point 0 is not drawn.
    void restart() override;
    /// Goes to any place: the next point is point `index` + 1.
    ///
    ///     restart(1)           ->  0.25 comes next in base 2
    ///     restart(4294967295)  ->  0, then 0.5
    void restart(unsigned int index) { _index = index; }

    char const* getName() const override;

    /// Goes on from the same index in another base; as in the constructor any is accepted.
    void setPrimeNumber(unsigned int base);

    /// The base in use.
    unsigned int getPrimeNumber() const { return _base; }

private:
    std::uint32_t _base;
    T _inverse;            ///< 1 / base, rounded once
    std::uint32_t _index;  ///< number of the last point
};

extern template class VN_BASE_EXPORT RnVanDerCorputRng<float>;
extern template class VN_BASE_EXPORT RnVanDerCorputRng<double>;

}  // namespace Vn
