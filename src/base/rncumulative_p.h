#pragma once

#include <base/vector.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace Vn
{

/// The running sum of bins brought to a sum of 1, and where a number falls in it. Private to the library.
template <class T>
struct RnCumulative
{
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

    struct Place
    {
        std::size_t cell;
        T within;  ///< 0 to 1
    };

    /// The cell that `u` falls in. What the running sum doesn't reach, or starts above, is brought to its nearest end.
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
