// Crashes that meet something else on POSIX: another crash, an output that is slow, messages that wait, a reader within a line.
#include "standins.h"
#include "threadlogposixbody.h"

#include <base/trace.h>

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csetjmp>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace VnTest;
using Vn::LgTypes;
using Vn::ThreadLog;

namespace
{
/// Until some thread waits within a crash.
void waitForAPause()
{
    while (StandIns::pauses == 0)
        std::this_thread::yield();
}

bool isForTheLog(std::string_view text)
{
    return text.find("Test main") != text.npos;
}

/// A log that no destructor ends, with one message in its file behind which the reader rests for as long as it may.
ThreadLog& makeLogAtRest()
{
    forbidCoreFiles();
    ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    logNumbers("first", 0, 1);
    if (canSeeTheReaderWait())
        waitUntilTheReaderWaits(Wait::ForAWhile);
    return log;
}

sigjmp_buf rescue;

void installHandler(int signal, void (*handler)(int), int flags = 0)
{
    struct sigaction own = {};
    own.sa_handler = handler;
    own.sa_flags = flags;
    ::sigaction(signal, &own, nullptr);
}

std::vector<std::string> textsOf(std::vector<LogLine> const& messages)
{
    std::vector<std::string> texts;
    for (LogLine const& message : messages)
        texts.push_back(message.text);
    return texts;
}

void expectRisingTimes(std::vector<LogLine> const& messages)
{
    std::uint64_t last = 0;
    for (LogLine const& message : messages) {
        EXPECT_GE(message.ticks, last) << message.text;
        last = message.ticks;
    }
}

using ThreadLogCrashes = ThreadLogSignals;
}  // namespace

// Two crashes.

namespace
{
/// Holds the first line of a crash up until another thread waits in a crash of its own.
std::optional<::ssize_t> waitForTheOtherCrash(int, std::string_view text)
{
    if (isForTheLog(text))
        waitForAPause();
    return {};
}

/// The same for ever, with two seconds gone by.
std::optional<::ssize_t> neverEnd(int, std::string_view text)
{
    while (isForTheLog(text)) {
        waitForAPause();
        StandIns::clockAhead = 3;
    }
    return {};
}

std::atomic<bool> isInCrash = false;

template <StandIns::Write hook>
std::optional<::ssize_t> tellThatItIsInCrash(int file, std::string_view text)
{
    if (isForTheLog(text))
        isInCrash = true;
    return hook(file, text);
}

[[noreturn]] void crashInTwoThreads(StandIns::Write hook)
{
    makeLogAtRest();
    StandIns::onWrite = hook;
    std::thread([] {
        logNumbers("main", 0, 300);
        ::raise(SIGSEGV);
    }).detach();
    waitFor(isInCrash);
    logNumbers("other", 0, 300);
    ::raise(SIGBUS);
    std::abort();
}
}  // namespace

VN_CHILD(crashesBesideASlowCrash)
{
    const Started start;
    crashInTwoThreads(tellThatItIsInCrash<waitForTheOtherCrash>);
}

TEST_F(ThreadLogCrashes, aSecondThreadThatCrashesWaitsForTheFirstHoweverSlowItsOutputIs)
{
    const TempFolder folder;
    const int status = runCrash(folder, "crashesBesideASlowCrash", "", aLongRest);
    EXPECT_TRUE(isEndedBy(status, SIGSEGV) || isEndedBy(status, SIGBUS)) << status;
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(300));
}

VN_CHILD(crashesBesideACrashThatHangs)
{
    const Started start;
    crashInTwoThreads(tellThatItIsInCrash<neverEnd>);
}

TEST_F(ThreadLogCrashes, aSecondThreadThatCrashesEndsTheProcessIfTheFirstHangs)
{
    const TempFolder folder;
    EXPECT_TRUE(isEndedBy(runCrash(folder, "crashesBesideACrashThatHangs", "", aLongRest), SIGBUS));
}

namespace
{
std::atomic<bool> isHangOver = false;
thread_local sigjmp_buf ownRescue;

std::optional<::ssize_t> hangUntilTheOtherIsThrough(int, std::string_view text)
{
    while (isForTheLog(text) && !isHangOver) {
        if (StandIns::pauses != 0)
            StandIns::clockAhead = 3;
        std::this_thread::yield();
    }
    return {};
}
}  // namespace

