// What only the POSIX form has: forks, signals, files that are moved away below the logger.
#include "standins.h"
#include "threadlogposixbody.h"

#include "lockname.h"

#include <base/exsyserror.h>
#include <base/trace.h>

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csetjmp>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <latch>
#include <random>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <thread>

using namespace VnTest;
using Vn::LgTypes;
using Vn::ThreadLog;

namespace
{
class ThreadLogFork : public testing::Test
{
protected:
    void SetUp() override
    {
        if (isSanitized)
            GTEST_SKIP() << "a sanitizer's allocator may hang in the child of a process with threads";
    }
};

}  // namespace

// Forks.

VN_CHILD(forksAndChildLogs)
{
    const Started start(argc, argv);
    ThreadLog log;
    // In the queue, for the most part, when the process is forked.
    logNumbers("parent", 0, 300);
    if (argc > 1)
        log.flush();
    const ::pid_t child = ::fork();
    if (child == 0) {
        logNumbers("child", 0, 300);
        std::thread([] { logNumbers("thread", 0, 300); }).join();
        log.flush();
        ::_exit(0);
    }
    logNumbers("parent", 300, 600);
    return waitFor(child);
}

TEST_F(ThreadLogFork, aChildThatLogsWritesItsOwnMessagesAndNoneOfTheParents)
{
    for (const bool isWritten : {false, true}) {
        const TempFolder folder;
        Child program = logger("forksAndChildLogs", folder);
        if (isWritten)
            program.arguments({"flush"});
        expectSuccess(program.run());
        const auto messages = messagesOf(folder.path("events.log"));
        EXPECT_EQ(numbersOf("parent", messages), countTo(600));
        EXPECT_EQ(numbersOf("child", messages), countTo(300));
        EXPECT_EQ(numbersOf("thread", messages), countTo(300));
    }
}

namespace
{
Vn::TraceLevel& descent = *Vn::Trace::registerLevel("Descent", __FILE__);
}

VN_CHILD(forksWithinATracedCall)
{
    const Started start;
    ThreadLog log;
    logNumbers("parent", 0, 10);
    ::pid_t child = -1;
    {
        VN_TRACE_ENTRY(descent, "outer");
        VN_TRACE_ENTRY(descent, "inner");
        const Vn::LgQueue::SuppressGuard quiet(Vn::LgLog::getQueue());
        child = ::fork();
        if (child == 0 && argc > 1) {
            const ::pid_t grandchild = ::fork();
            if (grandchild != 0)
                ::_exit(waitFor(grandchild) == 0 ? 0 : 1);
        }
        logNumbers("quiet", 0, 10);
    }
    if (child == 0) {
        logNumbers("child", 0, 10);
        log.flush();
        ::_exit(0);
    }
    return waitFor(child);
}

TEST_F(ThreadLogFork, whatTheForkingThreadHasOnItsStackStaysGoodInTheChild)
{
    for (const bool isTwice : {false, true}) {
        const TempFolder folder;
        const std::string trace = folder.path("trace.log");
        Child program = logger("forksWithinATracedCall", folder);
        if (isTwice)
            program.arguments({"twice"});
        expectSuccess(program.with("VN_TRACE_OPTIONS", "show=Descent").with("VN_LOG_TRACING", trace).run());
        const auto messages = messagesOf(folder.path("events.log"));
        EXPECT_EQ(numbersOf("parent", messages), countTo(10));
        EXPECT_EQ(numbersOf("child", messages), countTo(10));
        EXPECT_EQ(numbersOf("quiet", messages), countTo(0));
        int exits = 0;
        for (LogLine const& line : messagesOf(trace))
            exits += line.text == "  /" || line.text == "  | /";
        EXPECT_EQ(exits, 4) << "of both calls, in both processes";
    }
}

VN_CHILD(forksAndChildIsSilent)
{
    const Started start(argc, argv);
    ThreadLog log;
    logNumbers("parent", 0, 300);
    const ::pid_t child = ::fork();
    if (child == 0) {
        log.flush();
        ::_exit(3);
    }
    logNumbers("parent", 300, 600);
    return waitFor(child) == 3 << 8 ? 0 : 1;
}

TEST_F(ThreadLogFork, aChildThatDoesntLogWritesNothing)
{
    const TempFolder folder;
    expectSuccess(logger("forksAndChildIsSilent", folder).run());
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(messages.size(), 600u);
    EXPECT_EQ(numbersOf("parent", messages), countTo(600));
}

VN_CHILD(forksAndChildReturns)
{
    const Started start(argc, argv);
    ::pid_t child = -1;
    {
        ThreadLog log;
        logNumbers("parent", 0, 300);
        child = ::fork();
        if (child == 0 && argc > 1)
            logNumbers("child", 0, 300);
    }
    if (child == 0)
        ::_exit(0);
    return waitFor(child);
}

TEST_F(ThreadLogFork, theObjectCanBeDestroyedInTheChild)
{
    for (const bool isLogging : {false, true}) {
        const TempFolder folder;
        Child program = logger("forksAndChildReturns", folder);
        if (isLogging)
            program.arguments({"log"});
        expectSuccess(program.run());
        const auto messages = messagesOf(folder.path("events.log"));
        EXPECT_EQ(numbersOf("parent", messages), countTo(300));
        EXPECT_EQ(numbersOf("child", messages), countTo(isLogging ? 300 : 0));
    }
}

