#include <base/exsyserror.h>
#include <base/osfile.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>

#include "closebehind.h"
#include "expectthrow.h"
#include "largebuffer.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <type_traits>

#if defined(_WIN32)
#    include "wine.h"
#else
#    include "socketfile.h"

#    include <fcntl.h>
#    include <sys/mman.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

using Vn::OsFile;
using Vn::OsFileEx;
using Vn::OsFilePath;
using Vn::OsFileReader;
using Vn::OsFileTypes;
using Vn::OsFileWriter;
using VnTest::expectThrow;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

static_assert(!std::is_polymorphic_v<OsFileReader> && sizeof(OsFileReader) == sizeof(OsFilePath) + 8);
static_assert(!std::is_copy_constructible_v<OsFileReader>, "two owners of one open file");
static_assert(Vn::System::originOf(OsFileTypes::FromCurrent) == 1);
static_assert(Vn::System::originOf(OsFileTypes::FromBegin) == 0);
static_assert(Vn::System::originOf(OsFileTypes::FromEnd) == 2);
static_assert(Vn::System::originOf(static_cast<OsFileTypes::SeekMode>(3)) == 0);
static_assert(Vn::System::originOf(static_cast<OsFileTypes::SeekMode>(-1)) == 0);

namespace
{
constexpr char systemSource[] = "src/base/osfilereaderwindows";

OsFilePath pathOf(std::string const& path)
{
    return OsFilePath(path.c_str());
}

std::string readUpTo(OsFileReader& reader, unsigned long size)
{
    std::string bytes(size, '?');
    bytes.resize(reader.read(bytes.data(), size));
    return bytes;
}

#if defined(_WIN32)
constexpr int missing = 2;
constexpr int negativePosition = 131;
#else
constexpr int missing = ENOENT;
constexpr int negativePosition = EINVAL;
#endif
}  // namespace

TEST(OsFileReader, readsToTheEndAndThenNothing)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", std::string("a\0\r\n\xFFz", 6))));
    EXPECT_EQ(readUpTo(reader, 4), std::string("a\0\r\n", 4));
    EXPECT_EQ(readUpTo(reader, 4), "\xFFz");
    EXPECT_EQ(readUpTo(reader, 4), "");
    EXPECT_EQ(readUpTo(reader, 4), "");
    EXPECT_EQ(reader.read(nullptr, 0), 0U);
}

TEST(OsFileReader, opensByPathOrFile)
{
    const TempFolder temp;
    const std::string path = temp.file("file", "x");
    const OsFile file(pathOf(path));
    OsFileReader reader(file);
    EXPECT_EQ(reader.getPath().getChars(), path);
    EXPECT_EQ(readUpTo(reader, 2), "x");
}

TEST(OsFileReader, anEmptyPathIsRefused)
{
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>([] { OsFileReader reader{OsFilePath()}; },
                                                              "File has null file path.");
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>([] { OsFileReader reader{OsFile(OsFilePath())}; },
                                                              "File has null file path.");
}

TEST(OsFileReader, whatCantBeOpenedHasTheSystemsCode)
{
    const TempFolder temp;
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.path("missing"))); }, systemSource), missing);
#if defined(_WIN32)
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.path())); }, systemSource), 5);
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.path("a/b"))); }, systemSource), 3);
#else
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.path())); }, systemSource), EISDIR);
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.file("file") + "/b")); }, systemSource), ENOTDIR);
    std::filesystem::create_symlink("circle", temp.path("circle"));
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.path("circle"))); }, systemSource), ELOOP);
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(std::string(5000, 'n'))); }, systemSource),
              ENAMETOOLONG);
#endif
}

TEST(OsFileReader, seeksFromThreeOrigins)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", "0123456789")));
    const struct
    {
        long offset;
        OsFileTypes::SeekMode mode;
        int position;
        char const* next;
    } table[] = {
        {3, OsFileTypes::FromBegin, 3, "3"},
        {2, OsFileTypes::FromCurrent, 6, "6"},  // one was read
        {-2, OsFileTypes::FromCurrent, 5, "5"},
        {-1, OsFileTypes::FromEnd, 9, "9"},
        {0, OsFileTypes::FromEnd, 10, ""},
        {0, OsFileTypes::FromCurrent, 10, ""},
        {5, OsFileTypes::FromEnd, 15, ""},
        {0, OsFileTypes::FromBegin, 0, "0"},
        {4, static_cast<OsFileTypes::SeekMode>(3), 4, "4"},
        {0x7FFFFFFF, OsFileTypes::FromBegin, 0x7FFFFFFF, ""},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.position);
        EXPECT_EQ(reader.seek(row.offset, row.mode), row.position);
        EXPECT_EQ(readUpTo(reader, 1), row.next);
    }
}

