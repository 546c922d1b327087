// Dates, processor, modules, processes and environment objects while the system refuses: each call in turn, and each
// allocation.
#include "memory.h"
#include "systemcalls.h"

#include "child.h"
#include "expectchild.h"
#include "gate.h"
#include "pidnamespace.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <base/envvar.h>
#include <base/lmlibraries.h>
#include <base/oscpuinfo.h>
#include <base/osdateutil.h>
#include <base/osprocess.h>
#include <base/ossharedlib.h>
#include <base/ossharedlibex.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

using namespace Vn;
using VnTest::contentOf;
using VnTest::countDescriptors;
using VnTest::FailingCall;
using VnTest::failsWithoutMemory;
using VnTest::Gate;
using VnTest::getProgramFolder;
using VnTest::getProgramPath;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

namespace
{
const OsDateTypes::DateRep someDate = OsDateTypes::DateRep::fromTicks(UINT64_C(130000000000000000));

bool makeLocal(OsDateTypes::DateRep& result)
{
    return OsDateUtil::makeTime(2012, 12, 14, 4, 26, 40.0, OsDateTypes::LocalTime, result);
}

/// Neither running nor waiting to be collected, whatever signal they have for their end.
bool hasNoChildren()
{
    return ::waitpid(-1, nullptr, WNOHANG | __WALL) == -1 && errno == ECHILD;
}
}  // namespace

// --- dates -----------------------------------------------------------------------------------------------------------

TEST(DateFaults, aZoneThatCantBeAskedMakesNoDate)
{
    for (char const* call : {"gmtime_r", "mktime"}) {
        const FailingCall failing(call, EOVERFLOW);
        OsDateTypes::DateRep result(1, 2);
        EXPECT_FALSE(makeLocal(result)) << call;
        EXPECT_EQ(result.getHigh(), 1u) << call;
        EXPECT_EQ(result.getLow(), 2u) << call;
    }
    OsDateTypes::DateRep result;
    EXPECT_TRUE(makeLocal(result));
}

TEST(DateFaults, aMomentThatHasNoLocalTimeStaysInUtc)
{
    const OsDateTypes::DateStruct expected = OsDateUtil::convertToDateStruct(someDate, OsDateTypes::UTCTime);
    const FailingCall failing("localtime_r", EOVERFLOW);
    const OsDateTypes::DateStruct fields = OsDateUtil::convertToDateStruct(someDate, OsDateTypes::LocalTime);
    EXPECT_EQ(fields.getYear(), expected.getYear());
    EXPECT_EQ(fields.getDay(), expected.getDay());
    EXPECT_EQ(fields.getHour(), expected.getHour());
    EXPECT_EQ(fields.getMinute(), expected.getMinute());
}

// --- processor -------------------------------------------------------------------------------------------------------

TEST(CpuFaults, aSystemThatDoesntTellItsArchitectureHasAnUnknownOne)
{
    {
        const FailingCall failing("uname", EFAULT);
        OsCpuInfo::initialize();
    }
    OsCpuInfo::Type type = OsCpuInfo::MIPS;
    OsCpuInfo::getDetailedType(&type, nullptr, nullptr, nullptr);
    EXPECT_EQ(type, OsCpuInfo::Unknown);
    EXPECT_STREQ(OsCpuInfo::getTypeName(), "UNKNOWN");
    EXPECT_GT(OsCpuInfo::getHwCounterFrequency(), 0u);
}

// --- modules ---------------------------------------------------------------------------------------------------------

TEST(ModuleFaults, aMapThatCantBeReadIsThrownAndTheListIsEmpty)
{
    std::vector<LmLibrary> const& list = LmLibraries::getList();
    const std::vector<LmLibrary> before = list;
    ASSERT_FALSE(before.empty());
    const int descriptors = countDescriptors();
    for (auto const& [call, error, after] : {std::tuple("open", EACCES, 0), std::tuple("open", EMFILE, 0),
                                             std::tuple("read", EIO, 0), std::tuple("read", ENOMEM, 1)}) {
        SCOPED_TRACE(call);
        {
            const FailingCall failing(call, error, after);
            EXPECT_EQ(systemErrorOf([] { LmLibraries::getList(); }, "src/base/lmlibraries"), error);
        }
        EXPECT_TRUE(list.empty());
        EXPECT_EQ(countDescriptors(), descriptors);
        EXPECT_TRUE(LmLibraries::getList() == before);
    }
}

