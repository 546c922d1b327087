// Private to todintervaltimer.cpp; implemented in todintervaltimerposix.cpp and todintervaltimerwindows.cpp.
#pragma once

namespace Vn
{
struct TodSplitTime;
}

namespace Vn::System
{

/// The time of day, cut to the millisecond. False if the system refuses, with `time` as it was.
bool readTimeOfDay(TodSplitTime& time);

}  // namespace Vn::System
