#include "loggertest.h"

#include <base/lgtrace.h>

using namespace Vn;
using VnTest::LoggerTest;

namespace
{
LgQueue* theQueue = nullptr;

LgQueue* getTheQueue()
{
    return theQueue;
}

/// Tells how much was waited for.
class Waiter : public LgQueue::Observer
{
public:
    explicit Waiter(std::vector<int>& sizes) : _sizes(sizes) {}

    void entryAdded(LgQueue& queue) override
    {
        // Takes it out at once, so that there is space for the next.
        char text[32768];
        queue.getStream() >> text;
        levels.push_back(queue.readEntry().getLevel());
        texts.push_back(text);
        queue.removeEntry();
    }
    void entryRemoved(LgQueue&) override {}
    void waitForSpace(LgQueue const&, int size) override { _sizes.push_back(size); }

    static std::vector<std::string> texts;
    static std::vector<int> levels;

private:
    std::vector<int>& _sizes;
};

std::vector<std::string> Waiter::texts;
std::vector<int> Waiter::levels;

class LgTraceTest : public LoggerTest
{
protected:
    LgTraceTest()
    {
        Waiter::texts.clear();
        Waiter::levels.clear();
        theQueue = &_queue;
        _queue.changeObserver(ObjPtr<LgQueue::Observer>(new Waiter(sizes)));
        LgLog::setQueueFunction(getTheQueue);
        LgLog::setLoggerActivation(true);
    }

    std::vector<int> sizes;

private:
    LgQueue _queue;
};
}  // namespace

TEST_F(LgTraceTest, whileTheLoggerIsInactiveTextGoesToTheStandardOutput)
{
    LgLog::setLoggerActivation(false);
    testing::internal::CaptureStdout();
    LgTrace::print("text");
    LgTrace::print("");
    LgTrace::print(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "text\n");
    EXPECT_TRUE(Waiter::texts.empty());
}

TEST_F(LgTraceTest, textBecomesAMessageOfTheLevelTracing)
{
    LgTrace::print("text");
    LgTrace::print("");
    EXPECT_EQ(Waiter::texts, std::vector<std::string>{"text"});
    EXPECT_EQ(Waiter::levels, std::vector<int>{LgTypes::Tracing});
    EXPECT_TRUE(sizes.empty()) << "nothing waits";
}

TEST_F(LgTraceTest, withoutWaitingATextThatIsTooLongBecomesAMark)
{
    LgTrace::print(std::string(32768, 't').c_str());
    EXPECT_EQ(Waiter::texts, std::vector<std::string>{"#"});
}

TEST_F(LgTraceTest, blockingTraceWaitsForTextAndZero)
{
    LgLog::setBlockingTrace(true);
    LgTrace::print("text");
    EXPECT_EQ(sizes, std::vector<int>{5});
    EXPECT_EQ(Waiter::texts, std::vector<std::string>{"text"});
}

TEST_F(LgTraceTest, theLongestTextInOnePieceFillsTheStream)
{
    LgLog::setBlockingTrace(true);
    const std::string longest(32765, 'l');
    LgTrace::print(longest.c_str());
    EXPECT_EQ(sizes, std::vector<int>{32766});
    LgTrace::print((longest + "x").c_str());
    EXPECT_EQ(sizes, (std::vector<int>{32766, 32766, 2}));
    EXPECT_EQ(Waiter::texts, (std::vector<std::string>{longest, longest, "x"}));
}

TEST_F(LgTraceTest, aLongTextIsCutIntoPieces)
{
    LgLog::setBlockingTrace(true);
    std::string text(70000, ' ');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>('a' + i % 23);
    LgTrace::print(text.c_str());
    ASSERT_EQ(Waiter::texts.size(), 3u);
    EXPECT_EQ(Waiter::texts[0].size(), 32765u);
    EXPECT_EQ(Waiter::texts[1].size(), 32765u);
    EXPECT_EQ(Waiter::texts[2].size(), 4470u);
    EXPECT_EQ(Waiter::texts[0] + Waiter::texts[1] + Waiter::texts[2], text);
}

TEST_F(LgTraceTest, aSuppressedQueueTakesNoTrace)
{
    const LgQueue::SuppressGuard guard(*theQueue);
    LgTrace::print("text");
    EXPECT_TRUE(Waiter::texts.empty());
}
