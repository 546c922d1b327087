#include <base/exinternalerror.h>
#include <base/hwcounter.h>
#include <base/testgroup.h>
#include <base/testperformer.h>
#include <base/trace.h>

#include "expectchild.h"
#include "expectthrow.h"
#include "tempfolder.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>

#if !defined(_WIN32)
#    include <fcntl.h>
#    include <spawn.h>
#    include <stdlib.h>
#    include <sys/wait.h>
#    include <unistd.h>
#endif

using Vn::OsFilePath;
using Vn::TestGroup;
using Vn::TestPerformer;
using VnTest::Child;
using VnTest::TempFolder;

static_assert(!std::is_default_constructible_v<TestPerformer> && !std::is_polymorphic_v<TestPerformer>);

namespace
{
/// Tells what it is called with.
class Telling : public TestGroup
{
public:
    explicit Telling(char const* name) : TestGroup(name) {}

    void prepare(int argc, char** const argv) override { tell("prepare", argc, argv); }
    void execute(int argc, char** const argv) override { tell("execute", argc, argv); }
    void terminate() override { std::cout << "terminate\n"; }
    void dump(std::ostream& stream) override { stream << "dumped"; }

private:
    static void tell(char const* what, int argc, char** const argv)
    {
        std::cout << what;
        for (int i = 0; i < argc; ++i)
            std::cout << " " << argv[i];
        std::cout << (argc < 16 && argv[argc] != nullptr ? " not ended\n" : "\n");
    }
};

class Quiet : public TestGroup
{
public:
    explicit Quiet(char const* name) : TestGroup(name) {}
    void execute(int, char** const) override {}
};

class Throwing : public TestGroup
{
public:
    explicit Throwing(char const* name) : TestGroup(name) {}
    void execute(int, char** const) override { throw std::domain_error("thrown by the group"); }
    void terminate() override { std::cout << "terminate\n"; }
};

/// Fails when its time has been taken.
class ThrowingLate : public TestGroup
{
public:
    explicit ThrowingLate(char const* name) : TestGroup(name) {}
    void execute(int, char** const) override {}
    void terminate() override { throw std::domain_error("thrown at the end"); }
};

/// The list, run in a process of its own with the groups "telling", "quiet", "throwing" and one of 47 characters.
/// Prints the table, or what was thrown. `argv[1]` is the list's file; those behind it are run too.
const std::string name47(47, 'n');

std::string outputOf(std::string const& list)
{
    const TempFolder temp;
    return Child("performed").arguments({temp.file("list", list)}).without("VN_TRACE_OPTIONS").run().out;
}

/// What is left of an output when the trace of an error is taken off.
std::string errorOf(std::string const& list)
{
    const std::string output = outputOf(list);
    const std::size_t start = output.find("error: ");
    return start == std::string::npos ? "no error in " + output : output.substr(start + 7);
}

const std::string heading = "\n\nGroup Name              nbCycles   average time    options\n"
                            "----------              --------   ------------    -------\n\n\n";

/// How many cycles each profiler tells, from 0 to 9.
std::string cyclesIn(std::string const& output)
{
    std::string cycles;
    for (std::size_t at = 0; (at = output.find("Nb of cycles:", at)) != std::string::npos; ++at)
        cycles += output.substr(output.find_first_of("0123456789", at), 1) + " ";
    return cycles;
}

/// The table's rows, times left out.
std::string rowsOf(std::string const& list)
{
    const std::string output = outputOf(list);
    const std::size_t start = output.find(heading);
    if (start == std::string::npos)
        return "no table in " + output;
    std::string rows = output.substr(start + heading.size());
    return std::regex_replace(rows, std::regex("  +[0-9]+\\.[0-9]{6}    "), " T ");
}
}  // namespace

VN_CHILD(performed)
{
    static Telling telling("telling");
    static Quiet quiet("quiet"), longest(name47.c_str());
    static Throwing throwing("throwing");
    static ThrowingLate throwingLate("late");
    VnTest::start();
    int exitCode = 0;
    for (int i = 1; i < argc; ++i) {
        try {
            TestPerformer::getInstance().execute(OsFilePath(argv[i]));
            std::cout << TestPerformer::getInstance();
        } catch (std::exception const& failure) {
            std::cout << "error: " << failure.what() << "\n";
            exitCode = 5;
        }
    }
    VnTest::stop();
    return exitCode;
}

