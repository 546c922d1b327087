// Private to rnhistogrambirng.imp and rnhistogramrng.imp.
#pragma once

#include <base/vector.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Vn
{

/// A table that tells where a search in a distribution function begins: the range from 0 to 1 is cut
/// into equal slots, four or more for each cell.
template <class T>
struct RnGuide
{
    Vector<std::uint32_t>
        lowest;      ///< the first entry after the 0 that is not in a lower slot, for each slot and one more
    T scale = T(0);  ///< slots in a range of length 1, a power of two
};

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

    /// The guide of find(). It stays empty, and find() then searches all entries, for a distribution
    /// function that falls, holds not-a-number or ends far from 1, as negative or infinite bins make
    /// it. The binary search is the rule: where entries do not ascend, only the same search gives the
    /// same result.
    static RnGuide<T> makeGuide(Vector<T> const& cumulative)
    {
        RnGuide<T> guide;
        const std::size_t cells = cumulative.size() - 1;
        if (cells > maxCells || !isAscending(cumulative))
            return guide;
        guide.scale = static_cast<T>(std::bit_ceil(std::min(cells * slotsPerCell, maxSlots)));
        guide.lowest.resize(slotOf(cumulative.back(), guide.scale) + 2);
        std::uint32_t entry = 1;
        for (std::size_t slot = 0; slot < guide.lowest.size(); ++slot) {
            while (entry < cells && slotOf(cumulative[entry], guide.scale) < slot)
                ++entry;
            guide.lowest[slot] = entry;
        }
        return guide;
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
    /// search must not leave the array then, which searchFor() sees to. `guide` and `scale` are the
    /// parts of the cumulative's guide, as a generator keeps them.
    static Place find(Vector<T> const& cumulative, Vector<std::uint32_t> const& guide, T scale, T u)
    {
        u = u < T(0) ? T(0) : u;
        if (guide.empty() || !(u < cumulative.back())) [[unlikely]]
            return searchFor(cumulative, u);
        // The first step up is taken without a branch, since it is needed about as often as not. A
        // second one is rare, and then the rest of the slot's entries are searched.
        T const* const first = cumulative.data();
        std::uint32_t const* const lowest = guide.data() + slotOf(u, scale);
        std::size_t p = *lowest;
        p += first[p] <= u ? 1 : 0;
        if (first[p] <= u) [[unlikely]]
            p = static_cast<std::size_t>(std::upper_bound(first + p + 1, first + lowest[1], u) - first);
        return placeIn(first, p, u);
    }

private:
    static constexpr std::size_t slotsPerCell = 4;
    static constexpr std::size_t maxSlots = std::size_t(1) << 18;  ///< one megabyte; more cells share slots
    static constexpr std::size_t maxCells = std::numeric_limits<std::int32_t>::max();

    /// The slot of a number from 0 up to the last entry. It never falls as the number rises, since a
    /// product with a positive factor keeps the order. So an entry in a lower slot than `u` is below
    /// `u`, and one in a higher slot is above it. The scale is a power of two, so nothing is rounded.
    static std::uint32_t slotOf(T u, T scale)
    {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(u * scale));
    }

    /// Whether slots may cut the search short. False with a not-a-number among the entries.
    static bool isAscending(Vector<T> const& cumulative)
    {
        bool ascends = cumulative.back() > T(0) && cumulative.back() < T(2);
        for (std::size_t i = 1; i < cumulative.size(); ++i)
            ascends = ascends && cumulative[i - 1] <= cumulative[i];
        return ascends;
    }

    /// find() by the rule, for any entries and any number that is not below 0. Out of line, so that
    /// find() stays small where it is inlined.
    [[gnu::noinline]] static Place searchFor(Vector<T> const& cumulative, T u)
    {
        const std::size_t cells = cumulative.size() - 1;
        if (cells == 0)
            return {0, std::numeric_limits<T>::quiet_NaN()};
        T const* const first = cumulative.data();
        T const* const end = first + cells + 1;
        T const* above = std::upper_bound(first, end, u);
        if (above == end && u >= first[cells]) {
            u = first[cells];
            above = std::lower_bound(first, end, u);
        }
        return placeIn(first, std::clamp(static_cast<std::size_t>(above - first), std::size_t(1), cells), u);
    }

    /// The place of `u` in the cell that ends at entry `p`.
    static Place placeIn(T const* first, std::size_t p, T u)
    {
        return {p - 1, (u - first[p - 1]) / (first[p] - first[p - 1])};
    }
};

}  // namespace Vn
