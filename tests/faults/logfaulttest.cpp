// The logger where memory runs out and the system refuses: what was accepted stays whole, and the program goes on.
#include "loggertest.h"
#include "memory.h"
#include "systemcalls.h"

#include "child.h"
#include "environment.h"
#include "lockname.h"
#include "testpackage.h"

#include <threadlog/threadlog.h>

#include <base/dttime.h>
#include <base/exsyserror.h>
#include <base/incontextalias.h>
#include <base/ininitmgr.h>
#include <base/interval.h>
#include <base/invariable.h>
#include <base/lgduration.h>
#include <base/lgstreamed.h>
#include <base/lgtext.h>
#include <base/lgvalues.h>
#include <base/osfilepath.h>
#include <base/trace.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::FailingCall;
using VnTest::failsWithoutMemory;
using VnTest::LockName;
using VnTest::LoggerTest;
using VnTest::LogLine;
using VnTest::StampedQueue;

namespace
{
using LogFaults = LoggerTest;

LgQueue* theQueue = nullptr;

LgQueue* getTheQueue()
{
    return theQueue;
}

/// The texts of the lines of the log; a malformed line is itself.
std::vector<std::string> textsOf(std::vector<std::string> const& lines)
{
    std::vector<std::string> texts;
    for (std::string const& line : lines)
        texts.push_back(LogLine::parse(line) ? LogLine::parse(line)->text : line);
    return texts;
}

/// Error of what `action` throws as ExSysErrorWindows; 0 if it throws nothing.
template <class Action>
int errorOf(Action const& action)
{
    try {
        action();
    } catch (ExSysErrorWindows const& failure) {
        return failure.getErrorCode();
    }
    return 0;
}
}  // namespace

TEST_F(LogFaults, variablesAreAskedForInTheirOrder)
{
    VnTest::WatchedEnvironment environment;
    start();
    std::vector<std::string> asked;
    for (std::string const& name : environment.getAsked())
        if (name.starts_with("VN_") || name.starts_with("T4Q_"))
            asked.push_back(name);
    asked.erase(asked.begin());  // the test's own question
    EXPECT_EQ(asked, (std::vector<std::string>{"T4Q_TEST_DIR", "VN_LOG_INTERNAL_ERROR", "VN_LOG_FATAL_ERROR",
                                               "VN_LOG_RECOVERABLE_ERROR", "VN_LOG_WARNING", "VN_LOG_INFORMATIONAL",
                                               "VN_LOG_PROFILING", "VN_LOG_TRACING", "VN_LOG_DEFAULT_LEVEL",
                                               "VN_LOG_GROUPS", "VN_BLOCKING_TRACE",
                                               "VN_INTERNAL_INTERPROCESS_LOG_LOCK", "VN_LOG_DISABLE_TIMESTAMPS"}));
}

TEST_F(LogFaults, aProgramWithMoreRightsThanItsCallerObeysNoVariable)
{
    const std::string precious = folder.file("precious", "precious");
    for (char const* name : VnTest::logVariables)
        set(name, precious);
    set("T4Q_TEST_DIR", folder.path("chosen"));
    ::setenv("TMPDIR", folder.folder("temporary").c_str(), 1);
    {
        const VnTest::MoreRights rights;
        EXPECT_STREQ(OsFilePath::getTempDir().getChars(), "/tmp");
        EXPECT_FALSE(LgLog::getBlockingTrace());
        testing::internal::CaptureStdout();
        {
            const FailingCall call("open", EACCES, 0, 100);  // the log of whoever runs the test stays as it is
            LgLog::init();
        }
        LgLog::displaySetup();
        LgLog::destroy();
        const std::string setup = testing::internal::GetCapturedStdout();
        EXPECT_NE(setup.find("Warning: /tmp/events.log \n"), std::string::npos) << setup;
        EXPECT_EQ(setup.find("precious"), std::string::npos) << setup;
        EXPECT_EQ(LgLog::getInterProcessLock(), nullptr);
        EXPECT_FALSE(LgLog::getBlockingTrace());
        EXPECT_TRUE(LgLog::isTimeStampsEnabled());
    }
    EXPECT_STREQ(OsFilePath::getTempDir().getChars(), folder.path("temporary").c_str());
    ::unsetenv("TMPDIR");
    EXPECT_EQ(VnTest::contentOf(precious), "precious");
    EXPECT_FALSE(std::filesystem::exists(folder.path("chosen")));
}

