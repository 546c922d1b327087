#pragma once

namespace VnTest
{

/// Makes the system's clock calls of this program and its libraries fail with `error` (an errno), until it is 0 again.
void failClockWith(int error);

/// Refuses new timers of the kernel with `error` (an errno), until it is 0 again.
void failTimerWith(int error);

/// Lets the time of day stand at `milliseconds` since the beginning of 1970, UTC.
void stopTimeOfDayAt(long milliseconds);

/// Lets it go on.
void releaseTimeOfDay();

}  // namespace VnTest
