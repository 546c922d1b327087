#include <base/osutils.h>

#include "child.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#if defined(_WIN32)
#    include <process.h>
#    define getpid _getpid
#else
#    include <pthread.h>
#    include <pwd.h>
#    include <unistd.h>

#    include <csignal>
#    include <thread>
#endif

using Vn::OsUtils;

TEST(OsUtils, theProcessHasTheSystemsNumber)
{
    EXPECT_EQ(OsUtils::getPid(), static_cast<std::uint32_t>(::getpid()));
}

#if defined(_WIN32)
TEST(OsUtils, namesAreThoseOfTheSystem)
{
    EXPECT_STREQ(OsUtils::getHostName(), std::getenv("COMPUTERNAME"));
    EXPECT_STREQ(OsUtils::getUserName(false), std::getenv("USERNAME"));
    EXPECT_STREQ(OsUtils::getUserName(true), std::getenv("USERNAME"));
}
#else
TEST(OsUtils, namesAreThoseOfTheSystem)
{
    char host[256] = "";
    ASSERT_EQ(::gethostname(host, sizeof host), 0);
    EXPECT_STREQ(OsUtils::getHostName(), host);
    ::passwd const* const entry = ::getpwuid(::geteuid());
    const std::string user = entry != nullptr ? entry->pw_name : std::to_string(::geteuid());
    EXPECT_STREQ(OsUtils::getUserName(false), user.c_str());
    EXPECT_STREQ(OsUtils::getUserName(true), user.c_str());
}

VN_CHILD(osUtilsNobody)
{
    // No entry has this number; from here on the process can't change back.
    if (::setuid(3999999999U) != 0)
        return 77;
    std::cout << OsUtils::getUserName(true).get() << "\n";
    return 0;
}

TEST(OsUtils, aUserWithoutANameIsANumber)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root may become another user";
    EXPECT_EQ(VnTest::Child("osUtilsNobody").run().out, "3999999999\n");
}

TEST(OsUtils, signalsDontShortenASleep)
{
    struct ::sigaction ignoring = {};
    ignoring.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &ignoring, nullptr);
    const auto start = std::chrono::steady_clock::now();
    const ::pthread_t sleeper = ::pthread_self();
    std::thread disturber([sleeper, start] {
        while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(500))
            ::pthread_kill(sleeper, SIGUSR1);
    });
    OsUtils::sleep(1);
    const auto slept = std::chrono::steady_clock::now() - start;
    disturber.join();
    EXPECT_GE(slept, std::chrono::milliseconds(999));
}
#endif

TEST(OsUtils, noSecondsAreNoSleep)
{
    OsUtils::sleep(0);
}
