#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// One interval between a start and a stop: two points in time and their difference, in seconds.
///
///     void timed(Vn::IntervalTimer& timer)
///     {
///         timer.start();
///         work();
///         timer.stop();
///         report(timer.timeInterval());
///     }
///
/// start() and stop() may come in any order and any number of times. Each overwrites its own point, and nothing is
/// checked:
///
///     calls                 timeInterval()                    sinceStart()
///     start, stop           the time between them             the time since start
///     start, stop, stop     from start to the second stop     the time since start
///     start, stop, start    negative                          the time since the second start
///     start                 from start back to the origin     the time since start
///     none                  0                                 the time since the clock's origin
///
/// The forms are HwIntervalTimer and TodIntervalTimer. One thread at a time; different timers may run in different
/// threads at once.
/// Tests: tests/base/intervaltimertest.cpp.
class VN_BASE_EXPORT IntervalTimer
{
public:
    /// @{
    /// Copies the pointer to the name, not the text.
    IntervalTimer(IntervalTimer const&) = default;
    IntervalTimer& operator=(IntervalTimer const&) = default;
    /// @}

    /// Does nothing; the name is not freed.
    virtual ~IntervalTimer();

    /// @{
    /// Stores the present time as the beginning or as the end of the interval. Throws what the clock of the form
    /// throws.
    virtual void start() = 0;
    virtual void stop() = 0;
    /// @}

    /// Seconds from the last start() to the last stop(). Asking again gives the same value.
    virtual double timeInterval() const = 0;

    /// Seconds from the last start() to now. Does not change the timer.
    virtual double sinceStart() const = 0;

    /// The name, "anonymous" unless one was given.
    char const* getName() const { return _name; }

    /// Replaces the pointer to the name. The text is not copied and must outlive the timer and its copies.
    void setName(char const* name) { _name = name; }

protected:
    /// `name` is stored like that of setName().
    explicit IntervalTimer(char const* name);

private:
    char const* _name;  ///< not owned
};

}  // namespace Vn
