#include "loggertest.h"

#include "expectchild.h"
#include "expectthrow.h"
#include "gate.h"
#include "lockname.h"
#include "testpackage.h"

#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/hwcounter.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <locale>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::LoggerTest;
using VnTest::StampedQueue;

namespace
{
using LgLogTest = LoggerTest;

std::string displayed()
{
    testing::internal::CaptureStdout();
    LgLog::displaySetup();
    return testing::internal::GetCapturedStdout();
}

/// The line of a level in what displaySetup() writes, without the level's word.
std::string displayed(LgTypes::Level level)
{
    std::istringstream lines(displayed());
    const std::string word = std::string(LgTypes::levelToString(level)) + ": ";
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(word))
            return line.substr(word.size());
    return "no such line";
}

LgQueue* getTestQueue()
{
    static LgQueue& queue = *new LgQueue(0x77);
    return &queue;
}

/// A start banner without its date: "startup", "date", "", "clock VALUE".
void expectStartBanner(std::vector<std::string> const& lines, std::size_t first)
{
    ASSERT_GE(lines.size(), first + 4);
    EXPECT_EQ(lines[first], "===== Message Logger Startup =====");
    EXPECT_TRUE(lines[first + 1].starts_with("===== Started on ")) << lines[first + 1];
    EXPECT_EQ(lines[first + 1].size(), 17u + 24u) << "Www Mmm dd hh:mm:ss yyyy";
    EXPECT_EQ(lines[first + 2], "");
    EXPECT_TRUE(lines[first + 3].starts_with("===== Clock Frequency: ")) << lines[first + 3];
}

constexpr char stopped[] = "===== Message Logger Stopped =====";
}  // namespace

VN_CHILD(startWithACommaAsPoint)
{
    class Comma : public std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    std::locale::global(std::locale(std::locale::classic(), new Comma));
    VnTest::start();
    VnTest::stop();
    return 0;
}

TEST_F(LgLogTest, theBannerFollowsNoLocaleOfTheProgram)
{
    const VnTest::ChildRun run = VnTest::Child("startWithACommaAsPoint").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const std::vector<std::string> lines = events();
    expectStartBanner(lines, 0);
    EXPECT_NE(lines.at(3).find("0."), std::string::npos) << lines.at(3);
}

TEST_F(LgLogTest, defaultsAreTwoFilesAndTheStandardOutput)
{
    start();
    const std::string events = folder.path("events.log"), prof = folder.path("prof.log");
    EXPECT_EQ(displayed(), "===== Log Setup =====\n"
                           "Internal Error: " +
                               events +
                               " \n"
                               "Fatal Error: " +
                               events +
                               " \n"
                               "Error: " +
                               events +
                               " \n"
                               "Warning: " +
                               events +
                               " \n"
                               "Informational: " +
                               events +
                               " \n"
                               "Tracing: stdout, \n"
                               "Profiling: " +
                               prof +
                               " \n"
                               "===== End Setup =====\n");
    for (int level = 0; level < 7; ++level) {
        EXPECT_EQ(LgLog::isLevelEchoed(LgTypes::Level(level)), level == LgTypes::Tracing);
        EXPECT_EQ(LgLog::getLevelOutput(LgTypes::Level(level)) == nullptr, level == LgTypes::Tracing);
    }
    EXPECT_EQ(LgLog::getLevelOutput(LgTypes::InternalError), LgLog::getLevelOutput(LgTypes::Informational));
    EXPECT_NE(LgLog::getLevelOutput(LgTypes::InternalError), LgLog::getLevelOutput(LgTypes::Profiling));
    stop();
    ASSERT_EQ(this->events().size(), 5u) << "five levels, one banner";
    expectStartBanner(this->events(), 0);
    EXPECT_EQ(this->events()[4], stopped);
    EXPECT_EQ(VnTest::linesOf(prof).size(), 5u);
}