VN_CHILD(isSavedBesideACrashThatHangs)
{
    const Started start;
    for (const int signal : {SIGSEGV, SIGBUS})
        installHandler(signal, [](int) { ::siglongjmp(ownRescue, 1); });
    ThreadLog& log = makeLogAtRest();
    StandIns::onWrite = tellThatItIsInCrash<hangUntilTheOtherIsThrough>;
    std::thread other([] {
        logNumbers("main", 0, 300);
        if (sigsetjmp(ownRescue, 1) == 0)
            ::raise(SIGSEGV);
    });
    waitFor(isInCrash);
    if (sigsetjmp(ownRescue, 1) == 0)
        ::raise(SIGBUS);
    isHangOver = true;
    other.join();
    logNumbers("late", 0, 300);
    log.flush();
    ::_exit(0);
}

TEST_F(ThreadLogCrashes, aProgramThatIsSavedFromBothOfTwoCrashesLogsOn)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "isSavedBesideACrashThatHangs", "", aLongRest), 0);
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(numbersOf("main", messages), countTo(300));
    EXPECT_EQ(numbersOf("late", messages), countTo(300));
}

namespace
{
std::optional<::ssize_t> crashWithinTheCrash(int, std::string_view text)
{
    if (isForTheLog(text)) {
        StandIns::onWrite = nullptr;
        ::raise(SIGBUS);
    }
    return {};
}
}  // namespace

VN_CHILD(crashesWithinACrashAndIsSaved)
{
    const Started start;
    installHandler(SIGSEGV, [](int) { ::siglongjmp(rescue, 1); });
    installHandler(SIGBUS, [](int) { isInCrash = true; });
    ThreadLog& log = makeLogAtRest();
    logNumbers("main", 0, 100);
    StandIns::onWrite = crashWithinTheCrash;
    if (sigsetjmp(rescue, 1) == 0)
        ::raise(SIGSEGV);
    logNumbers("main", 100, 200);
    log.flush();
    ::_exit(isInCrash ? 0 : 1);
}

TEST_F(ThreadLogCrashes, aCrashWithinACrashGoesItsOwnWayAndTheLogGoesOn)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "crashesWithinACrashAndIsSaved", "", aLongRest), 0);
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(200));
}

namespace
{
void logAndCrash(char const* name)
{
    logNumbers(name, 0, 100);
    if (sigsetjmp(rescue, 1) == 0)
        ::raise(SIGSEGV);
}
}  // namespace

VN_CHILD(crashesAgainBehindARescue)
{
    const Started start;
    installHandler(SIGSEGV, [](int) { ::siglongjmp(rescue, 1); });
    makeLogAtRest();
    for (char const* name : {"main0", "main1", "main2"})
        logAndCrash(name);
    ::_exit(0);
}

TEST_F(ThreadLogCrashes, whatIsLoggedBehindACrashThatWasSurvivedIsWrittenByTheNextOne)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "crashesAgainBehindARescue", "", aLongRest), 0);
    const auto messages = messagesOf(folder.path("events.log"));
    for (char const* name : {"main0", "main1", "main2"})
        EXPECT_EQ(numbersOf(name, messages), countTo(100)) << name;
}

VN_CHILD(crashesWithTheReaderAtRest)
{
    const Started start;
    installHandler(SIGSEGV, [](int) { ::_exit(StandIns::pauses != 0); });
    if (!canSeeTheReaderWait())
        return 0;
    makeLogAtRest();
    logNumbers("main", 0, 10);
    ::raise(SIGSEGV);
    return 1;
}

TEST_F(ThreadLogCrashes, aCrashWaitsForNothingWhileTheReaderRests)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "crashesWithTheReaderAtRest", "", aLongRest), 0);
}

namespace
{
std::atomic<bool> isUrgentWanted = false, isInLine = false, isSecondCrash = false;
std::atomic<int> pausesBefore = 0;

/// The first crash goes on when the reader waits for its end; the reader's next line when the second crash waits for that.
std::optional<::ssize_t> letThemWaitForEachOther(int, std::string_view text)
{
    if (text.find("Test main") != text.npos) {
        isUrgentWanted = true;
        waitForAPause();
    }
    if (text.find("Test urgent") != text.npos && !isInLine) {
        isInLine = true;
        waitFor(isSecondCrash);
        while (StandIns::pauses == pausesBefore)
            std::this_thread::yield();
    }
    return {};
}
}  // namespace

