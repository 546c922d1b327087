// Stands in for the C library's clock calls, in this program and in the libraries that it uses.
#include "clock.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <utility>

namespace
{
constexpr long running = -1;

std::atomic<int> clockError = 0;
std::atomic<int> timerError = 0;
std::atomic<int> settingError = 0;
std::atomic<int> pollError = 0;
std::atomic<int> pollsToFail = 0;
std::atomic<long> timeOfDay = running;  // milliseconds
std::atomic<long> counter = running;    // milliseconds

bool areSleepsNoted = false;
int interruptionsLeft = 0;
std::vector<VnTest::KernelSleep> sleeps;

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
    long stopped = running;
    if (clock == CLOCK_REALTIME)
        stopped = timeOfDay;
    else if (clock == CLOCK_MONOTONIC)
        stopped = counter;
    if (stopped == running)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    time->tv_sec = stopped / 1000;
    time->tv_nsec = stopped % 1000 * 1000000;
    if (clock == CLOCK_REALTIME)
        time->tv_nsec += 999999;  // what lies below the millisecond is cut
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

extern "C" __attribute__((visibility("default"))) int
timerfd_settime(int timer, int flags, ::itimerspec const* time, ::itimerspec* before) noexcept
{
    errno = settingError;
    return settingError != 0 ? -1 : static_cast<int>(::syscall(SYS_timerfd_settime, timer, flags, time, before));
}

extern "C" __attribute__((visibility("default"))) int poll(::pollfd* files, ::nfds_t count, int timeout)
{
    if (pollsToFail == 0) {
        // Not every processor has the older call.
        ::timespec rest{timeout / 1000, timeout % 1000 * 1000000L};
        return static_cast<int>(::syscall(SYS_ppoll, files, count, timeout < 0 ? nullptr : &rest, nullptr, 0));
    }
    --pollsToFail;
    errno = pollError;
    return -1;
}

/// Its error is its result.
extern "C" __attribute__((visibility("default"))) int clock_nanosleep(::clockid_t clock, int flags,
                                                                      ::timespec const* time, ::timespec* left)
{
    if (!areSleepsNoted)
        return ::syscall(SYS_clock_nanosleep, clock, flags, time, left) == 0 ? 0 : errno;
    sleeps.push_back({clock, flags, *time});
    if (interruptionsLeft == 0)
        return 0;
    --interruptionsLeft;
    if (left != nullptr)
        *left = *time;
    return EINTR;
}

void VnTest::failTimerSettingWith(int error)
{
    settingError = error;
}

void VnTest::failPollsWith(int error, int times)
{
    pollError = error;
    pollsToFail = times;
}

int VnTest::getPollsToFail()
{
    return pollsToFail;
}

void VnTest::noteSleeps(int interruptions)
{
    sleeps.clear();
    interruptionsLeft = interruptions;
    areSleepsNoted = true;
}

std::vector<VnTest::KernelSleep> VnTest::takeSleeps()
{
    areSleepsNoted = false;
    return std::move(sleeps);
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

void VnTest::stopCounterAt(long milliseconds)
{
    counter = milliseconds;
}

void VnTest::releaseCounter()
{
    counter = running;
}
