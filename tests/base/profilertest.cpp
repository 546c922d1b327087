#include <base/lgstream.h>
#include <base/profiler.h>

#include "scriptedtimer.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <type_traits>
#include <vector>

using Vn::HwIntervalTimer;
using Vn::Profiler;
using Vn::ProfilerBase;
using Vn::TodIntervalTimer;
using VnTest::ScriptedTimer;

static_assert(std::is_abstract_v<ProfilerBase> && std::has_virtual_destructor_v<ProfilerBase>);

namespace
{
/// A profiler by the test's clock.
class ProfilerTest : public testing::Test
{
protected:
    void addPair(double seconds)
    {
        ScriptedTimer::now = 0;
        _profiler.start();
        ScriptedTimer::now = seconds;
        _profiler.stop();
    }

    void addCycle(double seconds)
    {
        addPair(seconds);
        _profiler.endCycle();
    }

    void expectZeros() const
    {
        EXPECT_EQ(_profiler.cycleTime(), 0.0);
        EXPECT_EQ(_profiler.totalTime(), 0.0);
        EXPECT_EQ(_profiler.averageTime(), 0.0);
        EXPECT_EQ(_profiler.minTime(), 0.0);
        EXPECT_EQ(_profiler.maxTime(), 0.0);
        EXPECT_EQ(_profiler.standardDeviation(), 0.0);
        EXPECT_EQ(_profiler.cycles(), 0);
    }

    std::string written() const
    {
        std::ostringstream stream;
        stream << _profiler;
        return stream.str();
    }

    Profiler<ScriptedTimer> _profiler{"passes"};
};
}  // namespace

TEST_F(ProfilerTest, startsWithZeros)
{
    expectZeros();
}

TEST_F(ProfilerTest, oneCycleIsAllOfIt)
{
    addCycle(2.5);
    EXPECT_EQ(_profiler.cycles(), 1);
    EXPECT_EQ(_profiler.totalTime(), 2.5);
    EXPECT_EQ(_profiler.averageTime(), 2.5);
    EXPECT_EQ(_profiler.minTime(), 2.5);
    EXPECT_EQ(_profiler.maxTime(), 2.5);
    EXPECT_EQ(_profiler.standardDeviation(), 0.0);
    EXPECT_EQ(_profiler.cycleTime(), 0.0);
}

TEST_F(ProfilerTest, twoCyclesHaveADeviation)
{
    addCycle(1);
    addCycle(3);
    EXPECT_EQ(_profiler.cycles(), 2);
    EXPECT_EQ(_profiler.totalTime(), 4.0);
    EXPECT_EQ(_profiler.averageTime(), 2.0);
    EXPECT_EQ(_profiler.minTime(), 1.0);
    EXPECT_EQ(_profiler.maxTime(), 3.0);
    EXPECT_EQ(_profiler.standardDeviation(), std::sqrt(2.0));
}

TEST_F(ProfilerTest, aCycleIsTheSumOfItsPairs)
{
    addPair(1);
    EXPECT_EQ(_profiler.cycleTime(), 1.0);
    addPair(2);
    EXPECT_EQ(_profiler.cycleTime(), 3.0);
    EXPECT_EQ(_profiler.cycles(), 0);
    EXPECT_EQ(_profiler.totalTime(), 0.0);
    EXPECT_EQ(_profiler.maxTime(), 0.0);
    _profiler.endCycle();
    EXPECT_EQ(_profiler.minTime(), 3.0);
    EXPECT_EQ(_profiler.maxTime(), 3.0);
    EXPECT_EQ(_profiler.cycleTime(), 0.0);
}

TEST_F(ProfilerTest, timeWithoutAnEndStaysOutOfTheStatistics)
{
    addCycle(4);
    addPair(100);
    EXPECT_EQ(_profiler.totalTime(), 4.0);
    EXPECT_EQ(_profiler.averageTime(), 4.0);
    EXPECT_EQ(_profiler.maxTime(), 4.0);
    EXPECT_EQ(_profiler.cycles(), 1);
    EXPECT_EQ(_profiler.cycleTime(), 100.0);
}

TEST_F(ProfilerTest, anEmptyCycleCounts)
{
    addCycle(4);
    _profiler.endCycle();
    EXPECT_EQ(_profiler.cycles(), 2);
    EXPECT_EQ(_profiler.minTime(), 0.0);
    EXPECT_EQ(_profiler.maxTime(), 4.0);
    EXPECT_EQ(_profiler.averageTime(), 2.0);
}

TEST_F(ProfilerTest, negativeTimesGoIntoTheSumsButNotTheMaximum)
{
    addCycle(-2);
    EXPECT_EQ(_profiler.totalTime(), -2.0);
    EXPECT_EQ(_profiler.minTime(), -2.0);
    EXPECT_EQ(_profiler.maxTime(), 0.0);
}

