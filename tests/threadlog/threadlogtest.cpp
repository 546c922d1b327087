#include "threadlogbody.h"

#include "livememory.h"
#include "lockname.h"

#include <base/dbgbuildinfomgr.h>
#include <base/exinternalerror.h>
#include <base/lginterprocesslock.h>
#include <base/trace.h>

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <thread>

using namespace VnTest;
using Vn::LgTypes;
using Vn::ThreadLog;

namespace
{
const Vn::ThreadLogOptions options("w:", "f:");

/// Threads wait here for each other. By looking: on Windows std::latch may miss its wake-up.
class Meeting
{
public:
    explicit Meeting(int count) : _missing(count) {}

    void arrive() { --_missing; }
    void wait() const
    {
        while (_missing > 0)
            std::this_thread::yield();
    }
    void arriveAndWait()
    {
        arrive();
        wait();
    }

private:
    std::atomic<int> _missing;
};

void logNumbers(LgTypes::Level level, int count, char const* text = "number")
{
    const Vn::LgMinorGroup group = groupOf();
    for (int i = 0; i < count; ++i)
        VN_LOG(group, level, text << ' ' << i);
}

/// Blocks the reader within a line while it exists: the lock under which all lines are written is ours.
class ReaderBlock
{
public:
    ReaderBlock() : _guard(Vn::LgLog::getInterProcessLock()) {}

private:
    Vn::LgInterProcessLockGuard _guard;
};

std::vector<int> numbersOf(std::vector<LogLine> const& messages)
{
    std::vector<int> numbers;
    for (LogLine const& message : messages) {
        std::istringstream words(message.text);
        std::string group, text;
        int number = -1;
        if (words >> group >> text >> number && text == "number")
            numbers.push_back(number);
    }
    return numbers;
}

bool isRisingFrom0(std::vector<int> const& numbers)
{
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (numbers[i] != static_cast<int>(i))
            return false;
    return true;
}
}  // namespace

VN_CHILD(threadsLog)
{
    const Started start;
    const Vn::LgMinorGroup group = groupOf();
    ThreadLog log;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([thread, &group] {
            for (int i = 0; i < 300; ++i)
                VN_LOG(group, LgTypes::Warning, thread << ' ' << i);
        });
    for (std::thread& thread : threads)
        thread.join();
    return 0;
}

TEST(ThreadLog, oneObjectWritesWhatAllThreadsLog)
{
    const TempFolder folder;
    expectSuccess(logger("threadsLog", folder).run());
    std::map<int, int> next;
    std::map<int, std::set<std::uint32_t>> ids;
    for (LogLine const& message : messagesOf(folder.path("events.log"))) {
        std::istringstream words(message.text);
        std::string group;
        int thread = -1, number = -1;
        words >> group >> thread >> number;
        EXPECT_EQ(group, "Test");
        EXPECT_EQ(number, next[thread]++) << message.text;
        ids[thread].insert(message.threadId);
    }
    std::set<std::uint32_t> all;
    for (int thread = 0; thread < 4; ++thread) {
        EXPECT_EQ(next[thread], 300);
        EXPECT_EQ(ids[thread].size(), 1u);
        all.insert(ids[thread].begin(), ids[thread].end());
    }
    EXPECT_EQ(all, (std::set<std::uint32_t>{1, 2, 3, 4})) << "each thread has a number of its own";
}

VN_CHILD(threadsComeAndGo)
{
    const Started start;
    const Vn::LgMinorGroup group = groupOf();
    ThreadLog log;
    for (int i = 0; i < 1000; ++i)
        std::thread([i, &group] { VN_LOG(group, LgTypes::RecoverableError, "number " << i); }).join();
    return 0;
}

TEST(ThreadLog, aThreadsLastMessageIsWrittenBehindItsEnd)
{
    const TempFolder folder;
    expectSuccess(logger("threadsComeAndGo", folder).run());
    const std::vector<int> numbers = numbersOf(messagesOf(folder.path("events.log")));
    EXPECT_EQ(numbers.size(), 1000u);
    EXPECT_TRUE(isRisingFrom0(numbers)) << "each thread began behind the end of the one before";
}

