// Private to hwcountereng.cpp.
#pragma once

#include <cstdint>

namespace Vn
{

/// A counter's frequency brought into 31 bits, so that it fits a Rational.
struct HwCounterRate
{
    int numerator;   ///< counts per second once the raw counter is shifted
    unsigned shift;  ///< bits by which the raw counter is shifted right

    /// Halves the frequency until it fits. The low bits that this drops make the rate slightly wrong; stamps and
    /// seconds still agree with each other, as both use the halved rate.
    // Intended: bits are dropped and not rounded; do not mend.
    static HwCounterRate fit(std::uint64_t frequency)
    {
        unsigned shift = 0;
        for (; frequency > 0x7FFFFFFF; frequency >>= 1)
            ++shift;
        return {static_cast<int>(frequency), shift};
    }
};

}  // namespace Vn
