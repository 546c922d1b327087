#pragma once

#include <base/hwintervaltimer.h>
#include <base/todintervaltimer.h>

#include <iosfwd>

namespace Vn
{

/// The interface of Timer, for code that should work with any clock. All times are in seconds.
///
///     void report(Vn::TimerBase const& timer)
///     {
///         std::cout << timer << "\n";
///     }
///
/// A timer is stopped or running, and stopped at first. One thread at a time.
/// Tests: tests/base/timertest.cpp.
class VN_BASE_EXPORT TimerBase
{
public:
    /// Does nothing; the name is not freed.
    virtual ~TimerBase();

    /// Replaces the pointer to the name. The text is not copied and must outlive the timer.
    virtual void setName(char const* name) = 0;

    /// The name, "anonymous" unless one was given.
    virtual char const* getName() const = 0;

    /// Begins an interval. While the timer is running this drops the interval that had begun.
    virtual void start() = 0;

    /// Ends the interval and adds it to the total. Not refused while the timer is stopped, see Timer::stop().
    virtual void stop() = 0;

    /// Stops the timer and sets the total to 0.
    virtual void reset() = 0;

    /// The sum of the finished intervals, and of the running one up to now.
    virtual double totalTime() const = 0;

protected:
    /// @{
    /// For the classes that implement the interface; there is nothing to copy.
    TimerBase() = default;
    TimerBase(TimerBase const&) = default;
    TimerBase& operator=(TimerBase const&) = default;
    /// @}
};

/// Writes `Timer reading: Total = 0.0123` in the stream's own number format, without a line end. Reads totalTime()
/// before it writes. A null name is written as an empty one.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, TimerBase const& timer);

/// A stopwatch that adds up intervals, measured by a T, which is HwIntervalTimer or TodIntervalTimer.
///
///     Vn::Timer<Vn::HwIntervalTimer> reading("reading");
///     reading.start();
///     readFile();
///     reading.stop();
///     std::cout << reading << "\n";    // Timer reading: Total = 0.0123
///
/// Copying copies the total and the running interval. One thread at a time. What reading T's clock throws, for
/// example ExSysErrorANSI, passes through.
/// Tests: tests/base/timertest.cpp.
template <class T>
class Timer : public TimerBase
{
public:
    /// A stopped timer with a total of 0. `name` is not copied and must outlive the timer.
    explicit Timer(char const* name = "anonymous");

    void setName(char const* name) override;
    char const* getName() const override;

    /// Begins an interval. A start() while the timer is running begins it anew, and what had passed of it is lost.
    void start() override;

    /// Ends the interval and adds it to the total.
    ///
    ///     start, 2 s, stop               ->  total 2 s
    ///     start, 2 s, stop, 3 s, stop    ->  total 7 s: the second stop() adds the 5 s since start()
    ///     stop without any start         ->  adds the time since the clock's origin
    ///
    // Intended: a stop() while stopped is not refused; do not mend.
    void stop() override;

    /// Stops the timer and sets the total to 0.
    void reset() override;

    double totalTime() const override;

private:
    int _stopped;   ///< 0 while running
    T _timer;       ///< measures the running interval, and holds the name
    double _total;  ///< seconds, of the finished intervals
};

extern template class VN_BASE_EXPORT Timer<HwIntervalTimer>;
extern template class VN_BASE_EXPORT Timer<TodIntervalTimer>;

}  // namespace Vn

#include <base/timer.imp>