TEST(ModuleFaults, aMapThatComesInPiecesOrIsInterruptedIsTheSame)
{
    LmLibraries::getList();
    const std::vector<LmLibrary> before = LmLibraries::getList();
    for (char const* call : {"open", "read"}) {
        VnTest::failCall(call, EINTR, 0, 3);
        EXPECT_TRUE(LmLibraries::getList() == before) << call;
        EXPECT_EQ(VnTest::stopFailingCalls(), 3) << call;
    }
    VnTest::makeTransfersShort(true);
    EXPECT_TRUE(LmLibraries::getList() == before);
    VnTest::makeTransfersShort(false);
}

TEST(ModuleFaults, aProgramThatHidesItsFileIsUnknown)
{
    const std::size_t count = LmLibraries::getList().size();
    const FailingCall failing("readlink", EACCES);
    std::size_t unknown = 0;
    for (LmLibrary const& library : LmLibraries::getList())
        unknown += std::strcmp(library.getPath(), "Unknown") == 0;
    EXPECT_EQ(unknown, 1u);
    EXPECT_EQ(LmLibraries::getList().size(), count);
}

TEST(ModuleFaults, aListThatHasNoMemoryIsEmpty)
{
    std::vector<LmLibrary> const& list = LmLibraries::getList();
    const int descriptors = countDescriptors();
    int n = 0;
    for (; failsWithoutMemory(n, [] { LmLibraries::getList(); }); ++n) {
        ASSERT_TRUE(list.empty()) << n;
        ASSERT_EQ(countDescriptors(), descriptors) << n;
    }
    EXPECT_GT(n, 5);
    EXPECT_FALSE(list.empty());
}

TEST(ModuleFaults, aLibraryThatHasNoMemoryLeavesNothing)
{
    const std::string path = getProgramFolder() + "/libVNtestmodule.so", missing = path + ".missing";
    int n = 0;
    for (; failsWithoutMemory(n, [&path] { OsSharedLib::open(path.c_str()); }); ++n) {
    }
    EXPECT_GE(n, 2);
    for (n = 0; failsWithoutMemory(n,
                                   [&missing] {
                                       try {
                                           OsSharedLib::open(missing.c_str());
                                       } catch (OsSharedLibEx::ExCantOpenLib const&) {
                                       }
                                   });
         ++n) {
    }
    EXPECT_GE(n, 2);
}

// --- processes -------------------------------------------------------------------------------------------------------

/// Leaves a file behind.
VN_CHILD(faultyLeavesAFile)
{
    std::ofstream(argv[1]) << "there";
    return 0;
}

namespace
{
enum System
{
    current,
    old  ///< lacks what was added to Linux since its version 5
};

char const* const sourceOfStart = "src/base/osprocesswindows";

/// Starts of a program that leaves a file.
class Starter
{
public:
    Starter() : _file(_folder.path("file")), _program(getProgramPath())
    {
        _command[0] = _program.c_str();
        _command[1] = "--child";
        _command[3] = _file.c_str();
    }

    void start(char const* body = "faultyLeavesAFile") { startIn(process, body); }

    void startIn(OsProcess& other, char const* body)
    {
        _command[2] = body;
        other.start(_command);
    }

    /// What the start throws while a call fails; -1 if nothing.
    int errorOfStart(char const* call, int error, int after, char const* body = "faultyLeavesAFile")
    {
        const FailingCall failing(call, error, after);
        return systemErrorOf([=, this] { start(body); }, sourceOfStart);
    }

    /// What the program has left; takes it away.
    std::string take()
    {
        const std::string content = hasRun() ? contentOf(_file) : "nothing";
        std::filesystem::remove(_file);
        return content;
    }

    bool hasRun() const { return std::filesystem::exists(_file); }

