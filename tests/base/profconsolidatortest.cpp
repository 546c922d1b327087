#include <base/profconsolidator.h>
#include <base/profiler.h>

#include "scriptedtimer.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>

using Vn::ProfConsolidator;
using Vn::Profiler;
using VnTest::ScriptedTimer;

static_assert(std::is_polymorphic_v<ProfConsolidator> && !std::has_virtual_destructor_v<ProfConsolidator>);

namespace
{
Profiler<ScriptedTimer> profilerWith(std::initializer_list<double> cycles)
{
    Profiler<ScriptedTimer> profiler("one of several");
    for (double seconds : cycles) {
        ScriptedTimer::now = 0;
        profiler.start();
        ScriptedTimer::now = seconds;
        profiler.stop();
        profiler.endCycle();
    }
    return profiler;
}

void add(ProfConsolidator& all, std::initializer_list<double> cycles)
{
    Profiler<ScriptedTimer> profiler = profilerWith(cycles);
    all.consolidate(profiler);
}

std::string written(ProfConsolidator const& all)
{
    std::ostringstream stream;
    stream << all;
    return stream.str();
}
}  // namespace

TEST(ProfConsolidator, isZeroWithoutCycles)
{
    const ProfConsolidator all;
    EXPECT_EQ(all.cycles(), 0);
    EXPECT_EQ(all.totalTime(), 0.0);
    EXPECT_EQ(all.averageTime(), 0.0);
    EXPECT_EQ(all.minTime(), 0.0);
    EXPECT_EQ(all.maxTime(), 0.0);
    EXPECT_EQ(written(all), "Profiler Consolidator:\n"
                            "        Nb of cycles:   0\n"
                            "        Total time:     0.000000\n"
                            "        Average time:   0.000000\n"
                            "        Minimum time:   0.000000\n"
                            "        Maximum time:   0.000000\n"
                            "\n");
}

TEST(ProfConsolidator, mergesSeveral)
{
    ProfConsolidator all;
    add(all, {2, 4});
    add(all, {1, 3, 6});
    EXPECT_EQ(all.cycles(), 5);
    EXPECT_EQ(all.totalTime(), 16.0);
    EXPECT_EQ(all.averageTime(), 16.0 / 5);
    EXPECT_EQ(all.minTime(), 1.0);
    EXPECT_EQ(all.maxTime(), 6.0);
}

TEST(ProfConsolidator, anEmptyProfilerPinsTheMinimumAtZero)
{
    ProfConsolidator all;
    add(all, {2, 3});
    EXPECT_EQ(all.minTime(), 2.0);
    add(all, {});
    EXPECT_EQ(all.minTime(), 0.0);
    add(all, {5});
    EXPECT_EQ(all.minTime(), 0.0);
    EXPECT_EQ(all.cycles(), 3);
    EXPECT_EQ(all.maxTime(), 5.0);
}

TEST(ProfConsolidator, onlyClosedCyclesCount)
{
    Profiler<ScriptedTimer> profiler = profilerWith({1});
    profiler.start();
    ScriptedTimer::now = 100;
    profiler.stop();
    ProfConsolidator all;
    all.consolidate(profiler);
    EXPECT_EQ(all.totalTime(), 1.0);
    EXPECT_EQ(all.maxTime(), 1.0);
    EXPECT_EQ(profiler.cycleTime(), 99.0);
}

TEST(ProfConsolidator, copiesAllFour)
{
    ProfConsolidator all;
    add(all, {2, 4});
    const ProfConsolidator copy(all);
    ProfConsolidator assigned;
    assigned = all;
    add(all, {1, 100});
    for (ProfConsolidator const* kept : {&copy, static_cast<ProfConsolidator const*>(&assigned)}) {
        EXPECT_EQ(kept->cycles(), 2);
        EXPECT_EQ(kept->totalTime(), 6.0);
        EXPECT_EQ(kept->minTime(), 2.0);
        EXPECT_EQ(kept->maxTime(), 4.0);
    }
    EXPECT_EQ(all.cycles(), 4);
}

TEST(ProfConsolidator, writesSixLinesAndAnEmptyOneAndLeavesTheFormat)
{
    ProfConsolidator all;
    add(all, {0.25, 0.5});
    std::ostringstream stream;
    stream << std::scientific << std::internal << std::setprecision(4) << std::setfill('0');
    const auto flags = stream.flags();
    stream << all;
    EXPECT_EQ(stream.str(), "Profiler Consolidator:\n"
                            "        Nb of cycles:   2\n"
                            "        Total time:     0.7500\n"
                            "        Average time:   0.3750\n"
                            "        Minimum time:   0.2500\n"
                            "        Maximum time:   0.5000\n"
                            "\n");
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.precision(), 4);
    EXPECT_EQ(stream.fill(), '0');
}

TEST(ProfConsolidator, bringsTogetherWhatThreadsHaveMeasured)
{
    Profiler<Vn::TodIntervalTimer> first("first"), second("second");
    const auto measure = [](Profiler<Vn::TodIntervalTimer>& own) {
        for (int i = 0; i < 100; ++i) {
            own.start();
            own.stop();
            own.endCycle();
        }
    };
    std::thread other(measure, std::ref(first));
    measure(second);
    other.join();
    ProfConsolidator all;
    all.consolidate(first);
    all.consolidate(second);
    EXPECT_EQ(all.cycles(), 200);
    EXPECT_EQ(all.totalTime(), first.totalTime() + second.totalTime());
}
