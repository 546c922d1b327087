#pragma once

#include <base/intervaltimer.h>

namespace Vn
{

/// Measures an interval with the time of day, to the millisecond. If the system's clock is set meanwhile, the result
/// follows it, and may be negative; use HwIntervalTimer to be independent of that.
///
///     Vn::TodIntervalTimer timer("import");
///     timer.start();
///     work();
///     timer.stop();
///     std::cout << timer.getName() << ": " << timer.timeInterval() << " s\n";
///
/// Nothing here throws. Needs no package. What happens without a start() or a stop() is in IntervalTimer; the origin
/// is the beginning of 1970, UTC. One thread at a time.
/// Tests: tests/base/intervaltimertest.cpp.
class VN_BASE_EXPORT TodIntervalTimer : public IntervalTimer
{
public:
    /// A time of day, in seconds and milliseconds since the beginning of 1970, UTC. A value; each thread may use its
    /// own.
    class VN_BASE_EXPORT NativeTimer
    {
    public:
        /// The beginning of 1970.
        NativeTimer() = default;

        /// Stores the present time. If the system fails to tell it, the old value stays.
        void refresh();

        /// Seconds from `earlier` to this time; negative if `earlier` is the later one.
        ///
        ///     from 10 s 900 ms to 11 s 100 ms  ->  0.2
        ///     from 10 s 100 ms to 10 s 100 ms  ->  0.0
        ///
        double since(NativeTimer const& earlier) const;

    private:
        double _seconds = 0.0;       ///< whole ones
        double _milliseconds = 0.0;  ///< whole ones, 0 to 999
    };

    /// A timer whose two points are the beginning of 1970; reads no clock. `name` is not copied and must outlive the
    /// timer and its copies.
    explicit TodIntervalTimer(char const* name = "anonymous");

    /// @{
    /// Copies the pointer to the name, and both points.
    TodIntervalTimer(TodIntervalTimer const&) = default;
    TodIntervalTimer& operator=(TodIntervalTimer const&) = default;
    /// @}

    /// Does nothing; the name is not freed.
    ~TodIntervalTimer() override;

    void start() override;
    void stop() override;
    double timeInterval() const override;
    double sinceStart() const override;

private:
    NativeTimer _start;
    NativeTimer _stop;
};

}  // namespace Vn
