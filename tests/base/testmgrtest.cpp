#include <base/exbadexception.h>
#include <base/exinternalerror.h>
#include <base/hmgcex.h>
#include <base/incontextaliasmgr.h>
#include <base/lgstream.h>
#include <base/osenv.h>
#include <base/testgroup.h>
#include <base/testmgr.h>
#include <base/testmgrhandlers_p.h>
#include <base/trace.h>

#include "child.h"
#include "tempfolder.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <iostream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using Vn::TestGroup;
using Vn::TestMgr;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::TempFolder;

namespace
{
/// Tells each call, and does in execute() what its first argument says.
class Obedient : public TestGroup
{
public:
    Obedient(char const* name, bool printsHeaders, bool wantsName) : TestGroup(name)
    {
        setPrintHeaders(printsHeaders);
        setGroupNameInArgs(wantsName);
    }

    void prepare(int argc, char** const argv) override { tell("prepare", argc, argv); }

    void execute(int argc, char** const argv) override
    {
        tell("execute", argc, argv);
        const std::string wish = argc > 0 ? argv[0] : "";
        if (wish == "internal")
            throw Vn::ExInternalError("a file", 7, "as told");
        if (wish == "standard")
            throw std::domain_error("as told");
        if (wish == "number")
            throw 42;
        if (wish == "garbage")
            throw Vn::HmGCEx::ExGarbageDetected("a file", 8);
        if (wish == "nothrow")
            []() noexcept { std::stoi("no number, and nobody catches this"); }();
        if (wish == "thread")
            std::thread([] { throw std::domain_error("nor this"); }).join();
        if (wish == "pixie")
            std::cout << "pixified: " << isPixified() << "\n";
    }

    void terminate() override { std::cout << "terminate\n"; }

private:
    static void tell(char const* what, int argc, char** argv)
    {
        std::cout << what << " " << argc;
        for (int i = 0; i < argc; ++i)
            std::cout << " " << argv[i];
        std::cout << (argv[argc] == nullptr ? "\n" : " not ended\n");
    }
};

/// The words behind the child's name as the command line of a test program, which is called `program`.
int runDriver(char const* program, int argc, char** argv)
{
    static Obedient plain("plain", true, false), bare("bare", false, false), named("named", false, true);
    std::vector<std::string> words{program};
    words.insert(words.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const int exitCode = TestMgr::runTest(static_cast<int>(words.size()), arguments.data());
    std::cout.flush();
    return exitCode;
}

ChildRun drive(std::vector<std::string> words, char const* body = "driver")
{
    Child child(body);
    for (char const* name : {"VN_TRACE_OPTIONS", "VN_RUN_TEST_MSGS", "VN_LOG_DEFAULT_LEVEL", "VN_DEBUG_INITIALIZE"})
        child.without(name);
    return child.arguments(std::move(words)).run();
}

const std::string usage = "\nArguments: \n\n<testGroup> { <args> } \n<testGroup> -perf <fileName>\n"
                          "<testGroup> -dumpLeaks { <args> }\n<testGroup> -dumpLibs { <args> }\n"
                          "<testGroup> -detectLeaks { <args> }\n";
const std::string heading = "| \n| Executing plain\n| \n";
const std::string ending = "| \n| ***** End *****\n| \n| Test group executed successfully.\n| \n";

void expectRun(ChildRun const& run, int exitCode, std::string const& out)
{
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "");
#if defined(_WIN32)
    // An aborted process ends with 3 as well, and for such a one it is taken.
    const bool looksAborted = exitCode == 3;
#else
    const bool looksAborted = false;
#endif
    EXPECT_EQ(run.exitCode, looksAborted ? -1 : exitCode);
    EXPECT_EQ(run.crashed, looksAborted);
}
}  // namespace

VN_CHILD(driver)
{
    return runDriver("program", argc, argv);
}

VN_CHILD(pixieDriver)
{
    return runDriver("some.folder/tests.pixie-d", argc, argv);
}

VN_CHILD(pixieFolderDriver)
{
    return runDriver("some.pixie/tests", argc, argv);
}

