#include <base/exsyserror.h>
#include <base/oscommandline_p.h>
#include <base/osenv.h>
#include <base/osprocess.h>

#include "child.h"
#include "gate.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#if defined(_WIN32)
#    include "wine.h"
#else
#    include <cerrno>
#endif

using Vn::ExSysErrorWindows;
using Vn::OsProcess;
using Vn::OsProcessImp;
using VnTest::contentOf;
using VnTest::Gate;
using VnTest::getProgramPath;
using VnTest::TempFolder;

static_assert(!std::is_polymorphic_v<OsProcess> && !std::is_copy_constructible_v<OsProcess>);
static_assert(std::is_abstract_v<OsProcessImp> && std::has_virtual_destructor_v<OsProcessImp>);

namespace
{
/// Starts a command; the vector is what has to live no longer than the call.
void start(OsProcess& process, std::vector<std::string> const& command)
{
    std::vector<char const*> argv;
    for (std::string const& word : command)
        argv.push_back(word.c_str());
    argv.push_back(nullptr);
    process.start(argv.data());
}

/// Starts a body of this program.
void startBody(OsProcess& process, char const* body, std::vector<std::string> const& arguments)
{
    std::vector<std::string> command{getProgramPath(), "--child", body};
    command.insert(command.end(), arguments.begin(), arguments.end());
    start(process, command);
}

/// The system's code of a refused start; 0 if it wasn't refused.
int errorOf(OsProcess& process, char const* const* argv)
{
    try {
        process.start(argv);
    } catch (ExSysErrorWindows const& failure) {
        EXPECT_STREQ(failure.getFileName(), "src/base/osprocesswindows");
        return failure.getErrorCode();
    }
    return 0;
}
}  // namespace

/// Writes its further arguments into the file of its first one, a line each.
VN_CHILD(processWrites)
{
    std::ofstream file(argv[1], std::ios::binary);
    for (int i = 2; i < argc; ++i)
        file << argv[i] << "\n";
    return 0;
}

/// Waits at a gate, writes a file, and opens another gate.
VN_CHILD(processBehindAGate)
{
    Gate::wait(argv[1]);
    std::ofstream(argv[2]) << "done";
    Gate::open(argv[3]);
    return 0;
}

/// A child that waits until it may go on.
class GatedChild
{
public:
    GatedChild(TempFolder const& folder, std::string const& name)
        : _before(folder.path(name + "-before")), _after(folder.path(name + "-after")), _file(folder.path(name))
    {}

    void startIn(OsProcess& process)
    {
        startBody(process, "processBehindAGate", {_before.name(), _file, _after.name()});
    }

    bool isDone() const { return std::filesystem::exists(_file); }

    void letGo() { _before.open(); }

    /// Until it is done, whoever its OsProcess is.
    void meetAtTheEnd() { _after.wait(); }

private:
    Gate _before;
    Gate _after;
    std::string _file;
};

TEST(OsProcess, waitWithoutAStartReturnsAtOnce)
{
    OsProcess process;
    process.wait();
    process.wait();
}

TEST(OsProcess, waitReturnsWhenTheChildHasEnded)
{
    const TempFolder folder;
    OsProcess process;
    startBody(process, "processWrites", {folder.path("file"), "text"});
    process.wait();
    EXPECT_EQ(contentOf(folder.path("file")), "text\n");
    process.wait();  // at once, and again
    process.wait();
}

TEST(OsProcess, waitWaits)
{
    const TempFolder folder;
    GatedChild child(folder, "child");
    OsProcess process;
    child.startIn(process);
    EXPECT_FALSE(child.isDone());
    std::thread other([&child] {
        child.letGo();
        child.meetAtTheEnd();
    });
    process.wait();
    EXPECT_TRUE(child.isDone());
    other.join();
}

TEST(OsProcess, anEmptyCommandIsRefused)
{
    OsProcess process;
    char const* const none[] = {nullptr};
    for (char const* const* argv :
         {static_cast<char const* const*>(none), static_cast<char const* const*>(nullptr)}) {
        const int error = errorOf(process, argv);
#if defined(_WIN32)
        EXPECT_TRUE(error == 87 || (error == 2 && VnTest::isWine())) << error;
#else
        EXPECT_EQ(error, EINVAL);
#endif
    }
    process.wait();
}

TEST(OsProcess, aProgramThatCantBeStartedThrowsHereAndNow)
{
    const TempFolder folder;
    OsProcess process;
    const std::string missing = folder.path("missing");
    char const* const command[] = {missing.c_str(), "argument", nullptr};
#if defined(_WIN32)
    EXPECT_EQ(errorOf(process, command), 2);
    const std::string text = folder.file("text.exe", "no program");
    char const* const noProgram[] = {text.c_str(), nullptr};
    EXPECT_EQ(errorOf(process, noProgram), 193);
#else
    EXPECT_EQ(errorOf(process, command), ENOENT);
    const std::string text = folder.file("text", "no program");
    char const* const noProgram[] = {text.c_str(), nullptr};
    EXPECT_EQ(errorOf(process, noProgram), EACCES);
    char const* const aFolder[] = {"/", nullptr};
    EXPECT_EQ(errorOf(process, aFolder), EACCES);
    char const* const empty[] = {"", nullptr};
    EXPECT_EQ(errorOf(process, empty), ENOENT);
    const std::string longName(5000, 'x');
    char const* const tooLong[] = {longName.c_str(), nullptr};
    EXPECT_EQ(errorOf(process, tooLong), ENAMETOOLONG);
#endif
    process.wait();
}

