// Sleeper and periodic timer while the system refuses what they need.
#include "clock.h"
#include "memory.h"

#include "descriptors.h"
#include "expectchild.h"
#include "systemerror.h"
#include "testpackage.h"

#include <base/exsyserror.h>
#include <base/hwcounter.h>
#include <base/inpackages.h>
#include <base/osutils.h>
#include <base/periodictimer.h>
#include <base/sleeper.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

using namespace Vn;
using VnTest::countDescriptors;
using VnTest::expectOutput;
using VnTest::failsWithoutMemory;
using VnTest::systemErrorOf;

namespace
{
char const* const sourceOfBeat = "src/base/periodictimerlinux";
}

TEST(TimerFault, aTimerThatTheSystemHasNotIsRefused)
{
    VnTest::failTimerWith(EMFILE);
    EXPECT_EQ(systemErrorOf([] { PeriodicTimer::create(1.0); }, sourceOfBeat), EMFILE);
    VnTest::failTimerWith(0);
    EXPECT_FALSE(PeriodicTimer::create(1.0)->stop());
}

TEST(TimerFault, withoutMemoryNothingIsLeftOfATimer)
{
    PeriodicTimer::create(1.0);
    const auto descriptors = countDescriptors();
    int failures = 0;
    for (; failsWithoutMemory(failures, [] { PeriodicTimer::create(1.0); }); ++failures)
        EXPECT_EQ(countDescriptors(), descriptors);
    EXPECT_GT(failures, 0);
    EXPECT_EQ(countDescriptors(), descriptors);
}

TEST(TimerFault, neitherASleepNorABeatTakesMemory)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.002);
    EXPECT_FALSE(failsWithoutMemory(0, [&] {
        Sleeper::getInstance().sleep(0.001);
        timer->start();
        timer->wait();
        timer->setInterval(0.001);
        timer->wait();
        timer->stop();
    }));
}

TEST(TimerFault, inAChildOfForkThatHasNoDescriptorLeftATimerIsRefused)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    timer->start();
    VnTest::failTimerWith(EMFILE);
    const ::pid_t child = ::fork();
    if (child == 0) {
        if (timer->getCurrentCount() != 0 || timer->stop())
            ::_exit(1);
        if (systemErrorOf([&] { timer->start(); }, sourceOfBeat) != EBADF || timer->stop())
            ::_exit(2);
        ::_exit(systemErrorOf([&] { timer->wait(); }, sourceOfBeat) == EBADF ? 0 : 3);
    }
    VnTest::failTimerWith(0);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(timer->stop());
}

TEST(TimerFault, aBeatThatCantBeginIsThrownAndTheTimerStaysStopped)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    VnTest::failTimerSettingWith(ENOMEM);
    EXPECT_EQ(systemErrorOf([&] { timer->start(); }, sourceOfBeat), ENOMEM);
    EXPECT_EQ(timer->getCurrentCount(), 0u);
    EXPECT_FALSE(timer->stop());
    VnTest::failTimerSettingWith(0);
    EXPECT_TRUE(timer->start());
    timer->wait();
}

TEST(TimerFault, aBeatThatCantEndIsThrownAndTheTimerIsStopped)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    timer->start();
    VnTest::failTimerSettingWith(ENOMEM);
    EXPECT_EQ(systemErrorOf([&] { timer->stop(); }, sourceOfBeat), ENOMEM);
    EXPECT_FALSE(timer->stop());
    VnTest::failTimerSettingWith(0);
    EXPECT_TRUE(timer->start());
    VnTest::failTimerSettingWith(ENOMEM);
    EXPECT_EQ(systemErrorOf([&] { timer->setInterval(0.002); }, sourceOfBeat), ENOMEM);
    EXPECT_EQ(timer->getInterval(), 0.001);
    VnTest::failTimerSettingWith(0);
    EXPECT_EQ(timer->setInterval(0.002), 0.002);
    EXPECT_FALSE(timer->stop());
}

