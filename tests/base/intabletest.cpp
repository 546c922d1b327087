#include <base/intable_p.h>

#include "collision.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

using Table = Vn::InTable<Vn::InAddressKey, int>;

TEST(InTable, findsNothingInAnEmptyOne)
{
    Table table;
    const int object = 0;
    EXPECT_EQ(table.find(&object), nullptr);
    table.erase(&object);
    EXPECT_EQ(table.size(), 0u);
}

TEST(InTable, makesAnEntryAtTheFirstUseAndKeepsItsValue)
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

TEST(InTable, walksOverEachEntryOnce)
{
    Table table;
    std::vector<int> objects(100);
    int expected = 0, sum = 0, count = 0;
    table.forEach([&](int) { ++count; });
    EXPECT_EQ(count, 0);
    for (int i = 0; i < 100; ++i)
        table.get(&objects[static_cast<std::size_t>(i)]) = i;
    for (int i = 0; i < 100; ++i) {
        if (i % 3 == 0)
            table.erase(&objects[static_cast<std::size_t>(i)]);
        else
            expected += i;
    }
    table.forEach([&](int value) {
        ++count;
        sum += value;
    });
    EXPECT_EQ(count, 66);
    EXPECT_EQ(sum, expected);
}

TEST(InTable, agreesWithTheStandardLibrarysTableWhateverComesAndGoes)
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

TEST(InTable, findsTextsByTheirCharactersAndKeepsTheFirstOfEqualOnes)
{
    Vn::InTable<Vn::InTextKey, int> table;
    const std::string first = "depth", equal = "depth", shorter = "dept", empty;
    table.get(first.c_str()) = 1;
    table.get(equal.c_str()) += 1;
    table.get(shorter.c_str()) = 3;
    table.get(empty.c_str()) = 4;
    EXPECT_EQ(table.size(), 3u);
    EXPECT_EQ(*table.find("depth"), 2);
    EXPECT_EQ(table.keyOf("depth").getText(), first.c_str());
    EXPECT_EQ(*table.find(""), 4);
    EXPECT_EQ(table.find("depths"), nullptr);
    table.erase("depth");
    EXPECT_EQ(table.find(first.c_str()), nullptr);
    EXPECT_EQ(*table.find("dept"), 3);
}

TEST(InTable, textsOfOneHashAreTwoKeys)
{
    for (const bool areOfOneLength : {true, false}) {
        SCOPED_TRACE(areOfOneLength);
        const auto [one, other] = VnTest::findTextsOfOneHash(areOfOneLength);
        ASSERT_NE(one, other);
        ASSERT_EQ(Vn::InTextKey(one.c_str()).hash(), Vn::InTextKey(other.c_str()).hash());
        Vn::InTable<Vn::InTextKey, int> table;
        table.get(one.c_str()) = 1;
        EXPECT_EQ(table.find(other.c_str()), nullptr);
        table.get(other.c_str()) = 2;
        EXPECT_EQ(*table.find(one.c_str()), 1);
        table.erase(one.c_str());
        EXPECT_EQ(*table.find(other.c_str()), 2);
    }
}

TEST(InTable, givesItsMemoryBackWithTheLastEntryAndCanBeFilledAnew)
{
    std::vector<int> objects(1000);
    Table table;
    for (int round = 0; round < 3; ++round) {
        for (int const& object : objects)
            table.get(&object) = 5;
        for (int const& object : objects)
            table.erase(&object);
        EXPECT_EQ(table.size(), 0u);
        EXPECT_EQ(table.find(&objects[0]), nullptr);
    }
}
