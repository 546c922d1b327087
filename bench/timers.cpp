// Start, stop and read of the interval timers and their sums beside two bare reads of the clock under them.
#include "sidebyside.h"

#include <base/ininitmgr.h>
#include <base/profiler.h>
#include <base/timer.h>

#include <time.h>

#include <cstdint>

namespace
{
/// Two reads, with nothing around them.
template <::clockid_t clock>
void benchBareReads(benchmark::State& state)
{
    for (auto _ : state) {
        ::timespec start, stop;
        ::clock_gettime(clock, &start);
        benchmark::DoNotOptimize(start);
        ::clock_gettime(clock, &stop);
        benchmark::DoNotOptimize(stop);
    }
}

std::uint64_t nanoseconds(::clockid_t clock)
{
    ::timespec now;
    ::clock_gettime(clock, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000000000 + static_cast<std::uint64_t>(now.tv_nsec);
}

/// What one would write instead of a timer: two reads that are kept as numbers, and their difference in seconds.
void benchByHand(benchmark::State& state)
{
    std::uint64_t start = 0, stop = 0;
    benchmark::DoNotOptimize(&start);
    benchmark::DoNotOptimize(&stop);
    for (auto _ : state) {
        start = nanoseconds(CLOCK_MONOTONIC);
        stop = nanoseconds(CLOCK_MONOTONIC);
        benchmark::DoNotOptimize(static_cast<double>(static_cast<std::int64_t>(stop - start)) * 1e-9);
    }
}

template <class Timer>
void benchTimer(benchmark::State& state)
{
    Timer timer;
    benchmark::DoNotOptimize(&timer);
    for (auto _ : state) {
        timer.start();
        timer.stop();
        benchmark::DoNotOptimize(timer.timeInterval());
    }
}

/// Through the abstract base, as code does that is given any timer.
template <class Timer>
void benchThroughBase(benchmark::State& state)
{
    Timer concrete;
    Vn::IntervalTimer* timer = &concrete;
    benchmark::DoNotOptimize(timer);
    for (auto _ : state) {
        timer->start();
        timer->stop();
        benchmark::DoNotOptimize(timer->timeInterval());
    }
}

template <class T>
void benchSum(benchmark::State& state)
{
    Vn::Timer<T> timer;
    for (auto _ : state) {
        timer.start();
        timer.stop();
    }
    benchmark::DoNotOptimize(timer.totalTime());
}

template <class T>
void benchCycle(benchmark::State& state)
{
    Vn::Profiler<T> profiler;
    for (auto _ : state) {
        profiler.start();
        profiler.stop();
        profiler.endCycle();
    }
    benchmark::DoNotOptimize(profiler.totalTime());
}

void benchStamp(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Vn::HwCounter::timeStamp());
}

void benchBareRead(benchmark::State& state)
{
    for (auto _ : state) {
        ::timespec now;
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        benchmark::DoNotOptimize(now);
    }
}
}  // namespace

int main(int argc, char** argv)
{
    int none = 0;
    char const* const* arguments = nullptr;
    Vn::InInitGuard guard(none, arguments);
    VnBench::SideBySide comparison;
    constexpr auto monotonic = benchBareReads<CLOCK_MONOTONIC>;
    constexpr auto realtime = benchBareReads<CLOCK_REALTIME>;
    comparison.add("stamp", benchStamp, "one read", benchBareRead);
    comparison.add("HwIntervalTimer", benchTimer<Vn::HwIntervalTimer>, "two reads", monotonic);
    comparison.add("HwIntervalTimer, again", benchTimer<Vn::HwIntervalTimer>, "the same by hand", benchByHand);
    comparison.add("its base", benchThroughBase<Vn::HwIntervalTimer>, "two reads, again", monotonic);
    comparison.add("TodIntervalTimer", benchTimer<Vn::TodIntervalTimer>, "two reads of day", realtime);
    comparison.add("Timer", benchSum<Vn::HwIntervalTimer>, "two reads, third", monotonic);
    comparison.add("Profiler cycle", benchCycle<Vn::HwIntervalTimer>, "two reads, fourth", monotonic);
    return comparison.run(argc, argv);
}
