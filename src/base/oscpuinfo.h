#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The processor that the program runs on, and the counter behind HwCounter.
///
/// Static only. The package `osal` calls initialize(); before that the frequency is 0. Afterwards any thread reads.
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT OsCpuInfo
{
public:
    OsCpuInfo() = delete;

    /// Asks the system for the counter's frequency. Throws ExSysErrorANSI if it has none.
    static void initialize();

    static void finalize();

    /// A monotonic counter of getHwCounterFrequency() counts per second. Throws ExSysErrorANSI if the system fails.
    static std::uint64_t getHwCounterValue();

    /// Counts per second; 0 before initialize().
    static std::uint64_t getHwCounterFrequency();

private:
    static std::uint64_t _hwCounterFrequency;
};

}  // namespace Vn
