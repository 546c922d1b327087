// Stands in for the C library's clock calls, in this program and in the libraries that it uses.
#include "clock.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace
{
std::atomic<int> clockError = 0;

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
    return hasFailed() ? -1 : static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
}

extern "C" __attribute__((visibility("default"))) int clock_getres(::clockid_t clock, ::timespec* time) noexcept
{
    return hasFailed() ? -1 : static_cast<int>(::syscall(SYS_clock_getres, clock, time));
}

void VnTest::failClockWith(int error)
{
    clockError = error;
}
