#include <base/list.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using Vn::List;

namespace
{
template <class Call>
void expectTooLong(List<int>& list, Call const& call)
{
    List<int> const before = list;
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (std::length_error const& error) {
        EXPECT_STREQ(error.what(), "list<T> too long");
    }
    EXPECT_EQ(list, before);
}
}  // namespace

TEST(List, tooManyElementsAreRefusedBeforeAnythingIsAllocated)
{
    List<int> list{1, 2, 3};
    const std::size_t tooMany = list.max_size() + 1;
    expectTooLong(list, [&] { list.resize(tooMany); });
    expectTooLong(list, [&] { list.resize(tooMany, 1); });
    expectTooLong(list, [&] { list.assign(tooMany, 1); });
    expectTooLong(list, [&] { list.insert(list.begin(), list.max_size() - 2, 1); });
    expectTooLong(list, [&] { List<int> other(tooMany); });
    expectTooLong(list, [&] { List<int> other(tooMany, 1); });
}

namespace
{
/// Can't be copied, as its copies find out.
struct Uncopied
{
    Uncopied() = default;
    Uncopied(Uncopied const&) { throw std::domain_error("a copy"); }
    Uncopied& operator=(Uncopied const&) = default;
};
}  // namespace

TEST(List, asManyElementsAsTheLimitLeavesAreMade)
{
    List<Uncopied> list(3);
    const std::size_t left = list.max_size() - 3;
    EXPECT_THROW(list.insert(list.begin(), left, Uncopied()), std::domain_error);
    EXPECT_THROW(list.insert(list.begin(), left + 1, Uncopied()), std::length_error);
    EXPECT_THROW(list.resize(list.max_size(), Uncopied()), std::domain_error);
    EXPECT_THROW(list.resize(list.max_size() + 1, Uncopied()), std::length_error);
    EXPECT_EQ(list.size(), 3u);
}

TEST(List, behavesAsTheStandardOneElsewhere)
{
    List<int> list{3, 1, 2};
    list.push_front(0);
    list.push_back(9);
    list.sort();
    EXPECT_EQ(list, (List<int>{0, 1, 2, 3, 9}));
    list.insert(list.begin(), 2u, 7);
    EXPECT_EQ(list, (List<int>{7, 7, 0, 1, 2, 3, 9}));
    list.resize(2);
    EXPECT_EQ(list, List<int>(2, 7));
    list.assign(1u, 5);
    list.assign({5, 6});
    list = {4};
    EXPECT_EQ(list.size(), 1u);
    const std::string text = "ab";
    EXPECT_EQ((List<char>(text.begin(), text.end())), (List<char>{'a', 'b'}));
}
