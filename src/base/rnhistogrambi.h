#pragma once

#include <base/rnbirng.h>
#include <base/rnhistogram.h>
#include <base/vector.h>

#include <cstdint>
#include <iosfwd>
#include <typeinfo>

namespace Vn
{

template <class T>
class RnUniformHistogramBi;

/// Counts how often points fall into the cells of a grid: RnHistogram in two dimensions.
/// RnHistogramBiRng draws points of the distribution that it has recorded.
///
///     Vn::RnHistogramBi<float> histogram(16, 16, 0.0f, 1.0f, 0.0f, 1.0f);
///     histogram.addSamples(points, 100000);
///     histogram.dumpInventor(stream);
///
/// Bin (ix, iy) is element iy * nx + ix. A bin includes its lower edges and excludes its upper
/// ones. A point that is in no bin in either coordinate is dropped; the total does not count it.
///
///     2 by 2 bins over [0, 1] each:  (0.5, 0.2) -> element 1;  (0.2, 0.5) -> element 2;
///                                    (0.5, 1) and (-0.1, 0.5) -> dropped
///
/// Threads: one thread at a time.
/// Ownership: a value, which can be copied and assigned; it owns its bins.
/// Edges: constructors and assignments throw std::bad_alloc without memory, and an assignment then
/// leaves its target as it was. In float a bin that grows by 1 stops at 2^24.
/// See also: RnUniformHistogramBi, for bins of equal size; RnHistogramBiRng, which draws what was
/// recorded.
/// Tests: tests/base/rnhistogrambitest.cpp.
template <class T>
class RnHistogramBi
{
public:
    /// `nx` times `ny` bins of equal size over the given ranges. With 0 of either everything is
    /// dropped.
    RnHistogramBi(unsigned int nx, unsigned int ny, T xMin, T xMax, T yMin, T yMax);

    /// Bins between `nx` + 1 and `ny` + 1 ascending edges, which are copied. The edges may be
    /// uneven; densities take the areas into account.
    RnHistogramBi(unsigned int nx, unsigned int ny, T const* xEdges, T const* yEdges);

    /// Copies bins, edges and total.
    /// @{
    RnHistogramBi(RnHistogramBi const& other);
    RnHistogramBi& operator=(RnHistogramBi const& other);
    /// @}

    virtual ~RnHistogramBi();

    /// Writes the bin of a point to `ix` and `iy`. Each coordinate is found as by
    /// RnHistogram::getBin(), but the result is unsigned: -1 is 4294967295 here. addSample() calls
    /// it, so a derived class may have bins of its own kind.
    ///
    ///     2 bins over [0, 1] each:  (0.5, 0)    ->  1, 0
    ///                               (-0.1, 7)   ->  4294967295, 2
    virtual void getBin(T x, T y, unsigned int& ix, unsigned int& iy) const;

    /// Adds `weight` to the bin of the point and to the total; to neither if the point is in no
    /// bin.
    [[gnu::always_inline]] void addSample(T x, T y, T weight)
    {
        // As RnHistogram::addSample(): a point in a bin of RnUniformHistogramBi needs no call.
        if (&typeid(*this) == &typeid(RnUniformHistogramBi<T>)) {
            const T xPlace = _xRange.placeOf(x), yPlace = _yRange.placeOf(y);
            if (_xRange.isBin(xPlace) && _yRange.isBin(yPlace)) [[likely]] {
                const std::uint32_t ix = static_cast<std::uint32_t>(static_cast<std::int32_t>(xPlace));
                const std::uint32_t iy = static_cast<std::uint32_t>(static_cast<std::int32_t>(yPlace));
                _bins[std::size_t(iy) * _xCount + ix] += weight;
                addToTotal(weight);
                return;
            }
        }
        addByBin(x, y, weight);
    }

    /// Draws `n` points from `rng`, as by getSample(), and adds each with weight 1. If the source
    /// throws, the points before it are in.
    void addSamples(RnBiRng<T>& rng, unsigned int n);

    /// Sets all bins and the total to 0. The edges stay.
    void clear();

    /// Element `iy` * nx + `ix`; 0 beyond the last. Only that sum is checked: an `ix` of nx is the
    /// next row's first bin.
    T getBinValue(unsigned int ix, unsigned int iy) const;

    /// The sum of all weights that fell into a bin.
    T getTotal() const;

    /// The number of bins in a row or in a column. It is a T, for formulas with densities; convert
    /// it before you use it as an index.
    /// @{
    T getNbBinsX() const { return static_cast<T>(_xCount); }
    T getNbBinsY() const { return static_cast<T>(_yCount); }
    /// @}