    std::string path(char const* name) const { return _folder.path(name); }

    OsProcess process;

private:
    TempFolder _folder;
    std::string _file;
    std::string _program;
    char const* _command[5] = {};
};

class ProcessFaults : public testing::TestWithParam<System>, protected Starter
{
protected:
    ProcessFaults() { VnTest::makeSystemOld(GetParam() == old); }
    ~ProcessFaults() override { VnTest::makeSystemOld(false); }

    void expectNothingLeft(int descriptors) const
    {
        EXPECT_EQ(countDescriptors(), descriptors);
        EXPECT_TRUE(hasNoChildren());
        EXPECT_FALSE(hasRun()) << "the program ran all the same";
    }

    void expectRuns(char const* body = "faultyLeavesAFile", char const* expected = "there")
    {
        start(body);
        process.wait();
        EXPECT_EQ(take(), expected);
        EXPECT_TRUE(hasNoChildren());
    }
};

INSTANTIATE_TEST_SUITE_P(Systems, ProcessFaults, testing::Values(current, old),
                         [](auto const& test) { return test.param == old ? "old" : "current"; });
}  // namespace

TEST_P(ProcessFaults, eachCallThatFailsIsThrownAndLeavesNothing)
{
    expectRuns();  // the record of an earlier child, which stays
    const int descriptors = countDescriptors();
    const struct
    {
        System system;
        char const* call;
        int error;
        int after;
        int expected;
        bool mayHaveRun = false;
        bool isInCopies = false;
    } table[] = {
        {current, "clone", ENOMEM, 0, ENOMEM},
        {current, "clone", EMFILE, 0, EMFILE},
        {current, "clone", EAGAIN, 1, EAGAIN},  // in the process between, which tells
        {current, "clone", EMFILE, 1, EMFILE},
        {current, "execve", E2BIG, 0, E2BIG},    // in the new process
        {current, "execve", EINVAL, 0, EINVAL},  // not for want of calls
        {old, "socketpair", EMFILE, 0, EMFILE},
        {old, "socketpair", ENFILE, 0, ENFILE},
        {old, "fork", EAGAIN, 0, EAGAIN},
        {old, "fork", ENOMEM, 1, ENOMEM},  // in the process between
        {old, "fork", EAGAIN, 2, EAGAIN},  // in the keeper
        {old, "pipe2", EMFILE, 0, EMFILE},
        {old, "execve", E2BIG, 0, E2BIG},
        {old, "send", ENOBUFS, 0, ECHILD},  // the keeper can't say that it is there
        {old, "recv", ENOMEM, 0, ECHILD},   // nobody hears it
        {old, "recv", ENOMEM, 1, ECHILD, true},
        {old, "recv", ENOMEM, 0, ECHILD, false, true},  // the keeper doesn't hear that it may go on
        {old, "send", ENOBUFS, 1, ECHILD, true, true},  // nor can it say that the program runs
        {old, "chdir", EACCES, 0, -1, true, true},      // which it doesn't need
    };
    for (auto const& row : table) {
        if (row.system != GetParam())
            continue;
        SCOPED_TRACE(std::string(row.call) + " after " + std::to_string(row.after));
        {
            const FailingCall failing(row.call, row.error, row.after);
            if (row.isInCopies)
                VnTest::failOnlyInCopies();
            EXPECT_EQ(systemErrorOf([this] { start(); }, sourceOfStart), row.expected);
        }
        if (!row.mayHaveRun)
            expectNothingLeft(descriptors);
        if (row.expected == -1)
            process.wait();
        EXPECT_EQ(countDescriptors(), descriptors);
        EXPECT_TRUE(hasNoChildren());
        process.wait();  // of the earlier child, which has ended
    }
}

TEST_P(ProcessFaults, aProgramThatCantBeStartedLeavesNothing)
{
    expectRuns();
    const int descriptors = countDescriptors();
    char const* const missing[] = {"/missing", nullptr};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(systemErrorOf([&] { process.start(missing); }, sourceOfStart), ENOENT);
        expectNothingLeft(descriptors);
    }
    process.wait();
}

