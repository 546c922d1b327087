// Stands in for the C library's clock calls, in this program and in the libraries that it uses.
#include "clock.h"

#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace
{
constexpr long running = -1;

std::atomic<int> clockError = 0;
std::atomic<int> timerError = 0;
std::atomic<long> timeOfDay = running;  // milliseconds

bool hasFailed()
{
    if (clockError == 0)
        return false;
    errno = clockError;
    return true;
}
}  // namespace

extern "C" __attribute__((visibility("default"))) int clock_gettime(::clockid_t clock, ::timespec* time) noexcept
{
    if (hasFailed())
        return -1;
    const long stopped = timeOfDay;
    if (clock != CLOCK_REALTIME || stopped == running)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    time->tv_sec = stopped / 1000;
    time->tv_nsec = stopped % 1000 * 1000000 + 999999;  // what lies below the millisecond is cut
    return 0;
}

extern "C" __attribute__((visibility("default"))) int clock_getres(::clockid_t clock, ::timespec* time) noexcept
{
    return hasFailed() ? -1 : static_cast<int>(::syscall(SYS_clock_getres, clock, time));
}

extern "C" __attribute__((visibility("default"))) int timerfd_create(int clock, int flags) noexcept
{
    errno = timerError;
    return timerError != 0 ? -1 : static_cast<int>(::syscall(SYS_timerfd_create, clock, flags));
}

void VnTest::failClockWith(int error)
{
    clockError = error;
}

void VnTest::failTimerWith(int error)
{
    timerError = error;
}

void VnTest::stopTimeOfDayAt(long milliseconds)
{
    timeOfDay = milliseconds;
}

void VnTest::releaseTimeOfDay()
{
    timeOfDay = running;
}