    /// Writes the first and the last edge of each coordinate: the numbers that the constructor was
    /// given, to the bit.
    void getRange(T& xMin, T& xMax, T& yMin, T& yMax) const;

    /// Writes the edges of bin (`ix`, `iy`); not-a-number in a coordinate that has no such bin.
    ///
    ///     2 bins over [0, 1] each:  bin (1, 0)  ->  0.5, 1, 0, 0.5
    ///                               bin (2, 0)  ->  not-a-number twice, 0, 0.5
    void getBinBounds(unsigned int ix, unsigned int iy, T& xLo, T& xHi, T& yLo, T& yHi) const;

    /// The contents of all bins, row by row. The reference is valid as long as the histogram.
    Vector<T> const& getBins() const { return _bins; }

    /// All edges of a coordinate, one more than bins.
    /// @{
    Vector<T> const& getXEdges() const { return _xEdges; }
    Vector<T> const& getYEdges() const { return _yEdges; }
    /// @}

    /// Writes a line for each bin, row by row: lower and upper x, lower and upper y, content.
    /// Numbers are in the stream's current format.
    ///
    ///     0 0.5 0 0.5 17
    ///     0.5 1 0 0.5 20
    void dump(std::ostream& stream) const;

    /// Writes an Open Inventor scene: a point for each bin, as high as its density, with a frame
    /// around the range. In an empty histogram densities are not-a-number.
    void dumpInventor(std::ostream& stream) const;

protected:
    /// How a derived class finds a bin: a search by edges has tables, a division by the width needs
    /// none.
    enum class Search
    {
        byEdges,  ///< as RnHistogramBi
        byWidth   ///< as RnUniformHistogramBi
    };

    /// Bins of equal size, with tables only if `search` needs them.
    RnHistogramBi(unsigned int nx, unsigned int ny, T xMin, T xMax, T yMin, T yMax, Search search);

private:
    void makeCells();
    void addByBin(T x, T y, T weight);
    void findBins(unsigned int n, T const* x, T const* y, unsigned int* ix, unsigned int* iy) const;
    unsigned int addRun(unsigned int n, T const* x, T const* y);

    /// Ones are counted apart, as in RnHistogram.
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

    using Range = typename RnHistogram<T>::Range;

    std::uint32_t _xCount;
    std::uint32_t _yCount;
    Vector<T> _bins;
    Vector<T> _xEdges;
    Vector<T> _yEdges;
    T _total;       ///< without the ones
    T _xCellScale;  ///< cells per unit; see rnbins_p.h
    T _yCellScale;
    Vector<std::uint32_t> _xCells;  ///< the lowest bin in each cell; empty without a table
    Vector<std::uint32_t> _yCells;
    Range _xRange;
    Range _yRange;
    std::uint32_t _onesLeft;  ///< `maxOnes` less the samples of weight 1 that are to be added to the total
};

/// RnHistogramBi with bins of equal size, which finds a bin by two divisions. For a point within
/// rounding of an edge that may be another bin than a search finds.
///
///     Vn::RnUniformHistogramBi<float> histogram(16, 16, 0.0f, 1.0f, 0.0f, 1.0f);
///     histogram.addSamples(points, 100000);
///
/// All else is RnHistogramBi's. The divisions always go by the ranges of the edges, also after an
/// assignment through the base class.
/// Tests: tests/base/rnhistogrambitest.cpp.
template <class T>
class RnUniformHistogramBi : public RnHistogramBi<T>
{
public:
    /// `nx` times `ny` bins of equal size over the given ranges.
    RnUniformHistogramBi(unsigned int nx, unsigned int ny, T xMin, T xMax, T yMin, T yMax);

    /// Copies bins, edges and total.
    /// @{
    RnUniformHistogramBi(RnUniformHistogramBi const& other);
    RnUniformHistogramBi& operator=(RnUniformHistogramBi const& other);
    /// @}

    ~RnUniformHistogramBi() override;

    /// RnUniformHistogram::getBin() in each coordinate, as an unsigned number: -1 is 4294967295.
    ///
    ///     4 by 4 bins over [0, 1] each:  (0.25, 1) -> 1, 4;  (-0.1, 0) -> 4294967295, 0
    void getBin(T x, T y, unsigned int& ix, unsigned int& iy) const override;

private:
    [[maybe_unused]] T _xWidth;  ///< as constructed; bins go by the ranges of the edges
    [[maybe_unused]] T _yWidth;
};

extern template class VN_BASE_EXPORT RnHistogramBi<float>;
extern template class VN_BASE_EXPORT RnHistogramBi<double>;
extern template class VN_BASE_EXPORT RnUniformHistogramBi<float>;
extern template class VN_BASE_EXPORT RnUniformHistogramBi<double>;

}  // namespace Vn
