#include <base/intypetable_p.h>

#include "collision.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

using Vn::InTypeTable;

namespace
{
/// A type that another module knows by an address of its own.
class OtherInfo : public std::type_info
{
public:
    explicit OtherInfo(char const* name) : std::type_info(name) {}
};
}  // namespace

TEST(InTypeTable, emptyOneFindsNothing)
{
    InTypeTable table;
    EXPECT_EQ(table.find(typeid(int)), InTypeTable::none);
    table.clear();
    EXPECT_EQ(table.find(typeid(int)), InTypeTable::none);
}

TEST(InTypeTable, findsWhatWasAddedAndKeepsTheFirst)
{
    InTypeTable table;
    EXPECT_TRUE(table.insert(typeid(int), 7));
    EXPECT_TRUE(table.insert(typeid(char), 8));
    EXPECT_FALSE(table.insert(typeid(int), 9));
    EXPECT_EQ(table.find(typeid(int)), 7u);
    EXPECT_EQ(table.find(typeid(char)), 8u);
    EXPECT_EQ(table.find(typeid(long)), InTypeTable::none);
    table.clear();
    EXPECT_EQ(table.find(typeid(int)), InTypeTable::none);
    EXPECT_TRUE(table.insert(typeid(int), 1));
}

TEST(InTypeTable, sameTypeAtAnotherAddressIsTheSame)
{
    const std::string name = typeid(std::vector<int>).name();
    const OtherInfo other(name.c_str());
    ASSERT_TRUE(other == typeid(std::vector<int>));
    InTypeTable table;
    table.insert(typeid(std::vector<int>), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(table.find(other), 3u);
    EXPECT_FALSE(table.insert(other, 4));
    const OtherInfo third(name.c_str());
    EXPECT_FALSE(table.insert(third, 5));
    EXPECT_EQ(table.find(third), 3u);
}

TEST(InTypeTable, holdsThousands)
{
    std::vector<std::string> names;
    for (int i = 0; i < 5000; ++i)
        names.push_back("N4Test" + std::to_string(i) + "E");
    std::deque<OtherInfo> types;
    std::deque<OtherInfo> again;
    for (std::string const& name : names) {
        types.emplace_back(name.c_str());
        again.emplace_back(name.c_str());
    }
    InTypeTable table;
    for (unsigned i = 0; i < types.size(); ++i)
        ASSERT_TRUE(table.insert(types[i], i));
    for (unsigned i = 0; i < types.size(); ++i) {
        ASSERT_EQ(table.find(types[i]), i);
        ASSERT_EQ(table.find(again[i]), i);
        ASSERT_EQ(table.find(again[i]), i);
    }
}

TEST(InTypeTable, erasedTypesAreGoneByNameAndByAddress)
{
    const std::string name = typeid(std::vector<int>).name();
    const OtherInfo other(name.c_str());
    InTypeTable table;
    InTypeTable::Key key;
    ASSERT_TRUE(table.insert(typeid(std::vector<int>), 3, &key));
    ASSERT_TRUE(table.insert(typeid(int), 4));
    EXPECT_EQ(table.find(other), 3u);
    table.erase(key);
    EXPECT_EQ(table.find(typeid(std::vector<int>)), InTypeTable::none);
    EXPECT_EQ(table.find(other), InTypeTable::none);
    EXPECT_EQ(table.find(typeid(int)), 4u);
    table.erase(key);
    EXPECT_EQ(table.find(typeid(int)), 4u) << "erased twice";
    EXPECT_TRUE(table.insert(other, 5));
    EXPECT_EQ(table.find(typeid(std::vector<int>)), 5u);
}

TEST(InTypeTable, erasingFromAnEmptyOneDoesNothing)
{
    InTypeTable table;
    InTypeTable::Key key;
    ASSERT_TRUE(table.insert(typeid(int), 3, &key));
    table.clear();
    table.erase(key);
    EXPECT_EQ(table.find(typeid(int)), InTypeTable::none);
    EXPECT_TRUE(table.insert(typeid(int), 4));
    EXPECT_EQ(table.find(typeid(int)), 4u);
}

TEST(InTypeTable, typesWhoseNamesHaveOneHashAreTwo)
{
    const auto [one, other] = VnTest::findTextsOfOneHash(true);
    ASSERT_NE(one, other);
    const OtherInfo first(one.c_str()), second(other.c_str()), again(other.c_str());
    InTypeTable table;
    InTypeTable::Key key;
    ASSERT_TRUE(table.insert(first, 1, &key));
    EXPECT_EQ(table.find(second), InTypeTable::none);
    EXPECT_TRUE(table.insert(second, 2));
    EXPECT_EQ(table.find(again), 2u);
    table.erase(key);
    EXPECT_EQ(table.find(first), InTypeTable::none);
    EXPECT_EQ(table.find(again), 2u);
}

TEST(InTypeTable, anErasedTypesInformationIsNotLookedAt)
{
    InTypeTable table;
    InTypeTable::Key key;
    auto* const type = new OtherInfo("N4Test4GoneE");
    ASSERT_TRUE(table.insert(*type, 1, &key));
    delete type;
    table.erase(key);
    EXPECT_EQ(table.find(OtherInfo("N4Test4GoneE")), InTypeTable::none);
}

TEST(InTypeTable, anAliasThatWasForgottenMayBecomeAnotherType)
{
    InTypeTable table;
    InTypeTable::Key key;
    ASSERT_TRUE(table.insert(typeid(int), 1));
    ASSERT_TRUE(table.insert(typeid(char), 2, &key));
    alignas(OtherInfo) unsigned char place[sizeof(OtherInfo)];
    for (const bool isErased : {false, true}) {
        auto* type = new (place) OtherInfo(typeid(int).name());
        ASSERT_EQ(table.find(*type), 1u);
        type->~OtherInfo();
        if (isErased)
            table.erase(key);
        else
            table.forgetAliases();
        type = new (place) OtherInfo("N4Test5OtherE");
        EXPECT_EQ(table.find(*type), InTypeTable::none) << isErased;
        type->~OtherInfo();
        EXPECT_EQ(table.find(typeid(int)), 1u);
    }
}

TEST(InTypeTable, comesAndGoesAsAModel)
{
    std::mt19937 random(7);
    std::vector<std::string> names;
    for (int i = 0; i < 300; ++i)
        names.push_back("N4Test" + std::to_string(i) + "E");
    std::deque<OtherInfo> types, again;
    for (std::string const& name : names) {
        types.emplace_back(name.c_str());
        again.emplace_back(name.c_str());
    }
    InTypeTable table;
    std::map<std::size_t, InTypeTable::Key> keys;
    std::map<std::size_t, unsigned> positions;
    for (unsigned step = 0; step < 20000; ++step) {
        const std::size_t i = random() % names.size();
        OtherInfo const& type = random() % 2 != 0 ? types[i] : again[i];
        if (random() % 2 != 0) {
            InTypeTable::Key key;
            const bool isNew = !positions.contains(i);
            ASSERT_EQ(table.insert(type, step, &key), isNew);
            if (isNew) {
                keys[i] = key;
                positions[i] = step;
            }
        } else if (positions.contains(i)) {
            table.erase(keys[i]);
            positions.erase(i);
        }
        const std::size_t asked = random() % names.size();
        ASSERT_EQ(table.find(types[asked]), positions.contains(asked) ? positions[asked] : InTypeTable::none);
        ASSERT_EQ(table.find(again[asked]), positions.contains(asked) ? positions[asked] : InTypeTable::none);
    }
}