TEST_F(LgLogTest, twoNamesOfOneFileAreOneOutput)
{
    folder.folder("by");
    set("VN_LOG_FATAL_ERROR", folder.path("both.log"));
    set("VN_LOG_WARNING", folder.path("by/../both.log"));
    set("VN_LOG_PROFILING", folder.path("other.log"));
    start();
    EXPECT_EQ(LgLog::getLevelOutput(LgTypes::FatalError), LgLog::getLevelOutput(LgTypes::Warning));
    EXPECT_NE(LgLog::getLevelOutput(LgTypes::FatalError), LgLog::getLevelOutput(LgTypes::Profiling));
    StampedQueue queue;
    for (int i = 1; i <= 6; ++i)
        queue.log(static_cast<std::uint64_t>(i), "line", i % 2 != 0 ? LgTypes::Warning : LgTypes::FatalError);
    LgReader().flushAll();
    queue.end();
    stop();
    const std::vector<std::string> lines = VnTest::linesOf(folder.path("both.log"));
    ASSERT_EQ(lines.size(), 4u + 6u + 1u) << "one banner at each end";
    expectStartBanner(lines, 0);
    EXPECT_EQ(lines.back(), stopped);
}

VN_CHILD(logBesideOthers)
{
    LgLog::init();
    VnTest::Gate::open(argv[2]);
    VnTest::Gate::wait(argv[3]);
    StampedQueue queue;
    for (int i = 0; i < 400; ++i) {
        queue.log(static_cast<std::uint64_t>(i), std::string(argv[1]) + " line " + std::to_string(i) + ' ' +
                                                     std::string(static_cast<std::size_t>(i % 50), 'x') + '.');
        if (i % 20 == 19)
            LgReader().flushAll();
    }
    queue.end();
    LgLog::destroy();
    return 0;
}

TEST_F(LgLogTest, processesWithOneDefaultFileWriteWholeLines)
{
    constexpr int processes = 3;
    std::vector<std::unique_ptr<VnTest::Gate>> ready, go;
    std::vector<std::thread> threads;
    std::vector<ChildRun> runs(processes);
    for (int i = 0; i < processes; ++i) {
        ready.push_back(std::make_unique<VnTest::Gate>(folder.path("ready" + std::to_string(i))));
        go.push_back(std::make_unique<VnTest::Gate>(folder.path("go" + std::to_string(i))));
    }
    for (int i = 0; i < processes; ++i)
        threads.emplace_back([&, i] {
            runs[static_cast<std::size_t>(i)] =
                Child("logBesideOthers")
                    .arguments({std::to_string(i), ready[static_cast<std::size_t>(i)]->name(),
                                go[static_cast<std::size_t>(i)]->name()})
                    .with("T4Q_TEST_DIR", folder.path())
#if defined(_WIN32)
                    .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK",
                          "log" + folder.path().substr(folder.path().size() - 8))
#endif
                    .run();
        });
    for (auto const& gate : ready)
        gate->wait();  // all have begun the file anew
    for (auto const& gate : go)
        gate->open();
    for (std::thread& thread : threads)
        thread.join();
    for (ChildRun const& run : runs)
        EXPECT_EQ(run.exitCode, 0) << run.err;
    std::map<std::string, int> count;
    for (std::string const& line : messages()) {
        const std::optional<VnTest::LogLine> parsed = VnTest::LogLine::parse(line);
        ASSERT_TRUE(parsed) << line;
        EXPECT_TRUE(parsed->text.ends_with(".")) << line;
        ++count[parsed->text.substr(0, 1)];
    }
    EXPECT_EQ(count, (std::map<std::string, int>{{"0", 400}, {"1", 400}, {"2", 400}}));
}