TEST_F(ProfilerTest, stopOnceMoreAddsTheSpanOnceMore)
{
    ScriptedTimer::now = 5;
    _profiler.stop();  // never started: from zero
    EXPECT_EQ(_profiler.cycleTime(), 5.0);
    _profiler.start();
    ScriptedTimer::now = 6;
    _profiler.stop();
    ScriptedTimer::now = 8;
    _profiler.stop();
    EXPECT_EQ(_profiler.cycleTime(), 5.0 + 1.0 + 3.0);
}

TEST_F(ProfilerTest, resetForgetsAllButNameAndStart)
{
    addCycle(1);
    addCycle(3);
    ScriptedTimer::now = 10;
    _profiler.start();
    ScriptedTimer::now = 11;
    _profiler.stop();
    _profiler.reset();
    expectZeros();
    EXPECT_STREQ(_profiler.getName(), "passes");
    ScriptedTimer::now = 14;
    _profiler.stop();
    EXPECT_EQ(_profiler.cycleTime(), 4.0);
    _profiler.endCycle();
    EXPECT_EQ(_profiler.minTime(), 4.0);
    EXPECT_EQ(_profiler.standardDeviation(), 0.0);
}

TEST_F(ProfilerTest, forwardsItsName)
{
    EXPECT_STREQ(_profiler.getName(), "passes");
    char const* const other = "other";
    _profiler.setName(other);
    EXPECT_EQ(_profiler.getName(), other);
    EXPECT_STREQ(Profiler<HwIntervalTimer>().getName(), "anonymous");
    EXPECT_STREQ(Profiler<TodIntervalTimer>().getName(), "anonymous");
    EXPECT_EQ(Profiler<HwIntervalTimer>(other).getName(), other);
}

TEST_F(ProfilerTest, deviationAgreesWithTwoPasses)
{
    std::mt19937_64 random(1);
    std::vector<double> times;
    for (int i = 0; i < 1000; ++i) {
        times.push_back(0.5 + static_cast<double>(random() % 1000000) * 1e-6);
        addCycle(times.back());
    }
    long double mean = 0, squares = 0;
    for (double time : times)
        mean += time / 1000.0L;
    for (double time : times)
        squares += (time - mean) * (time - mean);
    EXPECT_NEAR(_profiler.averageTime(), static_cast<double>(mean), 1e-12);
    EXPECT_NEAR(_profiler.standardDeviation(), static_cast<double>(std::sqrt(squares / 999)), 1e-12);
}

TEST_F(ProfilerTest, aVarianceThatRoundsBelowZeroIsNotANumber)
{
    // Three times 0.1 squared is summed to 0.03, rounded at each step; the square of the sum divided by three rounds to
    // a larger number.
    for (int i = 0; i < 3; ++i)
        addCycle(0.1);
    const double sum = 0.1 + 0.1 + 0.1, squares = 0.1 * 0.1 + 0.1 * 0.1 + 0.1 * 0.1;
    ASSERT_LT(squares - sum * sum / 3, 0.0);
    EXPECT_TRUE(std::isnan(_profiler.standardDeviation()));
}

TEST_F(ProfilerTest, writesItsSevenLinesAndAnEmptyOne)
{
    addCycle(1);
    addCycle(3);
    EXPECT_EQ(written(), "Profiler passes:\n"
                         "        Nb of cycles:   2\n"
                         "        Total time:     4.000000\n"
                         "        Average time:   2.000000\n"
                         "        Minimum time:   1.000000\n"
                         "        Maximum time:   3.000000\n"
                         "        Standard dev:   1.414214\n"
                         "\n");
}

TEST_F(ProfilerTest, writesZerosWithoutCycles)
{
    _profiler.setName(nullptr);
    EXPECT_EQ(written(), "Profiler :\n"
                         "        Nb of cycles:   0\n"
                         "        Total time:     0.000000\n"
                         "        Average time:   0.000000\n"
                         "        Minimum time:   0.000000\n"
                         "        Maximum time:   0.000000\n"
                         "        Standard dev:   0.000000\n"
                         "\n");
}

TEST_F(ProfilerTest, writesInFixedNotationWithTheStreamsPrecisionAndLeavesItsFormat)
{
    addCycle(0.125);
    std::ostringstream stream;
    stream << std::scientific << std::right << std::setprecision(3) << std::setfill('*');
    const auto flags = stream.flags();
    stream << static_cast<ProfilerBase const&>(_profiler);
    EXPECT_EQ(stream.str(), "Profiler passes:\n"
                            "        Nb of cycles:   1\n"
                            "        Total time:     0.125\n"
                            "        Average time:   0.125\n"
                            "        Minimum time:   0.125\n"
                            "        Maximum time:   0.125\n"
                            "        Standard dev:   0.000\n"
                            "\n");
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.precision(), 3);
    EXPECT_EQ(stream.fill(), '*');
    stream.str("");
    stream << std::setw(6) << 2 << "|";
    EXPECT_EQ(stream.str(), "*****2|");
}

