// Private to oscpuinfo.cpp; implemented in oscpuinfoposix.cpp, oscpuinfowinnt.cpp and sleeperlinux.cpp.
#pragma once

#include <cstdint>
#include <optional>

namespace Vn::System
{

/// A monotonic counter of fixed frequency. Nothing if the system refuses; on POSIX systems `errno` has the reason.
std::optional<std::uint64_t> readCounter();

/// Throws ExSysErrorANSI: what a refusal of the counter or its frequency becomes.
[[noreturn]] void throwCounterError(int line);

/// That counter's frequency, in counts per second. Nothing if the system refuses.
std::optional<std::uint64_t> readCounterFrequency();

/// The number that this system, or on others its counterpart, gives the processor's architecture: 6, 9, or any other
/// for those that aren't told apart.
unsigned getArchitecture();

/// By the numbers that IsProcessorFeaturePresent() knows them by.
enum class CpuFeature
{
    mmx = 3,
    sse = 6
};

/// Whether the processor has the feature; asked anew in each call.
bool hasFeature(CpuFeature feature);

}  // namespace Vn::System