TEST(TestPerformer, runsEachCycleInItsOrder)
{
    const std::string output = outputOf("telling 2 first second\n");
    std::string cycles;
    for (char const* number : {"0", "1"})
        cycles += std::string("prepare first second\nExecuting telling cycle ") + number +
                  " first second \nexecute first second\nEnd of cycle.  Call terminate.\n_todProfiler\n(PROFILE)\n"
                  "_hwProfiler\n(PROFILE)\nterminate\ndumped\n";
    // The profilers' own texts are tested elsewhere.
    std::string seen;
    std::istringstream lines(output.substr(0, output.find(heading)));
    bool isInProfile = false;
    for (std::string line; std::getline(lines, line);) {
        if (line == "_hwProfiler" || line == "terminate")
            isInProfile = false;
        if (!isInProfile)
            seen += line + "\n";
        if (line == "_todProfiler" || line == "_hwProfiler") {
            isInProfile = true;
            seen += "(PROFILE)\n";
        }
    }
    EXPECT_EQ(seen, cycles);
    EXPECT_NE(output.find("anonymous"), std::string::npos) << output;
}

TEST(TestPerformer, anEmptyListGivesHeadingsAlone)
{
    EXPECT_EQ(outputOf(""), heading + "\n");
    EXPECT_EQ(outputOf("\n\n\n"), heading + "\n");
    EXPECT_EQ(outputOf("   \n"), heading + "\n");
}

VN_CHILD(performedNothing)
{
    std::cout << TestPerformer::getInstance();
    return 0;
}

TEST(TestPerformer, theTableIsEmptyBeforeAnyList)
{
    VnTest::expectOutput("performedNothing", heading + "\n");
}

TEST(TestPerformer, eachLineIsARow)
{
    EXPECT_EQ(rowsOf("quiet 3 a bc\n\nquiet 1\n  telling   1   x  \nquiet 12"),
              "quiet                          3 T a bc \n"
              "quiet                          1 T \n"
              "telling                        1 T x \n"
              "quiet                         12 T \n\n");
}

TEST(TestPerformer, aNegativeNumberRunsNothing)
{
    EXPECT_EQ(outputOf("telling -1 a\n"), heading + "telling                       -1       0.000000    a \n\n");
}

TEST(TestPerformer, aLineWithoutANumberKeepsTheOneOfItsRecord)
{
    EXPECT_EQ(outputOf("telling\n"), heading + "telling                        0       0.000000    \n\n");
    const TempFolder temp;
    const std::string out = Child("performed")
                                .arguments({temp.file("first", "quiet 2\n"), temp.file("second", "quiet\n")})
                                .without("VN_TRACE_OPTIONS")
                                .run()
                                .out;
    const std::string second = out.substr(out.rfind(heading) + heading.size());
    EXPECT_EQ(second.substr(0, 32), "quiet                          2");
}

TEST(TestPerformer, numbersAreReadAsFarAsTheyGo)
{
    EXPECT_EQ(rowsOf("quiet 2x\n"), "quiet                          2 T \n\n");
    EXPECT_EQ(errorOf("quiet abc\n"), "Invalid number of cycles: <abc>.\n");
    EXPECT_EQ(errorOf("quiet 0\n"), "Invalid number of cycles: <0>.\n");
    EXPECT_EQ(errorOf("quiet -0x\n"), "Invalid number of cycles: <-0x>.\n");
    EXPECT_EQ(rowsOf("quiet -99999999999\n").substr(0, 40), "quiet                    -2147483648 T \n");
}

TEST(TestPerformer, namesEndAt47Characters)
{
    EXPECT_EQ(rowsOf(name47 + " 1\n"), name47 + "       1 T \n\n");
    EXPECT_EQ(errorOf(name47 + "n 1\n"), "Test group name is too long: <" + name47 + "n>.\n");
    EXPECT_EQ(errorOf("unknown 1\n"), "Invalid test group name: <unknown>.\n");
    EXPECT_EQ(errorOf("quiet\t3\n"), "Invalid test group name: <quiet\t3>.\n") << "a tab parts no words";
}

TEST(TestPerformer, aWordOf128CharactersIsLeftOutOfTheMessage)
{
    EXPECT_EQ(errorOf(std::string(127, 'x') + "\n"),
              "Test group name is too long: <" + std::string(127, 'x') + ">.\n");
    EXPECT_EQ(errorOf(std::string(128, 'x') + "\n"), "Test group name is too long: <\n");
    EXPECT_EQ(errorOf(std::string(130, 'x') + "\n"), "Test group name is too long: <\n");
}

