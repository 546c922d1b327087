// What only the POSIX form of a log file has: links, pipes and second names that somebody has put where it should be, and
// standard descriptors that are closed.
#include "loggertest.h"

#include "descriptors.h"
#include "expectchild.h"
#include "lockname.h"

#include <base/exsyserror.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::contentOf;
using VnTest::LockName;
using VnTest::LogLine;
using VnTest::StampedQueue;

namespace
{
class LgFilePosix : public VnTest::LoggerTest
{
protected:
    bool hasOutput(LgTypes::Level level = LgTypes::Warning) const
    {
        std::ostream const* const output = LgLog::getLevelOutput(level);
        return output != nullptr && !output->fail();
    }

    /// Writes a message of `level` to its outputs.
    static void log(std::string const& text, LgTypes::Level level = LgTypes::Warning)
    {
        StampedQueue queue;
        queue.log(1, text, level);
        LgReader().flushAll();
        queue.end();
    }
};

/// Texts of the log's lines without banners; what isn't a line of ours is itself.
std::vector<std::string> textsOf(std::string const& path)
{
    std::vector<std::string> texts;
    for (std::string const& line : VnTest::linesOf(path))
        if (const std::optional<LogLine> parsed = LogLine::parse(line))
            texts.push_back(parsed->text);
        else if (!line.empty() && !line.starts_with("====="))
            texts.push_back(line);
    return texts;
}

/// What the process can't write beyond, for as long as this lives; a full disk as one process sees it.
class SizeLimit
{
public:
    explicit SizeLimit(std::uintmax_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &_before);
        _signal = std::signal(SIGXFSZ, SIG_IGN);
        ::rlimit limit = _before;
        limit.rlim_cur = static_cast<::rlim_t>(bytes);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() { lift(); }
    SizeLimit(SizeLimit const&) = delete;
    SizeLimit& operator=(SizeLimit const&) = delete;

    void lift()
    {
        ::setrlimit(RLIMIT_FSIZE, &_before);
        std::signal(SIGXFSZ, _signal);
    }

private:
    ::rlimit _before = {};
    void (*_signal)(int) = SIG_DFL;
};

constexpr char banner[] = "===== Message Logger Startup =====";
}  // namespace

TEST_F(LgFilePosix, aDefaultFileThatIsALinkIsNotFollowed)
{
    const std::string target = folder.file("precious", "precious");
    ASSERT_EQ(::symlink(target.c_str(), folder.path("events.log").c_str()), 0);
    ASSERT_EQ(::symlink(folder.path("nothing").c_str(), folder.path("prof.log").c_str()), 0);
    start();
    EXPECT_FALSE(hasOutput(LgTypes::Warning));
    EXPECT_FALSE(hasOutput(LgTypes::Profiling));
    log("nowhere");
    stop();
    EXPECT_EQ(contentOf(target), "precious");
    EXPECT_FALSE(std::filesystem::exists(folder.path("nothing"))) << "nothing was made behind it";
}

TEST_F(LgFilePosix, aDefaultFileThatIsASecondNameOfAnotherOneIsLeftAlone)
{
    const std::string target = folder.file("precious", "precious");
    ASSERT_EQ(::link(target.c_str(), folder.path("events.log").c_str()), 0);
    start();
    EXPECT_FALSE(hasOutput());
    stop();
    EXPECT_EQ(contentOf(target), "precious");
}

TEST_F(LgFilePosix, aDefaultFileThatIsNoFileIsNotWaitedFor)
{
    ASSERT_EQ(::mkfifo(folder.path("events.log").c_str(), 0600), 0);
    ASSERT_EQ(::mkdir(folder.path("prof.log").c_str(), 0700), 0);
    start();
    EXPECT_FALSE(hasOutput(LgTypes::Warning));
    EXPECT_FALSE(hasOutput(LgTypes::Profiling));
    stop();
    // Not even one that is read: it isn't a file of ours.
    const int end = ::open(folder.path("events.log").c_str(), O_RDONLY | O_NONBLOCK);
    start();
    EXPECT_FALSE(hasOutput(LgTypes::Warning));
    ::close(end);
}

