// What a message costs the thread that logs it, and what it costs to write it down, beside other loggers in one run.
#include "contestant.h"

#include "../rows.h"
#include "../workfolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace VnBench;

namespace
{
constexpr char const* messageNames[messageCount] = {"constant text", "text, integer", "2 integers, double"};

// Below the least of the contestants' queues, so that no burst fills one.
constexpr int burstSize = 500;
constexpr int rounds = 200;

double percentile(std::vector<double>& values, double part)
{
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

/// The contestants take turns, so that what else the machine does hits all alike.
void compareCallers(std::vector<Contestant> const& contestants)
{
    std::printf("nanoseconds per message of the calling thread; bursts of %d; time of a burst over its messages\n"
                "(median of %d), then single messages with one clock read included\n",
                burstSize, rounds);
    for (int message = 0; message < messageCount; ++message) {
        std::vector<std::vector<double>> averages(contestants.size()), singles(contestants.size());
        std::vector<double> times(burstSize);
        for (int round = 0; round < rounds; ++round)
            for (std::size_t i = 0; i < contestants.size(); ++i) {
                contestants[i].drain();
                const Clock::time_point start = Clock::now();
                contestants[i].burst(Message(message), burstSize);
                averages[i].push_back(nanoseconds(Clock::now() - start) / burstSize);
                contestants[i].drain();
                contestants[i].each(Message(message), times);
                contestants[i].drain();
                singles[i].insert(singles[i].end(), times.begin(), times.end());
            }
        std::printf("\n%-20s %8s %8s %8s %8s %8s\n", messageNames[message], "average", "median", "99 %", "99.9 %",
                    "ratio");
        const double ours = percentile(averages[0], 0.5);
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            const double average = percentile(averages[i], 0.5);
            std::printf("%-20s %8.1f %8.0f %8.0f %8.0f %8.2f\n", contestants[i].name.c_str(), average,
                        percentile(singles[i], 0.5), percentile(singles[i], 0.99), percentile(singles[i], 0.999),
                        ours / average);
            if (i != 0)
                VnBench::keepRow(std::string("a message: ") + messageNames[message], contestants[i].name, "ns",
                                 VnBench::Times(averages[0]), VnBench::Times(averages[i]));
        }
    }
}

/// What the system takes for a line of that length, whoever writes it.
double timeBareWrites(std::string const& path, int count)
{
    const int file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    const std::string line(79, 'x');
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < count; ++i)
        if (::write(file, line.data(), line.size()) < 0)
            std::abort();
    const double time = nanoseconds(Clock::now() - start) / count;
    ::close(file);
    return time;
}

void compareWriters(std::vector<Contestant> const& flushing, std::string const& folder)
{
    constexpr int count = 20000;
    std::vector<double> bare;
    std::vector<std::vector<double>> times(flushing.size() + 1);
    for (int round = 0; round < 9; ++round) {
        times[0].push_back(timeOurReader(count));
        bare.push_back(timeBareWrites(folder + "/bare", count));
        for (std::size_t i = 0; i < flushing.size(); ++i) {
            const Clock::time_point start = Clock::now();
            flushing[i].burst(textWithInteger, count);
            times[i + 1].push_back(nanoseconds(Clock::now() - start) / count);
        }
    }
    const double ours = percentile(times[0], 0.5);
    std::printf("\nwriting, one flush per message: nanoseconds (median of 9), messages per second beside it\n");
    std::printf("%-20s %8.0f\n%-20s %8.0f\n", "a bare write", percentile(bare, 0.5), "VNbase's reader", ours);
    for (std::size_t i = 0; i < flushing.size(); ++i) {
        const double theirs = percentile(times[i + 1], 0.5);
        std::printf("%-20s %8.0f %8.2f\n", flushing[i].name.c_str(), theirs, theirs / ours);
        VnBench::keepRow("write and flush a line", flushing[i].name, "ns", VnBench::Times(times[0]),
                         VnBench::Times(times[i + 1]));
    }
}

void compareDisabled()
{
    std::vector<double> disabled, empty;
    for (int round = 0; round < 21; ++round) {
        const auto [site, loop] = timeDisabledLevel(1000000);
        disabled.push_back(site);
        empty.push_back(loop);
    }
    std::printf("\na disabled level: %.2f ns, the empty loop: %.2f ns\n", percentile(disabled, 0.5),
                percentile(empty, 0.5));
}

void timeTheClock()
{
    std::vector<double> times(100000);
    for (double& time : times) {
        const Clock::time_point start = Clock::now();
        time = nanoseconds(Clock::now() - start);
    }
    std::printf("one clock read: median %.0f ns, 99 %% %.0f, 99.9 %% %.0f\n", percentile(times, 0.5),
                percentile(times, 0.99), percentile(times, 0.999));
}
}  // namespace

int main()
{
    const VnBench::WorkFolder work;
    std::string const& folder = work.path();
    timeTheClock();
    compareCallers({makeOurs(folder), makeSpdlog(folder), makeSpdlogAsync(folder), makeGlog(folder),
                    makeBoostLog(folder), makeBoostLogAsync(folder)});
    compareWriters({makeSpdlogFlushing(folder), makeGlogFlushing(folder), makeBoostLogFlushing(folder)}, folder);
    compareDisabled();
    VnBench::WorkFolder::remove();
    std::fflush(stdout);
    std::_Exit(0);  // the loggers' threads need not be waited for
}
