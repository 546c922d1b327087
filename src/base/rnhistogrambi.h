#pragma once

#include <base/rnbirng.h>
#include <base/vector.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

/// RnHistogram in two dimensions: bin (ix, iy) is element iy * nx + ix.
///
///     Vn::RnHistogramBi<float> histogram(16, 16, 0.0f, 1.0f, 0.0f, 1.0f);
///     histogram.addSamples(points, 100000);
///
/// A bin includes its lower edges and excludes its upper ones. A point in no bin is dropped and isn't in the total.
/// A value; one thread at a time.
/// Tests: tests/base/rnhistogrambitest.cpp.
template <class T>
class RnHistogramBi
{
public:
    /// nx times ny bins of equal size.
    RnHistogramBi(unsigned int nx, unsigned int ny, T xMin, T xMax, T yMin, T yMax);

    /// Between nx + 1 and ny + 1 edges, which ascend.
    RnHistogramBi(unsigned int nx, unsigned int ny, T const* xEdges, T const* yEdges);

    RnHistogramBi(RnHistogramBi const& other);
    RnHistogramBi& operator=(RnHistogramBi const& other);

    virtual ~RnHistogramBi();

    /// The bin of a point in each coordinate, as RnHistogram::getBin(): -1, below the first edge, is 4294967295 here.
    virtual void getBin(T x, T y, unsigned int& ix, unsigned int& iy) const;

    /// Adds `weight` to the point's bin and to the total.
    void addSample(T x, T y, T weight);

    /// Draws `n` points, one by one, and adds each with weight 1.
    void addSamples(RnBiRng<T>& rng, unsigned int n);

    /// Empties the bins; the edges stay.
    void clear();

    /// Element iy * nx + ix; 0 beyond the last one.
    T getBinValue(unsigned int ix, unsigned int iy) const;
    T getTotal() const;

    T getNbBinsX() const;
    T getNbBinsY() const;

    /// The first and the last edges.
    void getRange(T& xMin, T& xMax, T& yMin, T& yMax) const;

    /// Not-a-number in a coordinate that has no such bin.
    void getBinBounds(unsigned int ix, unsigned int iy, T& xLo, T& xHi, T& yLo, T& yHi) const;

    Vector<T> const& getBins() const;
    Vector<T> const& getXEdges() const;
    Vector<T> const& getYEdges() const;

    /// A line for each bin, row by row: lower and upper x, lower and upper y, content.
    void dump(std::ostream& stream) const;

    /// An Open Inventor scene: a point for each bin at the height of its density, with the frame.
    void dumpInventor(std::ostream& stream) const;

protected:
    /// Whether the search for a bin will be by edges, and worth a table.
    enum class Search
    {
        byEdges,
        byWidth
    };

    RnHistogramBi(unsigned int nx, unsigned int ny, T xMin, T xMax, T yMin, T yMax, Search search);

private:
    void makeCells();
    void findBins(unsigned int n, T const* x, T const* y, unsigned int* ix, unsigned int* iy) const;

    std::uint32_t _xCount;
    std::uint32_t _yCount;
    Vector<T> _bins;
    Vector<T> _xEdges;
    Vector<T> _yEdges;
    T _total;
    T _xCellScale;
    T _yCellScale;
    Vector<std::uint32_t> _xCells;  ///< where in the edges to look
    Vector<std::uint32_t> _yCells;
};

/// RnHistogramBi with bins of equal size that finds a bin by divisions.
/// Tests: tests/base/rnhistogrambitest.cpp.
template <class T>
class RnUniformHistogramBi : public RnHistogramBi<T>
{
public:
    RnUniformHistogramBi(unsigned int nx, unsigned int ny, T xMin, T xMax, T yMin, T yMax);
    RnUniformHistogramBi(RnUniformHistogramBi const& other);
    RnUniformHistogramBi& operator=(RnUniformHistogramBi const& other);
    ~RnUniformHistogramBi() override;

    /// As RnUniformHistogram::getBin() in each coordinate; negative ones as unsigned numbers.
    void getBin(T x, T y, unsigned int& ix, unsigned int& iy) const override;

private:
    [[maybe_unused]] T _xWidth;  ///< as built; bins are found by the ranges of the edges
    [[maybe_unused]] T _yWidth;
};

extern template class VN_BASE_EXPORT RnHistogramBi<float>;
extern template class VN_BASE_EXPORT RnHistogramBi<double>;
extern template class VN_BASE_EXPORT RnUniformHistogramBi<float>;
extern template class VN_BASE_EXPORT RnUniformHistogramBi<double>;

}  // namespace Vn