TEST_F(LgFilePosix, aDefaultFileOfAnotherUserIsLeftAlone)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    const std::string path = folder.file("events.log", "somebody else's");
    ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    start();
    EXPECT_FALSE(hasOutput());
    stop();
    EXPECT_EQ(contentOf(path), "somebody else's");
}

TEST_F(LgFilePosix, aNamedFileMayBeALink)
{
    const std::string target = folder.file("target", "before\n");
    ASSERT_EQ(::symlink(target.c_str(), folder.path("link").c_str()), 0);
    set("VN_LOG_WARNING", folder.path("link"));
    start();
    log("behind the link");
    stop();
    EXPECT_EQ(textsOf(target), std::vector<std::string>{"behind the link"}) << "begun anew";
}

TEST_F(LgFilePosix, aNamedPipeThatNobodyReadsIsNotWaitedFor)
{
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    set("VN_LOG_WARNING", folder.path("pipe"));
    start();
    EXPECT_FALSE(hasOutput());
    log("nowhere");
}

VN_CHILD(logToAPipe)
{
    if (std::string(argv[2]) == "pending") {
        ::sigset_t signal;
        ::sigemptyset(&signal);
        ::sigaddset(&signal, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &signal, nullptr);
        ::raise(SIGPIPE);
    }
    // The reader's end is in this process, so that all happens in order.
    const int end = ::open(argv[1], O_RDONLY | O_NONBLOCK);
    LgLog::init();
    StampedQueue queue;
    const auto logNow = [&queue](char const* text) {
        queue.log(1, text);
        LgReader().flushAll();
    };
    const auto readNow = [](int file) {
        char text[4096];
        const ::ssize_t count = ::read(file, text, sizeof text);
        return std::string(text, count > 0 ? static_cast<std::size_t>(count) : 0);
    };
    logNow("read");
    std::cout << readNow(end);
    ::close(end);
    logNow("waits");  // and doesn't end the process
    const int again = ::open(argv[1], O_RDONLY | O_NONBLOCK);
    logNow("read again");
    std::cout << readNow(again);
    queue.end();
    LgLog::destroy();
    ::sigset_t pending;
    ::sigpending(&pending);
    std::cout << "pending " << ::sigismember(&pending, SIGPIPE) << '\n';
    return 0;
}

TEST_F(LgFilePosix, aPipeWhoseReaderGoesEndsNobodyAndWorksForTheNext)
{
    for (const bool isShared : {false, true})
        for (const bool isPending : {false, true}) {
            SCOPED_TRACE(testing::Message() << isShared << isPending);
            const LockName name(folder);
            const std::string path = folder.path("pipe");
            std::filesystem::remove(path);
            ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
            Child child("logToAPipe");
            child.arguments({path, isPending ? "pending" : ""})
                .with("VN_LOG_WARNING", path)
                .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
                .with("T4Q_TEST_DIR", folder.path());
            if (isShared)
                child.with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
            const ChildRun run = child.run();
            // A signal that was pending is the program's and stays so.
            EXPECT_EQ(run.out,
                      std::string(banner) + "\nread\nwaits\nread again\npending " + (isPending ? "1\n" : "0\n"));
            EXPECT_EQ(run.exitCode, 0) << run.err;
        }
}