TEST_F(LgLogTest, anOutputVariableSaysEchoAppendAndFile)
{
    const struct
    {
        char const* value;
        bool echo;
        char const* display;
    } table[] = {
        {"--", false, "Disabled"},
        {"--name", false, "Disabled"},
        {"%", true, "stdout, "},
        {"%name", true, "stdout, name "},
        {"%+name", true, "stdout, name [Append]"},
        {"%+", true, "stdout,  [Append]"},
        {"+", false, "[Append]"},
        {"+name", false, "name [Append]"},
        {"++name", false, "name [Append]"},
        {"++", false, "[Append]"},
        {"name", false, "name "},
        {"-name", false, "-name "},
        {"-", false, "- "},
        {"+++name", false, "+name [Append]"},
        {"%++name", true, "stdout, +name [Append]"},
        {"%%name", true, "stdout, %name "},
        {"+%name", false, "%name [Append]"},
    };
    const VnTest::WorkingFolder here(folder.path());
    for (auto const& row : table) {
        SCOPED_TRACE(row.value);
        for (char const* variable :
             {"VN_LOG_INTERNAL_ERROR", "VN_LOG_WARNING", "VN_LOG_TRACING", "VN_LOG_PROFILING"})
            set(variable, row.value);
        start();
        for (const LgTypes::Level level :
             {LgTypes::InternalError, LgTypes::Warning, LgTypes::Tracing, LgTypes::Profiling}) {
            EXPECT_EQ(displayed(level), row.display) << level;
            EXPECT_EQ(LgLog::isLevelEchoed(level), row.echo) << level;
        }
        stop();
    }
}

VN_CHILD(lgLogEmptyName)
{
    VnTest::start();
    std::ostream const* const output = LgLog::getLevelOutput(LgTypes::Warning);
    if (output == nullptr)
        std::cout << "none\n";
    else
        std::cout << (output->fail() ? "failed\n" : "open\n");
    LgLog::displaySetup();
    VnTest::stop();
    return 0;
}

#if !defined(_WIN32)  // which has no empty variables
TEST(LgLog, anEmptyVariableNamesAFileThatCanNotBe)
{
    const VnTest::TempFolder folder;
    const ChildRun run =
        Child("lgLogEmptyName").with("VN_LOG_WARNING", "").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out.starts_with("failed\n"));
    EXPECT_NE(run.out.find("Warning:  \n"), std::string::npos) << run.out;
}

TEST(LgLog, anEmptyDirectoryVariableIsNone)
{
    const VnTest::TempFolder folder;
    const ChildRun run = Child("lgLogEmptyName").with("T4Q_TEST_DIR", "").with("TMPDIR", folder.path()).run();
    EXPECT_NE(run.out.find("Warning: " + folder.path("events.log") + " \n"), std::string::npos) << run.out;
}
#endif

TEST_F(LgLogTest, levelsThatNameOneFileShareItsStream)
{
    const std::string path = folder.path("shared.log");
    set("VN_LOG_FATAL_ERROR", path);
    set("VN_LOG_WARNING", "%+" + path);  // the first one's stream, whatever this says
    start();
    EXPECT_EQ(LgLog::getLevelOutput(LgTypes::FatalError), LgLog::getLevelOutput(LgTypes::Warning));
    EXPECT_NE(LgLog::getLevelOutput(LgTypes::FatalError), LgLog::getLevelOutput(LgTypes::RecoverableError));
    stop();
    ASSERT_EQ(VnTest::linesOf(path).size(), 5u);
    expectStartBanner(VnTest::linesOf(path), 0);
    EXPECT_EQ(VnTest::linesOf(path)[4], stopped);
    EXPECT_EQ(displayed(LgTypes::FatalError), path + " ")
        << "a name that was given stays, at the level that had the file";
    EXPECT_EQ(displayed(LgTypes::Warning), "stdout, [Append]");
}

TEST_F(LgLogTest, filesBeginAnewUnlessTheyAreAppendedTo)
{
    const std::string begun = folder.file("begun.log", "old\n"), continued = folder.file("continued.log", "old\n");
    set("VN_LOG_WARNING", begun);
    set("VN_LOG_TRACING", "+" + continued);
    start();
    stop();
    EXPECT_EQ(VnTest::linesOf(begun).front(), "===== Message Logger Startup =====");
    ASSERT_EQ(VnTest::linesOf(continued).size(), 6u);
    EXPECT_EQ(VnTest::linesOf(continued)[0], "old");
    expectStartBanner(VnTest::linesOf(continued), 1);
}

