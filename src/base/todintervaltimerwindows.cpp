// todintervaltimerwindows.cpp (POSIX form: todintervaltimerposix.cpp)
#include <base/todintervaltimer_p.h>

#include <base/todsplittime_p.h>

#include <sys/timeb.h>

namespace Vn::System
{

bool readTimeOfDay(TodSplitTime& time)
{
    struct __timeb64 now;
    ::_ftime64(&now);  // reports no failure
    time = {static_cast<double>(now.time), static_cast<double>(now.millitm)};
    return true;
}

}  // namespace Vn::System
