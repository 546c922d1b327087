// The file layer while the system refuses: each call in turn, with the errors that people meet.
#include "memory.h"
#include "systemcalls.h"

#include "largebuffer.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/osdirectory.h>
#include <base/osenv.h>
#include <base/osfileex.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>
#include <base/osutils.h>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

using namespace Vn;
using VnTest::contentOf;
using VnTest::countDescriptors;
using VnTest::FailingCall;
using VnTest::failsWithoutMemory;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

namespace
{
const OsFileTypes::Permissions usual;
const OsPassThroughFilter everything;

OsFilePath pathOf(std::string const& path)
{
    return OsFilePath(path.c_str());
}

/// A tree for one act: two files, a folder with a file, an empty folder, a pipe, a link.
class FileFault : public testing::Test
{
protected:
    FileFault()
    {
        temp.file("file", std::string(0x18000, 'f'));
        temp.file("folder/below", "below");
        temp.folder("empty");
        ::mkfifo(temp.path("pipe").c_str(), 0600);
        std::filesystem::create_symlink("file", temp.path("link"));
    }

    ~FileFault() override { EXPECT_EQ(countDescriptors(), descriptors) << "a descriptor has leaked"; }

    OsFilePath at(char const* name) const { return pathOf(temp.path(name)); }
    OsFile file(char const* name) const { return OsFile(at(name)); }
    OsDirectory directory(char const* name) const { return OsDirectory(at(name)); }

    const int descriptors = countDescriptors();
    const TempFolder temp;
};

/// An act with one call of the system that may fail.
struct Act
{
    char const* what;
    char const* call;
    char const* source;
    std::function<void()> run;
    int after = 0;  ///< such calls go before the one that counts
};
}  // namespace

TEST_F(FileFault, whatTheSystemRefusesIsThrownWithItsCode)
{
    temp.folder("nest/sub");
    temp.folder("same/sub");
    // The act doesn't happen, so each can be tried with one error after the other.
    const Act acts[] = {
        {"reader", "open", "src/base/osfilereaderwindows", [&] { OsFileReader reader(at("file")); }},
        {"reader, looked at", "fstat", "src/base/osfilereaderwindows", [&] { OsFileReader reader(at("file")); }},
        {"reader of a pipe", "fcntl", "src/base/osfilereaderwindows", [&] { OsFileReader reader(at("pipe")); }},
        {"reader of a pipe, set", "fcntl", "src/base/osfilereaderwindows", [&] { OsFileReader reader(at("pipe")); },
         1},
        {"writer", "open", "src/base/osfilewriterwindows", [&] { OsFileWriter writer(at("new"), usual, true); }},
        {"create file", "open", "src/base/osfsutilswindows", [&] { file("new").create(usual, true); }},
        {"create directory", "mkdir", "src/base/osdirectorywindows", [&] { directory("new").create(usual); }},
        {"create dir", "mkdir", "src/base/osfsutilswindows",
         [&] { OsFsUtils::createDir(at("new").getChars(), true); }},
        {"remove directory", "rmdir", "src/base/osdirectorywindows", [&] { directory("empty").remove(); }},
        {"remove dir", "rmdir", "src/base/osfsutilswindows", [&] { OsFsUtils::removeDir(at("empty").getChars()); }},
        {"remove", "unlink", "src/base/osfilewindows", [&] { file("file").remove(); }},
        {"delete", "unlink", "src/base/osfsutilswindows", [&] { OsFsUtils::deleteFile(at("file").getChars()); }},
        {"rename", "renameat2", "src/base/osfilewindows", [&] { file("file").renameTo(at("new")); }},
        {"place", "statfs", "src/base/osfilewindows", [&] { file("file").getUnbufferedInfo(); }},
        {"owner", "getpwuid_r", "src/base/osfilewindows", [&] { file("file").getOwner(); }},
        {"list", "opendir", "src/base/osdirectorywindows",
         [&] { directory("").getChildrenPath(OsFileTypes::FullPath, everything); }},
        {"list on", "readdir", "src/base/osdirectorywindows",
         [&] { directory("").getChildrenPath(OsFileTypes::FullPath, everything); }, 3},
        {"children", "readdir", "src/base/osdirectorywindows", [&] { directory("").getChildren(everything); }, 4},
        {"any children", "opendir", "src/base/osdirectorywindows", [&] { directory("").hasChildren(everything); }},
        {"copy a tree", "fdopendir", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("empty"), at("folder")); }},
        {"copy a tree, target", "open", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("empty"), at("folder")); }},
        {"copy a tree, source", "open", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("empty"), at("folder")); }, 1},
        {"copy a tree, looked at", "fstat", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("empty"), at("folder")); }, 1},
        {"copy a tree, duplicate", "fcntl", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("empty"), at("folder")); }},
        {"copy a tree, child made", "mkdirat", "src/base/osfsutilswindows",
         [&] { OsDirectory::copyHierarchy(at("nest"), at("folder")); }},
        {"copy a tree, child's target", "openat", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("nest"), at("same")); }},
        {"copy a tree, child's source", "openat", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("nest"), at("same")); }, 1},
        {"copy a tree, file's source", "openat", "src/base/osfilereaderwindows",
         [&] { OsDirectory::copyHierarchy(at("folder"), at("empty")); }},
        {"copy a tree, file's target", "openat", "src/base/osfilewriterwindows",
         [&] { OsDirectory::copyHierarchy(at("folder"), at("empty")); }, 1},
        {"empty a folder", "open", "src/base/osdirectorywindows",
         [&] { directory("folder").removeChildren(everything); }},
        {"empty a folder of files", "unlinkat", "src/base/osfsutilswindows",
         [&] { directory("folder").removeChildren(everything); }},
        {"empty a folder of folders", "unlinkat", "src/base/osfsutilswindows",
         [&] { directory("nest").removeChildren(everything); }, 1},
        {"resolve", "getcwd", "src/base/osfilepathwindows", [&] { OsFilePath("relative").getBaseName(); }},
        {"gone after it was there: size", "stat", "src/base/osfilewindows", [&] { file("file").getSize(); }, 1},
        {"gone after it was there: type", "stat", "src/base/osfilewindows", [&] { file("file").getType(); }, 1},
        {"gone after it was there: owner", "stat", "src/base/osfilewindows", [&] { file("file").getOwner(); }, 1},
        {"gone after it was there: time", "stat", "src/base/osfilewindows",
         [&] { file("file").getLastModificationTime(); }, 1},
        {"gone after it was there: copied tree", "stat", "src/base/osdirectorywindows",
         [&] { OsDirectory::copyHierarchy(at("empty"), at("folder")); }, 1},
    };
    for (Act const& act : acts) {
        for (int error : {EACCES, ENOSPC, EMFILE, ENFILE, EIO, ENOMEM, EROFS, ESTALE}) {
            SCOPED_TRACE(std::string(act.what) + ", " + std::to_string(error));
            const FailingCall failing(act.call, error, act.after);
            EXPECT_EQ(systemErrorOf(act.run, act.source), error);
            EXPECT_EQ(VnTest::stopFailingCalls(), 1);
        }
    }
    EXPECT_EQ(contentOf(temp.path("file")), std::string(0x18000, 'f'));
    EXPECT_FALSE(std::filesystem::exists(temp.path("new")));
}