TEST_F(LgLogTest, withoutTimeStampsABannerIsOneLine)
{
    set("VN_LOG_DISABLE_TIMESTAMPS", "0");  // any value
    start();
    EXPECT_FALSE(LgLog::isTimeStampsEnabled());
    StampedQueue queue;
    queue.log(5, "Cache text");
    LgReader().flushAll();
    queue.end();
    stop();
    EXPECT_EQ(events(), (std::vector<std::string>{"===== Message Logger Startup =====", "Cache text", stopped}));
}

TEST_F(LgLogTest, linesFollowABufferThatAProgramPutsIntoTheStream)
{
    set("VN_LOG_DISABLE_TIMESTAMPS", "1");
    start();
    StampedQueue queue;
    std::ostream& stream = *LgLog::getLevelOutput(LgTypes::Warning);
    std::stringbuf elsewhere;
    std::streambuf* const own = stream.rdbuf(&elsewhere);
    queue.log(5, "elsewhere");
    LgReader().flushAll();
    stream.rdbuf(own);
    queue.log(6, "back");
    LgReader().flushAll();
    queue.end();
    stop();
    EXPECT_EQ(elsewhere.str(), "elsewhere\n");
    EXPECT_EQ(events(), (std::vector<std::string>{"===== Message Logger Startup =====", "back", stopped}));
}

VN_CHILD(lgLogBanner)
{
    VnTest::start();
    std::ostream& stream = *LgLog::getLevelOutput(LgTypes::Warning);
    std::cout << stream.precision() << ' ' << ((stream.flags() & std::ios::floatfield) == std::ios::fixed) << '\n';
    char resolution[64];
    std::snprintf(resolution, sizeof resolution, "%.9f", HwCounter::resolution());
    std::cout << resolution << '\n';
    VnTest::stop();
    return 0;
}

TEST(LgLog, theBannerTellsTheSecondsPerCount)
{
    const VnTest::TempFolder folder;
    const ChildRun run = Child("lgLogBanner").with("T4Q_TEST_DIR", folder.path()).run();
    const std::vector<std::string> lines = VnTest::linesOf(folder.path("events.log"));
    ASSERT_EQ(lines.size(), 5u);
    const std::string resolution = lines[3].substr(23);
    EXPECT_EQ(run.out, "6 1\n" + resolution + "\n");
    EXPECT_EQ(resolution.substr(0, 2), "0.");
    EXPECT_EQ(resolution.size(), 11u);
    EXPECT_EQ(run.exitCode, 0);
}

TEST_F(LgLogTest, aDirectoryThatCanNotBeMadeLeavesNoDefaultFiles)
{
    set("T4Q_TEST_DIR", folder.path("missing") + "/inner");
    set("VN_LOG_WARNING", folder.path("explicit.log"));
    start();
    EXPECT_EQ(displayed(), "===== Log Setup =====\n"
                           "Internal Error: Disabled\n"
                           "Fatal Error: \n"
                           "Error: \n"
                           "Warning: " +
                               folder.path("explicit.log") +
                               " \n"
                               "Informational: \n"
                               "Tracing: stdout, \n"
                               "Profiling: Disabled\n"
                               "===== End Setup =====\n");
    stop();
    EXPECT_EQ(VnTest::linesOf(folder.path("explicit.log")).size(), 5u);
}

TEST_F(LgLogTest, theDirectoryIsMade)
{
    set("T4Q_TEST_DIR", folder.path("made"));
    start();
    stop();
    EXPECT_EQ(VnTest::linesOf(folder.path("made/events.log")).size(), 5u);
}

TEST_F(LgLogTest, aFileInTheDirectorysPlaceIsAFailure)
{
    set("T4Q_TEST_DIR", folder.file("file"));
    VnTest::expectThrow<ExInternalError, std::runtime_error>([] { LgLog::init(); },
                                                             "A regular file with the same path name exists.");
}

