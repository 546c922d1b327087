#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/osfileex.h>
#include <base/osfsutils.h>

#include "expectthrow.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#if !defined(_WIN32)
#    include "socketfile.h"

#    include <sys/stat.h>
#endif

using Vn::OsFileEx;
using Vn::OsFileTypes;
using Vn::OsFsUtils;
using VnTest::contentOf;
using VnTest::expectThrow;
using VnTest::TempFolder;

namespace
{
/// The system's code of what `call` throws; -1 if it throws nothing of the kind.
template <class Call>
int refusal(Call const& call)
{
    return VnTest::systemErrorOf(call, "src/base/osfsutilswindows");
}

#if defined(_WIN32)
constexpr int missing = 2;
constexpr int missingFolder = 3;
constexpr int notEmpty = 145;
constexpr int isNoFolder = 267;
#else
constexpr int missing = ENOENT;
constexpr int missingFolder = ENOENT;
constexpr int notEmpty = ENOTEMPTY;
constexpr int isNoFolder = ENOTDIR;
#endif
}  // namespace

TEST(OsFsUtils, answersByWhatStandsAtThePath)
{
    const TempFolder temp;
    const struct
    {
        std::string path;
        bool exists;
        bool isDirectory;
        bool isFile;
    } table[] = {
        {temp.file("file", "x"), true, false, true},
        {temp.folder("folder"), true, true, false},
        {temp.path("missing"), false, false, true},
        {temp.path("missing/below"), false, false, true},
        {"", false, false, true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(OsFsUtils::fileExists(row.path.c_str()), row.exists);
        EXPECT_EQ(OsFsUtils::isDirectory(row.path.c_str()), row.isDirectory);
        EXPECT_EQ(OsFsUtils::isFile(row.path.c_str()), row.isFile);
        EXPECT_FALSE(OsFsUtils::isSymLink(row.path.c_str()));
    }
    EXPECT_FALSE(OsFsUtils::fileExists(nullptr));
    EXPECT_FALSE(OsFsUtils::isDirectory(nullptr));
    EXPECT_TRUE(OsFsUtils::isFile(nullptr));
    EXPECT_FALSE(OsFsUtils::isSymLink(nullptr));
}

TEST(OsFsUtils, createDirAcceptsADirectoryThatIsThere)
{
    const TempFolder temp;
    const std::string folder = temp.path("made");
    OsFsUtils::createDir(folder.c_str(), true);
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    temp.file("made/kept");
    OsFsUtils::createDir(folder.c_str(), true);
    OsFsUtils::createDir(folder.c_str(), false);
    EXPECT_TRUE(std::filesystem::exists(temp.path("made/kept")));
}

TEST(OsFsUtils, createDirRefusesAFileOfThatName)
{
    const TempFolder temp;
    const std::string file = temp.file("file", "content");
    for (bool flag : {true, false})
        expectThrow<Vn::ExInternalError, std::runtime_error>([&] { OsFsUtils::createDir(file.c_str(), flag); },
                                                             "A regular file with the same path name exists.");
    EXPECT_EQ(contentOf(file), "content");
}

TEST(OsFsUtils, createDirMakesNoParents)
{
    const TempFolder temp;
    EXPECT_EQ(refusal([&] { OsFsUtils::createDir(temp.path("a/b").c_str(), true); }), missingFolder);
    EXPECT_FALSE(std::filesystem::exists(temp.path("a")));
    EXPECT_EQ(refusal([] { OsFsUtils::createDir("", true); }), missingFolder);
    EXPECT_EQ(refusal([] { OsFsUtils::createDir(nullptr, true); }), missingFolder);
}

TEST(OsFsUtils, removeDirTakesEmptyDirectoriesOnly)
{
    const TempFolder temp;
    const std::string folder = temp.folder("folder");
    const std::string file = temp.file("folder/file");
    EXPECT_EQ(refusal([&] { OsFsUtils::removeDir(folder.c_str()); }), notEmpty);
    EXPECT_EQ(refusal([&] { OsFsUtils::removeDir(file.c_str()); }), isNoFolder);
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(refusal([&] { OsFsUtils::removeDir(temp.path("missing").c_str()); }), missing);
    std::filesystem::remove(file);
    OsFsUtils::removeDir(folder.c_str());
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST(OsFsUtils, createFileMakesAnEmptyFileOrEmptiesTheOneThere)
{
    const TempFolder temp;
    const OsFileTypes::Permissions permissions;
    const std::string file = temp.path("file");
    OsFsUtils::createFile(file.c_str(), permissions, true);
    EXPECT_TRUE(std::filesystem::is_regular_file(file));
    temp.file("file", "content");
    expectThrow<OsFileEx::ExFileExists, std::runtime_error>(
        [&] { OsFsUtils::createFile(file.c_str(), permissions, true); }, "File already exists.");
    EXPECT_EQ(contentOf(file), "content");
    OsFsUtils::createFile(file.c_str(), permissions, false);
    EXPECT_EQ(std::filesystem::file_size(file), 0U);
    OsFsUtils::createFile(temp.path("other").c_str(), permissions, false);
    EXPECT_EQ(std::filesystem::file_size(temp.path("other")), 0U);
}

TEST(OsFsUtils, createFileRefusesNoPathAndAMissingFolder)
{
    const TempFolder temp;
    for (bool failIfExists : {true, false}) {
        for (char const* path : {"", static_cast<char const*>(nullptr)})
            expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>(
                [&] { OsFsUtils::createFile(path, OsFileTypes::Permissions(), failIfExists); },
                "File has null file path.");
        EXPECT_EQ(refusal([&] {
                      OsFsUtils::createFile(temp.path("a/b").c_str(), OsFileTypes::Permissions(), failIfExists);
                  }),
                  missingFolder);
    }
}

TEST(OsFsUtils, deleteFileOfAMissingFileIsQuietAndOfAMissingFolderIsNot)
{
    const TempFolder temp;
    const std::string file = temp.file("file");
    OsFsUtils::deleteFile(file.c_str());
    EXPECT_FALSE(std::filesystem::exists(file));
    OsFsUtils::deleteFile(file.c_str());
    EXPECT_EQ(refusal([&] { OsFsUtils::deleteFile(temp.path("a/b").c_str()); }), missingFolder);
    EXPECT_EQ(refusal([] { OsFsUtils::deleteFile(""); }), missingFolder);
    EXPECT_EQ(refusal([] { OsFsUtils::deleteFile(nullptr); }), missingFolder);
    const VnTest::WorkingFolder here(temp.path());
    OsFsUtils::deleteFile("missing");
    OsFsUtils::deleteFile("m");
#if !defined(_WIN32)
    for (char const* path : {"missing/", "m/", "m///", "./m/"})
        OsFsUtils::deleteFile(path);
    EXPECT_EQ(refusal([] { OsFsUtils::deleteFile("m/m/"); }), missingFolder);
#endif
}

TEST(OsFsUtils, deleteFileRefusesADirectory)
{
    const TempFolder temp;
    EXPECT_NE(refusal([&] { OsFsUtils::deleteFile(temp.folder("folder").c_str()); }), -1);
    EXPECT_TRUE(std::filesystem::exists(temp.path("folder")));
}

#if defined(_WIN32)
TEST(OsFsUtils, theSystemsCodesForAFolderInTheWay)
{
    const TempFolder temp;
    const std::string folder = temp.folder("folder");
    EXPECT_EQ(refusal([&] { OsFsUtils::deleteFile(folder.c_str()); }), 5);
    EXPECT_EQ(refusal([&] { OsFsUtils::createFile(folder.c_str(), OsFileTypes::Permissions(), false); }), 5);
}
#else
TEST(OsFsUtils, linksAreFollowedByQuestionsAndNotByRemoving)
{
    const TempFolder temp;
    std::filesystem::create_symlink(temp.folder("folder"), temp.path("toFolder"));
    std::filesystem::create_symlink(temp.file("file"), temp.path("toFile"));
    std::filesystem::create_symlink(temp.path("missing"), temp.path("toNothing"));
    std::filesystem::create_symlink(temp.path("circle"), temp.path("circle"));
    const struct
    {
        char const* name;
        bool exists;
        bool isDirectory;
    } table[] = {
        {"toFolder", true, true}, {"toFile", true, false}, {"toNothing", false, false}, {"circle", false, false}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.name);
        const std::string link = temp.path(row.name);
        EXPECT_EQ(OsFsUtils::fileExists(link.c_str()), row.exists);
        EXPECT_EQ(OsFsUtils::isDirectory(link.c_str()), row.isDirectory);
        EXPECT_TRUE(OsFsUtils::isSymLink(link.c_str()));
        EXPECT_EQ(refusal([&] { OsFsUtils::removeDir(link.c_str()); }), ENOTDIR);
        OsFsUtils::deleteFile(link.c_str());
        EXPECT_FALSE(OsFsUtils::isSymLink(link.c_str()));
    }
    EXPECT_TRUE(std::filesystem::exists(temp.path("folder")));
    EXPECT_TRUE(std::filesystem::exists(temp.path("file")));
}

TEST(OsFsUtils, aLinkInTheWayOfADirectory)
{
    const TempFolder temp;
    std::filesystem::create_symlink(temp.folder("folder"), temp.path("toFolder"));
    std::filesystem::create_symlink(temp.path("missing"), temp.path("toNothing"));
    OsFsUtils::createDir(temp.path("toFolder").c_str(), true);
    // Something has the name, and yet nothing stands there.
    EXPECT_EQ(refusal([&] { OsFsUtils::createDir(temp.path("toNothing").c_str(), true); }), ENOENT);
}

TEST(OsFsUtils, deletingUnderAFileIsRefused)
{
    const TempFolder temp;
    temp.file("file");
    EXPECT_EQ(refusal([&] { OsFsUtils::deleteFile(temp.path("file/below").c_str()); }), ENOTDIR);
}

TEST(OsFsUtils, permissionsApplyUnderTheMask)
{
    const TempFolder temp;
    const ::mode_t before = ::umask(022);
    const struct
    {
        OsFileTypes::Permissions permissions;
        unsigned mask;
        unsigned expected;
    } table[] = {
        {OsFileTypes::Permissions(), 022, 0644},        {OsFileTypes::Permissions(3, 3, 0), 022, 0640},
        {OsFileTypes::Permissions(3, 3, 3), 0, 0666},   {OsFileTypes::Permissions(1, 2, 0), 0, 0420},
        {OsFileTypes::Permissions(7, 4, 8), 0, 0600},   {OsFileTypes::Permissions(0, 0, 0), 0, 0},
        {OsFileTypes::Permissions(3, 3, 3), 077, 0600},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.expected);
        ::umask(row.mask);
        const std::string file = temp.path("file");
        OsFsUtils::createFile(file.c_str(), row.permissions, true);
        struct ::stat status;
        ASSERT_EQ(::stat(file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, row.expected);
        OsFsUtils::deleteFile(file.c_str());
    }
    ::umask(027);
    OsFsUtils::createDir(temp.path("folder").c_str(), true);
    struct ::stat status;
    ASSERT_EQ(::stat(temp.path("folder").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750U);
    ::umask(before);
}

TEST(OsFsUtils, pipesSocketsAndDevicesAreNeitherWaitedForNorDirectories)
{
    const TempFolder temp;
    const std::string pipe = temp.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(OsFsUtils::fileExists(pipe.c_str()));
    EXPECT_TRUE(OsFsUtils::isFile(pipe.c_str()));
    OsFsUtils::createFile(pipe.c_str(), OsFileTypes::Permissions(), false);
    expectThrow<OsFileEx::ExFileExists, std::runtime_error>(
        [&] { OsFsUtils::createFile(pipe.c_str(), OsFileTypes::Permissions(), true); }, "File already exists.");

    const std::string socketPath = temp.path("socket");
    const VnTest::SocketFile socket(socketPath);
    EXPECT_TRUE(OsFsUtils::fileExists(socketPath.c_str()));
    EXPECT_EQ(refusal([&] { OsFsUtils::createFile(socketPath.c_str(), OsFileTypes::Permissions(), false); }),
              ENXIO);

    EXPECT_TRUE(OsFsUtils::isFile("/dev/null"));
    OsFsUtils::createFile("/dev/null", OsFileTypes::Permissions(), false);
    expectThrow<Vn::ExInternalError, std::runtime_error>([] { OsFsUtils::createDir("/dev/null", true); },
                                                         "A regular file with the same path name exists.");
}

TEST(OsFsUtils, pathsAreBytes)
{
    const TempFolder temp;
    const std::string odd = temp.path("\xFF\xFE new\nline \x01");
    OsFsUtils::createFile(odd.c_str(), OsFileTypes::Permissions(), true);
    EXPECT_TRUE(OsFsUtils::fileExists(odd.c_str()));
    OsFsUtils::deleteFile(odd.c_str());
    const std::string tooLong = temp.path(std::string(256, 'n'));
    EXPECT_EQ(refusal([&] { OsFsUtils::createFile(tooLong.c_str(), OsFileTypes::Permissions(), true); }),
              ENAMETOOLONG);
    EXPECT_EQ(refusal([&] { OsFsUtils::createDir(std::string(5000, 'n').c_str(), true); }), ENAMETOOLONG);
    EXPECT_FALSE(OsFsUtils::fileExists(tooLong.c_str()));
}
#endif