VN_CHILD(crashesOnBothSidesOfALine)
{
    const Started start;
    installHandler(SIGSEGV, [](int) { ::siglongjmp(rescue, 1); });
    makeLogAtRest();
    StandIns::onWrite = letThemWaitForEachOther;
    logNumbers("main", 0, 1);
    std::thread other([] {
        waitFor(isUrgentWanted);
        logNumbers("urgent", 0, 1, LgTypes::RecoverableError);
    });
    if (sigsetjmp(rescue, 1) == 0)
        ::raise(SIGSEGV);
    other.join();
    waitFor(isInLine);
    logNumbers("late", 0, 10);
    pausesBefore = StandIns::pauses.load();
    isSecondCrash = true;
    ::raise(SIGBUS);
    return 0;
}

TEST_F(ThreadLogCrashes, theReaderWaitsForACrashAndACrashForTheReadersLine)
{
    const TempFolder folder;
    EXPECT_TRUE(isEndedBy(runCrash(folder, "crashesOnBothSidesOfALine", "", aLongRest), SIGBUS));
    std::vector<std::string> expected = {"Test first 0", "Test main 0", "Test urgent 0"};
    for (int i = 0; i < 10; ++i)
        expected.push_back("Test late " + std::to_string(i));
    EXPECT_EQ(textsOf(messagesOf(folder.path("events.log"))), expected);
}

VN_CHILD(crashesADayLater)
{
    const Started start;
    installHandler(SIGSEGV, [](int) { ::_exit(0); });
    StandIns::clockAhead = 86400;
    makeLogAtRest();
    logNumbers("main", 0, 1);
    ::raise(SIGSEGV);
    return 1;
}

TEST_F(ThreadLogCrashes, theTimesOfItsLinesAreThoseOfTheReadersHoweverOldTheProcessIs)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "crashesADayLater", "", aLongRest), 0);
    const auto messages = messagesOf(folder.path("events.log"));
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_GE(messages[0].ticks, 86400 * 1000000000ull);
    EXPECT_GE(messages[1].ticks, messages[0].ticks);
    EXPECT_LT(messages[1].ticks, messages[0].ticks + 600 * 1000000000ull);
}

// Messages that wait, and losses.

namespace
{
/// With the reader held: one thread has lost what found no room, and another one waits with an error for which there is none.
std::thread logIntoFullQueues()
{
    std::thread([] { logNumbers("dropped", 0, 3000); }).join();
    static std::atomic<::pid_t> waiting = 0;
    std::thread writer([] {
        waiting = static_cast<::pid_t>(::syscall(SYS_gettid));
        logNumbers("waiting", 0, 3000, LgTypes::RecoverableError);
    });
    while (waiting == 0)
        std::this_thread::yield();
    waitUntilItWaits("/proc/self/task/" + std::to_string(waiting), Wait::ForAWhile);
    logNumbers("main", 0, 10);
    return writer;
}

constexpr int roomOfAQueue = 1022;
}  // namespace

VN_CHILD(crashesWhileAMessageWaits)
{
    if (!canSeeTheReaderWait())
        return 77;
    const Started start;
    ThreadLog& log = makeLogAtRest();
    [[maybe_unused]] auto& hold = *new ReaderHold(log);
    logIntoFullQueues().detach();
    ::raise(SIGSEGV);
    return 0;
}

TEST_F(ThreadLogCrashes, theMessageThatWaitsForRoomAndTheCountOfLossesAreWrittenInTheirTurn)
{
    const TempFolder folder;
    const int status = runCrash(folder, "crashesWhileAMessageWaits", "", aLongRest);
    if (status == 77 << 8)
        GTEST_SKIP() << "the system doesn't tell what a thread waits for";
    EXPECT_TRUE(isEndedBy(status, SIGSEGV)) << status;
    const auto messages = messagesOf(folder.path("events.log"));
    EXPECT_EQ(numbersOf("dropped", messages), countTo(roomOfAQueue));
    EXPECT_EQ(numbersOf("waiting", messages), countTo(roomOfAQueue + 1))
        << "what is in its queue, and the one that waits";
    EXPECT_EQ(numbersOf("main", messages), countTo(10));
    ASSERT_EQ(messages.size(), 1u + roomOfAQueue + 1 + roomOfAQueue + 1 + 10);
    EXPECT_EQ(messages[1 + roomOfAQueue].text, "Event overflow [" + std::to_string(3000 - roomOfAQueue) + "]");
    EXPECT_EQ(messages[1 + roomOfAQueue].level, "Informational");
    expectRisingTimes(messages);
}