TEST_F(LgLogTest, aFailureOfASecondInitLeavesNothingOfTheFirst)
{
    start();
    set("T4Q_TEST_DIR", folder.file("file"));
    EXPECT_THROW(LgLog::init(), ExInternalError);
    for (int level = 0; level < 7; ++level) {
        EXPECT_EQ(displayed(LgTypes::Level(level)), "Disabled");
        EXPECT_EQ(LgLog::getLevelOutput(LgTypes::Level(level)), nullptr);
        EXPECT_FALSE(LgLog::isLevelEchoed(LgTypes::Level(level)));
    }
}

TEST_F(LgLogTest, aFileThatCanNotBeOpenedTakesNothingAndSaysNothing)
{
    set("VN_LOG_WARNING", "%" + folder.path("missing") + "/warning.log");
    start();
    std::ostream const* const output = LgLog::getLevelOutput(LgTypes::Warning);
    ASSERT_NE(output, nullptr);
    EXPECT_TRUE(output->fail());
    StampedQueue queue(0xABC);
    queue.log(5, "Cache text");
    testing::internal::CaptureStdout();
    LgReader().flushAll();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "0000000000 0000000005 (0x00000abc) Warning: Cache text\n")
        << "the echo works";
    queue.end();
    stop();
}

TEST_F(LgLogTest, thresholdAndGroupsComeFromTheEnvironment)
{
    set("VN_LOG_DEFAULT_LEVEL", "Informational");
    set("VN_LOG_GROUPS", "Radiosity=Profiling");
    start();
    EXPECT_EQ(LgMajorGroup::getDefaultThreshold(), LgTypes::Informational);
    EXPECT_EQ(LgMajorGroup::getInstanceForName("Radiosity").getLogLevels(), 0xFAu);
    EXPECT_EQ(LgMajorGroup::getInstanceForName("new").getLogLevels(), 0xF8u);
}

TEST_F(LgLogTest, anUnknownThresholdIsPassedOverInSilence)
{
    set("VN_LOG_DEFAULT_LEVEL", "informational");
    testing::internal::CaptureStdout();
    start();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(LgMajorGroup::getDefaultThreshold(), LgTypes::Warning);
}

TEST_F(LgLogTest, aNumberThatIsNoLevelHasNothing)
{
    start();
    for (int level : {-1, LgTypes::Profiling + 1}) {
        SCOPED_TRACE(level);
        EXPECT_EQ(LgLog::getLevelFileName(LgTypes::Level(level)), nullptr);
        EXPECT_EQ(LgLog::getLevelOutput(LgTypes::Level(level)), nullptr);
        EXPECT_FALSE(LgLog::isLevelEchoed(LgTypes::Level(level)));
    }
    EXPECT_NE(LgLog::getLevelFileName(LgTypes::InternalError), nullptr);
    EXPECT_NE(LgLog::getLevelFileName(LgTypes::Profiling), nullptr);
}

VN_CHILD(lgLogRegistryBeforeTheStart)
{
    std::cout << (LgLog::getRegistry() == nullptr);
    const ObjPtr<LgRegistry> before = LgLog::setRegistry(ObjPtr<LgRegistry>(new LgSimpleRegistry));
    std::cout << (before.get() == nullptr) << (LgLog::getRegistry() != nullptr) << '\n';
    return 0;
}

TEST_F(LgLogTest, aRegistryMayBeSetWhereThereWasNone)
{
    VnTest::expectOutput("lgLogRegistryBeforeTheStart", "111\n");
}

TEST_F(LgLogTest, whatAProgramWritesToAnOutputItselfMayBeLongerThanTheBuffer)
{
    start();
    std::ostream& output = *LgLog::getLevelOutput(LgTypes::Warning);
    const std::string path = folder.path("events.log");
    const std::string text(200001, 'x');
    EXPECT_EQ(output.tellp(), static_cast<std::streamoff>(VnTest::contentOf(path).size()));
    output << text << '\n';
    EXPECT_EQ(output.tellp(), static_cast<std::streamoff>(VnTest::contentOf(path).size() + text.size() % 65536 + 1))
        << "what waits counts";
    output.flush();
    EXPECT_TRUE(output.good());
    EXPECT_EQ(VnTest::linesOf(path).back(), text);
}

