#include <base/osmemoryarch.h>
#include <base/osmemoryarchex.h>
#include <base/osmemoryarchimp_p.h>

#include "expectthrow.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <type_traits>

using Vn::OsMemoryArch;
using Vn::OsMemoryArchEx;
using Vn::OsMemoryArchImp;

static_assert(std::is_abstract_v<OsMemoryArch> && !std::has_virtual_destructor_v<OsMemoryArch>);

TEST(OsMemoryArch, tellsTheGeometryOfItsCaches)
{
    const OsMemoryArchImp caches({16384, 2, 32}, {262144, 8, 64}, 4096);
    OsMemoryArch const& arch = caches;
    EXPECT_EQ(arch.getMemorySize(), 268435456u);
    EXPECT_EQ(arch.getL1Size(), 16384u);
    EXPECT_EQ(arch.getL2Size(), 262144u);
    EXPECT_EQ(arch.getL1WaySize(), 8192u);
    EXPECT_EQ(arch.getL2WaySize(), 32768u);
    EXPECT_EQ(arch.getL1LineSize(), 32u);
    EXPECT_EQ(arch.getL2LineSize(), 64u);
    EXPECT_EQ(arch.getPageSize(), 4096u);
    EXPECT_EQ(arch.getWordSize(), 8u);
}

TEST(OsMemoryArch, isAllZeroWhereNothingIsReported)
{
    const OsMemoryArchImp arch({0, 1, 0}, {0, 1, 0}, 0);
    EXPECT_EQ(arch.getL1Size(), 0u);
    EXPECT_EQ(arch.getL1WaySize(), 0u);
    EXPECT_EQ(arch.getL2WaySize(), 0u);
    EXPECT_EQ(arch.getL1LineSize(), 0u);
    EXPECT_EQ(arch.getPageSize(), 0u);
    EXPECT_EQ(arch.getMemorySize(), 268435456u);
    EXPECT_EQ(arch.getWordSize(), 8u);
}

TEST(OsMemoryArch, thereIsOneAndItAnswersOnEveryMachine)
{
    VnTest::startOnce();
    OsMemoryArch const& arch = OsMemoryArch::getInstance();
    EXPECT_EQ(&arch, &OsMemoryArch::getInstance());
    EXPECT_EQ(arch.getMemorySize(), 268435456u);
    EXPECT_EQ(arch.getWordSize(), 8u);
    EXPECT_LE(arch.getL1WaySize(), arch.getL1Size());
    EXPECT_LE(arch.getL2WaySize(), arch.getL2Size());
    EXPECT_TRUE(arch.getPageSize() == 0 || arch.getPageSize() == 4096);
}

TEST(OsMemoryArch, exceptionsSayWhatIsUnknown)
{
    VnTest::expectThrow<OsMemoryArchEx::ExUnknownCPU, std::runtime_error>(
        [] { throw OsMemoryArchEx::ExUnknownCPU("src/base/x", 1); },
        "Unknown CPU Type: Can not compute memory architecture parameters.");
    VnTest::expectThrow<OsMemoryArchEx::ExUnknownCPUBoard, std::runtime_error>(
        [] { throw OsMemoryArchEx::ExUnknownCPUBoard("src/base/x", 1); },
        "Unknown CPU Board Type: Can not compute memory architecture parameters.");
}
