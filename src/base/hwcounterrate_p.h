// Private to hwcountereng.cpp.
#pragma once

#include <cstdint>

namespace Vn
{

/// How a counter's frequency is brought into 31 bits: counts per second after the raw counter is shifted right.
struct HwCounterRate
{
    int numerator;
    unsigned shift;

    /// The low bits that the halving drops are lost for good; stamps and seconds agree all the same, as both go by
    /// what is left.
    static HwCounterRate fit(std::uint64_t frequency)
    {
        unsigned shift = 0;
        for (; frequency > 0x7FFFFFFF; frequency >>= 1)
            ++shift;
        return {static_cast<int>(frequency), shift};
    }
};

}  // namespace Vn
