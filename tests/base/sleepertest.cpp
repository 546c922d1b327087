#include <base/oscpuinfo.h>
#include <base/periodictimer.h>
#include <base/sleeper.h>
#include <base/sleepermath_p.h>

#include "expectchild.h"
#include "expectthrow.h"
#include "scriptedsleeper.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <iostream>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#if !defined(_WIN32)
#    include <pthread.h>
#    include <sched.h>
#    include <sys/prctl.h>
#    include <sys/time.h>

#    include <csignal>
#endif

using Vn::InSingletonEx;
using Vn::OsCpuInfo;
using Vn::Sleeper;
using VnTest::expectOutput;
using VnTest::expectThrow;

namespace SleeperMath = Vn::SleeperMath;

static_assert(std::is_abstract_v<Sleeper> && std::has_virtual_destructor_v<Sleeper>);

namespace
{
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

#if defined(_WIN32)
constexpr double early = 0.002;  // the system's timers count its own milliseconds, which don't begin with ours
#else
constexpr double early = 0.0;
#endif

/// Whether a sleep of `seconds` waited, and at least that long.
bool hasSlept(Sleeper& sleeper, double seconds)
{
    const double start = sleeper.getCurrentTime();
    return sleeper.sleep(seconds) && sleeper.getCurrentTime() - start >= seconds - early;
}

class Sleeping : public testing::Test
{
protected:
    Sleeping() { VnTest::startOnce(); }
};
}  // namespace

TEST(Sleeper, waitsForWholeMillisecondsOfWhichTheLow32BitsCount)
{
    const struct
    {
        double seconds;
        std::uint32_t milliseconds;
    } table[] = {
        {0.0, 0},
        {0.0009, 0},
        {0.000999999, 0},
        {0.001, 1},
        {0.0019999, 1},
        {0.25, 250},
        {65.535, 65535},
        {65.536, 65536},
        {4294967.295, 4294967295},
        {4294967.296, 0},
        {4294968.0, 704},
        {9223372036854774.0, 0xFFFFF800},  // 2^63 - 2048 ms: the last double but one below 2^63
        {9223372036854775.808, 0},         // 2^63 ms
        {-0.001, 0},
        {-1.0, 0},
        {-4294967.0, 0},
        {1e300, 0},
        {infinity, 0},
        {-infinity, 0},
        {notANumber, 0},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.seconds);
        EXPECT_EQ(SleeperMath::sleepMilliseconds(row.seconds), row.milliseconds);
    }
    EXPECT_EQ(SleeperMath::wholeMilliseconds(9223372036854774.784), UINT64_C(0x7FFFFFFFFFFFF800));
    EXPECT_EQ(SleeperMath::wholeMilliseconds(9223372036854775.808), 0U) << "2^63 milliseconds";
}

TEST(Sleeper, takesALongSleepInSteps)
{
    const struct
    {
        std::uint32_t milliseconds;
        std::uint32_t longest;
        std::vector<std::uint32_t> steps;
    } table[] = {
        {1, 65535, {1}},
        {65534, 65535, {65534}},
        {65535, 65535, {65535}},
        {65536, 65535, {65535, 1}},
        {200000, 65535, {65535, 65535, 65535, 3395}},
        {4294967295, 2147483648, {2147483648, 2147483647}},
        {4294967295, 4294967295, {4294967295}},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.milliseconds);
        std::vector<std::uint32_t> steps;
        SleeperMath::waitInSteps(row.milliseconds, row.longest, [&](std::uint32_t step) { steps.push_back(step); });
        EXPECT_EQ(steps, row.steps);
    }
}

TEST(Sleeper, endsAtAMomentOfWholeSecondsAndLessThanASecond)
{
    struct Moment
    {
        long long tv_sec;
        long tv_nsec;
    };
    const struct
    {
        Moment start;
        std::uint32_t milliseconds;
        Moment end;
    } table[] = {
        {{5, 0}, 0, {5, 0}},
        {{5, 0}, 1, {5, 1000000}},
        {{5, 0}, 999, {5, 999000000}},
        {{5, 0}, 1000, {6, 0}},
        {{5, 998999999}, 1, {5, 999999999}},
        {{5, 999000000}, 1, {6, 0}},
        {{5, 999999999}, 999, {6, 998999999}},
        {{5, 999999999}, 2999, {8, 998999999}},
        {{5, 999999999}, 4294967295, {4294973, 294999999}},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(testing::Message() << row.start.tv_nsec << " and " << row.milliseconds);
        Moment moment = row.start;
        SleeperMath::moveOn(moment, row.milliseconds);
        EXPECT_EQ(moment.tv_sec, row.end.tv_sec);
        EXPECT_EQ(moment.tv_nsec, row.end.tv_nsec);
    }
}

TEST_F(Sleeping, ofLessThanAMillisecondDoesNotHappen)
{
    Sleeper& sleeper = Sleeper::getInstance();
    for (double seconds : {0.0, 0.0009, -0.0, -0.5, -infinity, infinity, notANumber, 4294967.296, 1e300}) {
        SCOPED_TRACE(seconds);
        EXPECT_FALSE(sleeper.sleep(seconds));
    }
}

TEST_F(Sleeping, lastsAtLeastAsLongAsAsked)
{
    Sleeper& sleeper = Sleeper::getInstance();
    for (double seconds : {0.001, 0.002, 0.016, 0.05})
        EXPECT_TRUE(hasSlept(sleeper, seconds)) << seconds;
}

