// Dates, processor, modules, processes and environment objects while the system refuses: each call in turn, and each
// allocation.
#include "memory.h"
#include "systemcalls.h"

#include "child.h"
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
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

using namespace Vn;
using VnTest::contentOf;
using VnTest::countDescriptors;
using VnTest::FailingCall;
using VnTest::failsWithoutMemory;
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

bool hasNoChildren()
{
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
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
class ProcessFaults : public testing::Test
{
protected:
    ProcessFaults() : _file(_folder.path("file")), _program(getProgramPath())
    {
        _command[0] = _program.c_str();
        _command[3] = _file.c_str();
    }

    /// What the start throws while a call fails; the child's file and the state of this process tell the rest.
    int errorOfStart(char const* call, int error, int after)
    {
        const FailingCall failing(call, error, after);
        return systemErrorOf([this] { _process.start(_command); }, "src/base/osprocesswindows");
    }

    void expectNothingLeft(int descriptors) const
    {
        EXPECT_EQ(countDescriptors(), descriptors);
        EXPECT_TRUE(hasNoChildren());
        EXPECT_FALSE(std::filesystem::exists(_file)) << "the program ran all the same";
    }

    /// Starts it undisturbed, or while `call` is disturbed.
    void expectRuns()
    {
        _process.start(_command);
        _process.wait();
        EXPECT_EQ(contentOf(_file), "there");
        std::filesystem::remove(_file);
    }

    TempFolder _folder;
    std::string _file;
    std::string _program;
    char const* _command[5] = {nullptr, "--child", "faultyLeavesAFile", nullptr, nullptr};
    OsProcess _process;
};
}  // namespace

TEST_F(ProcessFaults, eachCallThatFailsIsThrownAndLeavesNothing)
{
    expectRuns();  // the record of an earlier child, which stays
    const int descriptors = countDescriptors();
    const struct
    {
        char const* call;
        int error;
        int after;
        int expected;
    } table[] = {
        {"socketpair", EMFILE, 0, EMFILE}, {"socketpair", ENFILE, 0, ENFILE}, {"fork", EAGAIN, 0, EAGAIN},
        {"fork", ENOMEM, 0, ENOMEM},       {"clone", EAGAIN, 0, EAGAIN},  // in the process between, which tells
        {"clone", ENOMEM, 0, ENOMEM},      {"pidfd_open", EMFILE, 0, EMFILE}, {"pidfd_open", ENOSYS, 0, ENOSYS},
        {"send", ENOBUFS, 0, ECHILD},  // the new process can't say that it is there
        {"recv", ENOMEM, 0, ECHILD},   // nobody hears it
        {"recv", ENOMEM, 1, ECHILD},   // the program may have started by then
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.call);
        EXPECT_EQ(errorOfStart(row.call, row.error, row.after), row.expected);
        if (row.after == 0) {
            expectNothingLeft(descriptors);
        }
        EXPECT_EQ(countDescriptors(), descriptors);
        EXPECT_TRUE(hasNoChildren());
        _process.wait();  // of the earlier child, which has ended
    }
}

TEST_F(ProcessFaults, aProgramThatCantBeStartedLeavesNothing)
{
    expectRuns();
    const int descriptors = countDescriptors();
    char const* const missing[] = {"/missing", nullptr};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(systemErrorOf([&] { _process.start(missing); }, "src/base/osprocesswindows"), ENOENT);
        expectNothingLeft(descriptors);
    }
    _process.wait();
}

TEST_F(ProcessFaults, interruptedCallsAreRepeated)
{
    for (char const* call : {"recv", "send", "waitpid", "poll"}) {
        SCOPED_TRACE(call);
        VnTest::failCall(call, EINTR, 0, 3);
        _process.start(_command);
        _process.wait();
        EXPECT_EQ(VnTest::stopFailingCalls(), 3);
        EXPECT_EQ(contentOf(_file), "there");
        EXPECT_TRUE(hasNoChildren());
        std::filesystem::remove(_file);
    }
}

TEST_F(ProcessFaults, aWaitThatFailsIsThrownAndCanBeRepeated)
{
    _process.start(_command);
    {
        const FailingCall failing("poll", ENOMEM);
        EXPECT_EQ(systemErrorOf([this] { _process.wait(); }, "src/base/osprocesswindows"), ENOMEM);
    }
    _process.wait();
    EXPECT_EQ(contentOf(_file), "there");
}

TEST_F(ProcessFaults, aStartThatHasNoMemoryLeavesNothing)
{
    expectRuns();
    const int descriptors = countDescriptors();
    int n = 0;
    for (; failsWithoutMemory(n, [this] { _process.start(_command); }); ++n)
        expectNothingLeft(descriptors);
    EXPECT_GE(n, 1);
    _process.wait();
    EXPECT_EQ(contentOf(_file), "there");
}

/// Tells by its exit whether a descriptor beyond the standard ones is open.
VN_CHILD(faultyHasDescriptors)
{
    bool hasMore = false;
    for (int number = 3; number < 4096; ++number)
        hasMore |= ::fcntl(number, F_GETFD) != -1;
    std::ofstream(argv[1]) << (hasMore ? "more" : "three");
    return 0;
}

TEST_F(ProcessFaults, anOlderSystemClosesDescriptorsOneByOne)
{
    ::rlimit limit;
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = 4096;  // a system may allow a billion
    ::setrlimit(RLIMIT_NOFILE, &limit);
    for (int number : {30, 4000})
        ::dup2(1, number);
    _command[2] = "faultyHasDescriptors";
    for (int error : {ENOSYS, EINVAL}) {
        const FailingCall failing("close_range", error);
        _process.start(_command);
        _process.wait();
        EXPECT_EQ(contentOf(_file), "three");
    }
    for (int number : {30, 4000})
        ::close(number);
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
