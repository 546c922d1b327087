#pragma once

#include <base/intervaltimer.h>

namespace Vn
{

/// An interval by the time of day, to the millisecond. It follows the clock where that is set.
///
/// Nothing here fails.
/// Tests: tests/base/intervaltimertest.cpp.
class VN_BASE_EXPORT TodIntervalTimer : public IntervalTimer
{
public:
    /// A point in time of day, in seconds and milliseconds since the beginning of 1970, UTC.
    class VN_BASE_EXPORT NativeTimer
    {
    public:
        /// The beginning of 1970.
        NativeTimer() = default;

        /// Takes the present time. Where the system refuses to tell it, the point stays as it was.
        void refresh();

        /// Seconds from `earlier` to this point.
        double since(NativeTimer const& earlier) const;

    private:
        double _seconds = 0.0;       ///< whole ones
        double _milliseconds = 0.0;  ///< whole ones, 0 to 999
    };

    explicit TodIntervalTimer(char const* name = "anonymous");

    TodIntervalTimer(TodIntervalTimer const&) = default;
    TodIntervalTimer& operator=(TodIntervalTimer const&) = default;
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