TEST_F(LgLogTest, anOutputIsWrittenAtItsEndAlone)
{
    start();
    std::ostream& output = *LgLog::getLevelOutput(LgTypes::Warning);
    std::vector<std::string> expected = events();
    for (const std::ios::seekdir from : {std::ios::beg, std::ios::cur, std::ios::end})
        for (int offset : {-1, 0, 1}) {
            if (from == std::ios::cur && offset == 0)
                continue;  // asks for the place
            output.seekp(offset, from);
            EXPECT_TRUE(output.fail()) << offset;
            output.clear();
        }
    output << "last" << std::endl;
    expected.emplace_back("last");
    EXPECT_EQ(events(), expected);
}

VN_CHILD(lgLogThreshold)
{
    VnTest::start();
    std::cout << LgMajorGroup::getDefaultThreshold() << '\n';
    VnTest::stop();
    return 0;
}

TEST_F(LgLogTest, theFirstAndTheLastLevelAreThresholdsAndAnEmptyWordIsNone)
{
    for (int level : {LgTypes::InternalError, LgTypes::Tracing, LgTypes::Profiling})
        EXPECT_EQ(Child("lgLogThreshold")
                      .with("T4Q_TEST_DIR", folder.path())
                      .with("VN_LOG_DEFAULT_LEVEL", LgTypes::levelToString(LgTypes::Level(level)))
                      .run()
                      .out,
                  std::to_string(std::max<int>(level, LgTypes::FatalError)) + "\n");
    EXPECT_EQ(
        Child("lgLogThreshold").with("T4Q_TEST_DIR", folder.path()).with("VN_LOG_DEFAULT_LEVEL", "").run().out,
        std::to_string(LgTypes::Warning) + "\n");
}

TEST_F(LgLogTest, blockingTraceIsOnAtAnyValue)
{
    start();
    EXPECT_FALSE(LgLog::getBlockingTrace());
    LgLog::setBlockingTrace(true);
    EXPECT_TRUE(LgLog::getBlockingTrace());
    stop();
    start();
    EXPECT_FALSE(LgLog::getBlockingTrace()) << "each start asks the environment";
    stop();
    set("VN_BLOCKING_TRACE", "0");
    start();
    EXPECT_TRUE(LgLog::getBlockingTrace());
}

TEST_F(LgLogTest, switchesSwitch)
{
    EXPECT_FALSE(LgLog::isLoggerActive());
    LgLog::setLoggerActivation(true);
    EXPECT_TRUE(LgLog::isLoggerActive());
    LgLog::disableTimeStamps();
    EXPECT_FALSE(LgLog::isTimeStampsEnabled());
    LgLog::enableTimeStamps();
    EXPECT_TRUE(LgLog::isTimeStampsEnabled());
    for (int level = 0; level < 7; ++level)
        EXPECT_EQ(LgLog::isInactiveOutputAllowed(LgTypes::Level(level)), level != LgTypes::Profiling);
}

TEST_F(LgLogTest, valuesThatAreNoLevelHaveNoOutput)
{
    start();
    for (const int value : {-1, 7, 1000}) {
        EXPECT_FALSE(LgLog::isLevelEchoed(LgTypes::Level(value)));
        EXPECT_EQ(LgLog::getLevelOutput(LgTypes::Level(value)), nullptr);
    }
    StampedQueue queue;
    queue.log(5, "nowhere", LgTypes::Level(99));
    LgReader().flushAll();
    queue.end();
    EXPECT_TRUE(messages().empty());
}

TEST_F(LgLogTest, theStartIsAStampOfInit)
{
    const std::uint64_t before = HwCounter::timeStamp();
    start();
    EXPECT_LE(before, LgLog::getStart());
    EXPECT_GE(HwCounter::timeStamp(), LgLog::getStart());
}

TEST_F(LgLogTest, theFirstQueueFunctionHasOneQueueForAll)
{
    LgQueue& queue = LgLog::getQueue();
    EXPECT_EQ(&LgLog::getQueue(), &queue);
    EXPECT_EQ(queue.getThreadId(), 0u);
    LgLog::setQueueFunction(getTestQueue);
    EXPECT_EQ(LgLog::getQueue().getThreadId(), 0x77u);
    LgLog::setQueueFunction(nullptr);
    EXPECT_EQ(&LgLog::getQueue(), &queue);
}

