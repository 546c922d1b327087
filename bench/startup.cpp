// Start of many packages with ten random dependencies each, beside a plain form of the same rule: linear look-up by
// type, a matrix of bytes, three loops. Both order and start the same packages, in turn, in one run; `ratio` is the
// plain form's time over ours.
#include "manypackages.h"

#include <base/ininitmgr.h>
#include <base/inpackageinit.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr int dependencyCount = 10;

using Clock = std::chrono::steady_clock;
using Package = std::unique_ptr<Vn::InPackageInit>;
using VnBench::getPackageTypes;
using VnBench::Needs;

/// The rule as one would write it down first.
class PlainManager
{
public:
    void start(std::vector<Package> const& packages)
    {
        _batch.clear();
        for (Package const& package : packages)
            _batch.push_back({package.get(), 0, false});
        sortAndUnite();
        close(needs());
        std::stable_sort(_batch.begin(), _batch.end(),
                         [](Entry const& left, Entry const& right) { return left.count < right.count; });
        for (Entry const& entry : _batch)
            if (find(_saved, typeOf(entry)) == _saved.size())
                _saved.push_back({entry.package, entry.count, false});
        for (Entry const& entry : _batch) {
            entry.package->initialize();
            _saved[find(_saved, typeOf(entry))].isRunning = true;
        }
        _saved.clear();
    }

private:
    struct Entry
    {
        Vn::InPackageInit* package;
        int count;
        bool isRunning;
    };
    using Matrix = std::vector<std::vector<char>>;

    static std::type_info const& typeOf(Entry const& entry)
    {
        Vn::InPackageInit const& package = *entry.package;
        return typeid(package);
    }

    static std::size_t find(std::vector<Entry> const& entries, std::type_info const& type)
    {
        std::size_t i = 0;
        while (i < entries.size() && typeOf(entries[i]) != type)
            ++i;
        return i;
    }

    void sortAndUnite()
    {
        std::sort(_batch.begin(), _batch.end(),
                  [](Entry const& left, Entry const& right) { return typeOf(left).before(typeOf(right)); });
        _batch.erase(
            std::unique(_batch.begin(), _batch.end(),
                        [](Entry const& left, Entry const& right) { return typeOf(left) == typeOf(right); }),
            _batch.end());
        std::sort(_batch.begin(), _batch.end(), [](Entry const& left, Entry const& right) {
            return std::strcmp(left.package->getName(), right.package->getName()) < 0;
        });
    }

    Matrix needs()
    {
        Matrix bit(_batch.size(), std::vector<char>(_batch.size(), 0));
        for (std::size_t i = 0; i < _batch.size(); ++i) {
            if (std::getenv("VN_DEBUG_INITIALIZE") != nullptr)
                std::cerr << _batch[i].package->getName() << "\n";
            for (std::type_info const* type : _batch[i].package->getDependencies()) {
                bit[i][find(_batch, *type)] = 1;
                ++_batch[i].count;
            }
        }
        return bit;
    }

    void close(Matrix bit)
    {
        const std::size_t n = _batch.size();
        for (std::size_t k = 0; k < n; ++k) {
            if (_batch[k].count == 0)
                continue;
            for (std::size_t i = 0; i < n; ++i) {
                if (i == k || !bit[i][k])
                    continue;
                for (std::size_t j = 0; j < n; ++j) {
                    if (j == k || !bit[k][j] || bit[i][j])
                        continue;
                    bit[i][j] = 1;
                    ++_batch[i].count;
                }
            }
        }
    }

    std::vector<Entry> _batch;
    std::vector<Entry> _saved;
};

/// Each package needs ten of those numbered below it; the names are in no order.
std::vector<Needs> randomNeeds(int count)
{
    std::mt19937 random(1);
    std::vector<Needs> needs(static_cast<std::size_t>(count));
    for (int i = 1; i < count; ++i)
        for (int k = 0; k < dependencyCount; ++k)
            needs[static_cast<std::size_t>(i)].push_back(
                getPackageTypes()[random() % static_cast<unsigned>(i)].type);
    return needs;
}

std::vector<std::string> randomNames(int count)
{
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back("package" + std::to_string(i));
    std::shuffle(names.begin(), names.end(), std::mt19937(2));
    return names;
}

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void startUp(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    const bool hasPlainForm = count <= 1000;
    const std::vector<Needs> needs = randomNeeds(count);
    const std::vector<std::string> names = randomNames(count);
    double ours = 0;
    double plain = 0;
    const auto make = [&] {
        std::vector<Package> packages;
        for (std::size_t i = 0; i < needs.size(); ++i)
            packages.emplace_back(getPackageTypes()[i].make(names[i].c_str(), needs[i]));
        return packages;
    };
    for (auto step : state) {
        std::optional<Vn::InReinitGuard> guard(std::in_place);
        if (hasPlainForm) {
            // Packages of its own, fresh as those that we start: neither form finds them in the cache.
            const std::vector<Package> packages = make();
            const Clock::time_point start = Clock::now();
            PlainManager().start(packages);
            plain += secondsSince(start);
        }
        const std::vector<Package> packages = make();
        const Clock::time_point start = Clock::now();
        guard.reset();
        const double seconds = secondsSince(start);
        ours += seconds;
        state.SetIterationTime(seconds);
    }
    if (hasPlainForm) {
        state.counters["plain_us"] = benchmark::Counter(plain * 1e6 / static_cast<double>(state.iterations()));
        state.counters["ratio"] = plain / ours;
    }
}
}  // namespace

BENCHMARK(startUp)->Arg(13)->Arg(100)->UseManualTime()->Unit(benchmark::kMicrosecond);
// The plain form takes most of a second for these, so their number is set and not found by trying.
BENCHMARK(startUp)->Arg(1000)->Iterations(20)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(startUp)->Arg(5000)->Iterations(50)->UseManualTime()->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
