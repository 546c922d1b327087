#pragma once

#include <base/hwintervaltimer.h>
#include <base/todintervaltimer.h>

#include <iosfwd>

namespace Vn
{

/// A stopwatch, whatever clock it goes by. All times are in seconds.
/// Tests: tests/base/timertest.cpp.
class VN_BASE_EXPORT TimerBase
{
public:
    virtual ~TimerBase();

    /// The text is not copied and must outlive the timer.
    virtual void setName(char const* name) = 0;
    virtual char const* getName() const = 0;

    virtual void start() = 0;
    virtual void stop() = 0;
    virtual void reset() = 0;

    /// The sum of the finished intervals, with the running one if there is one.
    virtual double totalTime() const = 0;

protected:
    TimerBase() = default;
    TimerBase(TimerBase const&) = default;
    TimerBase& operator=(TimerBase const&) = default;
};

/// "Timer NAME: Total = SECONDS" in the stream's own format, without a line end.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, TimerBase const& timer);

/// A stopwatch that adds up the intervals of a T, an IntervalTimer.
///
///     Vn::Timer<Vn::HwIntervalTimer> reading("reading");
///     reading.start();
///     readFile();
///     reading.stop();
///     std::cout << reading << "\n";    // Timer reading: Total = 0.0123
///
/// The library holds it for HwIntervalTimer and TodIntervalTimer. One thread at a time; exceptions of the T pass
/// through.
/// Tests: tests/base/timertest.cpp.
template <class T>
class Timer : public TimerBase
{
public:
    explicit Timer(char const* name = "anonymous");

    void setName(char const* name) override;
    char const* getName() const override;

    /// While it runs, this begins the interval anew, and what had run of it is lost.
    void start() override;

    /// Adds the interval since the last start(). It isn't refused while stopped: then that span is added once more, or
    /// the span since the clock's origin if there was no start() at all.
    void stop() override;

    /// Stops, and forgets the sum.
    void reset() override;

    double totalTime() const override;

private:
    int _stopped;  ///< 0 while running
    T _timer;
    double _total;  ///< of the finished intervals
};

extern template class VN_BASE_EXPORT Timer<HwIntervalTimer>;
extern template class VN_BASE_EXPORT Timer<TodIntervalTimer>;

}  // namespace Vn

#include <base/timer.imp>
