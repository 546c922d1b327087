#include <base/periodictimer.h>
#include <base/sleeper.h>
#include <base/sleepermath_p.h>

#include "expectchild.h"
#include "scriptedsleeper.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <iostream>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>

using Vn::ObjPtr;
using Vn::PeriodicTimer;
using Vn::Sleeper;
using VnTest::expectOutput;
using VnTest::ScriptedSleeper;

namespace SleeperMath = Vn::SleeperMath;

static_assert(std::is_abstract_v<PeriodicTimer> && std::has_virtual_destructor_v<PeriodicTimer>);

namespace
{
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

#if defined(_WIN32)
constexpr double early = 0.002;  // the system's timers count its own milliseconds, which don't begin with ours
#else
constexpr double early = 0.0;
#endif

/// A form of the test's own, which tells of its calls.
class ToldTimer : public PeriodicTimer
{
public:
    explicit ToldTimer(double interval) : PeriodicTimer(interval) {}

    bool start() override
    {
        std::cout << "start at " << getInterval() << "\n";
        if (isRunning())
            return false;
        beginCount(getCurrentTime());
        return true;
    }

    bool stop() override
    {
        std::cout << "stop at " << getInterval() << "\n";
        const bool wasRunning = isRunning();
        endCount();
        return wasRunning;
    }

    unsigned long wait() override { return getCurrentCount(); }
};

class Beating : public testing::Test
{
protected:
    Beating() { VnTest::startOnce(); }
};
}  // namespace

TEST(PeriodicTimer, countsIntervalsToTheNearestOne)
{
    constexpr unsigned long most = std::numeric_limits<unsigned long>::max();
    const struct
    {
        double elapsed;
        double interval;
        unsigned long count;
    } table[] = {
        {0.0, 0.5, 0},         {0.24, 0.5, 0},        {0.25, 0.5, 1},  // from the middle upward
        {0.5, 0.5, 1},         {0.74, 0.5, 1},        {0.75, 0.5, 2},
        {1.2, 0.5, 2},         {1.3, 0.5, 3},         {1000000.0, 0.001, 1000000000},
        {-1.0, 0.5, 0},        {1.0, -0.5, 0},        {1.0, 0.0, most},
        {0.0, 0.0, 0},         {1e300, 1e-300, most}, {1.0, infinity, 0},
        {infinity, 1.0, most}, {notANumber, 1.0, 0},  {1.0, notANumber, 0},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(testing::Message() << row.elapsed << " in " << row.interval);
        EXPECT_EQ(SleeperMath::countIntervals(row.elapsed, row.interval), row.count);
    }
}

VN_CHILD(periodicCount)
{
    ScriptedSleeper::install();
    ScriptedSleeper::now = 100.0;
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.5);
    const auto count = [&] { std::cout << timer->getCurrentCount() << " "; };
    const auto at = [&](double seconds) {
        ScriptedSleeper::now = seconds;
        count();
    };

    std::cout << "stopped: " << timer->stop() << " ";
    count();
    std::cout << timer->getCurrentTime() << "\nstarted: " << timer->start() << " ";
    at(100.0);
    at(101.2);
    at(101.3);
    std::cout << "\nstarted again: " << timer->start() << " ";
    count();
    at(99.0);
    at(100.5);
    std::cout << "\nanother interval: " << timer->setInterval(0.0123456) << " " << timer->getInterval() << " ";
    count();
    at(100.5 + 0.0123456 * 7);
    std::cout << "\nstopped: " << timer->stop() << timer->stop() << " ";
    count();
    std::cout << "\nanother interval: " << timer->setInterval(2.0) << " ";
    at(200.0);
    std::cout << timer->start() << " ";
    count();
    at(203.0);
    std::cout << "\n";
    ScriptedSleeper::remove();
    return 0;
}

TEST(PeriodicTimer, countIsThatOfTheClock)
{
    expectOutput("periodicCount", "stopped: 0 0 100\n"
                                  "started: 1 0 2 3 \n"
                                  "started again: 0 3 0 1 \n"
                                  "another interval: 0.0123456 0.0123456 0 7 \n"
                                  "stopped: 10 0 \n"
                                  "another interval: 2 0 1 0 2 \n");
}

VN_CHILD(missedTicks)
{
    ScriptedSleeper::install();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.002);
    timer->start();
    for (double now : {0.002, 0.004, 0.010, 0.012}) {
        ScriptedSleeper::now = now;
        std::cout << timer->wait() << " ";
    }
    std::cout << "\n";
    timer.reset();  // while it runs
    ScriptedSleeper::remove();
    return 0;
}

TEST(PeriodicTimer, missedTicksShowAsAJumpOfTheCount)
{
    expectOutput("missedTicks", "1 2 5 6 \n");
}

