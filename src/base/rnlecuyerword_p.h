#pragma once

#include <cstdint>

namespace Vn
{

/// One of the two words of RnLecuyerUniformRng: its state times a multiplier, modulo a prime a little below 2^31. Private
/// to the library.
///
/// The rule is L'Ecuyer's: k = s / (modulus / multiplier), s = multiplier * (s - k * quotient) - k * remainder, and the
/// modulus is added to what is negative. For every 32-bit state the outcome is the product's remainder from 0 to below the
/// modulus, so the same number may be had by any other way; these need no division.
template <std::int32_t multiplier, std::int32_t modulus>
struct RnLecuyerWord
{
    /// The next state, from any 32-bit one: what lies above bit 30 of the product counts 2^31 - modulus each.
    static std::int32_t next(std::int32_t state)
    {
        constexpr std::int64_t excess = (std::int64_t(1) << 31) - modulus;
        const std::int64_t product = static_cast<std::int64_t>(state) * multiplier;
        std::int64_t rest = (product & 0x7FFFFFFF) + (product >> 31) * excess;
        rest += (rest >> 63) & modulus;  // only a seed at or above 2^31 gets here
        rest -= modulus;
        return static_cast<std::int32_t>(rest + ((rest >> 63) & modulus));
    }

    /// multiplier^steps modulo the modulus.
    static constexpr std::uint32_t power(int steps)
    {
        std::uint64_t result = 1;
        for (int i = 0; i < steps; ++i)
            result = result * multiplier % modulus;
        return static_cast<std::uint32_t>(result);
    }

    /// A 32-bit state brought to what it counts as, from 0 to below the modulus.
    static std::int32_t residue(std::int32_t state)
    {
        const std::int64_t rest = std::int64_t(state) % modulus;
        return static_cast<std::int32_t>(rest < 0 ? rest + modulus : rest);
    }

    /// The state `steps` on, from one below the modulus. The quotient's estimate falls short by one at most.
    template <int steps>
    static std::int32_t skip(std::int32_t state)
    {
        constexpr std::uint32_t factor = power(steps);
        constexpr std::uint32_t scaled = static_cast<std::uint32_t>((std::uint64_t(factor) << 32) / modulus);
        const std::uint32_t s = static_cast<std::uint32_t>(state);
        const std::uint32_t quotient = static_cast<std::uint32_t>((std::uint64_t(s) * scaled) >> 32);
        const std::uint32_t rest = s * factor - quotient * static_cast<std::uint32_t>(modulus);
        constexpr std::uint32_t limit = static_cast<std::uint32_t>(modulus);
        return static_cast<std::int32_t>(rest < limit ? rest : rest - limit);
    }

    /// The same in operations that the baseline of x86-64 has side by side: no 32-bit product but where it must be, and no
    /// comparison without a sign.
    template <int steps>
    static std::int32_t skipInLanes(std::int32_t state)
    {
        constexpr std::uint32_t factor = power(steps);
        constexpr std::uint32_t scaled = static_cast<std::uint32_t>((std::uint64_t(factor) << 32) / modulus);
        const std::uint32_t s = static_cast<std::uint32_t>(state);
        const std::uint32_t quotient = static_cast<std::uint32_t>((std::uint64_t(s) * scaled) >> 32);
        const std::uint32_t rest = s * factor - (quotient << 31) + timesExcess(quotient);
        const std::int32_t below = static_cast<std::int32_t>(rest - static_cast<std::uint32_t>(modulus));
        return below + ((below >> 31) & modulus);
    }

private:
    /// Times 2^31 - modulus.
    static std::uint32_t timesExcess(std::uint32_t x)
    {
        if constexpr (modulus == 2147483563) {
            const std::uint32_t five = x + (x << 2);
            return five + (five << 4);  // 85
        } else {
            static_assert(modulus == 2147483399);
            return (x << 8) - (x << 3) + x;  // 249
        }
    }
};

using RnLecuyerWord1 = RnLecuyerWord<40014, 2147483563>;
using RnLecuyerWord2 = RnLecuyerWord<40692, 2147483399>;

/// The two words' sum, in two's complement, brought to 1 and above.
inline std::int32_t combineLecuyerWords(std::int32_t state1, std::int32_t state2)
{
    // Both lie below their moduli, so neither step leaves 32 bits.
    const std::int32_t z = state1 - 2147483563 + state2;
    return z < 1 ? z + 2147483562 : z;
}

}  // namespace Vn