VN_CHILD(forksAndChildExits)
{
    const Started start(argc, argv);
    ThreadLog log;
    logNumbers("parent", 0, 300);
    const ::pid_t child = ::fork();
    if (child == 0) {
        logNumbers("child", 0, argc > 1 ? 0 : 300);
        std::exit(0);
    }
    return waitFor(child);
}

TEST_F(ThreadLogFork, aChildThatCallsExitLosesNothing)
{
    for (const bool isSilent : {false, true}) {
        const TempFolder folder;
        Child program = logger("forksAndChildExits", folder);
        if (isSilent)
            program.arguments({"silent"});
        expectSuccess(program.run());
        const auto messages = messagesOf(folder.path("events.log"));
        EXPECT_EQ(numbersOf("parent", messages), countTo(300));
        EXPECT_EQ(numbersOf("child", messages), countTo(isSilent ? 0 : 300));
    }
}

VN_CHILD(forksAndChildExecutes)
{
    const Started start(argc, argv);
    ThreadLog log;
    logNumbers("parent", 0, 300);
    const ::pid_t child = ::fork();
    if (child == 0) {
        logNumbers("child", 0, argc > 1 ? 10 : 0);
        ::execl("/bin/true", "true", nullptr);
        ::_exit(1);
    }
    return waitFor(child);
}

TEST_F(ThreadLogFork, aChildMayExecuteAnotherProgram)
{
    for (const bool isLogging : {false, true}) {
        const TempFolder folder;
        Child program = logger("forksAndChildExecutes", folder);
        if (isLogging)
            program.arguments({"log"});
        expectSuccess(program.run());
        EXPECT_EQ(numbersOf("parent", messagesOf(folder.path("events.log"))), countTo(300));
    }
}

VN_CHILD(forksWhileThreadsLog)
{
    const Started start(argc, argv);
    ThreadLog log;
    std::atomic<bool> isEnding = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&isEnding] {
            while (!isEnding)
                logNumbers("noise", 0, 50);
        });
    int failures = 0;
    for (int i = 0; i < 40; ++i) {
        const ::pid_t child = ::fork();
        if (child == 0) {
            logNumbers("child", i, i + 1, LgTypes::RecoverableError);
            log.flush();
            ::_exit(0);
        }
        failures += waitFor(child) != 0;
    }
    isEnding = true;
    for (std::thread& thread : threads)
        thread.join();
    return failures;
}

TEST_F(ThreadLogFork, forksWhileThreadsLogAndTheReaderWrites)
{
    const TempFolder folder;
    expectSuccess(logger("forksWhileThreadsLog", folder).run());
    auto numbers = numbersOf("child", messagesOf(folder.path("events.log")));
    EXPECT_EQ(numbers, countTo(40)) << "each child once, in the order of their lives";
}

VN_CHILD(forksWhileTheReaderIsStuck)
{
    char const* const path = std::getenv("VN_LOG_WARNING");
    ::mkfifo(path, 0600);
    const int end = ::open(path, O_RDWR | O_NONBLOCK);
    ::fcntl(end, F_SETPIPE_SZ, 4096);
    const Started start(argc, argv);
    ThreadLog log;
    const ::pid_t before = ::fork();  // while nothing stands in its way
    if (before == 0)
        ::_exit(0);
    waitFor(before);
    logNumbers("parent", 0, 200);  // more than the pipe takes
    waitUntilTheReaderWaits(Wait::InAWrite);
    const ::pid_t child = ::fork();
    if (child == 0) {
        logNumbers("child", 0, 10);
        ::_exit(7);
    }
    const int status = waitFor(child);
    std::string text;
    for (char piece[4096]; text.find("parent 199\n") == text.npos;)
        if (const ::ssize_t size = ::read(end, piece, sizeof piece); size > 0)
            text.append(piece, static_cast<std::size_t>(size));
    std::cout << (text.find("child") != text.npos);
    return status == 7 << 8 ? 0 : 1;
}

TEST_F(ThreadLogFork, aChildThatWasForkedWhileTheReaderWasStuckTellsOnceThatItsMessagesAreLost)
{
    if (!canSeeTheReaderWait())
        GTEST_SKIP() << "the system doesn't tell what a thread waits for";
    const TempFolder folder;
    const ChildRun run =
        logger("forksWhileTheReaderIsStuck", folder).with("VN_LOG_WARNING", folder.path("pipe")).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: this process can't start the thread that writes: its messages are lost\n");
    EXPECT_EQ(run.out, "0");
}

VN_CHILD(forksAndChildCrashes)
{
    forbidCoreFiles();
    const Started start(argc, argv);
    ThreadLog log;
    log.installCrashHandlers();
    logNumbers("parent", 0, 300);
    for (const bool isLogging : {false, true}) {
        const ::pid_t child = ::fork();
        if (child == 0) {
            if (isLogging)
                logNumbers("child", 0, 300);
            ::raise(SIGSEGV);
        }
        if (!isEndedBy(waitFor(child), SIGSEGV))
            return 1;
    }
    return 0;
}

TEST_F(ThreadLogFork, aChildThatCrashesWritesItsOwnMessagesAlone)
{
    const TempFolder folder;
    EXPECT_EQ(logger("forksAndChildCrashes", folder).run().exitCode, 0);
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(messages.size(), 600u);
    EXPECT_EQ(numbersOf("parent", messages), countTo(300));
    EXPECT_EQ(numbersOf("child", messages), countTo(300));
}

