// Private to todintervaltimer.cpp; implemented in todintervaltimerposix.cpp and todintervaltimerwindows.cpp.
#pragma once

namespace Vn
{

/// A time of day as the system tells it. A struct of its own so that the difference is tested without a clock.
struct TodSplitTime
{
    double seconds;       ///< whole ones since the beginning of 1970, UTC
    double milliseconds;  ///< whole ones, 0 to 999

    /// Seconds from `earlier` to this time.
    ///
    ///     from 10 s 900 ms to 11 s 100 ms  ->  1 + 800 * -0.001 = 0.2
    ///
    // Intended: the milliseconds are subtracted so that their difference is not negative, and the factor carries the
    // sign. The last bit of the result depends on that form; do not mend.
    double since(TodSplitTime const& earlier) const
    {
        const double whole = seconds - earlier.seconds;
        if (milliseconds > earlier.milliseconds)
            return whole + (milliseconds - earlier.milliseconds) * 0.001;
        return whole + (earlier.milliseconds - milliseconds) * -0.001;
    }
};

}  // namespace Vn
