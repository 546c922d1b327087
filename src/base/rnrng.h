#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of numbers: uniform, quasi-random, of a distribution, or read back from a histogram. What needs numbers is
/// written against this interface, so that any source can stand behind it.
///
///     Vn::RnVanDerCorputRng<float> source(3);
///     Vn::RnGaussianRng<float> gaussian(&source);
///     gaussian();                          // one sample
///     gaussian.getSequence(4096, array);   // many, without a virtual call for each
///
/// For float and double. A generator belongs to one thread at a time and isn't copied.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnRng
{
public:
    RnRng(RnRng const&) = delete;
    RnRng& operator=(RnRng const&) = delete;

    /// Draws one sample.
    virtual T operator()() = 0;

    /// Draws one sample into `sample`.
    virtual void getSample(T& sample) = 0;

    /// Draws `n` samples in the order of as many single draws. With 0 the array isn't touched.
    virtual void getSequence(unsigned int n, T* samples) = 0;

    /// The range that a consumer takes for the generator's domain: it holds the share getEfficientFraction() of the
    /// probability, 1 for a bounded distribution and less for one with tails. The width is max less min.
    virtual T getEfficientWidth() const = 0;
    virtual T getEfficientMin() const = 0;
    virtual T getEfficientMax() const = 0;
    virtual T getEfficientFraction() const = 0;

    /// The density at `x`.
    virtual T getPdf(T x) const = 0;

    /// Goes back to the start of the sequence, as far as the class promises.
    virtual void restart() = 0;

    /// A constant name for people.
    virtual char const* getName() const = 0;

    virtual ~RnRng();

protected:
    RnRng();
};

extern template class VN_BASE_EXPORT RnRng<float>;
extern template class VN_BASE_EXPORT RnRng<double>;

}  // namespace Vn