namespace
{
sigjmp_buf childsRescue;
}

VN_CHILD(forksAndChildIsSaved)
{
    const Started start(argc, argv);
    struct sigaction own = {};
    own.sa_handler = [](int) { ::siglongjmp(childsRescue, 1); };
    ::sigaction(SIGSEGV, &own, nullptr);
    ThreadLog log;
    log.installCrashHandlers();
    logNumbers("parent", 0, 300);
    const ::pid_t child = ::fork();
    if (child == 0) {
        if (sigsetjmp(childsRescue, 1) == 0)
            ::raise(SIGSEGV);
        logNumbers("child", 0, 300);
        log.flush();
        ::_exit(0);
    }
    return waitFor(child);
}

TEST_F(ThreadLogFork, aChildThatIsSavedFromACrashBeforeItsFirstMessageLogsOn)
{
    const TempFolder folder;
    expectSuccess(logger("forksAndChildIsSaved", folder).run());
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(messages.size(), 600u);
    EXPECT_EQ(numbersOf("child", messages), countTo(300));
}

// Crashes.

namespace
{
int signalOf(char const* name)
{
    const std::string wanted = name;
    return wanted == "SEGV"   ? SIGSEGV
           : wanted == "ABRT" ? SIGABRT
           : wanted == "BUS"  ? SIGBUS
           : wanted == "FPE"  ? SIGFPE
                              : SIGILL;
}

/// Logs one message and, once the reader rests behind it, 500 from each of three threads, of which the last one crashes. If the
/// reader rests for long (`aLongRest`), all of these are in the queues then.
void logAndCrash(int signal)
{
    forbidCoreFiles();
    static ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    logNumbers("first", 0, 1);
    if (canSeeTheReaderWait())
        waitUntilTheReaderWaits(Wait::ForAWhile);
    std::latch all(2);
    for (char const* name : {"one", "two"})
        std::thread([name, &all] {
            logNumbers(name, 0, 500);
            all.count_down();
            ::pause();
        }).detach();
    logNumbers("main", 0, 500);
    all.wait();
    raiseItself(signal);
}

void expectEverythingInOrder(std::string const& path)
{
    const auto messages = messagesOf(path);
    EXPECT_EQ(messages.size(), 1501u);
    for (char const* name : {"one", "two", "main"})
        EXPECT_EQ(numbersOf(name, messages), countTo(500));
    // A reader at work may have written a line before another thread added the message that it had stamped earlier.
    if (!canSeeTheReaderWait())
        return;
    std::uint64_t last = 0;
    for (LogLine const& message : messages) {
        EXPECT_GE(message.ticks, last) << message.text;
        last = message.ticks;
    }
}

/// How a thread comes to grief by itself.
void fault(std::string const& how)
{
    if (how == "address") {
        *reinterpret_cast<int volatile*>(std::getenv("NO SUCH VARIABLE")) = 1;
    } else if (how == "division") {
        int volatile zero = 0;
        int volatile result = 7 / zero;
        static_cast<void>(result);
    } else if (how == "instruction") {
        __builtin_trap();
    } else if (how == "terminate") {
        std::terminate();
    } else if (how == "exception") {
        const auto thrower = [](bool isThrowing) {
            if (isThrowing)
                throw 1;
        };
        [&]() noexcept { thrower(how.size() == 9); }();
    }
}

[[gnu::noinline]] int overflowStack(int volatile* before)
{
    int volatile here[256] = {*before};
    return *before == 0 ? overflowStack(here) + here[1] : here[0];
}
}  // namespace

VN_CHILD(raises)
{
    const Started start;
    logAndCrash(signalOf(argv[1]));
    return 0;
}

TEST_F(ThreadLogSignals, eachSignalFindsAllMessagesInTheFileAndEndsTheProcess)
{
    for (char const* name : {"SEGV", "ABRT", "BUS", "FPE", "ILL"}) {
        const TempFolder folder;
        const int status = runCrash(folder, "raises", name, aLongRest);
        EXPECT_TRUE(isEndedBy(status, signalOf(name))) << name << ": " << status;
        expectEverythingInOrder(folder.path("events.log"));
    }
}

VN_CHILD(faultsByItself)
{
    forbidCoreFiles();
    const Started start;
    static ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    logNumbers("main", 0, 700);
    fault(argv[1]);
    return 0;
}

TEST_F(ThreadLogSignals, aFaultEndsTheProcessByItsOwnSignalBehindTheMessages)
{
    if (isSanitized)
        GTEST_SKIP() << "a sanitizer has handlers of its own";
    const std::pair<char const*, int> faults[] = {{"address", SIGSEGV},
                                                  {"division", SIGFPE},
                                                  {"instruction", SIGILL},
                                                  {"terminate", SIGABRT},
                                                  {"exception", SIGABRT}};
    for (auto const& [how, signal] : faults) {
#if !defined(__x86_64__) && !defined(__i386__)
        if (signal == SIGFPE || signal == SIGILL)
            continue;  // not each processor stops at these, or by these signals
#endif
        const TempFolder folder;
        const int status = runCrash(folder, "faultsByItself", how);
        EXPECT_TRUE(isEndedBy(status, signal)) << how << ": " << status;
        EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(700)) << how;
    }
}

