// oscpuinfoposix.cpp (Windows form: oscpuinfowinnt.cpp)
#include <base/oscpuinfosystem.h>

#include <time.h>

namespace Vn::System
{
namespace
{
constexpr std::uint64_t nanosecondsPerSecond = 1000000000;
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

}  // namespace Vn::System
