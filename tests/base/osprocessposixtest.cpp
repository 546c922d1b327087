// What a child is given and what it leaves behind. Windows form of these rules: the system's own.
#include <base/osprocess.h>

#include "descriptors.h"
#include "expectchild.h"
#include "gate.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
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

/// This process has neither a running child nor one that waits to be collected.
bool hasNoChildren()
{
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
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
    ::close(0);  // what the start needs meanwhile may take that number
    runBody("processListsDescriptors", folder.path("without0"));
    std::cout << contentOf(folder.path("all")) << "\n" << contentOf(folder.path("without0")) << "\n";
    return 0;
}

TEST(OsProcessChild, hasTheStandardDescriptorsAndNoOthers)
{
    VnTest::expectOutput("startsOneAmongDescriptors", "0 1 2 \n1 2 \n");
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