VN_CHILD(isSavedWhileAMessageWaits)
{
    if (!canSeeTheReaderWait())
        return 77;
    const Started start;
    installHandler(SIGSEGV, [](int) { ::siglongjmp(rescue, 1); });
    ThreadLog& log = makeLogAtRest();
    auto& hold = *new ReaderHold(log);
    auto& writer = *new std::thread(logIntoFullQueues());
    if (sigsetjmp(rescue, 1) == 0)
        ::raise(SIGSEGV);
    hold.end();
    writer.join();
    log.flush();
    ::_exit(0);
}

TEST_F(ThreadLogCrashes, aMessageThatWaitedDuringACrashIsWrittenOnceIfTheProgramIsSaved)
{
    const TempFolder folder;
    const int status = runCrash(folder, "isSavedWhileAMessageWaits", "", aLongRest);
    if (status == 77 << 8)
        GTEST_SKIP() << "the system doesn't tell what a thread waits for";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(numbersOf("waiting", messagesOf(folder.path("events.log"))), countTo(3000));
}

// A reader that crashes within a line.

namespace
{
/// Ends the process within a line of standard output, on the reader's own thread, once `isReady`.
class CrashingBuffer : public std::streambuf
{
public:
    explicit CrashingBuffer(std::string_view end) : _end(end) {}

    std::atomic<bool> isReady = false;

protected:
    std::streamsize xsputn(char const* text, std::streamsize size) override
    {
        if (std::string_view(text, static_cast<std::size_t>(size)).ends_with(_end)) {
            waitFor(isReady);
            raiseItself(SIGABRT);
        }
        return size;
    }
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }

private:
    std::string_view _end;
};
}  // namespace

VN_CHILD(crashesInTheCountOfLosses)
{
    const Started start;
    forbidCoreFiles();
    ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    auto& hold = *new ReaderHold(log);
    auto& buffer = *new CrashingBuffer("Event overflow [10]\n");
    std::cout.rdbuf(&buffer);
    logNumbers("main", 0, roomOfAQueue + 10);
    buffer.isReady = true;
    hold.end();
    ::pause();
    return 0;
}

TEST_F(ThreadLogCrashes, aCountOfLossesThatIsInItsFileIsNotWrittenAgainIfTheReaderItselfCrashes)
{
    const TempFolder folder;
    const std::string file = "%" + folder.path("events.log");
    const ChildRun run = logger("crashesInTheCountOfLosses", folder)
                             .with("VN_LOG_WARNING", file)
                             .with("VN_LOG_INFORMATIONAL", file)
                             .run();
    EXPECT_TRUE(run.crashed);
    const auto messages = messagesOf(folder.path("events.log"));
    ASSERT_EQ(messages.size(), roomOfAQueue + 1u);
    EXPECT_EQ(messages.back().text, "Event overflow [10]");
}

TEST_F(ThreadLogCrashes, aCountOfLossesThatIsNowhereIsWrittenIfTheReaderItselfCrashes)
{
    const TempFolder folder;
    const ChildRun run = logger("crashesInTheCountOfLosses", folder)
                             .with("VN_LOG_WARNING", "%" + folder.path("events.log"))
                             .with("VN_LOG_INFORMATIONAL", "%")
                             .run();
    EXPECT_TRUE(run.crashed);
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), static_cast<std::size_t>(roomOfAQueue));
    EXPECT_TRUE(run.out.ends_with(") Informational: Event overflow [10]\n")) << run.out;
}

namespace
{
std::atomic<bool> isAllLogged = false;

std::size_t bytesBeforeTheCrash = 0;
bool isAnothersLine = false;

/// On the reader's thread: a part of the line is in the file when it crashes.
std::optional<::ssize_t> writeAPartAndCrash(int file, std::string_view text)
{
    if (!text.ends_with("Test main 0\n"))
        return {};
    waitFor(isAllLogged);
    StandIns::onWrite = nullptr;
    StandIns::writeItself(file,
                          isAnothersLine ? std::string_view("another's") : text.substr(0, bytesBeforeTheCrash));
    raiseItself(SIGABRT);
    return {};
}
}  // namespace