VN_CHILD(overflowsItsStack)
{
    forbidCoreFiles();
    const Started start;
    static ThreadLog& log = *new ThreadLog;
    logNumbers("early", 0, 1);  // so the calling thread isn't new to the log
    if (canSeeTheReaderWait())
        waitUntilTheReaderWaits(Wait::ForAWhile);
    log.installCrashHandlers();
    const auto crash = [] {
        logNumbers("main", 0, 400);
        int volatile first = 0;
        overflowStack(&first);
    };
    if (std::string(argv[1]) == "main")
        crash();
    std::thread(crash).join();
    return 0;
}

TEST_F(ThreadLogSignals, aStackOverflowIsNoExceptionInAnyThread)
{
    if (isSanitized)
        GTEST_SKIP() << "a sanitizer has handlers of its own";
    for (char const* thread : {"main", "other"}) {
        const TempFolder folder;
        const int status = runCrash(folder, "overflowsItsStack", thread, aLongRest);
        EXPECT_TRUE(isEndedBy(status, SIGSEGV)) << thread << ": " << status;
        EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(400)) << thread;
    }
}
VN_CHILD(hasAHandlerOfItsOwn)
{
    const Started start;
    struct sigaction own = {};
    own.sa_sigaction = [](int signal, ::siginfo_t* info, void*) {
        ::sigset_t blocked;
        ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        const bool isAsWanted =
            signal == SIGBUS && info->si_pid == ::getpid() && ::sigismember(&blocked, SIGUSR1) == 1;
        ::_exit(isAsWanted ? 42 : 1);
    };
    own.sa_flags = SA_SIGINFO;
    ::sigaddset(&own.sa_mask, SIGUSR1);
    ::sigaction(SIGBUS, &own, nullptr);
    logAndCrash(SIGBUS);
    return 0;
}

TEST_F(ThreadLogSignals, theProgramsHandlerIsCalledBehindTheMessagesAsTheSystemWould)
{
    const TempFolder folder;
    const int status = runCrash(folder, "hasAHandlerOfItsOwn", "", aLongRest);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
    expectEverythingInOrder(folder.path("events.log"));
}

namespace
{
sigjmp_buf rescue;
}

VN_CHILD(isRescued)
{
    const Started start;
    struct sigaction own = {};
    own.sa_handler = [](int) { ::siglongjmp(rescue, 1); };
    ::sigaction(SIGSEGV, &own, nullptr);
    ThreadLog log;
    log.installCrashHandlers();
    static int i = 0;  // not changed back by the jump
    for (; i < 3; ++i) {
        logNumbers("main", 200 * i, 200 * i + 100);
        if (sigsetjmp(rescue, 1) == 0)
            ::raise(SIGSEGV);
        logNumbers("main", 200 * i + 100, 200 * i + 200);
    }
    return 0;
}

TEST_F(ThreadLogSignals, aProgramThatSavesItselfLogsOn)
{
    const TempFolder folder;
    expectSuccess(logger("isRescued", folder).run());
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(600));
}

VN_CHILD(crashesTwice)
{
    forbidCoreFiles();
    const Started start;
    static ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    std::latch both(2);
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i)
        threads.emplace_back([i, &both] {
            logNumbers(i == 0 ? "one" : "two", 0, 500);
            both.arrive_and_wait();
            ::raise(i == 0 ? SIGSEGV : SIGBUS);
        });
    for (std::thread& thread : threads)
        thread.join();
    return 0;
}

TEST_F(ThreadLogSignals, twoThreadsMayCrashAtOnce)
{
    const TempFolder folder;
    EXPECT_NE(runCrash(folder, "crashesTwice", ""), 0);
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(numbersOf("one", messages), countTo(500));
    EXPECT_EQ(numbersOf("two", messages), countTo(500));
}

namespace
{
/// Ends the process within the line of "main 1", on the reader's own thread, once all messages are in the queue.
class CrashingBuffer : public std::streambuf
{
public:
    std::atomic<bool> isAllLogged = false;

protected:
    std::streamsize xsputn(char const* text, std::streamsize size) override
    {
        if (std::string_view(text, static_cast<std::size_t>(size)).ends_with("main 1\n")) {
            while (!isAllLogged)
                std::this_thread::yield();
            raiseItself(SIGABRT);
        }
        return size;
    }
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};
}  // namespace

VN_CHILD(crashesInTheReader)
{
    forbidCoreFiles();
    const Started start;
    static ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    static CrashingBuffer& buffer = *new CrashingBuffer;
    std::cout.rdbuf(&buffer);
    logNumbers("main", 0, 10);
    buffer.isAllLogged = true;
    ::pause();
    return 0;
}

// The reader's line is in the file and about to go to standard output.
TEST_F(ThreadLogSignals, aLineThatIsWholeInItsFileIsNotWrittenAgainIfTheReaderItselfCrashes)
{
    const TempFolder folder;
    const ChildRun run =
        logger("crashesInTheReader", folder).with("VN_LOG_WARNING", "%" + folder.path("events.log")).run();
    EXPECT_TRUE(run.crashed);
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(numbersOf("main", messages), countTo(10));
    EXPECT_EQ(messages.size(), 10u) << "nothing was lost";
    EXPECT_EQ(run.out.find("main 2\n"), run.out.find("main")) << run.out;
}

