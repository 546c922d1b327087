#pragma once

#include <base/rnrng.h>

namespace Vn
{

/// Normally distributed numbers, made in pairs from a uniform source by the polar method (G. Marsaglia and T. A. Bray, A
/// convenient method for generating normal variables, SIAM Review 6, 1964).
///
///     Vn::RnLecuyerUniformRng<float> uniform;
///     Vn::RnGaussianRng<float> gaussian(&uniform, 10.0f, 2.0f);
///     gaussian();
///
/// The second number of a pair waits for the next draw of whatever form; restart() restarts the source and leaves it
/// waiting. The source isn't owned, must outlive this object, and gives numbers from 0 to 1. One that gives 0.5 twice
/// makes not-a-number. So does one that gives no usable pair in 65,536 attempts, where a uniform one needs 1.27 on
/// average.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnGaussianRng : public RnRng<T>
{
public:
    /// Mean 0 and standard deviation 1. Throws ExInternalError ("_uniRng") for null.
    RnGaussianRng(RnRng<T>* rng);

    /// Throws ExInternalError: "_uniRng" for null, "_sigma > 0" for a deviation that isn't positive.
    RnGaussianRng(RnRng<T>* rng, T mean, T sigma);

    ~RnGaussianRng() override;

    T operator()() override;
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;

    /// 4 sigma, so mean - 2 sigma to mean + 2 sigma. The fraction, 0.99993666, is nevertheless that within 4 sigma to each
    /// side.
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    T getPdf(T x) const override;

    /// Restarts the source. A number that waits comes out first.
    void restart() override;

    /// "Gaussian"
    char const* getName() const override;

    T getMean() const;
    T getSigma() const;

private:
    friend struct RnSource;  ///< looks at what stands behind

    struct Pairs;

    T drawStandard();
    T scaled(T standard) const;
    void fillFromPairs(unsigned int n, T* samples);

    T _mean;
    T _sigma;
    T _variance;
    T _normalisation;
    bool _hasSpare;
    T _spare;  ///< for mean 0 and deviation 1
    RnRng<T>* _uniRng;
};

extern template class VN_BASE_EXPORT RnGaussianRng<float>;
extern template class VN_BASE_EXPORT RnGaussianRng<double>;

}  // namespace Vn
