#include <base/exsyserror.h>
#include <base/osdateutil.h>
#include <base/osfile.h>
#include <base/osfileex.h>
#include <base/osremote_p.h>

#include "child.h"
#include "expectthrow.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <type_traits>

#if defined(_WIN32)
#    include "wine.h"
#else
#    include <fcntl.h>
#    include <pwd.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

using Vn::OsDateTypes;
using Vn::OsFile;
using Vn::OsFileEx;
using Vn::OsFilePath;
using Vn::OsFileTypes;
using VnTest::contentOf;
using VnTest::expectThrow;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

static_assert(std::has_virtual_destructor_v<OsFile> && sizeof(OsFile) == sizeof(void*) + sizeof(OsFilePath));

namespace
{
constexpr char systemSource[] = "src/base/osfilewindows";
const OsFileTypes::Permissions usual;

OsFilePath pathOf(std::string const& path)
{
    return OsFilePath(path.c_str());
}

OsFile fileOf(std::string const& path)
{
    return OsFile(pathOf(path));
}

/// Shows what a subclass gets to see.
class OpenableFile : public OsFile
{
public:
    using OsFile::close;
    using OsFile::open;
    using OsFile::OsFile;
    using OsFile::setPath;
};

template <class Call>
void expectNullPath(Call const& call)
{
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>(call, "File has null file path.");
}

template <class Call>
void expectInvalid(Call const& call, std::string const& path)
{
    expectThrow<OsFileEx::ExInvalidPath, std::invalid_argument>(call, ("Invalid path: '" + path + "'.").c_str());
}

#if defined(_WIN32)
constexpr int missing = 2;
constexpr int taken = 183;
#else
constexpr int missing = ENOENT;
constexpr int taken = EEXIST;
#endif
}  // namespace

TEST(OsFile, everyOperationRefusesAnEmptyPath)
{
    OsFile file{OsFilePath()};
    expectNullPath([&] { file.exists(); });
    expectNullPath([&] { file.create(usual, true); });
    expectNullPath([&] { file.getOwner(); });
    expectNullPath([&] { file.getSize(); });
    expectNullPath([&] { file.getLastModificationTime(); });
    expectNullPath([&] { file.getLastAccessTime(); });
    expectNullPath([&] { file.getUnbufferedInfo(); });
    expectNullPath([&] { file.getType(); });
    expectNullPath([&] { file.isSymLink(); });
    expectNullPath([&] { file.getAccess(); });
    expectNullPath([&] { file.isReadable(); });
    expectNullPath([&] { file.isWritable(); });
    expectNullPath([&] { file.isFile(); });
    expectNullPath([&] { file.isDirectory(); });
    expectNullPath([&] { file.remove(); });
    expectNullPath([&] { file.renameTo(OsFilePath("x")); });
    expectNullPath([&] { OsFile(OsFilePath("x")).renameTo(OsFilePath()); });
    expectNullPath([&] { file.copyTo(OsFilePath("x")); });
    expectNullPath([&] { OsFile(OsFilePath("x")).copyTo(OsFilePath()); });
    expectNullPath([&] { OpenableFile(OsFilePath()).open(1); });
    file.refreshInfo();
    EXPECT_TRUE(file.getPath().isEmpty());
}

TEST(OsFile, questionsAboutAMissingPathNameIt)
{
    const TempFolder temp;
    const std::string path = temp.path("missing");
    OsFile file = fileOf(path);
    EXPECT_FALSE(file.exists());
    expectInvalid([&] { file.getOwner(); }, path);
    expectInvalid([&] { file.getSize(); }, path);
    expectInvalid([&] { file.getLastModificationTime(); }, path);
    expectInvalid([&] { file.getLastAccessTime(); }, path);
    expectInvalid([&] { file.getUnbufferedInfo(); }, path);
    expectInvalid([&] { file.getType(); }, path);
    expectInvalid([&] { file.isSymLink(); }, path);
    expectInvalid([&] { file.isFile(); }, path);
    expectInvalid([&] { file.isDirectory(); }, path);
    EXPECT_EQ(file.getAccess(), 0);
    EXPECT_FALSE(file.isReadable());
    EXPECT_FALSE(file.isWritable());
}

