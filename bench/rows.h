#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace VnBench
{

/// The times of one contestant, each of a short round.
class Times
{
public:
    Times() = default;
    explicit Times(std::vector<double> const& times) : _sorted(times) { std::sort(_sorted.begin(), _sorted.end()); }

    void add(double time) { _sorted.insert(std::upper_bound(_sorted.begin(), _sorted.end(), time), time); }

    bool isEmpty() const { return _sorted.empty(); }

    /// The fastest round: what else the machine does only ever adds to a time.
    double best() const { return _sorted.front(); }
    double median() const { return _sorted[_sorted.size() / 2]; }
    double ninthOfTen() const { return _sorted[_sorted.size() * 9 / 10]; }

private:
    std::vector<double> _sorted;
};

/// Appends one comparison, as a line of JSON, to the file that the variable VNBASE_BENCH_ROWS names; tools/bench.sh makes
/// its page of them. The texts hold neither quotes nor backslashes.
inline void keepRow(std::string const& what, std::string const& peer, std::string const& unit, Times const& ours,
                    Times const& theirs)
{
    char const* const path = std::getenv("VNBASE_BENCH_ROWS");
    if (path == nullptr)
        return;
    std::FILE* const file = std::fopen(path, "a");
    if (file == nullptr) {
        std::perror(path);
        std::exit(1);
    }
    std::fprintf(
        file,
        "{\"what\": \"%s\", \"peer\": \"%s\", \"unit\": \"%s\", \"ours\": [%.6g, %.6g], \"theirs\": [%.6g, "
        "%.6g]}\n",
        what.c_str(), peer.c_str(), unit.c_str(), ours.best(), ours.median(), theirs.best(), theirs.median());
    std::fclose(file);
}

/// Prints one comparison, and keeps it: the best and the median round of both sides, and our best over the other's. Below 1
/// we are the faster one.
inline void printRow(std::string const& what, std::string const& peer, std::string const& unit, Times const& ours,
                     Times const& theirs)
{
    std::printf("%-34s %-28s %10.3f %10.3f %10.3f %10.3f %-3s %6.2f\n", what.c_str(), peer.c_str(), ours.best(),
                ours.median(), theirs.best(), theirs.median(), unit.c_str(), ours.best() / theirs.best());
    std::fflush(stdout);
    keepRow(what, peer, unit, ours, theirs);
}

inline void printRowsHead()
{
    std::printf("%-34s %-28s %10s %10s %10s %10s %-3s %6s\n", "", "beside", "ours best", "median", "peer best",
                "median", "", "ratio");
}

}  // namespace VnBench
