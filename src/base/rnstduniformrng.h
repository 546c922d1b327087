#pragma once

#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Uniform numbers from the C library's `rand`, 0 and 1 included, in steps of the reciprocal of RAND_MAX: 1/32767 on
/// Windows, 1/2147483647 on Linux.
///
///     Vn::RnStdUniformRng<double> uniform(1);
///
/// The state is the process's, not the object's: all instances and whoever else calls `rand` draw from one sequence, and
/// a restart rewinds it for all of them. The numbers differ between platforms.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnStdUniformRng : public RnRng<T>
{
public:
    /// Leaves the C library's state as it is. restart() will take seed 1, that of a process which sets none.
    RnStdUniformRng();

    /// Calls `srand`.
    RnStdUniformRng(unsigned int seed);

    ~RnStdUniformRng() override;

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
    /// 1 from 0 up to below 1, otherwise 0; though 1 is drawn.
    T getPdf(T x) const override;

    /// Calls `srand` with the seed.
    void restart() override;

    /// "Std OS-specific generator"
    char const* getName() const override;

private:
    std::uint32_t _seed;
};

extern template class VN_BASE_EXPORT RnStdUniformRng<float>;
extern template class VN_BASE_EXPORT RnStdUniformRng<double>;

}  // namespace Vn
