// Private to prperfcounterwindows.cpp.
#pragma once

#include <cstdint>

namespace Vn
{

/// Reads one value of the system's performance data. Windows only; not exported.
///
///     const std::uint64_t busy = PrPerfCounter::getValue(238, 6, "0");    // processor, idle time, first one
///
/// Static only; keeps nothing between calls, any thread. Each call makes the system gather the object's data, which
/// takes milliseconds.
/// Tests: tests/base/prperfcountertest.cpp.
class PrPerfCounter
{
public:
    PrPerfCounter() = delete;

    /// Objects and counters go by the numbers that the system gives them. `instanceName` is compared with the bytes
    /// of the instance's name, and doesn't count for an object without instances. A value of 32 bits is
    /// zero-extended. Throws PrEx::ExBadCounterObjectIndex, PrEx::ExBadCounterInstance, PrEx::ExBadCounterIndex,
    /// PrEx::ExUnsupported for a counter of variable size, and ExInternalError for a size that doesn't exist.
    static std::uint64_t getValue(unsigned int objectIndex, unsigned int counterIndex, char const* instanceName);
};

}  // namespace Vn