TEST_F(LogFaults, settingsOfAProgramWithMoreRightsThanItsCallerFollowNoVariableOfTheLibrary)
{
    set("VN_BUILDINFO_NO_VALIDATE", "1");
    set("VN_BUILDINFO_CHECK_STAMPS", "1");
    set("VN_TEST_SETTING", "1");
    const InContextAlias<InInitEnv, 1> programs("VN_TEST_SETTING", "");
    const VnTest::MoreRights rights;
    {
        const FailingCall call("open", EACCES, 0, 100);  // the log of whoever runs the test stays as it is
        VnTest::start();
    }
    for (char const* name : {"buildInfoNoValidate", "buildInfoCheckStamps"}) {
        const std::string handle = std::string("Vn::Tessola::debugging::") + name;
        InVariableBase const* const setting = InVariableBase::queryViaHandle(handle.c_str());
        ASSERT_NE(setting, nullptr);
        EXPECT_STREQ(setting->initSource(), (InContextAlias<InInitDef, 0>::initSourceString())) << name;
    }
    EXPECT_STREQ(programs.isValid() ? programs.getValue() : nullptr, "1") << "the program's own";
    VnTest::stop();
}

TEST_F(LogFaults, aThreadThatCanNotTakeItsFirstLockForMemoryIsTold)
{
    const LockName name(folder);
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.get().c_str()));
    std::thread([&lock] {
        int n = 0;
        while (failsWithoutMemory(n, [&lock] {
            lock->lock();
            lock->unlock();
        }))
            ++n;
        EXPECT_GE(n, 2);
    }).join();
    const LgInterProcessLockGuard guard(lock.get());
}

TEST_F(LogFaults, aMessageAllocatesNothing)
{
    start();
    LgQueue queue;
    theQueue = &queue;
    LgLog::setQueueFunction(getTheQueue);
    LgLog::setLoggerActivation(true);
    const LgMinorGroup group(LgMajorGroup::getInstanceForName("Base"), "Test");
    const auto logMany = [&group] {
        for (int i = 0; i < 2000; ++i)  // some of them are lost
            VN_LOG(group, LgTypes::Warning, "text " << i << ' ' << i * 0.37 << ' ' << true << ' ' << 1.5e300);
    };
    EXPECT_FALSE(failsWithoutMemory(0, logMany));
    EXPECT_TRUE(queue.getStream().hasOverflowed());
    const auto disabled = [&group] { VN_LOG(group, LgTypes::Tracing, std::string(1000, 'x').c_str()); };
    EXPECT_FALSE(failsWithoutMemory(0, disabled));
}

TEST_F(LogFaults, aMessageOfFurtherTypesAllocatesNothing)
{
    start();
    LgQueue queue;
    theQueue = &queue;
    LgLog::setQueueFunction(getTheQueue);
    LgLog::setLoggerActivation(true);
    const LgMinorGroup group(LgMajorGroup::getInstanceForName("Base"), "Test");
    const std::string text(100, 'x'), zeros(100, '\0');
    const std::runtime_error failure("no such cue");
    const OsFilePath path("left.exr");
    const DtTime position(100, 25, 1);
    const Interval<double> interval(0.5, 3);
    const auto logMany = [&] {
        for (int i = 0; i < 200; ++i) {  // some of them are lost, and some texts are refused
            VN_LOG(group, LgTypes::Warning,
                   text << std::string_view(zeros) << 5LL << ~0ULL << u8"text" << nullptr << &getTheQueue
                        << failure);
            VN_LOG(group, LgTypes::Warning,
                   std::chrono::milliseconds(i) << std::chrono::duration<double>(i * 0.37) << path << position
                                                << position.getRate() << interval);
            VN_LOG(group, LgTypes::Warning, streamed(i) << streamed(i * 0.37) << streamed(text));
        }
    };
    logMany();  // the C++ library makes some facets of its locales at their first use
    char taken[32768];
    while (!queue.isEmpty()) {
        if (!queue.readEntry().isOverflowEntry())
            queue.getStream() >> taken;
        queue.removeEntry();
    }
    EXPECT_FALSE(failsWithoutMemory(0, logMany));
    EXPECT_TRUE(queue.getStream().hasOverflowed());
}

