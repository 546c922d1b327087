#include <base/exsyserror.h>
#include <base/osfile.h>
#include <base/osfileex.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>

#include "child.h"
#include "closebehind.h"
#include "expectthrow.h"
#include "largebuffer.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <string>
#include <type_traits>

#if !defined(_WIN32)
#    include "descriptors.h"

#    include <sys/stat.h>
#endif

using Vn::OsFile;
using Vn::OsFileEx;
using Vn::OsFilePath;
using Vn::OsFileReader;
using Vn::OsFileTypes;
using Vn::OsFileWriter;
using VnTest::contentOf;
using VnTest::expectThrow;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

static_assert(!std::is_polymorphic_v<OsFileWriter> && sizeof(OsFileWriter) == sizeof(OsFilePath) + 8);
static_assert(!std::is_copy_constructible_v<OsFileWriter>, "two owners of one open file");

namespace
{
constexpr char systemSource[] = "src/base/osfilewriterwindows";
const OsFileTypes::Permissions usual;

OsFilePath pathOf(std::string const& path)
{
    return OsFilePath(path.c_str());
}

#if defined(_WIN32)
constexpr int exists = 80;
constexpr int missingFolder = 3;
constexpr int negativePosition = 131;
#else
constexpr int exists = EEXIST;
constexpr int missingFolder = ENOENT;
constexpr int negativePosition = EINVAL;
#endif
}  // namespace

TEST(OsFileWriter, writesBytesAsTheyAre)
{
    const TempFolder temp;
    const std::string path = temp.path("file");
    OsFileWriter writer(pathOf(path), usual, true);
    EXPECT_EQ(writer.getPath().getChars(), path);
    EXPECT_EQ(writer.write("a\0\n\r\x1A", 5), 5U);
    EXPECT_EQ(writer.write("", 0), 0U);
    EXPECT_EQ(writer.write("\xFF", 1), 1U);
    EXPECT_EQ(contentOf(path), std::string("a\0\n\r\x1A\xFF", 6)) << "no buffer holds anything back";
    writer.close();
    EXPECT_EQ(contentOf(path), std::string("a\0\n\r\x1A\xFF", 6));
}

TEST(OsFileWriter, anEmptyPathIsRefused)
{
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>(
        [] { OsFileWriter writer(OsFilePath(), usual, false); }, "File has null file path.");
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>(
        [] { OsFileWriter writer(OsFile(OsFilePath()), usual, true); }, "File has null file path.");
}

TEST(OsFileWriter, anExistingFileIsTheSystemsErrorOrEmptiedAtOnce)
{
    const TempFolder temp;
    const std::string path = temp.file("file", "content");
    EXPECT_EQ(systemErrorOf([&] { OsFileWriter writer(pathOf(path), usual, true); }, systemSource), exists);
    EXPECT_EQ(contentOf(path), "content");
    const OsFile file(pathOf(path));
    const OsFileWriter writer(file, usual, false);
    EXPECT_EQ(contentOf(path), "") << "before any write";
}

TEST(OsFileWriter, whatCantBeMadeHasTheSystemsCode)
{
    const TempFolder temp;
    for (bool failIfExists : {true, false})
        EXPECT_EQ(systemErrorOf([&] { OsFileWriter writer(pathOf(temp.path("a/b")), usual, failIfExists); },
                                systemSource),
                  missingFolder);
#if defined(_WIN32)
    EXPECT_EQ(systemErrorOf([&] { OsFileWriter writer(pathOf(temp.path()), usual, false); }, systemSource), 5);
#else
    EXPECT_EQ(systemErrorOf([&] { OsFileWriter writer(pathOf(temp.path()), usual, false); }, systemSource), EISDIR);
    ASSERT_EQ(::mkfifo(temp.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(systemErrorOf([&] { OsFileWriter writer(pathOf(temp.path("pipe")), usual, false); }, systemSource),
              ENXIO)
        << "nobody reads, and opening doesn't wait until somebody does";
#endif
}

TEST(OsFileWriter, reserveSetsTheLengthAndThePosition)
{
    const TempFolder temp;
    const std::string path = temp.path("file");
    OsFileWriter writer(pathOf(path), usual, true);
    writer.reserve(100);
    EXPECT_EQ(std::filesystem::file_size(path), 100U);
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromCurrent), 100);
    writer.write("x", 1);
    EXPECT_EQ(contentOf(path), std::string(100, '\0') + "x") << "appended, not at 0";
    writer.reserve(10);
    EXPECT_EQ(std::filesystem::file_size(path), 10U);
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromCurrent), 10);
    writer.seek(3, OsFileTypes::FromBegin);
    writer.reserve(0);
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromCurrent), 0);
}

