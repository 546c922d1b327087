#include <base/inpointertable_p.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

using Table = Vn::InPointerTable<int>;

TEST(InPointerTable, findsNothingInAnEmptyOne)
{
    Table table;
    const int object = 0;
    EXPECT_EQ(table.find(&object), nullptr);
    table.erase(&object);
    EXPECT_EQ(table.size(), 0u);
}

TEST(InPointerTable, makesAnEntryAtTheFirstUseAndKeepsItsValue)
{
    Table table;
    const int objects[2] = {};
    EXPECT_EQ(table.get(&objects[0]), 0);
    table.get(&objects[0]) = 7;
    table.get(&objects[1]) = 8;
    EXPECT_EQ(*table.find(&objects[0]), 7);
    EXPECT_EQ(*table.find(&objects[1]), 8);
    table.erase(&objects[0]);
    EXPECT_EQ(table.find(&objects[0]), nullptr);
    EXPECT_EQ(*table.find(&objects[1]), 8);
    EXPECT_EQ(table.get(&objects[0]), 0) << "the value of a former entry is gone";
}

TEST(InPointerTable, agreesWithTheStandardLibrarysTableWhateverComesAndGoes)
{
    std::mt19937 random(1);
    std::vector<int> objects(300);
    Table table;
    std::unordered_map<int const*, int> expected;
    for (int step = 0; step < 200000; ++step) {
        // By turns mostly insertions and mostly removals, so that chains form, wrap around the end, and dissolve.
        int const* const object = &objects[random() % objects.size()];
        if (random() % 8 < (step / 1000 % 2 == 0 ? 6u : 2u)) {
            table.get(object) = step;
            expected[object] = step;
        } else {
            table.erase(object);
            expected.erase(object);
        }
        ASSERT_EQ(table.size(), expected.size());
        if (step % 50 != 0)
            continue;
        for (int const& each : objects) {
            const auto found = expected.find(&each);
            int const* const value = table.find(&each);
            ASSERT_EQ(value != nullptr, found != expected.end());
            if (value != nullptr) {
                ASSERT_EQ(*value, found->second);
            }
        }
    }
}
