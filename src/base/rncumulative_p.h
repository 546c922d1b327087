// Private to rnhistogrambirng.imp and rnhistogramrng.imp.
//
// A draw from a histogram searches the running sums of its bins for the first one above a uniform
// number. A guide makes the time of that search the same for any number of bins: the range from 0 to
// 1 is cut into equal slots, four or more for each bin, and the guide tells for each slot where the
// search begins. Most searches end there or one entry further.
//
// A generator has one vector for both, since its fields are part of the interface:
//
//     sums    one more than there are cells
//     limit   the guide serves numbers below it; 0 if there is no guide
//     scale   slots in a range of length 1, a power of two
//     slots   of 32 bits each, one more than `scale` tells, packed without regard to the size of T
//
// The slots' bytes are copied into and out of the vector's elements; as numbers these elements have
// no meaning.
#pragma once

#include <base/vector.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Vn
{

/// The distribution function of a histogram, and its inverse: a uniform number finds the cell that
/// holds it. A cell is a bin, or for two dimensions a bin by its index. An object is a view of the
/// vector that of() has made.
template <class T>
class RnCumulative
{
public:
    /// The running sum of `bins`, scaled to end at 1 up to rounding, and behind it what find() needs.
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
        const std::size_t cells = bins.size(), slots = slotsFor(cells);
        Vector<T> cumulative(cells + 1 + head + (slots + 1) * sizeof(std::uint32_t) / sizeof(T) + 1);
        for (std::size_t i = 0; i < cells; ++i)
            cumulative[i + 1] = cumulative[i] + inverse * bins[i];
        if (slots != 0 && isAscending(cumulative.data(), cells))
            makeGuide(cumulative.data(), cells, slots);
        return cumulative;
    }

    /// A view of `cumulative`, which of() has made of `cells` bins.
    RnCumulative(Vector<T> const& cumulative, std::size_t cells) : _sums(cumulative.data()), _cells(cells) {}

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
    /// The last sum can be a little below 1 by rounding, so a source in [0, 1) can pass it. The
    /// search must not leave the sums then, which searchFor() sees to.
    Place find(T u) const
    {
        T const* const guide = _sums + _cells + 1;
        if (!(u >= T(0) && u < guide[limit])) [[unlikely]]
            return searchFor(_sums, _cells, u);
        // The first step up is taken without a branch, since it is needed about as often as not. A
        // second one is rare, and then the rest of the slot's sums are searched.
        const std::uint32_t slot = static_cast<std::uint32_t>(static_cast<std::int32_t>(u * guide[scale]));
        std::size_t p = slotAt(guide, slot);
        p += _sums[p] <= u ? 1 : 0;
        if (_sums[p] <= u) [[unlikely]]
            p = static_cast<std::size_t>(std::upper_bound(_sums + p + 1, _sums + slotAt(guide, slot + 1), u) -
                                         _sums);
        return placeIn(_sums, p, u);
    }

private:
    /// Elements of the guide, counted from its begin.
    enum Element : std::size_t
    {
        limit,
        scale,
        head  ///< where the slots begin
    };

    static constexpr std::size_t slotsPerCell = 4;
    static constexpr std::size_t maxSlots = std::size_t(1) << 18;  ///< one megabyte; more cells share slots
    static constexpr std::size_t maxCells = std::numeric_limits<std::uint32_t>::max();

    /// Slots in a range of length 1, for so many cells; 0 for none.
    static std::size_t slotsFor(std::size_t cells)
    {
        return cells > maxCells ? 0 : std::bit_ceil(std::min(cells * slotsPerCell, maxSlots));
    }

    /// Whether slots may cut the search short; false with a not-a-number among the sums, or where
    /// they fall, as negative or infinite bins make them. The binary search is the rule: where sums
    /// do not ascend, only the same search gives the same result.
    static bool isAscending(T const* sums, std::size_t cells)
    {
        return std::adjacent_find(sums, sums + cells + 1, [](T a, T b) { return !(a <= b); }) == sums + cells + 1;
    }

    /// Slot i holds the index of the first sum behind the 0 that is not in a lower slot. So a sum
    /// before it is below all numbers of the slot, and the sum that slot i + 1 tells is above them. A
    /// product with a power of two is exact, so nothing is rounded.
    static void makeGuide(T* sums, std::size_t cells, std::size_t slots)
    {
        T* const guide = sums + cells + 1;
        guide[limit] = std::min(sums[cells], T(1));
        guide[scale] = static_cast<T>(slots);
        std::uint32_t entry = 1;
        for (std::size_t slot = 0; slot <= slots; ++slot) {
            while (entry < cells && sums[entry] * guide[scale] < static_cast<T>(slot))
                ++entry;
            std::memcpy(bytesOf(guide + head) + slot * sizeof entry, &entry, sizeof entry);
        }
    }

    static std::uint32_t slotAt(T const* guide, std::size_t slot)
    {
        std::uint32_t entry;
        std::memcpy(&entry, bytesOf(guide + head) + slot * sizeof entry, sizeof entry);
        return entry;
    }

    static std::byte* bytesOf(T* elements) { return reinterpret_cast<std::byte*>(elements); }
    static std::byte const* bytesOf(T const* elements) { return reinterpret_cast<std::byte const*>(elements); }

    /// find() by the rule, for any sums and any number. Out of line, so that find() stays small where
    /// it is inlined.
    [[gnu::noinline]] static Place searchFor(T const* sums, std::size_t cells, T u)
    {
        if (cells == 0)
            return {0, std::numeric_limits<T>::quiet_NaN()};
        u = u < T(0) ? T(0) : u;
        T const* const end = sums + cells + 1;
        T const* above = std::upper_bound(sums, end, u);
        if (above == end && u >= sums[cells]) {
            u = sums[cells];
            above = std::lower_bound(sums, end, u);
        }
        return placeIn(sums, std::clamp(static_cast<std::size_t>(above - sums), std::size_t(1), cells), u);
    }

    /// The place of `u` in the cell that ends at entry `p`.
    static Place placeIn(T const* sums, std::size_t p, T u)
    {
        return {p - 1, (u - sums[p - 1]) / (sums[p] - sums[p - 1])};
    }

    T const* _sums;
    std::size_t _cells;
};

}  // namespace Vn
