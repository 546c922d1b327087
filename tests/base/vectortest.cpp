#include <base/vector.h>

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

using Vn::Vector;

namespace
{
/// Expects `call` to refuse with the text of a vector that is too long, and `vector` to stay as it is.
template <class Call>
void expectTooLong(Vector<int>& vector, Call const& call)
{
    Vector<int> const before = vector;
    const std::size_t capacity = vector.capacity();
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (std::length_error const& error) {
        EXPECT_STREQ(error.what(), "vector<T> too long");
    }
    EXPECT_EQ(vector, before);
    EXPECT_EQ(vector.capacity(), capacity);
}

/// Capacity of a full vector of `size` elements after one more.
template <class Grow>
std::size_t grownFrom(std::size_t size, Grow const& grow)
{
    Vector<int> vector;
    vector.reserve(size);
    for (std::size_t i = 0; i < size; ++i)
        vector.push_back(static_cast<int>(i));
    EXPECT_EQ(vector.capacity(), size);
    grow(vector);
    return vector.capacity();
}
}  // namespace

TEST(Vector, fullVectorGrowsByHalfOrToTheSizeNeeded)
{
    const struct
    {
        std::size_t size, grown;
    } table[] = {{0, 1}, {1, 2},   {2, 3},   {3, 4},     {4, 6},      {5, 7},
                 {6, 9}, {10, 15}, {11, 16}, {100, 150}, {1000, 1500}};
    for (auto const& row : table) {
        SCOPED_TRACE(row.size);
        EXPECT_EQ(grownFrom(row.size, [](Vector<int>& v) { v.push_back(1); }), row.grown);
        EXPECT_EQ(grownFrom(row.size, [](Vector<int>& v) { v.emplace_back(1); }), row.grown);
        EXPECT_EQ(grownFrom(row.size, [](Vector<int>& v) { v.insert(v.begin(), 1); }), row.grown);
        EXPECT_EQ(grownFrom(row.size, [](Vector<int>& v) { v.emplace(v.end(), 1); }), row.grown);
        EXPECT_EQ(grownFrom(row.size, [](Vector<int>& v) { v.resize(v.size() + 1); }), row.grown);
        EXPECT_EQ(grownFrom(row.size, [](Vector<int>& v) { v.resize(v.size() + 1, 4); }), row.grown);
    }
}

TEST(Vector, largeAdditionGrowsToTheSizeNeeded)
{
    const std::vector<int> many(50, 7);
    EXPECT_EQ(grownFrom(10, [](Vector<int>& v) { v.insert(v.end(), 50u, 1); }), 60u);
    EXPECT_EQ(grownFrom(10, [&](Vector<int>& v) { v.insert(v.begin(), many.begin(), many.end()); }), 60u);
    EXPECT_EQ(grownFrom(10, [](Vector<int>& v) { v.resize(40); }), 40u);
    EXPECT_EQ(grownFrom(10, [](Vector<int>& v) { v.assign(11u, 3); }), 15u);
    EXPECT_EQ(grownFrom(10, [&](Vector<int>& v) { v.assign(many.begin(), many.end()); }), 50u);
}

TEST(Vector, aRangeThatIsInsertedGrowsItByHalfOrToTheSizeNeeded)
{
    const struct
    {
        std::size_t size, added, grown;
    } table[] = {{0, 0, 0}, {0, 3, 3},   {4, 0, 4},   {4, 1, 6},  {4, 2, 6},
                 {4, 3, 7}, {10, 1, 15}, {10, 5, 15}, {10, 6, 16}};
    for (auto const& row : table) {
        SCOPED_TRACE(testing::Message() << row.size << " and " << row.added);
        const std::vector<int> values(row.added, 7);
        EXPECT_EQ(grownFrom(row.size, [&](Vector<int>& v) { v.insert(v.begin(), values.begin(), values.end()); }),
                  row.grown);
        std::string text;
        for (int value : values)
            text += std::to_string(value) + " ";
        std::istringstream numbers(text);
        EXPECT_EQ(grownFrom(row.size,
                            [&](Vector<int>& v) {
                                v.insert(v.begin(), std::istream_iterator<int>(numbers),
                                         std::istream_iterator<int>());
                            }),
                  row.grown);
    }
}

TEST(Vector, whatFillsItIsAssignedInPlaceAndOneMoreGrowsIt)
{
    const std::vector<int> values(4, 7), more(5, 7);
    EXPECT_EQ(grownFrom(4, [](Vector<int>& v) { v.assign(4u, 7); }), 4u);
    EXPECT_EQ(grownFrom(4, [](Vector<int>& v) { v.assign(5u, 7); }), 6u);
    EXPECT_EQ(grownFrom(4, [&](Vector<int>& v) { v.assign(values.begin(), values.end()); }), 4u);
    EXPECT_EQ(grownFrom(4, [&](Vector<int>& v) { v.assign(more.begin(), more.end()); }), 6u);
    EXPECT_EQ(grownFrom(4, [](Vector<int>& v) { v.resize(4, 7); }), 4u);
    Vector<int> full(4, 1);
    int const* const storage = full.data();
    full.assign(4u, 7);
    EXPECT_EQ(full.data(), storage);
    EXPECT_EQ(full, Vector<int>(4, 7));
}

