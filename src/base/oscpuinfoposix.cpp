// oscpuinfoposix.cpp (Windows form: oscpuinfowinnt.cpp)
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
constexpr unsigned unknownArchitecture = 0xFFFF;
}  // namespace

bool readCounter(std::uint64_t& value)
{
    ::timespec now;
    if (::clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return false;
    value = static_cast<std::uint64_t>(now.tv_sec) * nanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
    return true;
}

bool readCounterFrequency(std::uint64_t& frequency)
{
    ::timespec resolution;
    if (::clock_getres(CLOCK_MONOTONIC, &resolution) != 0)
        return false;
    frequency = nanosecondsPerSecond;  // the unit of the reading, whatever grain the clock has
    return true;
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

// Beside the reading, which the compiler can put into it: every interval that is measured has two of these in it.
std::uint64_t Vn::HwCounterIA32::timeStamp() const
{
    std::uint64_t value;
    if (!System::readCounter(value))
        System::throwCounterError(__LINE__);
    return value >> _shift;
}
