#pragma once

#include <base/hwcountereng.h>

#include <atomic>

namespace VnInit
{
class profiling;
}  // namespace VnInit

namespace Vn
{

template <class Tag>
class InInit;

/// The one free-running counter that all fine-grained time comes from.
///
///     const std::uint64_t start = Vn::HwCounter::timeStamp();
///     work();
///     std::cout << Vn::HwCounter::seconds(start, Vn::HwCounter::timeStamp()) << " s\n";
///
/// The package `profiling` makes the engine that answers. What is asked earlier makes one that doesn't know its
/// frequency yet (rate 0, infinite resolution), and the package replaces it. Threads that come first at once may each
/// make one, and one of these stays. Reading is free for any thread.
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT HwCounter
{
public:
    HwCounter() = delete;

    // These make the engine if there is none; what they answer is told in HwCounterEng.
    static std::uint64_t timeStamp();
    static double seconds();
    static double seconds(std::uint64_t start, std::uint64_t end);
    static void dump(std::ostream& stream);

    // These go straight to the engine, without a look whether there is one: legal once the package `profiling` has
    // started or one of the above was called.
    static double resolution() { return getEngine().resolution(); }
    static int getRateNumerator() { return getEngine().getRateNumerator(); }
    static int getRateDenominator() { return getEngine().getRateDenominator(); }

private:
    friend class InInit<VnInit::profiling>;  // puts the engine in place
    friend class HwIntervalTimer;            // takes the fast path
    friend class DtRefClockSourceHwCounter;  // reads the rate before any stamp

    static void init();
    [[gnu::noinline]] static HwCounterEng& makeEngine();
    static HwCounterEng& getOrMakeEngine();

    // Acquire, and release where an engine is put in place: without them a thread could find an engine that another one
    // has made, and not yet what it consists of.
    static HwCounterEng& getEngine() { return *std::atomic_ref(_theHwCounter).load(std::memory_order_acquire); }
    static void setEngine(HwCounterEng* engine)
    {
        std::atomic_ref(_theHwCounter).store(engine, std::memory_order_release);
    }

    // The fast path, on the same terms as resolution().
    static std::uint64_t timeStampInline() { return getEngine().timeStamp(); }
    static double secondsInline() { return getEngine().seconds(); }
    static double secondsInline(std::uint64_t start, std::uint64_t end) { return getEngine().seconds(start, end); }

    static HwCounterEng* _theHwCounter;  ///< never freed
};

}  // namespace Vn