TEST(OsFileReader, aPositionBeforeTheStartIsRefusedAndThePositionStays)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", "0123456789")));
    reader.seek(4, OsFileTypes::FromBegin);
    const struct
    {
        long offset;
        OsFileTypes::SeekMode mode;
    } table[] = {{-1, OsFileTypes::FromBegin}, {-5, OsFileTypes::FromCurrent}, {-11, OsFileTypes::FromEnd}};
    for (auto const& row : table)
        EXPECT_EQ(systemErrorOf([&] { reader.seek(row.offset, row.mode); }, systemSource), negativePosition);
    EXPECT_EQ(readUpTo(reader, 1), "4");
}

TEST(OsFileReader, anOldErrorDoesNotMakeSeekFail)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", "0123456789")));
#if defined(_WIN32)
    ::SetLastError(5);
#else
    errno = EACCES;
#endif
    EXPECT_EQ(reader.seek(2, OsFileTypes::FromBegin), 2);
}

TEST(OsFileReader, positionsEndAt32Bits)
{
    // A file of 5 GiB that takes no room.
    const TempFolder temp;
    const std::string path = temp.file("large");
    std::filesystem::resize_file(path, std::uintmax_t{5} << 30);
    OsFileReader reader(pathOf(path));
    EXPECT_EQ(reader.seek(0x7FFFFFFF, OsFileTypes::FromBegin), 0x7FFFFFFF);
    EXPECT_EQ(reader.seek(1, OsFileTypes::FromCurrent), INT32_MIN) << "the low 32 bits as they are";
    EXPECT_EQ(reader.seek(0x7FFFFFFF, OsFileTypes::FromCurrent), -1);
#if defined(_WIN32)
    if (VnTest::isWine())
        GTEST_SKIP() << "Wine moves beyond 32 bits and calls it a success";
    constexpr int beyond = 87;
#else
    constexpr int beyond = EOVERFLOW;
#endif
    EXPECT_EQ(systemErrorOf([&] { reader.seek(1, OsFileTypes::FromCurrent); }, systemSource), beyond);
    EXPECT_EQ(systemErrorOf([&] { reader.seek(0, OsFileTypes::FromEnd); }, systemSource), beyond);
    EXPECT_EQ(reader.seek(0, OsFileTypes::FromCurrent), -1) << "the position stays";
#if !defined(_WIN32)
    EXPECT_EQ(reader.seek(0xFFFFFFFF, OsFileTypes::FromBegin), -1);
    EXPECT_EQ(systemErrorOf([&] { reader.seek(0x100000000, OsFileTypes::FromBegin); }, systemSource), beyond);
    EXPECT_EQ(systemErrorOf([&] { reader.seek(INT32_MIN - 1L, OsFileTypes::FromEnd); }, systemSource), beyond);
    EXPECT_EQ(reader.seek(0, OsFileTypes::FromCurrent), -1);
    EXPECT_EQ(reader.seek(INT32_MIN, OsFileTypes::FromEnd), INT32_MIN + 0x40000000);
#endif
}

TEST(OsFileReader, aClosedReaderSaysWhateverErrnoHolds)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", "x")));
    reader.close();
    char letter;
    const auto expectClosed = [](auto const& call) {
        errno = ENOTTY;
        try {
            call();
            ADD_FAILURE() << "nothing thrown";
        } catch (Vn::ExSysErrorANSI const& failure) {
            EXPECT_EQ(failure.getError(), ENOTTY);
            EXPECT_STREQ(failure.getFileName(), "src/base/osfilereader");
        }
    };
    expectClosed([&] { reader.read(&letter, 1); });
    expectClosed([&] { reader.seek(0, OsFileTypes::FromBegin); });
    expectClosed([&] { reader.close(); });
    expectClosed([&] { reader.close(); });
}