TEST_F(FileFault, anInterruptedCallIsRepeated)
{
    const Act acts[] = {
        {"reader", "open", "", [&] { OsFileReader reader(at("file")); }},
        {"reader, looked at", "fstat", "", [&] { OsFileReader reader(at("file")); }},
        {"read", "read", "",
         [&] {
             char bytes[4];
             EXPECT_EQ(OsFileReader(at("file")).read(bytes, 4), 4U);
         }},
        {"writer", "open", "", [&] { OsFileWriter writer(at("written"), usual, false); }},
        {"write", "write", "", [&] { EXPECT_EQ(OsFileWriter(at("written"), usual, false).write("abcd", 4), 4U); }},
        {"reserve", "ftruncate", "", [&] { OsFileWriter(at("written"), usual, false).reserve(5); }},
        {"close", "close", "", [&] { OsFileWriter(at("written"), usual, false).close(); }},
        {"close, the second number", "close", "", [&] { OsFileWriter(at("written"), usual, false).close(); }, 1},
        {"create", "open", "", [&] { file("new").create(usual, true); }},
        {"exists", "stat", "", [&] { EXPECT_TRUE(file("file").exists()); }},
        {"link", "lstat", "", [&] { EXPECT_TRUE(file("link").isSymLink()); }},
        {"access", "faccessat", "", [&] { EXPECT_EQ(file("file").getAccess(), 3); }},
        {"place", "statfs", "", [&] { file("file").getUnbufferedInfo(); }},
        {"owner", "getpwuid_r", "", [&] { EXPECT_NE(*file("file").getOwner().get(), '\0'); }},
        {"list", "opendir", "", [&] { EXPECT_TRUE(directory("").hasChildren(everything)); }},
        {"list on", "readdir", "",
         [&] {
             const ObjPtr<Vector<OsFilePath>> names(
                 directory("").getChildrenPath(OsFileTypes::LeafPath, everything));
             EXPECT_EQ(names->size(), 7U);
         },
         3},
        {"rename", "renameat2", "", [&] { file("new").renameTo(at("newer")); }},
        {"remove", "unlink", "", [&] { file("newer").remove(); }},
        {"make", "mkdir", "", [&] { directory("made").create(usual); }},
        {"remove directory", "rmdir", "", [&] { directory("made").remove(); }},
    };
    for (Act const& act : acts) {
        SCOPED_TRACE(act.what);
        VnTest::failCall(act.call, EINTR, act.after, 1);
        EXPECT_NO_THROW(act.run());
        EXPECT_EQ(VnTest::stopFailingCalls(), 1);
    }
}

TEST_F(FileFault, aFailedMoveOfBytesLeavesTheFileOpen)
{
    OsFileReader reader(at("file"));
    char bytes[8];
    for (int error : {EIO, ENOMEM, EBADF}) {
        const FailingCall failing("read", error);
        EXPECT_EQ(systemErrorOf([&] { reader.read(bytes, 8); }, "src/base/osfilereaderwindows"), error);
    }
    EXPECT_EQ(reader.read(bytes, 8), 8U);
    for (int call : {0, 1}) {
        const FailingCall failing("lseek", EIO, call);
        EXPECT_EQ(systemErrorOf([&] { reader.seek(1, OsFileTypes::FromBegin); }, "src/base/osfilereaderwindows"),
                  EIO);
        VnTest::stopFailingCalls();
        EXPECT_EQ(reader.seek(0, OsFileTypes::FromCurrent), 8);
    }

    OsFileWriter writer(at("written"), usual, true);
    for (int error : {EIO, EDQUOT, EFBIG, EPERM}) {
        const FailingCall failing("write", error);
        EXPECT_EQ(systemErrorOf([&] { writer.write("abc", 3); }, "src/base/osfilewriterwindows"), error);
    }
    {
        const FailingCall failing("write", ENOSPC);
        EXPECT_EQ(writer.write("abc", 3), 0U) << "a full device is a short count";
    }
    {
        const FailingCall failing("ftruncate", EFBIG);
        EXPECT_EQ(systemErrorOf([&] { writer.reserve(10); }, "src/base/osfilewriterwindows"), EFBIG);
    }
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromCurrent), 10) << "the position was set before the length";
    EXPECT_EQ(contentOf(temp.path("written")), "");
    {
        const FailingCall failing("lseek", EIO);
        EXPECT_EQ(systemErrorOf([&] { writer.reserve(20); }, "src/base/osfilewriterwindows"), EIO);
    }
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromBegin), 0);
    EXPECT_EQ(writer.write("abc", 3), 3U);
    EXPECT_EQ(contentOf(temp.path("written")), "abc");
}