VN_CHILD(lgLogFirstQueue)
{
    VnTest::start();
    LgLog::setLoggerActivation(true);
    const LgMinorGroup group(LgMajorGroup::getInstanceForName("Base"), "Test");
    for (int i = 0; i < 1500; ++i)
        VN_LOG(group, LgTypes::Warning, i);
    LgReader().flushAll();
    std::cout << LgReader().eventsPending();
    LgQueue& queue = LgLog::getQueue();
    int messages = 0, losses = 0;
    char text[32768];
    for (; !queue.isEmpty(); queue.removeEntry()) {
        if (queue.readEntry().isOverflowEntry())
            losses += queue.readEntry().getOverflowCount();
        else {
            queue.getStream() >> text;
            ++messages;
        }
    }
    std::cout << ' ' << messages << ' ' << losses << '\n';
    VnTest::stop();
    return 0;
}

TEST(LgLog, theFirstQueueIsSeenByNoReader)
{
    const VnTest::TempFolder folder;
    const ChildRun run = Child("lgLogFirstQueue").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.out, "0 1022 478\n");
    EXPECT_EQ(VnTest::linesOf(folder.path("events.log")).size(), 5u);
}

TEST_F(LgLogTest, destroyForgetsDefaultPathsAndStreams)
{
    set("VN_LOG_WARNING", "%" + folder.path("warning.log"));
    start();
    stop();
    for (int level = 0; level < 7; ++level)
        EXPECT_EQ(LgLog::getLevelOutput(LgTypes::Level(level)), nullptr);
    EXPECT_EQ(displayed(LgTypes::FatalError), "");
    EXPECT_EQ(displayed(LgTypes::Tracing), "stdout, ") << "the echo stays";
    EXPECT_NE(LgLog::getRegistry(), nullptr) << "and so does the registry";
    LgLog::destroy();  // nothing is left to do
}

TEST_F(LgLogTest, theLockIsTheOneOfItsNameAndOutlivesDestroy)
{
    start();
    EXPECT_EQ(LgLog::getInterProcessLock(), nullptr);
    stop();
    const VnTest::LockName name(folder);
    set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", name.get());
    start();
    LgInterProcessLock* const lock = LgLog::getInterProcessLock();
    ASSERT_NE(lock, nullptr);
    const ObjPtr<LgInterProcessLock> same(LgInterProcessLock::create(name.get().c_str()));
    EXPECT_THROW(same->unlock(), ExSysErrorWindows);
    lock->lock();
    same->unlock();
    stop();
    EXPECT_EQ(LgLog::getInterProcessLock(), lock);
}

TEST_F(LgLogTest, anEventFlushedAfterTheEndIsOnlyEchoed)
{
    set("VN_LOG_WARNING", "%" + folder.path("warning.log"));
    start();
    StampedQueue queue;
    queue.log(5, "late");
    stop();
    LgLog::disableTimeStamps();
    testing::internal::CaptureStdout();
    LgReader().flushAll();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "late\n");
    queue.end();
    EXPECT_EQ(VnTest::linesOf(folder.path("warning.log")).back(), stopped);
}

TEST_F(LgLogTest, whatIsLeftInTheQueuesStaysUnwritten)
{
    start();
    StampedQueue queue;
    queue.log(5, "left");
    stop();
    EXPECT_TRUE(messages().empty());
    EXPECT_FALSE(queue->isEmpty());
    queue.end();
}

TEST_F(LgLogTest, itStartsAgainWithANewRegistryAndNewFiles)
{
    start();
    StampedQueue queue;
    queue.log(5, "first");
    LgReader().flushAll();
    EXPECT_EQ(messages().size(), 1u);
    stop();
    start();
    EXPECT_TRUE(LgLog::getRegistry()->getQueueList().empty());
    EXPECT_TRUE(messages().empty()) << "the file began anew";
    delete &*queue;
}