TEST_F(ThreadLogSignals, withoutTimeStampsTheReadersLineCountsAsWritten)
{
    const TempFolder folder;
    const ChildRun run = logger("crashesInTheReader", folder)
                             .with("VN_LOG_WARNING", "%" + folder.path("events.log"))
                             .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
                             .run();
    EXPECT_TRUE(run.crashed);
    std::vector<std::string> expected;
    for (int i = 0; i < 10; ++i)
        expected.push_back("Test main " + std::to_string(i));
    std::vector<std::string> lines = linesOf(folder.path("events.log"));
    std::erase_if(lines, [](std::string const& line) { return line.empty() || line.starts_with("====="); });
    EXPECT_EQ(lines, expected);
}

TEST_F(ThreadLogSignals, aLineThatIsNowhereIfTheReaderItselfCrashesIsToldByAnOverflowEntry)
{
    const TempFolder folder;
    const ChildRun run = logger("crashesInTheReader", folder).with("VN_LOG_WARNING", "%").run();
    EXPECT_TRUE(run.crashed);
    std::vector<std::string> texts;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);)
        if (const auto message = LogLine::parse(line))
            texts.push_back(message->text);
    std::vector<std::string> expected = {"Event overflow [1]"};
    for (int i = 2; i < 10; ++i)
        expected.push_back("Test main " + std::to_string(i));
    EXPECT_EQ(texts, expected) << run.out;
}

VN_CHILD(givesHandlersBack)
{
    const Started start;
    {
        ThreadLog log;
        log.installCrashHandlers();
        log.installCrashHandlers();
    }
    int left = 0;
    for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL}) {
        struct sigaction present = {};
        ::sigaction(signal, nullptr, &present);
        left += present.sa_handler != SIG_DFL;
    }
    return left;
}

TEST_F(ThreadLogSignals, theDestructorGivesTheHandlersBack)
{
    if (isSanitized)
        GTEST_SKIP() << "a sanitizer has handlers of its own";
    const TempFolder folder;
    expectSuccess(logger("givesHandlersBack", folder).run());
}

VN_CHILD(crashesIntoAPipe)
{
    forbidCoreFiles();
    int ends[2];
    if (::pipe(ends) != 0)
        return 1;
    ::dup2(ends[1], STDOUT_FILENO);
    ::setenv("VN_LOG_WARNING", "%", 1);
    // The reader's own write would end the process first.
    ::sigset_t pipe;
    ::sigemptyset(&pipe);
    ::sigaddset(&pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    const Started start;
    static ThreadLog& log = *new ThreadLog;
    ::pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
    log.installCrashHandlers();
    ::close(ends[0]);
    logNumbers("main", 0, 10, LgTypes::Warning);
    ::raise(SIGSEGV);
    return 0;
}

TEST_F(ThreadLogSignals, aPipeThatNobodyReadsDoesntChangeTheWayOfTheCrash)
{
    const TempFolder folder;
    const int status = runCrash(folder, "crashesIntoAPipe", "");
    EXPECT_TRUE(isEndedBy(status, SIGSEGV)) << status;
}

VN_CHILD(hasAHandlerForOnce)
{
    forbidCoreFiles();
    const Started start;
    struct sigaction own = {};
    own.sa_handler = [](int) { static_cast<void>(::write(STDOUT_FILENO, "once ", 5)); };
    own.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGSEGV, &own, nullptr);
    logAndCrash(SIGSEGV);
    ::raise(SIGSEGV);
    return 0;
}

TEST_F(ThreadLogSignals, aHandlerThatIsMeantForOneCrashIsCalledOnce)
{
    if (isSanitized)
        GTEST_SKIP() << "a sanitizer has handlers of its own";
    const TempFolder folder;
    EXPECT_TRUE(isEndedBy(runCrash(folder, "hasAHandlerForOnce", "", aLongRest), SIGSEGV));
    expectEverythingInOrder(folder.path("events.log"));
}

namespace
{
struct sigaction earlier;
}

VN_CHILD(chainsItsHandlerToAnEarlierLogs)
{
    forbidCoreFiles();
    const Started start;
    {
        ThreadLog log;
        log.installCrashHandlers();
        struct sigaction own = {};
        own.sa_sigaction = [](int signal, ::siginfo_t* info, void* context) {
            earlier.sa_sigaction(signal, info, context);
        };
        own.sa_flags = SA_SIGINFO;
        ::sigaction(SIGBUS, &own, &earlier);
    }
    logAndCrash(SIGBUS);
    return 0;
}

TEST_F(ThreadLogSignals, handlersThatCallEachOtherEndByTheSignal)
{
    const TempFolder folder;
    EXPECT_TRUE(isEndedBy(runCrash(folder, "chainsItsHandlerToAnEarlierLogs", "", aLongRest), SIGBUS));
    expectEverythingInOrder(folder.path("events.log"));
}

VN_CHILD(waitsForASignal)
{
    const Started start;
    ThreadLog log;
    ::sigset_t wanted;
    ::sigemptyset(&wanted);
    ::sigaddset(&wanted, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &wanted, nullptr);
    ::kill(::getpid(), SIGTERM);
    int signal = 0;
    ::sigwait(&wanted, &signal);
    return signal == SIGTERM ? 0 : 1;
}

TEST(ThreadLog, signalsOfTheProgramDontGoToTheReader)
{
    const TempFolder folder;
    expectSuccess(logger("waitsForASignal", folder).run());
}

