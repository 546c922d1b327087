#pragma once

#include "rows.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace VnBench
{

/// Runs each of ours beside its peer and prints the ratio of their times: below 1 we are the faster one.
///
///     VnBench::SideBySide comparison(1000);    // operations in one iteration
///     comparison.add("floor", benchOurs, "std::floor", benchTheirs);
///     return comparison.run(argc, argv);
///
/// Both sides run in 15 short rounds each, in random order, and the best round of each counts. All options of the benchmark
/// library work, and come before ours.
class SideBySide
{
public:
    using Body = std::function<void(benchmark::State&)>;

    /// Times are shown for one of `operations`, which each iteration does.
    explicit SideBySide(std::size_t operations = 1) : _operations(static_cast<double>(operations)) {}

    /// Compares the time that passes, not the processor's: for what waits, or works in another process.
    SideBySide& byTheClock()
    {
        _isByTheClock = true;
        return *this;
    }

    void add(std::string what, Body ours, std::string peer, Body theirs)
    {
        const std::string oursName = what + " / ours beside " + peer;
        const std::string theirsName = what + " / " + peer;
        auto* const our = benchmark::RegisterBenchmark(oursName.c_str(), std::move(ours));
        auto* const their = benchmark::RegisterBenchmark(theirsName.c_str(), std::move(theirs));
        if (_isByTheClock) {
            our->UseRealTime();
            their->UseRealTime();
        }
        _pairs.push_back({std::move(what), std::move(peer), oursName, theirsName});
    }

    int run(int argc, char** argv)
    {
        std::string rounds = "--benchmark_repetitions=15";
        std::string time = "--benchmark_min_time=0.01";
        std::string order = "--benchmark_enable_random_interleaving=true";
        std::vector<char*> arguments(argv, argv + argc);
        arguments.insert(arguments.begin() + 1, {rounds.data(), time.data(), order.data()});
        arguments.push_back(nullptr);
        int count = static_cast<int>(arguments.size()) - 1;
        benchmark::Initialize(&count, arguments.data());
        if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
            return 2;
        Collector collector(_isByTheClock, _operations);
        benchmark::RunSpecifiedBenchmarks(&collector);
        printRowsHead();
        for (Pair const& pair : _pairs) {
            Times const& ours = collector.of(pair.oursName);
            Times const& theirs = collector.of(pair.theirsName);
            if (!ours.isEmpty() && !theirs.isEmpty())
                printRow(pair.what, pair.peer, "ns", ours, theirs);
        }
        return 0;
    }

private:
    struct Pair
    {
        std::string what, peer, oursName, theirsName;
    };

    /// Keeps the time of each round and prints nothing.
    class Collector : public benchmark::BenchmarkReporter
    {
    public:
        Collector(bool isByTheClock, double operations) : _isByTheClock(isByTheClock), _operations(operations) {}

        bool ReportContext(Context const&) override { return true; }

        void ReportRuns(std::vector<Run> const& runs) override
        {
            for (Run const& run : runs)
                if (run.run_type == Run::RT_Iteration)
                    _times[run.run_name.function_name].add(
                        (_isByTheClock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime()) / _operations);
        }

        Times const& of(std::string const& name) { return _times[name]; }

    private:
        bool _isByTheClock;
        double _operations;
        std::map<std::string, Times> _times;  ///< nanoseconds
    };

    double _operations;
    bool _isByTheClock = false;
    std::vector<Pair> _pairs;
};

}  // namespace VnBench
