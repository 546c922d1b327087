// What a child is given and what it leaves behind. Windows form of these rules: the system's own.
#include <base/osprocess.h>

#include "descriptors.h"
#include "expectchild.h"
#include "gate.h"
#include "pidnamespace.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using Vn::OsProcess;
using VnTest::contentOf;
using VnTest::countDescriptors;
using VnTest::Gate;
using VnTest::getProgramPath;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

namespace
{
void runBody(char const* body, std::string const& argument)
{
    const std::string program = getProgramPath();
    char const* const command[] = {program.c_str(), "--child", body, argument.c_str(), nullptr};
    OsProcess process;
    process.start(command);
    process.wait();
}

/// This process has neither a running child nor one that waits to be collected, whatever signal that has for its end.
bool hasNoChildren()
{
    return ::waitpid(-1, nullptr, WNOHANG | __WALL) == -1 && errno == ECHILD;
}

/// Blocks while all children run, and leaves them as they are; false without any.
bool meetAChildThatHasEnded()
{
    ::siginfo_t unread;
    return ::waitid(P_ALL, 0, &unread, WEXITED | WNOWAIT) == 0;
}

/// A line of this process's state, behind its name.
std::string stateOf(std::string const& name)
{
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (line.compare(0, name.size() + 1, name + ":") == 0)
            return line.substr(line.find_last_of("\t ") + 1);
    return "";
}

bool hasSignal(std::string const& mask, int signal)
{
    return (std::stoull(mask, nullptr, 16) >> (signal - 1) & 1) != 0;
}
}  // namespace

VN_CHILD(processSaysSo)
{
    std::cout << argv[1] << " out" << std::endl;
    std::cerr << argv[1] << " err" << std::endl;
    return 0;
}

VN_CHILD(startsOneThatSaysSo)
{
    runBody("processSaysSo", "hello");
    return 0;
}

TEST(OsProcessChild, writesToTheStreamsOfItsParent)
{
    const VnTest::ChildRun run = VnTest::Child("startsOneThatSaysSo").run();
    EXPECT_EQ(run.out, "hello out\n");
    EXPECT_EQ(run.err, "hello err\n");
    EXPECT_EQ(run.exitCode, 0);
}

/// Numbers of the descriptors that are open, less the one that looks.
VN_CHILD(processListsDescriptors)
{
    std::set<int> numbers;
    for (int number = 0; number < 4096; ++number)
        if (::fcntl(number, F_GETFD) != -1)
            numbers.insert(number);
    std::ofstream file(argv[1]);
    for (int number : numbers)
        file << number << " ";
    return 0;
}

VN_CHILD(startsOneAmongDescriptors)
{
    const TempFolder folder;
    for (int number : {3, 4, 17, 1000})
        ::dup2(1, number);
    runBody("processListsDescriptors", folder.path("all"));
    for (int number : {3, 4, 17, 1000})
        std::cout << (::fcntl(number, F_GETFD) == 0);  // here they are as they were
    std::cout << "\n";
    ::close(0);  // what the start needs meanwhile may take that number
    runBody("processListsDescriptors", folder.path("without0"));
    std::cout << contentOf(folder.path("all")) << "\n" << contentOf(folder.path("without0")) << "\n";
    return 0;
}

TEST(OsProcessChild, hasTheStandardDescriptorsAndNoOthers)
{
    VnTest::expectOutput("startsOneAmongDescriptors", "1111\n0 1 2 \n1 2 \n");
}

VN_CHILD(processShowsSignals)
{
    std::ofstream file(argv[1]);
    for (char const* name : {"SigBlk", "SigIgn", "SigCgt"})
        file << stateOf(name) << "\n";
    return 0;
}

VN_CHILD(startsOneAmongSignals)
{
    const TempFolder folder;
    ::signal(SIGUSR1, [](int) {});
    ::signal(SIGUSR2, SIG_IGN);
    ::sigset_t some;
    ::sigemptyset(&some);
    ::sigaddset(&some, SIGWINCH);
    ::sigprocmask(SIG_BLOCK, &some, nullptr);
    const std::string before = stateOf("SigBlk");
    runBody("processShowsSignals", folder.path("file"));
    std::istringstream shown(contentOf(folder.path("file")));
    std::string blocked, ignored, caught;
    shown >> blocked >> ignored >> caught;
    std::cout << (blocked == before) << hasSignal(blocked, SIGWINCH) << hasSignal(ignored, SIGUSR2)
              << hasSignal(caught, SIGUSR1) << "\n";
    std::cout << (stateOf("SigBlk") == before) << hasSignal(stateOf("SigCgt"), SIGUSR1) << "\n";
    return 0;
}

