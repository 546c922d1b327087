// The outputs of the thread layer on POSIX: reasons that are told, pipes that nobody reads, files that are replaced.
#include "standins.h"
#include "threadlogbody.h"

#include <threadlog/threadlogoutputs_p.h>

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace VnTest;
using Vn::LgTypes;
using Vn::ThreadLog;
using Vn::ThreadLogOutputs;

namespace
{
void logOne(char const* text)
{
    VN_LOG(groupOf(), LgTypes::Warning, text);
}

std::string getPath(char const* name)
{
    return std::getenv("T4Q_TEST_DIR") + std::string("/") + name;
}
}  // namespace

namespace
{
/// Files' permissions then hold for this process as well, if the administrator runs it.
void giveUpCapabilities()
{
    ::__user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    const ::__user_cap_data_struct none[2] = {};
    ::syscall(SYS_capset, &header, none);
}
}  // namespace

// Levels.

VN_CHILD(appendsAtNumbersThatAreNoLevels)
{
    const Started start;
    // Side by side: a look behind the levels of the first finds those of the second.
    ThreadLogOutputs outputs[2];
    for (ThreadLogOutputs& each : outputs)
        each.open();
    char bytes[64] = "";
    const bool isQuiet = outputs[0].append(LgTypes::Level(7), "no level\n") &&
                         outputs[1].append(LgTypes::Level(-7), "no level\n") &&
                         outputs[0].readTail(LgTypes::Level(7), bytes, sizeof bytes) == 0;
    const bool isWritten = outputs[0].append(LgTypes::Warning, "a level\n");
    for (ThreadLogOutputs& each : outputs)
        each.close();
    return isQuiet && isWritten ? 0 : 1;
}

TEST(ThreadLogOutputs, aNumberThatIsNoLevelHasNoFile)
{
    const TempFolder folder;
    expectSuccess(logger("appendsAtNumbersThatAreNoLevels", folder).run());
    const std::string log = contentOf(folder.path("events.log"));
    EXPECT_EQ(log.find("no level"), log.npos) << log;
    EXPECT_NE(log.find("a level"), log.npos) << log;
}

// Lines and what a crash looks at.

namespace
{
/// Opened for a block.
class OpenOutputs
{
public:
    OpenOutputs() { outputs.open(); }
    ~OpenOutputs() { outputs.close(); }
    OpenOutputs(OpenOutputs const&) = delete;
    OpenOutputs& operator=(OpenOutputs const&) = delete;

    ThreadLogOutputs outputs;
};

std::atomic<int> writes = 0;

std::optional<::ssize_t> countWrites(int, std::string_view)
{
    ++writes;
    return {};
}

std::optional<::ssize_t> interruptOnce(int, std::string_view)
{
    StandIns::onWrite = nullptr;
    errno = EINTR;
    return -1;
}

std::optional<::ssize_t> takeNothing(int, std::string_view)
{
    return 0;
}

template <StandIns::Write hook>
bool appendWith(ThreadLogOutputs const& outputs, std::string const& text)
{
    StandIns::onWrite = hook;
    const bool isDone = outputs.append(LgTypes::Warning, text);
    StandIns::onWrite = nullptr;
    return isDone;
}

class ThreadLogOutputCalls : public testing::Test
{
protected:
    void SetUp() override
    {
        if (isThreadSanitized)
            GTEST_SKIP() << "nothing can stand in for the system's calls under the thread sanitizer";
    }
};
}  // namespace

VN_CHILD(appendsWithWatchedCalls)
{
    const Started start;
    const OpenOutputs open;
    EXPECT_TRUE(appendWith<countWrites>(open.outputs, std::string(20000, 'x') + "\n"));
    EXPECT_EQ(writes, 1);
    EXPECT_TRUE(appendWith<interruptOnce>(open.outputs, "interrupted\n"));
    EXPECT_FALSE(appendWith<takeNothing>(open.outputs, "refused\n"));
    EXPECT_TRUE(open.outputs.append(LgTypes::Warning, "\n")) << "the shortest line";
    return testing::Test::HasFailure() ? 1 : 0;
}

TEST_F(ThreadLogOutputCalls, aLongLineGoesToItsFileInOneCallThatIsRepeatedIfASignalInterruptsIt)
{
    const TempFolder folder;
    expectSuccess(logger("appendsWithWatchedCalls", folder).run());
    const std::vector<std::string> lines = linesOf(folder.path("events.log"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), std::string(20000, 'x')), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "interrupted"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "refused"), 0);
}

