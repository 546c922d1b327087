// Private to osdateutil.cpp; implemented in osdateutilposix.cpp and osdateutilwindows.cpp.
#pragma once

#include <cstdint>

namespace Vn
{
struct OsCalendarTime;
}

namespace Vn::System
{

/// The present moment, UTC, to the millisecond. False if the system refuses to tell, with its error set.
bool readCalendar(OsCalendarTime& now);

// Fields to ticks of 100 nanoseconds since the beginning of 1601 and back. False, with the result as it was, for what
// names no moment.
bool calendarToTicks(OsCalendarTime const& time, std::uint64_t& ticks);
bool ticksToCalendar(std::uint64_t ticks, OsCalendarTime& time);

// Between UTC and the zone of the process. False, with the result as it was, where the system knows no answer.
bool ticksToLocal(std::uint64_t ticks, std::uint64_t& local);
bool localToTicks(std::uint64_t local, std::uint64_t& ticks);

}  // namespace Vn::System
