// The rules of the count, for both platforms: it is computed from the clock and the start time, and is 0 while the
// timer is stopped. The platforms' forms make the ticks and call beginCount() and endCount().
//
// One thread starts, stops and sets the interval while another may read the count, so the three fields are accessed
// atomically. They are plain fields because they are part of the class's layout.
#include <base/periodictimer.h>

#include <base/relaxed_p.h>
#include <base/sleeper.h>
#include <base/sleepermath_p.h>

namespace Vn
{
PeriodicTimer::PeriodicTimer(double interval) : _startTime(0.0), _interval(interval), _running(false) {}

PeriodicTimer::~PeriodicTimer() = default;

double PeriodicTimer::setInterval(double seconds)
{
    // stop() and start() are virtual, so a form of a program's own is stopped and started as well.
    const bool wasRunning = stop();
    // Relaxed, and so is reading: the release in beginCount() publishes the interval together with the start time. On
    // a stopped timer no other field belongs to it.
    storeRelaxed(_interval, seconds);
    if (wasRunning)
        start();
    return seconds;
}

double PeriodicTimer::getInterval() const
{
    return loadRelaxed(_interval);
}

double PeriodicTimer::getCurrentTime() const
{
    return Sleeper::getInstance().getCurrentTime();
}

unsigned long PeriodicTimer::getCurrentCount() const
{
    if (!isRunning())
        return 0;
    // Relaxed: isRunning() has acquired what beginCount() stored before.
    return SleeperMath::countIntervals(getCurrentTime() - loadRelaxed(_startTime), getInterval());
}

// Acquire, with the release in beginCount(): without them another thread could see that the timer is running and
// still compute the count from an older start time or interval.
// model: tests/models/timer.pml.
bool PeriodicTimer::isRunning() const
{
    return loadAcquire(_running);
}

void PeriodicTimer::beginCount(double startTime)
{
    storeRelaxed(_startTime, startTime);  // published by the release below
    storeRelease(_running, true);
}

void PeriodicTimer::endCount()
{
    // Relaxed: nothing is published with it. A reader that sees it late returns a count of the interval that just
    // ended.
    storeRelaxed(_running, false);
}

}  // namespace Vn