TEST_F(FileFault, whatClosingReportsLeavesTheFileOpen)
{
    OsFileWriter writer(at("written"), usual, true);
    for (int error : {EIO, ENOSPC, EDQUOT}) {
        const FailingCall failing("close", error);
        EXPECT_EQ(systemErrorOf([&] { writer.close(); }, "src/base/osfilewriterwindows"), error);
        VnTest::stopFailingCalls();
        EXPECT_EQ(writer.write("x", 1), 1U);
    }
    writer.close();
    EXPECT_THROW(writer.close(), ExSysErrorANSI);
    EXPECT_EQ(contentOf(temp.path("written")), "xxx");
    OsFileReader reader(at("file"));
    {
        const FailingCall failing("close", EIO);
        EXPECT_EQ(systemErrorOf([&] { reader.close(); }, "src/base/osfilereaderwindows"), EIO);
    }
    char letter;
    EXPECT_EQ(reader.read(&letter, 1), 1U);
}

TEST_F(FileFault, closingWorksWithoutAFreeDescriptor)
{
    OsFileWriter writer(at("written"), usual, true);
    {
        const FailingCall failing("fcntl", EMFILE);
        writer.close();
    }
    EXPECT_THROW(writer.close(), ExSysErrorANSI);
}

TEST_F(FileFault, aFailureToCloseWithoutAFreeDescriptorIsThrownOnce)
{
    OsFileWriter writer(at("written"), usual, true);
    const int input = ::dup(0), output = ::dup(1);
    ::rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    ::rlimit standardOnly = before;
    standardOnly.rlim_cur = 3;
    ::setrlimit(RLIMIT_NOFILE, &standardOnly);
    // Two stay free, which the library doesn't take: sanitizers need a pipe to look at an exception.
    ::close(0);
    ::close(1);
    bool isThrown = false;
    try {
        const FailingCall failing("close", EIO);
        writer.close();
    } catch (ExSysErrorWindows const&) {
        isThrown = true;
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
    ::dup2(input, 0);
    ::dup2(output, 1);
    ::close(input);
    ::close(output);
    EXPECT_TRUE(isThrown);
    EXPECT_THROW(writer.close(), ExSysErrorANSI) << "the system has closed it all the same";
}

TEST_F(FileFault, aDestructorSwallowsWhatClosingReports)
{
    const FailingCall failing("close", EIO, 0, 2);
    {
        OsFileReader reader(at("file"));
        OsFileWriter writer(at("written"), usual, true);
    }
    EXPECT_EQ(VnTest::stopFailingCalls(), 2);
}

TEST_F(FileFault, shortTransfersCopyTheWhole)
{
    VnTest::makeTransfersShort(true);
    char bytes[4];
    EXPECT_EQ(OsFileReader(at("file")).read(bytes, 4), 1U) << "as from a pipe that has no more";
    EXPECT_EQ(OsFileWriter(at("written"), usual, true).write("abcd", 4), 4U);
    file("file").copyTo(at("copy"));
    VnTest::makeTransfersShort(false);
    EXPECT_EQ(contentOf(temp.path("written")), "abcd");
    EXPECT_EQ(contentOf(temp.path("copy")), std::string(0x18000, 'f'));
}

TEST_F(FileFault, aShortWriteGoesOnUntilTheDeviceIsFullOrTheSystemRefuses)
{
    OsFileWriter writer(at("written"), usual, true);
    VnTest::makeTransfersShort(true);
    {
        const FailingCall failing("write", ENOSPC, 2);
        EXPECT_EQ(writer.write("abcd", 4), 2U);
    }
    {
        const FailingCall failing("write", EIO, 3);
        EXPECT_EQ(systemErrorOf([&] { writer.write("efgh", 4); }, "src/base/osfilewriterwindows"), EIO);
    }
    {
        const FailingCall failing("write", EINTR, 1, 3);
        EXPECT_EQ(writer.write("ijk", 3), 3U);
    }
    VnTest::makeTransfersShort(false);
    EXPECT_EQ(contentOf(temp.path("written")), "abefgijk") << "what was moved stays, and the position behind it";
}

TEST_F(FileFault, gigabytesAreMovedInSeveralCalls)
{
    const VnTest::LargeBuffer buffer(0x100000000);
    if (char const* const reason = VnTest::whyNoLargeBuffer(buffer))
        GTEST_SKIP() << reason;
    constexpr unsigned long gigabyte = 0x40000000;
    OsFileWriter writer(OsFilePath("/dev/null"), usual, false);
    {
        const FailingCall failing("write", ENOSPC, 3);
        EXPECT_EQ(writer.write(buffer.get(), 0xFFFFFFFF), 3 * gigabyte);
    }
    {
        const FailingCall failing("write", EIO, 3);
        EXPECT_EQ(systemErrorOf([&] { writer.write(buffer.get(), 0xFFFFFFFF); }, "src/base/osfilewriterwindows"),
                  EIO);
    }
    const FailingCall failing("write", EIO, 4);
    EXPECT_EQ(writer.write(buffer.get(), 0xFFFFFFFF), 0xFFFFFFFFU) << "four calls";
    EXPECT_EQ(VnTest::stopFailingCalls(), 0);
}

TEST_F(FileFault, aCopyThatFailsLeavesWhatWasCopied)
{
    const struct
    {
        char const* call;
        int error;
        int after;
        char const* source;
        std::size_t copied;
    } table[] = {
        {"open", EMFILE, 0, "src/base/osfilereaderwindows", 3},  // the old target stays
        {"open", ENOSPC, 1, "src/base/osfilewriterwindows", 3},
        {"read", EIO, 0, "src/base/osfilereaderwindows", 0},
        {"read", EIO, 1, "src/base/osfilereaderwindows", 0x10000},
        {"write", EIO, 0, "src/base/osfilewriterwindows", 0},
        {"write", EDQUOT, 1, "src/base/osfilewriterwindows", 0x10000},
        {"write", ENOSPC, 1, "src/base/osfilewindows", 0x10000},
        {"close", EIO, 0, "src/base/osfilewriterwindows", 0x18000},
        {"close", EIO, 2, "src/base/osfilereaderwindows", 0x18000},
    };
    VnTest::setSystemCopies(VnTest::SystemCopies::never);
    for (auto const& row : table) {
        SCOPED_TRACE(std::string(row.call) + std::to_string(row.after));
        temp.file("target", "old");
        const FailingCall failing(row.call, row.error, row.after);
        EXPECT_EQ(systemErrorOf([&] { file("file").copyTo(at("target")); }, row.source), row.error);
        VnTest::stopFailingCalls();
        EXPECT_EQ(std::filesystem::file_size(temp.path("target")), row.copied);
        EXPECT_EQ(countDescriptors(), descriptors);
    }
    VnTest::setSystemCopies(VnTest::SystemCopies::asItCan);
}

TEST_F(FileFault, whatTheSystemDoesNotCopyByItselfIsReadAndWritten)
{
    std::string content;
    for (int i = 0; i < 0x28001; ++i)
        content += static_cast<char>(i / 251);
    temp.file("file", content);
    const struct
    {
        char const* call;
        int error;
        int after;
    } table[] = {
        {"copy_file_range", EXDEV, 0},
        {"copy_file_range", EINVAL, 0},
        {"copy_file_range", ENOSYS, 0},
        {"copy_file_range", EOPNOTSUPP, 0},
        {"copy_file_range", EPERM, 0},
        {"copy_file_range", ENOSPC, 0},
        {"copy_file_range", EIO, 0},
        {"copy_file_range", EIO, 3},
        {"copy_file_range", ENOSPC, 90},
        {"copy_file_range", EINTR, 0},
        {"copy_file_range", EINTR, 3},
        {"ioctl", EXDEV, 0},
        {"ioctl", EINVAL, 0},
        {"ioctl", EIO, 0},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(std::string(row.call) + ", " + std::to_string(row.error) + ", " + std::to_string(row.after));
        temp.file("target", "old");
        VnTest::setSystemCopies(row.after > 0 ? VnTest::SystemCopies::inSmallSteps : VnTest::SystemCopies::asItCan);
        VnTest::failCall(row.call, row.error, row.after);
        EXPECT_NO_THROW(file("file").copyTo(at("target")));
        EXPECT_EQ(VnTest::stopFailingCalls(), 1);
        VnTest::setSystemCopies(VnTest::SystemCopies::asItCan);
        EXPECT_TRUE(contentOf(temp.path("target")) == content);
    }
}

TEST_F(FileFault, aCopyThatSharesBlocksGoesOnBehindThem)
{
    const std::string content(0x18000, 'f');
    for (auto const& [call, after] : {std::pair("lseek", -1), std::pair("lseek", 0), std::pair("lseek", 1)}) {
        SCOPED_TRACE(after);
        temp.file("target", "old");
        VnTest::setSystemCopies(VnTest::SystemCopies::byBlocks);
        if (after >= 0)
            VnTest::failCall(call, EIO, after);
        EXPECT_NO_THROW(file("file").copyTo(at("target")));
        EXPECT_EQ(VnTest::stopFailingCalls(), after >= 0 ? 1 : 0);
        VnTest::setSystemCopies(VnTest::SystemCopies::asItCan);
        EXPECT_TRUE(contentOf(temp.path("target")) == content);
    }
    VnTest::setSystemCopies(VnTest::SystemCopies::byBlocks);
    VnTest::failCall("write", EIO);
    EXPECT_NO_THROW(file("file").copyTo(at("target"))) << "with all blocks shared there is nothing to write";
    EXPECT_EQ(VnTest::stopFailingCalls(), 0);
    VnTest::setSystemCopies(VnTest::SystemCopies::asItCan);
}

TEST_F(FileFault, aFileThatChangesWhileItIsCopiedIsCopiedUpToItsEnd)
{
    // Another program's write between two calls of the copy: appends, or cuts the file.
    static std::string path;
    path = temp.path("file");
    const auto grow = [] { std::filesystem::resize_file(path, 0x30000); };
    const auto shrink = [] { std::filesystem::resize_file(path, 0x14000); };
    for (auto const copies :
         {VnTest::SystemCopies::asItCan, VnTest::SystemCopies::never, VnTest::SystemCopies::byBlocks}) {
        for (char const* call : {"copy_file_range", "read"}) {
            const bool isCalled = std::string(call) == "read" || copies != VnTest::SystemCopies::byBlocks;
            SCOPED_TRACE(std::string(call) + std::to_string(static_cast<int>(copies)));
            for (void (*const change)() : {+grow, +shrink}) {
                temp.file("file", std::string(0x18000, 'f'));
                VnTest::setSystemCopies(copies);
                // Shared blocks are all that there was; what comes after them is found by the second reading.
                VnTest::interruptCall(call, change, copies == VnTest::SystemCopies::byBlocks ? 1 : 0);
                EXPECT_NO_THROW(file("file").copyTo(at("target")));
                EXPECT_EQ(VnTest::stopFailingCalls(), isCalled ? 1 : 0);
                VnTest::setSystemCopies(VnTest::SystemCopies::asItCan);
                const std::string copy = contentOf(temp.path("target"));
                if (!isCalled) {
                    EXPECT_EQ(copy.size(), 0x18000U);
                } else if (change == +grow) {
                    EXPECT_TRUE(copy == contentOf(path)) << copy.size();
                } else {
                    // What was there when it was read; nothing behind it that the file never held.
                    EXPECT_TRUE(copy == std::string(copy.size(), 'f')) << copy.size();
                    EXPECT_GE(copy.size(), 0x14000U);
                    EXPECT_LE(copy.size(), 0x18000U);
                }
            }
        }
    }
}

TEST_F(FileFault, aListingAsksOnlyAboutWhatItDoesNotKnow)
{
    // Only the link's type is unknown, and even that is not asked for where the name decides.
    const struct
    {
        char const* what;
        std::shared_ptr<OsFileFilter> filter;
        std::size_t children;
        int questions;
    } table[] = {
        {"all", std::make_shared<OsPassThroughFilter>(), 5, 0},
        {"directories", std::make_shared<OsDirectoryFilter>(), 2, 1},
        {"leaves", std::make_shared<OsLeafFileFilter>(), 3, 1},
        {"names that no link has", std::make_shared<OsLeafFileFilter>("e"), 2, 0},
        {"the link's name", std::make_shared<OsLeafFileFilter>("k"), 1, 1},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        VnTest::failCall("fstatat", EIO, 0, 100);
        const ObjPtr<Vector<OsFilePath>> names(directory("").getChildrenPath(OsFileTypes::LeafPath, *row.filter));
        EXPECT_EQ(VnTest::stopFailingCalls(), row.questions);
        EXPECT_EQ(names->size(), row.children);
    }
}

TEST_F(FileFault, aFileSystemThatListsNoTypesIsAskedAboutEachChild)
{
    temp.folder("folder/e");
    const OsLeafFileFilter leaves("e");
    for (bool hasTypes : {true, false}) {
        SCOPED_TRACE(hasTypes);
        std::filesystem::remove_all(temp.path("tree"));
        VnTest::hideTypesOfEntries(!hasTypes);
        const ObjPtr<Vector<OsFilePath>> files(directory("").getChildrenPath(OsFileTypes::LeafPath, leaves));
        const ObjPtr<Vector<OsFilePath>> folders(
            directory("").getChildrenPath(OsFileTypes::LeafPath, OsDirectoryFilter()));
        const ObjPtr<Vector<OsFilePath>> none(directory("folder").getChildrenPath(OsFileTypes::LeafPath, leaves));
        OsDirectory::copyHierarchy(at("folder"), at("tree"));
        VnTest::hideTypesOfEntries(false);
        EXPECT_EQ(files->size(), 2U) << "the file and the pipe";
        EXPECT_EQ(folders->size(), 2U);
        EXPECT_TRUE(none->empty()) << "a directory of such a name";
        EXPECT_EQ(contentOf(temp.path("tree/below")), "below");
        EXPECT_TRUE(std::filesystem::is_directory(temp.path("tree/e")));
    }
}

TEST_F(FileFault, aTreeIsCopiedByTheTypesOfItsListings)
{
    temp.folder("nest/sub");
    // The first question in a tree is for the identity of the child, whose type is known.
    const FailingCall failing("fstatat", EIO);
    EXPECT_EQ(
        systemErrorOf([&] { OsDirectory::copyHierarchy(at("nest"), at("tree")); }, "src/base/osdirectorywindows"),
        EIO);
}

TEST_F(FileFault, aChildThatVanishesWhileATreeIsCopiedEndsTheCopyWithTheSystemsError)
{
    static std::string path;
    path = temp.path("folder/below");
    // Between the listing and the copy, when it is to be opened.
    VnTest::interruptCall("openat", [] { std::filesystem::remove(path); });
    EXPECT_EQ(systemErrorOf([&] { OsDirectory::copyHierarchy(at("folder"), at("tree")); },
                            "src/base/osfilereaderwindows"),
              ENOENT);
    EXPECT_EQ(VnTest::stopFailingCalls(), 1);
    EXPECT_TRUE(std::filesystem::is_empty(temp.path("tree")));
}

TEST_F(FileFault, whatIsSwappedWhileATreeIsCopiedLeadsNowhereElse)
{
    // Calls of a copy of source/folder/file, all by names in an open directory: target and source of the folder are
    // opened, then the file's source and target.
    static std::string root;
    root = temp.path("");
    static const auto replace = [](char const* what, auto const& create) {
        std::filesystem::remove_all(root + what);
        create(root + what);
    };
    static const auto linkToFolder = [](std::string const& path) {
        std::filesystem::create_directory_symlink(root + "outside", path);
    };
    static const auto linkToFile = [](std::string const& path) {
        std::filesystem::create_symlink(root + "outside/file", path);
    };
    static const auto secondName = [](std::string const& path) {
        std::filesystem::create_hard_link(root + "outside/file", path);
    };
    static const auto pipe = [](std::string const& path) { ::mkfifo(path.c_str(), 0600); };
    static const auto own = [](std::string const& path) { std::ofstream(path) << "older and longer"; };
    const struct
    {
        char const* what;
        int opened;  ///< when it is swapped: so many have been opened
        void (*swap)();
        char const* source;
        int error;
    } table[] = {
        {"the new folder for a link", 0, [] { replace("target/folder", linkToFolder); },
         "src/base/osdirectorywindows", ENOTDIR},
        {"the folder for a link", 1, [] { replace("source/folder", linkToFolder); }, "src/base/osdirectorywindows",
         ENOTDIR},
        {"the folder for another one", 1,
         [] {
             std::filesystem::create_directory(root + "source/other");
             std::filesystem::rename(root + "source/folder", root + "source/old");
             std::filesystem::rename(root + "source/other", root + "source/folder");
         },
         "src/base/osdirectorywindows", ESTALE},
        {"the file for a link", 2, [] { replace("source/folder/file", linkToFile); },
         "src/base/osfilereaderwindows", ELOOP},
        {"the file for a pipe", 2, [] { replace("source/folder/file", pipe); }, "src/base/osfilereaderwindows",
         ESTALE},
        {"the file for a folder", 2,
         [] {
             replace("source/folder/file",
                     [](std::string const& path) { std::filesystem::create_directory(path); });
         },
         "src/base/osfilereaderwindows", EISDIR},
        {"the file for another one", 2, [] { replace("source/folder/file", own); }, "", 0},
        {"a link for the new file", 3, [] { replace("target/folder/file", linkToFile); },
         "src/base/osfilewriterwindows", ELOOP},
        {"a link to nothing for the new file", 3,
         [] {
             replace("target/folder/file", [](std::string const& path) {
                 std::filesystem::create_symlink(root + "outside/nothing", path);
             });
         },
         "src/base/osfilewriterwindows", ELOOP},
        {"a second name for the new file", 3, [] { replace("target/folder/file", secondName); },
         "src/base/osfilewriterwindows", ESTALE},
        {"a pipe for the new file", 3, [] { replace("target/folder/file", pipe); }, "src/base/osfilewriterwindows",
         ENXIO},
        {"a link to a folder for the new file", 3, [] { replace("target/folder/file", linkToFolder); },
         "src/base/osdirectorywindows", ENOTDIR},
        {"another file for the new one", 3, [] { replace("target/folder/file", own); }, "", 0},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        for (char const* name : {"source", "target", "outside"})
            std::filesystem::remove_all(temp.path(name));
        temp.file("source/folder/file", "content");
        temp.file("outside/file", "stays");
        const auto copy = [&] { OsDirectory::copyHierarchy(at("source"), at("target")); };
        VnTest::interruptCall("openat", row.swap, row.opened);
        if (row.error == 0)
            EXPECT_NO_THROW(copy());
        else
            EXPECT_EQ(systemErrorOf(copy, row.source), row.error);
        EXPECT_EQ(VnTest::stopFailingCalls(), 1);
        EXPECT_EQ(contentOf(temp.path("outside/file")), "stays");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(temp.path("outside")), {}), 1);
    }
}