TEST_F(LgFilePosix, aPipeAndADeviceHaveNoPlace)
{
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const int reader = ::open(folder.path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    for (std::string const& path : {folder.path("pipe"), std::string("/dev/null")}) {
        SCOPED_TRACE(path);
        set("VN_LOG_WARNING", path);
        start();
        EXPECT_TRUE(hasOutput());
        EXPECT_EQ(LgLog::getLevelOutput(LgTypes::Warning)->tellp(), std::streamoff(-1));
        stop();
    }
    ::close(reader);
}

TEST_F(LgFilePosix, anOutputThatCouldNotBeOpenedStaysFailedWhateverTheProgramSays)
{
    set("VN_LOG_WARNING", folder.path());
    start();
    std::ostream& output = *LgLog::getLevelOutput(LgTypes::Warning);
    EXPECT_TRUE(output.fail());
    EXPECT_FALSE(output.bad());
    output.setstate(std::ios::badbit);
    log("nowhere");
    EXPECT_EQ(output.rdstate(), std::ios::badbit | std::ios::failbit);
}

TEST_F(LgFilePosix, aFileIsOpenForAppendingAlways)
{
    start();
    const std::string path = folder.path("events.log");
    // What another process writes meanwhile stays.
    std::ofstream(path, std::ios::app) << "another one's line\n";
    log("ours");
    stop();
    EXPECT_EQ(textsOf(path), (std::vector<std::string>{"another one's line", "ours"}));
}

VN_CHILD(logWithClosedDescriptors)
{
    VnTest::closeStandardDescriptors();
    LgLog::init();
    const int found = VnTest::countStandardDescriptors();
    // What the program writes to its standard output goes nowhere, and not into the log.
    std::cout << "lost" << std::endl;
    LgLog::destroy();
    return found;
}

TEST_F(LgFilePosix, takesNoStandardDescriptor)
{
    const LockName name(folder);
    const ChildRun run = Child("logWithClosedDescriptors")
                             .with("T4Q_TEST_DIR", folder.path())
                             .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get())
                             .run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(contentOf(folder.path("events.log")).find("lost"), std::string::npos);
    EXPECT_EQ(VnTest::linesOf(folder.path("events.log")).size(), 5u);
}

TEST_F(LgFilePosix, aHalfLineOfAKilledWriterIsEnded)
{
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    start();
    log("first");
    const std::string path = folder.path("events.log");
    std::ofstream(path, std::ios::app) << "half of a li";
    log("second");
    std::ofstream(path, std::ios::app) << "a whole line\n";
    log("third");
    std::ofstream(path, std::ios::app) << "another ha";
    stop();
    const std::vector<std::string> lines = VnTest::linesOf(path);
    EXPECT_EQ(textsOf(path),
              (std::vector<std::string>{"first", "half of a li", "second", "a whole line", "third", "another ha"}));
    EXPECT_EQ(lines.back(), "===== Message Logger Stopped =====");
}

TEST_F(LgFilePosix, aHalfLineIsEndedBeforeTheBanner)
{
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    set("VN_LOG_WARNING", "+" + folder.file("warning.log", "half of a li"));
    start();
    stop();
    EXPECT_TRUE(
        contentOf(folder.path("warning.log")).starts_with("half of a li\n===== Message Logger Startup =====\n"));
}

TEST_F(LgFilePosix, aLineThatFindsRoomForAPartIsTakenBackFromASharedFile)
{
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    start();
    log("first");
    const std::string path = folder.path("events.log");
    const std::uintmax_t size = std::filesystem::file_size(path);
    {
        const SizeLimit full(size + 50);
        log("a line of which a part finds room");
        EXPECT_EQ(std::filesystem::file_size(path), size) << "nothing of it is left";
        std::ofstream(path, std::ios::app) << "another process's\n";  // finds room
        log("waits behind it");
        EXPECT_EQ(std::filesystem::file_size(path), size + 18);
    }
    log("last");
    stop();
    EXPECT_EQ(textsOf(path),
              (std::vector<std::string>{"first", "another process's", "a line of which a part finds room",
                                        "waits behind it", "last"}));
}

TEST_F(LgFilePosix, ofWaitingLinesThoseThatFindRoomAreWritten)
{
    const LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    set("VN_LOG_DISABLE_TIMESTAMPS", "1");
    start();
    const std::string path = folder.path("events.log");
    const std::uintmax_t size = std::filesystem::file_size(path);
    {
        const SizeLimit full(size);
        for (char const* text : {"one", "two", "three"})
            log(text);
        EXPECT_EQ(std::filesystem::file_size(path), size);
    }
    {
        const SizeLimit nearlyFull(size + 10);  // "one\n", "two\n", and two letters
        log("four");
        EXPECT_EQ(textsOf(path), (std::vector<std::string>{"one", "two"}));
    }
    log("five");
    EXPECT_EQ(textsOf(path), (std::vector<std::string>{"one", "two", "three", "four", "five"}));
}

