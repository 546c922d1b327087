// Start, stop and read of the interval timers and their sums beside two bare reads of the clock under them.
#include "sidebyside.h"

#include <base/ininitmgr.h>
#include <base/profiler.h>
#include <base/timer.h>

#include <time.h>

namespace
{
double secondsOf(::timespec const& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Two reads and their difference, with nothing around them.
template <::clockid_t clock>
void benchBareReads(benchmark::State& state)
{
    for (auto _ : state) {
        ::timespec start, stop;
        ::clock_gettime(clock, &start);
        ::clock_gettime(clock, &stop);
        benchmark::DoNotOptimize(secondsOf(stop) - secondsOf(start));
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
    comparison.add("its base", benchThroughBase<Vn::HwIntervalTimer>, "two reads, again", monotonic);
    comparison.add("TodIntervalTimer", benchTimer<Vn::TodIntervalTimer>, "two reads of day", realtime);
    comparison.add("Timer", benchSum<Vn::HwIntervalTimer>, "two reads, third", monotonic);
    comparison.add("Profiler cycle", benchCycle<Vn::HwIntervalTimer>, "two reads, fourth", monotonic);
    return comparison.run(argc, argv);
}