TEST_F(LogFaults, aStreamedTextWithoutMemoryIsNotCutButThrows)
{
    const std::string text(2000, 'x');
    static char taken[32768];
    int failures = 0;
    for (bool hasFailed = true; hasFailed;) {
        LgStream stream;
        bool hasThrown = false;
        VnTest::startFailing(failures);
        try {
            stream << streamed(text);
        } catch (std::bad_alloc const&) {
            hasThrown = true;
        }
        hasFailed = VnTest::stopFailing();
        EXPECT_EQ(hasThrown, hasFailed) << failures;
        stream << '.' << ends;
        stream >> taken;
        EXPECT_EQ(taken, hasFailed ? "." : text + ".") << failures;
        failures += hasFailed;
    }
    EXPECT_GT(failures, 0);
}

namespace
{
/// A registry of a program's own around the library's, as one with a lock is.
class WrappingRegistry : public LgRegistry
{
public:
    void registerQueue(LgQueue* queue) override { _queues.registerQueue(queue); }
    void deregisterQueue(LgQueue* queue) override { _queues.deregisterQueue(queue); }
    List<LgQueue*> getQueueList() const override { return _queues.getQueueList(); }

private:
    LgSimpleRegistry _queues;
};
}  // namespace

TEST_F(LogFaults, theReaderAllocatesNothingForAMessage)
{
    for (const bool isWrapped : {false, true}) {
        start();
        if (isWrapped)
            LgLog::setRegistry(ObjPtr<LgRegistry>(new WrappingRegistry));
        std::deque<LgQueue> queues(20);
        for (LgQueue& queue : queues)
            LgLog::getRegistry()->registerQueue(&queue);
        const auto flushMany = [&queues] {
            for (LgQueue& queue : queues) {
                ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
                queue.getStream() << "text " << 1 << ends;
                queue.addEntry();
            }
            EXPECT_TRUE(LgReader().flushEarliest());
            EXPECT_TRUE(LgReader().eventsPending());
            LgReader().flushAll();
        };
        flushMany();
        EXPECT_FALSE(failsWithoutMemory(0, flushMany)) << isWrapped;
        for (LgQueue& queue : queues)
            LgLog::getRegistry()->deregisterQueue(&queue);
        stop();
    }
}

TEST_F(LogFaults, aQueueOrAGroupThatCanNotBeMadeLeavesNothing)
{
    start();
    for (int n = 0; failsWithoutMemory(n, [] { const LgQueue queue; }); ++n)
        ASSERT_LT(n, 10);
    int n = 0;
    while (
        failsWithoutMemory(n, [] { LgMajorGroup::getInstanceForName("a name that is long enough to be copied"); }))
        ++n;
    EXPECT_GE(n, 3);
    EXPECT_EQ(LgMajorGroup::getInstanceForName("a name that is long enough to be copied").getLogLevels(), 0xF0u);
    for (n = 0; failsWithoutMemory(n, [] { LgMajorGroup::parse("First=Tracing,Second=Profiling"); }); ++n)
        ASSERT_LT(n, 50);
    EXPECT_EQ(LgMajorGroup::getInstanceForName("Second").getLogLevels(), 0xF2u);
}

TEST_F(LogFaults, initSucceedsAfterEachFailure)
{
    set("T4Q_TEST_DIR", folder.path());
    set("VN_LOG_GROUPS", "Group=Tracing");
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    int n = 0;
    for (; failsWithoutMemory(n, [] { LgLog::init(); }); ++n)
        ASSERT_LT(n, 200);
    EXPECT_GE(n, 5);
    EXPECT_EQ(LgMajorGroup::getInstanceForName("Group").getLogLevels(), 0xFCu);
    LgLog::destroy();
    const std::vector<std::string> lines = events();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines.back(), "===== Message Logger Stopped =====");
}

