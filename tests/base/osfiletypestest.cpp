#include <base/osfileex.h>
#include <base/osfiletypes.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using Vn::OsFileEx;
using Vn::OsFileTypes;
using VnTest::expectThrow;

static_assert(!std::is_default_constructible_v<OsFileTypes> && !std::is_default_constructible_v<OsFileEx>);
static_assert(!std::is_base_of_v<OsFileEx, OsFileEx::ExNullFilePath>, "a scope, no common base");
static_assert(sizeof(OsFileTypes::Permissions) == 12 && sizeof(OsFileTypes::UnbufferedInfo) == 12);
static_assert(OsFileTypes::RegularFile == 0 && OsFileTypes::Directory == 1 && OsFileTypes::SpecialFile == 3);
static_assert(OsFileTypes::FullPath == 0 && OsFileTypes::LeafPath == 1);
static_assert(OsFileTypes::FromCurrent == 0 && OsFileTypes::FromBegin == 1 && OsFileTypes::FromEnd == 2);

namespace
{
constexpr char file[] = "src/base/test";

template <class Exception>
void raise()
{
    throw Exception(file, 1);
}

template <class Exception>
void raiseFor(std::string const& path)
{
    throw Exception(file, 1, path.c_str());
}
}  // namespace

TEST(OsFileTypes, permissionsAreReadAndWriteForTheUserAndReadForOthersByDefault)
{
    const OsFileTypes::Permissions permissions;
    EXPECT_EQ(permissions.getUserMode(), 3);
    EXPECT_EQ(permissions.getGroupMode(), 1);
    EXPECT_EQ(permissions.getOtherMode(), 1);
    const OsFileTypes::Permissions given(1, 2, -7);
    EXPECT_EQ(given.getUserMode(), 1);
    EXPECT_EQ(given.getGroupMode(), 2);
    EXPECT_EQ(given.getOtherMode(), -7);
    EXPECT_EQ(OsFileTypes::Permissions(2).getGroupMode(), 1);
    EXPECT_EQ(OsFileTypes::Permissions(2, 0).getOtherMode(), 1);
}

TEST(OsFileTypes, unbufferedInfoIsZeroByDefault)
{
    const OsFileTypes::UnbufferedInfo none;
    EXPECT_EQ(none.getAlignment(), 0U);
    EXPECT_EQ(none.getBlockSize(), 0U);
    EXPECT_EQ(none.getMaxSize(), 0U);
    const OsFileTypes::UnbufferedInfo given(512, 4096, 0xFFFFFFFF);
    EXPECT_EQ(given.getAlignment(), 512U);
    EXPECT_EQ(given.getBlockSize(), 4096U);
    EXPECT_EQ(given.getMaxSize(), 0xFFFFFFFFU);
}

TEST(OsFileEx, eachHasItsTextAndBothBases)
{
    expectThrow<OsFileEx::ExIllegalPathConcat, std::runtime_error>(raise<OsFileEx::ExIllegalPathConcat>,
                                                                   "Attempt to concatenate absolute path.");
    expectThrow<OsFileEx::ExSeparatorNotAllowed, std::invalid_argument>(raise<OsFileEx::ExSeparatorNotAllowed>,
                                                                        "Separator not allowed in path elements.");
    expectThrow<OsFileEx::ExHomeNotDefined, std::runtime_error>(raise<OsFileEx::ExHomeNotDefined>,
                                                                "Cannot get home directory from the environment.");
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>(raise<OsFileEx::ExNullFilePath>,
                                                              "File has null file path.");
    expectThrow<OsFileEx::ExFileExists, std::runtime_error>(raise<OsFileEx::ExFileExists>, "File already exists.");
    expectThrow<OsFileEx::ExInvalidPath, std::invalid_argument>([] { raiseFor<OsFileEx::ExInvalidPath>("a b"); },
                                                                "Invalid path: 'a b'.");
    expectThrow<OsFileEx::ExPathNotWritable, std::invalid_argument>(
        [] { raiseFor<OsFileEx::ExPathNotWritable>("a b"); }, "Invalid path: 'a b'.");
    expectThrow<OsFileEx::ExNoRemoteUnbuffered, std::runtime_error>(
        [] { raiseFor<OsFileEx::ExNoRemoteUnbuffered>("Z:\\"); },
        "Unbuffered IO is impossible on a remote drive: 'Z:\\' is a remote path.");
}

TEST(OsFileEx, aPathInAMessageIsCutTo256Bytes)
{
    const std::string longest(256, 'p');
    const std::string named = "Invalid path: '" + longest + "'.";
    for (std::size_t length : {256U, 257U, 300U}) {
        SCOPED_TRACE(length);
        const std::string path(length, 'p');
        EXPECT_EQ(OsFileEx::ExInvalidPath(file, 1, path.c_str()).getReason(), named);
        EXPECT_EQ(OsFileEx::ExPathNotWritable(file, 1, path.c_str()).getReason(), named);
        EXPECT_EQ(OsFileEx::ExNoRemoteUnbuffered(file, 1, path.c_str()).getReason(),
                  "Unbuffered IO is impossible on a remote drive: '" + longest + "' is a remote path.");
    }
    EXPECT_EQ(OsFileEx::ExInvalidPath(file, 1, std::string(255, 'p').c_str()).getReason(),
              "Invalid path: '" + std::string(255, 'p') + "'.");
    EXPECT_STREQ(OsFileEx::ExInvalidPath(file, 1, nullptr).getReason(), "Invalid path: ''.");
}
