// Intervals by the time of day, in whole milliseconds. This clock may be set while it is read: an interval can then be
// negative or hours long, and nothing here hides that. HwIntervalTimer has a clock that only goes forward.
#include <base/todintervaltimer.h>

#include <base/todintervaltimer_p.h>
#include <base/todsplittime_p.h>

namespace Vn
{

void TodIntervalTimer::NativeTimer::refresh()
{
    TodSplitTime now;
    if (!System::readTimeOfDay(now))
        return;  // start() and stop() have no way to report it; the old point is a defined state
    _seconds = now.seconds;
    _milliseconds = now.milliseconds;
}

double TodIntervalTimer::NativeTimer::since(NativeTimer const& earlier) const
{
    // The arithmetic is in a struct of its own, which tests can fill with any time.
    return TodSplitTime{_seconds, _milliseconds}.since({earlier._seconds, earlier._milliseconds});
}

TodIntervalTimer::TodIntervalTimer(char const* name) : IntervalTimer(name) {}

TodIntervalTimer::~TodIntervalTimer() = default;

void TodIntervalTimer::start()
{
    _start.refresh();
}

void TodIntervalTimer::stop()
{
    _stop.refresh();
}

double TodIntervalTimer::timeInterval() const
{
    return _stop.since(_start);
}

double TodIntervalTimer::sinceStart() const
{
    // A local point, so that a later timeInterval() is not disturbed.
    NativeTimer now;
    now.refresh();
    return now.since(_start);
}

}  // namespace Vn
