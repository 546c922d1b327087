#pragma once

#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// The radical inverses of 1, 2, 3 and so on: the digits of each number in a base, mirrored at the point (J. G. van der
/// Corput, Verteilungsfunktionen, Proc. Akad. Wet. Amsterdam 38, 1935).
///
///     Vn::RnVanDerCorputRng<double> sequence;     // 0.5, 0.25, 0.75, 0.125, 0.625, ...
///     Vn::RnVanDerCorputRng<double> thirds(3);    // 1/3, 2/3, 1/9, 4/9, 7/9, ...
///
/// A point is summed up from the lowest digit on: digit times weight, where each weight is the one before times the
/// rounded inverse of the base. Its bits are those of this order of operations in T, so except for powers of two they may
/// differ from a division's. In float the digits beyond its reach add nothing.
///
/// The index has 32 bits. When it wraps the point is 0, and the sequence starts again. Bases 0 and 1, which have no
/// digits, give 0 for every point; nothing else is checked.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnVanDerCorputRng : public RnRng<T>
{
public:
    /// Base 2.
    RnVanDerCorputRng();
    RnVanDerCorputRng(unsigned int base);

    ~RnVanDerCorputRng() override;

    T operator()() override;
    /// A draw times `max`.
    T operator()(T max);
    /// A draw times (max - min), plus `min`.
    T operator()(T min, T max);
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;

    /// 1, 0, 1 and 1.
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    /// 1 from 0 up to below 1, otherwise 0.
    T getPdf(T x) const override;

    /// Back to the start: the next point is point 1.
    void restart() override;
    /// The next point is point `index` + 1.
    void restart(unsigned int index);

    /// "Van der Corput"
    char const* getName() const override;

    /// Goes on from the same index in another base.
    void setPrimeNumber(unsigned int base);
    unsigned int getPrimeNumber() const;

private:
    std::uint32_t _base;
    T _inverse;            ///< of the base
    std::uint32_t _index;  ///< of the last point
};

extern template class VN_BASE_EXPORT RnVanDerCorputRng<float>;
extern template class VN_BASE_EXPORT RnVanDerCorputRng<double>;

}  // namespace Vn