TEST(OsProcessChild, hasTheSignalsOfItsParentAndNoneOfItsHandlers)
{
    VnTest::expectOutput("startsOneAmongSignals", "1110\n11\n");
}

VN_CHILD(leavesNoZombies)
{
    const TempFolder folder;
    std::cout << hasNoChildren();
    std::vector<OsProcess> processes(10);
    const std::string program = getProgramPath(), file = folder.path("file");
    char const* const command[] = {program.c_str(), "--child", "processShowsSignals", file.c_str(), nullptr};
    for (OsProcess& process : processes)
        process.start(command);
    std::cout << hasNoChildren();
    processes.clear();  // while they run
    std::cout << hasNoChildren();
    runBody("processShowsSignals", folder.path("file"));
    std::cout << hasNoChildren();
    OsProcess process;
    char const* const missing[] = {"/missing", nullptr};
    try {
        process.start(missing);
    } catch (std::runtime_error const&) {
        std::cout << hasNoChildren() << "\n";
    }
    return 0;
}

TEST(OsProcessChild, isNeverAZombieOfOurs)
{
    VnTest::expectOutput("leavesNoZombies", "11111\n");
}

VN_CHILD(takesInOrphans)
{
    const TempFolder folder;
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const std::string program = getProgramPath(), file = folder.path("file");
    char const* const command[] = {program.c_str(), "--child", "processShowsSignals", file.c_str(), nullptr};
    OsProcess process;
    process.start(command);
    process.wait();
    std::cout << !contentOf(file).empty() << hasNoChildren();
    process.wait();  // at once, though there is nothing of it any more
    std::cout << hasNoChildren() << "\n";
    return 0;
}

TEST(OsProcessChild, isCollectedWhereThisProcessTakesInOrphans)
{
    VnTest::expectOutput("takesInOrphans", "111\n");
}

/// Lives until its gate is opened.
VN_CHILD(processOutlives)
{
    Gate::wait(argv[1]);
    return 0;
}

VN_CHILD(takesInOrphansOfGoneObjects)
{
    const TempFolder folder;
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const int descriptors = countDescriptors();
    for (int i = 0; i < 3; ++i) {
        Gate gate(folder.path("gate" + std::to_string(i)));
        {
            const std::string program = getProgramPath();
            char const* const command[] = {program.c_str(), "--child", "processOutlives", gate.name().c_str(),
                                           nullptr};
            OsProcess process;
            process.start(command);
        }
        gate.open();
        std::cout << meetAChildThatHasEnded();
    }
    runBody("processShowsSignals", folder.path("file"));
    std::cout << hasNoChildren() << (countDescriptors() == descriptors) << "\n";
    return 0;
}

TEST(OsProcessChild, thatOutlivesItsObjectIsCollectedLaterWhereThisProcessTakesInOrphans)
{
    VnTest::expectOutput("takesInOrphansOfGoneObjects", "11111\n");
}

VN_CHILD(takesInOrphansOfRefusedStarts)
{
    const TempFolder folder;
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const int descriptors = countDescriptors();
    char const* const missing[] = {"/missing", nullptr};
    for (int i = 0; i < 3; ++i) {
        try {
            OsProcess().start(missing);
        } catch (std::runtime_error const&) {
            meetAChildThatHasEnded();
        }
    }
    runBody("processShowsSignals", folder.path("file"));
    std::cout << hasNoChildren() << (countDescriptors() == descriptors) << "\n";
    return 0;
}

TEST(OsProcessChild, thatCouldntBeStartedIsCollectedWhereThisProcessTakesInOrphans)
{
    VnTest::expectOutput("takesInOrphansOfRefusedStarts", "11\n");
}

VN_CHILD(startsAmongStrangers)
{
    const TempFolder folder;
    static int ended = 0;
    struct ::sigaction given = {}, found = {};
    given.sa_handler = [](int) { ++ended; };
    ::sigaction(SIGCHLD, &given, nullptr);
    const ::pid_t stranger = ::fork();
    if (stranger == 0)
        ::_exit(7);
    runBody("processShowsSignals", folder.path("file"));
    ::sigaction(SIGCHLD, nullptr, &found);
    int status = 0;
    std::cout << (::waitpid(stranger, &status, 0) == stranger) << WEXITSTATUS(status)
              << (found.sa_handler == given.sa_handler) << (ended >= 1) << "\n";
    return 0;
}

TEST(OsProcessChild, leavesOtherChildrenAndTheHandlerAlone)
{
    VnTest::expectOutput("startsAmongStrangers", "1711\n");
}

