#pragma once

#include <base/arrayptr.h>
#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Uniform numbers in [0, 1) that a restart repeats: a linear congruential generator whose output
/// is shuffled through a table (C. Bays and S. D. Durham, Improving a poor random number generator,
/// ACM TOMS 2, 1976).
///
///     Vn::RnNumRecUniformRng<float> uniform(7);
///     const float first = uniform();     // below 1
///     uniform.restart();                 // uniform() gives `first` again
///
/// All numbers are multiples of 1/1771875. A run of a million numbers therefore meets many values
/// twice; take RnLecuyerUniformRng where that matters.
///
/// Threads: one thread at a time.
/// Ownership: the table of 97 entries belongs to the object.
/// Edges: the constructor is the only member that allocates. Seeds that are equal modulo 1771875
/// give the same sequence, unless adding 374441 wraps in 32 bits.
///
///     seeds 7 and 1771882   ->  the same sequence
///     a restart with seed 8 ->  the sequence of a new object with seed 8
/// See also: RnLecuyerUniformRng, for finer numbers and a longer period.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnNumRecUniformRng : public RnRng<T>
{
public:
    /// The step between two numbers: the reciprocal of the modulus, 1/1771875.
    static const T RM;

    /// Seed 0.
    RnNumRecUniformRng();

    /// Any seed. Both constructors fill the table, and throw std::bad_alloc without the memory for
    /// it.
    RnNumRecUniformRng(unsigned int seed);

    ~RnNumRecUniformRng() override;

    /// The next number of the sequence.
    T operator()() override;
    /// A draw times `max`: from 0 to below `max`. Neither bound is checked here or below.
    ///
    ///     draw 0.25: uniform(8.0f) -> 2, uniform(-8.0f) -> -2
    T operator()(T max);
    /// A draw times (`max` - `min`), plus `min`: from `min` to `max`, which rounding may reach.
    ///
    ///     draw 0.5: uniform(2.0f, 4.0f) -> 3, uniform(4.0f, 2.0f) -> 3
    T operator()(T min, T max);
    /// The next number, or the next `n` numbers. All forms of drawing share one sequence and one
    /// table.
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

    /// Repeats the sequence from its start: the numbers are those after construction, or after the
    /// last restart with a seed.
    void restart() override;
    /// Starts the sequence of `seed`, as a new object with that seed would.
    void restart(unsigned int seed);

    char const* getName() const override;

    /// The draw itself. operator()() and getSample() call it.
    ///
    /// Throws ExInternalError ("j < SHUFFLESIZE") if rounding led beyond the table; no state does.
    T eval();

private:
    void put(std::uint32_t slot, std::uint32_t state);

    T _lastOutput;
    std::uint32_t _seed;
    std::uint32_t _state;
    ArrayPtr<std::uint32_t> _table;  ///< 97 shuffled states
    std::uint32_t _slot;             ///< the slot that the last output selects
    std::uint32_t _nextState;        ///< the state after `_state`, computed one draw ahead
    std::uint16_t _slots[97];        ///< for each entry of the table, the slot that it will select as an output
};

extern template class VN_BASE_EXPORT RnNumRecUniformRng<float>;
extern template class VN_BASE_EXPORT RnNumRecUniformRng<double>;

}  // namespace Vn