TEST_F(LogFaults, aRegistryThatCanNotTakeTheQueuesLeavesTheOneBefore)
{
    start();
    LgQueue one, two;
    LgLog::getRegistry()->registerQueue(&one);
    LgLog::getRegistry()->registerQueue(&two);
    LgRegistry const* const before = LgLog::getRegistry();
    const auto change = [] { LgLog::setRegistry(ObjPtr<LgRegistry>(new LgSimpleRegistry)); };
    int n = 0;
    for (; failsWithoutMemory(n, change); ++n) {
        ASSERT_LT(n, 20);
        ASSERT_EQ(LgLog::getRegistry(), before) << n;
        ASSERT_EQ(before->getQueueList(), (List<LgQueue*>{&one, &two})) << n;
    }
    EXPECT_GE(n, 3);
    EXPECT_NE(LgLog::getRegistry(), before);
    EXPECT_EQ(LgLog::getRegistry()->getQueueList(), (List<LgQueue*>{&one, &two}));
    LgLog::getRegistry()->deregisterQueue(&one);
    LgLog::getRegistry()->deregisterQueue(&two);
}

TEST_F(LogFaults, aReaderWithoutMemoryLosesNoMessage)
{
    start();
    StampedQueue one, two;
    one.log(1, "first");
    two.log(2, "second");
    for (int n = 0; failsWithoutMemory(n, [] { LgReader().flushAll(); }); ++n)
        ASSERT_LT(n, 100);
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"first", "second"}));
    one.end();
    two.end();
}

TEST(LgSimpleRegistry, aCopyThatCanNotBeMadeLeavesNothing)
{
    LgQueue one, two;
    LgSimpleRegistry registry;
    registry.registerQueue(&one);
    registry.registerQueue(&two);
    std::optional<LgSimpleRegistry> copy;
    int n = 0;
    for (; failsWithoutMemory(n, [&] { copy.emplace(registry); }); ++n) {
        copy.emplace();  // in the same place
        copy->deregisterQueue(&one);
        EXPECT_TRUE(copy->getQueueList().empty()) << n;
        copy.reset();
    }
    EXPECT_GT(n, 0);
    EXPECT_EQ(copy->getQueueList(), (List<LgQueue*>{&one, &two}));
}

TEST_F(LogFaults, aTraceLevelThatCanNotBeMadeLeavesNothing)
{
    int n = 0;
    while (failsWithoutMemory(n, [] { Trace::registerLevel("a level whose name is long", __FILE__); }))
        ++n;
    EXPECT_GE(n, 2);
    for (n = 0; failsWithoutMemory(n, [] { Trace::setOptions("show=another level with a long name,line,reset"); });
         ++n)
        ASSERT_LT(n, 50);
    EXPECT_FALSE(Trace::isEnabled(*Trace::registerLevel("another level with a long name", nullptr)));
}

TEST_F(LogFaults, aFullDiskCostsNoLineThatFitsTheBuffer)
{
    set("VN_LOG_WARNING", "%" + folder.path("warning.log"));
    start();
    StampedQueue queue;
    for (int i = 1; i <= 4; ++i)
        queue.log(static_cast<std::uint64_t>(i), "line " + std::to_string(i));
    testing::internal::CaptureStdout();
    LgReader reader;
    EXPECT_TRUE(reader.flushEarliest());
    std::cout << std::flush;
    {
        const FailingCall full("write", ENOSPC, 0, 1);  // the file comes before the echo
        EXPECT_TRUE(reader.flushEarliest());
        EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->bad());
    }
    EXPECT_EQ(VnTest::linesOf(folder.path("warning.log")).size(), 5u) << "the banner and one line";
    reader.flushAll();  // there is space again
    const std::string echo = testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::count(echo.begin(), echo.end(), '\n'), 4) << "the echo works all the time";
    EXPECT_FALSE(LgLog::getLevelOutput(LgTypes::Warning)->bad());
    std::vector<std::string> lines = VnTest::linesOf(folder.path("warning.log"));
    lines.erase(lines.begin(), lines.begin() + 4);
    EXPECT_EQ(textsOf(lines), (std::vector<std::string>{"line 1", "line 2", "line 3", "line 4"}));
    queue.end();
}