VN_CHILD(intervalOfAForm)
{
    ScriptedSleeper::install();
    ToldTimer timer(3.0);
    std::cout << timer.setInterval(4.0) << "\n";
    timer.start();
    ScriptedSleeper::now = 8.0;
    std::cout << timer.getCurrentCount() << "\n";
    const ToldTimer copy(timer);
    ToldTimer assigned(1.0);
    assigned = timer;
    std::cout << timer.setInterval(2.0) << " " << timer.getCurrentCount() << "\n";
    std::cout << copy.getInterval() << copy.getCurrentCount() << assigned.getInterval()
              << assigned.getCurrentCount() << "\n";
    ScriptedSleeper::remove();
    return 0;
}

TEST(PeriodicTimer, newIntervalGoesThroughStopAndStartAndCopiesKeepTheirs)
{
    expectOutput("intervalOfAForm", "stop at 3\n4\nstart at 4\n2\nstop at 4\nstart at 2\n2 0\n4242\n");
}

VN_CHILD(periodicWithoutClock)
{
    using Refused = Vn::InSingletonEx::ExNotInitialized;
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.004);
    const auto isRefused = [](auto const& call) {
        try {
            call();
        } catch (Refused const&) {
            return true;
        }
        return false;
    };
    std::cout << isRefused([&] { timer->start(); }) << timer->getCurrentCount() << timer->stop()
              << isRefused([&] { timer->getCurrentTime(); }) << "\n";
    VnTest::start();
    std::cout << timer->start();
    while (timer->wait() == 0)  // a thread that came late to read the clock may find the first tick close behind
        ;
    std::cout << (timer->getCurrentCount() > 0) << "\n";
    VnTest::stop();
    std::cout << isRefused([&] { timer->getCurrentCount(); }) << timer->start() << timer->stop()
              << timer->getCurrentCount() << "\n";
    return 0;
}

TEST(PeriodicTimer, needsTheClockToStartAndToCountButNotToStop)
{
    expectOutput("periodicWithoutClock", "1001\n11\n1010\n");
}

TEST_F(Beating, comesNoEarlierThanItsPeriods)
{
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.01);
    const double before = timer->getCurrentTime();
    ASSERT_TRUE(timer->start());
    const double started = timer->getCurrentTime();
    for (int tick = 1; tick <= 5; ++tick) {
        const unsigned long least = SleeperMath::countIntervals(timer->getCurrentTime() - started, 0.01);
        const unsigned long count = timer->wait();
        const double now = timer->getCurrentTime();
        EXPECT_GE(count, least);
        EXPECT_LE(count, SleeperMath::countIntervals(now - before, 0.01));
        EXPECT_GE(now - before, 0.01 * tick - early);
    }
    EXPECT_TRUE(timer->stop());
}

TEST_F(Beating, intervalIsWhatItWasGivenAlsoWhereThePeriodIsCut)
{
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.0029);
    EXPECT_EQ(timer->getInterval(), 0.0029);
    timer->start();
    timer->wait();
    EXPECT_EQ(timer->getInterval(), 0.0029);
}

TEST_F(Beating, aTickBeforeTheCallIsNoWakeUp)
{
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.05);
    const double before = timer->getCurrentTime();
    timer->start();
    Sleeper::getInstance().sleep(0.075);
    timer->wait();
    EXPECT_GE(timer->getCurrentTime() - before, 0.1 - early);
}

TEST_F(Beating, wakesOneThatWaitedBeforeTheStart)
{
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.003);
    std::atomic<bool> isAwake = false;
    std::thread waiter([&] {
        timer->wait();
        isAwake = true;
    });
    Sleeper::getInstance().sleep(0.01);
    EXPECT_FALSE(isAwake);
    timer->start();
    waiter.join();
    EXPECT_TRUE(timer->stop());
}

TEST_F(Beating, goesOnForAWaiterWhileAnotherThreadStopsAndStarts)
{
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    std::atomic<bool> isEnough = false;
    std::atomic<int> beats = 0;
    std::thread waiter([&] {
        while (!isEnough) {
            timer->wait();
            ++beats;
        }
    });
    for (int turn = 0; turn < 200; ++turn) {
        timer->start();
        if (turn % 3 == 0)
            timer->setInterval(turn % 2 == 0 ? 0.001 : 0.002);
        if (turn % 4 == 0)
            Sleeper::getInstance().sleep(0.002);
        timer->stop();
    }
    timer->setInterval(0.001);
    timer->start();
    const int seen = beats;
    while (beats < seen + 3)
        std::this_thread::yield();
    isEnough = true;
    waiter.join();
}

TEST_F(Beating, withoutAWholeMillisecondCountsButNeverComes)
{
    for (double interval : {0.0009, 0.0, -1.0, notANumber}) {
        SCOPED_TRACE(interval);
        ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(interval);
        EXPECT_TRUE(timer->start());
        EXPECT_FALSE(timer->start());
        std::atomic<bool> isAwake = false;
        std::thread waiter([&] {
            timer->wait();
            isAwake = true;
        });
        Sleeper::getInstance().sleep(0.01);
        EXPECT_FALSE(isAwake);
        if (interval == 0.0009) {
            EXPECT_GT(timer->getCurrentCount(), 0u);
        }
        EXPECT_EQ(timer->setInterval(0.002), 0.002);
        waiter.join();
    }
}