TEST(OsFile, actsOnAMissingPathAreTheSystemsErrors)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.path("missing"));
    EXPECT_EQ(systemErrorOf([&] { file.remove(); }, systemSource), missing);
    EXPECT_EQ(systemErrorOf([&] { file.renameTo(pathOf(temp.path("other"))); }, systemSource), missing);
    EXPECT_EQ(file.getPath().getChars(), temp.path("missing")) << "a failed renaming leaves the path";
    EXPECT_EQ(systemErrorOf([&] { file.copyTo(pathOf(temp.path("other"))); }, "src/base/osfilereaderwindows"),
              missing);
    EXPECT_FALSE(std::filesystem::exists(temp.path("other")));
}

TEST(OsFile, questionsGoThroughTheVirtualTable)
{
    struct Believing : OsFile
    {
        using OsFile::OsFile;
        bool exists() const override { return true; }
    };
    struct Typed : OsFile
    {
        using OsFile::OsFile;
        OsFileTypes::ElementType getType() override { return OsFileTypes::Directory; }
    };
    struct Doubting : OsFile
    {
        using OsFile::OsFile;
        bool exists() const override { return false; }
    };
    const TempFolder temp;
    const OsFilePath nothing = pathOf(temp.path("missing"));
    EXPECT_EQ(systemErrorOf([&] { Believing(nothing).getSize(); }, systemSource), missing);
    EXPECT_EQ(systemErrorOf([&] { Believing(nothing).getType(); }, systemSource), missing);
    EXPECT_EQ(systemErrorOf([&] { Believing(nothing).getLastAccessTime(); }, systemSource), missing);
    EXPECT_EQ(systemErrorOf([&] { Believing(nothing).getLastModificationTime(); }, systemSource), missing);
#if !defined(_WIN32)
    EXPECT_EQ(systemErrorOf([&] { Believing(nothing).getOwner(); }, systemSource), missing);
    EXPECT_EQ(systemErrorOf([&] { Believing(nothing).getUnbufferedInfo(); }, systemSource), missing);
#endif
    EXPECT_FALSE(Believing(nothing).isSymLink());
    EXPECT_TRUE(Typed(nothing).isDirectory());
    EXPECT_FALSE(Typed(nothing).isFile());
    const std::string path = temp.file("file");
    expectInvalid([&] { Doubting(pathOf(path)).getSize(); }, path);
}

namespace
{
/// Overrides each virtual operation as the interface has it, and tells which was called.
class Telling : public OsFile
{
public:
    using Owner = Vn::ArrayPtrRet<char>;
    using Date = Vn::ObjPtrRet<OsDateTypes::DateRep>;
    using Unbuffered = Vn::ObjPtrRet<OsFileTypes::UnbufferedInfo>;

    explicit Telling(std::string& heard) : OsFile(OsFilePath("telling")), _heard(&heard) {}

    Owner getOwner() override { return tell("owner"), Owner(); }
    std::uint32_t getSize() const override { return tell("size"), 0; }
    Date getLastModificationTime() override { return tell("modification"), Date(); }
    Date getLastAccessTime() override { return tell("access time"), Date(); }
    Unbuffered getUnbufferedInfo() override { return tell("unbuffered"), Unbuffered(); }
    std::int32_t getAccess() const override { return tell("access"), 0; }
    bool isReadable() const override { return tell("readable"), false; }
    bool isWritable() const override { return tell("writable"), false; }
    bool isFile() const override { return tell("file"), OsFile::isFile(); }
    bool isDirectory() const override { return tell("directory"), OsFile::isDirectory(); }
    bool isSymLink() const override { return tell("link"), false; }
    OsFileTypes::ElementType getType() override { return tell("type"), OsFileTypes::Directory; }
    bool exists() const override { return tell("exists"), false; }
    void refreshInfo() const override { tell("refresh"); }
    void remove() override { tell("remove"); }
    void renameTo(OsFilePath const&) override { tell("rename"); }
    void copyTo(OsFilePath const&) override { tell("copy"); }

private:
    void tell(char const* what) const { *_heard += std::string(what) + ", "; }