TEST_F(FileFault, aLevelThatTheCopyReturnsToMustBeTheSame)
{
    static std::string root;
    root = temp.path("");
    // Two deep ones: whichever is copied first, the level that has both is returned to.
    for (char const* first : {"source/d/d/d", "source/d/d/e"}) {
        std::string deep = first;
        for (int i = 0; i < 60; ++i)
            deep += "/d";
        temp.folder(deep);
    }
    const auto copy = [&] { OsDirectory::copyHierarchy(at("source"), at("target")); };
    for (char const* side : {"source", "target"}) {
        SCOPED_TRACE(side);
        static std::string level;
        level = root + side + "/d/d";
        std::filesystem::remove_all(temp.path("target"));
        // When it is 50 levels deep: two have been opened for each.
        VnTest::interruptCall(
            "openat",
            [] {
                std::filesystem::rename(level, level + "2");
                std::filesystem::create_directory(level);
                std::filesystem::create_directory(level + "/d");
            },
            100);
        EXPECT_EQ(systemErrorOf(copy, "src/base/osdirectorywindows"), ESTALE);
        EXPECT_EQ(VnTest::stopFailingCalls(), 1);
        std::filesystem::remove_all(level);
        std::filesystem::rename(level + "2", level);
    }
}

TEST_F(FileFault, aTargetThatMayNotBeWrittenIsLeftAlone)
{
    temp.file("target", "old");
    const FailingCall failing("faccessat", EACCES);
    EXPECT_THROW(file("file").copyTo(at("target")), OsFileEx::ExPathNotWritable);
    EXPECT_EQ(contentOf(temp.path("target")), "old");
}

