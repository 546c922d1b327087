#include <base/lgringindex.h>

#include <gtest/gtest.h>

using Index = Vn::LgRingIndex<8>;

static_assert(sizeof(Index) == 4);

TEST(LgRingIndex, wrapsBothWays)
{
    Index index;
    EXPECT_EQ(index.get(), 0u);
    EXPECT_EQ((--index).get(), 7u);
    EXPECT_EQ((index--).get(), 7u);
    EXPECT_EQ((index++).get(), 6u);
    EXPECT_EQ((++index).get(), 0u);
    EXPECT_EQ((Index(5) + 6).get(), 3u);
    EXPECT_EQ((Index(5) - 6).get(), 7u);
    EXPECT_EQ(Index(13), Index(5));
}

TEST(LgRingIndex, distanceIsTheStepsForward)
{
    EXPECT_EQ(Index(5) - Index(5), 0u);
    EXPECT_EQ(Index(5) - Index(2), 3u);
    EXPECT_EQ(Index(2) - Index(5), 5u);
    EXPECT_EQ(Index(0) - Index(7), 1u);
}

TEST(LgRingIndex, showsWhatWasPublished)
{
    Index index;
    index.storeRelease(Index(7) + 4);
    EXPECT_EQ(index.loadAcquire(), Index(3));
    EXPECT_EQ(index.get(), 3u);
}
