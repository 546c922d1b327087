#include <timehistogram.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

using namespace vnlog;

namespace
{
using Counts = std::vector<std::uint64_t>;
}

TEST(TimeHistogram, timesFallIntoColumnsOfTheWidth)
{
    TimeHistogram histogram(4, 10);
    for (const int time : {100, 109, 110, 139})
        histogram.add(time);
    EXPECT_EQ(histogram.getWidth(), 10);
    EXPECT_EQ(histogram.getBegin(), 100);
    EXPECT_EQ(histogram.getCounts(), (Counts{2, 1, 0, 1}));
}

TEST(TimeHistogram, aLaterOrAnEarlierTimeDoublesTheWidth)
{
    TimeHistogram histogram(4, 10);
    histogram.add(100);
    histogram.add(119);
    histogram.add(140);
    EXPECT_EQ(histogram.getWidth(), 20);
    EXPECT_EQ(histogram.getCounts(), (Counts{2, 0, 1}));
    histogram.add(0);
    EXPECT_EQ(histogram.getWidth(), 40);
    EXPECT_EQ(histogram.getBegin(), 0);
    EXPECT_EQ(histogram.getCounts(), (Counts{1, 0, 2, 1}));
}

TEST(TimeHistogram, noneIsLostInWhateverOrderTheyCome)
{
    std::mt19937_64 random(7);
    for (int round = 0; round < 200; ++round) {
        TimeHistogram histogram(20, 3);
        std::vector<std::int64_t> times(100);
        for (std::int64_t& time : times)
            time = static_cast<std::int64_t>(random() >> (random() % 60 + 2));
        for (const std::int64_t time : times)
            histogram.add(time);
        const Counts counts = histogram.getCounts();
        ASSERT_EQ(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}), times.size());
        ASSERT_LE(counts.size(), 20u);
        for (std::size_t i = 0; i < counts.size(); ++i) {
            const std::int64_t begin = histogram.getBegin() + static_cast<std::int64_t>(i) * histogram.getWidth();
            const auto expected = std::count_if(times.begin(), times.end(), [&](std::int64_t time) {
                time = std::min(time, std::int64_t{4000000000000000000});
                return time >= begin && time - begin < histogram.getWidth();
            });
            ASSERT_EQ(counts[i], static_cast<std::uint64_t>(expected)) << round << " " << i;
        }
    }
}

TEST(TimeHistogram, columnsMaySpanMoreThanATimeCan)
{
    TimeHistogram histogram(20);
    for (const std::int64_t time :
         {std::int64_t{4000000000000000000}, std::int64_t{600000000000000000}, std::int64_t{0}})
        histogram.add(time);
    const Counts counts = histogram.getCounts();
    EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}), 3u);
    EXPECT_EQ(histogram.getBegin(), 0);
}

TEST(TimeHistogram, anEmptyOneHasNoColumns)
{
    const TimeHistogram histogram(4);
    EXPECT_TRUE(histogram.getCounts().empty());
    EXPECT_EQ(histogram.getBegin(), 0);
}

TEST(TimeHistogram, columnsAreDrawnInEighthsOfALine)
{
    EXPECT_EQ(drawColumns({1, 2, 4, 0}, 1, false), (std::vector<std::string>{"▂▄█ "}));
    EXPECT_EQ(drawColumns({1, 2, 4, 0}, 1, true), (std::vector<std::string>{".:# "}));
    EXPECT_EQ(drawColumns({1, 16, 8}, 2, false), (std::vector<std::string>{" █ ", "▁██"}));
    EXPECT_EQ(drawColumns({1, 1000000}, 1, true), (std::vector<std::string>{".#"}));
    EXPECT_EQ(drawColumns({}, 2, true), (std::vector<std::string>{"", ""}));
}
