#pragma once

#include <base/rnhistogram.h>
#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Numbers distributed as a histogram has recorded them, evenly within each bin.
///
///     Vn::RnHistogramRng<double> likeIt(histogram, &uniform);
///     const double number = likeIt();
///
/// It takes a snapshot: later changes of the histogram do not reach it. Each sample takes one draw
/// u of the source and inverts the recorded distribution function, so a larger u gives a larger
/// sample.
///
///     bins 1 and 3 over [0, 2]:  u = 0.125 -> 0.5;  u = 0.25 -> 1;  u = 0.625 -> 1.5
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Memory: a copy of the edges, the distribution function, and a search table of up to 32 bytes for
/// each bin, a megabyte at most. The table makes the time of a draw the same for any number of bins.
/// Edges: the source should give numbers from 0 to below 1.
///
///     u below 0                             ->  as 0
///     u at or above the sum of all bins     ->  the upper edge of the last bin that is not empty
///     a histogram without bins or samples   ->  not-a-number
///
/// Tests: tests/base/rnhistogramrngtest.cpp.
template <class T>
class RnHistogramRng : public RnRng<T>
{
public:
    /// The distribution of `histogram`, drawn from the uniform source `rng`.
    ///
    /// Throws ExInternalError ("_rng") for a null source, std::bad_alloc without memory for the
    /// snapshot.
    RnHistogramRng(RnHistogram<T> const& histogram, RnRng<T>* rng);

    RnHistogramRng(RnHistogramRng const&) = delete;
    RnHistogramRng& operator=(RnHistogramRng const&) = delete;

    /// The source lives on.
    ~RnHistogramRng() override;

    /// The next number or numbers. A source that is a program's own class is asked for single draws
    /// only, never for a sequence: if it throws, no number that came before is lost.
    /// @{
    T operator()() override;
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;
    /// @}

    /// The efficient range is that of the histogram's edges, with all of the probability in it.
    /// @{
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    /// @}

    /// The bin's share divided by its width: a density, other than RnHistogramBiRng::getPdf(). 0
    /// outside the edges.
    ///
    ///     bins 1 and 3 over [0, 2]:  x = 0.5 -> 0.25;  x = 1 -> 0.75;  x = 2 -> 0
    T getPdf(T x) const override;

    /// Restarts the source.
    void restart() override;

    char const* getName() const override;

    /// The source as given to the constructor. Never null; not owned.
    RnRng<T> const* getSource() const { return _rng; }

private:
    T mapped(T u) const;

    std::uint32_t _count;
    Vector<T> _cumulative;  ///< the running sums, with a guide behind them; see rncumulative_p.h
    Vector<T> _edges;
    RnRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnHistogramRng<float>;
extern template class VN_BASE_EXPORT RnHistogramRng<double>;

}  // namespace Vn