// Outputs.

VN_CHILD(writesToAFullDevice)
{
    const Started start;
    ThreadLog log;
    for (int i = 0; i < 3; ++i) {
        logNumbers("main", 0, 10);
        log.flush();
    }
    std::this_thread::yield();
    return 0;
}

TEST(ThreadLog, anOutputThatRefusesLinesIsToldOnceWithItsPathAndTheReason)
{
    const TempFolder folder;
    const ChildRun run = logger("writesToAFullDevice", folder).with("VN_LOG_WARNING", "+/dev/full").run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: /dev/full: No space left on device\n");
}

VN_CHILD(makesTwoLogsOfAFullDevice)
{
    const Started start;
    for (int i = 0; i < 2; ++i) {
        ThreadLog log;
        logNumbers("main", 0, 10);
        log.flush();
    }
    return 0;
}

TEST(ThreadLog, eachLogTellsOfAnOutputThatRefusesLines)
{
    const TempFolder folder;
    const ChildRun run = logger("makesTwoLogsOfAFullDevice", folder).with("VN_LOG_WARNING", "+/dev/full").run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: /dev/full: No space left on device\nlog: /dev/full: No space left on device\n");
}

VN_CHILD(reopens)
{
    const Started start;
    const std::string path = getLogPath();
    ThreadLog log;
    if (argc > 1)
        log.installCrashHandlers();
    logNumbers("main", 0, 100);
    log.flush();
    std::filesystem::rename(path, path + ".1");
    logNumbers("main", 100, 200);
    if (!log.reopen() || !log.reopen())
        return 1;
    logNumbers("main", 200, 300);
    return 0;
}

TEST(ThreadLog, reopenGoesOnInANewFileOfTheSameName)
{
    const TempFolder folder;
    expectSuccess(logger("reopens", folder).run());
    const auto before = messagesOf(folder.path("events.log.1"));
    const auto behind = messagesOf(folder.path("events.log"));
    EXPECT_EQ(before.size(), 200u) << "what was accepted before";
    EXPECT_EQ(behind.size(), 100u);
    const auto lines = linesOf(folder.path("events.log"));
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[0], "===== Message Logger Startup =====");
    EXPECT_TRUE(lines[1].starts_with("===== Started on ")) << lines[1];
    EXPECT_EQ(lines[2], "");
    EXPECT_TRUE(lines[3].starts_with("===== Clock Frequency: 0.00")) << lines[3];
    EXPECT_EQ(lines.back(), "===== Message Logger Stopped =====");
    EXPECT_EQ(lines[3], linesOf(folder.path("events.log.1"))[3]) << "the same clock";
}

VN_CHILD(reopensAndCrashes)
{
    forbidCoreFiles();
    const Started start;
    const std::string path = getLogPath();
    static ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    std::filesystem::rename(path, path + ".1");
    log.reopen();
    logNumbers("main", 0, 700);
    ::raise(SIGSEGV);
    return 0;
}

TEST_F(ThreadLogSignals, aCrashBehindReopenGoesToTheNewFile)
{
    const TempFolder folder;
    EXPECT_TRUE(isEndedBy(runCrash(folder, "reopensAndCrashes", ""), SIGSEGV));
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(700));
}

VN_CHILD(cantReopen)
{
    const Started start;
    const std::string path = getLogPath();
    ThreadLog log;
    logNumbers("main", 0, 1);
    log.flush();
    std::filesystem::rename(path, path + ".1");
    std::filesystem::create_directory(path);
    const bool isDone = log.reopen();
    logNumbers("main", 1, 2);
    return isDone ? 1 : 0;
}

TEST(ThreadLog, whatCantBeReopenedStaysAndIsTold)
{
    const TempFolder folder;
    const ChildRun run = logger("cantReopen", folder).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: " + folder.path("events.log") + ": Is a directory\n");
    EXPECT_EQ(messagesOf(folder.path("events.log.1")).size(), 2u);
}

VN_CHILD(isRotated)
{
    const Started start;
    const std::string folder = std::getenv("T4Q_TEST_DIR");
    const std::string command = "/usr/sbin/logrotate --force --state " + folder + "/state " + folder + "/conf";
    ThreadLog log;
    for (int i = 0; i < 3; ++i) {
        logNumbers("main", 100 * i, 100 * i + 100);
        log.flush();
        if (std::system(command.c_str()) != 0)
            return 1;
    }
    logNumbers("main", 300, 400);
    return 0;
}

TEST(ThreadLog, logrotateMayCopyAndTruncateTheFile)
{
    const TempFolder folder;
    ::chmod(folder.path().c_str(), 0755);
    const std::string log = folder.path("events.log");
    const std::string conf =
        folder.file("conf", log + " {\n    copytruncate\n    rotate 5\n    missingok\n    nocreate\n}\n");
    ::chmod(conf.c_str(), 0644);
    expectSuccess(logger("isRotated", folder).run());
    std::vector<LogLine> all;
    for (std::string const& name : {log + ".3", log + ".2", log + ".1", log})
        for (LogLine const& message : messagesOf(name))
            all.push_back(message);
    EXPECT_EQ(messagesOf(log).size(), 100u) << "the last part alone, without a hole before it";
    EXPECT_EQ(numbersOf("main", all), countTo(400));
}

// What threads leave behind.

