#pragma once

#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Uniform numbers from two multiplicative congruential generators combined, with a period of about 2.3e18 (P. L'Ecuyer,
/// Efficient and portable combined random number generators, CACM 31, 1988).
///
///     Vn::RnLecuyerUniformRng<double> uniform(1, 2);
///     uniform(-1.0, 1.0);    // a number between -1 and 1
///
/// Numbers are below 1; the float instance scales by 2^-31, the nearest float to 1/2147483563, and reaches
/// 1 - 2^-24.
///
/// The second seed starts the first of the two state words. The second word starts at 55555 and no seed and no restart
/// touches it; the first seed is kept and not used. So a restarted generator goes on with another sequence: build a
/// new one to repeat the first.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnLecuyerUniformRng : public RnRng<T>
{
public:
    /// Seeds 55555 and 99999.
    RnLecuyerUniformRng();

    /// As the first seed; the second is 99999.
    RnLecuyerUniformRng(unsigned int seed1);

    /// Any seeds are taken. A second seed of 0 keeps the first word at 0 for ever.
    RnLecuyerUniformRng(unsigned int seed1, unsigned int seed2);

    ~RnLecuyerUniformRng() override;

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

    /// Brings the first state word back to the second seed; the second word runs on.
    void restart() override;
    /// The same with new seeds.
    void restart(unsigned int seed1, unsigned int seed2);

    /// "Lecuyer"
    char const* getName() const override;

    /// The draw itself.
    T eval();

private:
    std::uint32_t _seed1;
    std::uint32_t _seed2;
    std::int32_t _state1;
    std::int32_t _state2;
    std::int32_t _next1;  ///< the states that follow, so that those after them need not wait
    std::int32_t _next2;
};

extern template class VN_BASE_EXPORT RnLecuyerUniformRng<float>;
extern template class VN_BASE_EXPORT RnLecuyerUniformRng<double>;

}  // namespace Vn
