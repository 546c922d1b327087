#pragma once

#include <base/rnbirng.h>
#include <base/rnhistogrambi.h>
#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Points distributed as a two-dimensional histogram has recorded them, evenly within each bin.
///
///     Vn::RnHistogramBiRng<float> likeIt(histogram, &uniform);
///     likeIt.getSample(x, y);
///
/// It takes a snapshot: later changes of the histogram do not reach it. Each point takes two draws.
/// The first finds the bin, and its place within the bin's share gives x; the second gives y.
///
///     2 by 1 bins of 1 and 3 over [0, 2] and [0, 1]:  draws 0.625 and 0.5  ->  (1.5, 0.5)
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Memory: as for RnHistogramRng, with both coordinates' edges.
/// Edges: the source should give numbers from 0 to below 1; others are handled as in
/// RnHistogramRng. A histogram without bins or samples gives not-a-number.
/// Tests: tests/base/rnhistogramrngtest.cpp.
template <class T>
class RnHistogramBiRng : public RnBiRng<T>
{
public:
    /// The distribution of `histogram`, drawn from the uniform source `rng`.
    ///
    /// Throws ExInternalError ("_rng") for a null source, std::bad_alloc without memory for the
    /// snapshot.
    RnHistogramBiRng(RnHistogramBi<T> const& histogram, RnRng<T>* rng);

    RnHistogramBiRng(RnHistogramBiRng const&) = delete;
    RnHistogramBiRng& operator=(RnHistogramBiRng const&) = delete;

    /// The source lives on.
    ~RnHistogramBiRng() override;

    /// The next point, from two draws of the source.
    ///
    ///     2 by 2 equal bins over [0, 1] each, draws 0.125 and 0.5  ->  (0.25, 0.25)
    void getSample(T& x, T& y) override;
    /// The points of getSample(). In a derived class with a getSample() of its own, they are that
    /// function's points.
    void getSequence(unsigned int n, T* x, T* y) override;

    /// The efficient range is that of the histogram's edges, with all of the probability in it.
    /// @{
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    /// @}

    /// The share of the point's bin, which is not divided by the bin's area: a probability, other
    /// than RnHistogramRng::getPdf(). 0 outside the edges.
    ///
    ///     4 equal bins  ->  0.25 inside, whatever their areas
    T getPdf(T x, T y) const override;

    /// Restarts the source.
    void restart() override;

    char const* getName() const override;

private:
    std::uint32_t _xCount;
    std::uint32_t _yCount;
    Vector<T> _cumulative;  ///< the running sums, with a guide behind them; see rncumulative_p.h
    Vector<T> _xEdges;
    Vector<T> _yEdges;
    RnRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnHistogramBiRng<float>;
extern template class VN_BASE_EXPORT RnHistogramBiRng<double>;

}  // namespace Vn
