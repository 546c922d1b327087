// Private to todintervaltimer.cpp; implemented in todintervaltimerposix.cpp and todintervaltimerwindows.cpp.
#pragma once

namespace Vn
{

/// A time of day as the system tells it.
struct TodSplitTime
{
    double seconds;       ///< whole ones since the beginning of 1970, UTC
    double milliseconds;  ///< whole ones, 0 to 999

    /// Seconds from `earlier` to this time. The milliseconds are subtracted the way that gives no negative number, and
    /// take their sign with the factor: the last bit of the result depends on it.
    double since(TodSplitTime const& earlier) const
    {
        const double whole = seconds - earlier.seconds;
        if (milliseconds > earlier.milliseconds)
            return whole + (milliseconds - earlier.milliseconds) * 0.001;
        return whole + (earlier.milliseconds - milliseconds) * -0.001;
    }
};

}  // namespace Vn