    std::string* _heard;
};

/// The constness of each virtual operation, as a subclass has to write it.
template <class Result, class... Parameters>
constexpr bool isConst(Result (OsFile::*)(Parameters...) const)
{
    return true;
}

template <class Result, class... Parameters>
constexpr bool isConst(Result (OsFile::*)(Parameters...))
{
    return false;
}

static_assert(!isConst(&OsFile::getOwner) && isConst(&OsFile::getSize) &&
              !isConst(&OsFile::getLastModificationTime));
static_assert(!isConst(&OsFile::getLastAccessTime) && !isConst(&OsFile::getUnbufferedInfo));
static_assert(isConst(&OsFile::getAccess) && isConst(&OsFile::isReadable) && isConst(&OsFile::isWritable));
static_assert(isConst(&OsFile::isFile) && isConst(&OsFile::isDirectory) && isConst(&OsFile::isSymLink));
static_assert(!isConst(&OsFile::getType) && isConst(&OsFile::exists) && isConst(&OsFile::refreshInfo));
static_assert(!isConst(&OsFile::remove) && !isConst(&OsFile::renameTo) && !isConst(&OsFile::copyTo));
}  // namespace

TEST(OsFile, aSubclassOverridesEachOperationOfTheInterface)
{
    std::string heard;
    Telling telling(heard);
    OsFile& file = telling;
    file.getOwner();
    file.getSize();
    file.getLastModificationTime();
    file.getLastAccessTime();
    file.getUnbufferedInfo();
    file.getAccess();
    file.isReadable();
    file.isWritable();
    EXPECT_FALSE(file.isFile());
    EXPECT_TRUE(static_cast<OsFile const&>(file).isDirectory()) << "a const question asks the type of the subclass";
    file.isSymLink();
    file.getType();
    file.exists();
    file.refreshInfo();
    file.remove();
    file.renameTo(OsFilePath("x"));
    file.copyTo(OsFilePath("x"));
    EXPECT_EQ(heard, "owner, size, modification, access time, unbuffered, access, readable, writable, file, type, "
                     "directory, type, link, type, exists, refresh, remove, rename, copy, ");
}

TEST(OsFile, typeFollowsWhatStandsThere)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("file"));
    EXPECT_EQ(file.getType(), OsFileTypes::RegularFile);
    EXPECT_TRUE(file.isFile());
    EXPECT_FALSE(file.isDirectory());
    EXPECT_FALSE(file.isSymLink());
    OsFile folder = fileOf(temp.folder("folder"));
    EXPECT_EQ(folder.getType(), OsFileTypes::Directory);
    EXPECT_TRUE(folder.isDirectory());
    EXPECT_FALSE(folder.isFile());
    EXPECT_FALSE(folder.isSymLink());
}

