// todintervaltimerposix.cpp (Windows form: todintervaltimerwindows.cpp)
#include <base/todintervaltimer_p.h>

#include <base/todsplittime_p.h>

#include <time.h>

namespace Vn::System
{
namespace
{
constexpr long nanosecondsPerMillisecond = 1000000;
}  // namespace

bool readTimeOfDay(TodSplitTime& time)
{
    // CLOCK_REALTIME and not CLOCK_MONOTONIC: this is the time of day, and follows the clock when it is set.
    ::timespec now;
    if (::clock_gettime(CLOCK_REALTIME, &now) != 0)
        return false;
    time = {static_cast<double>(now.tv_sec), static_cast<double>(now.tv_nsec / nanosecondsPerMillisecond)};
    return true;
}

}  // namespace Vn::System