TEST_F(FileFault, questionsWithoutExceptionsAnswerNo)
{
    const std::string path = temp.path("file");
    for (int error : {EACCES, EIO, ELOOP, ENAMETOOLONG}) {
        VnTest::failCall("stat", error, 0, 3);
        EXPECT_FALSE(OsFsUtils::fileExists(path.c_str()));
        EXPECT_FALSE(OsFsUtils::isDirectory(path.c_str()));
        EXPECT_TRUE(OsFsUtils::isFile(path.c_str()));
        EXPECT_EQ(VnTest::stopFailingCalls(), 3);
        VnTest::failCall("lstat", error);
        EXPECT_FALSE(OsFsUtils::isSymLink(temp.path("link").c_str()));
        EXPECT_EQ(VnTest::stopFailingCalls(), 1);
        VnTest::failCall("faccessat", error, 0, 2);
        EXPECT_EQ(file("file").getAccess(), 0);
        EXPECT_EQ(VnTest::stopFailingCalls(), 2);
    }
}

TEST_F(FileFault, renamingWhereTheSystemCantRefuseToReplace)
{
    for (int error : {EINVAL, ENOSYS}) {
        OsFile moved = file("folder/below");
        {
            const FailingCall failing("renameat2", error);
            EXPECT_EQ(systemErrorOf([&] { moved.renameTo(at("file")); }, "src/base/osfilewindows"), EEXIST);
        }
        {
            const FailingCall failing("renameat2", error);
            EXPECT_EQ(systemErrorOf([&] { moved.renameTo(at("link")); }, "src/base/osfilewindows"), EEXIST);
        }
        {
            const FailingCall failing("renameat2", error);
            moved.renameTo(at("moved"));
        }
        EXPECT_EQ(contentOf(temp.path("moved")), "below");
        moved.renameTo(at("folder/below"));
        const struct
        {
            char const* target;
            int expected;
        } impossible[] = {{"file/below", ENOTDIR}, {"nowhere/below", ENOENT}};
        for (auto const& row : impossible) {
            const FailingCall failing("renameat2", error);
            EXPECT_EQ(systemErrorOf([&] { moved.renameTo(at(row.target)); }, "src/base/osfilewindows"),
                      row.expected);
        }
        EXPECT_EQ(contentOf(temp.path("folder/below")), "below");
    }
}

