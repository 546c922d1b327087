// The rules of the count, for both platforms: it is computed from the clock and the start time, and is 0 while the
// timer is stopped. The platforms' forms make the ticks and call beginCount() and endCount().
//
// One thread starts, stops and sets the interval while another may read the count, so the three fields are accessed
// atomically. They are plain fields because they are part of the class's layout.
#include <base/periodictimer.h>

#include <base/sleeper.h>
#include <base/sleepermath_p.h>

#include <atomic>

namespace Vn
{
namespace
{
/// Atomic access to a field, also from a const member function, which only loads.
template <class T>
std::atomic_ref<T> shared(T const& value)
{
    return std::atomic_ref(const_cast<T&>(value));
}
}  // namespace

PeriodicTimer::PeriodicTimer(double interval) : _startTime(0.0), _interval(interval), _running(false) {}

PeriodicTimer::~PeriodicTimer() = default;

double PeriodicTimer::setInterval(double seconds)
{
    // stop() and start() are virtual, so a form of a program's own is stopped and started as well.
    const bool wasRunning = stop();
    // Relaxed, and so is reading: the release in beginCount() publishes the interval together with the start time. On
    // a stopped timer no other field belongs to it.
    shared(_interval).store(seconds, std::memory_order_relaxed);
    if (wasRunning)
        start();
    return seconds;
}

double PeriodicTimer::getInterval() const
{
    return shared(_interval).load(std::memory_order_relaxed);
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
    return SleeperMath::countIntervals(getCurrentTime() - shared(_startTime).load(std::memory_order_relaxed),
                                       getInterval());
}

// Acquire, with the release in beginCount(): without them another thread could see that the timer is running and
// still compute the count from an older start time or interval.
// model: tests/models/timer.pml.
bool PeriodicTimer::isRunning() const
{
    return shared(_running).load(std::memory_order_acquire);
}

void PeriodicTimer::beginCount(double startTime)
{
    shared(_startTime).store(startTime, std::memory_order_relaxed);  // published by the release below
    shared(_running).store(true, std::memory_order_release);
}

void PeriodicTimer::endCount()
{
    // Relaxed: nothing is published with it. A reader that sees it late returns a count of the interval that just
    // ended.
    shared(_running).store(false, std::memory_order_relaxed);
}

}  // namespace Vn
