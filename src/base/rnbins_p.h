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

/// Edges of bins and the search in them. Private to the library.
template <class T>
struct RnBins
{
    /// n + 1 evenly spaced edges. With no bins the one edge is `max`.
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

    /// The integer below `x`; the nearest limit if it has none in 32 bits, and `ifNot` for not-a-number.
    static int floorOf(T x, int ifNot)
    {
        if (x >= T(0) && x < T(2147483648.0)) [[likely]]
            return static_cast<int>(x);
        if (x < T(0)) {
            if (x < T(-2147483648.0))
                return std::numeric_limits<int>::min();
            const int cut = static_cast<int>(x);
            return static_cast<T>(cut) > x ? cut - 1 : cut;
        }
        return x > T(0) ? std::numeric_limits<int>::max() : ifNot;
    }

    /// The bin of `x` among bins of equal width, by the rule of RnUniformHistogram: a division of the range from the first
    /// edge to the last. The range is always taken from the edges, so that no second copy of it can be out of date.
    static int findByWidth(Vector<T> const& edges, T x)
    {
        const std::uint32_t count = static_cast<std::uint32_t>(edges.size() - 1);
        const T width = edges.back() - edges.front();
        return floorOf((x - edges.front()) / width * static_cast<T>(count), static_cast<int>(count));
    }

    /// findByWidth() for `n` numbers, with -1 for each that lies in no bin.
    template <class Index>
    static void findManyByWidth(unsigned int n, T const* x, Vector<T> const& edges, Index* found)
    {
        const std::uint32_t count = static_cast<std::uint32_t>(edges.size() - 1);
        const T min = edges.front();
        RnWide::run<placesOf<Index>>(n, x, min, edges.back() - min, static_cast<T>(count), placesBelow(count),
                                     found);
    }

    /// The first edge above `x`, less one; the number of bins if none is above, so for not-a-number too.
    static int search(Vector<T> const& edges, T x)
    {
        return static_cast<int>(std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()) - 1;
    }

    /// For each of `_cells` - 2 equal cells over the whole range: the lowest bin that reaches into it, so that a search
    /// can start there. Empty where that would not help or the edges don't ascend, and then search() serves.
    ///
    /// A number's cell never falls as the number rises, rounding included: an edge in a lower cell than a number's is below
    /// the number.
    static Vector<std::uint32_t> cellsFor(Vector<T> const& edges, T& scale)
    {
        Vector<std::uint32_t> cells;
        const std::size_t bins = edges.size() - 1;
        if (bins < 4 || bins > maxBins || !isAscending(edges))
            return cells;
        const std::size_t count = bins * cellsPerBin;
        scale = static_cast<T>(count) / (edges[bins] - edges[0]);
        if (!(scale > T(0) && scale <= std::numeric_limits<T>::max() &&
              edges[bins] - edges[0] <= std::numeric_limits<T>::max()))
            return cells;
        cells.resize(count + 2);
        std::uint32_t bin = 0;
        for (std::size_t cell = 0; cell < cells.size(); ++cell) {
            while (bin + 1 < bins && cellOf(edges, scale, edges[bin + 1]) < cell)
                ++bin;
            cells[cell] = bin;
        }
        return cells;
    }

    /// What search() finds, by the cells.
    static int find(Vector<T> const& edges, Vector<std::uint32_t> const& cells, T scale, T x)
    {
        if (cells.empty())
            return search(edges, x);
        return findInCells(static_cast<std::uint32_t>(edges.size() - 1), edges.data(), cells.data(), scale, x);
    }

    static int findInCells(std::uint32_t bins, T const* edges, std::uint32_t const* cells, T scale, T x)
    {
        if (x >= edges[0] && x < edges[bins]) [[likely]]
            return findInside(edges, cells, scale, x);
        return x < edges[0] ? -1 : static_cast<int>(bins);
    }

    /// For `x` at or above the first edge and below the last.
    static int findInside(T const* edges, std::uint32_t const* cells, T scale, T x)
    {
        return findInCell(edges, cells, static_cast<std::int32_t>((x - edges[0]) * scale), x);
    }

    /// The same for many, with -1 for all that lie in no bin. Cells come first, as processors find several side by side.
    static void findMany(unsigned int n, T const* x, Vector<T> const& edges, Vector<std::uint32_t> const& cells,
                         T scale, int* found)
    {
        T const* const first = edges.data();
        std::uint32_t const* const firstCell = cells.data();
        const T min = edges.front(), max = edges.back();
        RnWide::run<cellsOf>(n, x, min, max, scale, found);
        for (unsigned int i = 0; i < n; ++i)
            if (found[i] >= 0)
                found[i] = findInCell(first, firstCell, found[i], x[i]);
    }

private:
    /// The least number in T that is `count` or more, and 2^31 at most: what is below it is a bin and fits an int. A float
    /// may hold only a number below a `count` above 2^24, hence the step to its neighbour.
    static T placesBelow(std::uint32_t count)
    {
        const T near = static_cast<T>(count);
        const bool isShort = static_cast<double>(near) < static_cast<double>(count);
        const T limit = isShort ? std::nextafter(near, std::numeric_limits<T>::infinity()) : near;
        return std::min(limit, T(2147483648.0));
    }

    template <class Index>
    static void placesOf(unsigned int n, T const* x, T min, T width, T scale, T limit, Index* found)
    {
        for (unsigned int i = 0; i < n; ++i) {
            const T place = (x[i] - min) / width * scale;
            found[i] = static_cast<Index>(static_cast<int>(place >= T(0) && place < limit ? place : T(-1)));
        }
    }

    static void cellsOf(unsigned int n, T const* x, T min, T max, T scale, int* found)
    {
        for (unsigned int i = 0; i < n; ++i)
            found[i] = static_cast<int>(x[i] >= min && x[i] < max ? (x[i] - min) * scale : T(-1));
    }

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

    static constexpr std::size_t maxBins = 65536;
    static constexpr std::size_t cellsPerBin = 4;

    static bool isAscending(Vector<T> const& edges)
    {
        bool ascends = true;
        for (std::size_t i = 1; i < edges.size(); ++i)
            ascends = ascends && edges[i - 1] < edges[i];
        return ascends;
    }

    static std::size_t cellOf(Vector<T> const& edges, T scale, T x)
    {
        return static_cast<std::size_t>((x - edges[0]) * scale);
    }
};

}  // namespace Vn