TEST(OsFileReader, theEndOfAClosedReaderLeavesTheLastErrorAlone)
{
    const TempFolder temp;
    {
        OsFileReader closed(pathOf(temp.file("file", "x")));
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

TEST(OsFileReader, aHandleThatTheSystemNoLongerKnowsIsKept)
{
    const TempFolder temp;
    // The first text of the system's may open what it comes from, which would take the free number.
    EXPECT_EQ(systemErrorOf([&] { OsFileReader reader(pathOf(temp.path("missing"))); }, systemSource), missing);
    OsFileReader reader(pathOf(temp.file("file", "x")));
    VnTest::closeBehind(reader);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(systemErrorOf([&] { reader.close(); }, systemSource), VnTest::unknownHandle);
        char letter;
        EXPECT_EQ(systemErrorOf([&] { reader.read(&letter, 1); }, systemSource), VnTest::unknownHandle)
            << "open, as far as the reader knows";
    }
}

TEST(OsFileReader, aReaderAndAWriterHoldOneFile)
{
    const TempFolder temp;
    const OsFilePath path = pathOf(temp.path("file"));
    OsFileWriter writer(path, OsFileTypes::Permissions(), true);
    OsFileReader reader(path);
    OsFileReader other(path);
    EXPECT_EQ(readUpTo(reader, 3), "");
    EXPECT_EQ(writer.write("abc", 3), 3U);
    EXPECT_EQ(readUpTo(reader, 3), "abc");
    EXPECT_EQ(readUpTo(other, 2), "ab");
}

TEST(OsFileReader, aDestroyedReaderLetsGo)
{
    const TempFolder temp;
    const std::string path = temp.file("file", "x");
    for (int i = 0; i < 3; ++i)
        OsFileReader reader(pathOf(path));
    {
        OsFileReader closed(pathOf(path));
        closed.close();
    }
    // Windows keeps a file that is open.
    EXPECT_TRUE(std::filesystem::remove(path));
}

#if !defined(_WIN32)
TEST(OsFileReader, aDestroyedReaderLeavesNoDescriptor)
{
    const TempFolder temp;
    const OsFilePath path = pathOf(temp.file("file", "x"));
    const int before = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(before);
    {
        OsFileReader reader(path);
        OsFileReader closed(path);
        closed.close();
    }
    const int after = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(after, before) << "the lowest free number is the same again";
    ::close(after);
}

TEST(OsFileReader, childrenOfTheProcessDontGetIt)
{
    const TempFolder temp;
    const int lowest = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(lowest);
    OsFileReader reader(pathOf(temp.file("file", "x")));
    EXPECT_EQ(::fcntl(lowest, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(lowest, F_GETFL) & O_ACCMODE, O_RDONLY);
}

TEST(OsFileReader, openingAPipeOrADeviceDoesNotWait)
{
    const TempFolder temp;
    const std::string pipe = temp.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    OsFileReader reader(pathOf(pipe));  // nobody writes
    char letter;
    EXPECT_EQ(reader.read(&letter, 1), 0U);
    OsFileWriter writer(pathOf(pipe), OsFileTypes::Permissions(), false);
    EXPECT_EQ(writer.write("x", 1), 1U);
    EXPECT_EQ(reader.read(&letter, 1), 1U);
    EXPECT_EQ(letter, 'x');
    for (long offset : {0L, 0xFFFFFFFFL, static_cast<long>(INT32_MIN)})
        EXPECT_EQ(systemErrorOf([&] { reader.seek(offset, OsFileTypes::FromBegin); }, systemSource), ESPIPE)
            << offset;
    for (long offset : {0x100000000L, INT32_MIN - 1L})
        EXPECT_EQ(systemErrorOf([&] { reader.seek(offset, OsFileTypes::FromBegin); }, systemSource), EOVERFLOW)
            << offset << ": refused before the system is asked";

    OsFileReader device(OsFilePath("/dev/null"));
    EXPECT_EQ(device.read(&letter, 1), 0U);

    const std::string socketPath = temp.path("socket");
    const VnTest::SocketFile socket(socketPath);
    EXPECT_EQ(systemErrorOf([&] { OsFileReader refused(pathOf(socketPath)); }, systemSource), ENXIO);
}

TEST(OsFileReader, sizesBeyond32BitsAreRefused)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", "abc")));
    char letter = '?';
    for (unsigned long size : {0x100000000UL, 0x100000001UL, ~0UL})
        EXPECT_EQ(systemErrorOf([&] { reader.read(&letter, size); }, systemSource), EOVERFLOW);
    EXPECT_EQ(letter, '?') << "nothing was read";
    EXPECT_EQ(readUpTo(reader, 3), "abc");
    reader.close();
    EXPECT_THROW(reader.read(&letter, ~0UL), Vn::ExSysErrorANSI) << "a closed reader says that first";
}

TEST(OsFileReader, readsGigabytesInOneCall)
{
    // The same memory again and again, so that it takes little.
    constexpr unsigned long size = 0xFFFFFFFF;
    constexpr std::size_t blockSize = std::size_t{64} << 20;
    const VnTest::LargeBuffer buffer(size + 1UL);
    if (char const* const reason = VnTest::whyNoLargeBuffer(buffer))
        GTEST_SKIP() << reason;
    const int block = ::memfd_create("block", MFD_CLOEXEC);
    ASSERT_EQ(::ftruncate(block, blockSize), 0);
    char* const bytes = static_cast<char*>(buffer.get());
    for (std::size_t at = 0; at < size; at += blockSize)
        ASSERT_EQ(::mmap(bytes + at, blockSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, block, 0),
                  bytes + at);
    ::close(block);
    // A file that takes no room, with more in it than the system moves in one call.
    constexpr std::uint32_t length = 0x80000005;
    const int hole = ::memfd_create("hole", MFD_CLOEXEC);
    ASSERT_EQ(::ftruncate(hole, length), 0);
    ASSERT_EQ(::pwrite(hole, "end", 3, length - 3), 3);
    OsFileReader reader(pathOf("/proc/self/fd/" + std::to_string(hole)));
    EXPECT_EQ(reader.read(bytes, size), length) << "up to the end";
    EXPECT_EQ(std::string(bytes + length - 3, 3), "end");
    EXPECT_EQ(reader.read(bytes, size), 0U);
    ::close(hole);
}

TEST(OsFileReader, aBlockThatIsNoMemoryIsAnError)
{
    const TempFolder temp;
    OsFileReader reader(pathOf(temp.file("file", "x")));
    EXPECT_EQ(systemErrorOf([&] { reader.read(nullptr, 1); }, systemSource), EFAULT);
}
#endif