VN_CHILD(driverWithAnOption)
{
    static const Vn::InContextAlias<Vn::InInitArg, 1> option("o:", "an option of a library");
    return runDriver("program", argc, argv);
}

TEST(TestMgr, withoutArgumentsItShowsHowToCallItAndTheGroups)
{
    const ChildRun run = drive({});
    EXPECT_EQ(run.exitCode, 0);
    const std::string start = usage + "\n\nRegistered test groups:\n\nplain \n\nbare \n\nnamed \n\n";
    EXPECT_EQ(run.out.substr(0, start.size()), start);
    EXPECT_NE(run.out.find("Main"), std::string::npos) << "the levels of trace";
}

TEST(TestMgr, runsAGroupBetweenItsHeadings)
{
    expectRun(drive({"plain", "a", "b"}), 0, heading + "prepare 2 a b\nexecute 2 a b\nterminate\n" + ending);
    expectRun(drive({"plain"}), 0, heading + "prepare 0\nexecute 0\nterminate\n" + ending);
}

TEST(TestMgr, aGroupMayDoWithoutHeadingsAndWithItsName)
{
    expectRun(drive({"bare", "a"}), 0, "prepare 1 a\nexecute 1 a\nterminate\n");
    expectRun(drive({"named", "a"}), 0, "prepare 2 named a\nexecute 2 named a\nterminate\n");
    expectRun(drive({"-dumpLeaks", "named", "a"}), 0,
              "| Warning: -dumpLeaks specified but MemDebug version of smartheap is not loaded\n"
              "prepare 2 named a\nexecute 2 named a\nterminate\n");
}

TEST(TestMgr, headingsAreTraceAndCanBeHidden)
{
    Child child("driver");
    expectRun(child.arguments({"plain"}).with("VN_TRACE_OPTIONS", "hide=Main").without("VN_RUN_TEST_MSGS").run(), 0,
              "prepare 0\nexecute 0\nterminate\n");
}

TEST(TestMgr, anUnknownGroupIsToldAndExitsWithOne)
{
    const std::string text = "Abnormal termination: Unknown test group name.\n";
    expectRun(drive({"nobody"}), 1, text);
    expectRun(drive({"Plain", "x"}), 1, text);
    expectRun(drive({"-dumpLibs", "nobody"}), 1, text);
    // An option with no group behind it.
    const std::string warning = " specified but MemDebug version of smartheap is not loaded\n";
    expectRun(drive({"-dumpLeaks"}), 1, "| Warning: -dumpLeaks" + warning + text);
    expectRun(drive({"-detectLeaks"}), 1, "| Warning: -detectLeaks" + warning + text);
}

TEST(TestMgr, leakChecksRunTheGroupAfterAWarning)
{
    for (std::string option : {"-dumpLeaks", "-detectLeaks"})
        expectRun(drive({option, "plain", "x"}), 0,
                  "| Warning: " + option + " specified but MemDebug version of smartheap is not loaded\n" +
                      heading + "prepare 1 x\nexecute 1 x\nterminate\n" + ending);
}

TEST(TestMgr, garbageEndsARunWithThreeAndWithoutAWord)
{
    for (std::string option : {"-dumpLeaks", "-detectLeaks"})
        expectRun(drive({option, "bare", "garbage"}), 3,
                  "| Warning: " + option + " specified but MemDebug version of smartheap is not loaded\n" +
                      "prepare 1 garbage\nexecute 1 garbage\n");
    EXPECT_EQ(drive({"bare", "garbage"}).exitCode, 2) << "an exception like any other without a leak check";
}