TEST_F(LogFaults, aDiskThatStaysFullHoldsNobodyUp)
{
    set("VN_LOG_WARNING", "/dev/full");
    start();
    EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->bad()) << "the banner has failed";
    StampedQueue queue;
    for (int i = 1; i <= 1000; ++i)
        queue.log(static_cast<std::uint64_t>(i), std::string(30, 'x'));
    LgReader().flushAll();
    EXPECT_TRUE(queue->isEmpty());
    queue.end();
}

TEST_F(LogFaults, aFolderWhereNothingCanBeWrittenLeavesFailedStreams)
{
    set("T4Q_TEST_DIR", "/proc");  // not even root's
    start();
    ASSERT_NE(LgLog::getLevelOutput(LgTypes::Warning), nullptr);
    EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->fail());
    StampedQueue queue;
    queue.log(1, "nowhere");
    LgReader().flushAll();
    EXPECT_TRUE(queue->isEmpty());
    EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->fail()) << "and it stays failed";
    queue.end();
}

TEST_F(LogFaults, anOutputThatThrowsCostsItsLineAlone)
{
    start();
    StampedQueue queue;
    queue.log(1, "refused");
    queue.log(2, "next");
    std::ostream& stream = *LgLog::getLevelOutput(LgTypes::Warning);
    stream.exceptions(std::ios::badbit);
    {
        const FailingCall full("write", ENOSPC);
        EXPECT_THROW(LgReader().flushEarliest(), std::ios_base::failure);
    }
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"refused", "next"})) << "the buffer had kept it";
    queue.end();
}

TEST_F(LogFaults, aLineThatIsCutByTheDiskIsCompletedLater)
{
    start();
    StampedQueue queue;
    queue.log(1, "a line of which a part is written");
    queue.log(2, "next");
    ::rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    ::rlimit limit = before;
    limit.rlim_cur = static_cast<::rlim_t>(LgLog::getLevelOutput(LgTypes::Warning)->tellp()) + 50;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    LgReader reader;
    EXPECT_TRUE(reader.flushEarliest());
    EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->bad());
    EXPECT_EQ(VnTest::contentOf(folder.path("events.log")).size(), limit.rlim_cur);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    reader.flushAll();
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"a line of which a part is written", "next"}));
    queue.end();
}

TEST_F(LogFaults, aLineThatTheSystemTakesByteByByteIsWhole)
{
    set("VN_LOG_WARNING", "%" + folder.path("warning.log"));
    for (const bool hasLock : {false, true}) {
        SCOPED_TRACE(hasLock);
        const LockName name(folder);
        set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", hasLock ? name.get() : "");
        start();
        StampedQueue queue;
        queue.log(1, "a line in many pieces");
        queue.log(2, "and another");
        testing::internal::CaptureStdout();
        VnTest::makeTransfersShort(true);
        LgReader().flushAll();
        VnTest::makeTransfersShort(false);
        const std::string echo = testing::internal::GetCapturedStdout();
        std::vector<std::string> lines = VnTest::linesOf(folder.path("warning.log"));
        lines.erase(lines.begin(), lines.begin() + 4);
        EXPECT_EQ(textsOf(lines), (std::vector<std::string>{"a line in many pieces", "and another"}));
        EXPECT_EQ(std::count(echo.begin(), echo.end(), '\n'), 2) << echo;
        queue.end();
        stop();
    }
}

TEST_F(LogFaults, aPipeThatTakesByteByByteGetsTheWholeLine)
{
    const std::string path = folder.path("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    set("VN_LOG_WARNING", path);
    start();
    StampedQueue queue;
    queue.log(1, "a line in many pieces");
    char bytes[4096];
    ASSERT_GT(::read(reader, bytes, sizeof bytes), 0) << "the banner";
    VnTest::makeTransfersShort(true);
    LgReader().flushAll();
    VnTest::makeTransfersShort(false);
    const ::ssize_t size = ::read(reader, bytes, sizeof bytes);
    ::close(reader);
    ASSERT_GT(size, 0);
    const std::optional<LogLine> line = LogLine::parse(std::string(bytes, static_cast<std::size_t>(size - 1)));
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "a line in many pieces");
    queue.end();
}

