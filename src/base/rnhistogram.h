#pragma once

#include <base/rnrng.h>
#include <base/vector.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

/// Counts how often numbers fall into bins.
///
///     Vn::RnHistogram<double> histogram(16, -2.0, 2.0);
///     histogram.addSamples(gaussian, 100000);
///     histogram.dump(std::cout);
///     Vn::RnHistogramRng<double> likeIt(histogram, &uniform);    // draws what was recorded
///
/// A bin includes its lower edge and excludes its upper one. What lies in no bin, not-a-number included, is dropped and
/// isn't in the total. Edges must ascend; if they don't, some bin takes the sample. Weights are summed in T: in float a
/// bin that is filled one by one stops growing at 2^24.
///
/// A value; one thread at a time. Its memory is that of its bins, edges, and at most four integers for each bin.
/// Tests: tests/base/rnhistogramtest.cpp.
template <class T>
class RnHistogram
{
public:
    /// `n` bins of equal width.
    RnHistogram(unsigned int n, T min, T max);

    /// `n` bins between n + 1 edges.
    RnHistogram(unsigned int n, T const* edges);

    RnHistogram(RnHistogram const& other);
    RnHistogram& operator=(RnHistogram const& other);

    virtual ~RnHistogram();

    /// The bin of a point: -1 below the first edge, the number of bins at or above the last one and for not-a-number.
    virtual int getBin(T x) const;

    /// Adds `weight` to the point's bin and to the total.
    void addSample(T x, T weight);

    /// Draws `n` numbers and adds each with weight 1.
    void addSamples(RnRng<T>& rng, unsigned int n);

    /// Empties the bins; the edges stay.
    void clear();

    /// 0 for a bin that isn't there.
    T getBinValue(unsigned int i) const;
    T getTotal() const;

    /// The first and the last edge.
    void getRange(T& min, T& max) const;

    /// Not-a-number for a bin that isn't there.
    void getBinBounds(unsigned int i, T& lo, T& hi) const;

    Vector<T> const& getBins() const;
    Vector<T> const& getEdges() const;

    /// A line for each bin: lower edge, upper edge, content. In the stream's own number format.
    void dump(std::ostream& stream) const;

    /// An Open Inventor scene: a point for each bin at the height of its density, with the axes. An empty histogram gives
    /// densities that are no numbers.
    void dumpInventor(std::ostream& stream) const;

protected:
    /// Whether the search for a bin will be by edges, and worth a table.
    enum class Search
    {
        byEdges,
        byWidth
    };

    RnHistogram(unsigned int n, T min, T max, Search search);

private:
    void findBins(unsigned int n, T const* samples, int* found) const;

    std::uint32_t _count;
    Vector<T> _bins;
    Vector<T> _edges;
    T _total;
    T _cellScale;                  ///< cells per unit
    Vector<std::uint32_t> _cells;  ///< where in the edges to look
};

/// RnHistogram with bins of equal width that finds a bin by a division instead of a search; the two may differ for a
/// point within rounding of an edge.
/// Tests: tests/base/rnhistogramtest.cpp.
template <class T>
class RnUniformHistogram : public RnHistogram<T>
{
public:
    RnUniformHistogram(unsigned int n, T min, T max);
    RnUniformHistogram(RnUniformHistogram const& other);
    RnUniformHistogram& operator=(RnUniformHistogram const& other);
    ~RnUniformHistogram() override;

    /// The integer below (x - min) / width * n, within the limits of an integer; n for not-a-number.
    int getBin(T x) const override;

private:
    [[maybe_unused]] T
        _width;  ///< as built; bins are found by the range of the edges, which an assignment may change
};

extern template class VN_BASE_EXPORT RnHistogram<float>;
extern template class VN_BASE_EXPORT RnHistogram<double>;
extern template class VN_BASE_EXPORT RnUniformHistogram<float>;
extern template class VN_BASE_EXPORT RnUniformHistogram<double>;

}  // namespace Vn