TEST_F(FileFault, aDirectoryThatVanishesBetweenTwoQuestions)
{
    // Something had the name when it was to be made, and is gone when it is looked at.
    const FailingCall failing("stat", ENOENT);
    EXPECT_EQ(
        systemErrorOf([&] { OsFsUtils::createDir(temp.path("empty").c_str(), true); }, "src/base/osfsutilswindows"),
        ENOENT);
}

TEST_F(FileFault, theNamesOfUsersAndMachine)
{
    {
        const FailingCall failing("gethostname", ENAMETOOLONG);
        try {
            OsUtils::getHostName();
            ADD_FAILURE() << "nothing thrown";
        } catch (ExSysErrorANSI const& failure) {
            EXPECT_EQ(failure.getError(), ENAMETOOLONG);
        }
    }
    {
        const FailingCall failing("getpwuid_r", EIO);
        try {
            OsUtils::getUserName(true);
            ADD_FAILURE() << "nothing thrown";
        } catch (ExSysErrorANSI const& failure) {
            EXPECT_EQ(failure.getError(), EIO);
        }
    }
    for (int error : {ENOENT, ESRCH, EBADF, EPERM}) {
        const FailingCall failing("getpwuid_r", error);
        EXPECT_STREQ(OsUtils::getUserName(true), std::to_string(::geteuid()).c_str()) << "an unknown user's number";
    }
    const ArrayPtr<char> name(OsUtils::getUserName(true));
    const FailingCall failing("getpwuid_r", ERANGE, 0, 3);
    EXPECT_STREQ(OsUtils::getUserName(true), name) << "a long entry gets a longer buffer";
}

