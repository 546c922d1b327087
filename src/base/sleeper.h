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

/// Sleeps of whole milliseconds, and the clock behind PeriodicTimer.
///
///     Vn::Sleeper& sleeper = Vn::Sleeper::getInstance();
///     sleeper.sleep(0.005);
///
/// Alive from the start of the package `profiling` to its stop. Any number of threads may sleep at once.
/// Tests: tests/base/sleepertest.cpp, tests/faults/timerfaulttest.cpp.
class VN_BASE_EXPORT Sleeper
{
public:
    /// Seconds on the counter behind HwCounter, from a beginning that the system chose.
    virtual double getCurrentTime() const = 0;

    /// The shortest sleep, in seconds.
    virtual double getResolution() const = 0;

    /// Blocks for `seconds`, whatever signals arrive, and returns true. What lies below the millisecond is cut, and of
    /// the milliseconds the low 32 bits count: 4294967.296 s are none. False at once where nothing is left to wait for,
    /// for negative values, and for what is no number.
    virtual bool sleep(double seconds) = 0;

    virtual ~Sleeper();

    /// The one sleeper. Throws InSingletonEx::ExNotInitialized outside its life.
    static Sleeper& getInstance();

protected:
    Sleeper();

private:
    friend class InInit<VnInit::profiling>;  // makes the one

    static Sleeper* create();
};

extern template class VN_BASE_EXPORT InSingleton<Sleeper>;

}  // namespace Vn
