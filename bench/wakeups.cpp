// How late sleepers and beats wake: `benchwakeups [SECONDS]` for each row (1 s if not said). Each is measured in turn,
// several times over, with an idle machine and with all of its processors busy; median and 99th percentile of the
// lateness, and the spread of the 99th percentile between the turns.
#include <base/ininitmgr.h>
#include <base/periodictimer.h>
#include <base/sleeper.h>

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr double sleepSeconds = 0.001;
constexpr double beatSeconds = 0.002;
constexpr int turns = 7;

double now()
{
    ::timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

::itimerspec timerOf(double seconds, bool isPeriodic)
{
    ::timespec time = {};
    time.tv_nsec = std::lround(seconds * 1e9);
    return {isPeriodic ? time : ::timespec{}, time};
}

/// A timer of the kernel with nothing around it.
class BareTimer
{
public:
    BareTimer() : _timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)) {}
    ~BareTimer() { ::close(_timer); }
    BareTimer(BareTimer const&) = delete;
    BareTimer& operator=(BareTimer const&) = delete;

    void set(::itimerspec const& time) { ::timerfd_settime(_timer, 0, &time, nullptr); }
    void wait()
    {
        std::uint64_t ticks;
        if (::read(_timer, &ticks, sizeof ticks) != sizeof ticks)
            std::abort();
    }

private:
    int _timer;
};

using Lateness = std::vector<double>;  ///< in microseconds

Lateness ofSleeps(double duration, std::function<void()> const& sleep)
{
    Lateness lateness;
    for (double end = now() + duration; now() < end;) {
        const double start = now();
        sleep();
        lateness.push_back((now() - start - sleepSeconds) * 1e6);
    }
    return lateness;
}

/// Of the waits for a beat that `begin` has begun: how far each is behind the tick that it waited for.
Lateness ofBeats(double duration, std::function<void()> const& begin, std::function<void()> const& wait)
{
    Lateness lateness;
    begin();
    const double start = now();
    for (double end = start + duration; now() < end;) {
        wait();
        const double elapsed = now() - start;
        lateness.push_back((elapsed - std::floor(elapsed / beatSeconds + 0.01) * beatSeconds) * 1e6);
    }
    return lateness;
}

struct Row
{
    char const* name;
    std::function<Lateness(double)> measure;
    std::vector<double> medians = {};
    std::vector<double> tails = {};
};

double quantile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

void measure(char const* what, std::vector<Row> rows, double duration)
{
    for (int turn = 0; turn < turns; ++turn)
        for (Row& row : rows) {
            const Lateness lateness = row.measure(duration / turns);
            row.medians.push_back(quantile(lateness, 0.5));
            row.tails.push_back(quantile(lateness, 0.99));
        }
    for (Row const& row : rows)
        std::printf("%-6s %-24s %12.1f %12.1f   %8.1f to %.1f\n", what, row.name, quantile(row.medians, 0.5),
                    quantile(row.tails, 0.5), quantile(row.tails, 0.0), quantile(row.tails, 1.0));
}

std::vector<Row> getRows(BareTimer& bare, Vn::PeriodicTimer& timer)
{
    Vn::Sleeper& sleeper = Vn::Sleeper::getInstance();
    const auto bareSleep = [&bare] {
        bare.set(timerOf(sleepSeconds, false));
        bare.wait();
    };
    const auto bareBeat = [&bare] { bare.set(timerOf(beatSeconds, true)); };
    const auto beat = [&timer] {
        timer.stop();
        timer.start();
    };
    return {
        {"Sleeper, 1 ms", [&sleeper](double s) { return ofSleeps(s, [&] { sleeper.sleep(sleepSeconds); }); }},
        {"sleep_for, 1 ms",
         [](double s) { return ofSleeps(s, [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }); }},
        {"bare timerfd, 1 ms", [=](double s) { return ofSleeps(s, bareSleep); }},
        {"PeriodicTimer, 2 ms", [=, &timer](double s) { return ofBeats(s, beat, [&] { timer.wait(); }); }},
        {"bare timerfd, 2 ms", [=, &bare](double s) { return ofBeats(s, bareBeat, [&] { bare.wait(); }); }},
    };
}
}  // namespace

int main(int argc, char** argv)
{
    const double duration = argc > 1 ? std::atof(argv[1]) : 1.0;
    if (!(duration > 0.0))
        return 2;
    int none = 0;
    char const* const* arguments = nullptr;
    Vn::InInitGuard guard(none, arguments);
    BareTimer bare;
    Vn::ObjPtr<Vn::PeriodicTimer> timer = Vn::PeriodicTimer::create(beatSeconds);
    const std::vector<Row> rows = getRows(bare, *timer);

    std::printf("%-31s %12s %12s   %s\n", "late by us", "median", "99th", "99th between turns");
    measure("idle", rows, duration);
    std::atomic<bool> isOver = false;
    std::vector<std::thread> busy;
    for (unsigned i = 0; i < std::thread::hardware_concurrency(); ++i)
        busy.emplace_back([&isOver] {
            while (!isOver)
                continue;
        });
    measure("busy", rows, duration);
    isOver = true;
    for (std::thread& thread : busy)
        thread.join();
    return 0;
}
