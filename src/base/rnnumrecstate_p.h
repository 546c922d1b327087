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

    /// The state `steps` on: multiplied by a power of the multiplier, plus what the increments have come to.
    template <int steps>
    static std::uint32_t skip(std::uint32_t state)
    {
        constexpr std::uint64_t factor = power(steps);
        constexpr std::uint64_t sum = next(0, steps);
        return static_cast<std::uint32_t>((state * factor + sum) % modulus);
    }

    /// The slot without the check, for states below the modulus.
    static std::uint32_t slotOfState(std::uint32_t value)
    {
        return static_cast<std::uint32_t>((std::uint64_t(value << 11) * 15047991) >> 32) >> 17;
    }

    /// The integer part of value / modulus * SHUFFLESIZE. Reckoned in float or in double, in the order of the outputs,
    /// it comes out the same for each of the values below the modulus.
    static std::uint32_t slotOf(std::uint32_t value) { return checked(slotOfState(value)); }

    /// The same from an output.
    template <class T>
    static std::uint32_t slotOfOutput(T output)
    {
        return checked(static_cast<std::uint32_t>(output * T(SHUFFLESIZE)));
    }

private:
    static constexpr std::uint32_t power(int steps)
    {
        std::uint64_t result = 1;
        for (int i = 0; i < steps; ++i)
            result = result * multiplier % modulus;
        return static_cast<std::uint32_t>(result);
    }

    static constexpr std::uint32_t next(std::uint32_t state, int steps)
    {
        return steps == 0 ? state : next(next(state), steps - 1);
    }

    static std::uint32_t checked(std::uint32_t j)
    {
        if (!(j < SHUFFLESIZE)) [[unlikely]]
            Assertions::throwAssertionFailed("src/base/rnnumrecuniformrng", __LINE__, "j < SHUFFLESIZE");
        return j;
    }
};

}  // namespace Vn