TEST_F(Sleeping, resolutionIsThatOfThePeriodicTimer)
{
    EXPECT_EQ(Sleeper::getInstance().getResolution(), Vn::PeriodicTimer::getResolution());
    EXPECT_EQ(Vn::PeriodicTimer::getResolution(), 0.001);
}

TEST_F(Sleeping, clockIsTheCounterInSeconds)
{
    const double perCount = 1.0 / static_cast<double>(OsCpuInfo::getHwCounterFrequency());
    const double before = static_cast<double>(OsCpuInfo::getHwCounterValue()) * perCount;
    const double now = Sleeper::getInstance().getCurrentTime();
    const double after = static_cast<double>(OsCpuInfo::getHwCounterValue()) * perCount;
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
    EXPECT_GT(now, 0.0);
}

TEST_F(Sleeping, isDoneByManyThreadsAtOnceEachForItsOwnDelay)
{
    constexpr int threadCount = 16;
    std::atomic<int> slept = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([i, &slept] {
            for (int turn = 0; turn < 3; ++turn)
                slept += hasSlept(Sleeper::getInstance(), 0.001 * (i + 1));
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(slept, threadCount * 3);
}

TEST_F(Sleeping, needsNoCallOfGetInstanceInTheSameThread)
{
    Sleeper& sleeper = Sleeper::getInstance();
    bool slept = false;
    std::thread([&] { slept = hasSlept(sleeper, 0.003); }).join();
    EXPECT_TRUE(slept);
}

#if !defined(_WIN32)
namespace
{
volatile std::sig_atomic_t signals = 0;
}  // namespace

TEST_F(Sleeping, leavesTheThreadsTimerSlackAsItWas)
{
    std::thread([] {
        for (unsigned long slack : {1UL, 2UL, 123456UL}) {
            ASSERT_EQ(::prctl(PR_SET_TIMERSLACK, slack), 0);
            EXPECT_TRUE(hasSlept(Sleeper::getInstance(), 0.001));
            EXPECT_EQ(::prctl(PR_GET_TIMERSLACK), static_cast<int>(slack));
        }
    }).join();
}

/// Which has no timer slack.
TEST_F(Sleeping, isForRealTimeThreadsToo)
{
    bool isAllowed = false, hasSleptThere = false;
    std::thread([&] {
        const ::sched_param lowest = {::sched_get_priority_min(SCHED_FIFO)};
        isAllowed = ::pthread_setschedparam(::pthread_self(), SCHED_FIFO, &lowest) == 0;
        hasSleptThere = hasSlept(Sleeper::getInstance(), 0.001);
    }).join();
    if (!isAllowed)
        GTEST_SKIP() << "this user may not have real-time threads";
    EXPECT_TRUE(hasSleptThere);
}

TEST_F(Sleeping, outlastsSignals)
{
    struct ::sigaction handling = {};
    struct ::sigaction before;
    handling.sa_handler = [](int) { signals = signals + 1; };
    ASSERT_EQ(::sigaction(SIGALRM, &handling, &before), 0);
    const ::itimerval often = {{0, 1000}, {0, 1000}};
    const ::itimerval never = {};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_TRUE(hasSlept(Sleeper::getInstance(), 0.03));
    ASSERT_EQ(::setitimer(ITIMER_REAL, &never, nullptr), 0);
    ::sigaction(SIGALRM, &before, nullptr);
    EXPECT_GT(signals, 0);
}
#endif

VN_CHILD(sleeperLife)
{
    const auto ask = [] { Sleeper::getInstance().getCurrentTime(); };
    const auto isRefused = [&] {
        try {
            ask();
        } catch (InSingletonEx::ExNotInitialized const&) {
            return true;
        }
        return false;
    };
    std::cout << isRefused();
    // Behind `profiling` and before everything else of the library.
    VnTest::NumberedPackage<1> client("client", {Vn::InInit<VnInit::profiling>::getType()});
    client.onStart = [&] { std::cout << isRefused() << "\n"; };
    client.onStop = client.onStart;
    VnTest::start();
    std::cout << isRefused() << (&Sleeper::getInstance() == &Sleeper::getInstance()) << "\n";
    VnTest::stop();
    std::cout << isRefused() << "\n";
    return 0;
}

TEST(Sleeper, livesFromTheStartOfItsPackageToTheStop)
{
    expectOutput("sleeperLife", "1start client\n0\n01\nstop client\n0\n1\n");
}

VN_CHILD(sleeperOfTheProgram)
{
    VnTest::ScriptedSleeper::install();
    std::cout << Sleeper::getInstance().getCurrentTime() << Sleeper::getInstance().sleep(0.0001) << "\n";
    VnTest::report("start", VnTest::start);
    std::cout << (Sleeper::getInstance().getResolution() == 1.0) << "\n";
    VnTest::ScriptedSleeper::remove();
    VnTest::stop();
    return 0;
}

TEST(Sleeper, thatAProgramHasPutInPlaceEndsTheStartAndStays)
{
    const VnTest::ChildRun run = VnTest::Child("sleeperOfTheProgram").run();
    EXPECT_EQ(run.out.substr(0, 10), "01\nstart: ") << run.out;
    EXPECT_NE(run.out.find("already been initialized"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.substr(run.out.size() - 3), "\n1\n") << run.out;
    EXPECT_EQ(run.exitCode, 0);
}