TEST(TestPerformer, aShorterListLeavesNothingOfALongerOne)
{
    const TempFolder temp;
    const VnTest::ChildRun run =
        Child("performed")
            .arguments({temp.file("first", "telling -1 one two three\nquiet 1 four\nquiet -1 five six\n"),
                        temp.file("second", "telling 1 seven\n"), temp.file("third", "telling 1\n")})
            .without("VN_TRACE_OPTIONS")
            .run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("prepare seven\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("prepare\n"), std::string::npos) << run.out;
    const std::string last = run.out.substr(run.out.rfind(heading) + heading.size());
    EXPECT_EQ(std::count(last.begin(), last.end(), '\n'), 2) << "one row: " << last;
    EXPECT_EQ(run.out.find("Executing quiet"), run.out.rfind("Executing quiet")) << "it was in the first list only";
}

TEST(TestPerformer, eachGroupIsTimedForItself)
{
    EXPECT_EQ(cyclesIn(outputOf("quiet 2\ntelling 1\n")), "1 1 2 2 1 1 ") << "by either clock";
}

TEST(TestPerformer, aRunBehindOneThatFailedIsTimedForItself)
{
    const TempFolder temp;
    const std::string output = Child("performed")
                                   .arguments({temp.file("first", "late 1\n"), temp.file("second", "quiet 1\n")})
                                   .without("VN_TRACE_OPTIONS")
                                   .run()
                                   .out;
    EXPECT_EQ(cyclesIn(output), "1 1 1 1 ");
}

TEST(TestPerformer, argumentsEndAt16)
{
    std::string sixteen;
    for (int i = 1; i <= 16; ++i)
        sixteen += "a" + std::to_string(i) + " ";
    EXPECT_EQ(rowsOf("quiet 1 " + sixteen + "\n"), "quiet                          1 T " + sixteen + "\n\n");
    EXPECT_EQ(errorOf("quiet 1 " + sixteen + "a17\n"), "Too many args to test group.\n");
}

TEST(TestPerformer, groupsEndAt128)
{
    std::string list;
    for (int i = 0; i < 128; ++i)
        list += "quiet -1\n";
    const auto rows = [](std::string const& text) { return std::count(text.begin(), text.end(), '\n') - 1; };
    EXPECT_EQ(rows(rowsOf(list)), 128);
    EXPECT_EQ(rows(rowsOf(list.substr(0, list.size() - 1))), 128) << "without the last line end";
    EXPECT_EQ(errorOf(list + "quiet -1\n"), "Too many test groups in file.\n");
    EXPECT_EQ(errorOf(list + "\nx"), "Too many test groups in file.\n") << "an empty line, looked at too late";
    EXPECT_EQ(errorOf(list + "\n"), "Too many test groups in file.\n");
}

TEST(TestPerformer, aLineThatIsTooLongIsTheLast)
{
    const std::string row = "quiet -1 ";
    const std::string fits = row + std::string(255 - row.size(), 'x');
    const auto countOf = [](std::string const& text, char const* what) {
        int count = 0;
        for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
            ++count;
        return count;
    };
    EXPECT_EQ(countOf(rowsOf(fits + "\nquiet -1\n"), "quiet"), 2);
    const std::string cut = rowsOf(fits + "y\nquiet -1\n");
    EXPECT_EQ(countOf(cut, "quiet"), 1) << "reading stops without a word";
    EXPECT_EQ(countOf(cut, "y"), 0) << "and what was read is parsed";
    EXPECT_EQ(countOf(rowsOf("quiet -1\n" + fits + "\nquiet -1\n"), "quiet"), 3);
    const std::string second = rowsOf("quiet -1\n" + fits + "y\nquiet -1\n");
    EXPECT_EQ(countOf(second, "quiet"), 2);
    EXPECT_EQ(countOf(second, "y"), 0);
}

TEST(TestPerformer, aRowEndsAt255Characters)
{
    // 24 + 1 + 7 + 1 + 14 + 4 characters stand before the arguments.
    const std::string list = "quiet -1 " + std::string(203, 'x') + " " + std::string(20, 'y') + "\n";
    EXPECT_EQ(outputOf(list),
              heading + "quiet                         -1       0.000000    " + std::string(203, 'x') + " \n\n");
}

TEST(TestPerformer, whatCantBeReadIsNamed)
{
    const TempFolder temp;
    const auto errorFor = [](std::string const& path) {
        const std::string out = Child("performed").arguments({path}).without("VN_TRACE_OPTIONS").run().out;
        return out.substr(std::min(out.find("error: "), out.size()));
    };
    EXPECT_EQ(errorFor("no such list"), "error: Invalid file name : <no such list>.\n");
    EXPECT_EQ(errorFor(std::string(127, 'p')), "error: Invalid file name : <" + std::string(127, 'p') + ">.\n");
    EXPECT_EQ(errorFor(std::string(128, 'p')), "error: Invalid file name : <\n");
    EXPECT_EQ(errorFor("."), "error: Invalid file name : <.>.\n") << "a folder is no list";
#if !defined(_WIN32)
    // Opens, and has nothing at its beginning that could be read.
    EXPECT_EQ(errorFor("/proc/self/mem"), "error: Invalid file name : </proc/self/mem>.\n");
#endif
}

TEST(TestPerformer, anErrorIsTracedAndEndsTheLoadBeforeAnythingRuns)
{
    const std::string output = outputOf("telling 1\ntelling 0\n");
    EXPECT_EQ(output.substr(0, 21), "| Throwing exception ");
    EXPECT_EQ(output.find("execute"), std::string::npos);
    EXPECT_NE(output.find("error: Invalid number of cycles: <0>.\n"), std::string::npos);
}

TEST(TestPerformer, whatAGroupThrowsEndsTheRunWithoutATable)
{
    const std::string output = outputOf("telling 1\nthrowing 2\ntelling 1\n");
    EXPECT_EQ(output.substr(output.size() - 27), "error: thrown by the group\n");
    EXPECT_EQ(output.find("Executing throwing cycle 1"), std::string::npos);
    EXPECT_EQ(output.find("Group Name"), std::string::npos);
}

VN_CHILD(performedUnderTrace)
{
    static Quiet quiet("quiet");
    VnTest::start();
    Vn::Trace::setOptions("show=TestPerformer,hide=Main");
    TestPerformer::getInstance().execute(OsFilePath(argv[1]));
    VnTest::stop();
    return 0;
}

TEST(TestPerformer, loadingHasALevelOfItsOwnAndCyclesShowInAnyCase)
{
    const TempFolder temp;
    const std::string out = Child("performedUnderTrace")
                                .arguments({temp.file("list", "quiet 1\n")})
                                .without("VN_TRACE_OPTIONS")
                                .run()
                                .out;
    EXPECT_EQ(out.substr(0, 69), "+ TestPerformer::loadFile()\n  /\nExecuting quiet cycle 0 \nEnd of cycle");
}

TEST(TestPerformer, withoutATerminalNothingIsTold)
{
    const TempFolder temp;
    const VnTest::ChildRun run =
        Child("performed").arguments({temp.file("list", "quiet 3\n")}).without("VN_TRACE_OPTIONS").run();
    EXPECT_EQ(run.err, "") << "nobody watches the error stream";
}

#if !defined(_WIN32)
TEST(TestPerformer, aTerminalIsToldHowFarItIs)
{
    const TempFolder temp;
    const std::string list = temp.file("list", "quiet 3\n");
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_NE(terminal, -1);
    ASSERT_EQ(::grantpt(terminal), 0);
    ASSERT_EQ(::unlockpt(terminal), 0);
    const std::string name = ::ptsname(terminal);

    ::posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, name.c_str(), O_RDWR | O_NOCTTY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string words[] = {VnTest::getProgramPath(), "--child", "performed", list};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    ::pid_t child;
    const int open =
        ::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);  // so that the end of the child is no hang-up
    ASSERT_EQ(::posix_spawn(&child, arguments[0], &actions, nullptr, arguments, environ), 0);
    ::posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ::write(open, "!", 1);  // the mark where reading may end
    std::string shown;
    for (char letter; ::read(terminal, &letter, 1) == 1 && letter != '!';)
        shown += letter;
    ::close(open);
    ::close(terminal);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(shown.substr(0, 65), "\rquiet" + std::string(42, ' ') + " cycle 1 of 3 ...");
    EXPECT_EQ(shown.substr(shown.size() - 81), "\r" + std::string(79, ' ') + "\r") << "and is wiped out";
}
#endif
