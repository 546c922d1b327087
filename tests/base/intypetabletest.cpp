#include <base/intypetable_p.h>

#include <gtest/gtest.h>

#include <deque>
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
