// oscpuinfowinnt.cpp (POSIX form: oscpuinfoposix.cpp)
#include <base/oscpuinfo_p.h>

#include <base/hwcountereng.h>

#include <windows.h>

namespace Vn::System
{

bool readCounter(std::uint64_t& value)
{
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
    ::GetSystemInfo(&info);
    return info.wProcessorArchitecture;
}

bool hasFeature(CpuFeature feature)
{
    return ::IsProcessorFeaturePresent(static_cast<::DWORD>(feature)) != 0;
}

}  // namespace Vn::System

// Beside the reading, which the compiler can put into it: every interval that is measured has two of these in it.
std::uint64_t Vn::HwCounterIA32::timeStamp() const
{
    std::uint64_t value;
    if (!System::readCounter(value))
        System::throwCounterError(__LINE__);
    return value >> _shift;
}