#if defined(_WIN32)
TEST(OsFile, aFileWithASpecialAttributeIsNoRegularOne)
{
    const TempFolder temp;
    const std::string path = temp.file("file");
    const struct
    {
        DWORD attributes;
        OsFileTypes::ElementType type;
        bool isKeptByWine;
    } table[] = {
        {FILE_ATTRIBUTE_READONLY, OsFileTypes::RegularFile, true},
        {FILE_ATTRIBUTE_HIDDEN, OsFileTypes::RegularFile, true},
        {FILE_ATTRIBUTE_ARCHIVE, OsFileTypes::RegularFile, true},
        {FILE_ATTRIBUTE_SYSTEM, OsFileTypes::SpecialFile, true},
        {FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY, OsFileTypes::SpecialFile, true},
        {FILE_ATTRIBUTE_TEMPORARY, OsFileTypes::SpecialFile, false},
        {FILE_ATTRIBUTE_OFFLINE, OsFileTypes::SpecialFile, false},
        {FILE_ATTRIBUTE_NOT_CONTENT_INDEXED, OsFileTypes::RegularFile, true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.attributes);
        if (!row.isKeptByWine && VnTest::isWine())
            continue;  // Wine keeps no such attribute
        ASSERT_TRUE(::SetFileAttributesA(path.c_str(), row.attributes));
        EXPECT_EQ(fileOf(path).getType(), row.type);
        EXPECT_EQ(fileOf(path).isFile(), row.type == OsFileTypes::RegularFile);
    }
    const std::string folder = temp.folder("folder");
    ASSERT_TRUE(::SetFileAttributesA(folder.c_str(), FILE_ATTRIBUTE_SYSTEM));
    EXPECT_EQ(fileOf(folder).getType(), OsFileTypes::Directory);
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(OsFile, aFileThatIsHeldOpenReadsAsNotAccessible)
{
    const TempFolder temp;
    const std::string path = temp.file("file");
    const OsFile file = fileOf(path);
    EXPECT_EQ(file.getAccess(), 3);
    const HANDLE holder = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    EXPECT_EQ(file.getAccess(), 0);
    EXPECT_FALSE(file.isReadable());
    EXPECT_FALSE(file.isWritable());
    const std::string source = temp.file("source", "x");
    expectThrow<OsFileEx::ExPathNotWritable, std::invalid_argument>([&] { fileOf(source).copyTo(pathOf(path)); },
                                                                    ("Invalid path: '" + path + "'.").c_str());
    ::CloseHandle(holder);
    EXPECT_EQ(file.getAccess(), 3);
}

TEST(OsFile, aReadOnlyFileIsNotWritable)
{
    const TempFolder temp;
    const std::string path = temp.file("file");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(fileOf(path).isReadable());
    if (VnTest::isWine()) {
        ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        GTEST_SKIP() << "Wine as root opens a read-only file for writing";
    }
    EXPECT_FALSE(fileOf(path).isWritable());
    EXPECT_EQ(fileOf(path).getAccess(), 1);
    const std::string source = temp.file("source", "x");
    expectThrow<OsFileEx::ExPathNotWritable, std::invalid_argument>([&] { fileOf(source).copyTo(pathOf(path)); },
                                                                    ("Invalid path: '" + path + "'.").c_str());
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(OsFile, ownersAreNotTold)
{
    const TempFolder temp;
    EXPECT_STREQ(fileOf(temp.file("file")).getOwner(), "");
}

TEST(OsFile, theDriveTellsWhereAFileLies)
{
    const TempFolder temp;
    // A path in another form names no drive, and that isn't remote.
    const VnTest::WorkingFolder working(temp.path());
    temp.file("x");
    EXPECT_EQ(fileOf("x").getUnbufferedInfo()->getMaxSize(), 0x7FFFFFFFU);
    EXPECT_EQ(fileOf("\\\\.\\C:\\windows").getUnbufferedInfo()->getMaxSize(), 0x7FFFFFFFU);
}
#else
TEST(OsFile, whatIsNeitherFileNorDirectoryIsSpecial)
{
    const TempFolder temp;
    ASSERT_EQ(::mkfifo(temp.path("pipe").c_str(), 0600), 0);
    for (std::string const& path : {temp.path("pipe"), std::string("/dev/null")}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(fileOf(path).getType(), OsFileTypes::SpecialFile);
        EXPECT_FALSE(fileOf(path).isFile());
        EXPECT_FALSE(fileOf(path).isDirectory());
        EXPECT_EQ(fileOf(path).getSize(), 0U) << "and asking doesn't open it";
        EXPECT_TRUE(fileOf(path).isReadable());
    }
}

TEST(OsFile, linksAreFollowedByQuestions)
{
    const TempFolder temp;
    std::filesystem::create_symlink(temp.file("file", "12345"), temp.path("link"));
    OsFile link = fileOf(temp.path("link"));
    EXPECT_TRUE(link.isSymLink());
    EXPECT_TRUE(link.isFile());
    EXPECT_EQ(link.getSize(), 5U);
    std::filesystem::create_symlink(temp.folder("folder"), temp.path("toFolder"));
    EXPECT_TRUE(fileOf(temp.path("toFolder")).isDirectory());
    EXPECT_TRUE(fileOf(temp.path("toFolder")).isSymLink());
}

TEST(OsFile, aLinkToNothingIsAnInvalidPath)
{
    const TempFolder temp;
    std::filesystem::create_symlink(temp.path("missing"), temp.path("link"));
    std::filesystem::create_symlink("circle", temp.path("circle"));
    for (char const* name : {"link", "circle"}) {
        const std::string path = temp.path(name);
        EXPECT_FALSE(fileOf(path).exists());
        expectInvalid([&] { fileOf(path).isSymLink(); }, path);
        expectInvalid([&] { fileOf(path).getType(); }, path);
    }
}

TEST(OsFile, removingAndRenamingTakeTheLink)
{
    const TempFolder temp;
    std::filesystem::create_symlink(temp.file("file", "x"), temp.path("link"));
    OsFile link = fileOf(temp.path("link"));
    link.renameTo(pathOf(temp.path("moved")));
    EXPECT_TRUE(std::filesystem::is_symlink(temp.path("moved")));
    link.remove();
    EXPECT_FALSE(std::filesystem::is_symlink(temp.path("moved")));
    EXPECT_EQ(contentOf(temp.path("file")), "x");
    std::filesystem::create_symlink(temp.path("nothing"), temp.path("dangling"));
    OsFile file = fileOf(temp.path("file"));
    EXPECT_EQ(systemErrorOf([&] { file.renameTo(pathOf(temp.path("dangling"))); }, systemSource), EEXIST);
    fileOf(temp.path("dangling")).remove();
    EXPECT_FALSE(std::filesystem::is_symlink(temp.path("dangling")));
}

TEST(OsFile, theOwnerIsAUserOrANumber)
{
    const TempFolder temp;
    const std::string path = temp.file("file");
    ::passwd const* const entry = ::getpwuid(::geteuid());
    const std::string user = entry != nullptr ? entry->pw_name : std::to_string(::geteuid());
    EXPECT_STREQ(fileOf(path).getOwner(), user.c_str());
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(path.c_str(), 3999999999U, static_cast<::gid_t>(-1)), 0);
        EXPECT_STREQ(fileOf(path).getOwner(), "3999999999");
    }
}