TEST(OsFileWriter, reserveEndsAt32Bits)
{
    const TempFolder temp;
    const std::string path = temp.path("file");
    OsFileWriter writer(pathOf(path), usual, true);
    writer.reserve(0x7FFFFFFF);
    EXPECT_EQ(std::filesystem::file_size(path), 0x7FFFFFFFU);
#if defined(_WIN32)
    EXPECT_EQ(systemErrorOf([&] { writer.reserve(0x80000000); }, systemSource), 131);
    EXPECT_EQ(std::filesystem::file_size(path), 0x7FFFFFFFU);
#else
    writer.reserve(0xFFFFFFFE);
    EXPECT_EQ(std::filesystem::file_size(path), 0xFFFFFFFEU);
    writer.seek(7, OsFileTypes::FromBegin);
    for (unsigned long size : {0xFFFFFFFFUL, 0x100000000UL, ~0UL})
        EXPECT_EQ(systemErrorOf([&] { writer.reserve(size); }, systemSource), EOVERFLOW);
    EXPECT_EQ(std::filesystem::file_size(path), 0xFFFFFFFEU);
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromCurrent), 7);
#endif
}

TEST(OsFileWriter, seeksFromThreeOrigins)
{
    const TempFolder temp;
    const std::string path = temp.path("file");
    OsFileWriter writer(pathOf(path), usual, true);
    writer.write("0123456789", 10);
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromEnd), 10) << "the size of the file";
    EXPECT_EQ(writer.seek(-3, OsFileTypes::FromEnd), 7);
    writer.write("a", 1);
    EXPECT_EQ(writer.seek(-5, OsFileTypes::FromCurrent), 3);
    writer.write("b", 1);
    EXPECT_EQ(systemErrorOf([&] { writer.seek(-1, OsFileTypes::FromBegin); }, systemSource), negativePosition);
    writer.write("c", 1);
    EXPECT_EQ(contentOf(path), "012bc56a89");
    EXPECT_EQ(writer.seek(2, OsFileTypes::FromEnd), 12);
    writer.write("z", 1);
    EXPECT_EQ(contentOf(path), std::string("012bc56a89\0\0z", 13));
}

TEST(OsFileWriter, aClosedWriterSaysWhateverErrnoHolds)
{
    const TempFolder temp;
    OsFileWriter writer(pathOf(temp.path("file")), usual, true);
    writer.close();
    const auto expectClosed = [](auto const& call) {
        errno = ENOTTY;
        try {
            call();
            ADD_FAILURE() << "nothing thrown";
        } catch (Vn::ExSysErrorANSI const& failure) {
            EXPECT_EQ(failure.getError(), ENOTTY);
            EXPECT_STREQ(failure.getFileName(), "src/base/osfilewriter");
        }
    };
    expectClosed([&] { writer.write("x", 1); });
    expectClosed([&] { writer.seek(0, OsFileTypes::FromBegin); });
    expectClosed([&] { writer.reserve(3); });
    expectClosed([&] { writer.close(); });
    EXPECT_EQ(contentOf(temp.path("file")), "");
}

TEST(OsFileWriter, theEndOfAClosedWriterLeavesTheLastErrorAlone)
{
    const TempFolder temp;
    {
        OsFileWriter closed(pathOf(temp.path("file")), usual, true);
        closed.close();
#if defined(_WIN32)
        ::SetLastError(5);
    }
    EXPECT_EQ(::GetLastError(), 5U);
#else
        errno = ENOTTY;
    }
    EXPECT_EQ(errno, ENOTTY);
#endif
}