VN_CHILD(flushes)
{
    const Started start(argc, argv);
    ThreadLog log;
    logNumbers(LgTypes::Warning, 500);
    log.flush();
    std::cout << numbersOf(messagesOf(std::getenv("T4Q_TEST_DIR") + std::string("/events.log"))).size();
    return 0;
}

TEST(ThreadLog, flushReturnsOnceTheFileHasAllThatWasAccepted)
{
    const TempFolder folder;
    const ChildRun run = logger("flushes", folder).run();
    expectSuccess(run);
    EXPECT_EQ(run.out, "500");
}

VN_CHILD(logsWhileTheReaderIsBlocked)
{
    const Started start(argc, argv);
    const auto level = static_cast<LgTypes::Level>(std::atoi(std::getenv("LEVEL")));
    ThreadLog log;
    std::atomic<bool> isDone = false;
    std::thread writer;
    {
        const ReaderBlock block;
        writer = std::thread([level, &isDone] {
            logNumbers(level, 3000);
            isDone = true;
        });
        if (std::getenv("WAITS") == nullptr)
            writer.join();
        std::cout << isDone;
    }
    if (writer.joinable())
        writer.join();
    return 0;
}

namespace
{
/// The numbers that reached the file and the losses that it tells of, of 3,000 messages while nothing is written.
struct Outcome
{
    std::vector<int> numbers;
    long losses = 0;
};

Outcome runBlocked(LgTypes::Level level, bool isWaiting, std::string const& setting)
{
    const TempFolder folder;
    const LockName lock(folder);
    Child child = logger("logsWhileTheReaderIsBlocked", folder);
    child.with("LEVEL", std::to_string(level)).with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get());
    if (isWaiting)
        child.with("WAITS", "1");
    if (!setting.empty())
        child.with("VN_THREADLOG_WAIT", setting);
    const ChildRun run = child.run();
    expectSuccess(run);
    EXPECT_EQ(run.out, isWaiting ? "0" : "1");
    Outcome outcome;
    const std::vector<LogLine> messages = messagesOf(folder.path("events.log"));
    outcome.numbers = numbersOf(messages);
    for (LogLine const& message : messages)
        outcome.losses += lossesOf(message);
    return outcome;
}
}  // namespace

TEST(ThreadLog, errorsWaitForRoomByDefault)
{
    for (const LgTypes::Level level : {LgTypes::InternalError, LgTypes::FatalError, LgTypes::RecoverableError}) {
        const Outcome outcome = runBlocked(level, true, "");
        EXPECT_EQ(outcome.numbers.size(), 3000u);
        EXPECT_TRUE(isRisingFrom0(outcome.numbers));
        EXPECT_EQ(outcome.losses, 0);
    }
}

TEST(ThreadLog, otherMessagesAreDroppedAndCountedByDefault)
{
    const Outcome outcome = runBlocked(LgTypes::Warning, false, "");
    EXPECT_EQ(outcome.numbers.size(), 1022u) << "what a queue holds";
    EXPECT_TRUE(isRisingFrom0(outcome.numbers));
    EXPECT_EQ(outcome.losses, 3000 - 1022);
}

TEST(ThreadLog, theSettingSaysWhichLevelsWait)
{
    const Outcome warnings = runBlocked(LgTypes::Warning, true, "Warning");
    EXPECT_EQ(warnings.numbers.size(), 3000u);
    EXPECT_EQ(warnings.losses, 0);
    const Outcome errors = runBlocked(LgTypes::RecoverableError, false, "none");
    EXPECT_EQ(errors.numbers.size(), 1022u);
    EXPECT_EQ(errors.losses, 3000 - 1022);
    EXPECT_EQ(runBlocked(LgTypes::Warning, true, "all").numbers.size(), 3000u);
}

