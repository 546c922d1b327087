#pragma once

#include <time.h>

#include <vector>

namespace VnTest
{

/// Makes the system's clock calls of this program and its libraries fail with `error` (an errno), until it is 0 again.
void failClockWith(int error);

/// Refuses new timers of the kernel with `error` (an errno), until it is 0 again.
void failTimerWith(int error);

/// Refuses to set timers of the kernel with `error`, until it is 0 again.
void failTimerSettingWith(int error);

/// Lets `times` polls in a row fail with `error`.
void failPollsWith(int error, int times = 1);

/// How many of those are still to fail.
int getPollsToFail();

/// What a sleep asks the kernel for.
struct KernelSleep
{
    ::clockid_t clock;
    int flags;
    ::timespec time;
};

/// From now on the kernel's sleeps are noted and end at once: the first `interruptions` by a signal, the others as if the
/// time had passed.
void noteSleeps(int interruptions);

/// Ends that, and tells all that were asked for.
std::vector<KernelSleep> takeSleeps();

/// Lets the time of day stand at `milliseconds` since the beginning of 1970, UTC.
void stopTimeOfDayAt(long milliseconds);

/// Lets it go on.
void releaseTimeOfDay();

/// Lets the counter stand at `milliseconds`.
void stopCounterAt(long milliseconds);

/// Lets it go on.
void releaseCounter();

}  // namespace VnTest