TEST(TestMgr, listsTheLibrariesAloneOrBehindAGroup)
{
    const ChildRun alone = drive({"-dumpLibs"});
    EXPECT_EQ(alone.exitCode, 0);
    EXPECT_EQ(alone.out.substr(0, 20), "| Loaded Libraries:\n");
    EXPECT_NE(alone.out.find("VNbase"), std::string::npos);
    const ChildRun behind = drive({"-dumpLibs", "plain", "x"});
    EXPECT_EQ(behind.exitCode, 0);
    const std::string group = heading + "prepare 1 x\nexecute 1 x\nterminate\n" + ending;
    EXPECT_EQ(behind.out.substr(0, group.size() + 20), group + "| Loaded Libraries:\n");
    EXPECT_NE(behind.out.find("VNbase"), std::string::npos);
    // The list is no trace.
    Child hidden("driver");
    const ChildRun run = hidden.arguments({"-dumpLibs"}).with("VN_TRACE_OPTIONS", "off").run();
    EXPECT_EQ(run.out.find("Loaded Libraries"), std::string::npos);
    EXPECT_NE(run.out.find("VNbase"), std::string::npos);
}

TEST(TestMgr, timesGroupsByAList)
{
    const TempFolder temp;
    const ChildRun run = drive({"-perf", temp.file("list", "plain 2 a\n"), "ignored"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out.substr(0, 48), "prepare 1 a\nExecuting plain cycle 0 a \nexecute 1");
    EXPECT_NE(run.out.find("Group Name              nbCycles   average time    options\n"), std::string::npos);
    const std::string end = " a \n\n\n";
    EXPECT_EQ(run.out.substr(run.out.size() - end.size()), end)
        << "the manager ends the table with a line end of its own";
    EXPECT_EQ(run.out.find("Executing plain\n"), std::string::npos) << "a list has no headings";
}

TEST(TestMgr, aListThatIsMissingExitsWithOneAndABadOneWithTwo)
{
    expectRun(drive({"-perf"}), 1, "Abnormal termination: " + usage + "\n");
    const ChildRun run = drive({"-perf", "no such list"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("Exception encountered: [Exception Type = "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Invalid file name : <no such list>.\n"), std::string::npos) << run.out;
}

TEST(TestMgr, whatAGroupThrowsIsReportedAndExitsWithTwo)
{
    const std::string called = "prepare 1 internal\nexecute 1 internal\n";
    const ChildRun internal = drive({"bare", "internal"});
    EXPECT_EQ(internal.exitCode, 2);
    EXPECT_EQ(internal.out, called + "Exception encountered: " +
                                Vn::ExInternalError("a file", 7, "as told").getDetailedReason() + "\n")
        << "neither terminate nor an end";
    const ChildRun heads = drive({"plain", "internal"});
    EXPECT_EQ(heads.out.find("End"), std::string::npos);

    expectRun(drive({"bare", "number"}), 2,
              "prepare 1 number\nexecute 1 number\nException encountered: Unknown exception.\n");
}

TEST(TestMgr, aStandardExceptionsReportEndsInAnAddress)
{
    const ChildRun run = drive({"bare", "standard"});
    EXPECT_EQ(run.exitCode, 2);
    const std::string start = "prepare 1 standard\nexecute 1 standard\nException encountered: [Exception Type = " +
                              std::string(typeid(std::domain_error).name()) + "]\nas told\n";
    EXPECT_EQ(run.out.substr(0, start.size()), start);
    const std::string address = run.out.substr(start.size());
    std::ostringstream sample;
    sample << static_cast<void const*>(&sample);
    const std::string prefix = sample.str().substr(0, 2);
    EXPECT_TRUE(std::regex_match(address, std::regex("(0x)?[0-9a-fA-F]{6,16}\n"))) << address;
    EXPECT_EQ(address.substr(0, 2) == "0x", prefix == "0x") << "the stream's own form of a pointer";
}

TEST(TestMgr, theLibraryIsDownWhenAnExceptionIsReported)
{
    Child child("driverWithPackage");
    const ChildRun run = child.arguments({"bare", "internal"}).without("VN_RUN_TEST_MSGS").run();
    EXPECT_EQ(run.exitCode, 2);
    const std::size_t stop = run.out.find("stop package\n");
    ASSERT_NE(stop, std::string::npos) << run.out;
    EXPECT_LT(stop, run.out.find("Exception encountered: "));
}

VN_CHILD(driverWithPackage)
{
    static VnTest::NumberedPackage<1> package("package", {Vn::InInit<VnInit::base>::getType()});
    return runDriver("program", argc, argv);
}

TEST(TestMgr, aFailedStartIsReportedToo)
{
    const ChildRun run = drive({"bare"}, "driverWithoutADependency");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("Exception encountered: [Exception Type = "), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("prepare"), std::string::npos);
}

VN_CHILD(driverWithoutADependency)
{
    static VnTest::NumberedPackage<1> package("package", {&typeid(int)});
    return runDriver("program", argc, argv);
}

TEST(TestMgr, reportsGoToTheFileThatTheVariableNames)
{
    const TempFolder temp;
    const std::string file = temp.path("messages");
    Child child("driver");
    expectRun(child.arguments({"nobody"}).with("VN_RUN_TEST_MSGS", file).run(), 1, "");
    std::string content = VnTest::contentOf(file);
    std::erase(content, '\r');
    EXPECT_EQ(content, "Abnormal termination: Unknown test group name.\n");
}

TEST(TestMgr, optionsOfALibraryAreNotTheDrivers)
{
    expectRun(drive({"-o", "value", "bare", "x"}, "driverWithAnOption"), 0,
              "prepare 1 x\nexecute 1 x\nterminate\n");
}

TEST(TestMgr, aPixieIsKnownByTheNameOfItsFile)
{
    EXPECT_NE(drive({"bare", "pixie"}).out.find("pixified: 0\n"), std::string::npos);
    EXPECT_NE(drive({"bare", "pixie"}, "pixieDriver").out.find("pixified: 1\n"), std::string::npos);
    EXPECT_NE(drive({"bare", "pixie"}, "pixieFolderDriver").out.find("pixified: 0\n"), std::string::npos)
        << "the folder's name doesn't count";
}

TEST(TestMgr, theVersionsAreLoggedWhereThatIsWanted)
{
    Child child("driver");
    const ChildRun run =
        child.arguments({"bare"}).with("VN_LOG_DEFAULT_LEVEL", "Informational").without("VN_RUN_TEST_MSGS").run();
    const std::regex expected(
        "BuildInfo Registered versioned libraries:\n"
        "NG Test Suite 1\\.0 Internal \\(\\[No Prod\\. #\\], [A-Z][a-z]{2} [ 0-9]\\d \\d{4}\\)\n"
        "API Tessola 0\\.2 pre-alpha: \n"
        "\tlibVNbase \\(P\\. 187, [A-Z][a-z]{2} [ 0-9]\\d \\d{4}\\)\n"
        "\n"
        "prepare 0\nexecute 0\nterminate\n");
    EXPECT_TRUE(std::regex_search(run.out, expected)) << run.out;
}

TEST(TestMgr, whatNobodyCatchesIsToldAndAborts)
{
    for (std::string wish : {"nothrow", "thread"}) {
        SCOPED_TRACE(wish);
        const ChildRun run = drive({"bare", wish});
        EXPECT_TRUE(run.crashed);
        EXPECT_NE(run.out.find("+ terminateHandler()\nAbnormal termination: Terminate handler called.\n"),
                  std::string::npos)
            << run.out;
        EXPECT_EQ(run.out.find("terminate\n"), std::string::npos);
    }
}

VN_CHILD(unexpected)
{
    try {
        Vn::TestMgrHandlers::handleUnexpected();
    } catch (Vn::ExBadException const& failure) {
        std::cout << "caught " << failure.getFileName() << "\n";
    }
    return 0;
}

TEST(TestMgr, whatMayNotBeThrownBecomesABadException)
{
    const ChildRun run = drive({}, "unexpected");
    EXPECT_EQ(run.out.substr(0, 82),
              "+ unexpectedHandler()\n  | Bad exception encountered.\n  | Throwing exception [Excep");
    EXPECT_NE(run.out.find("\n  /\ncaught src/base/testmgr\n"), std::string::npos) << run.out;
}

TEST(TestMgr, noArgumentsAtAllAreNone)
{
    EXPECT_EQ(Child("driverWithNothing").without("VN_TRACE_OPTIONS").run().out.substr(0, usage.size()), usage);
}

VN_CHILD(driverWithNothing)
{
    char* none[] = {nullptr};
    return TestMgr::runTest(0, none);
}