VN_CHILD(startsWithoutChildSignals)
{
    const TempFolder folder;
    ::signal(SIGCHLD, SIG_IGN);
    runBody("processShowsSignals", folder.path("file"));
    std::cout << !contentOf(folder.path("file")).empty() << hasNoChildren() << "\n";
    return 0;
}

TEST(OsProcessChild, isWaitedForAlsoWhereChildrenAreIgnored)
{
    VnTest::expectOutput("startsWithoutChildSignals", "11\n");
}

// --- another PID namespace -------------------------------------------------------------------------------------------

/// Tells its number, and waits for a gate if it is given one.
VN_CHILD(processTellsItsNumber)
{
    std::ofstream(argv[1]) << ::getpid();
    if (argc > 2)
        Gate::wait(argv[2]);
    return 0;
}

VN_CHILD(startsInAnotherNamespace)
{
    if (!VnTest::enterPidNamespace())
        return VnTest::notAllowed;
    {  // so that all of it is gone when the process ends
        const TempFolder folder;
        const std::string program = getProgramPath(), file = folder.path("first");
        Gate gate(folder.path("gate"));
        char const* const command[] = {program.c_str(), "--child",           "processTellsItsNumber",
                                       file.c_str(),    gate.name().c_str(), nullptr};
        const int ours = ::dup(1);  // which isn't to be closed at an exec of ours
        OsProcess first;
        first.start(command);
        runBody("processTellsItsNumber", folder.path("second"));
        std::cout << (::fcntl(ours, F_GETFD) == 0);
        std::cout << (std::stoi(contentOf(folder.path("second"))) > 1) << (::waitpid(-1, nullptr, WNOHANG) == 0);
        gate.open();
        first.wait();
        std::cout << contentOf(file) << hasNoChildren();
        // It was the first process there, and without one there are no others.
        std::cout << (systemErrorOf([&] { first.start(command); }, "src/base/osprocesswindows") == ENOMEM)
                  << hasNoChildren() << "\n";
    }
    VnTest::leavePidNamespace();
}

VN_CHILD(leavesOneInAnotherNamespace)
{
    if (!VnTest::enterPidNamespace())
        return VnTest::notAllowed;
    {  // so that all of it is gone when the process ends
        const TempFolder folder;
        const std::string program = getProgramPath();
        Gate gate(folder.path("gate"));
        char const* const command[] = {program.c_str(), "--child", "processOutlives", gate.name().c_str(), nullptr};
        const int descriptors = countDescriptors();
        {
            OsProcess process;
            process.start(command);
        }
        gate.open();
        std::cout << meetAChildThatHasEnded();
        OsProcess next;
        systemErrorOf([&] { next.start(command); }, "src/base/osprocesswindows");
        std::cout << hasNoChildren() << (countDescriptors() == descriptors) << "\n";
    }
    VnTest::leavePidNamespace();
}

/// As expectOutput, where the system allows it.
#define EXPECT_OUTPUT_IN_NAMESPACE(BODY, EXPECTED)                                                    \
    const VnTest::ChildRun run = VnTest::Child(BODY).run();                                           \
    if (run.exitCode == VnTest::notAllowed)                                                           \
        GTEST_SKIP() << "only root, or a user who may have user namespaces, may have PID namespaces"; \
    EXPECT_EQ(run.out, EXPECTED);                                                                     \
    EXPECT_EQ(run.exitCode, 0)

TEST(OsProcessChild, runsInTheNamespaceOfOurChildrenAndIsCollected)
{
    EXPECT_OUTPUT_IN_NAMESPACE("startsInAnotherNamespace", "1111111\n");
}

TEST(OsProcessChild, thatOutlivesItsObjectInAnotherNamespaceIsCollectedLater)
{
    EXPECT_OUTPUT_IN_NAMESPACE("leavesOneInAnotherNamespace", "111\n");
}

// --- what a start costs ----------------------------------------------------------------------------------------------

