// What the POSIX tests of the thread layer share.
#pragma once

#include "threadlogbody.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

namespace VnTest
{

inline std::string getLogPath()
{
    return std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
}

inline void logNumbers(char const* text, int first, int end, Vn::LgTypes::Level level = Vn::LgTypes::Warning)
{
    const Vn::LgMinorGroup group = groupOf();
    for (int i = first; i < end; ++i)
        VN_LOG(group, level, text << ' ' << i);
}

/// The numbers behind `text`, in the order of the lines.
inline std::vector<int> numbersOf(std::string const& text, std::vector<LogLine> const& messages)
{
    std::vector<int> numbers;
    const std::string start = "Test " + text + " ";
    for (LogLine const& message : messages)
        if (message.text.starts_with(start))
            numbers.push_back(std::stoi(message.text.substr(start.size())));
    return numbers;
}

inline std::vector<int> countTo(int end)
{
    std::vector<int> numbers;
    for (int i = 0; i < end; ++i)
        numbers.push_back(i);
    return numbers;
}

/// Whether the kernel tells what a thread waits for. Without the call for fences the reader looks ten times a second.
inline bool canSeeTheReaderWait()
{
    return !contentOf("/proc/self/syscall").empty() && ::syscall(SYS_membarrier, 0, 0, 0) > 0;
}

/// What a thread waits in.
enum class Wait
{
    ForAWhile,  ///< a doze: a futex with a time limit
    ForEver,    ///< a futex without one
    InAWrite
};

/// Until a thread of this process does; its folder in /proc. System calls have the numbers of x86-64, of the newer architectures,
/// and of s390x.
inline void waitUntilItWaits(std::string const& task, Wait wait)
{
    for (;; std::this_thread::yield()) {
        std::istringstream call(contentOf(task + "/syscall"));
        std::string number, first, second, third, limit;
        call >> number >> first >> second >> third >> limit;
        if (wait == Wait::InAWrite && (number == "1" || number == "64" || number == "4"))
            return;
        const bool isFutex = number == "202" || number == "98" || number == "238";
        if (wait != Wait::InAWrite && isFutex && (limit == "0x0") == (wait == Wait::ForEver))
            return;
    }
}

inline void waitUntilTheReaderWaits(Wait wait)
{
    std::string task;
    for (; task.empty(); std::this_thread::yield())  // until the thread has given itself its name
        for (auto const& entry : std::filesystem::directory_iterator("/proc/self/task"))
            if (contentOf(entry.path() / "comm") == "vn-threadlog\n")
                task = entry.path();
    waitUntilItWaits(task, wait);
}

/// How a child of `fork` ended.
inline int waitFor(::pid_t child)
{
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

inline void raiseItself(int signal)
{
    ::raise(signal);
}

/// By that signal; a sanitizer has handlers before ours, which end the process in their own way.
inline bool isEndedBy(int status, int signal)
{
    return isSanitized ? status != 0 : WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

class ThreadLogSignals : public testing::Test
{
protected:
    void SetUp() override
    {
        if (isThreadSanitized)
            GTEST_SKIP() << "signals come late under the thread sanitizer";
    }
};

/// Keeps the kernel from writing a core file for a crash that is wanted.
inline void forbidCoreFiles()
{
    const ::rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
}

inline void waitFor(std::atomic<bool> const& flag)
{
    while (!flag)
        std::this_thread::yield();
}

/// Keeps the reader from the queues, between two lines: reopen() has its turn, and waits within what it tells of a file.
class ReaderHold
{
public:
    explicit ReaderHold(Vn::ThreadLog& log)
    {
        const std::string path = std::getenv("T4Q_TEST_DIR") + std::string("/prof.log");
        std::filesystem::remove(path);
        std::filesystem::create_directory(path);
        _before = std::cerr.rdbuf(&_gate);
        _thread = std::thread([&log] { log.reopen(); });
        waitFor(_gate.isReached);
    }

    void end()
    {
        _gate.isOpen = true;
        _thread.join();
        std::cerr.rdbuf(_before);
    }

private:
    class Gate : public std::streambuf
    {
    public:
        std::atomic<bool> isReached = false, isOpen = false;

    protected:
        std::streamsize xsputn(char const*, std::streamsize size) override
        {
            isReached = true;
            waitFor(isOpen);
            return size;
        }
    };

    Gate _gate;
    std::streambuf* _before = nullptr;
    std::thread _thread;
};

/// For VN_THREADLOG_DOZE.
constexpr char aLongRest[] = "3600000";

/// Runs the crash in a child of this process, so that its status is seen whole. Nothing of the library has run here before.
inline int runCrash(TempFolder const& folder, char const* body, char const* argument, char const* rest = "1")
{
    const ::pid_t child = ::fork();
    if (child == 0) {
        ::setenv("T4Q_TEST_DIR", folder.path().c_str(), 1);
        ::setenv("VN_THREADLOG_DOZE", rest, 1);
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDERR_FILENO);
        const std::string program = getProgramPath();
        ::execl(program.c_str(), program.c_str(), "--child", body, argument, nullptr);
        ::_exit(99);
    }
    return waitFor(child);
}

}  // namespace VnTest
