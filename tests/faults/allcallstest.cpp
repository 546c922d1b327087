// Each system call of each act fails: with each error that its manual page names, once and from there on; it is interrupted;
// it moves half of what it was to move. Nothing hangs, nothing is lost or half, what is thrown has the system's error, no
// descriptor stays, and the next try works.
//
// The table of results stands at the end of the whole program's output.
#include "act.h"
#include "failingcalls.h"
#include "trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using namespace VnTest;

namespace
{
constexpr struct
{
    Manner manner;
    char const* name;
} manners[] = {{Manner::refused, "refused"},
               {Manner::refusedFromThere, "refused from there on"},
               {Manner::interrupted, "interrupted"},
               {Manner::cutShort, "cut short"},
               {Manner::cutShortFromThere, "cut short from there on"}};
constexpr std::size_t mannersCount = std::size(manners);

struct Counts
{
    int trials = 0;
    int thrown = 0;
};

struct Row
{
    char const* act;
    Counts counts[mannersCount];
};

std::vector<Row> rows;

/// Prints the table when all tests have run.
class Table : public testing::Environment
{
public:
    void TearDown() override
    {
        std::printf("\n%-18s", "act: thrown/trials");
        for (auto const& manner : manners)
            std::printf(" %24s", manner.name);
        std::printf("\n");
        Row all = {"all", {}};
        for (Row const& row : rows) {
            print(row);
            for (std::size_t i = 0; i < mannersCount; ++i) {
                all.counts[i].trials += row.counts[i].trials;
                all.counts[i].thrown += row.counts[i].thrown;
            }
        }
        print(all);
    }

private:
    static void print(Row const& row)
    {
        std::printf("%-18s", row.act);
        for (Counts const& counts : row.counts)
            std::printf(" %24s", (std::to_string(counts.thrown) + "/" + std::to_string(counts.trials)).c_str());
        std::printf("\n");
    }
};

[[maybe_unused]] testing::Environment* const table = testing::AddGlobalTestEnvironment(new Table);
[[maybe_unused]] testing::Environment* const folder = testing::AddGlobalTestEnvironment(new TrialFolder);

Findings tryCall(NamedAct const& act, CallPlan const& callPlan, int again)
{
    forgetCallFindings();
    const Plan plan{catchCalls, [=] { failCalls(callPlan, noteFailure); }, stopFailingCallsOfAll};
    return tryAct(act, plan, again);
}

/// Whether what was thrown tells of the failure.
bool isStated(NamedAct const& act, Findings const& findings, CallFindings const& call)
{
    if (findings.ending == Ending::outOfMemory)
        return call.error == ENOMEM || call.error == EAGAIN;
    // A thread for whose stack there is no memory is a thread that can't be had for now.
    if (findings.ending == Ending::systemError &&
        (findings.error == call.error || (findings.error == EAGAIN && call.error == ENOMEM)))
        return true;
    return std::any_of(act.statedTexts.begin(), act.statedTexts.end(),
                       [&](std::string_view text) { return std::string_view(findings.text).starts_with(text); });
}

Counts failEach(NamedAct const& act, Manner manner, int usualDescriptors)
{
    Counts counts;
    CallPlan plan{manner, 0, 0};
    for (;; ++counts.trials) {
        const Findings findings = tryCall(act, plan, 1);
        const CallFindings call = getCallFindings();
        if (!call.isReached) {
            EXPECT_EQ(describeEnd(findings), "") << act.name << ", nothing failed";
            return counts;
        }
        SCOPED_TRACE(std::string(act.name) + ", call " + std::to_string(plan.index) + ", " +
                     getCallName(call.number) + ", " + (call.error != 0 ? std::strerror(call.error) : "cut short") +
                     "\n" + findings.place);
        EXPECT_EQ(describeEnd(findings), "");
        if (findings.signal == 0 && findings.ending != Ending::returned) {
            ++counts.thrown;
            EXPECT_TRUE(isStated(act, findings, call)) << findings.text << ", error " << findings.error;
            EXPECT_FALSE((manner == Manner::interrupted && !act.mayBeInterrupted) || call.error == 0)
                << "thrown: " << findings.text;
        }
        EXPECT_LE(findings.descriptors, usualDescriptors) << "a descriptor has leaked";
        plan.choice = call.isLastChoice ? 0 : plan.choice + 1;
        plan.index += call.isLastChoice;
    }
}

std::vector<NamedAct> getCallingActs()
{
    std::vector<NamedAct> acts;
    for (NamedAct const& act : getActs())
        if (act.makesCalls)
            acts.push_back(act);
    return acts;
}

class Calls : public testing::TestWithParam<std::size_t>
{};

INSTANTIATE_TEST_SUITE_P(Acts, Calls, testing::Range(std::size_t{0}, getCallingActs().size()),
                         [](auto const& test) { return std::string(getCallingActs()[test.param].name); });
}  // namespace

TEST_P(Calls, thatFailAreToldLoseNothingAndTheNextTryWorks)
{
    const NamedAct act = getCallingActs()[GetParam()];
    // Another processor has another instruction for a system call, and a hardened system may forbid code that is made here.
    if (char const* const reason = whyNoFailingCalls())
        GTEST_SKIP() << reason;
    const Findings usual = tryCall(act, {Manner::refused, -1, 0}, 1);
    // A container may forbid filters, and a kernel be built without them; any other reason is a failure.
    if (usual.isSkipped &&
        (usual.error == EPERM || usual.error == EACCES || usual.error == ENOSYS || usual.error == EINVAL))
        GTEST_SKIP() << "the system takes no filter of system calls: " << std::strerror(usual.error);
    ASSERT_FALSE(usual.isSkipped) << std::strerror(usual.error);
    EXPECT_EQ(describeEnd(usual), "");
    EXPECT_EQ(usual.ending, Ending::returned) << usual.text;
    Row row = {act.name, {}};
    for (std::size_t i = 0; i < mannersCount; ++i)
        row.counts[i] = failEach(act, manners[i].manner, usual.descriptors);
    rows.push_back(row);
    EXPECT_GT(row.counts[0].trials, 0);
}