TEST_P(ProcessFaults, interruptedCallsAreRepeated)
{
    for (char const* call : {"recv", "send", "waitpid", "waitid", "poll"}) {
        const bool isForCopies = std::string(call) != "waitid" && std::string(call) != "poll";
        if (isForCopies && GetParam() != old)
            continue;
        SCOPED_TRACE(call);
        VnTest::failCall(call, EINTR, 0, 3);
        start();
        process.wait();
        EXPECT_EQ(VnTest::stopFailingCalls(), std::string(call) == "waitid" && GetParam() == old ? 0 : 3);
        EXPECT_EQ(take(), "there");
        EXPECT_TRUE(hasNoChildren());
    }
}

TEST_P(ProcessFaults, aWaitThatFailsIsThrownAndCanBeRepeated)
{
    start();
    {
        const FailingCall failing("poll", ENOMEM);
        EXPECT_EQ(systemErrorOf([this] { process.wait(); }, sourceOfStart), ENOMEM);
    }
    process.wait();
    EXPECT_EQ(take(), "there");
}

TEST_P(ProcessFaults, aStartThatHasNoMemoryLeavesNothing)
{
    expectRuns();
    const int descriptors = countDescriptors();
    int n = 0;
    for (; failsWithoutMemory(n, [this] { start(); }); ++n)
        expectNothingLeft(descriptors);
    EXPECT_GE(n, 3);
    process.wait();
    EXPECT_EQ(take(), "there");
}

/// Tells whether a descriptor beyond the standard ones is open.
VN_CHILD(faultyHasDescriptors)
{
    bool hasMore = false;
    for (int number = 3; number < 4096; ++number)
        hasMore |= ::fcntl(number, F_GETFD) != -1;
    std::ofstream(argv[1]) << (hasMore ? "more" : "three");
    return 0;
}

TEST_P(ProcessFaults, withoutACallThatClosesManyTheSystemsListIsReadAndWithoutThatTheLimit)
{
    ::rlimit limit;
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = 4096;  // a system may allow a billion
    ::setrlimit(RLIMIT_NOFILE, &limit);
    for (int number : {30, 4000})
        ::dup2(1, number);
    for (char const* call : {"close_range", "openat"})
        for (int error : {ENOSYS, EINVAL}) {
            SCOPED_TRACE(call);
            const FailingCall failing(call, error);
            expectRuns("faultyHasDescriptors", "three");
        }
    for (int number = 60; number < 400; ++number)  // more than fit into one reading of the list
        ::dup2(1, number);
    {
        const FailingCall failing("close_range", ENOSYS);
        expectRuns("faultyHasDescriptors", "three");
    }
    for (int number = 30; number < 4096; ++number)
        if (number < 400 || number == 4000)
            ::close(number);
}

/// Waits at a gate.
VN_CHILD(faultyWaits)
{
    Gate::wait(std::string(argv[1]) + "-gate");
    std::ofstream(argv[1]) << "there";
    return 0;
}

/// Also waits for the program, which it couldn't by a descriptor that its own output has replaced.
VN_CHILD(startsWithoutStandardDescriptors)
{
    VnTest::makeSystemOld(std::string(argv[1]) == "old");
    Starter starter;
    Gate gate(starter.path("file-gate"));
    VnTest::closeStandardDescriptors();
    starter.start("faultyWaits");
    const int count = VnTest::countStandardDescriptors();
    gate.open();
    starter.process.wait();
    return count + (starter.take() == "there" ? 0 : 4);
}

TEST_P(ProcessFaults, takesNoStandardDescriptor)
{
    const VnTest::ChildRun run =
        VnTest::Child("startsWithoutStandardDescriptors").arguments({GetParam() == old ? "old" : "current"}).run();
    EXPECT_EQ(run.exitCode, 0);
}

TEST_P(ProcessFaults, whatStaysForTheProgramHoldsNothingOfOurs)
{
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    Gate gate(path("file-gate"));
    start("faultyWaits");
    ::close(ends[1]);
    char nothing;
    EXPECT_EQ(::read(ends[0], &nothing, 1), 0);  // for ever if somebody else holds the other end
    ::close(ends[0]);
    gate.open();
    process.wait();
    EXPECT_EQ(take(), "there");
}

