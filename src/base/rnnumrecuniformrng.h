#pragma once

#include <base/arrayptr.h>
#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Uniform numbers from a linear congruential generator whose output is shuffled through a table (C. Bays and S. D.
/// Durham, Improving a poor random number generator, ACM TOMS 2, 1976).
///
///     Vn::RnNumRecUniformRng<float> uniform(7);
///     uniform();             // always below 1
///     uniform.restart();     // and again from the start
///
/// Numbers are multiples of 1/1771875, so a long run meets each value many times; where finer numbers matter, take
/// RnLecuyerUniformRng.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnNumRecUniformRng : public RnRng<T>
{
public:
    /// The reciprocal of the modulus, 1/1771875.
    static const T RM;

    /// Seed 0.
    RnNumRecUniformRng();
    RnNumRecUniformRng(unsigned int seed);

    ~RnNumRecUniformRng() override;

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

    /// Repeats the sequence from its start.
    void restart() override;
    /// Starts the sequence of another seed.
    void restart(unsigned int seed);

    /// "Numerical Recipes RAN2"
    char const* getName() const override;

    /// The draw itself. Throws ExInternalError ("j < SHUFFLESIZE") if rounding led beyond the table, which no state does.
    T eval();

private:
    void put(std::uint32_t slot, std::uint32_t state);

    T _lastOutput;
    std::uint32_t _seed;
    std::uint32_t _state;
    ArrayPtr<std::uint32_t> _table;  ///< 97 shuffled states
    std::uint32_t _slot;             ///< where the last output leads, from the integer that it was made of
    std::uint32_t _nextState;        ///< so that the state after it need not wait
    std::uint16_t _slots[97];        ///< where each entry of the table will lead
};

extern template class VN_BASE_EXPORT RnNumRecUniformRng<float>;
extern template class VN_BASE_EXPORT RnNumRecUniformRng<double>;

}  // namespace Vn