TEST_F(LgFilePosix, linesThatWereDroppedAreCountedAndToldOnceThereIsRoom)
{
    for (const bool isShared : {false, true}) {
        SCOPED_TRACE(isShared);
        const LockName name(folder);
        if (isShared)
            set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
        start();
        log("first");
        const std::string path = folder.path("events.log");
        const std::string lng(20000, 'x');
        {
            const SizeLimit full(std::filesystem::file_size(path));
            for (int i = 0; i < 7; ++i)
                log(lng);  // three fit in what waits
        }
        log("last");
        const std::vector<std::string> expected = {"first", lng, lng, lng, "Event overflow [4]", "last"};
        EXPECT_EQ(textsOf(path), expected);
        for (std::string const& line : messages())
            EXPECT_EQ(LogLine::parse(line)->level,
                      line.ends_with("]") ? std::string("Informational") : std::string("Warning"));
        stop();
        EXPECT_EQ(textsOf(path), expected) << "told once";
    }
}

TEST_F(LgFilePosix, droppedLinesAreToldWithoutAPrefixWhereLinesHaveNone)
{
    set("VN_LOG_DISABLE_TIMESTAMPS", "1");
    start();
    log("first");
    const std::string path = folder.path("events.log");
    const std::string lng(20000, 'x');
    {
        const SizeLimit full(std::filesystem::file_size(path));
        for (int i = 0; i < 5; ++i)
            log(lng);
    }
    log("last");
    const std::vector<std::string> lines = VnTest::linesOf(path), expected = {lng, "Event overflow [2]", "last"};
    ASSERT_GT(lines.size(), 3u);
    EXPECT_EQ(std::vector<std::string>(lines.end() - 3, lines.end()), expected);
}

TEST_F(LgFilePosix, whileTheProgramSaysThatAnOutputHasFailedNothingIsWritten)
{
    start();
    std::ostream& output = *LgLog::getLevelOutput(LgTypes::Warning);
    const std::string path = folder.path("events.log"), lng(20000, 'x');
    {
        const SizeLimit full(std::filesystem::file_size(path));
        for (int i = 0; i < 5; ++i)
            log(lng);
    }
    output.clear(std::ios::failbit);
    const std::string before = contentOf(path);
    log("not written, and not counted");
    EXPECT_EQ(contentOf(path), before);
    output.clear();
    log("last");
    EXPECT_EQ(textsOf(path), (std::vector<std::string>{lng, lng, lng, "Event overflow [2]", "last"}));
}

TEST_F(LgFilePosix, aProgramsOwnOutputToAFullDiskFailsAndTheLogGoesOn)
{
    start();
    std::ostream& output = *LgLog::getLevelOutput(LgTypes::Warning);
    const std::string path = folder.path("events.log");
    {
        const SizeLimit full(std::filesystem::file_size(path));
        output << 'x' << std::flush;
        EXPECT_TRUE(output.bad()) << "flushed";
        output.clear();
        output << std::string(70000, 'x');
        EXPECT_TRUE(output.bad()) << "longer than the buffer";
    }
    log("first");
    log("second");
    const std::string content = contentOf(path);
    EXPECT_NE(content.find(std::string(65536, 'x')), std::string::npos) << "what has waited";
    EXPECT_TRUE(content.ends_with(": second\n")) << content.substr(content.size() - 100);
}

TEST_F(LgFilePosix, droppedLinesAreToldAtTheStopAsWell)
{
    start();
    const std::string path = folder.path("events.log");
    {
        const SizeLimit full(std::filesystem::file_size(path));
        for (int i = 0; i < 5; ++i)
            log(std::string(20000, 'x'));
    }
    stop();
    const std::vector<std::string> lines = VnTest::linesOf(path);
    ASSERT_EQ(lines.size(), 4u + 3u + 2u);
    EXPECT_EQ(LogLine::parse(lines[7])->text, "Event overflow [2]");
    EXPECT_EQ(lines[8], "===== Message Logger Stopped =====");
}

TEST_F(LgFilePosix, aBannerThatMetAFullDiskComesWhole)
{
    {
        const SizeLimit full(0);
        start();
        EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->bad());
        log("waits");
    }
    log("last");
    stop();
    const std::vector<std::string> lines = events();
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[0], banner);
    EXPECT_TRUE(lines[1].starts_with("===== Started on "));
    EXPECT_TRUE(lines[3].starts_with("===== Clock Frequency: ")) << lines[3];
    EXPECT_EQ(textsOf(folder.path("events.log")), (std::vector<std::string>{"waits", "last"}));
}

