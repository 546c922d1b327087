// Private to todintervaltimer.cpp; implemented in todintervaltimerposix.cpp and todintervaltimerwindows.cpp.
#pragma once

namespace Vn
{
struct TodSplitTime;
}

namespace Vn::System
{

/// Stores the time of day, truncated to the millisecond. False if the system fails to tell it; `time` is then
/// unchanged.
bool readTimeOfDay(TodSplitTime& time);

}  // namespace Vn::System
