#pragma once

#include <base/rnrng.h>
#include <base/vector.h>

#include <bit>
#include <cstdint>
#include <iosfwd>
#include <type_traits>
#include <typeinfo>

namespace Vn
{

template <class T>
class RnUniformHistogram;

/// Counts how often numbers fall into bins. It can write itself as text or as an Open Inventor
/// scene, and RnHistogramRng draws numbers of the distribution that it has recorded.
///
///     Vn::RnHistogram<double> histogram(16, -2.0, 2.0);
///     histogram.addSamples(gaussian, 100000);
///     histogram.dump(stream);
///
/// A bin includes its lower edge and excludes its upper one. A number in no bin, not-a-number
/// included, is dropped; the total does not count it either.
///
///     4 bins over [0, 1]:  0.25 -> bin 1;  1, -0.1 and not-a-number -> dropped
///
/// Threads: one thread at a time.
/// Ownership: a value, which can be copied and assigned; it owns its bins.
/// Memory: the bins, the edges, and a search table of at most four integers for each bin.
/// Edges: constructors and assignments throw std::bad_alloc without that memory, and an assignment
/// then leaves its target as it was. Weights are summed in T, so in float a bin that grows by 1
/// stops at 2^24.
/// See also: RnUniformHistogram, for bins of equal width; RnHistogramRng, which draws what was
/// recorded.
/// Tests: tests/base/rnhistogramtest.cpp.
template <class T>
class RnHistogram
{
public:
    /// `n` bins of equal width over the range from `min` to `max`. With no bins everything is
    /// dropped.
    ///
    ///     (4, 0, 1)  ->  edges 0, 0.25, 0.5, 0.75, 1
    RnHistogram(unsigned int n, T min, T max);

    /// `n` bins between the `n` + 1 ascending numbers of `edges`, which are copied. With edges that
    /// do not ascend, some bin takes a sample in the range; nothing worse happens.
    RnHistogram(unsigned int n, T const* edges);

    /// Copies bins, edges and total.
    /// @{
    RnHistogram(RnHistogram const& other);
    RnHistogram& operator=(RnHistogram const& other);
    /// @}

    virtual ~RnHistogram();

    /// The bin of `x`. addSample() calls it, so a derived class may have bins of its own kind.
    ///
    ///     below the first edge       ->  -1
    ///     at or above the last edge  ->  the number of bins
    ///     not-a-number               ->  the number of bins
    virtual int getBin(T x) const;

    /// Adds `weight` to the bin of `x` and to the total; to neither if `x` is in no bin. A negative
    /// weight subtracts.
    [[gnu::always_inline]] void addSample(T x, T weight)
    {
        // RnUniformHistogram::getBin() without a call; it stands here so that a loop of calls is as
        // fast as one over an array. Any other class, and any number in no bin, goes the long way.
        if (&typeid(*this) == &typeid(RnUniformHistogram<T>)) {
            const T place = _range.placeOf(x);
            if (_range.isBin(place)) [[likely]] {
                _bins[static_cast<std::uint32_t>(static_cast<std::int32_t>(place))] += weight;
                addToTotal(weight);
                return;
            }
        }
        addByBin(x, weight);
    }

    /// Draws `n` numbers from `rng` and adds each with weight 1. If the source throws, the samples
    /// before it are in.
    void addSamples(RnRng<T>& rng, unsigned int n);

    /// Sets all bins and the total to 0. The edges stay.
    void clear();

    /// The content of bin `i`, counted from 0; 0 for a bin that does not exist.
    T getBinValue(unsigned int i) const;

    /// The sum of all weights that fell into a bin.
    T getTotal() const;

    /// Writes the first edge to `min` and the last to `max`.
    void getRange(T& min, T& max) const;

    /// Writes the edges of bin `i` to `lo` and `hi`; not-a-number for a bin that does not exist.
    ///
    ///     4 bins over [0, 1]:  bin 1 -> 0.25, 0.5;  bin 4 -> not-a-number twice
    void getBinBounds(unsigned int i, T& lo, T& hi) const;

    /// The contents of all bins, from the lowest on. The reference is valid as long as the
    /// histogram.
    Vector<T> const& getBins() const { return _bins; }

    /// All edges, one more than bins.
    Vector<T> const& getEdges() const { return _edges; }

    /// Writes a line for each bin: lower edge, upper edge, content. Numbers are in the stream's
    /// current format, which is left as it is; a write error shows in the stream's state.
    ///
    ///     0 0.25 17
    ///     0.25 0.5 20
    void dump(std::ostream& stream) const;

