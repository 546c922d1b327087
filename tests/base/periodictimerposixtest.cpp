// What the kernel is asked for, and what becomes of a timer where a process can be doubled.
#include <base/exsyserror.h>
#include <base/periodictimer.h>
#include <base/sleeper.h>

#include "descriptors.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

using Vn::ObjPtr;
using Vn::PeriodicTimer;
using Vn::Sleeper;
using VnTest::countDescriptors;

namespace
{
/// The exit code of a doubled process that runs `body`.
template <class Body>
int exitCodeOfFork(Body const& body)
{
    const ::pid_t child = ::fork();
    if (child == 0)
        ::_exit(body());
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What the kernel says of this process's timers under the name `key`.
std::string factsOfTimers(std::string const& key)
{
    std::string facts;
    for (auto const& descriptor : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream info(descriptor.path());
        for (std::string line; std::getline(info, line);)
            if (line.compare(0, key.size() + 1, key + ":") == 0)
                facts += line;
    }
    return facts;
}
}  // namespace

TEST(PeriodicTimer, periodIsCutToWholeMilliseconds)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.0209);
    const struct
    {
        double interval;
        char const* setting;  ///< seconds and nanoseconds
    } table[] = {
        {0.0209, "it_interval: (0, 20000000)"},
        {0.001, "it_interval: (0, 1000000)"},
        {0.0019999, "it_interval: (0, 1000000)"},
        {0.9999, "it_interval: (0, 999000000)"},
        {1.0, "it_interval: (1, 0)"},
        {4294967.296, "it_interval: (4294967, 296000000)"},
        {0.0009, "it_interval: (0, 0)"},
        {-1.0, "it_interval: (0, 0)"},
    };
    timer->start();
    for (auto const& row : table) {
        timer->setInterval(row.interval);
        EXPECT_EQ(factsOfTimers("it_interval"), row.setting);
    }
    timer->setInterval(3600.0);
    Sleeper::getInstance().sleep(0.002);
    EXPECT_EQ(factsOfTimers("ticks"), "ticks: 0");  // the first tick takes as long as each further one
    timer->stop();
    EXPECT_EQ(factsOfTimers("it_interval"), "it_interval: (0, 0)");
}

TEST(PeriodicTimer, allThatAreLeftAreStoppedInAChildOfForkWhicheverHaveGone)
{
    VnTest::startOnce();
    for (int gone = 0; gone < 16; ++gone) {
        std::vector<std::unique_ptr<ObjPtr<PeriodicTimer>>> timers;
        for (int i = 0; i < 4; ++i) {
            timers.push_back(std::make_unique<ObjPtr<PeriodicTimer>>(PeriodicTimer::create(0.002)));
            (*timers.back())->start();
        }
        for (std::size_t i = 0; i < 4; ++i)
            if ((gone >> i & 1) != 0)
                timers[i].reset();
        EXPECT_EQ(exitCodeOfFork([&] {
                      for (auto const& timer : timers)
                          if (timer != nullptr && (*timer)->stop())
                              return 1;
                      return 0;
                  }),
                  0)
            << gone;
        for (auto const& timer : timers)
            EXPECT_TRUE(timer == nullptr || (*timer)->stop());
    }
}

TEST(PeriodicTimer, aRunningOneIsStoppedInAChildOfForkAndGoesOnInTheParent)
{
    VnTest::startOnce();
    ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.002);
    ObjPtr<PeriodicTimer> other = PeriodicTimer::create(0.002);
    ObjPtr<PeriodicTimer> stopped = PeriodicTimer::create(0.002);
    timer->start();
    other->start();
    timer->wait();
    const auto descriptors = countDescriptors();
    const int code = exitCodeOfFork([&] {
        if (timer->getCurrentCount() != 0 || timer->stop() || other->stop() || stopped->stop())
            return 1;
        if (!timer->start() || timer->wait() == 0 || !stopped->start() || stopped->wait() == 0)
            return 2;
        if (!timer->stop() || timer->getInterval() != 0.002 || countDescriptors() != descriptors)
            return 3;
        // Twice removed.
        if (exitCodeOfFork([&] { return stopped->getCurrentCount() != 0 || stopped->stop(); }) != 0)
            return 4;
        timer.reset();
        other.reset();
        return 0;
    });
    EXPECT_EQ(code, 0);
    EXPECT_GT(timer->wait(), 0u);
    EXPECT_GT(other->wait(), 0u);
    EXPECT_TRUE(timer->stop());
    EXPECT_TRUE(other->stop());
    EXPECT_FALSE(stopped->stop());
}

TEST(PeriodicTimer, takesNoStandardDescriptor)
{
    VnTest::startOnce();
    const int code = exitCodeOfFork([] {
        VnTest::closeStandardDescriptors();
        const ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.002);
        const int here = VnTest::countStandardDescriptors();
        const int inAChild = exitCodeOfFork(VnTest::countStandardDescriptors);
        return here + 4 * inAChild + (timer->start() && timer->wait() > 0 && timer->stop() ? 0 : 16);
    });
    EXPECT_EQ(code, 0);
}

TEST(PeriodicTimer, aWaitIsRefusedWhereTheProgramHasClosedTheDescriptorOrGivenItAway)
{
    VnTest::startOnce();
    const auto timers = [] {
        std::set<int> found;
        for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code failure;
            if (std::filesystem::read_symlink(entry.path(), failure) == "anon_inode:[timerfd]")
                found.insert(std::stoi(entry.path().filename()));
        }
        return found;
    };
    for (const bool isGivenAway : {false, true}) {
        SCOPED_TRACE(isGivenAway);
        std::set<int> const before = timers();
        ObjPtr<PeriodicTimer> timer = PeriodicTimer::create(0.001);
        std::vector<int> added;
        std::set<int> const after = timers();
        std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(added));
        ASSERT_EQ(added.size(), 1u);
        timer->start();
        if (isGivenAway) {
            int ends[2];
            ASSERT_EQ(::pipe(ends), 0);
            ::dup2(ends[0], added[0]);
            ::close(ends[0]);
            ::close(ends[1]);  // a pipe without a writer never has anything to read
        } else
            ::close(added[0]);
        try {
            timer->wait();
            ADD_FAILURE() << "nothing thrown";
        } catch (Vn::ExSysErrorWindows const& failure) {
            EXPECT_EQ(failure.getErrorCode(), EBADF);
        }
    }
}
