// The tasks of docs/from-googletest.md with GoogleTest: withgoogletest [--gtest_filter=NAME].
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

class Sorting : public testing::TestWithParam<std::size_t>
{
protected:
    void SetUp() override
    {
        _numbers.resize(GetParam());
        std::iota(_numbers.rbegin(), _numbers.rend(), 0);
    }

    void TearDown() override { _numbers.clear(); }

    std::vector<int> _numbers;
};

TEST_P(Sorting, putsTheSmallestFirst)
{
    std::sort(_numbers.begin(), _numbers.end());
    EXPECT_EQ(_numbers.front(), 0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, Sorting, testing::Values(10, 1000));

TEST(Broken, isNotSorted)
{
    const std::vector<int> numbers{2, 1};
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