VN_CHILD(echoToAFullDisk)
{
    const std::string what = argv[2];
    const int file = ::open(argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(file, 1);
    ::close(file);
    LgLog::init();
    StampedQueue queue;
    const auto logLines = [&queue](int first, int last) {
        for (int i = first; i <= last; ++i)
            queue.log(static_cast<std::uint64_t>(i), "line " + std::to_string(i));
        LgReader().flushAll();
    };
    logLines(1, 10);
    {
        const SizeLimit full(10 * std::strlen("line 1\n") + 1 +
                             3);  // one digit more for line 10; three letters of line 11
        if (what == "a long line")
            queue.log(11, "long" + std::string(9000, 'x'));
        logLines(11, 20);
        if (what == "the program's own output")
            std::cout << "own" << std::flush;
        if (what == "standard error")
            std::cerr << "flushes what it is tied to";
    }
    logLines(21, 30);
    queue.end();
    LgLog::destroy();
    return 0;
}

TEST_F(LgFilePosix, theEchoRecoversFromAFullDiskAndTellsWhatItLost)
{
    for (std::string const what :
         {"lines", "lines under the lock", "a long line", "the program's own output", "standard error"}) {
        SCOPED_TRACE(what);
        const LockName name(folder);
        const std::string path = folder.path("echo");
        Child child("echoToAFullDisk");
        child.arguments({path, what})
            .with("VN_LOG_WARNING", "%")
            .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
            .with("T4Q_TEST_DIR", folder.path());
        if (what == "lines under the lock")
            child.with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
        const ChildRun run = child.run();
        EXPECT_EQ(run.exitCode, 0) << run.err;
        const bool hasLong = what == "a long line";
        std::vector<std::string> expected;
        for (int i = 1; i <= 10; ++i)
            expected.push_back("line " + std::to_string(i));
        expected.push_back(hasLong ? "lon" : "lin");  // cut by the disk, and ended
        expected.push_back(hasLong ? "Event overflow [11]" : "Event overflow [10]");
        for (int i = 21; i <= 30; ++i)
            expected.push_back("line " + std::to_string(i));
        EXPECT_EQ(VnTest::linesOf(path), expected);
    }
}

TEST_F(LgFilePosix, aFileRecoversFromAFullDiskThatTheProgramHasWrittenTo)
{
    start();
    log("first");
    const std::string path = folder.path("events.log");
    {
        const SizeLimit full(std::filesystem::file_size(path));
        log("waits");
        *LgLog::getLevelOutput(LgTypes::Warning) << "the program's own, which nobody keeps\n";
        EXPECT_TRUE(LgLog::getLevelOutput(LgTypes::Warning)->bad());
    }
    log("last");
    EXPECT_TRUE(hasOutput());
    stop();
    EXPECT_EQ(textsOf(path), (std::vector<std::string>{"first", "waits", "last"}));
    EXPECT_EQ(events().back(), "===== Message Logger Stopped =====");
}

TEST_F(LgFilePosix, aFileThatIsADefaultAndNamedIsTheUsersChoice)
{
    const std::string target = folder.file("target", "before\n");
    ASSERT_EQ(::symlink(target.c_str(), folder.path("events.log").c_str()), 0);
    set("VN_LOG_WARNING", folder.path("events.log"));
    start();
    log("named");
    log("default", LgTypes::FatalError);
    stop();
    EXPECT_EQ(textsOf(target), (std::vector<std::string>{"named", "default"}));
}

/// Echoes into a file that another process appends to: argv[2] opens it as the shell's ">>" or ">" does.
VN_CHILD(echoBesideAnother)
{
    const int append = std::string(argv[2]) == "appended" ? O_APPEND : 0;
    const int file = ::open(argv[1], O_WRONLY | O_CREAT | O_TRUNC | append, 0600);
    ::dup2(file, 1);
    ::close(file);
    // Another process that has inherited standard output, or has opened the file to append.
    const int other = append != 0 ? ::open(argv[1], O_WRONLY | O_APPEND) : ::dup(1);
    const auto writeOther = [other](std::string const& text) {
        return ::write(other, text.data(), text.size()) == static_cast<::ssize_t>(text.size());
    };
    LgLog::init();
    StampedQueue queue;
    const auto echo = [&queue](std::string const& text) {
        queue.log(1, text);
        LgReader().flushAll();
    };
    echo("first");
    bool isWritten = writeOther("half of a li");
    echo("second");
    isWritten = writeOther("a whole line\n") && isWritten;
    echo("third");
    std::cout << "the program's own";
    echo("fourth");
    echo("fifth");
    queue.end();
    LgLog::destroy();
    return isWritten ? 0 : 1;
}

TEST_F(LgFilePosix, anEchoedLineBeginsAtTheStartOfALineUnderTheLock)
{
    for (char const* how : {"appended", "inherited"}) {
        SCOPED_TRACE(how);
        const LockName name(folder);
        const std::string path = folder.path("echo");
        const ChildRun run = Child("echoBesideAnother")
                                 .arguments({path, how})
                                 .with("VN_LOG_WARNING", "%")
                                 .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
                                 .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get())
                                 .with("T4Q_TEST_DIR", folder.path())
                                 .run();
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(contentOf(path),
                  "first\nhalf of a li\nsecond\na whole line\nthird\nthe program's own\nfourth\nfifth\n");
    }
}