VN_CHILD(returnsToItsQueue)
{
    const Started start(argc, argv);
    ThreadLog log;
    Vn::LgQueue const* const usual = &Vn::LgLog::getQueue();
    bool hasChanged = false;
    {
        const ReaderBlock block;
        logNumbers(LgTypes::Warning, 2000);
        hasChanged = &Vn::LgLog::getQueue() != usual;
    }
    log.flush();
    logNumbers(LgTypes::Warning, 1);
    return hasChanged && &Vn::LgLog::getQueue() == usual ? 0 : 1;
}

TEST(ThreadLog, behindAShortageOfRoomAThreadUsesItsOwnQueueAgain)
{
    const TempFolder folder;
    const LockName lock(folder);
    expectSuccess(logger("returnsToItsQueue", folder).with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get()).run());
}

VN_CHILD(urgentBehindLosses)
{
    const Started start(argc, argv);
    const std::string file = std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
    const auto waitForMessages = [&file](std::size_t count) {
        while (messagesOf(file).size() != count)
            std::this_thread::yield();
    };
    ThreadLog log;
    {
        const ReaderBlock block;
        logNumbers(LgTypes::Warning, 2000);
    }
    waitForMessages(1022 + 1);
    logNumbers(LgTypes::RecoverableError, 1);
    waitForMessages(1022 + 2);
    // The reader dozes for an hour from here on, but for what is urgent.
    logNumbers(LgTypes::Warning, 3);
    logNumbers(LgTypes::RecoverableError, 1);
    waitForMessages(1022 + 2 + 4);
    return 0;
}

TEST(ThreadLog, anUrgentMessageIsOneBehindLossesAsWell)
{
    const TempFolder folder;
    const LockName lock(folder);
    expectSuccess(logger("urgentBehindLosses", folder)
                      .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get())
                      .with("VN_THREADLOG_DOZE", "3600000")
                      .run());
}

VN_CHILD(longMessages)
{
    const Started start;
    const Vn::LgMinorGroup group = groupOf();
    ThreadLog log;
    const std::string text(4000, 'e');
    {
        // The reader writes nothing meanwhile: the ring of 32,768 characters has room for eight of them.
        const ReaderBlock block;
        for (int i = 0; i < 12; ++i)
            VN_LOG(group, LgTypes::Warning, "number " << i << ' ' << text.c_str());
    }
    for (int i = 12; i < 40; ++i)
        VN_LOG(group, LgTypes::RecoverableError, "number " << i << ' ' << text.c_str());
    return 0;
}

TEST(ThreadLog, anErrorIsNeverCutAndAWarningIsCutWithAMarkOrCounted)
{
    const TempFolder folder;
    const LockName lock(folder);
    expectSuccess(logger("longMessages", folder).with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get()).run());
    int errors = 0, warnings = 0, cut = 0;
    long losses = 0;
    for (LogLine const& message : messagesOf(folder.path("events.log"))) {
        const bool isWhole = message.text.ends_with(std::string(4000, 'e'));
        losses += lossesOf(message);
        if (message.level == "Error") {
            EXPECT_TRUE(isWhole) << message.text;
            ++errors;
        } else if (message.level == "Warning") {
            ++warnings;
            cut += !isWhole;
            EXPECT_TRUE(isWhole || message.text.ends_with("e#")) << message.text;
        }
    }
    EXPECT_EQ(errors, 28);
    EXPECT_EQ(warnings + losses, 12);
    EXPECT_EQ(cut, 1) << "the one that finds the rest of the room";
    EXPECT_GT(losses, 0);
}

VN_CHILD(urgentAmongOthers)
{
    const Started start(argc, argv);
    const std::string file = std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
    ThreadLog log;
    logNumbers(LgTypes::RecoverableError, 1, "first");
    while (messagesOf(file).empty())
        std::this_thread::yield();
    // The reader now dozes, for an hour.
    logNumbers(LgTypes::Warning, 3);
    logNumbers(LgTypes::RecoverableError, 1, "urgent");
    while (messagesOf(file).size() != 5)
        std::this_thread::yield();
    return 0;
}

TEST(ThreadLog, anUrgentMessageEndsTheReadersDoze)
{
    const TempFolder folder;
    expectSuccess(logger("urgentAmongOthers", folder).with("VN_THREADLOG_DOZE", "3600000").run());
}

