#include <base/timer.h>

#include "scriptedtimer.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>

using Vn::HwIntervalTimer;
using Vn::Timer;
using Vn::TimerBase;
using Vn::TodIntervalTimer;
using VnTest::ScriptedTimer;

static_assert(std::is_abstract_v<TimerBase> && std::has_virtual_destructor_v<TimerBase>);

namespace
{
/// A stopwatch by the test's clock.
class TimerTest : public testing::Test
{
protected:
    void startAt(double now)
    {
        ScriptedTimer::now = now;
        _timer.start();
    }

    void stopAt(double now)
    {
        ScriptedTimer::now = now;
        _timer.stop();
    }

    double totalAt(double now) const
    {
        ScriptedTimer::now = now;
        return _timer.totalTime();
    }

    std::string written() const
    {
        std::ostringstream stream;
        stream << _timer;
        return stream.str();
    }

    Timer<ScriptedTimer> _timer{"watch"};
};
}  // namespace

TEST_F(TimerTest, isStoppedAtZeroAtFirst)
{
    EXPECT_EQ(totalAt(7), 0.0);
    EXPECT_EQ(totalAt(9), 0.0);
}

TEST_F(TimerTest, addsUpItsIntervals)
{
    startAt(10);
    stopAt(13);
    EXPECT_EQ(totalAt(20), 3.0);
    startAt(20);
    stopAt(20.5);
    EXPECT_EQ(totalAt(30), 3.5);
}

TEST_F(TimerTest, totalGrowsWhileItRunsOnly)
{
    startAt(10);
    stopAt(11);
    startAt(20);
    EXPECT_EQ(totalAt(20), 1.0);
    EXPECT_EQ(totalAt(22), 3.0);
    EXPECT_EQ(totalAt(25), 6.0);
    stopAt(26);
    EXPECT_EQ(totalAt(26), 7.0);
    EXPECT_EQ(totalAt(40), 7.0);
}

TEST_F(TimerTest, startWhileRunningLosesTheRunningPart)
{
    startAt(10);
    startAt(15);
    EXPECT_EQ(totalAt(16), 1.0);
    stopAt(17);
    EXPECT_EQ(totalAt(20), 2.0);
}

TEST_F(TimerTest, stopWhileStoppedAddsTheSpanOnceMore)
{
    startAt(10);
    stopAt(12);
    stopAt(15);
    EXPECT_EQ(totalAt(20), 2.0 + 5.0);
}

TEST_F(TimerTest, stopWithoutStartAddsTheSpanFromZero)
{
    stopAt(15);
    EXPECT_EQ(totalAt(20), 15.0);
}

TEST_F(TimerTest, resetStopsAndForgets)
{
    startAt(10);
    stopAt(12);
    startAt(13);
    ScriptedTimer::now = 14;
    _timer.reset();
    EXPECT_EQ(totalAt(15), 0.0);
    EXPECT_EQ(totalAt(16), 0.0);
    stopAt(20);  // the interval timer was left alone: its start still stands
    EXPECT_EQ(totalAt(20), 7.0);
}

TEST_F(TimerTest, forwardsItsName)
{
    EXPECT_STREQ(_timer.getName(), "watch");
    char const* const other = "other";
    _timer.setName(other);
    EXPECT_EQ(_timer.getName(), other);
    EXPECT_STREQ(Timer<HwIntervalTimer>().getName(), "anonymous");
    EXPECT_STREQ(Timer<TodIntervalTimer>().getName(), "anonymous");
    EXPECT_EQ(Timer<TodIntervalTimer>(other).getName(), other);
}

TEST_F(TimerTest, writesOneLineWithoutItsEnd)
{
    EXPECT_EQ(written(), "Timer watch: Total = 0");
    startAt(1);
    stopAt(3.25);
    EXPECT_EQ(written(), "Timer watch: Total = 2.25");
    _timer.setName(nullptr);
    EXPECT_EQ(written(), "Timer : Total = 2.25");
}

TEST_F(TimerTest, writesInTheStreamsFormat)
{
    startAt(1);
    stopAt(3.25);
    std::ostringstream stream;
    stream << std::scientific << std::setprecision(2) << std::setfill('*');
    const auto flags = stream.flags();
    stream << static_cast<TimerBase const&>(_timer) << "!";
    EXPECT_EQ(stream.str(), "Timer watch: Total = 2.25e+00!");
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.precision(), 2);
    EXPECT_EQ(stream.fill(), '*');
}

namespace
{
/// Tells when it is asked.
class AskedTimer : public TimerBase
{
public:
    explicit AskedTimer(std::ostringstream& stream) : _stream(stream) {}

    void setName(char const*) override {}
    char const* getName() const override { return "asked"; }
    void start() override {}
    void stop() override {}
    void reset() override {}
    double totalTime() const override
    {
        _stream << "[total]";
        return 1.5;
    }

private:
    std::ostringstream& _stream;
};
}  // namespace

TEST(Timer, isAskedForItsTotalBeforeAnythingIsWritten)
{
    std::ostringstream stream;
    stream << AskedTimer(stream);
    EXPECT_EQ(stream.str(), "[total]Timer asked: Total = 1.5");
}

template <class T>
static void checkWithAClock()
{
    Timer<T> timer;
    timer.start();
    while (timer.totalTime() <= 0.0) {
    }
    timer.stop();
    const double total = timer.totalTime();
    EXPECT_GT(total, 0.0);
    EXPECT_LT(total, 3600.0);
    EXPECT_EQ(timer.totalTime(), total);
    timer.start();
    timer.reset();
    EXPECT_EQ(timer.totalTime(), 0.0);
}

TEST(Timer, worksWithBothClocks)
{
    VnTest::startOnce();
    checkWithAClock<HwIntervalTimer>();
    checkWithAClock<TodIntervalTimer>();
}
