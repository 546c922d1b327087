#include "standins.h"

#include "real.h"
#include "threadlogbody.h"

#include <dirent.h>
#include <dlfcn.h>
#include <linux/membarrier.h>
#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

namespace VnTest::StandIns
{

std::atomic<Write> onWrite = nullptr;
std::atomic<int> pauses = 0;
std::atomic<long> clockAhead = 0;
std::atomic<bool> arePollsCounted = false;
std::atomic<long> polled = 0;
std::atomic<int> dup3Error = 0;
std::atomic<int> opendirError = 0;
std::atomic<bool> hasNoFence = false;
std::atomic<long> shortestWait = 1000000000;
std::atomic<long> longestWait = 0;
std::atomic<int> limitedWaits = 0;
std::atomic<int> endlessWaits = 0;
std::atomic<int> wakeUps = 0;

::ssize_t writeItself(int file, std::string_view text)
{
    return ::syscall(SYS_write, file, text.data(), text.size());
}

namespace
{
/// Looked up before main(): in a crash nothing is looked up.
#define VN_ITSELF(NAME) auto* const NAME##Itself = VnTest::findReal(&::NAME, #NAME)
[[maybe_unused]] VN_ITSELF(nanosleep);
[[maybe_unused]] VN_ITSELF(opendir);
[[maybe_unused]] VN_ITSELF(pthread_cond_clockwait);
[[maybe_unused]] VN_ITSELF(pthread_cond_wait);
[[maybe_unused]] VN_ITSELF(pthread_cond_signal);
#undef VN_ITSELF
}  // namespace

}  // namespace VnTest::StandIns

#if !defined(__SANITIZE_THREAD__)
#    define VN_STAND_IN extern "C" __attribute__((visibility("default")))

namespace StandIns = VnTest::StandIns;

VN_STAND_IN ::ssize_t write(int file, void const* bytes, std::size_t size)
{
    const std::string_view text(static_cast<char const*>(bytes), size);
    if (StandIns::Write const hook = StandIns::onWrite.load())
        if (const std::optional<::ssize_t> result = hook(file, text))
            return *result;
    return StandIns::writeItself(file, text);
}

VN_STAND_IN int nanosleep(::timespec const* time, ::timespec* left)
{
    ++StandIns::pauses;
    return StandIns::nanosleepItself(time, left);
}

VN_STAND_IN int clock_gettime(::clockid_t clock, ::timespec* time) noexcept
{
    const int result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    if (clock != CLOCK_REALTIME && result == 0)
        time->tv_sec += StandIns::clockAhead.load();
    return result;
}

VN_STAND_IN int poll(::pollfd* files, ::nfds_t count, int timeout)
{
    if (StandIns::arePollsCounted) {
        StandIns::polled += timeout;
        timeout = 0;
    }
    // Not every processor has the older call.
    ::timespec rest{timeout / 1000, timeout % 1000 * 1000000L};
    return static_cast<int>(::syscall(SYS_ppoll, files, count, timeout < 0 ? nullptr : &rest, nullptr, 0));
}

VN_STAND_IN int dup3(int from, int to, int flags) noexcept
{
    errno = StandIns::dup3Error.exchange(0);
    return errno != 0 ? -1 : static_cast<int>(::syscall(SYS_dup3, from, to, flags));
}

VN_STAND_IN ::DIR* opendir(char const* path)
{
    errno = StandIns::opendirError;
    return errno != 0 ? nullptr : StandIns::opendirItself(path);
}

/// As the C library's: whatever has fewer than six arguments ignores the others, which are whatever lies there.
VN_STAND_IN __attribute__((no_sanitize("address"))) long syscall(long number, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, number);
    long values[6];
    for (long& value : values)
        value = va_arg(arguments, long);
    va_end(arguments);
    if (StandIns::hasNoFence && number == SYS_membarrier) {
        errno = ENOSYS;
        return -1;
    }
    return VN_REAL(syscall)(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}

VN_STAND_IN int pthread_cond_clockwait(::pthread_cond_t* condition, ::pthread_mutex_t* mutex, ::clockid_t clock,
                                       ::timespec const* until)
{
    ::timespec now{};
    ::clock_gettime(clock, &now);
    const long limit = (until->tv_sec - now.tv_sec) * 1000 + (until->tv_nsec - now.tv_nsec) / 1000000;
    for (long longest = StandIns::longestWait;
         limit > longest && !StandIns::longestWait.compare_exchange_weak(longest, limit);) {
    }
    for (long shortest = StandIns::shortestWait;
         limit < shortest && !StandIns::shortestWait.compare_exchange_weak(shortest, limit);) {
    }
    ++StandIns::limitedWaits;
    return StandIns::pthread_cond_clockwaitItself(condition, mutex, clock, StandIns::hasNoFence ? &now : until);
}

VN_STAND_IN int pthread_cond_wait(::pthread_cond_t* condition, ::pthread_mutex_t* mutex)
{
    ++StandIns::endlessWaits;
    return StandIns::pthread_cond_waitItself(condition, mutex);
}

VN_STAND_IN int pthread_cond_signal(::pthread_cond_t* condition) noexcept
{
    ++StandIns::wakeUps;
    return StandIns::pthread_cond_signalItself(condition);
}
#endif
