#pragma once

#include <base/hwcounter.h>
#include <base/intervaltimer.h>

#include <cstdint>

namespace Vn
{

/// An interval by the hardware counter, to the grain of HwCounter.
///
///     Vn::HwIntervalTimer timer("pass");
///     timer.start();
///     work();
///     timer.stop();
///     std::cout << timer.getName() << ": " << timer.timeInterval() << " s\n";
///
/// start() and stop() read the counter and store it: no allocation, no branch of their own, one indirect call. They,
/// and sinceStart(), throw ExSysErrorANSI if the system fails to read its counter.
/// Tests: tests/base/intervaltimertest.cpp.
class VN_BASE_EXPORT HwIntervalTimer : public IntervalTimer
{
public:
    /// Sees to it that there is a counter; a timer made before the package `profiling` has started reckons with
    /// infinite seconds per count until then.
    explicit HwIntervalTimer(char const* name = "anonymous");

    HwIntervalTimer(HwIntervalTimer const&) = default;
    HwIntervalTimer& operator=(HwIntervalTimer const&) = default;
    ~HwIntervalTimer() override;

    void start() override { _start = HwCounter::timeStampInline(); }
    void stop() override { _stop = HwCounter::timeStampInline(); }
    double timeInterval() const override { return HwCounter::secondsInline(_start, _stop); }
    double sinceStart() const override;

private:
    std::uint64_t _start;  ///< stamps of HwCounter
    std::uint64_t _stop;
};

}  // namespace Vn