TEST(OsFileWriter, aHandleThatTheSystemNoLongerKnowsIsKept)
{
    const TempFolder temp;
    // The first text of the system's may open what it comes from, which would take the free number.
    EXPECT_EQ(systemErrorOf([&] { OsFileWriter writer(pathOf(temp.path("a/b")), usual, true); }, systemSource),
              missingFolder);
    OsFileWriter writer(pathOf(temp.path("file")), usual, true);
    VnTest::closeBehind(writer);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(systemErrorOf([&] { writer.close(); }, systemSource), VnTest::unknownHandle);
        EXPECT_EQ(systemErrorOf([&] { writer.write("x", 1); }, systemSource), VnTest::unknownHandle)
            << "open, as far as the writer knows";
    }
}

TEST(OsFileWriter, writesGigabytesInOneCall)
{
    const VnTest::LargeBuffer buffer(0x100000000);
    if (char const* const reason = VnTest::whyNoLargeBuffer(buffer))
        GTEST_SKIP() << reason;
#if defined(_WIN32)
    OsFileWriter writer(OsFilePath("NUL"), usual, false);
#else
    OsFileWriter writer(OsFilePath("/dev/null"), usual, false);
#endif
    // A gigabyte, twice that, the most that Linux moves in one call, and the most that the interface holds.
    for (unsigned long size :
         {0x3FFFFFFFUL, 0x40000000UL, 0x40000001UL, 0x7FFFF000UL, 0x7FFFF001UL, 0x80000000UL, 0xFFFFFFFFUL})
        EXPECT_EQ(writer.write(buffer.get(), size), size);
}

#if !defined(_WIN32)
TEST(OsFileWriter, sizesBeyond32BitsAreRefused)
{
    const TempFolder temp;
    OsFileWriter writer(pathOf(temp.path("file")), usual, true);
    for (unsigned long size : {0x100000000UL, 0x100000001UL, ~0UL})
        EXPECT_EQ(systemErrorOf([&] { writer.write("abc", size); }, systemSource), EOVERFLOW);
    EXPECT_EQ(contentOf(temp.path("file")), "");
    EXPECT_EQ(writer.seek(0, OsFileTypes::FromCurrent), 0);
    writer.close();
    EXPECT_THROW(writer.write("abc", ~0UL), Vn::ExSysErrorANSI) << "a closed writer says that first";
}

TEST(OsFileWriter, permissionsApplyUnderTheMask)
{
    const TempFolder temp;
    const ::mode_t before = ::umask(022);
    const OsFileWriter usualOne(pathOf(temp.path("usual")), usual, true);
    const OsFileWriter shared(pathOf(temp.path("shared")), OsFileTypes::Permissions(3, 3, 3), true);
    ::umask(0);
    const OsFileWriter open(pathOf(temp.path("open")), OsFileTypes::Permissions(3, 3, 3), false);
    ::umask(before);
    const auto modeOf = [&](char const* name) {
        struct ::stat status = {};
        ::stat(temp.path(name).c_str(), &status);
        return status.st_mode & 07777;
    };
    EXPECT_EQ(modeOf("usual"), 0644U);
    EXPECT_EQ(modeOf("shared"), 0644U);
    EXPECT_EQ(modeOf("open"), 0666U);
}

TEST(OsFileWriter, aFullDeviceTakesNoByteAndIsNoFailure)
{
    OsFileWriter writer(OsFilePath("/dev/full"), usual, false);
    EXPECT_EQ(writer.write("x", 1), 0U);
}
#endif

#if !defined(_WIN32)
VN_CHILD(opensWithoutStandardDescriptors)
{
    VnTest::closeStandardDescriptors();
    OsFileWriter writer(OsFilePath(argv[1]), usual, true);
    OsFileReader reader{OsFilePath(argv[1])};
    const int count = VnTest::countStandardDescriptors();
    std::cout << "lost" << std::endl;  // goes nowhere, and not into the file
    writer.write("y", 1);
    return count;
}

TEST(OsFileWriter, takesNoStandardDescriptorAndNorDoesAReader)
{
    const TempFolder temp;
    EXPECT_EQ(VnTest::Child("opensWithoutStandardDescriptors").arguments({temp.path("file")}).run().exitCode, 0);
    EXPECT_EQ(contentOf(temp.path("file")), "y");
}
#endif