VN_CHILD(manyWarnings)
{
    const Started start(argc, argv);
    const std::string file = std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
    ThreadLog log;
    logNumbers(LgTypes::RecoverableError, 1, "first");
    while (messagesOf(file).empty())
        std::this_thread::yield();
    logNumbers(LgTypes::Warning, 600);
    while (messagesOf(file).size() < 400)
        std::this_thread::yield();
    return 0;
}

TEST(ThreadLog, aQueueThatFillsUpEndsTheReadersDoze)
{
    const TempFolder folder;
    expectSuccess(logger("manyWarnings", folder).with("VN_THREADLOG_DOZE", "3600000").run());
}

VN_CHILD(longWarnings)
{
    const Started start(argc, argv);
    const std::string file = std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
    const Vn::LgMinorGroup group = groupOf();
    const std::string text(4000, 'w');
    ThreadLog log;
    logNumbers(LgTypes::RecoverableError, 1, "first");
    while (messagesOf(file).empty())
        std::this_thread::yield();
    for (int i = 0; i < 6; ++i)
        VN_LOG(group, LgTypes::Warning, text.c_str());
    while (messagesOf(file).size() < 5)
        std::this_thread::yield();
    return 0;
}

TEST(ThreadLog, aFewLongTextsEndTheReadersDozeAsWell)
{
    const TempFolder folder;
    expectSuccess(logger("longWarnings", folder).with("VN_THREADLOG_DOZE", "3600000").run());
}

VN_CHILD(meetsAReaderThatFallsAsleep)
{
    const Started start(argc, argv);
    const std::string file = std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
    const auto sizeOf = [&file] { return std::streamoff(std::ifstream(file, std::ios::ate).tellg()); };
    const auto sizeBehind = [&sizeOf](std::streamoff before) {
        for (;; std::this_thread::yield())
            if (const std::streamoff size = sizeOf(); size != before)
                return size;
    };
    ThreadLog log;
    std::streamoff size = sizeOf();
    Meeting last(1), end(1);
    logNumbers(LgTypes::Warning, 1);
    size = sizeBehind(size);
    // Its queue is looked at behind the other one's, and stays empty.
    std::thread other([&] {
        logNumbers(LgTypes::Warning, 1);
        last.arrive();
        end.wait();
    });
    last.wait();
    size = sizeBehind(size);
    for (int i = 0; i < 2000; ++i) {
        logNumbers(LgTypes::Warning, 1);
        size = sizeBehind(size);
    }
    end.arrive();
    other.join();
    return 0;
}

// Each message comes when the one before has just been written, and the reader is somewhere on its way to sleep.
TEST(ThreadLog, noMessageMissesAReaderThatFallsAsleep)
{
    const TempFolder folder;
    expectSuccess(logger("meetsAReaderThatFallsAsleep", folder).with("VN_THREADLOG_DOZE", "0").run());
}

VN_CHILD(warningsThatAreUrgent)
{
    const Started start(argc, argv);
    const std::string file = std::getenv("T4Q_TEST_DIR") + std::string("/events.log");
    ThreadLog log;
    for (std::size_t i = 1; i < 20; ++i) {
        logNumbers(LgTypes::Warning, 1);
        while (messagesOf(file).size() != i)
            std::this_thread::yield();
    }
    return 0;
}

TEST(ThreadLog, theSettingSaysWhichLevelsAreUrgent)
{
    const TempFolder folder;
    expectSuccess(logger("warningsThatAreUrgent", folder)
                      .with("VN_THREADLOG_DOZE", "3600000")
                      .with("VN_THREADLOG_FLUSH", "Warning")
                      .run());
}

TEST(ThreadLog, withoutADozeEveryMessageIsWrittenAtOnce)
{
    const TempFolder folder;
    expectSuccess(logger("warningsThatAreUrgent", folder).with("VN_THREADLOG_DOZE", "0").run());
}