    /// Writes an Open Inventor scene: a point for each bin, as high as its density, with the axes.
    /// In an empty histogram densities are not-a-number.
    void dumpInventor(std::ostream& stream) const;

protected:
    /// How a derived class finds a bin: a search by edges has a table, a division by the width
    /// needs none.
    enum class Search
    {
        byEdges,  ///< as RnHistogram
        byWidth   ///< as RnUniformHistogram
    };

    /// `n` bins of equal width, with a table only if `search` needs it.
    RnHistogram(unsigned int n, T min, T max, Search search);

private:
    void makeCells();
    void addByBin(T x, T weight);
    void findBins(unsigned int n, T const* samples, int* found) const;
    unsigned int addRun(unsigned int n, T const* samples);

    /// Ones are counted apart: adding up floating-point numbers in memory is a chain in which each
    /// addition waits for the one before, and for its way through memory.
    [[gnu::always_inline]] void addToTotal(T weight)
    {
        if (weight == T(1)) [[likely]] {
            if (--_onesLeft == 0) [[unlikely]]
                settleTotal();
        } else {
            if (_onesLeft != maxOnes)
                settleTotal();
            _total += weight;
        }
    }

    static constexpr std::uint32_t maxOnes = 4096;  ///< few enough to be added one by one where that must be

    void settleTotal();

    template <class>
    friend class RnHistogramBi;

    /// The range of the edges and the number of bins in it: what RnUniformHistogram finds a bin by,
    /// ready to be used, since a sample takes hardly longer than reading them.
    struct Range
    {
        explicit Range(Vector<T> const& edges)
            : min(edges.front()),
              width(edges.back() - edges.front()),
              bins(static_cast<T>(edges.size() - 1)),
              limit(bins < T(2147483648.0) ? bins : T(2147483648.0))
        {}

        /// Where a number falls, counted in bins; its whole part is the bin if isBin() tells so.
        [[gnu::always_inline]] T placeOf(T x) const { return (x - min) / width * bins; }

        /// False for not-a-number and for what lies outside. It may be false for -0 and for the last of
        /// more than 2^24 bins, too, and never is true for a bin that does not exist.
        ///
        /// One comparison does: as unsigned integers, the bits of the numbers from 0 on ascend, and
        /// those of negative numbers and of not-a-number are above them.
        [[gnu::always_inline]] bool isBin(T place) const
        {
            using Bits = std::conditional_t<sizeof(T) == sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
            return std::bit_cast<Bits>(place) < std::bit_cast<Bits>(limit);
        }

        T min;
        T width;
        T bins;
        T limit;  ///< as `bins`, but not beyond an int
    };

    std::uint32_t _count;
    Vector<T> _bins;
    Vector<T> _edges;
    T _total;                      ///< without the ones
    T _cellScale;                  ///< cells per unit; see rnbins_p.h
    Vector<std::uint32_t> _cells;  ///< the lowest bin in each cell; empty without a table
    Range _range;
    std::uint32_t _onesLeft;  ///< `maxOnes` less the samples of weight 1 that are to be added to the total
};

/// RnHistogram with bins of equal width, which finds a bin by a division. That is faster than a
/// search. For a number within rounding of an edge the two may differ by one bin.
///
///     Vn::RnUniformHistogram<double> histogram(16, -2.0, 2.0);
///     histogram.addSample(0.5, 1.0);    // bin 10
///
/// All else is RnHistogram's. The division always goes by the range of the edges, so after an
/// assignment through the base class, which may bring other edges, getBin() and addSample() still
/// agree.
/// Tests: tests/base/rnhistogramtest.cpp.
template <class T>
class RnUniformHistogram : public RnHistogram<T>
{
public:
    /// `n` bins of equal width over the range from `min` to `max`.
    RnUniformHistogram(unsigned int n, T min, T max);

    /// Copies bins, edges and total.
    /// @{
    RnUniformHistogram(RnUniformHistogram const& other);
    RnUniformHistogram& operator=(RnUniformHistogram const& other);
    /// @}

    ~RnUniformHistogram() override;

    /// The integer below (`x` - min) / width * n.
    ///
    ///     4 bins over [0, 1]:  0.25 -> 1;  1 -> 4;  -0.1 -> -1;  -0.3 -> -2
    ///     not-a-number         ->  n
    ///     beyond 32 bits       ->  the nearest int
    int getBin(T x) const override;

private:
    [[maybe_unused]] T _width;  ///< as constructed; bins go by the range of the edges
};

extern template class VN_BASE_EXPORT RnHistogram<float>;
extern template class VN_BASE_EXPORT RnHistogram<double>;
extern template class VN_BASE_EXPORT RnUniformHistogram<float>;
extern template class VN_BASE_EXPORT RnUniformHistogram<double>;

}  // namespace Vn
