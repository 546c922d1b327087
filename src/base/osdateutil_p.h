// Private to osdateutil.cpp; implemented in osdateutilposix.cpp, osdateutilwindows.cpp and osfilewindows.cpp.
#pragma once

#include <base/oscalendar_p.h>

#include <cstdint>
#include <optional>

namespace Vn::System
{

/// The present moment, UTC, to the millisecond. Nothing, with the system's error set, if the system refuses.
std::optional<OsCalendarTime> readCalendar();

// Fields to ticks of 100 nanoseconds since the beginning of 1601 and back. Nothing for what names no moment.
std::optional<std::uint64_t> calendarToTicks(OsCalendarTime const& time);
std::optional<OsCalendarTime> ticksToCalendar(std::uint64_t ticks);

// Between UTC and the zone of the process. Nothing where the system has no answer.
std::optional<std::uint64_t> ticksToLocal(std::uint64_t ticks);
std::optional<std::uint64_t> localToTicks(std::uint64_t local);

}  // namespace Vn::System
