// The outputs of the thread layer on POSIX: reasons that are told, pipes that nobody reads, files that are replaced.
#include "threadlogbody.h"

#include <threadlog/threadlogoutputs_p.h>

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <string>

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

// Pipes that nobody reads.

namespace
{
constexpr int lines = 1000;

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
    bool isRefused = log.isFull();
    for (int i = 0; i < lines; ++i)
        isRefused = isRefused && !log.outputs.append(LgTypes::Warning, "a line\n");
    log.empty();
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
    ThreadLogOutputs::appendToStandardOutput(std::string(20000, 'x'));
    for (int i = 0; i < lines; ++i)
        ThreadLogOutputs::appendToStandardOutput("a line\n");
    return isReady(ends[1]) ? 1 : 0;
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
