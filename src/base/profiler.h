#pragma once

#include <base/hwintervaltimer.h>
#include <base/todintervaltimer.h>

#include <iosfwd>

namespace Vn
{

class LgStream;

/// Statistics of cycles, whatever clock they are taken by. All times are in seconds.
/// Tests: tests/base/profilertest.cpp.
class VN_BASE_EXPORT ProfilerBase
{
public:
    virtual ~ProfilerBase();

    /// The text is not copied and must outlive the profiler.
    virtual void setName(char const* name) = 0;
    virtual char const* getName() const = 0;

    virtual void start() = 0;
    virtual void stop() = 0;
    virtual void endCycle() = 0;
    virtual void reset() = 0;

    /// What the open cycle has gathered so far.
    virtual double cycleTime() const = 0;

    // Of the cycles that are closed; 0.0 while there are none.
    virtual double totalTime() const = 0;
    virtual double averageTime() const = 0;
    virtual double minTime() const = 0;
    virtual double maxTime() const = 0;

    /// Of a sample, so over one less than the number of cycles; 0.0 for fewer than two. Reckoned from sums, without a
    /// look back at the cycles: where rounding leaves the variance below zero the result is not a number.
    virtual double standardDeviation() const = 0;

    virtual int cycles() const = 0;

protected:
    ProfilerBase() = default;
    ProfilerBase(ProfilerBase const&) = default;
    ProfilerBase& operator=(ProfilerBase const&) = default;
};

/// A heading with the name, a line for each of cycles, total, average, minimum, maximum and deviation, and an empty
/// line. Values are in fixed notation with the stream's own precision; the stream's format is left as it was.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, ProfilerBase const& profiler);

/// The same lines as part of a log message, with nine digits behind the point.
VN_BASE_EXPORT LgStream& operator<<(LgStream& stream, ProfilerBase const& profiler);

/// Groups the intervals of a T, an IntervalTimer, into cycles, and keeps the statistics of the cycles' times.
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
/// A cycle is any number of start() and stop() pairs and one endCycle(); the statistics see the sum of its pairs. The
/// memory doesn't grow with the cycles, and nothing is allocated. The library holds it for HwIntervalTimer and
/// TodIntervalTimer. One thread at a time; ProfConsolidator brings together what several have measured. Exceptions of
/// the T pass through. Tests: tests/base/profilertest.cpp.
template <class T>
class Profiler : public ProfilerBase
{
public:
    explicit Profiler(char const* name = "anonymous");

    void setName(char const* name) override;
    char const* getName() const override;

    void start() override;

    /// Adds the interval since the last start() to the open cycle; a second stop() adds that span once more.
    void stop() override;

    void endCycle() override;

    /// Forgets all but the name and the last start().
    void reset() override;

    double cycleTime() const override;
    double totalTime() const override;
    double averageTime() const override;
    double minTime() const override;
    double maxTime() const override;
    double standardDeviation() const override;
    int cycles() const override;

private:
    T _timer;
    double _cycleTime;
    double _totalTime;
    double _sumOfSquares;
    double _minTime;  ///< the largest finite number while there are no cycles
    double _maxTime;
    int _cycles;
};

extern template class VN_BASE_EXPORT Profiler<HwIntervalTimer>;
extern template class VN_BASE_EXPORT Profiler<TodIntervalTimer>;

}  // namespace Vn

#include <base/profiler.imp>
