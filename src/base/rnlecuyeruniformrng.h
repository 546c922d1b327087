#pragma once

#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Uniform numbers in [0, 1) with a period of about 2.3e18: two multiplicative congruential
/// generators combined (P. L'Ecuyer, Efficient and portable combined random number generators, CACM
/// 31, 1988). Take this one unless you need a sequence that restart() repeats.
///
///     Vn::RnLecuyerUniformRng<double> uniform(1, 2);
///     const double number = uniform(-1.0, 1.0);    // between -1 and 1
///
/// A draw is an integer from 0 to 2147483562 times a constant. In double that constant is
/// 1/2147483563; in float it is 2^-31, the nearest float, and the largest draw is 1 - 2^-24.
///
/// Seeds behave in an unusual way, and programs rely on it. Of the two state words, only the first
/// is ever seeded: by the second seed. The second word starts at 55555 in each new object and then
/// runs on. The first seed is kept and not used.
///
///     RnLecuyerUniformRng(1, 2) and (7, 2)  ->  the same sequence
///     restart()                             ->  another sequence; a new object repeats the first
///
/// Threads: one thread at a time.
/// Ownership: none.
/// Edges: nothing throws; any seed is accepted.
/// See also: RnNumRecUniformRng, which a restart repeats.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnLecuyerUniformRng : public RnRng<T>
{
public:
    /// Seeds 55555 and 99999.
    RnLecuyerUniformRng();

    /// `seed1` as the first seed, without effect on the numbers; the second seed is 99999.
    RnLecuyerUniformRng(unsigned int seed1);

    /// Any two seeds. The numbers depend on `seed2` modulo 2147483563, as a signed integer. With 0
    /// the first state word stays 0, and the second word alone makes the numbers.
    RnLecuyerUniformRng(unsigned int seed1, unsigned int seed2);

    ~RnLecuyerUniformRng() override;

    /// The next number of the sequence.
    T operator()() override;
    /// A draw times `max`: from 0 to below `max`. Neither bound is checked here or below.
    ///
    ///     draw 0.25: uniform(8.0) -> 2, uniform(-8.0) -> -2
    T operator()(T max);
    /// A draw times (`max` - `min`), plus `min`: from `min` to `max`, which rounding may reach.
    ///
    ///     draw 0.5: uniform(2.0, 4.0) -> 3, uniform(4.0, 2.0) -> 3
    T operator()(T min, T max);
    /// The next number, or the next `n` numbers. From 128 on a sequence is computed in vector
    /// registers; the numbers and the state afterwards are the same.
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

    /// Sets the first state word to the second seed again. The second word runs on, so the numbers
    /// do not repeat.
    void restart() override;
    /// Stores new seeds, then does as restart(). `seed1` is without effect, as in the constructor.
    void restart(unsigned int seed1, unsigned int seed2);

    char const* getName() const override;

    /// The draw itself. operator()() and getSample() call it.
    T eval();

private:
    std::uint32_t _seed1;
    std::uint32_t _seed2;
    std::int32_t _state1;
    std::int32_t _state2;
    std::int32_t _next1;  ///< the state after `_state1`, computed one draw ahead; see the .imp
    std::int32_t _next2;
};

extern template class VN_BASE_EXPORT RnLecuyerUniformRng<float>;
extern template class VN_BASE_EXPORT RnLecuyerUniformRng<double>;

}  // namespace Vn
