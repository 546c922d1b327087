// Private to rnlecuyeruniformrng.imp.
#pragma once

#include <cstdint>

namespace Vn
{

/// One of the two state words of RnLecuyerUniformRng: a step multiplies it by `multiplier`, modulo
/// a prime a little below 2^31.
///
/// L'Ecuyer states a step by Schrage's method: k = s / (modulus / multiplier), s = multiplier * (s
/// - k * quotient) - k * remainder, and the modulus is added to a negative result. That keeps
///   within 32 signed bits and needs a division. For every 32-bit state its outcome is the
///   product's remainder in [0, modulus), so any other way to that remainder gives the same
///   numbers. The ways here need no division, and skip() takes many steps at once by a power of the
///   multiplier.
///
/// Tests: tests/base/rnuniformtest.cpp compares them with Schrage's method.
template <std::int32_t multiplier, std::int32_t modulus>
struct RnLecuyerWord
{
    /// The next state, from any 32-bit one. 2^31 leaves the remainder 2^31 - modulus, so what the
    /// product has above bit 30 counts that much each.
    ///
    ///     next(0)  ->  0
    ///     next(1)  ->  multiplier
    static std::int32_t next(std::int32_t state)
    {
        constexpr std::int64_t excess = (std::int64_t(1) << 31) - modulus;
        const std::int64_t product = static_cast<std::int64_t>(state) * multiplier;
        std::int64_t rest = (product & 0x7FFFFFFF) + (product >> 31) * excess;
        rest += (rest >> 63) & modulus;  // only a seed of 2^31 or more is negative here
        rest -= modulus;
        return static_cast<std::int32_t>(rest + ((rest >> 63) & modulus));
    }

    /// multiplier^steps modulo the modulus: the factor of that many steps.
    static constexpr std::uint32_t power(int steps)
    {
        std::uint64_t result = 1;
        for (int i = 0; i < steps; ++i)
            result = result * multiplier % modulus;
        return static_cast<std::uint32_t>(result);
    }

    /// A 32-bit state as its remainder in [0, modulus), which has the same successors. skip() needs
    /// it in that range.
    ///
    ///     -1       ->  modulus - 1
    ///     modulus  ->  0
    static std::int32_t residue(std::int32_t state)
    {
        const std::int64_t rest = std::int64_t(state) % modulus;
        return static_cast<std::int32_t>(rest < 0 ? rest + modulus : rest);
    }

    /// The state `steps` further, from one in [0, modulus). The quotient is estimated by a
    /// reciprocal of 32 bits; the estimate is at most one too small, so one conditional subtraction
    /// corrects the remainder.
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

    /// skip() in operations that SSE2, the baseline of x86-64, has for vectors. It lacks a 32-bit
    /// product and an unsigned comparison: the second product becomes shifts and additions, the
    /// comparison an arithmetic shift.
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
    /// `x` times 2^31 - modulus, which is 85 for the first word and 249 for the second.
    static std::uint32_t timesExcess(std::uint32_t x)
    {
        if constexpr (modulus == 2147483563) {
            const std::uint32_t five = x + (x << 2);
            return five + (five << 4);
        } else {
            static_assert(modulus == 2147483399);
            return (x << 8) - (x << 3) + x;
        }
    }
};

using RnLecuyerWord1 = RnLecuyerWord<40014, 2147483563>;
using RnLecuyerWord2 = RnLecuyerWord<40692, 2147483399>;

/// The integer that a draw is made of, from 0 to 2147483562: the sum of the two words, less the
/// first modulus, plus 2147483562 if that is below 1. Both words are below their moduli, so no step
/// leaves 32 signed bits. 0 needs a first word of 0, which a second seed of 0 gives.
inline std::int32_t combineLecuyerWords(std::int32_t state1, std::int32_t state2)
{
    const std::int32_t z = state1 - 2147483563 + state2;
    return z < 1 ? z + 2147483562 : z;
}

}  // namespace Vn
