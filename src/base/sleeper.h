#pragma once

#include <base/baseexport.h>
#include <base/insingleton.h>

namespace VnInit
{
class profiling;
}  // namespace VnInit

namespace Vn
{

template <class Tag>
class InInit;

/// Sleeps of whole milliseconds, finer than the system's default tick, and the clock behind PeriodicTimer.
///
///     Vn::Sleeper& sleeper = Vn::Sleeper::getInstance();
///     sleeper.sleep(0.005);
///
/// It exists from the start of the package `profiling` to its stop. Thread-safe; any number of threads may sleep at
/// once, and each wakes after its own delay.
/// Tests: tests/base/sleepertest.cpp, tests/faults/timerfaulttest.cpp.
class VN_BASE_EXPORT Sleeper
{
public:
    /// Seconds on the counter that HwCounter reads, since the counter's own origin.
    virtual double getCurrentTime() const = 0;

    /// The system's smallest timer period, in seconds: 0.001 if it is a millisecond.
    virtual double getResolution() const = 0;

    /// Blocks the calling thread for `seconds`, also if signals arrive meanwhile. True if it has waited.
    ///
    ///     0.0015       ->  waits 1 ms, true: fractions of a millisecond are cut off
    ///     0.0009       ->  false at once, as for every time below a millisecond
    ///     -1.0, nan    ->  false at once
    ///     4294967.296  ->  false at once: only the low 32 bits of the milliseconds count
    ///     4294967.297  ->  waits 1 ms, true
    ///
    // Intended: the milliseconds wrap at 32 bits; do not mend.
    virtual bool sleep(double seconds) = 0;

    /// Frees what the sleeper holds of the system. No thread may be sleeping on it.
    virtual ~Sleeper();

    /// The one sleeper. Throws InSingletonEx::ExNotInitialized before the package `profiling` has started and after
    /// it has stopped.
    static Sleeper& getInstance();

protected:
    /// For the platform's form; the package `profiling` creates the one object.
    Sleeper();

private:
    friend class InInit<VnInit::profiling>;  // calls create()

    /// The platform's form; the caller owns it.
    static Sleeper* create();
};

extern template class VN_BASE_EXPORT InSingleton<Sleeper>;

}  // namespace Vn