TEST(OsFile, accessIsThatOfTheEffectiveUser)
{
    const TempFolder temp;
    const std::string path = temp.file("file");
    EXPECT_EQ(fileOf(path).getAccess(), 3);
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    const int expected = ::geteuid() == 0 ? 3 : 0;  // root may
    EXPECT_EQ(fileOf(path).getAccess(), expected);
    EXPECT_EQ(fileOf("/proc/version").isReadable(), true);
    EXPECT_EQ(fileOf("/proc/self/mem").getAccess(), 3);
}

VN_CHILD(osFileAsNobody)
{
    if (::geteuid() == 0 && ::setuid(65534) != 0)
        return 77;
    const std::string folder = argv[1];
    for (char const* name : {"open", "readable", "writable", "closed"})
        std::cout << name << " " << fileOf(folder + "/" + name).getAccess() << "\n";
    const auto tell = [](auto const& call) {
        try {
            call();
            std::cout << "done\n";
        } catch (OsFileEx::ExPathNotWritable const& failure) {
            std::cout << "not writable, " << failure.getReason() << "\n";
        } catch (Vn::ExSysErrorWindows const& failure) {
            std::cout << failure.getErrorCode() << "\n";
        }
    };
    OsFile source = fileOf(folder + "/open");
    tell([&] { source.copyTo(OsFilePath("readable")); });
    tell([&] { fileOf(folder + "/closed").copyTo(OsFilePath("new")); });
    tell([&] { source.copyTo(OsFilePath("writable")); });
    try {
        fileOf(folder + "/readable").copyTo(OsFilePath("readable"));
    } catch (OsFileEx::ExFileExists const&) {
        std::cout << "the same file\n";
    }
    return 0;
}

TEST(OsFile, whatMayNotBeReadOrWrittenIsRefused)
{
    const TempFolder temp;
    for (auto [name, mode] : {std::pair("open", 0666U), std::pair("readable", 0444U), std::pair("writable", 0222U),
                              std::pair("closed", 0U)})
        ASSERT_EQ(::chmod(temp.file(name, "content").c_str(), mode), 0);
    if (::geteuid() != 0) {  // whose files are the owner's in any case
        ASSERT_EQ(::chmod(temp.path("open").c_str(), 0600), 0);
    }
    ASSERT_EQ(::chmod(temp.path().c_str(), 0777), 0);
    const VnTest::WorkingFolder working(temp.path());
    const VnTest::ChildRun run = VnTest::Child("osFileAsNobody").arguments({temp.path()}).run();
    EXPECT_EQ(run.out, "open 3\nreadable 1\nwritable 2\nclosed 0\n"
                       "not writable, Invalid path: 'readable'.\n" +
                           std::to_string(EACCES) + "\ndone\nthe same file\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(temp.path("new")));
}

TEST(OsFile, remoteFileSystemsAreKnownByTheirNumber)
{
    for (std::uint32_t magic :
         {0x6969U, 0x517BU, 0xFF534D42U, 0xFE534D42U, 0x5346414FU, 0x6B414653U, 0x00C36400U, 0x73757245U, 0x564CU})
        EXPECT_TRUE(Vn::isRemoteFileSystem(magic)) << std::hex << magic;
    // ext4, tmpfs, overlay, btrfs, xfs, proc, and none
    for (std::uint32_t magic : {0xEF53U, 0x01021994U, 0x794C7630U, 0x9123683EU, 0x58465342U, 0x9FA0U, 0U})
        EXPECT_FALSE(Vn::isRemoteFileSystem(magic)) << std::hex << magic;
}
#endif

TEST(OsFile, sizeIsTheLow32Bits)
{
    const TempFolder temp;
    const std::string path = temp.file("file", "12345");
    EXPECT_EQ(fileOf(path).getSize(), 5U);
    const struct
    {
        std::uintmax_t size;
        std::uint32_t expected;
    } table[] = {
        {0, 0}, {0xFFFFFFFE, 0xFFFFFFFE}, {0x100000000, 0}, {std::uintmax_t{5} << 30, std::uint32_t{1} << 30}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.size);
        std::filesystem::resize_file(path, row.size);
        EXPECT_EQ(fileOf(path).getSize(), row.expected);
    }
    for (std::uintmax_t size : {std::uintmax_t{0xFFFFFFFF}, std::uintmax_t{0x1FFFFFFFF}}) {
        std::filesystem::resize_file(path, size);
        EXPECT_THROW(fileOf(path).getSize(), Vn::ExSysErrorWindows);
#if !defined(_WIN32)
        EXPECT_EQ(systemErrorOf([&] { fileOf(path).getSize(); }, systemSource), EOVERFLOW);
#endif
    }
}

