// Private to rnnumrecuniformrng.imp.
#pragma once

#include <base/assertions.h>

#include <cstdint>

namespace Vn
{

/// The integer arithmetic of RnNumRecUniformRng: the linear congruential state, and the slot of the
/// shuffle table that an output selects.
///
/// The rule takes the slot from the floating-point output. Waiting for that conversion would make
/// each draw wait for the one before, so the slot is computed from the integer behind the output;
/// the test compares both for each of the 1,771,875 values.
///
/// Tests: tests/base/rnuniformtest.cpp.
struct RnNumRecState
{
    static constexpr std::uint32_t modulus = 1771875;
    static constexpr std::uint32_t multiplier = 2416;
    static constexpr std::uint32_t increment = 374441;
    /// Slots of the table. Spelled like this, since the text of the assertion names it.
    static constexpr std::uint32_t SHUFFLESIZE = 97;

    /// The next state. For a state below the modulus the product fits 32 bits.
    static constexpr std::uint32_t next(std::uint32_t state) { return (state * multiplier + increment) % modulus; }

    /// The state `steps` further: times a power of the multiplier, plus what the increments sum up
    /// to.
    template <int steps>
    static std::uint32_t skip(std::uint32_t state)
    {
        constexpr std::uint64_t factor = power(steps);
        constexpr std::uint64_t sum = next(0, steps);
        return static_cast<std::uint32_t>((state * factor + sum) % modulus);
    }

    /// slotOf() without the check, for a state below the modulus: value * 97 / modulus by a product
    /// and a shift, where 15047991 / 2^38 stands for 97 / modulus. Never above 96.
    static std::uint32_t slotOfState(std::uint32_t value)
    {
        return static_cast<std::uint32_t>((std::uint64_t(value << 11) * 15047991) >> 32) >> 17;
    }

    /// The slot that the output made of `value` selects: the integer part of value / modulus *
    /// SHUFFLESIZE, computed in float or in double in the order of the rule. Both give this for
    /// each value below the modulus.
    ///
    ///     0        ->  0
    ///     1771874  ->  96
    ///
    /// Throws ExInternalError ("j < SHUFFLESIZE") for a slot beyond the table, which no value below
    /// the modulus selects.
    static std::uint32_t slotOf(std::uint32_t value) { return checked(slotOfState(value)); }

    /// The slot by the rule's own arithmetic, from an output in [0, 1). Throws as slotOf() for 1
    /// and more.
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

    /// As next(), `steps` times.
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
