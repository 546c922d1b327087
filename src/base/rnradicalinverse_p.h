#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace Vn
{

/// Radical inverses by the rule of RnVanDerCorputRng and by ways that give the same bits faster. Private to the library.
template <class T>
class RnRadicalInverse
{
public:
    /// The inverse of `n`, whatever the base.
    static T of(std::uint32_t base, T inverse, std::uint32_t n)
    {
        switch (base) {
        case 0:
        case 1:
            return T(0);
        case 2:
            return mirrored(n);
        case 3:
            return fromTable(table3, n);
        case 5:
            return fromTable(table5, n);
        default:
            return byDigits(base, inverse, n);
        }
    }

    /// The rule itself.
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

    /// The inverses of `first` and the `count - 1` numbers after it; `first + count` is 2^32 at most.
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
    static constexpr std::uint32_t maxSize = 1024;

    /// The inverses of all numbers of the lowest digits, and the weights of the digits above. What is left of a number is
    /// then added digit by digit, as the rule does.
    template <std::uint32_t theBase, std::uint32_t digits>
    struct Table
    {
        static constexpr std::uint32_t base = theBase;
        static constexpr std::uint32_t power(std::uint32_t exponent)
        {
            return exponent == 0 ? 1 : theBase * power(exponent - 1);
        }
        static constexpr std::uint32_t size = power(digits);

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
        std::array<T, 16> weights{};  ///< 3^(6 + 16) is above 2^32
    };

    /// The same for any base up to `maxSize`, made for one fill.
    struct OwnTable
    {
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

    static constexpr Table<3, 6> table3{};
    static constexpr Table<5, 4> table5{};

    static std::uint32_t reversed(std::uint32_t n)
    {
        n = ((n >> 1) & 0x55555555u) | ((n & 0x55555555u) << 1);
        n = ((n >> 2) & 0x33333333u) | ((n & 0x33333333u) << 2);
        n = ((n >> 4) & 0x0F0F0F0Fu) | ((n & 0x0F0F0F0Fu) << 4);
        n = ((n >> 8) & 0x00FF00FFu) | ((n & 0x00FF00FFu) << 8);
        return (n >> 16) | (n << 16);
    }

    /// Base 2. A double holds all 32 bits. A float holds 24 from the first one set: the 25th is half of its last place
    /// and rounds it to even, and what comes after is too small to change the sum it is added to.
    static T mirrored(std::uint32_t n)
    {
        std::uint32_t bits = reversed(n);
        if constexpr (std::is_same_v<T, float>)
            bits &= 0xFFFFFF80u >> (std::countl_zero(bits | 1));
        return static_cast<T>(bits) * T(0x1p-32);
    }

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

    static void fillZero(std::uint32_t count, T* values)
    {
        for (std::uint32_t i = 0; i < count; ++i)
            values[i] = T(0);
    }

    static void fillByDigits(std::uint32_t base, T inverse, std::uint32_t first, std::uint32_t count, T* values)
    {
        for (std::uint32_t i = 0; i < count; ++i)
            values[i] = byDigits(base, inverse, first + i);
    }

    /// Up to 2^25 the mirrored number fits 25 bits, and its conversion rounds a float as the rule does; up to 2^31 it
    /// fits the 31 bits of an integer that processors convert side by side.
    static constexpr int width = std::is_same_v<T, float> ? 25 : 31;

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
        std::array<std::uint32_t, 256> kept{};  ///< 25 bits from the first one set
    };
    static constexpr LowBits lowBits{};

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

    static void mirrorShort(std::uint32_t first, std::uint32_t low, std::uint32_t run, T* values)
    {
        constexpr T scale = width == 25 ? T(0x1p-25) : T(0x1p-31);
        const std::int32_t high = static_cast<std::int32_t>(reversed(first - low) >> (32 - width));
        for (std::uint32_t i = 0; i < run; ++i)
            values[i] = static_cast<T>(lowBits.values[low + i] + high) * scale;
    }

    /// The same by halves, whose sum is rounded once. In float the bits below the 25th are cut off first; where the lowest
    /// byte is 0 they begin further down.
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

    /// A run of points that share their higher digits.
    template <class AnyTable>
    static void fillRun(AnyTable const& table, std::uint32_t higher, T const* lower, std::uint32_t run, T* values)
    {
        T terms[32];
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
