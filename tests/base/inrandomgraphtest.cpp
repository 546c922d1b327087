// Random graphs of packages, each started for real and compared with the ordering rule written out word by word: a
// matrix of bytes, closed by three loops.
#include <base/inex.h>
#include <base/ininitmgr.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace
{
using VnTest::NumberedPackage;

constexpr int typeCount = 24;

using Package = Vn::InPackageInit;
using MakePackage = std::unique_ptr<Package> (*)(char const* name, std::vector<std::type_info const*> const& needs,
                                                 std::vector<std::string>& started);

template <int number>
std::unique_ptr<Package> makePackage(char const* name, std::vector<std::type_info const*> const& needs,
                                     std::vector<std::string>& started)
{
    auto package = std::make_unique<NumberedPackage<number>>(name, needs);
    package->onStart = [name = std::string(name), &started] { started.push_back(name); };
    return package;
}

struct PackageType
{
    MakePackage make;
    std::type_info const* type;
};

template <int... numbers>
std::array<PackageType, typeCount> makeTypes(std::integer_sequence<int, numbers...>)
{
    return {PackageType{makePackage<numbers>, NumberedPackage<numbers>::getType()}...};
}

const std::array<PackageType, typeCount> types = makeTypes(std::make_integer_sequence<int, typeCount>());

/// Nodes are type numbers; needs may repeat, name their own node, and name a type that isn't registered.
struct Graph
{
    std::vector<int> nodes;
    std::vector<std::string> names;       ///< by type number
    std::vector<std::vector<int>> needs;  ///< by type number
};

/// What the rule says about a graph.
struct Outcome
{
    std::string failure;  ///< reason of the exception, empty if all start
    std::vector<std::string> order;
    std::string dump;
    std::string cycles;
};

Outcome byTheRule(Graph const& graph)
{
    Outcome outcome;
    outcome.cycles = "No dependency cycles to report.\n";
    std::vector<int> batch = graph.nodes;
    std::sort(batch.begin(), batch.end(), [&](int left, int right) {
        return graph.names[static_cast<std::size_t>(left)] < graph.names[static_cast<std::size_t>(right)];
    });
    const std::size_t n = batch.size();
    const auto nameAt = [&](std::size_t i) { return graph.names[static_cast<std::size_t>(batch[i])]; };
    std::vector<std::vector<char>> bit(n, std::vector<char>(n, 0));
    std::vector<int> count(n, 0);
    for (std::size_t i = 0; i < n; ++i) {
        for (int need : graph.needs[static_cast<std::size_t>(batch[i])]) {
            const auto found = std::find(batch.begin(), batch.end(), need);
            if (found == batch.end()) {
                outcome.failure = std::string("Init Package not registered: '") +
                                  types[static_cast<std::size_t>(need)].type->name() + "'.";
                return outcome;
            }
            bit[i][static_cast<std::size_t>(found - batch.begin())] = 1;
            ++count[i];
        }
    }

    bool isCyclic = false;
    for (std::size_t k = 0; k < n; ++k) {
        if (count[k] == 0)
            continue;
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k || !bit[i][k])
                continue;
            for (std::size_t j = 0; j < n; ++j) {
                if (j == k || !bit[k][j] || bit[i][j])
                    continue;
                bit[i][j] = 1;
                if (i != j)
                    ++count[i];
                else
                    isCyclic = true;
            }
        }
    }

    if (isCyclic) {
        outcome.failure = "Init dependencies contain cycle(s)";
        outcome.cycles.clear();
        std::vector<int> group(n, -1);
        int current = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (group[i] != -1 || !bit[i][i])
                continue;
            group[i] = current;
            outcome.cycles += "'" + nameAt(i) + "' is in a cycle with:\n";
            for (std::size_t j = i + 1; j < n; ++j) {
                if (!bit[i][j] || !bit[j][j])
                    continue;
                group[j] = current;
                outcome.cycles += "\t'" + nameAt(j) + "'\n";
            }
            ++current;
        }
        return outcome;
    }

    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t left, std::size_t right) { return count[left] < count[right]; });
    for (std::size_t i : order) {
        outcome.order.push_back(nameAt(i));
        outcome.dump += "\t'" + nameAt(i) + "' Initialized (" + std::to_string(count[i]) + " dependencies)\n";
    }
    return outcome;
}

