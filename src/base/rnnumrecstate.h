#pragma once

#include <base/assertions.h>

#include <cstdint>

namespace Vn
{

/// The arithmetic behind RnNumRecUniformRng: a state below the modulus, and which slot of the shuffle table an output leads to.
/// Private to the library.
struct RnNumRecState
{
    static constexpr std::uint32_t modulus = 1771875;
    static constexpr std::uint32_t multiplier = 2416;
    static constexpr std::uint32_t increment = 374441;
    static constexpr std::uint32_t SHUFFLESIZE = 97;

    /// Fits 32 bits for every state below the modulus.
    static constexpr std::uint32_t next(std::uint32_t state) { return (state * multiplier + increment) % modulus; }

    /// The integer part of value / modulus * SHUFFLESIZE. Reckoned in float or in double, in the order of the outputs,
    /// it comes out the same for each of the values below the modulus.
    static std::uint32_t slotOf(std::uint32_t value)
    {
        return checked(static_cast<std::uint32_t>((value * std::uint64_t(15047991)) >> 38));
    }

    /// The same from an output.
    template <class T>
    static std::uint32_t slotOfOutput(T output)
    {
        return checked(static_cast<std::uint32_t>(output * T(SHUFFLESIZE)));
    }

    static std::uint32_t checked(std::uint32_t j)
    {
        if (!(j < SHUFFLESIZE)) [[unlikely]]
            Assertions::throwAssertionFailed("src/base/rnnumrecuniformrng", __LINE__, "j < SHUFFLESIZE");
        return j;
    }
};

}  // namespace Vn
