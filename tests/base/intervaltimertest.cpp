#include <base/hwcounter.h>
#include <base/hwintervaltimer.h>
#include <base/todintervaltimer.h>
#include <base/todsplittime_p.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <iostream>
#include <thread>
#include <type_traits>

using Vn::HwCounter;
using Vn::HwIntervalTimer;
using Vn::IntervalTimer;
using Vn::TodIntervalTimer;
using Vn::TodSplitTime;

static_assert(std::is_abstract_v<IntervalTimer> && std::has_virtual_destructor_v<IntervalTimer>);
static_assert(!std::is_constructible_v<IntervalTimer, char const*>);
static_assert(std::is_base_of_v<IntervalTimer, HwIntervalTimer> &&
              std::is_base_of_v<IntervalTimer, TodIntervalTimer>);

namespace
{
/// Lets both clocks move on by a millisecond at least, however coarse the time of day is.
void passAMillisecond()
{
    TodIntervalTimer timeOfDay;
    HwIntervalTimer hardware;
    timeOfDay.start();
    hardware.start();
    while (timeOfDay.sinceStart() < 0.0015 || hardware.sinceStart() < 0.0015) {
    }
}

double systemSeconds()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

template <class T>
void checkNames()
{
    EXPECT_STREQ(T().getName(), "anonymous");
    char given[] = "given";
    T timer(given);
    EXPECT_EQ(timer.getName(), given);  // the pointer itself
    given[0] = 'G';
    EXPECT_STREQ(timer.getName(), "Given");
    char const* const other = "other";
    timer.setName(other);
    EXPECT_EQ(timer.getName(), other);
    EXPECT_STREQ(given, "Given");
    timer.setName(nullptr);
    EXPECT_EQ(timer.getName(), nullptr);
}

template <class T>
void checkCopies()
{
    T timer("first");
    timer.start();
    passAMillisecond();
    timer.stop();
    const T copy(timer);
    T assigned("second");
    assigned = timer;
    EXPECT_EQ(copy.getName(), timer.getName());
    EXPECT_EQ(assigned.getName(), timer.getName());
    EXPECT_EQ(copy.timeInterval(), timer.timeInterval());
    EXPECT_EQ(assigned.timeInterval(), timer.timeInterval());
    timer.start();
    EXPECT_NE(copy.timeInterval(), timer.timeInterval());
}
}  // namespace

TEST(IntervalTimer, bearsTheNameThatItWasGiven)
{
    checkNames<HwIntervalTimer>();
    checkNames<TodIntervalTimer>();
}

TEST(IntervalTimer, copiesNameAndPoints)
{
    VnTest::startOnce();
    checkCopies<HwIntervalTimer>();
    checkCopies<TodIntervalTimer>();
}

TEST(IntervalTimer, countsFromStartToStop)
{
    VnTest::startOnce();
    HwIntervalTimer hardware;
    TodIntervalTimer timeOfDay;
    for (IntervalTimer* timer : {static_cast<IntervalTimer*>(&hardware), static_cast<IntervalTimer*>(&timeOfDay)}) {
        EXPECT_EQ(timer->timeInterval(), 0.0);
        timer->start();
        passAMillisecond();
        timer->stop();
        const double first = timer->timeInterval();
        EXPECT_GE(first, 0.001);
        EXPECT_EQ(timer->timeInterval(), first);

        EXPECT_GE(timer->sinceStart(), first);
        EXPECT_EQ(timer->timeInterval(), first) << "sinceStart() disturbed it";

        passAMillisecond();
        timer->stop();
        EXPECT_GT(timer->timeInterval(), first) << "a second stop() replaces the first";

        passAMillisecond();
        timer->start();
        EXPECT_LT(timer->timeInterval(), 0.0) << "the stop is older than the start";
        timer->stop();
        EXPECT_GE(timer->timeInterval(), 0.0);
    }
}

TEST(HwIntervalTimer, startAloneGivesTheTimeBackToZero)
{
    VnTest::startOnce();
    const double before = HwCounter::seconds();
    HwIntervalTimer timer;
    timer.start();
    const double after = HwCounter::seconds();
    EXPECT_LE(timer.timeInterval(), -before);
    EXPECT_GE(timer.timeInterval(), -after);
}

