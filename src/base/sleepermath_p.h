// Private to periodictimer.cpp; implemented in periodictimerlinux.cpp, periodictimerwindows.cpp, sleeperlinux.cpp and sleeperwindows.cpp.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace Vn::SleeperMath
{

/// Seconds as whole milliseconds, cut toward zero; 0 for a negative value, for what is no number, and from 2^63 on.
inline std::uint64_t wholeMilliseconds(double seconds)
{
    constexpr double limit = 9223372036854775808.0;
    const double milliseconds = seconds * 1000.0;
    return milliseconds >= 1.0 && milliseconds < limit ? static_cast<std::uint64_t>(milliseconds) : 0;
}

/// What a sleep of `seconds` waits for, in milliseconds.
inline std::uint32_t sleepMilliseconds(double seconds)
{
    return static_cast<std::uint32_t>(wholeMilliseconds(seconds));
}

/// Moves a moment of seconds and nanoseconds, as the system's `timespec`, on by that many milliseconds.
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

/// Waits for `milliseconds` in steps of at most `longest`, each through `wait`.
template <class Wait>
void waitInSteps(std::uint32_t milliseconds, std::uint32_t longest, Wait const& wait)
{
    for (; milliseconds > longest; milliseconds -= longest)
        wait(longest);
    wait(milliseconds);
}

/// Whole intervals in `elapsed`, to the nearest one and upward from the middle. Stays within the type's range; 0 for
/// what is no number.
inline unsigned long countIntervals(double elapsed, double interval)
{
    constexpr double limit = static_cast<double>(std::numeric_limits<unsigned long>::max());
    const double count = std::floor(elapsed / interval + 0.5);
    if (!(count > 0.0))
        return 0;
    return count < limit ? static_cast<unsigned long>(count) : std::numeric_limits<unsigned long>::max();
}

}  // namespace Vn::SleeperMath
