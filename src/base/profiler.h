#pragma once

#include <base/hwintervaltimer.h>
#include <base/todintervaltimer.h>

#include <iosfwd>

namespace Vn
{

class LgStream;

/// The interface of Profiler, for code that should work with any clock. All times are in seconds.
///
///     void report(Vn::ProfilerBase const& profiler)
///     {
///         std::cout << profiler;
///     }
///
/// The results of a new or reset profiler are all 0.0. One thread at a time.
/// Tests: tests/base/profilertest.cpp.
class VN_BASE_EXPORT ProfilerBase
{
public:
    /// Does nothing; the name is not freed.
    virtual ~ProfilerBase();

    /// Replaces the pointer to the name. The text is not copied and must outlive the profiler.
    virtual void setName(char const* name) = 0;

    /// The name, "anonymous" unless one was given.
    virtual char const* getName() const = 0;

    /// @{
    /// Begins an interval; ends it and adds it to the open cycle. See Profiler::stop() for calls out of order.
    virtual void start() = 0;
    virtual void stop() = 0;
    /// @}

    /// Closes the open cycle, whose time enters the statistics, and opens the next. A cycle without an interval
    /// counts as 0.0 s. At most 2147483647 cycles can be counted; there is no check.
    virtual void endCycle() = 0;

    /// Sets all results, those of the open cycle as well, to those of a new profiler. The name stays.
    virtual void reset() = 0;

    /// The intervals of the open cycle so far. The other results do not contain them before endCycle().
    virtual double cycleTime() const = 0;

    /// @{
    /// Sum, mean, least and greatest time of the closed cycles; 0.0 while there are none.
    ///
    ///     cycles of 1 s and 3 s  ->  total 4, average 2, minimum 1, maximum 3
    ///
    virtual double totalTime() const = 0;
    virtual double averageTime() const = 0;
    virtual double minTime() const = 0;
    virtual double maxTime() const = 0;
    /// @}

    /// The standard deviation of the sample, which divides by the number of cycles less 1.
    ///
    ///     cycles of 1 s and 3 s   ->  1.414..., the square root of 2
    ///     fewer than two cycles   ->  0.0
    ///
    /// It is computed from sums, because the single times are not kept. Cycles of nearly equal length may therefore
    /// give not-a-number, if rounding makes the variance negative.
    virtual double standardDeviation() const = 0;

    /// Number of closed cycles.
    virtual int cycles() const = 0;

protected:
    /// @{
    /// For the classes that implement the interface; there is nothing to copy.
    ProfilerBase() = default;
    ProfilerBase(ProfilerBase const&) = default;
    ProfilerBase& operator=(ProfilerBase const&) = default;
    /// @}
};

/// Writes the name, six lines and an empty line, in fixed notation and with the stream's own precision:
///
///     Profiler passes:
///             Nb of cycles:   2
///             Total time:     4.000000
///             Average time:   2.000000
///             Minimum time:   1.000000
///             Maximum time:   3.000000
///             Standard dev:   1.414214
///
/// The stream's flags, precision and fill character are as before afterwards. A null name is written as an empty one.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, ProfilerBase const& profiler);

/// Writes the same lines into a log message, each time with nine digits after the decimal point: "4.000000000". The
/// label of the total is "Total time  :" here.
VN_BASE_EXPORT LgStream& operator<<(LgStream& stream, ProfilerBase const& profiler);

/// Groups intervals into cycles and keeps statistics of the cycles' times. The intervals are measured by a T, which
/// is HwIntervalTimer or TodIntervalTimer.
///
///     Vn::Profiler<Vn::HwIntervalTimer> passes("passes");
///     for (Pass& pass : all) {
///         passes.start();
///         pass.run();
///         passes.stop();
///         passes.endCycle();
///     }
///     std::cout << passes;
///
/// A cycle is any number of start() and stop() pairs and one endCycle(); the statistics see the sum of its pairs.
/// Only sums are kept, so the size does not grow with the number of cycles, and nothing is allocated.
///
/// One thread at a time. Where several threads measure, give each a profiler of its own and combine them with
/// ProfConsolidator afterwards. What reading T's clock throws passes through.
/// Tests: tests/base/profilertest.cpp.
template <class T>
class Profiler : public ProfilerBase
{
public:
    /// A profiler without cycles. `name` is not copied and must outlive the profiler.
    explicit Profiler(char const* name = "anonymous");

    void setName(char const* name) override;
    char const* getName() const override;

    void start() override;

    /// Ends the interval and adds it to the open cycle. Calls out of order are not refused:
    ///
    ///     start, 2 s, stop, 3 s, stop  ->  cycle time 7 s: the second stop() adds the 5 s since start()
    ///     start, 2 s, start, 3 s, stop ->  cycle time 3 s
    ///     stop without any start       ->  adds the time since the clock's origin
    ///
    void stop() override;

    void endCycle() override;

    /// Sets all results to those of a new profiler. The interval timer is not touched: a stop() after reset() adds
    /// the time since the last start(), which may have been before.
    void reset() override;

    double cycleTime() const override;
    double totalTime() const override;
    double averageTime() const override;
    double minTime() const override;
    double maxTime() const override;
    double standardDeviation() const override;
    int cycles() const override;

private:
    T _timer;              ///< measures the interval, and holds the name
    double _cycleTime;     ///< seconds in the open cycle
    double _totalTime;     ///< seconds in the closed cycles, and likewise below
    double _sumOfSquares;  ///< of the cycles' times
    double _minTime;       ///< the largest finite number while there are no cycles
    double _maxTime;       ///< 0.0 while there are no cycles
    int _cycles;           ///< closed ones
};

extern template class VN_BASE_EXPORT Profiler<HwIntervalTimer>;
extern template class VN_BASE_EXPORT Profiler<TodIntervalTimer>;

}  // namespace Vn

#include <base/profiler.imp>
