// Private to periodictimer.cpp; implemented in periodictimerlinux.cpp, periodictimerwindows.cpp, sleeperlinux.cpp and sleeperwindows.cpp.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace Vn::SleeperMath
{

/// Seconds as whole milliseconds, truncated toward zero.
///
///     0.0019           ->  1
///     0.0009, -1, nan  ->  0
///     2^63 ms or more  ->  0
///
inline std::uint64_t wholeMilliseconds(double seconds)
{
    constexpr double limit = 9223372036854775808.0;
    const double milliseconds = seconds * 1000.0;
    return milliseconds >= 1.0 && milliseconds < limit ? static_cast<std::uint64_t>(milliseconds) : 0;
}

/// What a sleep of `seconds` waits for, in milliseconds: the low 32 bits, so 4294967.297 s is 1 ms.
// Intended: longer sleeps wrap instead of being refused; do not mend.
inline std::uint32_t sleepMilliseconds(double seconds)
{
    return static_cast<std::uint32_t>(wholeMilliseconds(seconds));
}

/// Adds milliseconds to a moment of seconds and nanoseconds, such as the system's `timespec`. The nanoseconds stay
/// below a second, as the system demands.
template <class Moment>
void moveOn(Moment& moment, std::uint32_t milliseconds)
{
    constexpr long nanosecondsPerMillisecond = 1000000, nanosecondsPerSecond = 1000000000;
    moment.tv_sec += milliseconds / 1000;
    moment.tv_nsec += static_cast<long>(milliseconds % 1000) * nanosecondsPerMillisecond;
    if (moment.tv_nsec >= nanosecondsPerSecond) {
        moment.tv_nsec -= nanosecondsPerSecond;
        ++moment.tv_sec;
    }
}

/// Waits for `milliseconds` by calls of `wait` with at most `longest` each, because the system refuses longer timers.
template <class Wait>
void waitInSteps(std::uint32_t milliseconds, std::uint32_t longest, Wait const& wait)
{
    for (; milliseconds > longest; milliseconds -= longest)
        wait(longest);
    wait(milliseconds);
}

/// The number of intervals in `elapsed`, rounded to the nearest whole number, halves up.
///
///     1.2 / 0.5  ->  2
///     1.3 / 0.5  ->  3
///     nan        ->  0
///
/// Clamped to the range of the type: a result is never negative, and an interval of 0 gives the largest number.
inline unsigned long countIntervals(double elapsed, double interval)
{
    constexpr double limit = static_cast<double>(std::numeric_limits<unsigned long>::max());
    const double count = std::floor(elapsed / interval + 0.5);
    if (!(count > 0.0))
        return 0;
    return count < limit ? static_cast<unsigned long>(count) : std::numeric_limits<unsigned long>::max();
}

}  // namespace Vn::SleeperMath