TEST(ThreadLog, anOptionBeatsTheVariable)
{
    const TempFolder folder;
    const ChildRun run = logger("warningsThatAreUrgent", folder)
                             .arguments({"-f", "Warning"})
                             .with("VN_THREADLOG_DOZE", "3600000")
                             .with("VN_THREADLOG_FLUSH", "none")
                             .run();
    expectSuccess(run);
}

VN_CHILD(overriddenSetting)
{
    Vn::InVariableBase::overrideViaHandle("threadlog.flush", "Warning", "test");
    return childBody_warningsThatAreUrgent(argc, argv);
}

TEST(ThreadLog, anOverrideBeatsTheOption)
{
    const TempFolder folder;
    expectSuccess(
        logger("overriddenSetting", folder).arguments({"-f", "none"}).with("VN_THREADLOG_DOZE", "3600000").run());
}

VN_CHILD(logsOnce)
{
    const Started start(argc, argv);
    ThreadLog log;
    logNumbers(LgTypes::Warning, 1);
    return 0;
}

TEST(ThreadLog, aSettingThatCantBeReadIsToldAndItsDefaultHolds)
{
    const TempFolder folder;
    const ChildRun run =
        logger("logsOnce", folder).with("VN_THREADLOG_WAIT", "Errors\x1b").with("VN_THREADLOG_FLUSH", "").run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err,
              "log: threadlog.wait: \"Errors\\x1b\" can't be read; it is \"Internal Error,Fatal Error,Error\"\n"
              "log: threadlog.flush: \"\" can't be read; it is \"Error\"\n");
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 1u);
}

TEST(ThreadLog, anOutputThatCantBeOpenedIsToldOnceWithItsPathAndTheReason)
{
    const TempFolder folder;
    const std::string path = folder.path("missing") + "/a.log";
    const ChildRun run =
        logger("logsOnce", folder).with("VN_LOG_WARNING", path).with("VN_LOG_FATAL_ERROR", path).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err.find("log: " + path + ": "), 0u) << run.err;
    EXPECT_GT(run.err.size(), ("log: " + path + ": \n").size()) << "no reason";
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
}

VN_CHILD(refusals)
{
    EXPECT_THROW(ThreadLog(), Vn::ExInternalError);
    const Started start(argc, argv);
    {
        ThreadLog log;
        EXPECT_THROW(ThreadLog(), Vn::ExInternalError);
        logNumbers(LgTypes::Warning, 1);
    }
    {
        ThreadLog again;
        logNumbers(LgTypes::Warning, 2);
    }
    logNumbers(LgTypes::Warning, 1, "inactive");
    return testing::Test::HasFailure() ? 1 : 0;
}

TEST(ThreadLog, thereIsOneAtATimeWhileThePackagesRun)
{
    const TempFolder folder;
    const ChildRun run = logger("refusals", folder).run();
    expectSuccess(run);
    EXPECT_EQ(run.out, "Test inactive 0\n") << "behind its end messages go to standard output";
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 3u);
}

namespace
{
/// Makes a log in its start, without a need of the package `threadlog`.
class EarlyPackage : public Vn::InPackageInit
{
public:
    EarlyPackage() : InPackageInit("early")
    {
        registerPackage();
        addDependency(Vn::InInit<VnInit::logger>::getType());
    }

    void performInitialize() override { EXPECT_THROW(ThreadLog(), Vn::ExInternalError); }
    void performFinalize() override {}
    void setInitialized(bool) override {}
};
}  // namespace

VN_CHILD(makesALogBeforeThePackage)
{
    const EarlyPackage package;
    const Started start(argc, argv);
    const ThreadLog log;
    return testing::Test::HasFailure() ? 1 : 0;
}

TEST(ThreadLog, aPackageThatStartsBeforeTheThreadLayerCanMakeNoLog)
{
    const TempFolder folder;
    expectSuccess(logger("makesALogBeforeThePackage", folder).run());
}