namespace
{
::time_t timeOfFiles = 0;
}  // namespace

TEST_F(FileFault, aTimeOutsideTheRangeOfDatesIsNoDate)
{
    constexpr ::time_t first = -11644473600;  // 1601
    constexpr ::time_t last = INT64_MAX / 10000000 + first;
    const struct
    {
        ::time_t time;
        std::uint64_t ticks;
    } table[] = {
        {first, 0},
        {first - 1, UINT64_MAX},
        {INT64_MIN, UINT64_MAX},
        {-1, UINT64_C(116444735990000000)},
        {last, INT64_MAX / 10000000 * UINT64_C(10000000)},
        {last + 1, UINT64_MAX},
        {INT64_MAX, UINT64_MAX},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.time);
        timeOfFiles = row.time;
        VnTest::changeStatusOfFiles([](struct ::stat& status) {
            status.st_mtim.tv_sec = timeOfFiles;
            status.st_atim.tv_sec = timeOfFiles;
        });
        OsFile asked = file("file");
        const ObjPtr<OsDateTypes::DateRep> modified(asked.getLastModificationTime());
        const ObjPtr<OsDateTypes::DateRep> accessed(asked.getLastAccessTime());
        VnTest::changeStatusOfFiles(nullptr);
        EXPECT_EQ(modified->getTicks(), row.ticks);
        EXPECT_EQ(accessed->getTicks(), row.ticks);
    }
}

TEST_F(FileFault, aRemoteFileIsNamedWhenItIsAskedForUnbufferedAccess)
{
    for (long type : {0x6969L, 0xFE534D42L}) {
        VnTest::setTypeOfFileSystems(type);
        std::string reason;
        try {
            file("file").getUnbufferedInfo();
        } catch (OsFileEx::ExNoRemoteUnbuffered const& failure) {
            reason = failure.what();
        }
        VnTest::setTypeOfFileSystems(0);
        EXPECT_NE(reason.find(temp.path("file")), std::string::npos) << reason;
    }
    EXPECT_NO_THROW(file("file").getUnbufferedInfo());
}