TEST_F(LogFaults, aLineThatDoesNotFitTheBufferIsLostAloneOnAFullDisk)
{
    start();
    StampedQueue queue;
    const std::string x(30000, 'x'), y(30000, 'y'), z(30000, 'z');
    LgReader reader;
    {
        const FailingCall full("write", ENOSPC, 0, 100);
        for (std::string const& text : {x, y, z, std::string("kept")}) {
            queue.log(1, text);
            reader.flushAll();
        }
    }
    queue.log(4, "next");
    reader.flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{x, y, "Event overflow [1]", "kept", "next"}));
    queue.end();
}

TEST_F(LogFaults, aLineOfLostMessagesThatIsLostItselfCountsAllOfThem)
{
    set("VN_LOG_DISABLE_TIMESTAMPS", "1");
    start();
    StampedQueue queue;
    LgReader reader;
    const std::vector<std::string> fillings = {std::string(30000, 'x'), std::string(30000, 'y'),
                                               std::string(5520, 'z')};
    std::vector<std::string> expected = fillings;  // the buffer has 13 characters left
    {
        const FailingCall full("write", ENOSPC, 0, 10000);
        for (std::string const& text : fillings) {
            queue.log(1, text);
            reader.flushAll();
        }
        for (int i = 0; i < 1022; ++i)
            queue.log(2, std::string(15, 'w'));
        for (int i = 0; i < 12; ++i)
            EXPECT_FALSE(queue->reserveEntry(LgTypes::Warning));
        queue.stampLast(2);
        reader.flushAll();
    }
    queue.log(3, "next");
    reader.flushAll();
    expected.push_back("Event overflow [1034]");
    expected.push_back("next");
    EXPECT_EQ(messages(), expected);
    queue.end();
}

TEST_F(LogFaults, whatACallerPutsIntoTheStreamComesInItsTurn)
{
    start();
    StampedQueue queue;
    queue.log(1, "after it");
    std::ostream& stream = *LgLog::getLevelOutput(LgTypes::Warning);
    const auto place = stream.tellp();
    stream << "a caller's " << 1 << " line\n";
    EXPECT_EQ(stream.tellp() - place, 18);
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"a caller's 1 line", "after it"}));
    for (int i = 0; i < 1000; ++i)
        stream << "0123456789";  // more than the buffer takes
    stream << std::endl;
    EXPECT_EQ(messages().back().size(), 10000u);
    queue.end();
}

TEST_F(LogFaults, aChildProcessDoesNotInheritTheLog)
{
    start();
    int found = 0;
    for (int file = 3; file < 256; ++file) {
        char name[4096] = {};
        if (::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), name, sizeof name - 1) > 0 &&
            std::string(name).ends_with("/events.log")) {
            ++found;
            EXPECT_TRUE(::fcntl(file, F_GETFD) & FD_CLOEXEC);
        }
    }
    EXPECT_EQ(found, 1);
}

VN_CHILD(logWithoutStandardOutput)
{
    const bool isPipe = std::string(argv[1]) == "pipe";
    int ends[2] = {-1, -1};
    if (isPipe && ::pipe(ends) == 0) {
        std::signal(SIGPIPE, SIG_IGN);  // as a program does that wants to survive its reader
        ::dup2(ends[1], 1);
        ::close(ends[0]);
        ::close(ends[1]);
    } else
        ::close(1);
    LgLog::init();
    StampedQueue queue;
    for (int i = 1; i <= 100; ++i)
        queue.log(static_cast<std::uint64_t>(i), "line " + std::to_string(i));
    LgReader().flushAll();
    const bool isEmpty = queue->isEmpty();
    queue.end();
    LgLog::destroy();
    return isEmpty ? 0 : 1;
}

TEST_F(LogFaults, aStandardOutputThatIsClosedOrReadByNobodyCostsTheFileNothing)
{
    for (char const* kind : {"closed", "pipe"}) {
        SCOPED_TRACE(kind);
        const std::string path = folder.path(std::string(kind) + ".log");
        const ChildRun run = Child("logWithoutStandardOutput")
                                 .arguments({kind})
                                 .with("VN_LOG_WARNING", "%" + path)
                                 .with("T4Q_TEST_DIR", folder.path())
                                 .run();
        EXPECT_EQ(run.exitCode, 0) << run.err;
        const std::vector<std::string> lines = VnTest::linesOf(path);
        ASSERT_EQ(lines.size(), 105u);
        EXPECT_EQ(textsOf({lines[4], lines[103]}), (std::vector<std::string>{"line 1", "line 100"}));
    }
}

