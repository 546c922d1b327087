#pragma once

#include <base/hwcountereng.h>

namespace VnInit
{
class profiling;
}  // namespace VnInit

namespace Vn
{

template <class Tag>
class InInit;

/// The free-running counter that all fine-grained time of the library comes from.
///
///     const std::uint64_t start = Vn::HwCounter::timeStamp();
///     work();
///     std::cout << Vn::HwCounter::seconds(start, Vn::HwCounter::timeStamp()) << " s\n";
///
/// A HwCounterEng does the work. The package `profiling` creates it when it starts; the first call of timeStamp(),
/// seconds() or dump() before that creates one too.
///
///     engine created                     rate                    seconds per count
///     before `osal` has started          0/1                     infinity: times are infinite or not-a-number
///     after that                         1000000000/1 on Linux   1e-9
///
/// `profiling` replaces an engine that was created earlier, and does not free it, because another thread may be using
/// it. The engine in use exists until the process ends. All functions are thread-safe.
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT HwCounter
{
public:
    HwCounter() = delete;

    /// @{
    /// The functions of HwCounterEng with the same names. They create the engine if there is none.
    ///
    ///     timeStamp()           ->  the present count; never decreases on one thread
    ///     seconds()             ->  seconds since the counter's own origin, on Linux the system start
    ///     seconds(start, end)   ->  seconds between two stamps; negative if `end` is the earlier one
    ///     dump(stream)          ->  three lines that describe the engine
    ///
    /// Reading the counter throws ExSysErrorANSI if the system fails to.
    static std::uint64_t timeStamp();
    static double seconds();
    static double seconds(std::uint64_t start, std::uint64_t end);
    static void dump(std::ostream& stream);
    /// @}

    /// @{
    /// Seconds per count, and counts per second as a fraction. They do not create the engine, and dereference a null
    /// pointer if there is none: call them only after the package `profiling` has started, or after one of the
    /// functions above.
    static double resolution() { return getEngine().resolution(); }
    static int getRateNumerator() { return getEngine().getRateNumerator(); }
    static int getRateDenominator() { return getEngine().getRateDenominator(); }
    /// @}

private:
    friend class InInit<VnInit::profiling>;  // puts the engine in place
    friend class HwIntervalTimer;            // takes the fast path
    friend class DtRefClockSourceHwCounter;  // reads the rate before any stamp

    /// Creates the engine if there is none; makes the fast path legal.
    static void init();

    /// The slow path, in a function of its own so that the callers stay small.
    [[gnu::noinline]] static HwCounterEng& makeEngine();
    static HwCounterEng& getOrMakeEngine();

    /// @{
    /// Acquire and release: without them a thread could see the pointer to an engine that another thread has made
    /// before it sees the engine's fields.
    // model: tests/models/publish.pml.
    static HwCounterEng& getEngine() { return *__atomic_load_n(&_theHwCounter, __ATOMIC_ACQUIRE); }
    static void setEngine(HwCounterEng* engine) { __atomic_store_n(&_theHwCounter, engine, __ATOMIC_RELEASE); }
    /// @}

    // The fast path, under the same condition as resolution(): no test for null.
    static std::uint64_t timeStampInline() { return getEngine().timeStamp(); }
    static double secondsInline() { return getEngine().seconds(); }
    static double secondsInline(std::uint64_t start, std::uint64_t end) { return getEngine().seconds(start, end); }

    static HwCounterEng* _theHwCounter;  ///< null at first; never freed
};

}  // namespace Vn
