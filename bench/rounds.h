#pragma once

#include "rows.h"

#include <chrono>
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

    void run(int rounds)
    {
        measure(rounds);
        print();
    }

    /// May be called again: rounds that lie seconds apart find a quiet moment for each side on a machine with neighbours.
    void measure(int rounds)
    {
        for (int i = 0; i < rounds; ++i)
            for (Contestant& contestant : _contestants)
                contestant.times.add(contestant.measure());
    }

    /// The contestant that was added first is ours.
    void print() const
    {
        for (std::size_t i = 1; i < _contestants.size(); ++i)
            printRow(_what, _contestants[i].who, _unit, _contestants.front().times, _contestants[i].times);
    }

    /// Measures each of several comparisons a little at a time, in passes over all of them.
    static void runInPasses(std::vector<Rounds>& comparisons, int rounds)
    {
        constexpr int passes = 5;
        for (int i = 0; i < passes; ++i)
            for (Rounds& comparison : comparisons)
                comparison.measure(rounds / passes);
        for (Rounds const& comparison : comparisons)
            comparison.print();
    }

    static void printHead() { printRowsHead(); }

private:
    struct Contestant
    {
        std::string who;
        Measure measure;
        Times times;
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
