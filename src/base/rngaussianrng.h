#pragma once

#include <base/rnrng.h>

namespace Vn
{

/// Normally distributed numbers, made in pairs of uniform ones by the polar method (G. Marsaglia
/// and T. A. Bray, A convenient method for generating normal variables, SIAM Review 6, 1964).
///
///     Vn::RnLecuyerUniformRng<float> uniform;
///     Vn::RnGaussianRng<float> gaussian(&uniform, 10.0f, 2.0f);
///     const float number = gaussian();    // mostly between 6 and 14
///
/// The second number of a pair is kept for the next draw, whatever its form, so single draws and
/// sequences may be mixed. restart() keeps it too: it comes out before the repeated sequence.
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Edges: the source should give numbers from 0 to 1.
///
///     0.5 twice                  ->  not-a-number: the pair (0, 0) has no direction
///     65,536 unusable pairs      ->  not-a-number; a uniform source needs 1.27 pairs on average
///
/// See also: RnHistogramRng, for a distribution without a formula.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnGaussianRng : public RnRng<T>
{
public:
    /// Mean 0 and standard deviation 1, from the uniform source `rng`. Throws ExInternalError
    /// ("_uniRng") for null.
    RnGaussianRng(RnRng<T>* rng);

    /// Any mean; a standard deviation `sigma` above 0, in the same unit.
    ///
    /// Throws ExInternalError: "_uniRng" for null, "_sigma > 0" for a deviation of 0, below 0 or
    /// not-a-number.
    RnGaussianRng(RnRng<T>* rng, T mean, T sigma);

    RnGaussianRng(RnGaussianRng const&) = delete;
    RnGaussianRng& operator=(RnGaussianRng const&) = delete;

    /// The source lives on.
    ~RnGaussianRng() override;

    /// The next number or numbers. Any order of these calls gives the same stream. A source that is
    /// a program's own class is asked for single draws only, never for a sequence: if it throws, no
    /// number that came before is lost.
    /// @{
    T operator()() override;
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;
    /// @}

    /// The efficient range is mean - 2 sigma to mean + 2 sigma.
    ///
    ///     mean 10, sigma 2  ->  width 8, from 6 to 14
    /// @{
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    /// @}

    /// 0.99993666, which is the share within 4 sigma to each side and not within the 2 sigma of the
    /// efficient range. The two are not to be reconciled: consumers are tuned to these values.
    T getEfficientFraction() const override;

    /// The density of the normal distribution: 0.3989 / sigma at the mean, above 0 everywhere,
    /// until it underflows.
    ///
    ///     mean 0, sigma 1:  x = 0 -> 0.3989;  x = 1 or -1 -> 0.2420;  infinity -> 0
    T getPdf(T x) const override;

    /// Restarts the source and nothing else. The second number of the last pair, if it waits, comes
    /// out first.
    void restart() override;

    char const* getName() const override;

    /// The mean as given to the constructor.
    T getMean() const { return _mean; }

    /// The standard deviation as given to the constructor.
    T getSigma() const { return _sigma; }

    /// The source as given to the constructor. Never null; not owned.
    RnRng<T> const* getSource() const { return _uniRng; }

private:
    struct Pairs;

    T drawStandard();
    T scaled(T standard) const;

    T _mean;
    T _sigma;
    T _variance;
    T _normalisation;
    bool _hasSpare;
    T _spare;  ///< second number of the last pair, for mean 0 and deviation 1
    RnRng<T>* _uniRng;
};

extern template class VN_BASE_EXPORT RnGaussianRng<float>;
extern template class VN_BASE_EXPORT RnGaussianRng<double>;

}  // namespace Vn