TEST_F(LogFaults, aLockThatFailsKeepsTheMessage)
{
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    start();
    StampedQueue queue;
    queue.log(1, "kept");
    {
        const FailingCall call("flock", ENOLCK);
        EXPECT_EQ(errorOf([] { LgReader().flushEarliest(); }), ENOLCK);
    }
    EXPECT_TRUE(LgReader().eventsPending());
    {
        const FailingCall call("flock", EINTR, 0, 3);  // no failure
        EXPECT_EQ(errorOf([] { LgReader().flushEarliest(); }), 0);
    }
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{"kept"});
    queue.log(2, "written");
    {
        const FailingCall call("flock", ENOLCK, 1);  // unlocking
        EXPECT_EQ(errorOf([] { LgReader().flushEarliest(); }), ENOLCK);
    }
    EXPECT_FALSE(LgReader().eventsPending()) << "its line is there already";
    EXPECT_EQ(messages().size(), 2u);
    EXPECT_EQ(errorOf([] { LgLog::getInterProcessLock()->unlock(); }), EPERM) << "it is held no more";
    std::thread([] { const LgInterProcessLockGuard guard(LgLog::getInterProcessLock()); }).join();
    queue.log(3, "goes on");
    LgReader().flushAll();
    EXPECT_EQ(messages().size(), 3u);
    {
        const FailingCall call("flock", EINTR, 1, 3);  // unlocking: no failure
        const LgInterProcessLockGuard guard(LgLog::getInterProcessLock());
    }
    std::thread([] { const LgInterProcessLockGuard guard(LgLog::getInterProcessLock()); }).join();
    queue.end();
    stop();  // while the lock's name stands
}

TEST_F(LogFaults, aLockThatFailsEndsInitAndDestroyWhichMayBeTriedAgain)
{
    set("T4Q_TEST_DIR", folder.path());
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    {
        const FailingCall call("fstat", EIO);  // the lock can't be made
        EXPECT_EQ(errorOf([] { LgLog::init(); }), EIO);
    }
    {
        const FailingCall call("flock", ENOLCK);  // nor taken for the banner
        EXPECT_EQ(errorOf([] { LgLog::init(); }), ENOLCK);
    }
    start();
    {
        const FailingCall call("flock", ENOLCK);
        EXPECT_EQ(errorOf([] { LgLog::destroy(); }), ENOLCK);
    }
    EXPECT_EQ(events().size(), 4u) << "the banner of the start";
    stop();
    EXPECT_EQ(events().size(), 5u);
    EXPECT_EQ(events().back(), "===== Message Logger Stopped =====");
    EXPECT_EQ(VnTest::linesOf(folder.path("prof.log")).size(), 5u);
}

TEST_F(LogFaults, aLockAndItsEndAreOneCallEach)
{
    const LockName name(folder);
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.get().c_str()));
    VnTest::failCall("flock", ENOLCK, 2);
    lock->lock();
    lock->unlock();
    EXPECT_EQ(VnTest::stopFailingCalls(), 0);
}

/// Logs more than a queue holds, of a level that waits, while a folder stands in the place of the lock's file.
VN_CHILD(logWhileTheLockFails)
{
    constexpr int more = 3000;
    const std::string path = argv[1];
    int none = 0;
    char const* const* noArguments = nullptr;
    InInitGuard guard(none, noArguments);
    ThreadLog log;
    const LgMinorGroup group(LgMajorGroup::getInstanceForName("Base"), "Test");
    VN_LOG(group, LgTypes::RecoverableError, "before");
    log.flush();
    if (::unlink(path.c_str()) != 0 || ::mkdir(path.c_str(), 0700) != 0)
        return 1;
    for (int i = 0; i < more; ++i)
        VN_LOG(group, LgTypes::RecoverableError, i);
    ::rmdir(path.c_str());
    return 0;
}