TEST(OsFile, timesAreThoseOfTheFileInWholeSeconds)
{
    const TempFolder temp;
    const std::string path = temp.file("file", "x");
    // 2001-09-09 01:46:40.75 UTC
    const auto moment = std::chrono::file_clock::from_sys(
        std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(1000000000750)));
    std::filesystem::last_write_time(
        path, std::chrono::time_point_cast<std::filesystem::file_time_type::duration>(moment));
    const Vn::ObjPtr<OsDateTypes::DateRep> date(fileOf(path).getLastModificationTime());
    OsDateTypes::DateRep expected(0, 0);
    ASSERT_TRUE(Vn::OsDateUtil::makeTime(2001, 9, 9, 1, 46, 40.0, OsDateTypes::UTCTime, expected));
    EXPECT_EQ(date->getHigh(), expected.getHigh());
    EXPECT_EQ(date->getLow(), expected.getLow());
    EXPECT_EQ(date->getTicks(), (11644473600ULL + 1000000000ULL) * 10000000ULL);
    contentOf(path);
    const Vn::ObjPtr<OsDateTypes::DateRep> access(fileOf(path).getLastAccessTime());
    const OsDateTypes::DateRep now = Vn::OsDateUtil::getCurrentTime();
    EXPECT_LE(std::abs(Vn::OsDateUtil::diff(now, *access)), 3600.0);
}

#if !defined(_WIN32)
TEST(OsFile, eachTimeIsItsOwn)
{
    const TempFolder temp;
    const std::string path = temp.file("file", "x");
    const auto ticksOf = [&](long access, long modification) {
        const ::timespec times[] = {{access, 999999999}, {modification, 1}};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        const Vn::ObjPtr<OsDateTypes::DateRep> accessed(fileOf(path).getLastAccessTime());
        const Vn::ObjPtr<OsDateTypes::DateRep> modified(fileOf(path).getLastModificationTime());
        return std::pair(accessed->getTicks(), modified->getTicks());
    };
    constexpr std::uint64_t at1970 = 116444736000000000;
    EXPECT_EQ(ticksOf(10, 20), std::pair(at1970 + 100000000, at1970 + 200000000));
    EXPECT_EQ(ticksOf(-1, 0), std::pair(at1970 - 10000000, at1970));
}
#endif

TEST(OsFile, unbufferedInputAndOutputNeedsNothing)
{
    const TempFolder temp;
    const Vn::ObjPtr<OsFileTypes::UnbufferedInfo> info(fileOf(temp.file("file")).getUnbufferedInfo());
    EXPECT_EQ(info->getAlignment(), 0U);
    EXPECT_EQ(info->getBlockSize(), 0U);
    EXPECT_EQ(info->getMaxSize(), 0x7FFFFFFFU);
}

TEST(OsFile, aDirectoryHasNoAccess)
{
    const TempFolder temp;
    EXPECT_EQ(fileOf(temp.path()).getAccess(), 0);
    EXPECT_FALSE(fileOf(temp.path()).isReadable());
    EXPECT_FALSE(fileOf(temp.path()).isWritable());
}