namespace
{
long countFaults()
{
    ::rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

int forks = 0;
}  // namespace

TEST(OsProcessStart, copiesNeitherThisProcessNorItsPageTables)
{
    if (::waitid(P_PIDFD, INT_MAX, nullptr, WEXITED | WNOHANG) != -1 || errno != EBADF)
        GTEST_SKIP() << "this system is older than Linux 5.4";
    constexpr std::size_t pageSize = 4096, size = 4096 * pageSize;
    void* const mapping = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(mapping, MAP_FAILED);
    ::madvise(mapping, size, MADV_NOHUGEPAGE);
    const auto touch = [memory = static_cast<char volatile*>(mapping)] {
        for (std::size_t at = 0; at < size; at += pageSize)
            memory[at] = 1;
    };
    ::pthread_atfork([] { ++forks; }, nullptr, nullptr);
    touch();
    const TempFolder folder;
    runBody("processShowsSignals", folder.path("file"));
    const long before = countFaults();
    touch();
    EXPECT_LT(countFaults() - before, 1000);  // a copy takes the right to write from each page
    EXPECT_EQ(forks, 0);
    ::munmap(mapping, size);
}

// --- which program is started ----------------------------------------------------------------------------------------

namespace
{
/// An executable text without "#!" that writes its second argument into the file of its first.
void writeScript(std::string const& path, ::mode_t mode = 0755)
{
    std::ofstream(path) << "echo \"$0 $2\" > \"$1\"\n";
    ::chmod(path.c_str(), mode);
}

class OsProcessSearch : public testing::Test
{
protected:
    OsProcessSearch() : _file(_folder.path("file"))
    {
        if (char const* const before = std::getenv("PATH"))
            _before = before;
        for (char const* name : {"a", "b"})
            std::filesystem::create_directory(_folder.path(name));
    }
    ~OsProcessSearch() override { ::setenv("PATH", _before.c_str(), 1); }

    std::string path(std::string const& name) const { return _folder.path(name); }

    /// The system's code of the refusal; -1 if the program has run.
    int run(std::string const& program)
    {
        char const* const command[] = {program.c_str(), _file.c_str(), "said", nullptr};
        return systemErrorOf(
            [&] {
                OsProcess process;
                process.start(command);
                process.wait();
            },
            "src/base/osprocesswindows");
    }

    void search(std::string const& folders) { ::setenv("PATH", folders.c_str(), 1); }

    std::string said() const { return contentOf(_file); }

private:
    TempFolder _folder;
    std::string _file;
    std::string _before;
};
}  // namespace

TEST_F(OsProcessSearch, aTextThatNamesNoInterpreterIsTheShells)
{
    writeScript(path("a/vnscript"));
    EXPECT_EQ(run(path("a/vnscript")), -1);
    EXPECT_EQ(said(), path("a/vnscript") + " said\n");
}

TEST_F(OsProcessSearch, goesThroughTheFoldersInTheirOrder)
{
    writeScript(path("a/vnscript"));
    writeScript(path("b/vnscript"));
    search("/missing:/etc/passwd:" + path("b") + ":" + path("a"));
    EXPECT_EQ(run("vnscript"), -1);
    EXPECT_EQ(said(), path("b/vnscript") + " said\n");
}

TEST_F(OsProcessSearch, goesOnAfterARefusalAndTellsItIfNothingIsFound)
{
    writeScript(path("a/vnscript"), 0644);
    search(path("a") + ":/missing");
    EXPECT_EQ(run("vnscript"), EACCES);
    writeScript(path("b/vnscript"));
    search(path("a") + ":" + path("b"));
    EXPECT_EQ(run("vnscript"), -1);
    EXPECT_EQ(said(), path("b/vnscript") + " said\n");
}

TEST_F(OsProcessSearch, tellsTheLastReasonOtherwise)
{
    search("/missing");
    EXPECT_EQ(run("vnscript"), ENOENT);
    search("/missing:/etc/passwd");
    EXPECT_EQ(run("vnscript"), ENOTDIR);
    search("/:/missing");
    EXPECT_EQ(run(std::string(300, 'x')), ENAMETOOLONG);  // which ends the search
}

TEST_F(OsProcessSearch, passesOverAFolderThatCantBe)
{
    writeScript(path("a/vnscript"));
    search(std::string(5000, 'x') + ":" + path("a"));
    EXPECT_EQ(run("vnscript"), -1);
    EXPECT_EQ(said(), path("a/vnscript") + " said\n");
}

TEST_F(OsProcessSearch, takesAnEmptyFolderForTheCurrentOne)
{
    writeScript(path("a/vnscript"));
    const VnTest::WorkingFolder there(path("a"));
    for (char const* folders : {"", ":/missing", "/missing:", "/missing::/missing"}) {
        std::filesystem::remove(path("file"));
        search(folders);
        EXPECT_EQ(run("vnscript"), -1) << folders;
        EXPECT_EQ(said(), "vnscript said\n") << folders;
    }
    search("/missing");
    EXPECT_EQ(run("vnscript"), ENOENT);
}

TEST_F(OsProcessSearch, looksWhereTheSystemsProgramsAreIfNobodySaysWhere)
{
    ::unsetenv("PATH");
    writeScript(path("a/vnscript"));
    char const* const command[] = {"sh", "-c", "exit 0", nullptr};
    EXPECT_EQ(systemErrorOf([&] { OsProcess().start(command); }, "src/base/osprocesswindows"), -1);
    EXPECT_EQ(run("vnscript"), ENOENT);
}
