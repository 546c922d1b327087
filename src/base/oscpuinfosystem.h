#pragma once

#include <cstdint>

namespace Vn::System
{

/// A monotonic counter of fixed frequency. False if the system refuses; on POSIX systems `errno` has the reason.
bool readCounter(std::uint64_t& value);

/// That counter's frequency, in counts per second. False if the system refuses.
bool readCounterFrequency(std::uint64_t& frequency);

}  // namespace Vn::System