TEST(HwIntervalTimer, withoutAStartItCountsFromTheCountersOrigin)
{
    VnTest::startOnce();
    HwIntervalTimer timer;
    const double before = HwCounter::seconds();
    const double since = timer.sinceStart();
    timer.stop();
    const double interval = timer.timeInterval();
    const double after = HwCounter::seconds();
    EXPECT_LE(before, since);
    EXPECT_LE(since, interval);
    EXPECT_LE(interval, after);
}

VN_CHILD(timerBeforeTheStart)
{
    HwIntervalTimer timer;  // makes the engine, so the unchecked calls are legal
    std::cout << HwCounter::resolution() << "\n";
    timer.start();
    VnTest::start();
    timer.stop();
    std::cout << (std::isfinite(timer.timeInterval()) && timer.timeInterval() >= 0.0) << "\n";
    VnTest::stop();
    return 0;
}

TEST(HwIntervalTimer, madeBeforeTheStartMakesTheEngineItself)
{
    VnTest::expectOutput("timerBeforeTheStart", "inf\n1\n");
}

TEST(TodIntervalTimer, differenceTakesMillisecondsWithoutANegativeNumber)
{
    const struct
    {
        char const* what;
        TodSplitTime later, earlier;
        double expected;
    } table[] = {
        {"fewer milliseconds", {11, 100}, {10, 900}, 1 + (900.0 - 100.0) * -0.001},
        {"more milliseconds", {11, 900}, {10, 100}, 1 + (900.0 - 100.0) * 0.001},
        {"equal", {12, 345}, {10, 345}, 2.0},
        {"the same", {10, 7}, {10, 7}, 0.0},
        {"one more", {10, 8}, {10, 7}, 0.001},
        {"one less", {10, 7}, {10, 8}, -0.001},
        {"backwards", {10, 900}, {11, 100}, -1 + (900.0 - 100.0) * 0.001},
        {"against zero", {0, 0}, {1700000000, 999}, -1700000000 + 999 * -0.001},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.later.since(row.earlier), row.expected);
    }
    EXPECT_NEAR(TodSplitTime({11, 100}).since({10, 900}), 0.2, 1e-15);
    EXPECT_EQ(TodSplitTime({11, 100}).since({10, 900}), 1 - 0.8);
}

TEST(TodIntervalTimer, refreshTakesTheTimeOfDayToTheMillisecond)
{
    const double tick = 0.05;  // what a system's coarser clock may lag behind
    TodIntervalTimer::NativeTimer zero, now;
    EXPECT_EQ(now.since(zero), 0.0);
    const double before = systemSeconds();
    now.refresh();
    const double after = systemSeconds();
    EXPECT_GE(now.since(zero), std::floor(before * 1000) / 1000 - tick);
    EXPECT_LE(now.since(zero), after + tick);
    const double milliseconds = now.since(zero) * 1000;
    EXPECT_NEAR(milliseconds, std::round(milliseconds), 1e-3);
    EXPECT_EQ(now.since(now), 0.0);
    EXPECT_EQ(zero.since(now), -now.since(zero));
}

TEST(TodIntervalTimer, pointsThatWereNotTakenAreTheClocksOrigin)
{
    const double before = systemSeconds() - 0.05;
    TodIntervalTimer timer;
    EXPECT_GE(timer.sinceStart(), before);
    timer.start();
    EXPECT_LE(timer.timeInterval(), -before);  // the calendar's time, negative
    TodIntervalTimer stopped;
    stopped.stop();
    EXPECT_GE(stopped.timeInterval(), before);
}

TEST(IntervalTimer, differentOnesRunInDifferentThreads)
{
    VnTest::startOnce();
    const auto measure = [] {
        HwIntervalTimer hardware;
        TodIntervalTimer timeOfDay;
        for (int i = 0; i < 1000; ++i) {
            hardware.start();
            timeOfDay.start();
            timeOfDay.stop();
            hardware.stop();
            ASSERT_GE(hardware.timeInterval(), 0.0);
        }
    };
    std::thread other(measure);
    measure();
    other.join();
}
