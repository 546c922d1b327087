// Private to rnhistogrambirng.imp and rnhistogramrng.imp.
#pragma once

#include <base/vector.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace Vn
{

/// The distribution function of a histogram, and its inverse: a uniform number finds the cell that
/// holds it. A cell is a bin, or for two dimensions a bin by its index.
template <class T>
struct RnCumulative
{
    /// The running sum of `bins`, scaled to end at 1 up to rounding.
    ///
    ///     {1, 3}  ->  0, 0.25, 1
    ///     {}      ->  0
    ///     {0, 0}  ->  0 and not-a-number, as the sum has no reciprocal
    ///
    /// Each bin is multiplied by the reciprocal of the sum and then added. A division instead would
    /// change the last place of the samples.
    static Vector<T> of(Vector<T> const& bins)
    {
        T sum = T(0);
        for (T bin : bins)
            sum += bin;
        const T inverse = T(1) / sum;
        Vector<T> cumulative(bins.size() + 1);
        for (std::size_t i = 0; i < bins.size(); ++i)
            cumulative[i + 1] = cumulative[i] + inverse * bins[i];
        return cumulative;
    }

    /// Where a number falls.
    struct Place
    {
        std::size_t cell;
        T within;  ///< 0 at the cell's lower end, 1 at its upper one
    };

    /// The cell of `u`. Of two cells that meet at `u` it is the upper one; empty cells are stepped
    /// over.
    ///
    ///     u = 0.25 in {0, 0.25, 1}  ->  cell 1, within 0
    ///     u below 0                 ->  as 0
    ///     u at or above the last    ->  the last cell that is not empty, within 1
    ///     no cells                  ->  within is not-a-number
    ///
    /// The last entry can be a little below 1 by rounding, so a source in [0, 1) can pass it. The
    /// search must not leave the array then.
    static Place find(Vector<T> const& cumulative, T u)
    {
        const std::size_t cells = cumulative.size() - 1;
        if (cells == 0)
            return {0, std::numeric_limits<T>::quiet_NaN()};
        T const* const first = cumulative.data();
        T const* const end = first + cells + 1;
        if (u < T(0))
            u = T(0);
        T const* above = std::upper_bound(first, end, u);
        if (above == end && u >= first[cells]) {
            u = first[cells];
            above = std::lower_bound(first, end, u);
        }
        const std::size_t p = std::clamp(static_cast<std::size_t>(above - first), std::size_t(1), cells);
        return {p - 1, (u - first[p - 1]) / (first[p] - first[p - 1])};
    }
};

}  // namespace Vn
