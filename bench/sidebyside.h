#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace VnBench
{

/// Runs each of ours beside its peer and prints the ratio of their times: above 1 we are the faster one.
///
///     VnBench::SideBySide comparison(1000);    // operations in one iteration
///     comparison.add("floor", benchOurs, "std::floor", benchTheirs);
///     return comparison.run(argc, argv);
///
/// All options of the benchmark library work. With --benchmark_repetitions the ratio is that of the medians.
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
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 2;
        Times times(_isByTheClock);
        benchmark::RunSpecifiedBenchmarks(&times);
        std::printf("\n%-28s %-28s %9s %9s %7s\n", "", "beside", "ours ns", "peer ns", "ratio");
        for (Pair const& pair : _pairs) {
            const double ours = times.of(pair.oursName) / _operations;
            const double theirs = times.of(pair.theirsName) / _operations;
            if (ours > 0 && theirs > 0)
                std::printf("%-28s %-28s %9.2f %9.2f %7.2f\n", pair.what.c_str(), pair.peer.c_str(), ours, theirs,
                            theirs / ours);
        }
        return 0;
    }

private:
    struct Pair
    {
        std::string what, peer, oursName, theirsName;
    };

    class Times : public benchmark::ConsoleReporter
    {
    public:
        explicit Times(bool isByTheClock) : _isByTheClock(isByTheClock) {}

        void ReportRuns(std::vector<Run> const& runs) override
        {
            ConsoleReporter::ReportRuns(runs);
            for (Run const& run : runs) {
                if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
                    _times[run.run_name.function_name] =
                        _isByTheClock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
            }
        }

        double of(std::string const& name) const
        {
            auto const found = _times.find(name);
            return found != _times.end() ? found->second : 0;
        }

    private:
        bool _isByTheClock;
        std::map<std::string, double> _times;  ///< nanoseconds; the median comes last and stays
    };

    double _operations;
    bool _isByTheClock = false;
    std::vector<Pair> _pairs;
};

}  // namespace VnBench