VN_CHILD(looksAtTails)
{
    const Started start;
    OpenOutputs open;
    std::ofstream(getPath("events.log"), std::ios::trunc).close();
    char bytes[16] = "";
    EXPECT_EQ(open.outputs.readTail(LgTypes::Warning, bytes, sizeof bytes), 0u) << "nothing is there";
    open.outputs.append(LgTypes::Warning, "0123456789");
    for (std::size_t size = 1; size <= 12; ++size) {
        const std::size_t read = open.outputs.readTail(LgTypes::Warning, bytes, size);
        const std::string all = "0123456789";
        EXPECT_EQ(std::string(bytes, read), all.substr(all.size() - std::min<std::size_t>(size, 10)));
    }
    open.outputs.close();
    EXPECT_EQ(open.outputs.readTail(LgTypes::Warning, bytes, sizeof bytes), 0u);
    EXPECT_TRUE(open.outputs.append(LgTypes::Warning, "closed")) << "like a level without a file";
    return testing::Test::HasFailure() ? 1 : 0;
}

TEST(ThreadLogOutputs, theTailOfAFileIsItsLastBytesOrAllOfThem)
{
    const TempFolder folder;
    expectSuccess(logger("looksAtTails", folder).run());
    EXPECT_EQ(linesOf(folder.path("events.log"))[0], "0123456789===== Message Logger Stopped =====");
}

// The banner.

namespace
{
class CommaPoint : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
};
}  // namespace

VN_CHILD(logsBesideAFullDisk)
{
    const Started start;
    ThreadLog log;
    const Vn::LgMinorGroup group = groupOf();
    VN_LOG(group, LgTypes::RecoverableError, "to a file with room");
    log.flush();
    std::cerr << "then\n";
    VN_LOG(group, LgTypes::Warning, "to the full one");
    log.flush();
    return 0;
}

TEST(ThreadLogOutputs, aFileThatRefusedItsBannerIsToldWithTheReasonOfItsFirstLine)
{
    const TempFolder folder;
    const ChildRun run = logger("logsBesideAFullDisk", folder)
                             .with("VN_LOG_WARNING", "/dev/full")
                             .with("VN_LOG_RECOVERABLE_ERROR", folder.path("errors.log"))
                             .run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "then\nlog: /dev/full: No space left on device\n");
}

VN_CHILD(reopensInALocale)
{
    std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    const Started start;
    ThreadLog log;
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    return log.reopen() ? 0 : 1;
}

TEST(ThreadLogOutputs, theBannerOfANewFileIsThatOfTheFirstInAnyLocale)
{
    const TempFolder folder;
    expectSuccess(logger("reopensInALocale", folder).run());
    const auto first = linesOf(folder.path("events.log.1"));
    const auto second = linesOf(folder.path("events.log"));
    ASSERT_GE(first.size(), 4u);
    ASSERT_GE(second.size(), 4u);
    EXPECT_TRUE(first[3].starts_with("===== Clock Frequency: 0.")) << first[3];
    EXPECT_EQ(second[3], first[3]);
}

VN_CHILD(reopensAnHourLater)
{
    const Started start;
    ThreadLog log;
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    StandIns::clockAhead = 3600;
    return log.reopen() ? 0 : 1;
}

namespace
{
/// When a log says that it was started.
std::time_t startOf(std::string const& path)
{
    const std::vector<std::string> lines = linesOf(path);
    std::tm time{};
    time.tm_isdst = -1;
    if (lines.size() < 2 || ::strptime(lines[1].c_str(), "===== Started on %a %b %d %H:%M:%S %Y", &time) == nullptr)
        return 0;
    return std::mktime(&time);
}
}  // namespace

TEST_F(ThreadLogOutputCalls, theBannerOfANewFileHasTheDateFromWhichItsTimesCount)
{
    const TempFolder folder;
    expectSuccess(logger("reopensAnHourLater", folder).with("TZ", "UTC").run());
    const std::time_t first = startOf(folder.path("events.log.1"));
    const std::time_t second = startOf(folder.path("events.log"));
    EXPECT_NE(second, 0);
    // The time of day hasn't moved, so an hour's age is an hour before it.
    EXPECT_NEAR(static_cast<double>(first - second), 3600, 600);
}

VN_CHILD(reopensWithoutTimes)
{
    const Started start;
    ThreadLog log;
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    return log.reopen() ? 0 : 1;
}

