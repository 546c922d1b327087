#pragma once

#include "child.h"
#include "logfile.h"
#include "tempfolder.h"

#include <threadlog/threadlog.h>

#include <base/ininitmgr.h>
#include <base/lglog.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace VnTest
{

/// What a program's `main` holds: the packages are started before, and stopped behind. The group is made before threads ask
/// for it.
class Started
{
public:
    Started() : Started(0, nullptr) {}
    Started(int argc, char** argv) : _argc(argc), _argv(argv), _guard(_argc, _argv)
    {
        Vn::LgMajorGroup::getInstanceForName("Test");
    }

private:
    int _argc;
    char const* const* _argv;
    Vn::InInitGuard _guard;
};

inline Vn::LgMinorGroup groupOf(char const* name = "Test")
{
    return {Vn::LgMajorGroup::getInstanceForName(name), name};
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true;
constexpr bool isThreadSanitized = false;
#elif defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
constexpr bool isThreadSanitized = true;
#elif defined(__has_feature)
constexpr bool isThreadSanitized = __has_feature(thread_sanitizer);
constexpr bool isSanitized = __has_feature(address_sanitizer) || isThreadSanitized;
#else
constexpr bool isSanitized = false;
constexpr bool isThreadSanitized = false;
#endif

/// A child that logs into `folder`, with nothing of the environment's own.
inline Child logger(char const* body, TempFolder const& folder)
{
    Child child(body);
    child.with("T4Q_TEST_DIR", folder.path()).without("VN_TRACE_OPTIONS").without("VN_DEBUG_INITIALIZE");
    for (char const* name :
         {"VN_LOG_INTERNAL_ERROR", "VN_LOG_FATAL_ERROR", "VN_LOG_RECOVERABLE_ERROR", "VN_LOG_WARNING",
          "VN_LOG_INFORMATIONAL", "VN_LOG_TRACING", "VN_LOG_PROFILING", "VN_LOG_DEFAULT_LEVEL", "VN_LOG_GROUPS",
          "VN_BLOCKING_TRACE", "VN_INTERNAL_INTERPROCESS_LOG_LOCK", "VN_LOG_DISABLE_TIMESTAMPS",
          "VN_THREADLOG_WAIT", "VN_THREADLOG_FLUSH", "VN_THREADLOG_DOZE"})
        child.without(name);
    return child;
}

/// The messages of a log; each line that isn't a banner's must be one.
inline std::vector<LogLine> messagesOf(std::string const& path)
{
    std::vector<LogLine> messages;
    for (std::string const& line : linesOf(path)) {
        if (line.empty() || line.starts_with("===== "))
            continue;
        const auto message = LogLine::parse(line);
        EXPECT_TRUE(message) << line;
        if (message)
            messages.push_back(*message);
    }
    return messages;
}

/// What an overflow line counts; 0 for another line.
inline long lossesOf(LogLine const& line)
{
    constexpr std::string_view start = "Event overflow [";
    return line.text.starts_with(start) ? std::stol(line.text.substr(start.size())) : 0;
}

inline void expectSuccess(ChildRun const& run)
{
    EXPECT_EQ(run.err, "");
    EXPECT_FALSE(run.crashed);
    EXPECT_EQ(run.exitCode, 0);
}

}  // namespace VnTest