VN_CHILD(threadsOutliveTheLog)
{
    const Started start(argc, argv);
    const auto runThreads = [](bool areOutliving) {
        auto log = std::make_unique<ThreadLog>();
        Meeting all(20), end(1);
        std::vector<std::thread> threads;
        for (int i = 0; i < 20; ++i)
            threads.emplace_back([&] {
                logNumbers(LgTypes::Warning, 1);
                all.arrive();
                end.wait();
            });
        all.wait();
        if (areOutliving)
            log.reset();
        end.arrive();
        for (std::thread& thread : threads)
            thread.join();
        log.reset();
        return VnSoak::getLiveMemory();
    };
    const std::size_t before = runThreads(false);
    return runThreads(true) < before + 100000 ? 0 : 1;
}

TEST(ThreadLog, threadsThatOutliveTheLogLeaveNoMemoryBehind)
{
    const TempFolder folder;
    expectSuccess(logger("threadsOutliveTheLog", folder).run());
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 40u);
}

VN_CHILD(threadEndsDuringTheStop)
{
    const Started start(argc, argv);
    auto log = std::make_unique<ThreadLog>();
    Meeting hasLogged(1);
    const auto untilTheStop = [] {
        while (Vn::LgLog::isLoggerActive())
            std::this_thread::yield();
        for (int i = 0; i < 1000; ++i)  // the likelier it has begun; either way nothing may be lost
            std::this_thread::yield();
    };
    std::thread thread, stopper;
    {
        const ReaderBlock block;
        thread = std::thread([&] {
            logNumbers(LgTypes::Warning, 200);
            hasLogged.arrive();
            untilTheStop();
        });
        hasLogged.wait();
        stopper = std::thread([&log] { log.reset(); });
        untilTheStop();
        untilTheStop();
    }
    stopper.join();
    thread.join();
    return 0;
}

TEST(ThreadLog, theMessagesOfAThreadThatEndsDuringTheStopAreWritten)
{
    const TempFolder folder;
    const LockName lock(folder);
    expectSuccess(
        logger("threadEndsDuringTheStop", folder).with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get()).run());
    EXPECT_EQ(numbersOf(messagesOf(folder.path("events.log"))).size(), 200u);
}

VN_CHILD(threadOutlivesTheLog)
{
    const Started start(argc, argv);
    Meeting first(1), end(1);
    auto log = std::make_unique<ThreadLog>();
    std::thread thread([&] {
        logNumbers(LgTypes::Warning, 1);
        first.arrive();
        end.wait();
    });
    first.wait();
    log.reset();
    if (argc > 1)
        log = std::make_unique<ThreadLog>();
    end.arrive();
    thread.join();
    logNumbers(LgTypes::Warning, argc > 1 ? 1 : 0);
    return 0;
}

TEST(ThreadLog, aThreadMayEndBehindTheLog)
{
    const TempFolder folder;
    expectSuccess(logger("threadOutlivesTheLog", folder).run());
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 1u);
}

TEST(ThreadLog, aThreadMayEndBehindThePlugInThatItHasLoggedThrough)
{
    const TempFolder folder;
    const ChildRun run = Child::program("threadpluginhost").with("T4Q_TEST_DIR", folder.path()).run();
    expectSuccess(run);
    EXPECT_EQ(run.out, "no plug-in and layer loaded\nthread ended\n");
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 1u);
}

TEST(ThreadLog, aThreadMayEndDuringTheNextLog)
{
    const TempFolder folder;
    expectSuccess(logger("threadOutlivesTheLog", folder).arguments({"again"}).run());
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 2u);
}

namespace
{
Vn::TraceLevel& work = *Vn::Trace::registerLevel("Work", __FILE__);

void traceDown(int depth)
{
    VN_TRACE_ENTRY(work, "down");
    VN_TRACE(work, "depth " << depth);
    if (depth < 3)
        traceDown(depth + 1);
}
}  // namespace

VN_CHILD(traces)
{
    const Started start(argc, argv);
    ThreadLog log;
    Meeting both(2);
    std::thread other([&both] {
        VN_TRACE_ENTRY(work, "other");
        both.arriveAndWait();
        traceDown(1);
    });
    both.arriveAndWait();
    traceDown(1);
    other.join();
    return 0;
}