Outcome forReal(Graph const& graph)
{
    Outcome outcome;
    std::vector<std::unique_ptr<Package>> packages;
    try {
        Vn::InReinitGuard guard;
        for (int node : graph.nodes) {
            std::vector<std::type_info const*> needs;
            for (int need : graph.needs[static_cast<std::size_t>(node)])
                needs.push_back(types[static_cast<std::size_t>(need)].type);
            packages.push_back(types[static_cast<std::size_t>(node)].make(
                graph.names[static_cast<std::size_t>(node)].c_str(), needs, outcome.order));
        }
    } catch (Vn::InEx const& failure) {
        outcome.failure = failure.getReason();
    }
    std::ostringstream dump;
    Vn::InInitMgr::getInstance().dump(dump);
    const std::string text = dump.str();
    const std::size_t behindLibrary = text.find("\t'base' Initialized (12 dependencies)\n") + 38;
    const std::size_t cycles = text.find("Dependency cycle(s)");
    outcome.dump = text.substr(behindLibrary, cycles == std::string::npos ? cycles : cycles - behindLibrary);
    std::ostringstream report;
    Vn::InInitMgr::getInstance().reportCycles(report);
    outcome.cycles = report.str();
    return outcome;
}

Graph randomGraph(std::mt19937& random)
{
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    Graph graph;
    const int size = 1 + below(typeCount - 1);
    std::vector<int> all(typeCount);
    std::iota(all.begin(), all.end(), 0);
    std::shuffle(all.begin(), all.end(), random);
    graph.nodes.assign(all.begin(), all.begin() + size);

    std::vector<int> labels(typeCount);
    std::iota(labels.begin(), labels.end(), 0);
    std::shuffle(labels.begin(), labels.end(), random);
    for (int label : labels)
        graph.names.push_back((below(2) != 0 ? "p" : "P") + std::to_string(label));

    graph.needs.resize(typeCount);
    const int shape = below(4);  // acyclic, any, with self-listed ones, all self-listed
    const int needs = below(4);
    for (int i = 0; i < size; ++i) {
        std::vector<int>& list = graph.needs[static_cast<std::size_t>(graph.nodes[static_cast<std::size_t>(i)])];
        for (int need = below(needs + 1); need > 0; --need) {
            const int limit = shape == 0 ? i : size;
            if (limit > 0)
                list.push_back(graph.nodes[static_cast<std::size_t>(below(limit))]);
            if (!list.empty() && below(8) == 0)
                list.push_back(list.back());
        }
        if (shape == 3 || (shape == 2 && below(2) != 0))
            list.push_back(graph.nodes[static_cast<std::size_t>(i)]);
        if (below(200) == 0)
            list.push_back(all.back());
        std::shuffle(list.begin(), list.end(), random);
    }
    return graph;
}
}  // namespace

// A sanitizer takes twenty times as long for each.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int graphCount = 6000;
#else
constexpr int graphCount = 60000;
#endif

VN_CHILD(randomGraphs)
{
    std::ostringstream unread;
    std::streambuf* const console = std::cout.rdbuf(unread.rdbuf());
    VnTest::start();
    std::mt19937 random(20211);
    int started = 0;
    int cyclic = 0;
    int missing = 0;
    int different = 0;
    for (int i = 0; i < graphCount; ++i) {
        const Graph graph = randomGraph(random);
        const Outcome expected = byTheRule(graph);
        const Outcome real = forReal(graph);
        unread.str("");
        if (real.failure != expected.failure || real.order != expected.order || real.dump != expected.dump ||
            (expected.failure.find("not reg") == std::string::npos && real.cycles != expected.cycles))
            ++different;
        if (expected.failure.empty())
            ++started;
        else if (expected.cycles.find("is in a cycle") != std::string::npos)
            ++cyclic;
        else
            ++missing;
    }
    std::cout.rdbuf(console);
    std::cout << "different: " << different << "\n"
              << (started > graphCount / 3) << (cyclic > graphCount / 12) << (missing > graphCount / 60) << "\n";
    return 0;
}

TEST(InRandomGraph, orderCountsAndCyclesAreThoseOfTheRule)
{
    VnTest::expectOutput("randomGraphs", "different: 0\n111\n");
}
