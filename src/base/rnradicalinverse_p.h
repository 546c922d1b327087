// Private to rnvandercorputrng.imp.
//
// Radical inverses by the rule of RnVanDerCorputRng, and the same bits faster.
//
// The rule, byDigits(), adds up digit times weight from the lowest digit on, in T, with each weight
// the one before times the rounded inverse of the base. Only ways that keep that order of roundings
// may replace it:
//
// - Base 2: all sums but the last are exact, so the point is the number's bits reversed, rounded
//   once.
// - Bases 3 and 5: the sum over the lowest 6 or 4 digits comes from a table; the digits above are
//   added as the rule does.
// - Other bases: such a table is made for one fill, if the fill is long enough to pay for it.
// - Bases 0 and 1 have no digits; every point is 0.
//
// Two examples of what order means: in double, two thirds plus a ninth, each a product of rounded
// thirds, is not 7/9 rounded; the weight of base 10's third digit is not 0.001 rounded but a
// product of three rounded tenths. Such differences in the last place are part of the sequence.
//
// A fill goes run by run. The numbers of a run share all digits above the table's, so that the
// terms of the upper digits are computed once and then added to the table's sums, term by term:
// loops without a branch for vector registers.
//
// Tests: tests/base/rnquasitest.cpp compares each way with the rule, bit by bit.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace Vn
{

/// Radical inverses in T. `inverse` is always T(1) / T(base), as the generator keeps it.
template <class T>
class RnRadicalInverse
{
public:
    /// The radical inverse of `n`.
    ///
    ///     of(2, 0.5, 6)  ->  0.375: 110 in base 2, reversed 0.011
    ///     of(2, 0.5, 0)  ->  0
    ///     of(1, 1, 6)    ->  0
    static T of(std::uint32_t base, T inverse, std::uint32_t n)
    {
        if (base == 2) [[likely]]  // the default base; a jump table would cost as much as the point
            return mirrored(n);
        switch (base) {
        case 0:
        case 1:
            return T(0);
        case 3:
            return fromTable(table3, n);
        case 5:
            return fromTable(table5, n);
        default:
            return byDigits(base, inverse, n);
        }
    }

    /// The rule itself, for bases from 2 on. Zero digits are skipped: they would add nothing, not
    /// even a rounding.
    static constexpr T byDigits(std::uint32_t base, T inverse, std::uint32_t n)
    {
        T value = T(0);
        T weight = inverse;
        while (n != 0) {
            const std::uint32_t digit = n % base;
            n /= base;
            if (digit != 0)
                value += static_cast<T>(digit) * weight;
            weight *= inverse;
        }
        return value;
    }

    /// Writes the radical inverses of `first` and the `count` - 1 numbers after it. `first` +
    /// `count` is at most 2^32.
    ///
    /// A table of its own serves bases up to `maxSize`, if the fill is twice the base or longer: at
    /// that length the table, one multiplication for each entry, costs less than the divisions that
    /// it saves.
    static void fill(std::uint32_t base, T inverse, std::uint32_t first, std::uint32_t count, T* values)
    {
        if (base < 2)
            fillZero(count, values);
        else if (base == 2)
            fillMirrored(first, count, values);
        else if (base == 3)
            fillFromTable(table3, first, count, values);
        else if (base == 5)
            fillFromTable(table5, first, count, values);
        else if (base <= maxSize && count >= 2 * base)
            fillFromTable(OwnTable(base, inverse, count), first, count, values);
        else
            fillByDigits(base, inverse, first, count, values);
    }

private:
    static constexpr std::uint32_t maxSize = 1024;  ///< entries of a table, so 8 kilobytes of stack at most

    /// Sums over the lowest `digits` digits of all numbers that have no others, and the weights of
    /// the digits above. Made at compile time.
    template <std::uint32_t theBase, std::uint32_t digits>
    struct Table
    {
        static constexpr std::uint32_t base = theBase;
        /// theBase^exponent; used up to `digits`.
        static constexpr std::uint32_t power(std::uint32_t exponent)
        {
            return exponent == 0 ? 1 : theBase * power(exponent - 1);
        }
        static constexpr std::uint32_t size = power(digits);

        /// The weights go on from where the rule's loop would be after `digits` digits.
        constexpr Table()
        {
            constexpr T inverse = T(1) / T(theBase);
            for (std::uint32_t n = 0; n < size; ++n)
                values[n] = byDigits(theBase, inverse, n);
            T weight = inverse;
            for (std::uint32_t i = 0; i < digits; ++i)
                weight *= inverse;
            for (T& higher : weights) {
                higher = weight;
                weight *= inverse;
            }
        }

        std::array<T, size> values{};
        std::array<T, 16> weights{};  ///< enough for 32 bits: 3^(6 + 16) is above 2^32
    };

    /// Table for any base up to `maxSize`, made for one fill: with as many digits as fit, and as
    /// `count` pays for.
    struct OwnTable
    {
        /// Each round adds one digit: the sums for all values of the lower digits, plus the new
        /// digit times its weight. That is the rule's own order, so no sum needs more than one
        /// addition.
        OwnTable(std::uint32_t theBase, T inverse, std::uint32_t count) : base(theBase), size(1)
        {
            T weight = inverse;
            values[0] = T(0);
            while (size * base <= maxSize && size <= count / base) {
                for (std::uint32_t i = size; i < size * base; ++i)
                    values[i] = values[i % size] + static_cast<T>(i / size) * weight;
                size *= base;
                weight *= inverse;
            }
            for (T& higher : weights) {
                higher = weight;
                weight *= inverse;
            }
        }

        std::uint32_t base;
        std::uint32_t size;
        std::array<T, maxSize> values;
        std::array<T, 32> weights;
    };

    // 729 and 625 entries: two tables together in the first-level cache, in float and in double.
    static constexpr Table<3, 6> table3{};
    static constexpr Table<5, 4> table5{};

    /// The 32 bits of `n` in reverse order: neighbours change places, then pairs, and so on.
    static std::uint32_t reversed(std::uint32_t n)
    {
        n = ((n >> 1) & 0x55555555u) | ((n & 0x55555555u) << 1);
        n = ((n >> 2) & 0x33333333u) | ((n & 0x33333333u) << 2);
        n = ((n >> 4) & 0x0F0F0F0Fu) | ((n & 0x0F0F0F0Fu) << 4);
        n = ((n >> 8) & 0x00FF00FFu) | ((n & 0x00FF00FFu) << 8);
        return (n >> 16) | (n << 16);
    }

    /// The inverse in base 2: the reversed bits as an integer, over 2^32. A double holds all 32
    /// bits.
    ///
    ///     1  ->  0x80000000 / 2^32  =  0.5
    ///     3  ->  0xC0000000 / 2^32  =  0.75
    ///
    /// A float holds 24, from the first one set. The rule adds the 25th to them as half a last
    /// place, which rounds to even. Each bit after it is less than half a last place and so is lost
    /// when the rule adds it. Hence those are cleared, and the conversion rounds as the rule does.
    static T mirrored(std::uint32_t n)
    {
        std::uint32_t bits = reversed(n);
        if constexpr (std::is_same_v<T, float>)
            bits &= 0xFFFFFF80u >> (std::countl_zero(bits | 1));
        return static_cast<T>(bits) * T(0x1p-32);
    }

    /// One number by a table: the sum over its lower digits, then the upper digits by the rule.
    ///
    /// The digits are below 5, so that the detour by a signed integer, which is quicker to convert,
    /// is safe.
    template <class AnyTable>
    static T fromTable(AnyTable const& table, std::uint32_t n)
    {
        T value = table.values[n % AnyTable::size];
        n /= AnyTable::size;
        for (T const* weight = table.weights.data(); n != 0; ++weight) {
            value += static_cast<T>(static_cast<std::int32_t>(n % AnyTable::base)) * *weight;
            n /= AnyTable::base;
        }
        return value;
    }

    /// Bases 0 and 1. They have no digits, and byDigits() would divide by zero or never end.
    static void fillZero(std::uint32_t count, T* values)
    {
        for (std::uint32_t i = 0; i < count; ++i)
            values[i] = T(0);
    }

    /// Large bases and short fills: every point by the rule.
    static void fillByDigits(std::uint32_t base, T inverse, std::uint32_t first, std::uint32_t count, T* values)
    {
        for (std::uint32_t i = 0; i < count; ++i)
            values[i] = byDigits(base, inverse, first + i);
    }

    /// Bits of a number whose inverse needs no care in base 2. With 25 bits the conversion rounds a
    /// float as the rule does. With 31 a double's integer fits a signed one, whose conversion
    /// vector registers have.
    static constexpr int width = std::is_same_v<T, float> ? 25 : 31;

    /// The lowest byte of a number, reversed and moved to the top of `width` bits, and the mask
    /// that clears what a float loses.
    struct LowBits
    {
        constexpr LowBits()
        {
            for (std::uint32_t n = 0; n < 256; ++n) {
                for (int bit = 0; bit < 8; ++bit)
                    values[n] |= static_cast<std::int32_t>(((n >> bit) & 1) << (width - 1 - bit));
                kept[n] = width == 25 ? 0xFFFFFF80u >> (n != 0 ? std::countr_zero(n) : 0) : 0xFFFFFFFFu;
            }
        }
        std::array<std::int32_t, 256> values{};
        std::array<std::uint32_t, 256> kept{};  ///< 25 bits from the first one set; all for a double
    };
    static constexpr LowBits lowBits{};

    /// Base 2, in runs of numbers that share all bits above the lowest byte. The first run ends at
    /// the next multiple of 256, and so does each later one, so that a run's lowest bytes are
    /// consecutive entries of `lowBits`.
    static void fillMirrored(std::uint32_t first, std::uint32_t count, T* values)
    {
        while (count != 0) {
            const std::uint32_t low = first & 255;
            const std::uint32_t room = 256 - low;
            const std::uint32_t run = count < room ? count : room;
            if ((first >> width) == 0)
                mirrorShort(first, low, run, values);
            else
                mirrorLong(first, low, run, values);
            first += run;
            count -= run;
            values += run;
        }
    }

    /// A run of numbers below 2^width: upper and lower part of the reversed bits do not overlap, so
    /// a sum joins them.
    static void mirrorShort(std::uint32_t first, std::uint32_t low, std::uint32_t run, T* values)
    {
        constexpr T scale = width == 25 ? T(0x1p-25) : T(0x1p-31);
        const std::int32_t high = static_cast<std::int32_t>(reversed(first - low) >> (32 - width));
        for (std::uint32_t i = 0; i < run; ++i)
            values[i] = static_cast<T>(lowBits.values[low + i] + high) * scale;
    }

    /// A run of any other numbers. An unsigned integer of 32 bits has no conversion in vector
    /// registers, so its two halves are converted and their sum is rounded once. In float the mask
    /// goes by the lowest byte, which holds the first bit of the inverse; a byte of 0 has none, and
    /// that point is computed alone.
    static void mirrorLong(std::uint32_t first, std::uint32_t low, std::uint32_t run, T* values)
    {
        const std::uint32_t high = reversed(first - low);
        for (std::uint32_t i = 0; i < run; ++i) {
            const std::uint32_t bits =
                (static_cast<std::uint32_t>(lowBits.values[low + i]) << (32 - width) | high) &
                lowBits.kept[low + i];
            const T upper = static_cast<T>(static_cast<std::int32_t>(bits >> 16));
            const T lower = static_cast<T>(static_cast<std::int32_t>(bits & 0xFFFF));
            values[i] = (upper * T(65536) + lower) * T(0x1p-32);
        }
        if (low == 0)
            values[0] = mirrored(first);
    }

    /// Any other base with a table, in runs of numbers that share the digits above the table's. A
    /// run ends where those change, at the next multiple of the table's size.
    template <class AnyTable>
    static void fillFromTable(AnyTable const& table, std::uint32_t first, std::uint32_t count, T* values)
    {
        while (count != 0) {
            const std::uint32_t low = first % table.size;
            const std::uint32_t room = table.size - low;
            const std::uint32_t run = count < room ? count : room;
            fillRun(table, first / table.size, table.values.data() + low, run, values);
            first += run;
            count -= run;
            values += run;
        }
    }

    /// A run of points that share the digits above the table's, in the rule's order: the table's
    /// sum first, then term by term upward.
    template <class AnyTable>
    static void fillRun(AnyTable const& table, std::uint32_t higher, T const* lower, std::uint32_t run, T* values)
    {
        T terms[32];  // base 2 would have as many
        int count = 0;
        for (T const* weight = table.weights.data(); higher != 0; ++weight, higher /= table.base)
            terms[count++] = static_cast<T>(higher % table.base) * *weight;
        const T first = count != 0 ? terms[0] : T(0);
        for (std::uint32_t i = 0; i < run; ++i)
            values[i] = lower[i] + first;
        for (int k = 1; k < count; ++k)
            for (std::uint32_t i = 0; i < run; ++i)
                values[i] += terms[k];
    }
};

}  // namespace Vn