/// Argument: the number of those bytes; behind it "e" if the file is empty before, "a" if they are those of another process.
VN_CHILD(crashesInHalfALine)
{
    const Started start;
    forbidCoreFiles();
    const std::string how = argv[1];
    bytesBeforeTheCrash = std::stoul(how);
    isAnothersLine = how.ends_with('a');
    if (how.ends_with('e'))
        std::ofstream(getLogPath(), std::ios::trunc).close();
    ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    StandIns::onWrite = writeAPartAndCrash;
    logNumbers("main", 0, 10);
    isAllLogged = true;
    ::pause();
    return 0;
}

TEST_F(ThreadLogCrashes, aHalfLineIsEndedAndItsLossIsToldIfTheReaderItselfCrashes)
{
    const struct
    {
        char const* how;
        std::size_t halfLines;
    } table[] = {
        {"0", 0},   // nothing is there
        {"1", 1},   // within the time
        {"43", 1},  // all but the blank before the text
        {"44", 1},  // the whole prefix
        {"55", 1},  // all but the line end
        {"0e", 0}, {"1e", 1}, {"43e", 1}, {"44e", 1}, {"55e", 1}, {"9a", 1},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.how);
        const TempFolder folder;
        EXPECT_TRUE(isEndedBy(runCrash(folder, "crashesInHalfALine", row.how), SIGABRT));
        std::vector<std::string> lines = linesOf(folder.path("events.log"));
        std::erase_if(lines, [](std::string const& line) { return line.empty() || line.starts_with("====="); });
        ASSERT_EQ(lines.size(), row.halfLines + 10);
        if (row.halfLines != 0) {
            EXPECT_EQ(lines[0].size(), std::stoul(row.how)) << lines[0];
        }
        for (std::size_t i = 0; i < 10; ++i) {
            const auto message = LogLine::parse(lines[row.halfLines + i]);
            ASSERT_TRUE(message) << lines[row.halfLines + i];
            EXPECT_EQ(message->text, i == 0 ? "Event overflow [1]" : "Test main " + std::to_string(i));
        }
    }
}

// The program's own ways.

VN_CHILD(endsInItsTerminateHandler)
{
    const Started start;
    static ThreadLog* log = nullptr;
    std::set_terminate([] {
        logNumbers("late", 0, 1);
        log->flush();
        ::_exit(3);
    });
    log = &makeLogAtRest();
    logNumbers("main", 0, 100);
    std::terminate();
}

TEST_F(ThreadLogCrashes, theTerminateHandlerOfTheProgramComesBehindTheMessagesAndMayLog)
{
    const TempFolder folder;
    const int status = runCrash(folder, "endsInItsTerminateHandler", "", aLongRest);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
    EXPECT_EQ(textsOf(messagesOf(folder.path("events.log"))).back(), "Test late 0");
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(100));
}

VN_CHILD(quitsInItsTerminateHandler)
{
    const Started start;
    std::set_terminate([] { ::_exit(3); });
    makeLogAtRest();
    logNumbers("main", 0, 100);
    std::terminate();
}

TEST_F(ThreadLogCrashes, aTerminateHandlerThatEndsTheProcessWithoutASignalComesBehindTheMessages)
{
    const TempFolder folder;
    const int status = runCrash(folder, "quitsInItsTerminateHandler", "", aLongRest);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(100));
}

VN_CHILD(ignoresTheSignal)
{
    const Started start;
    installHandler(SIGBUS, SIG_IGN);
    ThreadLog& log = makeLogAtRest();
    logNumbers("main", 0, 10);
    for (int i = 0; i < 2; ++i)
        ::raise(SIGBUS);
    logNumbers("main", 10, 20);
    log.flush();
    ::_exit(0);
}

TEST_F(ThreadLogCrashes, aSignalThatTheProgramIgnoresStaysIgnored)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "ignoresTheSignal", "", aLongRest), 0);
    EXPECT_EQ(numbersOf("main", messagesOf(folder.path("events.log"))), countTo(20));
}

VN_CHILD(looksAtTheMaskInItsHandler)
{
    const Started start;
    const auto exitBlocked = [](int signal) {
        ::sigset_t blocked;
        ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        ::_exit(::sigismember(&blocked, signal));
    };
    installHandler(SIGBUS, exitBlocked, std::string(argv[1]) == "nested" ? SA_NODEFER : 0);
    makeLogAtRest();
    ::raise(SIGBUS);
    return 9;
}