TEST_P(ProcessFaults, aWaitWhoseDescriptorSomebodyElseHasClosedIsThrown)
{
    const int first = ::dup(1), second = ::dup(1), third = ::dup(1);  // the numbers that the start will use
    for (int number : {first, second, third})
        ::close(number);
    Gate gate(path("file-gate"));
    start("faultyWaits");
    for (int number : {first, second, third})
        ::close(number);
    EXPECT_EQ(systemErrorOf([this] { process.wait(); }, sourceOfStart), EBADF);
    gate.open();
}

TEST(ProcessStart, aSystemThatLacksACallOrItsFlagsStartsByCopies)
{
    const struct
    {
        char const* call;
        int error;
        int after;
    } table[] = {
        {"waitid", EINVAL, 0}, {"waitid", ENOSYS, 0}, {"clone", ENOSYS, 0},
        {"clone", EINVAL, 0},  {"clone", EPERM, 0},   {"clone", EINVAL, 1},
    };
    Starter starter;
    for (auto const& row : table) {
        SCOPED_TRACE(row.call);
        EXPECT_EQ(starter.errorOfStart(row.call, row.error, row.after), -1);
        starter.process.wait();
        EXPECT_EQ(starter.take(), "there");
        EXPECT_TRUE(hasNoChildren());
        char const* const missing[] = {"/missing", nullptr};
        const FailingCall failing(row.call, row.error, row.after);
        EXPECT_EQ(systemErrorOf([&] { starter.process.start(missing); }, sourceOfStart), ENOENT);
        EXPECT_TRUE(hasNoChildren());
    }
}

/// Lets go of what it was given, and waits at a gate.
VN_CHILD(faultyLetsGo)
{
    VnTest::closeStandardDescriptors();
    Gate::wait(std::string(argv[1]) + "-gate");
    return 0;
}

TEST(ProcessStart, onlyTheProgramHoldsItsStandardDescriptors)
{
    const struct
    {
        char const* what;
        bool isOld;
        char const* call;
    } table[] = {{"current", false, "none"}, {"by copies", false, "clone"}, {"old", true, "none"}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        Starter starter;
        Gate gate(starter.path("file-gate"));
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        std::cout << std::flush;
        const int saved[] = {::fcntl(1, F_DUPFD_CLOEXEC, 3), ::fcntl(2, F_DUPFD_CLOEXEC, 3)};
        ::dup2(ends[1], 1);
        ::dup2(ends[1], 2);
        VnTest::makeSystemOld(row.isOld);
        const int error = starter.errorOfStart(row.call, ENOSYS, 0, "faultyLetsGo");
        VnTest::makeSystemOld(false);
        ::dup2(saved[0], 1);
        ::dup2(saved[1], 2);
        for (int number : {saved[0], saved[1], ends[1]})
            ::close(number);
        EXPECT_EQ(error, -1);
        char nothing;
        EXPECT_EQ(::read(ends[0], &nothing, 1), 0);  // for ever if somebody else holds the other end
        ::close(ends[0]);
        gate.open();
        starter.process.wait();
        EXPECT_TRUE(hasNoChildren());
    }
}

TEST(ProcessStart, aRefusedStartLeavesOtherChildrenToTheProgram)
{
    for (bool isOld : {false, true}) {
        SCOPED_TRACE(isOld);
        const ::pid_t other = ::fork();
        if (other == 0)
            ::_exit(7);
        ::siginfo_t end = {};
        ASSERT_EQ(::waitid(P_PID, static_cast<::id_t>(other), &end, WEXITED | WNOWAIT), 0);
        VnTest::makeSystemOld(isOld);
        char const* const missing[] = {"/missing", nullptr};
        EXPECT_EQ(systemErrorOf([&] { OsProcess().start(missing); }, sourceOfStart), ENOENT);
        VnTest::makeSystemOld(false);
        int status = 0;
        EXPECT_EQ(::waitpid(other, &status, 0), other);
        EXPECT_EQ(WEXITSTATUS(status), 7);
    }
}

