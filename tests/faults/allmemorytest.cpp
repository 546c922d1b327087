// Each allocation of each act fails: once, and once more with all that come behind it. Nothing but the stated exception may
// come of it, nothing may be left of it, and the next try works.
//
// The table of results stands at the end of the whole program's output.
#include "act.h"
#include "failingmemory.h"
#include "trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using namespace VnTest;

namespace
{
/// What came of the failures of one kind.
struct Counts
{
    int trials = 0;
    int thrown = 0;    ///< std::bad_alloc, the system's error for it, or what else is stated
    int absorbed = 0;  ///< went without
};

struct Row
{
    char const* act;
    Counts once, fromThereOn;
};

std::vector<Row> rows;

/// Prints the table when all tests have run.
class Table : public testing::Environment
{
public:
    void TearDown() override
    {
        Counts once, fromThereOn;
        std::printf("\n%-20s %23s   %23s\n%-20s", "", "one allocation fails", "all from there on fail", "act");
        for (int i = 0; i < 2; ++i)
            std::printf(" %6s %7s %8s", "trials", "thrown", "absorbed");
        std::printf("\n");
        for (Row const& row : rows) {
            print(row.act, row.once, row.fromThereOn);
            add(once, row.once);
            add(fromThereOn, row.fromThereOn);
        }
        print("all", once, fromThereOn);
    }

private:
    static void add(Counts& sum, Counts const& counts)
    {
        sum.trials += counts.trials;
        sum.thrown += counts.thrown;
        sum.absorbed += counts.absorbed;
    }

    static void print(char const* name, Counts const& once, Counts const& fromThereOn)
    {
        std::printf("%-20s", name);
        for (Counts const* counts : {&once, &fromThereOn})
            std::printf(" %6d %7d %8d", counts->trials, counts->thrown, counts->absorbed);
        std::printf("\n");
    }
};

[[maybe_unused]] testing::Environment* const table = testing::AddGlobalTestEnvironment(new Table);
[[maybe_unused]] testing::Environment* const folder = testing::AddGlobalTestEnvironment(new TrialFolder);

Findings tryWithout(NamedAct const& act, long number, Failing failing, int again)
{
    static long before;
    const Plan plan{[] {
                        before = countHeldBlocks();
                        return true;
                    },
                    [=] { failAllocation(number, failing, noteFailure); },
                    [] {
                        stopFailingAllocations();
                        return countFailedAllocations();
                    },
                    [](Findings& findings) { findings.blocks = countHeldBlocks() - before; }};
    return tryAct(act, plan, again);
}

/// The errors of the system that mean that there is no memory. A thread that can't be made says EAGAIN.
bool meansNoMemory(Findings const& findings)
{
    return findings.ending == Ending::outOfMemory ||
           (findings.ending == Ending::systemError && (findings.error == ENOMEM || findings.error == EAGAIN));
}

bool isStated(NamedAct const& act, Findings const& findings)
{
    return std::any_of(act.statedTexts.begin(), act.statedTexts.end(),
                       [&](std::string_view text) { return std::string_view(findings.text).starts_with(text); });
}

/// What the act leaves where nothing fails: blocks that are made once, as the C++ library's.
struct Usual
{
    long blocks;
    int descriptors;
};

Usual findUsual(NamedAct const& act)
{
    Usual usual{};
    for (int again = 0; again < 3; ++again) {
        const Findings findings = tryWithout(act, -1, Failing::once, again);
        EXPECT_EQ(describeEnd(findings), "");
        EXPECT_EQ(findings.ending, Ending::returned) << findings.text;
        usual.blocks = std::max(usual.blocks, findings.blocks);
        usual.descriptors = std::max(usual.descriptors, findings.descriptors);
    }
    return usual;
}

Counts failEach(NamedAct const& act, Failing failing, Usual const& usual)
{
    Counts counts;
    for (;; ++counts.trials) {
        const Findings findings = tryWithout(act, counts.trials, failing, 1);
        SCOPED_TRACE(std::string(act.name) + ", allocation " + std::to_string(counts.trials) +
                     (failing == Failing::once ? "\n" : " and all behind it\n") + findings.place);
        EXPECT_EQ(describeEnd(findings), "");
        if (findings.signal == 0 && findings.hits == 0)
            return counts;
        counts.thrown += findings.ending != Ending::returned;
        counts.absorbed += findings.ending == Ending::returned;
        EXPECT_TRUE(findings.signal != 0 || findings.ending == Ending::returned || meansNoMemory(findings) ||
                    isStated(act, findings))
            << findings.text;
        EXPECT_LE(findings.blocks, usual.blocks + act.spareBlocks) << "memory has leaked";
        EXPECT_LE(findings.descriptors, usual.descriptors) << "a descriptor has leaked";
        if (testing::Test::HasFailure() && counts.trials > 5000)
            return counts;
    }
}

class Memory : public testing::TestWithParam<std::size_t>
{};

INSTANTIATE_TEST_SUITE_P(Acts, Memory, testing::Range(std::size_t{0}, getActs().size()),
                         [](auto const& test) { return std::string(getActs()[test.param].name); });
}  // namespace

TEST_P(Memory, thatFailsIsThrownLeavesNothingAndTheNextTryWorks)
{
    NamedAct const& act = getActs()[GetParam()];
    const Usual usual = findUsual(act);
    const Counts once = failEach(act, Failing::once, usual);
    const Counts fromThereOn = failEach(act, Failing::fromThereOn, usual);
    rows.push_back({act.name, once, fromThereOn});
}