TEST(OsProcess, aRefusedStartLeavesTheEarlierChildsRecord)
{
    const TempFolder folder;
    GatedChild child(folder, "child");
    OsProcess process;
    child.startIn(process);
    const std::string missing = folder.path("missing");
    char const* const command[] = {missing.c_str(), nullptr};
    EXPECT_NE(errorOf(process, command), 0);
    std::thread other([&child] {
        child.letGo();
        child.meetAtTheEnd();
    });
    process.wait();
    EXPECT_TRUE(child.isDone()) << "it didn't wait for the earlier child";
    other.join();
}

TEST(OsProcess, startTwiceWaitsForTheSecondAndTheFirstRunsOn)
{
    const TempFolder folder;
    GatedChild first(folder, "first"), second(folder, "second");
    OsProcess process;
    first.startIn(process);
    second.startIn(process);
    second.letGo();
    second.meetAtTheEnd();
    process.wait();
    EXPECT_TRUE(second.isDone());
    EXPECT_FALSE(first.isDone());
    first.letGo();
    first.meetAtTheEnd();
    EXPECT_TRUE(first.isDone());
}

TEST(OsProcess, theChildRunsOnWhenItsObjectIsGone)
{
    const TempFolder folder;
    GatedChild child(folder, "child");
    {
        OsProcess process;
        child.startIn(process);
    }
    EXPECT_FALSE(child.isDone());
    child.letGo();
    child.meetAtTheEnd();
    EXPECT_TRUE(child.isDone());
}

TEST(OsProcess, manyRunAtOnce)
{
    const TempFolder folder;
    constexpr int count = 24;
    std::vector<std::unique_ptr<GatedChild>> children;
    std::vector<OsProcess> processes(count);
    for (int i = 0; i < count; ++i) {
        children.push_back(std::make_unique<GatedChild>(folder, std::to_string(i)));
        children.back()->startIn(processes[static_cast<std::size_t>(i)]);
    }
    // All of them wait; the last one is let go first.
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        EXPECT_FALSE((*child)->isDone());
        (*child)->letGo();
        (*child)->meetAtTheEnd();
    }
    for (OsProcess& process : processes)
        process.wait();
    for (auto const& child : children)
        EXPECT_TRUE(child->isDone());
}

TEST(OsProcess, severalThreadsStartTheirOwn)
{
    const TempFolder folder;
    const auto startSome = [&folder](std::string const& name) {
        for (int i = 0; i < 5; ++i) {
            OsProcess process;
            startBody(process, "processWrites", {folder.path(name + std::to_string(i)), name});
            process.wait();
            EXPECT_EQ(contentOf(folder.path(name + std::to_string(i))), name + "\n");
        }
    };
    std::vector<std::thread> threads;
    for (char const* name : {"a", "b", "c"})
        threads.emplace_back(startSome, name);
    startSome("d");
    for (std::thread& thread : threads)
        thread.join();
}

VN_CHILD(processDies)
{
    std::ofstream(argv[1]) << "lived";
    std::abort();
}

VN_CHILD(processFails)
{
    std::ofstream(argv[1]) << "lived";
    return 3;
}

TEST(OsProcess, waitReturnsForOnesThatDie)
{
    const TempFolder folder;
    for (char const* body : {"processDies", "processFails"}) {
        OsProcess process;
        startBody(process, body, {folder.path(body)});
        process.wait();
        EXPECT_EQ(contentOf(folder.path(body)), "lived");
    }
}

TEST(OsProcess, theProgramIsLookedUp)
{
    const TempFolder folder;
    const std::filesystem::path program = getProgramPath();
    Vn::OsEnv::putVariable(("PATH=" + program.parent_path().string() +
#if defined(_WIN32)
                            ";"
#else
                            ":"
#endif
                            + Vn::OsEnv::getVariable("PATH"))
                               .c_str());
    OsProcess process;
#if defined(_WIN32)
    const std::string name = program.stem().string();
#else
    const std::string name = program.filename().string();
#endif
    start(process, {name, "--child", "processWrites", folder.path("file"), "found"});
    process.wait();
    EXPECT_EQ(contentOf(folder.path("file")), "found\n");
}

TEST(OsProcess, theChildHasTheEnvironmentAndTheFolderOfItsParent)
{
    const TempFolder folder;
    const VnTest::WorkingFolder there(folder.path());
    OsProcess process;
    startBody(process, "processWrites", {"file", "relative"});
    process.wait();
    EXPECT_EQ(contentOf(folder.path("file")), "relative\n");
}

TEST(OsProcess, theCommandLineIsEachTextAndABlank)
{
    char const* const command[] = {"prog", "a b", "", "\"c\"", nullptr, "behind"};
    EXPECT_EQ(Vn::commandLineOf(command), "prog a b  \"c\" ");
    char const* const none[] = {nullptr};
    EXPECT_EQ(Vn::commandLineOf(none), "");
    EXPECT_EQ(Vn::commandLineOf(nullptr), "");
}

#if defined(_WIN32)
TEST(OsProcess, anArgumentWithABlankSplits)
{
    const TempFolder folder;
    OsProcess process;
    startBody(process, "processWrites", {folder.path("file"), "a b", "", "c"});
    process.wait();
    EXPECT_EQ(contentOf(folder.path("file")), "a\nb\nc\n");
}
#else
TEST(OsProcess, argumentsArePassedAsTheyAre)
{
    const TempFolder folder;
    OsProcess process;
    startBody(process, "processWrites", {folder.path("file"), "a b", "", "\"c\"", "d\\", "$HOME *"});
    process.wait();
    EXPECT_EQ(contentOf(folder.path("file")), "a b\n\n\"c\"\nd\\\n$HOME *\n");
}
#endif