TEST(ThreadLog, traceGoesIntoTheLogWithADepthForEachThread)
{
    const TempFolder folder;
    const std::string file = folder.path("trace.log");
    expectSuccess(
        logger("traces", folder).with("VN_LOG_TRACING", file).with("VN_TRACE_OPTIONS", "show=Work").run());
    std::map<std::uint32_t, std::string> drawings;
    for (LogLine const& message : messagesOf(file)) {
        EXPECT_EQ(message.level, "Tracing");
        drawings[message.threadId] += message.text + "\n";
    }
    EXPECT_EQ(drawings.size(), 2u);
    const std::string down = "+ down\n"
                             "  | depth 1\n"
                             "  + down\n"
                             "  | | depth 2\n"
                             "  | + down\n"
                             "  | | | depth 3\n"
                             "  | | /\n"
                             "  | /\n"
                             "  /\n";
    const std::string deeper = "+ other\n"
                               "  + down\n"
                               "  | | depth 1\n"
                               "  | + down\n"
                               "  | | | depth 2\n"
                               "  | | + down\n"
                               "  | | | | depth 3\n"
                               "  | | | /\n"
                               "  | | /\n"
                               "  | /\n"
                               "  /\n";
    std::set<std::string> found;
    for (auto const& [thread, drawing] : drawings)
        found.insert(drawing);
    EXPECT_EQ(found, (std::set<std::string>{down, deeper}));
}

VN_CHILD(suppresses)
{
    const Started start(argc, argv);
    ThreadLog log;
    logNumbers(LgTypes::Warning, 2);
    {
        const Vn::LgQueue::SuppressGuard quiet(Vn::LgLog::getQueue());
        logNumbers(LgTypes::RecoverableError, 1, "quiet");
    }
    logNumbers(LgTypes::Warning, 1, "last");
    return 0;
}

TEST(ThreadLog, aSuppressGuardHoldsForTheThreadsMessages)
{
    const TempFolder folder;
    expectSuccess(logger("suppresses", folder).run());
    const auto messages = messagesOf(folder.path("events.log"));
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[2].text, "Test last 0");
}

VN_CHILD(tellsItsBuild)
{
    const Started start(argc, argv);
    Vn::DbgBuildInfoMgr::printBuildInfo(std::cout, false);
    return 0;
}

TEST(ThreadLog, theLibraryIsAmongTheBuildInformation)
{
    const TempFolder folder;
    const std::string out = logger("tellsItsBuild", folder).run().out;
    EXPECT_NE(out.find("libVNthreadlog"), out.npos) << out;
}

VN_CHILD(exits)
{
    const Started start(argc, argv);
    static ThreadLog& log = *new ThreadLog;
    logNumbers(LgTypes::Warning, 10);
    if (argc > 1)
        log.flush();
    std::exit(0);
}

TEST(ThreadLog, aProgramThatEndsWithoutDestroyingItLosesNothing)
{
    const TempFolder folder;
    Child program = logger("exits", folder);
#if defined(_WIN32)
    program.arguments({"flush"});  // there a library hears of the end when it is too late to write
#endif
    const ChildRun run = program.run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(numbersOf(messagesOf(folder.path("events.log"))).size(), 10u);
}

VN_CHILD(stopsThePackagesFirst)
{
    std::unique_ptr<ThreadLog> log;
    {
        const Started start(argc, argv);
        log = std::make_unique<ThreadLog>();
        logNumbers(LgTypes::Warning, 10);
    }
    log->flush();
    EXPECT_TRUE(log->reopen());
    log->installCrashHandlers();
    log.reset();
    return testing::Test::HasFailure() ? 1 : 0;
}

// The members of the object do nothing then.
TEST(ThreadLog, theStopOfThePackagesEndsALogThatStillExists)
{
    const TempFolder folder;
    expectSuccess(logger("stopsThePackagesFirst", folder).run());
    EXPECT_EQ(numbersOf(messagesOf(folder.path("events.log"))).size(), 10u);
    EXPECT_EQ(linesOf(folder.path("events.log")).back(), "===== Message Logger Stopped =====");
}

