// The classes beside structure.txt, and the comparison itself beside classes that differ from what is said of them.

#include "layout.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace structure
{
void compareAll();

// Not in an anonymous namespace: MinGW's std::type_index does not find such classes again.
struct First
{
    virtual ~First() = default;
    virtual int start() { return 1; }
    virtual int stop() const { return 2; }
    std::int64_t count = 0;
    char mark = 'm';
};

struct Second
{
    int number = 2;
};

struct Both : First, Second
{
    virtual int late() { return 3; }
    short last = 4;
};

namespace
{
/// What the comparison finds, in words without the line and the class.
std::vector<std::string> found()
{
    std::vector<std::string> texts;
    for (std::string const& text : Layout::differences())
        texts.push_back(text.substr(text.rfind(": ", text.find("by the table")) + 2));
    Layout::differences().clear();
    return texts;
}

using Texts = std::vector<std::string>;

Layout first()
{
    return Layout::of<First>("First");
}

void describeFirst(Layout& layout)
{
    layout.destructor();
    layout.slot(2, "start", slotOf(&First::start));
    layout.slot(3, "stop", slotOf(&First::stop));
    layout.field<std::int64_t>(4, "count", Field<std::int64_t>{offsetof(First, count)});
    layout.field<char>(5, "mark", Field<char>{offsetof(First, mark)});
    layout.close(1, sizeof(First), alignof(First), slotOf(&Behind<First>::behindTheLast));
}

TEST(Structure, classesAreAsTheTableHasThem)
{
    Layout::count() = 0;
    compareAll();
    for (std::string const& text : Layout::differences())
        ADD_FAILURE() << text;
    Layout::differences().clear();
    EXPECT_GT(Layout::count(), 2000);
}

TEST(Structure, aClassAsItIsHasNoDifference)
{
    Layout layout = first();
    describeFirst(layout);
    EXPECT_EQ(found(), Texts());
}

TEST(Structure, fieldsInAnotherOrderAreFound)
{
    Layout layout = first();
    layout.destructor();
    layout.slot(2, "start", slotOf(&First::start));
    layout.slot(3, "stop", slotOf(&First::stop));
    layout.field<char>(4, "mark", Field<char>{offsetof(First, mark)});
    layout.field<std::int64_t>(5, "count", Field<std::int64_t>{offsetof(First, count)});
    layout.close(1, sizeof(First), alignof(First), slotOf(&Behind<First>::behindTheLast));
    EXPECT_EQ(Layout::differences().size(), 2U);
    EXPECT_NE(found().front().find("mark is at "), std::string::npos);
}

TEST(Structure, anUnknownFieldAndAnUnknownSlotAreFound)
{
    Layout layout = first();
    layout.destructor();
    layout.slot(2, "start", slotOf(&First::start));
    layout.field<std::int64_t>(4, "count", Field<std::int64_t>{offsetof(First, count)});
    layout.close(1, sizeof(First), alignof(First), slotOf(&Behind<First>::behindTheLast));
    const Texts texts = found();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0], "it has 4 slots, by the table 3");
    EXPECT_NE(texts[1].find("a field isn't in the table"), std::string::npos);
}

TEST(Structure, slotsInAnotherOrderAreFound)
{
    Layout layout = first();
    layout.slot(2, "start", slotOf(&First::start));
    EXPECT_EQ(found(), Texts{"start has slot 2, by the table 0"});
}

TEST(Structure, anotherTypeOfTheSameSizeIsFound)
{
    Layout layout = Layout::of<Second>("Second");
    layout.field<unsigned>(2, "number", Field<int>{offsetof(Second, number)});
    layout.close(1, sizeof(Second), alignof(Second), -1);
    EXPECT_EQ(found(), Texts{"number has another type"});
}

TEST(Structure, basesInAnotherOrderAreFound)
{
    Layout known = first();
    describeFirst(known);
    Layout right = Layout::of<Both>("Both");
    right.base<First>(2, false, true);
    right.base<Second>(3, false, true);
    right.slot(4, "late", slotOf(&Both::late));
    right.field<short>(5, "last", Field<short>{offsetof(Both, last)});
    right.close(1, sizeof(Both), alignof(Both), slotOf(&Behind<Both>::behindTheLast));
    EXPECT_EQ(found(), Texts());

    Layout wrong = Layout::of<Both>("Both");
    wrong.base<Second>(2, false, true);
    EXPECT_EQ(found(), Texts{"base number 1 is another class, or there is none"});

    Layout open = Layout::of<Both>("Both");
    open.base<First>(2, false, false);
    EXPECT_EQ(found(), Texts{"its base is virtual, public or neither otherwise than the table has it"});
}

TEST(Structure, anEnumeratorOfAnotherValueIsFound)
{
    Layout layout = first();
    layout.value(2, "Warning", 3, 4);
    EXPECT_EQ(found(), Texts{"Warning is 4, by the table 3"});
}
}  // namespace
}  // namespace structure
