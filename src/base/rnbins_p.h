// Private to rnhistogram.imp, rnhistogrambi.imp, rnhistogrambirng.imp, rnhistogramrng.imp and rnhistogramspherical.imp.
//
// How a number finds its bin. There are three ways:
//
//   search()       the rule of the plain histograms: a binary search for the first edge above the number
//   find()         the same bin without the binary search, by a table of cells
//   findByWidth()  the rule of the uniform histograms: a division
//
// The table of find() cuts the range into equal cells, four for each bin, and holds the lowest bin
// that reaches into each cell. A number's cell is one multiplication; from the cell's bin the right
// one is at most a few bins up. That holds for uneven edges too, only that more bins may share a
// cell then. find() may trust the table because a number's cell never falls as the number rises: a
// subtraction and a multiplication by a positive factor keep the order of their arguments, rounding
// included. So an edge in a lower cell than a number's is below the number.
//
// Each way has a form for many numbers, whose loops have no branch and run in vector registers
// (rnwide_p.h). These give -1 for every number outside the bins, above as below; the forms for one
// number follow getBin(), which gives the number of bins for what is above.
//
// Tests: tests/base/rnhistogramtest.cpp.
#pragma once

#include <base/rnwide_p.h>
#include <base/vector.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Vn
{

/// The table of find().
template <class T>
struct RnCells
{
    Vector<std::uint32_t> lowestBins;  ///< of each cell; empty if a table would not help
    T perUnit = T(0);                  ///< cells in a range of length 1
};

/// Edges of bins and the search in them. `edges` always holds one number more than there are bins.
template <class T>
struct RnBins
{
    /// Edges of `n` bins of equal width.
    ///
    ///     evenEdges(4, 0, 1)  ->  0, 0.25, 0.5, 0.75, 1
    ///     evenEdges(0, 2, 3)  ->  3
    ///
    /// The last edge is `max` to the bit; the others carry the rounding of this order of
    /// operations, which dumps show.
    static Vector<T> evenEdges(unsigned int n, T min, T max)
    {
        Vector<T> edges(std::size_t(n) + 1);
        edges[0] = min;
        const T inverse = T(1) / static_cast<T>(n);
        for (unsigned int i = 1; i < n; ++i)
            edges[i] = static_cast<T>(i) * inverse * (max - min) + min;
        edges[n] = max;
        return edges;
    }

    /// `x` rounded down to an integer.
    ///
    ///     -0.5  ->  -1
    ///     1e20  ->  2147483647, as all above 32 bits; -2147483648 below
    ///     NaN   ->  `ifNaN`
    ///
    /// std::floor() would be a call where the processor's baseline has no rounding instruction, one
    /// for each sample.
    static int floorToInt(T x, int ifNaN)
    {
        if (x >= T(0) && x < T(2147483648.0)) [[likely]]
            return static_cast<int>(x);
        if (x < T(0)) {
            if (x < T(-2147483648.0))
                return std::numeric_limits<int>::min();
            const int cut = static_cast<int>(x);
            return static_cast<T>(cut) > x ? cut - 1 : cut;
        }
        return x > T(0) ? std::numeric_limits<int>::max() : ifNaN;
    }

    /// The bin of `x` by the rule of RnUniformHistogram: negative below the first edge, the number
    /// of bins or more from the last edge on, the number of bins for not-a-number.
    ///
    /// The width comes from the edges and from nowhere else. A copy of it could be out of date
    /// after an assignment through the base class, and getBin() and addSample() would then
    /// disagree.
    static int findByWidth(Vector<T> const& edges, T x)
    {
        const std::uint32_t count = static_cast<std::uint32_t>(edges.size() - 1);
        const T width = edges.back() - edges.front();
        return floorToInt((x - edges.front()) / width * static_cast<T>(count), static_cast<int>(count));
    }

    /// findByWidth() for `n` numbers, with -1 for each number in no bin. `Index` is int or unsigned
    /// int.
    template <class Index>
    static void findManyByWidth(unsigned int n, T const* x, Vector<T> const& edges, Index* found)
    {
        const std::uint32_t count = static_cast<std::uint32_t>(edges.size() - 1);
        const T min = edges.front();
        RnWide::run<placesOf<Index>>(n, x, min, edges.back() - min, static_cast<T>(count), limitOf(count), found);
    }

    /// The index of the first edge above `x`, less one: -1 below the first edge, the number of bins
    /// from the last edge on. No edge is above not-a-number, so it gives the number of bins too.
    static int search(Vector<T> const& edges, T x)
    {
        return static_cast<int>(std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()) - 1;
    }

    /// Makes the table for find(). It stays empty for fewer than 4 bins, where search() is as fast;
    /// for more than 65,536, whose table would take over a megabyte; and for edges that do not
    /// ascend or whose range overflows.
    static RnCells<T> makeCells(Vector<T> const& edges)
    {
        RnCells<T> cells;
        const std::size_t bins = edges.size() - 1;
        if (bins < 4 || bins > maxBins || !isAscending(edges))
            return cells;
        const T range = edges[bins] - edges[0];
        const std::size_t count = bins * cellsPerBin;
        cells.perUnit = static_cast<T>(count) / range;
        if (cells.perUnit > T(0) && isFinite(cells.perUnit))  // 0 for a range that overflows
            fillCells(edges, cells, count);
        return cells;
    }

    /// What search() finds, from the table's two parts as a histogram keeps them.
    static int find(Vector<T> const& edges, Vector<std::uint32_t> const& cells, T perUnit, T x)
    {
        if (cells.empty())
            return search(edges, x);
        return findInCells(static_cast<std::uint32_t>(edges.size() - 1), edges.data(), cells.data(), perUnit, x);
    }

    /// find() for a table that is known not to be empty.
    static int findInCells(std::uint32_t bins, T const* edges, std::uint32_t const* cells, T perUnit, T x)
    {
        if (x >= edges[0] && x < edges[bins]) [[likely]]
            return findInCell(edges, cells, static_cast<std::int32_t>((x - edges[0]) * perUnit), x);
        return x < edges[0] ? -1 : static_cast<int>(bins);
    }

    /// find() for `n` numbers, with -1 for each number in no bin; the table must not be empty.
    /// `found` holds cells first, which vector registers compute, and then bins.
    static void findMany(unsigned int n, T const* x, Vector<T> const& edges, Vector<std::uint32_t> const& cells,
                         T perUnit, int* found)
    {
        T const* const first = edges.data();
        std::uint32_t const* const firstCell = cells.data();
        const T min = edges.front(), max = edges.back();
        RnWide::run<cellsOf>(n, x, min, max, perUnit, found);
        for (unsigned int i = 0; i < n; ++i)
            if (found[i] >= 0)
                found[i] = findInCell(first, firstCell, found[i], x[i]);
    }

private:
    static constexpr std::size_t maxBins = 65536;
    static constexpr std::size_t cellsPerBin = 4;

    /// The smallest T that is not below `count`, at most 2^31: a number below it is a bin and fits
    /// an int. Above 2^24 a float can fall short of the count; its neighbour is taken then, so that
    /// the last bins are not lost.
    static T limitOf(std::uint32_t count)
    {
        const T nearest = static_cast<T>(count);
        const bool isShort = static_cast<double>(nearest) < static_cast<double>(count);
        const T limit = isShort ? std::nextafter(nearest, std::numeric_limits<T>::infinity()) : nearest;
        return std::min(limit, T(2147483648.0));
    }

    /// The loop of findManyByWidth(). The comparisons are false for not-a-number, which thus
    /// becomes -1.
    template <class Index>
    static void placesOf(unsigned int n, T const* x, T min, T width, T scale, T limit, Index* found)
    {
        for (unsigned int i = 0; i < n; ++i) {
            const T place = (x[i] - min) / width * scale;
            found[i] = static_cast<Index>(static_cast<int>(place >= T(0) && place < limit ? place : T(-1)));
        }
    }

    /// The first loop of findMany().
    static void cellsOf(unsigned int n, T const* x, T min, T max, T perUnit, int* found)
    {
        for (unsigned int i = 0; i < n; ++i)
            found[i] = static_cast<int>(x[i] >= min && x[i] < max ? (x[i] - min) * perUnit : T(-1));
    }

    /// The bin of `x`, which lies in `cell`. The first step up is taken without a branch, since it
    /// is needed about as often as not; a second one is rare with four cells to a bin, and then all
    /// bins of the cell are searched.
    static int findInCell(T const* edges, std::uint32_t const* cells, std::int32_t cell, T x)
    {
        std::uint32_t bin = cells[cell];
        bin += edges[bin + 1] <= x ? 1 : 0;
        if (edges[bin + 1] <= x) [[unlikely]] {
            T const* const end = edges + cells[cell + 1] + 2;
            return static_cast<int>(std::upper_bound(edges + bin + 1, end, x) - edges) - 1;
        }
        return static_cast<int>(bin);
    }

    /// Two cells more than `count`: rounding may put a number into cell `count`, and findInCell()
    /// looks at the next one.
    static void fillCells(Vector<T> const& edges, RnCells<T>& cells, std::size_t count)
    {
        cells.lowestBins.resize(count + 2);
        std::uint32_t bin = 0;
        for (std::size_t cell = 0; cell < count + 2; ++cell) {
            while (bin + 1 < edges.size() - 1 && cellOf(edges, cells.perUnit, edges[bin + 1]) < cell)
                ++bin;
            cells.lowestBins[cell] = bin;
        }
    }

    static std::size_t cellOf(Vector<T> const& edges, T perUnit, T x)
    {
        return static_cast<std::size_t>((x - edges[0]) * perUnit);
    }

    /// Strictly; false with a not-a-number among the edges.
    static bool isAscending(Vector<T> const& edges)
    {
        bool ascends = true;
        for (std::size_t i = 1; i < edges.size(); ++i)
            ascends = ascends && edges[i - 1] < edges[i];
        return ascends;
    }

    static bool isFinite(T x) { return x <= std::numeric_limits<T>::max(); }
};

}  // namespace Vn
