// oscpuinfowinnt.cpp (POSIX form: oscpuinfoposix.cpp)
//
// Each function is one call. The counter's frequency is fixed when the system starts, 10,000,000 per second on most
// machines, so it is read once. Both calls of the counter succeed on every Windows that this library runs on.
#include <base/oscpuinfo_p.h>

#include <base/hwcountereng.h>

#include <windows.h>

namespace Vn::System
{

bool readCounter(std::uint64_t& value)
{
    // Monotonic and the same on all processors; the system chooses the hardware behind it.
    ::LARGE_INTEGER counter;
    if (!::QueryPerformanceCounter(&counter))
        return false;
    value = static_cast<std::uint64_t>(counter.QuadPart);
    return true;
}

bool readCounterFrequency(std::uint64_t& frequency)
{
    ::LARGE_INTEGER perSecond;
    if (!::QueryPerformanceFrequency(&perSecond))
        return false;
    frequency = static_cast<std::uint64_t>(perSecond.QuadPart);
    return true;
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
    std::uint64_t value;
    if (!System::readCounter(value))
        System::throwCounterError(__LINE__);
    return value >> _shift;
}