TEST(OsFile, creates)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.path("file"));
    file.create(usual, true);
    EXPECT_TRUE(file.isFile());
    temp.file("file", "content");
    expectThrow<OsFileEx::ExFileExists, std::runtime_error>([&] { file.create(usual, true); },
                                                            "File already exists.");
    file.create(usual, false);
    EXPECT_EQ(file.getSize(), 0U);
}

TEST(OsFile, removes)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("file"));
    file.remove();
    EXPECT_FALSE(file.exists());
    EXPECT_EQ(systemErrorOf([&] { file.remove(); }, systemSource), missing);
    OsFile folder = fileOf(temp.folder("folder"));
    EXPECT_THROW(folder.remove(), Vn::ExSysErrorWindows);
    EXPECT_TRUE(folder.exists());
}

TEST(OsFile, renamingMovesThePathAlong)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("a", "content"));
    file.renameTo(pathOf(temp.path("b")));
    EXPECT_EQ(file.getPath().getChars(), temp.path("b"));
    EXPECT_FALSE(std::filesystem::exists(temp.path("a")));
    EXPECT_EQ(contentOf(temp.path("b")), "content");
}

TEST(OsFile, renamingReplacesNothing)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("a", "content"));
    temp.file("b", "other");
    temp.folder("c");
    // The last of them are its own path, by three names.
    for (char const* target : {"b", "c", "a", "./a", "c/../a"}) {
        SCOPED_TRACE(target);
        EXPECT_EQ(systemErrorOf([&] { file.renameTo(pathOf(temp.path(target))); }, systemSource), taken);
        EXPECT_EQ(file.getPath().getChars(), temp.path("a"));
    }
    OsFile folder = fileOf(temp.path("c"));
    EXPECT_EQ(systemErrorOf([&] { folder.renameTo(pathOf(temp.path("c"))); }, systemSource), taken);
    std::filesystem::create_hard_link(temp.path("a"), temp.path("twin"));
    EXPECT_EQ(systemErrorOf([&] { file.renameTo(pathOf(temp.path("twin"))); }, systemSource), taken);
    EXPECT_EQ(contentOf(temp.path("a")), "content");
    EXPECT_EQ(contentOf(temp.path("b")), "other");
}

#if defined(_WIN32)
TEST(OsFile, renamingChangesTheSpellingOfTheOwnName)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("spelling", "content"));
    file.renameTo(pathOf(temp.path("SPELLING")));
    EXPECT_EQ(file.getPath().getChars(), temp.path("SPELLING"));
    EXPECT_EQ(contentOf(temp.path("spelling")), "content");
    if (VnTest::isWine())
        GTEST_SKIP() << "Wine calls it a success and leaves the name as it was";
    EXPECT_EQ(std::filesystem::directory_iterator(temp.path())->path().filename().string(), "SPELLING");
}
#endif

TEST(OsFile, copiesBytesToANewOrAnExistingFile)
{
    const TempFolder temp;
    std::mt19937 random(7);
    std::string content;
    // Around the block of 0x10000 bytes.
    for (std::size_t size : {0U, 1U, 0xFFFFU, 0x10000U, 0x10001U, 0x30005U}) {
        SCOPED_TRACE(size);
        while (content.size() < size)
            content += static_cast<char>(random());
        const OsFile file = fileOf(temp.file("source", content));
        OsFile(file).copyTo(pathOf(temp.path("new")));
        EXPECT_EQ(contentOf(temp.path("new")), content);
        temp.file("existing", std::string(0x50000, 'x'));
        OsFile(file).copyTo(pathOf(temp.path("existing")));
        EXPECT_EQ(contentOf(temp.path("existing")), content) << "nothing of the old file is left";
        std::filesystem::remove(temp.path("new"));
    }
}

TEST(OsFile, copiesIntoADirectoryUnderItsOwnName)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("source", "content"));
    temp.folder("folder");
    file.copyTo(pathOf(temp.path("folder")));
    EXPECT_EQ(contentOf(temp.path("folder/source")), "content");
    EXPECT_EQ(file.getPath().getChars(), temp.path("source"));
    // What is inside isn't looked at.
    std::filesystem::remove(temp.path("folder/source"));
    temp.folder("folder/source");
    EXPECT_THROW(file.copyTo(pathOf(temp.path("folder"))), Vn::ExSysErrorWindows);
}

