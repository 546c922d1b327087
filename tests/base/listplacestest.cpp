#include <base/listplaces_p.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>

using Vn::List;
using Vn::ListPlaces;

namespace
{
/// A value that counts how often its like is compared.
struct Value
{
    int number;

    friend bool operator==(Value const& left, Value const& right)
    {
        ++comparisons;
        return left.number == right.number;
    }

    static inline long comparisons = 0;
};

struct HashOfValue
{
    std::size_t operator()(Value const& value) const { return static_cast<std::size_t>(value.number); }
};
}  // namespace

TEST(ListPlaces, doesWhatAListDoesByItself)
{
    std::mt19937 random(1);
    List<int> list, expected;
    ListPlaces<int> places;
    for (int step = 0; step < 20000; ++step) {
        const int value = static_cast<int>(random() % 50);
        switch (random() % 4) {
        case 0:
            places.pushFront(list, value);
            expected.push_front(value);
            break;
        case 1:
            places.pushBack(list, value);
            expected.push_back(value);
            break;
        default:
            places.remove(list, value);
            expected.remove(value);
        }
        ASSERT_EQ(list, expected);
        if (step % 1000 == 0) {
            places.clear(list);
            expected.clear();
        }
    }
}

TEST(ListPlaces, aRemovalCostsTheSameWhateverTheNumberOfTheOthers)
{
    for (int count : {1000, 100000}) {
        List<Value> list;
        ListPlaces<Value, HashOfValue> places;
        for (int i = 0; i < count; ++i)
            places.pushBack(list, {i});
        Value::comparisons = 0;
        for (int i = 0; i < count; ++i)
            places.remove(list, {i * 7 % count});  // 7 has no factor in common with the counts
        EXPECT_TRUE(list.empty());
        EXPECT_LE(Value::comparisons, 10L * count);
    }
}
