// periodictimerwindows.cpp (Linux form: periodictimerlinux.cpp)
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
/// Beats on a multimedia timer, which sets an event at each tick.
class PeriodicTimerWindows : public PeriodicTimer
{
public:
    explicit PeriodicTimerWindows(double interval)
        : PeriodicTimer(interval),
          _period(Multimedia::getCapabilities().wPeriodMin),
          _timerId(0),
          _event(::CreateEventA(nullptr, TRUE, FALSE, nullptr))
    {
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
        Sleeper& clock = Sleeper::getInstance();  // throws, if it does, before anything has begun
        _timerId = Multimedia::setEventLater(_event, getPeriodMs(), TIME_PERIODIC);
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

    unsigned long wait() override
    {
        ::ResetEvent(_event);
        ::WaitForSingleObject(_event, INFINITE);
        return getCurrentCount();
    }

private:
    /// What the system is asked for; it refuses what is too much.
    ::UINT getPeriodMs() const
    {
        constexpr std::uint64_t most = std::numeric_limits<::UINT>::max();
        return static_cast<::UINT>(std::min(SleeperMath::wholeMilliseconds(getInterval()), most));
    }

    ::UINT _period;  ///< milliseconds
    ::UINT _timerId;
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
