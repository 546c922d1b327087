#pragma once

#include <base/hwcounter.h>
#include <base/intervaltimer.h>

#include <cstdint>

namespace Vn
{

/// Measures an interval with the hardware counter, to HwCounter::resolution().
///
///     Vn::HwIntervalTimer timer("pass");
///     timer.start();
///     work();
///     timer.stop();
///     std::cout << timer.getName() << ": " << timer.timeInterval() << " s\n";
///
/// start() and stop() read the counter and store the stamp, without allocation and with one indirect call. They and
/// sinceStart() throw ExSysErrorANSI if the system fails to read its counter. What happens without a start() or a
/// stop() is in IntervalTimer. One thread at a time.
/// Tests: tests/base/intervaltimertest.cpp.
class VN_BASE_EXPORT HwIntervalTimer : public IntervalTimer
{
public:
    /// Creates HwCounter's engine if there is none. `name` is not copied and must outlive the timer and its copies.
    ///
    /// A timer that is made before the package `osal` has started returns infinite times, or not-a-number, until the
    /// package `profiling` has started.
    explicit HwIntervalTimer(char const* name = "anonymous");

    /// @{
    /// Copies the pointer to the name, and both stamps.
    HwIntervalTimer(HwIntervalTimer const&) = default;
    HwIntervalTimer& operator=(HwIntervalTimer const&) = default;
    /// @}

    /// Does nothing; the name is not freed.
    ~HwIntervalTimer() override;

    void start() override { _start = HwCounter::timeStampInline(); }
    void stop() override { _stop = HwCounter::timeStampInline(); }
    double timeInterval() const override { return HwCounter::secondsInline(_start, _stop); }
    double sinceStart() const override;

private:
    std::uint64_t _start;  ///< stamp of HwCounter; 0 at first
    std::uint64_t _stop;   ///< likewise
};

}  // namespace Vn