TEST(TimerFault, aWaitForABeatThatFailsIsThrownAndAnInterruptedOneGoesOn)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    timer->start();
    VnTest::failPollsWith(ENOMEM);
    EXPECT_EQ(systemErrorOf([&] { timer->wait(); }, sourceOfBeat), ENOMEM);
    VnTest::failPollsWith(EINTR, 3);
    timer->wait();
    EXPECT_EQ(VnTest::getPollsToFail(), 0);
}

TEST(TimerFault, aTimerWhoseDescriptorSomebodyElseHasClosedIsRefused)
{
    VnTest::startOnce();
    const int number = ::dup(1);  // which the timer takes next
    ::close(number);
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    timer->start();
    ::close(number);
    EXPECT_EQ(systemErrorOf([&] { timer->wait(); }, sourceOfBeat), EBADF);
    EXPECT_EQ(systemErrorOf([&] { timer->stop(); }, sourceOfBeat), EBADF);
    EXPECT_EQ(systemErrorOf([&] { timer->start(); }, sourceOfBeat), EBADF);
    EXPECT_FALSE(timer->stop());
}

namespace
{
/// A time in nanoseconds.
std::int64_t nanoseconds(::timespec const& time)
{
    return std::int64_t(time.tv_sec) * 1000000000 + time.tv_nsec;
}

std::int64_t now()
{
    ::timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return nanoseconds(time);
}

/// Expects that `sleep`, which is to take that long, asks for one moment however often it is interrupted.
template <class Sleep>
void expectOneMoment(std::int64_t duration, Sleep const& sleep)
{
    VnTest::noteSleeps(2000);
    const std::int64_t before = now();
    sleep();
    const std::int64_t after = now();
    const std::vector<VnTest::KernelSleep> sleeps = VnTest::takeSleeps();
    ASSERT_EQ(sleeps.size(), 2001u);
    EXPECT_GE(nanoseconds(sleeps.front().time), before + duration);
    EXPECT_LE(nanoseconds(sleeps.front().time), after + duration);
    for (VnTest::KernelSleep const& asked : sleeps) {
        ASSERT_EQ(asked.clock, CLOCK_MONOTONIC);
        ASSERT_EQ(asked.flags, TIMER_ABSTIME);
        ASSERT_EQ(nanoseconds(asked.time), nanoseconds(sleeps.front().time));
    }
}
}  // namespace

TEST(TimerFault, anInterruptedSleepGoesOnToTheSameMoment)
{
    expectOneMoment(1000000000, [] { OsUtils::sleep(1); });
    expectOneMoment(4294967295 * 1000000000, [] { OsUtils::sleep(4294967295U); });
    VnTest::startOnce();
    expectOneMoment(1000000, [] { Sleeper::getInstance().sleep(0.001); });
    expectOneMoment(1999000000, [] { Sleeper::getInstance().sleep(1.9999); });
}

VN_CHILD(clockBreaksBeforeTheSleeper)
{
    // Starts behind `osal`, which asks for the frequency too, and before `profiling`.
    VnTest::NumberedPackage<1> spoiler("p",
                                       {InInit<VnInit::osal>::getType(), InInit<VnInit::initialize>::getType()});
    spoiler.onStart = [] { VnTest::failClockWith(EINVAL); };
    spoiler.onStop = [] {};
    try {
        VnTest::start();
    } catch (ExSysErrorANSI const& failure) {
        std::cout << failure.getFileName() << " " << (failure.getError() == EINVAL) << "\n";
    }
    VnTest::failClockWith(0);
    VnTest::report("clock", [] { Sleeper::getInstance(); });
    std::cout << (HwCounter::resolution() == 1e-9) << "\n";
    VnTest::stop();
    return 0;
}

TEST(TimerFault, aClockWithoutFrequencyEndsTheStartAtTheSleeper)
{
    const std::string name = typeid(InSingleton<Sleeper>).name();
    expectOutput("clockBreaksBeforeTheSleeper",
                 "start p\nsrc/base/sleeperwindows 1\nclock: " + name + " is not initialized.\n1\nstop p\n");
}