TEST_F(ThreadLogCrashes, theSignalIsBlockedInTheProgramsHandlerUnlessThatAsksForItsNesting)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "looksAtTheMaskInItsHandler", "", aLongRest), 1 << 8);
    EXPECT_EQ(runCrash(folder, "looksAtTheMaskInItsHandler", "nested", aLongRest), 0);
}

VN_CHILD(hasAPipeSignalPending)
{
    const Started start;
    installHandler(SIGSEGV, [](int) { ::siglongjmp(rescue, 1); });
    makeLogAtRest();
    ::sigset_t pipe, pending;
    ::sigemptyset(&pipe);
    ::sigaddset(&pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    ::pthread_kill(::pthread_self(), SIGPIPE);
    if (sigsetjmp(rescue, 1) == 0)
        ::raise(SIGSEGV);
    ::sigpending(&pending);
    ::_exit(::sigismember(&pending, SIGPIPE) == 1 ? 0 : 1);
}

TEST_F(ThreadLogCrashes, aPipeSignalThatIsPendingStaysSo)
{
    const TempFolder folder;
    EXPECT_EQ(runCrash(folder, "hasAPipeSignalPending", "", aLongRest), 0);
}

VN_CHILD(hasReplacedTheHandlers)
{
    const Started start;
    const auto own = [](int) {};
    const std::terminate_handler end = [] { ::_exit(3); };
    {
        ThreadLog log;
        log.installCrashHandlers();
        installHandler(SIGBUS, own);
        std::set_terminate(end);
    }
    struct sigaction present = {};
    ::sigaction(SIGBUS, nullptr, &present);
    return present.sa_handler == own && std::get_terminate() == end ? 0 : 1;
}

TEST_F(ThreadLogCrashes, handlersThatTheProgramHasInstalledSinceStay)
{
    const TempFolder folder;
    expectSuccess(logger("hasReplacedTheHandlers", folder).run());
}

// The end of a program whose threads go on.

namespace
{
Vn::TraceLevel& noise = *Vn::Trace::registerLevel("Noise", __FILE__);
}

VN_CHILD(exitsWhileThreadsTrace)
{
    const Started start;
    static ThreadLog& log = *new ThreadLog;
    static_cast<void>(log);
    static std::array<std::atomic<int>, 3> traced = {};
    for (std::size_t i = 0; i < traced.size(); ++i)
        std::thread([i] {
            for (int number = 0;; ++number) {
                VN_TRACE_ENTRY(noise, "call");
                VN_TRACE(noise, "thread" << static_cast<int>(i) << ' ' << number);
                traced[i] = number + 1;
            }
        }).detach();
    for (std::atomic<int> const& count : traced)
        while (count < 200)
            std::this_thread::yield();
    std::ofstream counts(std::getenv("T4Q_TEST_DIR") + std::string("/counts"));
    for (std::atomic<int> const& count : traced)
        counts << count << '\n';
    counts.close();
    std::exit(0);
}

TEST_F(ThreadLogCrashes, aProgramThatCallsExitWhileThreadsTraceLosesNothingOfWhatCameBefore)
{
    const TempFolder folder;
    const ChildRun run = logger("exitsWhileThreadsTrace", folder)
                             .with("VN_TRACE_OPTIONS", "show=Noise")
                             .with("VN_LOG_TRACING", folder.path("trace.log"))
                             .with("VN_THREADLOG_WAIT", "all")
                             .run();
    expectSuccess(run);
    std::array<int, 3> next = {};
    for (LogLine const& message : messagesOf(folder.path("trace.log"))) {
        const auto place = message.text.find("thread");
        if (place == message.text.npos)
            continue;
        const auto thread = static_cast<std::size_t>(message.text[place + 6] - '0');
        ASSERT_LT(thread, next.size()) << message.text;
        EXPECT_EQ(std::stoi(message.text.substr(place + 8)), next[thread]++) << message.text;
    }
    std::ifstream counts(folder.path("counts"));
    for (const int written : next) {
        int before = 0;
        counts >> before;
        EXPECT_GE(before, 200);
        EXPECT_GE(written, before);
    }
}