TEST(ThreadLogOutputs, theBannerOfANewFileHasNoDateIfItsLinesHaveNoTimes)
{
    const TempFolder folder;
    expectSuccess(logger("reopensWithoutTimes", folder).with("VN_LOG_DISABLE_TIMESTAMPS", "1").run());
    for (char const* name : {"events.log.1", "events.log"}) {
        const std::vector<std::string> lines = linesOf(folder.path(name));
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines[0], "===== Message Logger Startup =====");
        for (std::string const& line : lines)
            EXPECT_EQ(line.find("Started on"), line.npos) << name;
    }
}

// Pipes that nobody reads.

namespace
{
constexpr int manyLines = 1000;

/// Ends this process if what follows waits for each of a thousand lines.
void endIfItTakesTooLong()
{
    ::alarm(120);
}

/// Until nothing goes into it, whatever it holds already. `writer` doesn't block.
void fill(int writer)
{
    static constexpr char page[4096] = {};
    for (std::size_t size = sizeof page; size != 0; size /= 2)
        while (::write(writer, page, size) > 0) {
        }
}

bool isReady(int writer)
{
    struct ::pollfd wanted = {writer, POLLOUT, 0};
    return ::poll(&wanted, 1, 0) == 1;
}

/// Until the pipe says that it can be written: it then has room for PIPE_BUF bytes and no more.
void makeLeastRoom(int reader, int writer)
{
    char byte = 0;
    while (!isReady(writer) && ::read(reader, &byte, 1) == 1) {
    }
}

/// A log in a pipe, which the child itself could read.
class PipeLog
{
public:
    PipeLog() : _reader(::open(getPath("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
    {
        _writer = ::open(getPath("pipe").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        outputs.open();
        fill(_writer);
    }
    ~PipeLog()
    {
        outputs.close();
        ::close(_writer);
        ::close(_reader);  // the logger's last line would wait
    }
    PipeLog(PipeLog const&) = delete;
    PipeLog& operator=(PipeLog const&) = delete;

    bool isFull() const { return !isReady(_writer); }
    void makeLeastRoom() const { ::makeLeastRoom(_reader, _writer); }
    void empty() const
    {
        char bytes[4096];
        while (::read(_reader, bytes, sizeof bytes) > 0) {
        }
    }

    ThreadLogOutputs outputs;

private:
    int _reader;
    int _writer;
    Started _start;
};

ChildRun runWithPipe(char const* body)
{
    const TempFolder folder;
    ::mkfifo(folder.path("pipe").c_str(), 0600);
    return logger(body, folder).with("VN_LOG_WARNING", "+" + folder.path("pipe")).run();
}
}  // namespace

VN_CHILD(appendsToAFullPipe)
{
    const PipeLog log;
    endIfItTakesTooLong();
    StandIns::arePollsCounted = true;
    bool isRefused = log.isFull();
    for (int i = 0; i < manyLines; ++i)
        isRefused = isRefused && !log.outputs.append(LgTypes::Warning, "a line\n");
    isRefused = isRefused && (isThreadSanitized || StandIns::polled == 1000);
    log.empty();
    char bytes[16];
    isRefused =
        isRefused && log.outputs.readTail(LgTypes::Warning, bytes, sizeof bytes) == 0;  // a pipe keeps nothing
    return isRefused && log.outputs.append(LgTypes::Warning, "a line\n") ? 0 : 1;
}

TEST(ThreadLogOutputs, aFullPipeHoldsUpTheFirstLineOfACrashAloneAndTakesLinesOnceItIsRead)
{
    expectSuccess(runWithPipe("appendsToAFullPipe"));
}

VN_CHILD(appendsALongLineToANearlyFullPipe)
{
    const PipeLog log;
    log.makeLeastRoom();
    endIfItTakesTooLong();
    StandIns::arePollsCounted = true;
    return log.outputs.append(LgTypes::Warning, std::string(20000, 'x')) ? 1 : 0;
}

TEST(ThreadLogOutputs, aLineThatIsLongerThanTheRoomOfAPipeDoesntWaitWithoutEnd)
{
    expectSuccess(runWithPipe("appendsALongLineToANearlyFullPipe"));
}

VN_CHILD(appendsToAFullStandardOutput)
{
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) == -1)
        return 1;
    ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
    fill(ends[1]);
    ::fcntl(ends[1], F_SETFL, 0);
    makeLeastRoom(ends[0], ends[1]);
    endIfItTakesTooLong();
    StandIns::arePollsCounted = true;
    StandIns::polled = 0;
    ThreadLogOutputs::appendToStandardOutput(std::string(20000, 'x'));
    for (int i = 0; i < manyLines; ++i)
        ThreadLogOutputs::appendToStandardOutput("a line\n");
    // One second for the room behind the first part of the line, and one before that, for which there was room.
    return !isReady(ends[1]) && (isThreadSanitized || StandIns::polled == 2000) ? 0 : 1;
}

TEST(ThreadLogOutputs, theSameHoldsForStandardOutput)
{
    const TempFolder folder;
    expectSuccess(logger("appendsToAFullStandardOutput", folder).run());
}

// Reasons.

VN_CHILD(opensItsOutputs)
{
    giveUpCapabilities();
    const Started start;
    const ThreadLog log;
    return 0;
}

TEST(ThreadLogOutputs, theReasonOfAFileThatCantBeOpenedIsTheOneThatTheLoggerHad)
{
    const TempFolder folder;
    const std::string file = folder.file("file");
    const std::string closed = folder.folder("closed");
    ::mkfifo(folder.path("pipe").c_str(), 0600);
    std::filesystem::create_symlink(folder.path("none/a.log"), folder.path("tonone"));
    std::filesystem::create_symlink("tonone", folder.path("twice"));
    std::filesystem::create_symlink("closed/a.log", folder.path("toclosed"));
    std::filesystem::create_symlink("endless", folder.path("endless"));
    ::chmod(closed.c_str(), 0555);
    const struct
    {
        char const* name;
        char const* reason;
    } table[] = {
        {"none/a.log", "No such file or directory"},
        {"tonone", "No such file or directory"},
        {"twice", "No such file or directory"},
        {"file/a.log", "Not a directory"},
        {"closed", "Is a directory"},
        {"closed/a.log", "Permission denied"},
        {"toclosed", "Permission denied"},
        {"endless", "Too many levels of symbolic links"},
        {"pipe", "No such device or address"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.name);
        const std::string path = folder.path(row.name);
        const ChildRun run = logger("opensItsOutputs", folder).with("VN_LOG_WARNING", "+" + path).run();
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.err, "log: " + path + ": " + row.reason + "\n");
    }
}

TEST(ThreadLogOutputs, aDefaultFileThatIsALinkIsToldAndNothingIsMadeBehindIt)
{
    const TempFolder folder;
    const std::string log = folder.path("events.log");
    for (char const* target : {"elsewhere", "file"}) {
        SCOPED_TRACE(target);
        folder.file("file", "before");
        std::filesystem::create_symlink(target, log);
        const ChildRun run = logger("opensItsOutputs", folder).run();
        EXPECT_EQ(run.err, "log: " + log + ": not a file of this user alone\n");
        EXPECT_FALSE(std::filesystem::exists(folder.path("elsewhere")));
        EXPECT_EQ(contentOf(folder.path("file")), "before");
        std::filesystem::remove(log);
    }
}

// Files that are replaced.

VN_CHILD(reopensWhatWasntOpen)
{
    const Started start;
    ThreadLog log;
    std::filesystem::create_directory(getPath("none"));
    return log.reopen() ? 1 : 0;
}

TEST(ThreadLogOutputs, reopenIsFalseForAFileThatCouldntBeOpenedAtTheStart)
{
    const TempFolder folder;
    const std::string path = folder.path("none/a.log");
    const ChildRun run = logger("reopensWhatWasntOpen", folder).with("VN_LOG_WARNING", "+" + path).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: " + path + ": No such file or directory\nlog: " + path +
                           ": it couldn't be opened at the start\n");
}

