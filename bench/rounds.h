#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace VnBench
{

/// Measures contestants in turn, in many short rounds, and tells the best round of each: what else the machine does hits
/// all of them alike, and the best round has least of it.
///
///     VnBench::Rounds rounds("an int", "ns");
///     rounds.add("ours", [] { return timeOfOneRead(...); });
///     rounds.add("gflags", ...);
///     rounds.run(200);
class Rounds
{
public:
    /// What one call took, in `unit`.
    using Measure = std::function<double()>;

    Rounds(std::string what, std::string unit) : _what(std::move(what)), _unit(std::move(unit)) {}

    void add(std::string who, Measure measure) { _contestants.push_back({std::move(who), std::move(measure), {}}); }

    /// The contestant that was added first is ours; `ratio` is its best time over that of another one.
    void run(int rounds)
    {
        for (int i = 0; i < rounds; ++i)
            for (Contestant& contestant : _contestants)
                contestant.times.push_back(contestant.measure());
        for (Contestant& contestant : _contestants)
            std::sort(contestant.times.begin(), contestant.times.end());
        const double ours = _contestants.front().times.front();
        for (Contestant const& contestant : _contestants) {
            std::vector<double> const& times = contestant.times;
            std::printf("%-32s %-28s %9.3f %9.3f %9.3f %-3s", _what.c_str(), contestant.who.c_str(), times.front(),
                        times[times.size() / 2], times[times.size() * 9 / 10], _unit.c_str());
            if (&contestant != &_contestants.front())
                std::printf("%9.2f", ours / times.front());
            std::printf("\n");
        }
        std::fflush(stdout);
    }

    static void printHead()
    {
        std::printf("%-32s %-28s %9s %9s %9s %-3s%9s\n", "", "", "best", "median", "9 of 10", "", "ratio");
    }

private:
    struct Contestant
    {
        std::string who;
        Measure measure;
        std::vector<double> times;
    };

    std::string _what;
    std::string _unit;
    std::vector<Contestant> _contestants;
};

/// Nanoseconds that each of `count` calls takes.
template <class Action>
double timeOfEach(int count, Action const& action)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i)
        action();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / count;
}

}  // namespace VnBench
