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

    /// Objects and counters are known by the system's numbers. `instanceName` is compared byte by byte with the name
    /// of each instance; it is ignored for an object without instances. A 32-bit value is zero-extended. Throws
    ///
    ///     no such object                          PrEx::ExBadCounterObjectIndex
    ///     no such instance                        PrEx::ExBadCounterInstance
    ///     no such counter                         PrEx::ExBadCounterIndex
    ///     a counter of variable size              PrEx::ExUnsupported
    ///     a size class that is not defined        ExInternalError
    ///
    static std::uint64_t getValue(unsigned int objectIndex, unsigned int counterIndex, char const* instanceName);
};

}  // namespace Vn