namespace
{
/// Takes nothing.
class FullBuffer : public std::streambuf
{
    int overflow(int) override { return traits_type::eof(); }
};
}  // namespace

TEST_F(ProfilerTest, leavesTheFormatAlsoWhereTheStreamThrows)
{
    FullBuffer full;
    std::ostream stream(&full);
    stream << std::hexfloat << std::internal << std::setprecision(2) << std::setfill('#');
    const auto flags = stream.flags();
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THROW(stream << _profiler, std::ios_base::failure);
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.precision(), 2);
    EXPECT_EQ(stream.fill(), '#');
}

namespace
{
std::string logged(ProfilerBase const& profiler)
{
    Vn::LgStream stream;
    stream << profiler << Vn::ends;
    std::vector<char> text(stream.getNextSize() + 1);
    stream >> text.data();
    return text.data();
}

/// Results as they are told.
class ToldProfiler : public ProfilerBase
{
public:
    void setName(char const*) override {}
    char const* getName() const override { return "told"; }
    void start() override {}
    void stop() override {}
    void endCycle() override {}
    void reset() override {}
    double cycleTime() const override { return 0; }
    double totalTime() const override { return 1.7976931348623157e308; }
    double averageTime() const override { return -1.7976931348623157e308; }
    double minTime() const override { return std::numeric_limits<double>::infinity(); }
    double maxTime() const override { return 5e-324; }
    double standardDeviation() const override { return std::numeric_limits<double>::quiet_NaN(); }
    int cycles() const override { return std::numeric_limits<int>::min(); }
};

std::string printed(double value)
{
    char text[400];
    std::snprintf(text, sizeof text, "%.9f", value);
    return text;
}
}  // namespace

TEST_F(ProfilerTest, goesIntoALogMessageWithNineDigits)
{
    addCycle(1);
    addCycle(3);
    EXPECT_EQ(logged(_profiler), "Profiler passes:\n"
                                 "        Nb of cycles:   2\n"
                                 "        Total time  :   4.000000000\n"
                                 "        Average time:   2.000000000\n"
                                 "        Minimum time:   1.000000000\n"
                                 "        Maximum time:   3.000000000\n"
                                 "        Standard dev:   1.414213562\n"
                                 "\n");
    _profiler.reset();
    _profiler.setName(nullptr);
    addCycle(0.0000000005);  // a little more than half of the last digit, as a double
    EXPECT_EQ(logged(_profiler), "Profiler :\n"
                                 "        Nb of cycles:   1\n"
                                 "        Total time  :   0.000000001\n"
                                 "        Average time:   0.000000001\n"
                                 "        Minimum time:   0.000000001\n"
                                 "        Maximum time:   0.000000001\n"
                                 "        Standard dev:   0.000000000\n"
                                 "\n");
}

TEST(Profiler, anyResultFitsALogMessage)
{
    const ToldProfiler told;
    EXPECT_EQ(logged(told), "Profiler told:\n"
                            "        Nb of cycles:   -2147483648\n"
                            "        Total time  :   " +
                                printed(told.totalTime()) +
                                "\n"
                                "        Average time:   " +
                                printed(told.averageTime()) +
                                "\n"
                                "        Minimum time:   inf\n"
                                "        Maximum time:   0.000000000\n"
                                "        Standard dev:   nan\n"
                                "\n");
}

template <class T>
static void checkWithAClock()
{
    Profiler<T> profiler("real");
    profiler.start();
    while (profiler.cycleTime() <= 0.0)
        profiler.stop();
    profiler.endCycle();
    profiler.start();
    profiler.stop();
    profiler.endCycle();
    EXPECT_EQ(profiler.cycles(), 2);
    EXPECT_GT(profiler.totalTime(), 0.0);
    EXPECT_LT(profiler.totalTime(), 3600.0);
    EXPECT_LE(profiler.minTime(), profiler.averageTime());
    EXPECT_LE(profiler.averageTime(), profiler.maxTime());
    EXPECT_FALSE(profiler.standardDeviation() < 0.0);  // nor is it a number, if the two are all but equal
}

TEST(Profiler, worksWithBothClocks)
{
    VnTest::startOnce();
    checkWithAClock<HwIntervalTimer>();
    checkWithAClock<TodIntervalTimer>();
}
