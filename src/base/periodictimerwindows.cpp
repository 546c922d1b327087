// periodictimerwindows.cpp (Linux form: periodictimerlinux.cpp)
//
// A periodic multimedia timer sets an event at each tick, from the system's own thread. wait() resets the event
// before it waits, so a tick that came earlier does not end the wait. The ticks only wake the waiter: the count is
// computed from the clock in periodictimer.cpp, so a tick that is lost between two calls of wait() does not disturb
// it.
//
// One thread may start and stop while another waits. The event stays the same, so a waiter stays in its wait while
// the timer is stopped, and the first tick after the next start ends it.
#include <base/periodictimer.h>

#include <base/multimediatimer_p.h>
#include <base/sleeper.h>
#include <base/sleepermath_p.h>

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Vn
{
namespace
{
/// The form over a multimedia timer.
class PeriodicTimerWindows : public PeriodicTimer
{
public:
    explicit PeriodicTimerWindows(double interval)
        : PeriodicTimer(interval),
          _period(Multimedia::getCapabilities().wPeriodMin),
          _timerId(0),
          _event(::CreateEventA(nullptr, TRUE, FALSE, nullptr))  // reset by hand, not set at first
    {
        // The smallest period for as long as the timer exists: without it ticks come up to 16 ms late.
        ::timeBeginPeriod(_period);
    }

    ~PeriodicTimerWindows() override
    {
        if (isRunning())
            ::timeKillEvent(_timerId);
        ::CloseHandle(_event);
        ::timeEndPeriod(_period);
    }

    bool start() override
    {
        if (isRunning())
            return false;
        Sleeper& clock = Sleeper::getInstance();  // first, because it may throw; then nothing is to be undone
        // Intended: the result is not tested. If the system refuses, the count goes on without ticks; do not mend.
        _timerId = Multimedia::setEventLater(_event, getPeriodMs(), TIME_PERIODIC);
        // The clock is read after the timer is set, so a tick comes slightly before its interval is full. The count
        // rounds to the nearest whole number, which absorbs that.
        beginCount(clock.getCurrentTime());
        return true;
    }

    bool stop() override
    {
        if (!isRunning())
            return false;
        endCount();
        ::timeKillEvent(_timerId);
        return true;
    }

    // Intended: the wait has no time-out. On a stopped timer it ends with the first tick after a start(); do not
    // mend.
    unsigned long wait() override
    {
        ::ResetEvent(_event);
        ::WaitForSingleObject(_event, INFINITE);
        return getCurrentCount();
    }

private:
    /// The tick's period in whole milliseconds. The system refuses 0 and what is beyond its largest period.
    ::UINT getPeriodMs() const
    {
        constexpr std::uint64_t most = std::numeric_limits<::UINT>::max();
        return static_cast<::UINT>(std::min(SleeperMath::wholeMilliseconds(getInterval()), most));
    }

    ::UINT _period;   ///< milliseconds
    ::UINT _timerId;  ///< valid while the timer is running
    ::HANDLE _event;
};
}  // namespace

ObjPtrRet<PeriodicTimer> PeriodicTimer::create(double interval)
{
    return ObjPtrRet<PeriodicTimer>(new PeriodicTimerWindows(interval));
}

double PeriodicTimer::getResolution()
{
    return Multimedia::getResolution();
}

}  // namespace Vn
