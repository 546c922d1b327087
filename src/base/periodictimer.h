#pragma once

#include <base/baseexport.h>
#include <base/objptr.h>

namespace Vn
{

/// Wakes a waiting thread at a fixed period, and tells how many periods have passed.
///
///     Vn::ObjPtr<Vn::PeriodicTimer> timer = Vn::PeriodicTimer::create(0.020);
///     timer->start();
///     for (unsigned long frame = 0; frame < 250; frame = timer->wait())
///         show(frame);    // a frame that took too long shows as a jump of the count
///
/// The count is computed from the clock of Sleeper and not by counting ticks, so late and lost ticks do not disturb
/// it. Needs the package `profiling`.
///
/// One thread calls start(), stop() and setInterval(), and one thread, the same or another, calls wait(). The timer
/// may be stopped and started again while the other thread waits. In a child of fork() a timer that was running is
/// stopped; if the child had no descriptor left, start() and wait() throw there.
/// Tests: tests/base/periodictimertest.cpp.
class VN_BASE_EXPORT PeriodicTimer
{
public:
    /// Stops the timer. No thread may be in wait().
    virtual ~PeriodicTimer();

    /// Starts the ticks and the count; false, without any effect, if the timer is running already.
    ///
    /// The ticks' period is the interval in whole milliseconds, the rest cut off:
    ///
    ///     0.020     ->  a tick every 20 ms
    ///     0.0125    ->  a tick every 12 ms, while the count follows 12.5 ms
    ///     0.0009    ->  no tick ever, so wait() does not return; the count goes on
    ///     1e9       ->  on Windows no tick either, as the system refuses such a period
    ///
    /// Throws InSingletonEx::ExNotInitialized without the package `profiling`, and ExSysErrorWindows if Linux refuses, as
    /// where something has closed the timer's descriptor; the timer then stays stopped.
    virtual bool start() = 0;

    /// Ends the ticks and the count; false if the timer is stopped already. A thread in wait() stays there until the
    /// next start(). Throws ExSysErrorWindows if Linux refuses; the timer is stopped all the same.
    virtual bool stop() = 0;

    /// Blocks until the next tick and returns getCurrentCount() of that moment. Ticks that came before the call do
    /// not count; they show as a jump of the result. On a stopped timer it blocks until another thread starts it and
    /// the first tick comes. Throws ExSysErrorWindows if Linux can't wait.
    virtual unsigned long wait() = 0;

    /// Sets the interval and returns it. A running timer starts again, with the count at 0; a stopped one stays
    /// stopped. Throws as stop() and start(); the interval is the new one if stop() went well.
    virtual double setInterval(double seconds);

    /// A stopped timer with that interval in seconds. On Linux it throws ExSysErrorWindows if the system has no timer
    /// or descriptor left; on Windows a failure is not reported.
    static ObjPtrRet<PeriodicTimer> create(double interval);

    /// The system's smallest timer period, in seconds.
    static double getResolution();

    /// The interval in seconds, as it was given and not rounded to milliseconds.
    double getInterval() const;

    /// Sleeper::getCurrentTime(). Throws InSingletonEx::ExNotInitialized without the package `profiling`.
    double getCurrentTime() const;

    /// Intervals since start(), rounded to the nearest whole number, halves up; 0 while the timer is stopped.
    ///
    ///     interval 0.5 s:   1.2 s after the start -> 2    1.25 s -> 3    1.3 s -> 3
    ///
    /// While the timer is running it throws as getCurrentTime().
    unsigned long getCurrentCount() const;

protected:
    /// A stopped timer with that interval in seconds.
    explicit PeriodicTimer(double interval);

    /// @{
    /// Copies start time, interval and whether the timer is running.
    PeriodicTimer(PeriodicTimer const&) = default;
    PeriodicTimer& operator=(PeriodicTimer const&) = default;
    /// @}

    /// @{
    /// For start() and stop() of the platform's forms: whether the count goes on, its start at the moment `startTime`
    /// of getCurrentTime(), and its end. A thread that sees isRunning() return true sees that start time as well.
    bool isRunning() const;
    void beginCount(double startTime);
    void endCount();
    /// @}

private:
    double _startTime;  ///< getCurrentTime() at the last start()
    double _interval;   ///< seconds
    bool _running;
};

}  // namespace Vn