/// Tells what the program hears of the children of a start.
VN_CHILD(looksAtTheEndsOfChildren)
{
    VnTest::makeSystemOld(std::string(argv[1]) == "old");
    Starter starter;
    ::sigset_t ends;
    ::sigemptyset(&ends);
    ::sigaddset(&ends, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &ends, nullptr);
    starter.start();
    ::siginfo_t end = {};
    const ::timespec atOnce = {};
    if (::sigtimedwait(&ends, &end, &atOnce) == SIGCHLD)
        std::cout << (end.si_code == CLD_EXITED ? "exit " : "killed ") << end.si_status << "\n";
    else
        std::cout << "nothing\n";
    starter.process.wait();
    return starter.take() == "there" ? 0 : 1;
}

/// Programs that handle SIGCHLD look at how a child has ended, and may take any other code for a failure of theirs.
TEST(ProcessStart, theProcessesBetweenEndWithoutAFailure)
{
    EXPECT_EQ(VnTest::Child("looksAtTheEndsOfChildren").arguments({"current"}).run().out, "nothing\n");
    EXPECT_EQ(VnTest::Child("looksAtTheEndsOfChildren").arguments({"old"}).run().out, "exit 0\n");
}

/// Fails one of two moves of a socket off the numbers of the standard descriptors.
VN_CHILD(startsWithoutRoomAboveStandardDescriptors)
{
    VnTest::makeSystemOld(true);
    Starter starter;
    const int first = std::stoi(argv[1]), before = countDescriptors() - 2;
    ::close(0);
    ::close(1);
    const int error = starter.errorOfStart("fcntl", EMFILE, first);
    const bool isClean = VnTest::countStandardDescriptors() == 1 && countDescriptors() == before && hasNoChildren();
    return error == EMFILE && isClean && !starter.hasRun() ? 0 : 1;
}

TEST(ProcessStart, aSocketThatCantLeaveTheStandardNumbersIsAnErrorOfAnOldSystem)
{
    for (char const* first : {"0", "1"}) {
        SCOPED_TRACE(first);
        const VnTest::ChildRun run =
            VnTest::Child("startsWithoutRoomAboveStandardDescriptors").arguments({first}).run();
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.err, "");
    }
}

namespace
{
void endThisProcess()
{
    ::kill(::getpid(), SIGKILL);
}

void quitThisProcess()
{
    ::kill(::getpid(), SIGQUIT);
}

volatile ::sig_atomic_t quits = 0;
}  // namespace

TEST(ProcessStart, aProcessBetweenThatIsKilledIsAnErrorAndLeavesNothing)
{
    Starter starter;
    const int descriptors = countDescriptors();
    VnTest::interruptCall("clone", endThisProcess, 1);
    EXPECT_EQ(systemErrorOf([&] { starter.start(); }, sourceOfStart), ECHILD);
    EXPECT_EQ(VnTest::stopFailingCalls(), 1);  // it shares our memory
    EXPECT_EQ(countDescriptors(), descriptors);
    EXPECT_TRUE(hasNoChildren());
    EXPECT_FALSE(starter.hasRun());
}

// Two processes would use the sanitizers' notes about one thread and its stack.
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
namespace
{
int goOn[2];

/// In the new process: kills the one between, and goes on when it is told to. From the one to the other this process's
/// own thread runs in the same memory, so the plan of failing calls must not be looked at.
void killTheOneBetween()
{
    ::kill(::getppid(), SIGKILL);
    char word;
    ::syscall(SYS_read, goOn[0], &word, 1);
}
}  // namespace

