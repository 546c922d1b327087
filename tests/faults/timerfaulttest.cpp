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
#include <base/periodictimer.h>
#include <base/sleeper.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <string>

using namespace Vn;
using VnTest::countDescriptors;
using VnTest::expectOutput;
using VnTest::failsWithoutMemory;

TEST(TimerFault, aTimerThatTheSystemHasNotIsRefused)
{
    VnTest::failTimerWith(EMFILE);
    EXPECT_EQ(VnTest::systemErrorOf([] { PeriodicTimer::create(1.0); }, "src/base/periodictimerlinux"), EMFILE);
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

TEST(TimerFault, inAChildOfForkThatHasNoDescriptorLeftATimerStillCounts)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
    timer->start();
    VnTest::failTimerWith(EMFILE);
    const ::pid_t child = ::fork();
    if (child == 0) {
        if (timer->getCurrentCount() != 0 || timer->stop() || !timer->start())
            ::_exit(1);
        Sleeper::getInstance().sleep(0.002);
        ::_exit(timer->getCurrentCount() != 0 && timer->stop() ? 0 : 2);
    }
    VnTest::failTimerWith(0);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(timer->stop());
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
