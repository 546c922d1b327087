// Help and refusals of every example, and what `first` and the smaller ones say.
#include "child.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#if defined(__linux__)
#    include <signal.h>
#    include <sys/inotify.h>
#    include <unistd.h>
#endif

using VnTest::Child;
using VnTest::ChildRun;
using VnTest::TempFolder;

namespace
{
ChildRun run(std::string const& program, std::vector<std::string> const& arguments)
{
    Child child = Child::program(program);
    for (char const* name : {"GREETER_NAME", "GREETER_INTERVAL", "VN_DEBUG_INITIALIZE", "COLUMNS", "VN_TEST_DIR"})
        child.without(name);
    return child.arguments(arguments).run();
}

constexpr char const* programs[] = {"cuesheet",   "first",   "greeter",      "inventory",
                                    "lastwords",  "mytests", "pointsets",    "skylight",
                                    "streamtime", "swatch",  "swatchloader", "threadlog"};
}  // namespace

TEST(Examples, helpIsPrintedAndEndsWithSuccess)
{
    for (std::string const program : programs) {
        const ChildRun brief = run(program, {"-h"});
        EXPECT_EQ(brief.out.find(program + " [OPTION]..."), 0u) << program;
        EXPECT_TRUE(std::regex_search(brief.out, std::regex("\n  -h, --help +this text\n"))) << brief.out;
        EXPECT_EQ(brief.err, "");
        EXPECT_EQ(brief.exitCode, 0);
        EXPECT_EQ(run(program, {"--help"}).out, brief.out);
    }
}

TEST(Examples, mistypedOptionsAreRefusedInOneLine)
{
    for (std::string const program : programs) {
        // Some have an option -q.
        for (std::string const option : {"-Q", "--bogus", "--Help"}) {
            const ChildRun result = run(program, {option});
            EXPECT_EQ(result.out, "") << program;
            EXPECT_EQ(result.err, program + ": unknown option " + option + "; " + program + " -h tells more\n");
            EXPECT_EQ(result.exitCode, 2);
        }
    }
    EXPECT_EQ(run("first", {"-q"}).err, "first: unknown option -q; first -h tells more\n");
}

TEST(Examples, controlCharactersOfArgumentsAreShown)
{
    for (std::string const program : programs) {
        const ChildRun result = run(program, {"-\x1b[2J"});
        EXPECT_EQ(result.err, program + ": unknown option -\\x1b in -\\x1b[2J; " + program + " -h tells more\n");
        EXPECT_EQ(result.exitCode, 2);
    }
    EXPECT_EQ(run("first", {"-n", "A\x1b[31m"}).out, "Hello, A\\x1b[31m!\n");
    EXPECT_EQ(run("swatch", {"no\x1b"
                             "colour"})
                  .out,
              "no\\x1b"
              "colour  unknown\n");
    EXPECT_EQ(run("swatchloader", {"no\x1b"}).out.find('\x1b'), std::string::npos);
    EXPECT_EQ(run("pointsets", {"no\x1b"
                                "folder"})
                  .err.find("pointsets: cannot write 'no\\x1b"
                            "folder/pointsets.svg'"),
              0u);
}

TEST(Examples, versionNamesTheLibrariesOfTheProcess)
{
    for (std::string const program : programs)
        EXPECT_NE(run(program, {"--version"}).out.find("\nlibVNbase 0.2 pre-alpha (P. 187, "), std::string::npos)
            << program;
    const ChildRun swatch = run("swatch", {"--version"});
    EXPECT_TRUE(std::regex_match(swatch.out, std::regex("swatch\nlibVNbase 0\\.2 pre-alpha \\(P\\. 187, [^)]+\\)\n"
                                                        "libVNswatch 1\\.2 example \\(S\\. 187, [^)]+\\)\n")))
        << swatch.out;
    EXPECT_EQ(swatch.exitCode, 0);
}

TEST(Examples, operandsAreCounted)
{
    EXPECT_EQ(run("first", {"x"}).err, "first: unexpected argument 'x'; first -h tells more\n");
    EXPECT_EQ(run("streamtime", {"x"}).exitCode, 2);
    EXPECT_EQ(run("skylight", {"x"}).exitCode, 2);
    EXPECT_EQ(run("pointsets", {}).err, "pointsets: FOLDER is missing; pointsets -h tells more\n");
    EXPECT_EQ(run("pointsets", {"a", "b"}).exitCode, 2);
}

TEST(Examples, operandsMayStandBehindTheEndMark)
{
    EXPECT_EQ(run("swatchloader", {"--", "swatch"}).out, run("swatchloader", {"swatch"}).out);
    EXPECT_EQ(run("swatchloader", {"--", "swatch"}).exitCode, 0);
    EXPECT_EQ(run("mytests", {"--", "sorting", "10"}).exitCode, 0);
    EXPECT_EQ(run("mytests", {"--", "nosuchgroup"}).exitCode, run("mytests", {"nosuchgroup"}).exitCode);
    EXPECT_EQ(run("mytests", {"--"}).out, run("mytests", {}).out);
}

TEST(First, greets)
{
    EXPECT_EQ(Child::program("first").without("GREETER_NAME").run().out, "Hello, world!\n");
    EXPECT_EQ(Child::program("first").with("GREETER_NAME", "Ann").run().out, "Hello, Ann!\n");
    EXPECT_EQ(Child::program("first").with("GREETER_NAME", "Ann").arguments({"-n", "Bob"}).run().out,
              "Hello, Bob!\n");
}

TEST(MyTests, whatStandsBehindAGroupsNameIsTheGroups)
{
    EXPECT_EQ(run("mytests", {"sorting", "10", "-5"}).exitCode, 0);
    EXPECT_EQ(run("mytests", {"-dumpLibs"}).exitCode, 0);
}

TEST(Readme, showsWhatTheGreeterRefuses)
{
    std::ifstream stream(VN_DOCS "/../README.md", std::ios::binary);
    const std::string page(std::istreambuf_iterator<char>(stream), {});
    EXPECT_NE(page.find("\n    $ first -q\n    " + run("first", {"-q"}).err), std::string::npos);
    EXPECT_NE(page.find("\n    $ first\n    " + run("first", {}).out), std::string::npos);
}

#if defined(__linux__)
TEST(Groups, leaveNoFolderBehindWhenTheyAreInterrupted)
{
    for (const int number : {SIGINT, SIGTERM}) {
        const TempFolder temp;
        const int watch = ::inotify_init1(IN_CLOEXEC);
        ASSERT_GE(::inotify_add_watch(watch, temp.path().c_str(), IN_CREATE), 0);
        ChildRun result;
        std::thread runner([&] {
            result =
                Child::program("groups").arguments({"files", "100000000"}).with("VN_TEST_DIR", temp.path()).run();
        });
        // The folder is called after the process, whatever else may be made here.
        int process = 0;
        while (process == 0) {
            alignas(::inotify_event) char events[4096];
            const ::ssize_t size = ::read(watch, events, sizeof events);
            for (::ssize_t at = 0; at < size;) {
                auto const* const event = reinterpret_cast<::inotify_event const*>(events + at);
                const std::string name = event->len != 0 ? event->name : "";
                if (name.starts_with("groups-"))
                    process = std::stoi(name.substr(7));
                at += static_cast<::ssize_t>(sizeof *event + event->len);
            }
        }
        ::kill(process, number);
        runner.join();
        ::close(watch);
        EXPECT_NE(result.exitCode, 0) << "interrupted";
        EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
    }
}
#endif