TEST(ProcessStart, aProgramWhoseProcessBetweenIsKilledStillHasWhatItNeeds)
{
    Starter starter;
    starter.start();
    starter.process.wait();
    EXPECT_EQ(starter.take(), "there");
    ASSERT_EQ(::pipe2(goOn, O_CLOEXEC), 0);
    char word;
    EXPECT_EQ(::write(goOn[1], "", 1), 1);
    EXPECT_EQ(::syscall(SYS_read, goOn[0], &word, 1), 1);  // so that each call has been looked up
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    VnTest::interruptCall("execve", killTheOneBetween);
    EXPECT_EQ(systemErrorOf([&] { starter.start(); }, sourceOfStart), ECHILD);
    VnTest::stopFailingCalls();
    EXPECT_EQ(::write(goOn[1], "", 1), 1);
    ::siginfo_t end = {};
    EXPECT_EQ(::waitid(P_ALL, 0, &end, WEXITED | __WALL), 0);
    EXPECT_EQ(starter.take(), "there");
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
    for (int number : goOn)
        ::close(number);
}
#endif

/// A system before 5.16 ends all processes that share memory when it writes a core of one of them.
TEST(ProcessStart, aSignalThatEndsTheNewProcessMakesNoCoreOfOurMemoryAndRunsNoHandlerOfOurs)
{
    Starter starter;
    ::signal(SIGQUIT, [](int) { quits = quits + 1; });
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    VnTest::interruptCall("execve", quitThisProcess);
    starter.start();
    VnTest::stopFailingCalls();
    ::siginfo_t end = {};
    EXPECT_EQ(::waitid(P_ALL, 0, &end, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(end.si_code, CLD_EXITED);
    EXPECT_EQ(quits, 0);
    starter.process.wait();
    EXPECT_TRUE(hasNoChildren());
    EXPECT_FALSE(starter.hasRun());
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

VN_CHILD(takesInOrphansOnAnOldSystem)
{
    VnTest::makeSystemOld(true);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    Starter starter;
    const int descriptors = countDescriptors();
    starter.start();
    starter.process.wait();
    std::cout << starter.take() << hasNoChildren();
    starter.process.wait();  // at once
    char const* const missing[] = {"/missing", nullptr};
    std::cout << systemErrorOf([&] { starter.process.start(missing); }, sourceOfStart) << hasNoChildren();
    Gate gate(starter.path("file-gate"));
    {
        OsProcess gone;
        starter.startIn(gone, "faultyWaits");
    }
    gate.open();
    ::siginfo_t end = {};
    std::cout << ::waitid(P_ALL, 0, &end, WEXITED | WNOWAIT) << starter.take();
    std::cout << (end.si_code == CLD_EXITED) << end.si_status;
    starter.start();
    starter.process.wait();
    std::cout << starter.take() << hasNoChildren() << countDescriptors() - descriptors << "\n";
    return 0;
}

TEST(ProcessStart, anOldSystemsKeepersAreCollectedWhereThisProcessTakesInOrphans)
{
    VnTest::expectOutput("takesInOrphansOnAnOldSystem",
                         "there1" + std::to_string(ENOENT) + "10there" + "10" + "there1" + "1\n");
}

/// There the process between runs the program itself, from a table of descriptors of its own.
VN_CHILD(startsInAnotherNamespaceWithoutATableOfItsOwn)
{
    if (!VnTest::enterPidNamespace())
        return VnTest::notAllowed;
    {  // so that all of it is gone when the process ends
        Starter starter;
        Gate gate(starter.path("file-gate"));
        starter.start("faultyWaits");  // without a first process there are no others
        const int descriptors = countDescriptors();
        OsProcess other;
        char const* const command[] = {"/bin/true", nullptr};
        for (int error : {ENOMEM, EPERM}) {
            const FailingCall failing("unshare", error);
            const int result = systemErrorOf([&] { other.start(command); }, sourceOfStart);
            std::cout << (result == ENOMEM ? "refused "
                          : result == -1   ? "by copies "
                                           : "wrong ")
                      << (::fcntl(1, F_GETFD) == 0);
            if (result == -1)
                other.wait();
            else
                std::cout << countDescriptors() - descriptors << " ";
        }
        gate.open();
        starter.process.wait();
        std::cout << starter.take() << hasNoChildren() << "\n";
    }
    VnTest::leavePidNamespace();
}

TEST(ProcessStart, withoutATableOfDescriptorsForItAProgramIsNotStartedInOurs)
{
    const VnTest::ChildRun run = VnTest::Child("startsInAnotherNamespaceWithoutATableOfItsOwn").run();
    if (run.exitCode == VnTest::notAllowed)
        GTEST_SKIP() << "only root, or a user who may have user namespaces, may have PID namespaces";
    EXPECT_EQ(run.out, "refused 10 by copies 1there1\n");
}

/// The program runs already, so it stays where it is.
VN_CHILD(startsWithoutRoomForAProcessDescriptor)
{
    Starter starter;
    Gate gate(starter.path("file-gate"));
    ::close(0);
    if (starter.errorOfStart("fcntl", EMFILE, 0, "faultyWaits") != -1)
        return 1;
    gate.open();
    starter.process.wait();
    return starter.take() == "there" && hasNoChildren() ? 0 : 2;
}

TEST(ProcessStart, aProcessDescriptorThatCantLeaveTheStandardNumbersIsWaitedFor)
{
    EXPECT_EQ(VnTest::Child("startsWithoutRoomForAProcessDescriptor").run().exitCode, 0);
}

TEST(ProcessStart, theSearchGoesOnBehindAFolderThatIsNotThereForTheMoment)
{
    Starter starter;
    const std::string folders = starter.path("a") + ":" + starter.path("b");
    for (char const* name : {"a", "b"}) {
        std::filesystem::create_directory(starter.path(name));
        std::filesystem::create_symlink("/bin/true", starter.path(name) + "/vntrue");
    }
    const std::string before = std::getenv("PATH");
    ::setenv("PATH", folders.c_str(), 1);
    char const* const command[] = {"vntrue", nullptr};
    const struct
    {
        int error;
        int expected;
    } table[] = {{ENOENT, -1},   {EACCES, -1},       {ENOTDIR, -1},   {ESTALE, -1},
                 {ENODEV, -1},   {ETIMEDOUT, -1},    {E2BIG, E2BIG},  {ENOMEM, ENOMEM},
                 {ELOOP, ELOOP}, {ETXTBSY, ETXTBSY}, {EINVAL, EINVAL}};
    for (auto const& row : table) {
        const FailingCall failing("execve", row.error);
        EXPECT_EQ(systemErrorOf([&] { starter.process.start(command); }, sourceOfStart), row.expected) << row.error;
        starter.process.wait();
    }
    ::setenv("PATH", before.c_str(), 1);
}

VN_CHILD(startsInAnotherNamespaceOnAnOldSystem)
{
    VnTest::makeSystemOld(true);
    if (!VnTest::enterPidNamespace())
        return VnTest::notAllowed;
    {  // so that all of it is gone when the process ends
        Starter starter;
        Gate gate(starter.path("file-gate"));
        starter.start("faultyWaits");
        Starter other;
        other.start();
        other.process.wait();
        std::cout << other.take() << starter.hasRun();
        gate.open();
        starter.process.wait();
        std::cout << starter.take() << hasNoChildren() << "\n";
    }
    VnTest::leavePidNamespace();
}

TEST(ProcessStart, anOldSystemStartsProgramsInAnotherPidNamespace)
{
    const VnTest::ChildRun run = VnTest::Child("startsInAnotherNamespaceOnAnOldSystem").run();
    if (run.exitCode == VnTest::notAllowed)
        GTEST_SKIP() << "only root, or a user who may have user namespaces, may have PID namespaces";
    EXPECT_EQ(run.out, "there0there1\n");
}

// --- environment -----------------------------------------------------------------------------------------------------

TEST(EnvFaults, anObjectThatHasNoMemoryIsNotListed)
{
    const std::size_t before = EnvVar::getRegistry().size();
    std::optional<EnvIntVar> variable;
    int n = 0;
    for (; failsWithoutMemory(n, [&variable] { variable.emplace("VN_TEST_A", 1); }); ++n)
        EXPECT_EQ(EnvVar::getRegistry().size(), before);
    EXPECT_GE(n, 1);
    EXPECT_EQ(EnvVar::getRegistry().size(), before + 1);
}
