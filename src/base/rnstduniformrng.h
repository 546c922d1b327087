#pragma once

#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Uniform numbers from `rand()` of the C library, for code that must follow it. 0 and 1 are both
/// drawn.
///
///     Vn::RnStdUniformRng<double> uniform(1);
///     const double number = uniform();    // a multiple of 1 / RAND_MAX
///
/// The state belongs to the process and not to the object. All instances and all other callers of
/// `rand()` draw from one sequence, and restart() on any instance rewinds it for all. RAND_MAX is
/// 32767 on Windows and 2147483647 on Linux, so the numbers differ between the platforms, in their
/// steps too.
///
/// Threads: all use of `rand()` in the process belongs to one thread at a time.
/// Ownership: none.
/// Edges: nothing throws. A consumer that expects numbers below 1, such as RnHistogramRng, may get
/// 1.
/// See also: RnNumRecUniformRng, which repeats without side effects.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnStdUniformRng : public RnRng<T>
{
public:
    /// Leaves the state of `rand()` as it is. restart() will take seed 1, the seed of a process
    /// that sets none.
    RnStdUniformRng();

    /// Calls `srand(seed)`.
    RnStdUniformRng(unsigned int seed);

    ~RnStdUniformRng() override;

    /// The next number of `rand()`, divided by RAND_MAX.
    T operator()() override;
    /// A draw times `max`: from 0 to `max`, both included. The bounds are not checked here or
    /// below.
    ///
    ///     draw 1: uniform(8.0) -> 8, uniform(-8.0) -> -8
    T operator()(T max);
    /// A draw times (`max` - `min`), plus `min`: from `min` to `max`, both included.
    ///
    ///     draw 0: uniform(2.0, 4.0) -> 2, uniform(4.0, 2.0) -> 4
    T operator()(T min, T max);
    /// The next number, or the next `n` numbers, one call of `rand()` for each: a sequence is no
    /// faster than single draws.
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

    /// 1 from 0 up to below 1; otherwise 0. At 1 it is 0 as for all uniform generators, although 1
    /// is drawn.
    T getPdf(T x) const override;

    /// Calls `srand()` with the seed, whichever constructor set it.
    void restart() override;

    char const* getName() const override;

private:
    std::uint32_t _seed;
};

extern template class VN_BASE_EXPORT RnStdUniformRng<float>;
extern template class VN_BASE_EXPORT RnStdUniformRng<double>;

}  // namespace Vn