TEST(Vector, reserveTakesWhatIsAsked)
{
    Vector<int> vector;
    vector.reserve(17);
    EXPECT_EQ(vector.capacity(), 17u);
    vector.reserve(3);
    EXPECT_EQ(vector.capacity(), 17u);
}

TEST(Vector, aListOfValuesGrowsItAsMuchAsAssignDoes)
{
    Vector<int> assigned(10, 7), set(10, 7);
    assigned.assign({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    set = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    EXPECT_EQ(set, assigned);
    EXPECT_EQ(assigned.capacity(), 15u);
    EXPECT_EQ(set.capacity(), 15u);
}

TEST(Vector, growthNeverLosesAnElement)
{
    Vector<std::string> vector;
    std::vector<std::string> model;
    for (int i = 0; i < 1000; ++i) {
        vector.push_back(std::to_string(i));
        model.push_back(std::to_string(i));
    }
    EXPECT_TRUE(std::equal(vector.begin(), vector.end(), model.begin(), model.end()));
}

TEST(Vector, elementOfAFullVectorCanBeAddedToIt)
{
    const std::string value = "a text too long for the small buffer of a string";
    const auto full = [&] {
        Vector<std::string> vector{value};
        vector.shrink_to_fit();
        EXPECT_EQ(vector.size(), vector.capacity());
        return vector;
    };
    Vector<std::string> pushed = full();
    pushed.push_back(pushed[0]);
    EXPECT_EQ(pushed, (Vector<std::string>{value, value}));
    Vector<std::string> inserted = full();
    inserted.insert(inserted.begin(), inserted[0]);
    EXPECT_EQ(inserted, (Vector<std::string>{value, value}));
    Vector<std::string> repeated = full();
    repeated.insert(repeated.begin(), 3u, repeated[0]);
    EXPECT_EQ(repeated, (Vector<std::string>{value, value, value, value}));
    Vector<std::string> resized = full();
    resized.resize(3, resized[0]);
    EXPECT_EQ(resized, (Vector<std::string>{value, value, value}));
    Vector<std::string> assigned = full();
    assigned.assign(2u, assigned[0]);
    EXPECT_EQ(assigned, (Vector<std::string>{value, value}));
}

TEST(Vector, tooManyElementsAreRefused)
{
    Vector<int> vector{1, 2, 3};
    const std::size_t tooMany = vector.max_size() + 1;
    expectTooLong(vector, [&] { vector.reserve(tooMany); });
    expectTooLong(vector, [&] { vector.resize(tooMany); });
    expectTooLong(vector, [&] { vector.resize(tooMany, 1); });
    expectTooLong(vector, [&] { vector.assign(tooMany, 1); });
    expectTooLong(vector, [&] { vector.insert(vector.begin(), vector.max_size() - 2, 1); });
    expectTooLong(vector, [&] { vector.insert(vector.begin(), static_cast<std::size_t>(-1), 1); });
    expectTooLong(vector, [&] { Vector<int> other(tooMany); });
    expectTooLong(vector, [&] { Vector<int> other(tooMany, 1); });
}

TEST(Vector, asManyElementsAsItsLimitAreAQuestionOfMemoryAlone)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer ends a process that asks for so much memory";
#else
    Vector<char> vector{'a', 'b', 'c'};
    const std::size_t most = vector.max_size();
    EXPECT_THROW(vector.insert(vector.begin(), most - 3, 'x'), std::bad_alloc);
    EXPECT_THROW(vector.insert(vector.begin(), most - 2, 'x'), std::length_error);
    EXPECT_THROW(vector.resize(most), std::bad_alloc);
    EXPECT_THROW(vector.reserve(most), std::bad_alloc);
    EXPECT_THROW(vector.assign(most, 'x'), std::bad_alloc);
    EXPECT_EQ(vector, (Vector<char>{'a', 'b', 'c'}));
#endif
}

TEST(Vector, insertsInTheMiddle)
{
    Vector<int> vector{1, 5};
    EXPECT_EQ(*vector.insert(vector.begin() + 1, 2), 2);
    EXPECT_EQ(*vector.insert(vector.begin() + 2, {3, 4}), 3);
    EXPECT_EQ(vector, (Vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(vector.insert(vector.end(), 0u, 9), vector.end());
}

TEST(Vector, insertsFromASinglePassRange)
{
    std::istringstream numbers("2 3 4");
    Vector<int> vector{1, 5};
    vector.insert(vector.begin() + 1, std::istream_iterator<int>(numbers), std::istream_iterator<int>());
    EXPECT_EQ(vector, (Vector<int>{1, 2, 3, 4, 5}));
    std::istringstream others("8 9");
    vector.assign(std::istream_iterator<int>(others), std::istream_iterator<int>());
    EXPECT_EQ(vector, (Vector<int>{8, 9}));
}

TEST(Vector, aSinglePassRangeGrowsItByHalf)
{
    std::string text;
    for (int count = 0; count < 60; ++count, text += " 1") {
        SCOPED_TRACE(count);
        Vector<int> pushed;
        for (int i = 0; i < count; ++i)
            pushed.push_back(1);
        const auto numbers = [](std::istringstream& stream) { return std::istream_iterator<int>(stream); };
        const std::istream_iterator<int> end;
        std::istringstream first(text), second(text), third(text);
        const Vector<int> constructed(numbers(first), end);
        EXPECT_EQ(constructed, pushed);
        EXPECT_EQ(constructed.capacity(), pushed.capacity());
        Vector<int> assigned;
        assigned.assign(numbers(second), end);
        EXPECT_EQ(assigned, pushed);
        EXPECT_EQ(assigned.capacity(), pushed.capacity());
        Vector<int> larger(100, 7);
        larger.assign(numbers(third), end);
        EXPECT_EQ(larger, pushed);
        EXPECT_EQ(larger.capacity(), 100u);
    }
}

namespace
{
/// 0, 2, 4, ...: a forward iterator whose elements are made on the way.
struct DoublingIterator
{
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using value_type = int;
    using difference_type = std::ptrdiff_t;

    int operator*() const { return 2 * place; }
    DoublingIterator& operator++()
    {
        ++place;
        return *this;
    }
    DoublingIterator operator++(int)
    {
        const DoublingIterator before = *this;
        ++place;
        return before;
    }
    bool operator==(DoublingIterator const&) const = default;

    int place = 0;
};
}  // namespace

TEST(Vector, aRangeOfKnownLengthTakesJustItsRoom)
{
    const std::vector<int> values(17, 3);
    EXPECT_EQ(Vector<int>(values.begin(), values.end()).capacity(), 17u);
    // Computes its elements, so it is no forward iterator by the old rules, but can be measured.
    const Vector<int> computed(DoublingIterator{0}, DoublingIterator{17});
    EXPECT_EQ(computed[0], 0);
    EXPECT_EQ(computed[16], 32);
    EXPECT_EQ(computed.capacity(), 17u);
}

TEST(Vector, changesWithinItsCapacityMoveNothing)
{
    Vector<int> vector;
    vector.reserve(8);
    int const* const storage = vector.data();
    const int values[] = {7, 8, 9};
    vector.assign(3u, 5);
    EXPECT_EQ(vector, (Vector<int>{5, 5, 5}));
    vector.resize(5, 6);
    vector.resize(4);
    EXPECT_EQ(vector, (Vector<int>{5, 5, 5, 6}));
    vector.insert(vector.begin() + 1, values, values + 3);
    EXPECT_EQ(vector, (Vector<int>{5, 7, 8, 9, 5, 5, 6}));
    vector.assign(values, values + 3);
    EXPECT_EQ(vector, (Vector<int>{7, 8, 9}));
    EXPECT_EQ(vector.data(), storage);
    EXPECT_EQ(vector.capacity(), 8u);
}

TEST(Vector, behavesAsTheStandardOneElsewhere)
{
    Vector<int> vector(3, 4);
    EXPECT_EQ(vector, (Vector<int>{4, 4, 4}));
    vector = {1, 2, 3};
    EXPECT_EQ(vector.front(), 1);
    EXPECT_EQ(vector.back(), 3);
    EXPECT_EQ(vector.data(), &vector[0]);
    EXPECT_THROW(vector.at(3), std::out_of_range);
    vector.erase(vector.begin());
    vector.pop_back();
    EXPECT_EQ(vector, Vector<int>{2});
    EXPECT_LT(Vector<int>{1}, vector);
    Vector<int> other{7};
    swap(vector, other);
    EXPECT_EQ(vector, Vector<int>{7});
    EXPECT_EQ(erase_if(vector, [](int value) { return value == 7; }), 1u);
    EXPECT_TRUE(vector.empty());
    EXPECT_EQ(Vector<int>(2).size(), 2u);
}

TEST(Vector, holdsElementsThatOnlyMove)
{
    Vector<std::unique_ptr<int>> vector;
    for (int i = 0; i < 10; ++i)
        vector.push_back(std::make_unique<int>(i));
    vector.resize(20);
    EXPECT_EQ(*vector[9], 9);
    EXPECT_EQ(vector[19], nullptr);
}

TEST(Vector, isThreePointersWide)
{
    EXPECT_EQ(sizeof(Vector<char*>), 3 * sizeof(char*));
}