/// What std::cout holds in a buffer of the program's own can't be looked at.
VN_CHILD(echoToAnOwnBuffer)
{
    const int file = ::open(argv[1], O_WRONLY | O_APPEND);
    ::dup2(file, 1);
    ::close(file);
    std::ostringstream own;
    std::streambuf* const before = std::cout.rdbuf(own.rdbuf());
    LgLog::init();
    StampedQueue queue;
    std::cout << "the program's own ";
    queue.log(1, "line");
    LgReader().flushAll();
    queue.end();
    LgLog::destroy();
    std::cout.rdbuf(before);
    std::cout << own.str() << "to standard output\n";
    return 0;
}

TEST_F(LgFilePosix, anEchoGoesWhereTheProgramHasLedStandardOutput)
{
    const LockName name(folder);
    const std::string path = folder.file("echo", "half of a li");
    const ChildRun run = Child("echoToAnOwnBuffer")
                             .arguments({path})
                             .with("VN_LOG_WARNING", "%")
                             .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
                             .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get())
                             .with("T4Q_TEST_DIR", folder.path())
                             .run();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(contentOf(path), "half of a lithe program's own line\nto standard output\n");
}

/// argv[2] lines go to a file that can be written but not read; then the disk is full for one.
VN_CHILD(echoToAnUnreadableFile)
{
    const int file = ::open(argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0200);
    ::dup2(file, 1);
    ::close(file);
    const ::uid_t user = ::geteuid();
    // Root reads whatever it likes.
    if (user == 0 && ::seteuid(65534) != 0)
        return 2;
    LgLog::init();
    StampedQueue queue;
    const auto echo = [&queue](std::string const& text) {
        queue.log(1, text);
        LgReader().flushAll();
    };
    const int count = std::atoi(argv[2]);
    for (int i = 0; i < count; ++i)
        echo("line");
    {
        const SizeLimit full(static_cast<std::uintmax_t>(count) * std::strlen("line\n"));
        echo("dropped");
    }
    echo("last");
    queue.end();
    LgLog::destroy();
    return ::seteuid(user) == 0 ? 0 : 3;
}

TEST_F(LgFilePosix, behindADroppedLineAFileThatCantBeReadGetsALineEndUnlessItIsEmpty)
{
    const struct
    {
        char const* before;
        char const* content;
    } table[] = {{"0", "Event overflow [1]\nlast\n"}, {"2", "line\nline\n\nEvent overflow [1]\nlast\n"}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.before);
        const std::string path = folder.path(row.before);
        const ChildRun run = Child("echoToAnUnreadableFile")
                                 .arguments({path, row.before})
                                 .with("VN_LOG_WARNING", "%")
                                 .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
                                 .with("T4Q_TEST_DIR", folder.path())
                                 .run();
        EXPECT_EQ(run.exitCode, 0) << run.err;
        ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
        EXPECT_EQ(contentOf(path), row.content);
    }
}