VN_CHILD(countsDescriptorsAndTasks)
{
    const Started start;
    const auto countIn = [](char const* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
    };
    {
        const ThreadLog first;  // what the process needs for threads at all, a sanitizer's own one for instance
    }
    const auto files = countIn("/proc/self/fd");
    const auto tasks = countIn("/proc/self/task");
    for (int i = 0; i < 20; ++i) {
        ThreadLog log;
        log.installCrashHandlers();
        logNumbers("main", 0, 10);
        std::filesystem::rename(getLogPath(), getLogPath() + ".1");
        log.reopen();
    }
    std::cout << countIn("/proc/self/fd") - files;
    while (countIn("/proc/self/task") > tasks)  // a thread that was joined may be on its way out still
        std::this_thread::yield();
    return 0;
}

TEST(ThreadLog, itsEndLeavesNoDescriptorAndNoThread)
{
    const TempFolder folder;
    const ChildRun run = logger("countsDescriptorsAndTasks", folder).run();
    expectSuccess(run);
    EXPECT_EQ(run.out, "0");
}

namespace
{
/// The system's calls can be watched, and tell what a thread waits for.
class ThreadLogWakeUps : public testing::Test
{
protected:
    void SetUp() override
    {
        if (isThreadSanitized || !canSeeTheReaderWait())
            GTEST_SKIP() << "nothing can stand in for the system's calls, or tells what a thread waits for";
    }
};
}  // namespace

VN_CHILD(logsWhatMayRest)
{
    const Started start;
    ThreadLog log;
    logNumbers("main", 0, 1);
    waitUntilTheReaderWaits(Wait::ForAWhile);
    // More than a queue holds, in parts of less than half of it.
    for (int part = 0; part < 4; ++part) {
        StandIns::wakeUps = 0;
        logNumbers("main", 0, 500);
        if (StandIns::wakeUps != 0)
            return 1;
        log.flush();
    }
    logNumbers("main", 0, 1, LgTypes::RecoverableError);
    return StandIns::wakeUps == 1 ? 0 : 2;
}

TEST_F(ThreadLogWakeUps, messagesThatMayRestWakeNobodyWhileTheQueueHasRoom)
{
    const TempFolder folder;
    expectSuccess(logger("logsWhatMayRest", folder).with("VN_THREADLOG_DOZE", aLongRest).run());
}

VN_CHILD(hasNoFences)
{
    StandIns::hasNoFence = true;
    const Started start;
    const ThreadLog log;
    logNumbers("main", 0, 1);
    while (StandIns::limitedWaits < 10)
        std::this_thread::yield();
    std::cout << (StandIns::shortestWait <= std::atol(argv[1])) << (StandIns::longestWait <= 100)
              << StandIns::endlessWaits;
    return 0;
}

TEST_F(ThreadLogWakeUps, withoutFencesTheReaderLooksTenTimesASecondAtLeast)
{
    const std::pair<char const*, char const*> dozes[] = {{"0", "100"}, {"1", "1"}, {aLongRest, "100"}};
    for (auto const& [doze, shortest] : dozes) {
        SCOPED_TRACE(doze);
        const TempFolder folder;
        const ChildRun run =
            logger("hasNoFences", folder).arguments({shortest}).with("VN_THREADLOG_DOZE", doze).run();
        expectSuccess(run);
        EXPECT_EQ(run.out, "110");
    }
}

VN_CHILD(restsWithoutItsLock)
{
    const std::string path = argv[1];
    const Started start;
    ThreadLog log;
    if (::unlink(path.c_str()) != 0 || ::mkdir(path.c_str(), 0700) != 0)
        return 1;
    for (int i = 0; i < 3; ++i) {
        const int before = StandIns::limitedWaits;
        logNumbers("main", i, i + 1, LgTypes::RecoverableError);  // wakes the reader each time
        while (StandIns::limitedWaits == before)
            std::this_thread::yield();
    }
    std::cout << (StandIns::longestWait <= 1000);
    ::rmdir(path.c_str());
    return 0;
}

TEST_F(ThreadLogWakeUps, aReaderThatCantWriteRestsForASecondAndTellsThatOnce)
{
    const TempFolder folder;
    const LockName lock(folder);
    const ChildRun run = logger("restsWithoutItsLock", folder)
                             .arguments({lock.getFile()})
                             .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get())
                             .with("VN_THREADLOG_DOZE", "0")
                             .run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "1");
    EXPECT_TRUE(run.err.starts_with("log: ")) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(3));
}

namespace
{
std::atomic<int> written = 0;

std::optional<::ssize_t> countLines(int file, std::string_view text)
{
    const ::ssize_t size = StandIns::writeItself(file, text);
    ++written;
    return size;
}
}  // namespace

VN_CHILD(meetsAReaderOnItsWayToSleep)
{
    const Started start;
    ThreadLog log;
    std::latch first(1), end(1);
    // Its queue is looked at behind the other one's, and stays empty.
    logNumbers("main", 0, 1);
    std::thread other([&] {
        logNumbers("other", 0, 1);
        first.count_down();
        end.wait();
    });
    first.wait();
    log.flush();
    StandIns::onWrite = countLines;
    for (int i = 0; i < 3000; ++i) {
        for (int volatile spin = i % 500 * 4; spin > 0;)
            spin = spin - 1;
        logNumbers("main", i + 1, i + 2);
        while (written <= i)
            std::this_thread::yield();
    }
    StandIns::onWrite = nullptr;
    end.count_down();
    other.join();
    return 0;
}