TEST_F(LgLogTest, initWithoutAnEndBeforeLeaksNothing)
{
    start();
    LgLog::init();
    stop();
    EXPECT_EQ(events().size(), 5u);
}

namespace
{
/// A registry that tells what is asked of it.
class TellingRegistry : public LgSimpleRegistry
{
public:
    explicit TellingRegistry(std::string& told) : _told(told) {}
    ~TellingRegistry() override { _told += "~"; }

    void registerQueue(LgQueue* queue) override
    {
        _told += "+" + std::to_string(queue->getThreadId());
        LgSimpleRegistry::registerQueue(queue);
    }
    void deregisterQueue(LgQueue* queue) override
    {
        _told += "-" + std::to_string(queue->getThreadId());
        LgSimpleRegistry::deregisterQueue(queue);
    }

private:
    std::string& _told;
};
}  // namespace

TEST_F(LgLogTest, aNewRegistryTakesTheQueuesOver)
{
    start();
    std::string first, second;
    LgQueue one(1), two(2);
    {
        const ObjPtrRet<LgRegistry> simple = LgLog::setRegistry(ObjPtr<LgRegistry>(new TellingRegistry(first)));
        EXPECT_NE(simple.get(), nullptr);
        LgLog::getRegistry()->registerQueue(&one);
        LgLog::getRegistry()->registerQueue(&two);
        EXPECT_EQ(first, "+1+2");
        const ObjPtrRet<LgRegistry> before = LgLog::setRegistry(ObjPtr<LgRegistry>(new TellingRegistry(second)));
        EXPECT_EQ(second, "+1+2");
        EXPECT_EQ(first, "+1+2-1-2");
        EXPECT_TRUE(before->getQueueList().empty());
        EXPECT_EQ(LgLog::getRegistry()->getQueueList(), (List<LgQueue*>{&one, &two}));
    }
    EXPECT_EQ(first, "+1+2-1-2~") << "the caller owned it";
    EXPECT_EQ(LgLog::setRegistry(ObjPtr<LgRegistry>()).get(), nullptr);
    EXPECT_EQ(second, "+1+2") << "null changes nothing";
    LgLog::init();
    EXPECT_EQ(second, "+1+2~") << "the logger owned it";
    stop();
}

namespace
{
int evaluations = 0;

int evaluated()
{
    return ++evaluations;
}
}  // namespace

TEST_F(LgLogTest, aMessageThatIsNotWantedIsNotEvaluated)
{
    start();
    LgMajorGroup& major = LgMajorGroup::getInstanceForName("Base");
    const LgMinorGroup group(major, "Test");
    evaluations = 0;
    testing::internal::CaptureStdout();
    VN_LOG(group, LgTypes::Informational, "disabled " << evaluated());
    major.setLogThreshold(LgTypes::Profiling, false);
    VN_LOG(group, LgTypes::Profiling, "silent while inactive " << evaluated());
    EXPECT_EQ(evaluations, 0);
    VN_LOG(group, LgTypes::Warning, "said " << evaluated());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Test said 1\n");

    LgLog::setQueueFunction(getTestQueue);
    LgLog::setLoggerActivation(true);
    LgQueue& queue = *getTestQueue();
    {
        const LgQueue::SuppressGuard guard(queue);
        VN_LOG(group, LgTypes::Warning, "suppressed " << evaluated());
    }
    EXPECT_EQ(evaluations, 1);
    VN_LOG(group, LgTypes::Profiling, "queued " << evaluated() << ' ' << true);
    EXPECT_EQ(evaluations, 2);
    char text[32768];
    EXPECT_EQ(queue.readEntry().getLevel(), LgTypes::Profiling);
    queue.getStream() >> text;
    EXPECT_STREQ(text, "Test queued 2 true");
    queue.removeEntry();
    EXPECT_TRUE(queue.isEmpty());

    if (evaluations == 2)
        VN_LOG(group, LgTypes::Tracing, "a macro in a bare branch");
    else
        FAIL();
}
