// oscpuinfoposix.cpp (Windows form: oscpuinfowinnt.cpp)
//
// The counter is the monotonic clock in nanoseconds: settings of the time of day don't move it, and a frequency of
// 10^9 lets programs divide by a number that they know. The architecture is the kernel's name for it, translated to
// the numbers of Windows, in which oscputype_p.h speaks. Features come from cpuid directly; without the instruction
// there are none.
#include <base/oscpuinfo_p.h>

#include <base/hwcountereng.h>
#include <base/oscpudecode_p.h>

#include <sys/utsname.h>
#include <time.h>

#include <cstring>

namespace Vn::System
{
namespace
{
constexpr std::uint64_t nanosecondsPerSecond = 1000000000;
constexpr unsigned unknownArchitecture = 0xFFFF;  ///< as Windows has it
}  // namespace

std::optional<std::uint64_t> readCounter()
{
    ::timespec now;
    if (::clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return {};
    return static_cast<std::uint64_t>(now.tv_sec) * nanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

std::optional<std::uint64_t> readCounterFrequency()
{
    // The resolution isn't used; the call shows whether the system has this clock at all.
    ::timespec resolution;
    if (::clock_getres(CLOCK_MONOTONIC, &resolution) != 0)
        return {};
    return nanosecondsPerSecond;  // unit of the reading; the clock's resolution may be coarser
}

unsigned getArchitecture()
{
    ::utsname names;
    if (::uname(&names) != 0)
        return unknownArchitecture;
    if (std::strcmp(names.machine, "x86_64") == 0)
        return 9;
    return std::strcmp(names.machine, "ia64") == 0 ? 6 : unknownArchitecture;
}

bool hasFeature(CpuFeature feature)
{
    return OsCpuDecode(OsOwnCpuid())
        .hasFeature(feature == CpuFeature::mmx ? OsCpuDecode::mmxBit : OsCpuDecode::sseBit);
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