// Each message comes a moment later behind the line of the one before, so that they meet the reader wherever it is.
TEST_F(ThreadLogWakeUps, noMessageMissesAReaderOnItsWayToSleep)
{
    const TempFolder folder;
    expectSuccess(logger("meetsAReaderOnItsWayToSleep", folder).with("VN_THREADLOG_DOZE", "0").run());
}

VN_CHILD(waitsForAFewCharactersMore)
{
    const Started start;
    const Vn::LgMinorGroup group = groupOf();
    ThreadLog log;
    Vn::LgQueue const& own = Vn::LgLog::getQueue();
    ReaderHold hold(log);
    const std::string filling(1000, 'f');
    while (own.getStream().getNumCharacters() >= 4096)
        VN_LOG(group, LgTypes::Warning, filling.c_str());
    const auto room = static_cast<int>(own.getStream().getNumCharacters());
    // The group's word and a blank come in front.
    const std::string text(static_cast<std::size_t>(room + std::atoi(argv[1])) - 5, 't');
    std::atomic<bool> isLogged = false;
    const std::string task = "/proc/self/task/" + std::to_string(::getpid());
    std::thread helper([&] {
        if (argc > 2)
            waitUntilItWaits(task, Wait::ForAWhile);
        else
            while (!isLogged)
                std::this_thread::yield();
        hold.end();
    });
    VN_LOG(group, LgTypes::RecoverableError, text.c_str());
    isLogged = true;
    helper.join();
    log.flush();
    std::cout << text.size();
    return 0;
}

TEST_F(ThreadLogWakeUps, anErrorWaitsIfOneCharacterOfRoomIsMissingAndIsWhole)
{
    const struct
    {
        char const* more;
        bool isWaiting;
    } table[] = {{"-1", false}, {"0", true}, {"1", true}, {"2", true}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.more);
        const TempFolder folder;
        Child program = logger("waitsForAFewCharactersMore", folder);
        program.arguments(row.isWaiting ? std::vector<std::string>{row.more, "waits"}
                                        : std::vector<std::string>{row.more});
        const ChildRun run = program.run();
        expectSuccess(run);
        const auto messages = messagesOf(folder.path("events.log"));
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.back().text, "Test " + std::string(std::stoul("0" + run.out), 't'));
    }
}

namespace
{
/// Logs one more message for each line of standard output, as long as it is asked to.
class LoggingBuffer : public std::streambuf
{
public:
    std::atomic<bool> isEnding = false;

protected:
    std::streamsize xsputn(char const*, std::streamsize size) override
    {
        if (!isEnding)
            logNumbers("next", 0, 1);
        return size;
    }
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};
}  // namespace

VN_CHILD(logsOnWhileItFlushes)
{
    const Started start;
    ThreadLog& log = *new ThreadLog;
    logNumbers("main", 0, 1);
    waitUntilTheReaderWaits(Wait::ForAWhile);
    static LoggingBuffer& buffer = *new LoggingBuffer;
    std::cout.rdbuf(&buffer);
    logNumbers("main", 1, 3);
    log.flush();
    buffer.isEnding = true;
    ::_exit(messagesOf(getLogPath()).size() == 3 ? 0 : 1);
}

TEST_F(ThreadLogWakeUps, flushEndsWithWhatWasThereBeforeItThoughMessagesGoOnComing)
{
    const TempFolder folder;
    const ChildRun run = logger("logsOnWhileItFlushes", folder)
                             .with("VN_LOG_WARNING", "%" + folder.path("events.log"))
                             .with("VN_THREADLOG_DOZE", aLongRest)
                             .run();
    expectSuccess(run);
}

VN_CHILD(flushesWithoutItsLock)
{
    const std::string path = argv[1];
    const Started start;
    ThreadLog log;
    logNumbers("main", 0, 1);
    log.flush();
    if (::unlink(path.c_str()) != 0 || ::mkdir(path.c_str(), 0700) != 0)
        return 1;
    logNumbers("main", 1, 2);
    EXPECT_THROW(log.flush(), Vn::ExSysErrorWindows);
    ::rmdir(path.c_str());
    log.flush();
    std::cout << numbersOf("main", messagesOf(getLogPath())).size();
    return testing::Test::HasFailure() ? 1 : 0;
}

TEST(ThreadLog, flushThrowsIfTheLockFailsAndMayBeCalledAgain)
{
    const TempFolder folder;
    const LockName lock(folder);
    const ChildRun run = logger("flushesWithoutItsLock", folder)
                             .arguments({lock.getFile()})
                             .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get())
                             .run();
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out, "2");
}

VN_CHILD(isIdle)
{
    const Started start;
    const std::string file = getLogPath();
    if (!canSeeTheReaderWait())
        return 77;
    ThreadLog log;
    logNumbers("main", 0, 10);
    while (messagesOf(file).size() != 10)
        std::this_thread::yield();
    waitUntilTheReaderWaits(Wait::ForEver);
    return 0;
}

TEST(ThreadLog, anIdleReaderSleepsWithoutATimer)
{
    const TempFolder folder;
    const ChildRun run = logger("isIdle", folder).run();
    if (run.exitCode == 77)
        GTEST_SKIP() << "the system doesn't tell what a thread waits for";
    expectSuccess(run);
}
