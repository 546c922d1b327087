// oscpuinfowinnt.cpp (POSIX form: oscpuinfoposix.cpp)
//
// Each function is one call. The counter's frequency is fixed when the system starts, 10,000,000 per second on most
// machines, so it is read once. Both calls of the counter succeed on every Windows that this library runs on.
#include <base/oscpuinfo_p.h>

#include <base/hwcountereng.h>

#include <windows.h>

namespace Vn::System
{

std::optional<std::uint64_t> readCounter()
{
    // Monotonic and the same on all processors; the system chooses the hardware behind it.
    ::LARGE_INTEGER counter;
    if (!::QueryPerformanceCounter(&counter))
        return {};
    return static_cast<std::uint64_t>(counter.QuadPart);
}

std::optional<std::uint64_t> readCounterFrequency()
{
    ::LARGE_INTEGER perSecond;
    if (!::QueryPerformanceFrequency(&perSecond))
        return {};
    return static_cast<std::uint64_t>(perSecond.QuadPart);
}

unsigned getArchitecture()
{
    ::SYSTEM_INFO info;
    ::GetSystemInfo(&info);  // of the processor as this process sees it: that of an emulation, if there is one
    return info.wProcessorArchitecture;
}

bool hasFeature(CpuFeature feature)
{
    // The enumeration has the call's own numbers.
    return ::IsProcessorFeaturePresent(static_cast<::DWORD>(feature)) != 0;
}

}  // namespace Vn::System

// Here, beside readCounter(), so that the compiler can inline it: every measured interval contains two of these
// calls.
std::uint64_t Vn::HwCounterIA32::timeStamp() const
{
    const std::optional<std::uint64_t> value = System::readCounter();
    if (!value)
        System::throwCounterError(__LINE__);
    return *value >> _shift;
}