TEST_F(LogFaults, aLockThatKeepsFailingHoldsNoWriterOfAThreadLayerBack)
{
    const LockName name(folder);
    const ChildRun run = Child("logWhileTheLockFails")
                             .arguments({name.getFile()})
                             .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get())
                             .with("T4Q_TEST_DIR", folder.path())
                             .run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.err.starts_with("log: ")) << run.err;
    const std::vector<std::string> texts = textsOf(messages());
    ASSERT_GE(texts.size(), 3u);
    EXPECT_EQ(texts.front(), "Test before");
    EXPECT_EQ(texts[1], "Test 0");
    const std::string losses = "Event overflow [";
    ASSERT_TRUE(texts.back().starts_with(losses)) << texts.back();
    const std::size_t written = texts.size() - 2;
    EXPECT_EQ(texts[written], "Test " + std::to_string(written - 1));
    EXPECT_EQ(written + std::stoul(texts.back().substr(losses.size())), 3000u);
}

VN_CHILD(makeThreadLogWithoutMemory)
{
    int none = 0;
    char const* const* noArguments = nullptr;
    InInitGuard guard(none, noArguments);
    const LgMinorGroup group(LgMajorGroup::getInstanceForName("Base"), "Test");
    const int files = VnTest::countDescriptors();
    int n = 0;
    for (; failsWithoutMemory(n, [] { const ThreadLog log; }); ++n)
        if (LgLog::isLoggerActive() || VnTest::countDescriptors() != files)
            return 1;
    ThreadLog log;
    VN_LOG(group, LgTypes::Warning, "at last");
    return n > 5 ? 0 : 2;
}

TEST_F(LogFaults, aThreadLayerThatFindsNoMemoryThrowsAndMayBeMadeAgain)
{
    const ChildRun run = Child("makeThreadLogWithoutMemory").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"Test at last"}));
}

VN_CHILD(logInThreadsWithoutMemory)
{
    int none = 0;
    char const* const* noArguments = nullptr;
    InInitGuard guard(none, noArguments);
    ThreadLog log;
    const LgMinorGroup group(LgMajorGroup::getInstanceForName("Base"), "Test");
    bool isAny = true;
    for (int n = 0; isAny; ++n)
        std::thread([n, &isAny, &group] {
            isAny = failsWithoutMemory(n, [&group] { VN_LOG(group, LgTypes::RecoverableError, "first"); });
            VN_LOG(group, LgTypes::RecoverableError, "second");
        }).join();
    return 0;
}

/// Each allocation of a thread's first message fails in turn; the thread's second message finds memory again.
TEST_F(LogFaults, aMessageThatFindsNoMemoryForItsThreadsQueueIsLostAndThatIsTold)
{
    const ChildRun run = Child("logInThreadsWithoutMemory").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: no memory for a thread's queue: its messages are lost\n");
    std::vector<std::string> texts = textsOf(messages());
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "Test first"), 1);
    EXPECT_GT(std::count(texts.begin(), texts.end(), "Test second"), 3);
}

TEST_F(LogFaults, aLockFileThatCanNotBeOpenedIsTold)
{
    const LockName name(folder);
    const auto create = [&name] { delete LgInterProcessLock::create(name.get().c_str()); };
    const int descriptors = VnTest::countDescriptors();
    for (const int error : {EACCES, EMFILE, ENOSPC, EROFS}) {
        const FailingCall call("open", error);
        EXPECT_EQ(errorOf(create), error);
    }
    {
        const FailingCall call("fstat", EIO);
        EXPECT_EQ(errorOf(create), EIO);
    }
    {
        const FailingCall call("open", EINTR, 0, 2);
        EXPECT_EQ(errorOf(create), 0);
    }
    EXPECT_EQ(VnTest::countDescriptors(), descriptors);
    for (int n = 0; failsWithoutMemory(n, create); ++n)
        ASSERT_LT(n, 50);
    EXPECT_EQ(VnTest::countDescriptors(), descriptors);
}

TEST_F(LogFaults, aLockOfAKilledProcessPassesOn)
{
    const LockName name(folder);
    const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(name.get().c_str()));
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const ::pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        lock->lock();
        if (::write(ends[1], "l", 1) == 1)
            ::pause();
        ::_exit(1);
    }
    char mark = 0;
    ASSERT_EQ(::read(ends[0], &mark, 1), 1);
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    {
        const LgInterProcessLockGuard guard(lock.get());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    ::close(ends[0]);
    ::close(ends[1]);
}