VN_CHILD(reopensWhatMayOnlyBeWritten)
{
    giveUpCapabilities();
    const std::string path = getPath("secret.log");
    const Started start;
    ThreadLog log;
    logOne("first");
    if (!log.reopen())
        return 1;
    std::filesystem::rename(path, path + ".1");
    std::ofstream(path).close();
    ::chmod(path.c_str(), 0200);
    const bool isDone = log.reopen();
    logOne("second");
    return isDone ? 0 : 2;
}

TEST(ThreadLogOutputs, aFileThatMayOnlyBeWrittenIsReplacedLikeAnyOther)
{
    const TempFolder folder;
    const std::string path = folder.file("secret.log");
    ::chmod(path.c_str(), 0200);
    expectSuccess(logger("reopensWhatMayOnlyBeWritten", folder).with("VN_LOG_WARNING", "+" + path).run());
    for (std::string const& each : {path, path + ".1"})
        ::chmod(each.c_str(), 0600);
    ASSERT_EQ(messagesOf(path + ".1").size(), 1u);
    EXPECT_EQ(messagesOf(path + ".1")[0].text, "Test first");
    ASSERT_EQ(messagesOf(path).size(), 1u);
    EXPECT_EQ(messagesOf(path)[0].text, "Test second");
}

VN_CHILD(reopensADevice)
{
    const Started start;
    ThreadLog log;
    return log.reopen() ? 0 : 1;
}

