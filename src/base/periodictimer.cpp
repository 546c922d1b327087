#include <base/periodictimer.h>

#include <base/sleeper.h>
#include <base/sleepermath_p.h>

#include <atomic>

namespace Vn
{
namespace
{
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
    const bool wasRunning = stop();
    // Relaxed, and so is reading: beginCount() shows it to a waiter together with the start time.
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
    return SleeperMath::countIntervals(getCurrentTime() - shared(_startTime).load(std::memory_order_relaxed),
                                       getInterval());
}

// Release, and acquire here: without them a waiter could see a timer that runs and still count from an older start.
bool PeriodicTimer::isRunning() const
{
    return shared(_running).load(std::memory_order_acquire);
}

void PeriodicTimer::beginCount(double startTime)
{
    shared(_startTime).store(startTime, std::memory_order_relaxed);
    shared(_running).store(true, std::memory_order_release);
}

void PeriodicTimer::endCount()
{
    shared(_running).store(false, std::memory_order_relaxed);
}

}  // namespace Vn
