#pragma once

#include <base/baseexport.h>
#include <base/objptr.h>

namespace Vn
{

/// A beat: wakes a waiter at a fixed period, and tells how many periods have passed.
///
///     Vn::ObjPtr<Vn::PeriodicTimer> timer = Vn::PeriodicTimer::create(0.020);
///     timer->start();
///     for (unsigned long frame = 0; frame < 250; frame = timer->wait())
///         show(frame);    // a frame that took too long shows as a jump of the count
///
/// The count comes from the clock of Sleeper and not from counted ticks, so late and lost ticks don't disturb it. Needs
/// the package `profiling`. One thread starts and stops, and one thread, the same or another, waits; a timer may be
/// stopped and started again while the other waits. In a child of fork() a running timer is a stopped one; if the child
/// had no descriptor left, start() and wait() throw there.
/// Tests: tests/base/periodictimertest.cpp.
class VN_BASE_EXPORT PeriodicTimer
{
public:
    /// Ends the beat.
    virtual ~PeriodicTimer();

    /// Begins the beat, and the count with it; false if it runs already. The period is the interval in whole
    /// milliseconds: with none left, and on Windows with more than the system takes, the count runs but no tick comes.
    /// Throws InSingletonEx::ExNotInitialized without the package `profiling`, and ExSysErrorWindows if Linux refuses the
    /// beat, as where something has closed the timer's descriptor; the timer stays stopped.
    virtual bool start() = 0;

    /// False if it is stopped already. Throws ExSysErrorWindows if Linux refuses; the timer is stopped all the same.
    virtual bool stop() = 0;

    /// Blocks until the next tick, and returns the count then. A tick that came before the call doesn't count. While the
    /// timer is stopped nothing comes until another thread starts it. Throws ExSysErrorWindows if Linux can't wait.
    virtual unsigned long wait() = 0;

    /// A running timer starts again with the new interval, from 0; a stopped one stays stopped. Returns the interval.
    /// Throws as stop() and start(); the interval is the new one if stop() went well.
    virtual double setInterval(double seconds);

    /// A stopped timer of that interval, in seconds. Throws ExSysErrorWindows if Linux has no timer left;
    /// Windows doesn't tell.
    static ObjPtrRet<PeriodicTimer> create(double interval);

    /// The smallest period, in seconds.
    static double getResolution();

    /// As it was given, in seconds.
    double getInterval() const;

    /// The clock of the count, in seconds. Throws InSingletonEx::ExNotInitialized without the package `profiling`.
    double getCurrentTime() const;

    /// Intervals since the start, rounded to the nearest whole number, upward from the middle; 0 while stopped. Throws
    /// as getCurrentTime() while running.
    unsigned long getCurrentCount() const;

protected:
    explicit PeriodicTimer(double interval);

    PeriodicTimer(PeriodicTimer const&) = default;
    PeriodicTimer& operator=(PeriodicTimer const&) = default;

    // For start() and stop() of the forms.
    bool isRunning() const;
    void beginCount(double startTime);
    void endCount();

private:
    double _startTime;  ///< by the clock
    double _interval;   ///< seconds
    bool _running;
};

}  // namespace Vn
