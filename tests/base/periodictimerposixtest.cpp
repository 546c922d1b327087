// What becomes of a timer where a process can be doubled.
#include <base/periodictimer.h>
#include <base/sleeper.h>

#include "testpackage.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

using Vn::ObjPtr;
using Vn::PeriodicTimer;

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

auto countDescriptors()
{
    const auto descriptors = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}
}  // namespace

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