/// Whichever call fails: a user has either all of it or an exception.
TEST_F(FileFault, aTreesCopyIsWholeOrThrows)
{
    const auto isWhole = [&](char const* copy) {
        return contentOf(temp.path(copy) + "/below") == "below" &&
               contentOf(temp.path(copy) + "/linked") == "below" &&
               contentOf(temp.path(copy) + "/sub/inner") == "inner";
    };
    temp.file("folder/sub/inner", "inner");
    std::filesystem::create_symlink("below", temp.path("folder/linked"));
    for (char const* call : {"open", "openat", "fstat", "fstatat", "stat", "mkdir", "mkdirat", "faccessat",
                             "ftruncate", "readdir", "fdopendir", "read", "write", "close"})
        for (bool isMerged : {false, true}) {
            int failed = 0;
            for (int after = 0; after < 100; ++after) {
                SCOPED_TRACE(std::string(call) + " after " + std::to_string(after) + (isMerged ? ", merged" : ""));
                std::filesystem::remove_all(temp.path("copy"));
                if (isMerged) {
                    temp.file("copy/below", "something that was there");
                    temp.folder("copy/sub");
                }
                const int before = countDescriptors();
                VnTest::failCall(call, EACCES, after);
                bool hasThrown = false;
                try {
                    OsDirectory::copyHierarchy(at("folder"), at("copy"));
                } catch (std::exception const&) {
                    hasThrown = true;
                }
                const bool isReached = VnTest::stopFailingCalls() != 0;
                EXPECT_EQ(countDescriptors(), before);
                EXPECT_TRUE(hasThrown || isWhole("copy"));
                EXPECT_TRUE(isWhole("folder")) << "the source is as it was";
                if (!isReached)
                    break;
                ++failed;
            }
            EXPECT_LT(failed, 100);
        }
}

TEST_F(FileFault, aUsersNameIsCutTo256Characters)
{
    for (std::size_t length : {1u, 255u, 256u, 257u, 258u, 259u, 300u, 5000u}) {
        SCOPED_TRACE(length);
        std::string name;
        for (std::size_t i = 0; i < length; ++i)
            name += static_cast<char>('a' + i % 26);
        VnTest::nameAllUsers(name.c_str());
        const std::string got = OsUtils::getUserName(true).get();
        const std::string owner = file("file").getOwner().get();
        VnTest::nameAllUsers(nullptr);
        EXPECT_EQ(got, name.substr(0, 256));
        EXPECT_EQ(owner, name) << "which has no such limit";
    }
}

TEST_F(FileFault, aMachinesNameEndsWhereTheSystemCutsIt)
{
    for (std::size_t length : {0u, 1u, 63u, 64u, 65u, 66u, 300u}) {
        SCOPED_TRACE(length);
        const std::string name(length, 'm');
        VnTest::nameMachine(name.c_str());
        const std::string got = OsUtils::getHostName().get();
        VnTest::nameMachine(nullptr);
        EXPECT_EQ(got, name.substr(0, 64));
    }
}

TEST_F(FileFault, anEnvironmentWithoutRoom)
{
    const FailingCall failing("setenv", ENOMEM);
    EXPECT_THROW(OsEnv::putVariable("VNBASE_TEST_E=1"), ExInternalError);
    EXPECT_EQ(OsEnv::getVariable("VNBASE_TEST_E"), nullptr);
}

TEST_F(FileFault, memoryThatRunsOutLeavesNothingBehind)
{
    OsFilePath path(at("folder"));
    const std::string before = path.getChars();
    const std::function<void()> acts[] = {
        [&] { path += "x"; },
        [&] { path = OsFilePath("y"); },
        [&] { path.getBaseName(); },
        [&] { path.getDirectoryName(); },
        [&] { path.getExtension(); },
        [&] { OsFilePath::getTempDir(); },
        [&] { directory("").hasChildren(OsLeafFileFilter("x")); },
        [&] { directory("").getChildrenPath(OsFileTypes::FullPath, everything); },
        [&] { directory("").getChildrenPath(OsFileTypes::LeafPath, OsDirectoryFilter()); },
        [&] {
            const ObjPtr<Vector<OsFile*>> children(directory("").getChildren(everything));
            for (OsFile* child : *children)
                delete child;
        },
        [&] { file("file").getOwner(); },
        [&] { file("file").getLastAccessTime(); },
        [&] { file("file").getUnbufferedInfo(); },
        [&] { file("file").copyTo(at("copy")); },
        [&] { OsDirectory::copyHierarchy(at("folder"), at("tree")); },
        [&] { OsFsUtils::deleteFile(temp.path("missing").c_str()); },
        [&] { OsUtils::getHostName(); },
        [&] { OsUtils::getUserName(false); },
        [&] { OsEnv::putVariable("VNBASE_TEST_OF_A_NAME_THAT_NEEDS_MEMORY=1"); },
    };
    for (std::function<void()> const& act : acts) {
        SCOPED_TRACE(&act - acts);
        int n = 0;
        for (; failsWithoutMemory(n, act); ++n) {
            EXPECT_EQ(path.getChars(), before);
            EXPECT_EQ(countDescriptors(), descriptors);
        }
        EXPECT_GT(n, 0);
        path = OsFilePath(before.c_str());
    }
}