TEST(OsFile, aCopyOntoItselfIsRefusedBeforeAnythingIsOpened)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("source", "content"));
    std::filesystem::create_hard_link(temp.path("source"), temp.path("twin"));
    for (std::string const& target :
         {temp.path("source"), temp.path("folder/../source"), temp.path("twin"), temp.path()}) {
        SCOPED_TRACE(target);
        temp.folder("folder");
        expectThrow<OsFileEx::ExFileExists, std::runtime_error>([&] { file.copyTo(pathOf(target)); },
                                                                "File already exists.");
        EXPECT_EQ(contentOf(temp.path("source")), "content");
        // Nothing can be opened for writing that is read-only, or on Windows held by anybody: it isn't tried.
        const std::ifstream held(temp.path("source"));
        std::filesystem::permissions(temp.path("source"), std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::remove);
        expectThrow<OsFileEx::ExFileExists, std::runtime_error>([&] { file.copyTo(pathOf(target)); },
                                                                "File already exists.");
        std::filesystem::permissions(temp.path("source"), std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
    }
}

TEST(OsFile, aMissingFileIsNeverCopiedNorTakenForItsTarget)
{
    const TempFolder temp;
    OsFile file(pathOf(temp.path("missing")));
    const std::string target = temp.file("target", "content");
    for (std::string const& path : {target, temp.folder("folder"), temp.path("nothing")})
        EXPECT_EQ(systemErrorOf([&] { file.copyTo(pathOf(path)); }, "src/base/osfilereaderwindows"), missing)
            << path;
    EXPECT_EQ(contentOf(target), "content");
    EXPECT_TRUE(std::filesystem::is_empty(temp.path("folder")));
    EXPECT_FALSE(std::filesystem::exists(temp.path("nothing")));
}

TEST(OsFile, subclassesOpenAndMoveThePath)
{
    const TempFolder temp;
    OpenableFile file(pathOf(temp.file("file", "x")));
    for (int mode : {0, 1, 2, 3}) {
        SCOPED_TRACE(mode);
        const std::int64_t handle = file.open(mode);
        EXPECT_NE(handle, -1);
        file.close(handle);
    }
    file.setPath(pathOf(temp.path("missing")));
    EXPECT_EQ(file.getPath().getChars(), temp.path("missing"));
    EXPECT_EQ(systemErrorOf([&] { file.open(1); }, systemSource), missing);
}

#if !defined(_WIN32)
TEST(OsFile, openGivesTheAccessAsked)
{
    const TempFolder temp;
    const OpenableFile file(pathOf(temp.file("file", "x")));
    const int accesses[] = {O_PATH, O_RDONLY, O_WRONLY, O_RDWR};
    for (int mode : {0, 1, 2, 3}) {
        const std::int64_t handle = file.open(mode);
        EXPECT_EQ(::fcntl(static_cast<int>(handle), F_GETFL) & (O_ACCMODE | O_PATH), accesses[mode]);
        file.close(handle);
        EXPECT_EQ(systemErrorOf([&] { file.close(handle); }, systemSource), EBADF);
    }
    ASSERT_EQ(::mkfifo(temp.path("pipe").c_str(), 0600), 0);
    const OpenableFile pipe(pathOf(temp.path("pipe")));
    const std::int64_t handle = pipe.open(0);
    EXPECT_EQ(::fcntl(static_cast<int>(handle), F_GETFL) & (O_ACCMODE | O_PATH), O_PATH);
    pipe.close(handle);
}

TEST(OsFile, aFullTargetIsAFailureOfTheCopy)
{
    const TempFolder temp;
    OsFile file = fileOf(temp.file("source", "content"));
    EXPECT_EQ(systemErrorOf([&] { file.copyTo(OsFilePath("/dev/full")); }, systemSource), ENOSPC);
}

TEST(OsFile, copyingAPipeThatNobodyWritesEnds)
{
    const TempFolder temp;
    ASSERT_EQ(::mkfifo(temp.path("pipe").c_str(), 0600), 0);
    fileOf(temp.path("pipe")).copyTo(pathOf(temp.path("copy")));
    EXPECT_EQ(contentOf(temp.path("copy")), "");
}

TEST(OsFile, aCopyBelongsToUserAndGroup)
{
    const TempFolder temp;
    const ::mode_t before = ::umask(002);
    fileOf(temp.file("source", "x")).copyTo(pathOf(temp.path("copy")));
    ::umask(before);
    struct ::stat status;
    ASSERT_EQ(::stat(temp.path("copy").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0660U);
}
#endif