TEST(ThreadLogOutputs, reopenIsTrueForADevice)
{
    const TempFolder folder;
    expectSuccess(logger("reopensADevice", folder).with("VN_LOG_WARNING", "+/dev/null").run());
}

VN_CHILD(hasLostItsFolder)
{
    std::filesystem::create_directory(getPath("work"));
    std::filesystem::current_path(getPath("work"));
    const Started start;
    std::filesystem::remove("a.log");
    std::filesystem::remove(getPath("work"));
    ThreadLog log;
    logOne("lost with its file");
    log.flush();
    return log.reopen() ? 1 : 0;
}

TEST(ThreadLogOutputs, aFileWhoseFolderIsGoneIsToldByTheNameThatItWasGiven)
{
    const TempFolder folder;
    const ChildRun run = logger("hasLostItsFolder", folder).with("VN_LOG_WARNING", "+a.log").run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: a.log: messages before a crash can't be written here: No such file or directory\n"
                       "log: a.log: it couldn't be opened a second time at the start\n");
}

VN_CHILD(hasLostItsFile)
{
    const Started start;
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    ThreadLog log;
    logOne("first");
    const bool isDone = log.reopen();
    logOne("second");
    return isDone ? 1 : 0;
}

TEST(ThreadLogOutputs, aFileThatWasMovedAwayBeforeTheLogIsMadeStaysAndIsTold)
{
    const TempFolder folder;
    const std::string path = folder.path("events.log");
    const ChildRun run = logger("hasLostItsFile", folder).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "log: " + path +
                           ": messages before a crash can't be written here: it couldn't be opened at first\n"
                           "log: " +
                           path + ": it couldn't be opened a second time at the start\n");
    EXPECT_EQ(messagesOf(path + ".1").size(), 2u);
}

VN_CHILD(reopensWithFailingCalls)
{
    const Started start;
    ThreadLog log;
    logOne("first");
    log.flush();
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    StandIns::opendirError = EMFILE;
    EXPECT_FALSE(log.reopen());
    StandIns::opendirError = 0;
    StandIns::dup3Error = EIO;
    EXPECT_FALSE(log.reopen());
    logOne("second");
    EXPECT_TRUE(log.reopen());
    logOne("third");
    return testing::Test::HasFailure() ? 1 : 0;
}

TEST_F(ThreadLogOutputCalls, aFileThatTheSystemDoesntReplaceStaysAndIsReplacedByTheNextCall)
{
    const TempFolder folder;
    const std::string path = folder.path("events.log");
    const ChildRun run = logger("reopensWithFailingCalls", folder).run();
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.err,
              "log: " + path + ": the logger's own file isn't found\nlog: " + path + ": Input/output error\n");
    EXPECT_EQ(messagesOf(path + ".1").size(), 2u);
    ASSERT_EQ(messagesOf(path).size(), 1u);
    EXPECT_EQ(messagesOf(path)[0].text, "Test third");
    const std::vector<std::string> lines = linesOf(path);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "===== Message Logger Startup ====="), 1)
        << "written by the first call that got so far";
}

VN_CHILD(readsItsOwnLog)
{
    const int own = ::open(getPath("own.log").c_str(), O_RDONLY | O_CLOEXEC);  // in front of the logger's
    const Started start;
    ThreadLog log;
    logOne("first");
    std::filesystem::rename(getPath("own.log"), getPath("own.log.1"));
    std::ofstream(getPath("own.log")) << "kept\n";
    const bool isDone = log.reopen();
    logOne("second");
    log.flush();
    struct ::stat mine = {}, before = {};
    ::fstat(own, &mine);
    ::stat(getPath("own.log.1").c_str(), &before);
    return isDone && mine.st_ino == before.st_ino ? 0 : 1;
}