namespace
{
/// Logs from a thread of its own and from this one, and crashes without a pause.
[[noreturn]] void crash(void (*how)())
{
    static ThreadLog& log = *new ThreadLog;
    log.installCrashHandlers();
    std::thread([] { logNumbers(LgTypes::Warning, 100, "other"); }).join();
    logNumbers(LgTypes::Warning, 700);
    how();
    std::abort();
}

void expectAllBeforeTheCrash(char const* body)
{
    if (isThreadSanitized)
        GTEST_SKIP() << "the thread sanitizer has a way of its own with signals";
    const TempFolder folder;
    const ChildRun run = logger(body, folder).run();
    EXPECT_TRUE(run.crashed);
    const std::vector<LogLine> messages = messagesOf(folder.path("events.log"));
    const std::vector<int> numbers = numbersOf(messages);
    EXPECT_EQ(messages.size(), 800u);
    EXPECT_EQ(numbers.size(), 700u);
    EXPECT_TRUE(isRisingFrom0(numbers));
    std::uint64_t last = 0;
    for (LogLine const& message : messages) {
        EXPECT_GE(message.ticks, last) << message.text;
        last = message.ticks;
    }
}
}  // namespace

VN_CHILD(aborts)
{
    const Started start(argc, argv);
    crash(std::abort);
}

TEST(ThreadLogCrash, whatWasAcceptedBeforeAbortIsInTheFile)
{
    expectAllBeforeTheCrash("aborts");
}

VN_CHILD(terminates)
{
    const Started start(argc, argv);
    crash([] { std::terminate(); });
}

TEST(ThreadLogCrash, whatWasAcceptedBeforeTerminateIsInTheFile)
{
    expectAllBeforeTheCrash("terminates");
}

VN_CHILD(faults)
{
    const Started start(argc, argv);
    crash([] { *reinterpret_cast<int volatile*>(std::getenv("NO SUCH VARIABLE")) = 1; });
}

TEST(ThreadLogCrash, whatWasAcceptedBeforeAFaultIsInTheFile)
{
    if (isSanitized)
        GTEST_SKIP() << "a sanitizer sees the fault first";
    expectAllBeforeTheCrash("faults");
}

namespace
{
std::jmp_buf rescue;
}

VN_CHILD(jumpsOutOfAbort)
{
    const Started start(argc, argv);
    std::signal(SIGABRT, [](int) { std::longjmp(rescue, 1); });
    ThreadLog log;
    log.installCrashHandlers();
    if (setjmp(rescue) == 0) {
        logNumbers(LgTypes::Warning, 10);
        std::abort();
    }
    logNumbers(LgTypes::Warning, 10, "later");
    return 0;
}

TEST(ThreadLogCrash, aLogWhoseProgramJumpsOutOfAbortCanStop)
{
    if (isThreadSanitized)
        GTEST_SKIP() << "the thread sanitizer has a way of its own with signals";
    const TempFolder folder;
    expectSuccess(logger("jumpsOutOfAbort", folder).run());
    EXPECT_EQ(messagesOf(folder.path("events.log")).size(), 20u);
}

VN_CHILD(leavesNoMemory)
{
    const Started start(argc, argv);
    const Vn::LgMinorGroup group = groupOf();
    ThreadLog log;
    const auto runThreads = [&group](int count) {
        for (int i = 0; i < count; ++i)
            std::thread([&group] {
                VN_LOG(group, LgTypes::Warning, "here");
                VN_TRACE(work, "here");
            }).join();
    };
    runThreads(1000);
    log.flush();
    const std::size_t before = VnSoak::getLiveMemory();
    runThreads(3000);
    log.flush();
    // The reader deletes a queue when it next looks. Two of them are more than what the allocator moves by.
    while (VnSoak::getLiveMemory() > before + 100000)
        std::this_thread::yield();
    return 0;
}

TEST(ThreadLog, threadsByTheThousandLeaveNoMemoryBehind)
{
    const TempFolder folder;
    expectSuccess(logger("leavesNoMemory", folder).run());
}
