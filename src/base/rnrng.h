#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// A source of numbers: uniform, quasi-random, of a distribution, or drawn from a histogram.
///
///     Vn::RnVanDerCorputRng<float> source(3);
///     Vn::RnGaussianRng<float> gaussian(&source);
///     const float one = gaussian();          // one sample
///     gaussian.getSequence(4096, array);     // many, without a virtual call for each
///
/// Code that needs numbers takes an RnRng, so that any source can stand behind it. For points there
/// are RnBiRng and RnMultiRng, for directions RnSphericalRng.
///
/// Threads: a generator belongs to one thread at a time, and so do all generators that share a
/// source.
/// Ownership: a generator that draws from another holds a plain pointer to it. The program keeps
/// the source alive; a generator neither copies nor deletes it. Generators themselves are not
/// copied.
/// Edges: nothing allocates after construction. An exception of a program's own source passes
/// through.
///
/// T is float or double; both are one algorithm.
/// See also: docs/sampling.md, which helps to choose a source and compares their errors.
/// Tests: tests/base/rnuniformtest.cpp.
template <class T>
class RnRng
{
public:
    /// A copy would draw the same numbers again, which is rarely meant.
    /// @{
    RnRng(RnRng const&) = delete;
    RnRng& operator=(RnRng const&) = delete;
    /// @}

    /// Draws one sample and returns it.
    virtual T operator()() = 0;

    /// Draws one sample into `sample`: the number that operator()() would have returned.
    virtual void getSample(T& sample) = 0;

    /// Draws `n` samples into the array `samples`, in the order of `n` single draws.
    ///
    ///     getSequence(3, a)        ->  a holds what three calls of operator()() give
    ///     getSequence(0, nullptr)  ->  nothing happens
    ///
    /// A bulk call is several times as fast as single draws. It leaves the generator in the same
    /// state as these.
    virtual void getSequence(unsigned int n, T* samples) = 0;

    /// The efficient range: the interval that a consumer, such as a histogram, should work on. Its
    /// width is its maximum less its minimum, in the unit of the samples.
    /// @{
    virtual T getEfficientWidth() const = 0;
    virtual T getEfficientMin() const = 0;
    virtual T getEfficientMax() const = 0;
    /// @}

    /// The share of the probability that lies in the efficient range: 1 for a bounded distribution,
    /// less for one with tails.
    virtual T getEfficientFraction() const = 0;

    /// The probability density at `x`, per unit of the samples. 0 outside the distribution's
    /// support.
    virtual T getPdf(T x) const = 0;

    /// Goes back to the start of the sequence, and takes the source back to its start. How far the
    /// samples then repeat is a promise of each class: RnLecuyerUniformRng does not repeat,
    /// RnGaussianRng may have one sample left over.
    virtual void restart() = 0;

    /// A constant name to show to people, such as "Gaussian". Never null; it lives as long as the
    /// program.
    virtual char const* getName() const = 0;

    /// Leaves the source alone.
    virtual ~RnRng();

protected:
    /// For derived classes. The interface has no state.
    RnRng();
};

extern template class VN_BASE_EXPORT RnRng<float>;
extern template class VN_BASE_EXPORT RnRng<double>;

}  // namespace Vn