TEST(ThreadLogOutputs, aFileThatTheProgramReadsIsReplacedForTheLoggerAlone)
{
    const TempFolder folder;
    const std::string path = folder.file("own.log");
    expectSuccess(logger("readsItsOwnLog", folder).with("VN_LOG_WARNING", "+" + path).run());
    EXPECT_NE(contentOf(path + ".1").find("Test first"), std::string::npos);
    const std::vector<std::string> lines = linesOf(path);
    ASSERT_EQ(lines.size(), 3u) << "no banner, as the file wasn't empty";
    EXPECT_EQ(lines[0], "kept");
    EXPECT_TRUE(lines[1].ends_with("Test second")) << lines[1];
}

VN_CHILD(reopensBehindALink)
{
    const Started start;
    ThreadLog log;
    logOne("first");
    std::filesystem::rename(getPath("real.log"), getPath("real.log.1"));
    const bool isDone = log.reopen();
    logOne("second");
    return isDone ? 0 : 1;
}

TEST(ThreadLogOutputs, aFileThatWasNamedByALinkIsMadeAnewBehindIt)
{
    const TempFolder folder;
    const std::string path = folder.file("real.log");
    std::filesystem::create_symlink("real.log", folder.path("link"));
    expectSuccess(logger("reopensBehindALink", folder).with("VN_LOG_WARNING", "+" + folder.path("link")).run());
    ASSERT_EQ(messagesOf(path + ".1").size(), 1u);
    ASSERT_EQ(messagesOf(path).size(), 1u);
    EXPECT_EQ(messagesOf(path)[0].text, "Test second");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
}

VN_CHILD(hasNoStandardDescriptors)
{
    ::close(STDIN_FILENO);
    ::close(STDOUT_FILENO);
    const Started start;
    ThreadLog log;
    std::filesystem::rename(getPath("events.log"), getPath("events.log.1"));
    const bool isDone = log.reopen();
    return isDone && ::fcntl(STDIN_FILENO, F_GETFD) == -1 && ::fcntl(STDOUT_FILENO, F_GETFD) == -1 ? 0 : 1;
}

TEST(ThreadLogOutputs, noFileGetsAStandardDescriptorThatTheProgramHasClosed)
{
    const TempFolder folder;
    expectSuccess(logger("hasNoStandardDescriptors", folder).run());
}

// Links.

/// Arguments: what is done before reopen(), each with a letter: (m)ove the log, (d)elete it, give it a second (n)ame, put another
/// file's name in its (p)lace.
VN_CHILD(reopensLinkedFiles)
{
    const std::string path = getPath("events.log");
    const Started start;
    ThreadLog log;
    for (const char step : std::string(argv[1]))
        switch (step) {
        case 'm':
            std::filesystem::rename(path, path + ".1");
            break;
        case 'd':
            std::filesystem::remove(path);
            break;
        case 'n':
            std::filesystem::create_hard_link(path, path + ".name");
            break;
        default:
            std::filesystem::create_hard_link(getPath("other"), path);
        }
    return log.reopen() ? 0 : 1;
}

TEST(ThreadLogOutputs, aLogOfOneNameGetsASuccessorOfOneName)
{
    const struct
    {
        char const* steps;
        bool isDone;
    } table[] = {{"n", true}, {"nm", true}, {"mp", false}, {"dp", false}, {"nmp", false}, {"m", true}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.steps);
        const TempFolder folder;
        const std::string other = folder.file("other", "precious");
        const std::string log = folder.path("events.log");
        const ChildRun run = logger("reopensLinkedFiles", folder).arguments({row.steps}).run();
        EXPECT_EQ(run.exitCode, row.isDone ? 0 : 1);
        EXPECT_EQ(run.err, row.isDone ? "" : "log: " + log + ": not a file of this user alone\n");
        EXPECT_EQ(contentOf(other), "precious");
    }
}

TEST(ThreadLogOutputs, aLogThatHadTwoNamesAtTheStartMayHaveThemLater)
{
    const TempFolder folder;
    const std::string log = folder.file("events.log");
    const std::string other = folder.file("other");
    std::filesystem::create_hard_link(log, folder.path("second"));
    expectSuccess(logger("reopensLinkedFiles", folder).arguments({"mp"}).with("VN_LOG_WARNING", "+" + log).run());
    EXPECT_NE(contentOf(other).find("===== Message Logger Startup ====="), std::string::npos);
}
