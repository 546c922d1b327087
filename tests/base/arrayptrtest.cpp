#include <base/arrayptr.h>
#include <base/duplicatestring.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

using Vn::ArrayPtr;
using Vn::ArrayPtrRet;

namespace
{
int deaths = 0;

/// Counts deaths, so that a `delete` in place of `delete[]` shows as well as a missing one.
class Element
{
public:
    ~Element() { ++deaths; }
};

ArrayPtrRet<Element> three()
{
    return ArrayPtrRet<Element>(new Element[3]);
}

std::size_t lengthOf(char const* text)
{
    return std::strlen(text);
}

class ArrayPtrTest : public testing::Test
{
protected:
    ArrayPtrTest() { deaths = 0; }
};
}  // namespace

static_assert(sizeof(ArrayPtr<char>) == sizeof(char*) && sizeof(ArrayPtrRet<char>) == sizeof(char*));
static_assert(!std::is_copy_constructible_v<ArrayPtr<char>>);

TEST_F(ArrayPtrTest, destroysTheWholeArray)
{
    {
        ArrayPtr<Element> const array(new Element[5]);
    }
    EXPECT_EQ(deaths, 5);
}

TEST_F(ArrayPtrTest, unusedResultFreesItsArrayAtTheEndOfTheExpression)
{
    three();
    EXPECT_EQ(deaths, 3);
}

TEST_F(ArrayPtrTest, copyTransfersAndLeavesNull)
{
    ArrayPtr<Element> a(new Element[2]);
    ArrayPtr<Element> b = a;
    EXPECT_EQ(a.get(), nullptr);
    EXPECT_NE(b.get(), nullptr);
    ArrayPtr<Element> c(std::move(b));
    EXPECT_EQ(b.get(), nullptr);
    EXPECT_EQ(deaths, 0);
}

TEST_F(ArrayPtrTest, assignmentDestroysWhatTheTargetHeld)
{
    ArrayPtr<Element> target(new Element[2]);
    target = three();
    EXPECT_EQ(deaths, 2);
    ArrayPtr<Element> source(new Element[4]);
    target = source;
    EXPECT_EQ(deaths, 5);
    EXPECT_EQ(source.get(), nullptr);
}

TEST_F(ArrayPtrTest, selfAssignmentNeitherDeletesNorClears)
{
    ArrayPtr<Element> array(new Element[2]);
    ArrayPtr<Element>& same = array;
    array = same;
    EXPECT_EQ(deaths, 0);
    EXPECT_NE(array.get(), nullptr);

    ArrayPtrRet<Element> ret(new Element[3]);
    ArrayPtrRet<Element>& sameRet = ret;
    ret = sameRet;
    EXPECT_EQ(deaths, 0);
    EXPECT_NE(ret.get(), nullptr);
}

TEST_F(ArrayPtrTest, ownershipGoesBothWaysBetweenOwnerAndResult)
{
    ArrayPtr<Element> owner(new Element[2]);
    ArrayPtrRet<Element> ret(owner);
    EXPECT_EQ(owner.get(), nullptr);
    owner = ret;
    EXPECT_EQ(ret.get(), nullptr);
    ret = owner;
    EXPECT_EQ(owner.get(), nullptr);
    ret = three();
    EXPECT_EQ(deaths, 2);
}

TEST(ArrayPtr, isPassedWhereACharPointerIsWanted)
{
    ArrayPtr<char> text = Vn::duplicateString("four");
    EXPECT_EQ(lengthOf(text), 4u);
    EXPECT_EQ(lengthOf(Vn::duplicateString("sixsix")), 6u);
}

TEST(ArrayPtr, indexReadsAndWritesWithEveryIntegerType)
{
    ArrayPtr<char> text = Vn::duplicateString("abcd");
    text[0] = 'A';
    text[1u] = 'B';
    text[2L] = 'C';
    text[std::size_t{3}] = 'D';
    EXPECT_STREQ(text, "ABCD");
}

TEST(ArrayPtr, releaseAndReset)
{
    deaths = 0;
    ArrayPtr<Element> array(new Element[2]);
    Element* const released = array.release();
    EXPECT_FALSE(array);
    array.reset(released);
    array.reset(new Element[1]);
    EXPECT_EQ(deaths, 2);
    array.reset();
    EXPECT_EQ(deaths, 3);
}
