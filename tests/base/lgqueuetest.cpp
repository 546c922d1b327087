#include <base/lgqueue.h>

#include <base/hwcounter.h>

#include "steps.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <vector>

using Vn::HwCounter;
using Vn::LgQueue;
using Vn::LgTypes;
using Vn::ObjPtr;
using Vn::ObjPtrRet;

namespace
{
bool log(LgQueue& queue, char const* text, LgTypes::Level level = LgTypes::Warning)
{
    if (!queue.reserveEntry(level))
        return false;
    queue.getStream() << text << Vn::ends;
    queue.addEntry();
    return true;
}

/// The oldest entry, as a text: "text", or "[count]" for losses.
std::string taken(LgQueue& queue)
{
    if (queue.isEmpty())
        return "nothing";
    std::string result;
    if (queue.readEntry().isOverflowEntry())
        result = "[" + std::to_string(queue.readEntry().getOverflowCount()) + "]";
    else {
        static char text[32768];  // there is one reader
        queue.getStream() >> text;
        result = text;
    }
    queue.removeEntry();
    return result;
}

int fill(LgQueue& queue)
{
    int count = 0;
    while (log(queue, std::to_string(count).c_str()))
        ++count;
    return count;
}

class Recorder : public LgQueue::Observer
{
public:
    Recorder(std::string& events, bool& isAlive) : _events(events), _isAlive(isAlive) { _isAlive = true; }
    ~Recorder() override { _isAlive = false; }

    void entryAdded(LgQueue& queue) override { _events += queue.isEmpty() ? "added too early, " : "added, "; }
    void entryRemoved(LgQueue& queue) override
    {
        _events += queue.isEmpty() ? "removed, " : "removed one of more, ";
    }
    void waitForSpace(LgQueue const&, int size) override { _events += "wait " + std::to_string(size) + ", "; }

private:
    std::string& _events;
    bool& _isAlive;
};
}  // namespace

TEST(LgQueueEntry, fieldsAreZeroAtFirst)
{
    const LgQueue::Entry entry;
    EXPECT_FALSE(entry.isOverflowEntry());
    EXPECT_EQ(entry.getLevel(), LgTypes::InternalError);
    EXPECT_EQ(entry.getOverflowCount(), 0);
    EXPECT_EQ(entry.getTimeStamp(), 0u);
}

TEST(LgQueueEntry, levelAndCountAreOneWord)
{
    LgQueue::Entry entry;
    entry.setLevel(LgTypes::Profiling);
    EXPECT_EQ(entry.getOverflowCount(), 6);
    entry.incOverflowCount();
    EXPECT_EQ(entry.getOverflowCount(), 7);
    entry.setTimeStamp(0xFEDCBA9876543210);
    EXPECT_EQ(entry.getTimeStamp(), 0xFEDCBA9876543210);
}

TEST(LgQueueEntry, onlyAChangeOfTheFlagSetsTheWord)
{
    LgQueue::Entry entry;
    entry.setLevel(LgTypes::FatalError);
    entry.setOverflowEntry(false);
    EXPECT_EQ(entry.getLevel(), LgTypes::FatalError);
    entry.setOverflowEntry(true);
    EXPECT_EQ(entry.getOverflowCount(), 1);
    entry.incOverflowCount();
    entry.setOverflowEntry(true);
    EXPECT_EQ(entry.getOverflowCount(), 2);
    entry.setOverflowEntry(false);
    EXPECT_EQ(entry.getLevel(), LgTypes::Tracing);
}

TEST(LgQueue, isEmptyAtFirst)
{
    LgQueue queue;
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(queue.isFull());
    EXPECT_TRUE(queue.isCreatorAlive());
    EXPECT_EQ(queue.getThreadId(), 0u);
    EXPECT_EQ(LgQueue::getMaxSize(), 1023u);
    EXPECT_EQ(LgQueue(0x1A2B).getThreadId(), 0x1A2Bu);
    EXPECT_EQ(LgQueue(0xFFFFFFFF).getThreadId(), 0xFFFFFFFFu);
    queue.creatorExit();
    EXPECT_FALSE(queue.isCreatorAlive());
}

TEST(LgQueue, anEntryHoldsLevelAndStampOfItsReservation)
{
    LgQueue queue;
    const std::uint64_t before = HwCounter::timeStamp();
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Profiling));
    const std::uint64_t after = HwCounter::timeStamp();
    EXPECT_TRUE(queue.isEmpty()) << "a reservation shows nothing";
    queue.getStream() << "text" << Vn::ends;
    EXPECT_TRUE(queue.isEmpty());
    queue.addEntry();
    ASSERT_FALSE(queue.isEmpty());
    EXPECT_EQ(queue.readEntry().getLevel(), LgTypes::Profiling);
    EXPECT_FALSE(queue.readEntry().isOverflowEntry());
    EXPECT_LE(before, queue.readEntry().getTimeStamp());
    EXPECT_GE(after, queue.readEntry().getTimeStamp());
    EXPECT_EQ(taken(queue), "text");
    EXPECT_TRUE(queue.isEmpty());
}

TEST(LgQueue, takesExactly1022Messages)
{
    LgQueue queue;
    for (int i = 0; i < 1022; ++i) {
        EXPECT_FALSE(queue.isFull()) << i;
        ASSERT_TRUE(log(queue, std::to_string(i).c_str())) << i;
    }
    EXPECT_TRUE(queue.isFull());
    EXPECT_FALSE(log(queue, "lost"));
    for (int i = 0; i < 4; ++i)
        EXPECT_FALSE(log(queue, "lost")) << i;
    for (int i = 0; i < 1022; ++i)
        ASSERT_EQ(taken(queue), std::to_string(i));
    EXPECT_EQ(taken(queue), "[5]");
    EXPECT_TRUE(queue.isEmpty());
}

TEST(LgQueue, allLevelsAreLostAlike)
{
    LgQueue queue;
    fill(queue);
    for (int level = 0; level < 7; ++level)
        EXPECT_FALSE(queue.reserveEntry(static_cast<LgTypes::Level>(level)));
}

TEST(LgQueue, messagesGoOnOnceTwoEntriesAreFree)
{
    LgQueue queue;
    fill(queue);
    EXPECT_EQ(taken(queue), "0");
    EXPECT_TRUE(queue.isFull());
    EXPECT_FALSE(log(queue, "lost"));
    EXPECT_EQ(taken(queue), "1");
    EXPECT_FALSE(queue.isFull());
    EXPECT_TRUE(log(queue, "behind the loss"));
    EXPECT_FALSE(log(queue, "lost"));
    for (int i = 2; i < 1022; ++i)
        ASSERT_EQ(taken(queue), std::to_string(i));
    EXPECT_EQ(taken(queue), "[2]");
    EXPECT_EQ(taken(queue), "behind the loss");
    EXPECT_EQ(taken(queue), "[1]");
    EXPECT_EQ(taken(queue), "nothing");
}

TEST(LgQueue, anOverflowEntryBearsTheStampOfTheFirstLoss)
{
    LgQueue queue;
    for (int i = 0; i < 1022; ++i)
        log(queue, "");
    const std::uint64_t before = HwCounter::timeStamp();
    log(queue, "lost");
    const std::uint64_t after = HwCounter::timeStamp();
    log(queue, "lost");
    for (int i = 0; i < 1022; ++i)
        taken(queue);
    EXPECT_LE(before, queue.readEntry().getTimeStamp());
    EXPECT_GE(after, queue.readEntry().getTimeStamp());
    EXPECT_EQ(queue.readEntry().getOverflowCount(), 2);
}

TEST(LgQueue, aFullStreamIsAFullQueue)
{
    LgQueue queue;
    log(queue, std::string(32767, 't').c_str());
    ASSERT_TRUE(queue.getStream().isFull());
    EXPECT_FALSE(queue.isFull()) << "entries are free";
    EXPECT_FALSE(log(queue, "lost"));
    EXPECT_EQ(taken(queue).size(), 32767u);
    EXPECT_EQ(taken(queue), "[1]");
}

TEST(LgQueue, aConsumedOverflowEntryCountsOnUnseen)
{
    LgQueue queue;
    log(queue, std::string(32767, 't').c_str());
    log(queue, "lost");
    queue.removeEntry();  // the entry alone: the text stays, and the ring of text is full
    EXPECT_EQ(taken(queue), "[1]");
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(log(queue, "lost"));
    EXPECT_FALSE(log(queue, "lost"));
    EXPECT_TRUE(queue.isEmpty()) << "a loss that nobody hears of";
    char text[32768];
    queue.getStream() >> text;
    EXPECT_TRUE(log(queue, "next"));
    EXPECT_EQ(taken(queue), "next");
}

TEST(LgQueue, anOverflowEntryThatIsUsedAgainKeepsItsCount)
{
    LgQueue queue;
    fill(queue);  // entry 1022 counts losses
    for (int i = 0; i < 2; ++i)
        log(queue, "lost");
    for (int i = 0; i < 1023; ++i)
        taken(queue);
    // Messages 1023, 0, 1, ... 1020 and 1021: the next loss meets entry 1022 again.
    for (int i = 0; i < 1022; ++i)
        ASSERT_TRUE(log(queue, "")) << i;
    // The last one lies at entry 1020; with one taken there is room at 1021.
    taken(queue);
    ASSERT_TRUE(log(queue, ""));
    EXPECT_FALSE(log(queue, "lost"));
    for (int i = 0; i < 1022; ++i)
        taken(queue);
    EXPECT_EQ(taken(queue), "[3]") << "one loss, and two of long ago";
}

TEST(LgQueue, aReservationWithoutTextIsDropped)
{
    LgQueue queue;
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
    queue.addEntry();
    EXPECT_TRUE(queue.isEmpty());
    queue.getStream() << "text" << Vn::ends;
    queue.addEntry();  // nothing is reserved any more
    EXPECT_TRUE(queue.isEmpty());
}

TEST(LgQueue, anEndAloneIsDroppedAndShiftsNothing)
{
    for (const bool isFresh : {true, false}) {
        LgQueue queue;
        if (!isFresh)
            log(queue, "before");
        ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
        queue.getStream() << Vn::ends;
        queue.addEntry();
        log(queue, "next");
        log(queue, "last");
        if (!isFresh) {
            EXPECT_EQ(taken(queue), "before");
        }
        EXPECT_EQ(taken(queue), "next");
        EXPECT_EQ(taken(queue), "last");
        EXPECT_EQ(taken(queue), "nothing");
    }
}

TEST(LgQueue, anEndAloneAtAPendingZeroKeepsWhatWaits)
{
    LgQueue queue;
    log(queue, "one");
    log(queue, "two");
    const std::string rest(32767 - 8, 'r');
    log(queue, rest.c_str());
    ASSERT_TRUE(queue.getStream().isFull());
    EXPECT_EQ(taken(queue), "one");  // frees three cells
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
    queue.getStream() << Vn::ends;
    queue.addEntry();
    ASSERT_TRUE(log(queue, "x"));
    EXPECT_EQ(taken(queue), "two");
    EXPECT_EQ(taken(queue), rest);
    EXPECT_EQ(taken(queue), "x");
    EXPECT_EQ(taken(queue), "nothing");
}

TEST(LgQueue, aForgottenEndIsAdded)
{
    LgQueue queue;
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
    queue.getStream() << "text";
    queue.addEntry();
    log(queue, "next");
    EXPECT_EQ(taken(queue), "text");
    EXPECT_EQ(taken(queue), "next");
}

TEST(LgQueue, anEmptyTextIsAMessage)
{
    LgQueue queue;
    log(queue, "first");
    log(queue, "");
    log(queue, "last");
    EXPECT_EQ(taken(queue), "first");
    EXPECT_EQ(taken(queue), "");
    EXPECT_EQ(taken(queue), "last");
}

TEST(LgQueue, aMessageThatMetAFullRingEndsAllTheSame)
{
    LgQueue queue;
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
    queue.getStream() << std::string(32767, 't').c_str() << "lost";  // no end
    queue.addEntry();
    EXPECT_EQ(taken(queue), std::string(32767, 't'));
    EXPECT_TRUE(log(queue, "next"));
    EXPECT_EQ(taken(queue), "next");

    // With one cell left, and with the reader making room before the next message.
    LgQueue other;
    log(other, "first");
    ASSERT_TRUE(other.reserveEntry(LgTypes::Warning));
    other.getStream() << std::string(32761, 't').c_str() << "lost";
    other.addEntry();
    EXPECT_EQ(taken(other), "first");
    EXPECT_TRUE(log(other, "next"));
    EXPECT_EQ(taken(other), std::string(32761, 't'));
    EXPECT_EQ(taken(other), "next");
}

TEST(LgQueue, aMessageThatWasNeverAddedBeginsTheNext)
{
    LgQueue queue;
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
    queue.getStream() << "begun ";
    EXPECT_TRUE(queue.isEmpty());
    log(queue, "again");
    EXPECT_EQ(taken(queue), "begun again");
    EXPECT_EQ(taken(queue), "nothing");
}

TEST(LgQueue, twoTextsOfWhichOneDoesNotFit)
{
    LgQueue queue;
    const std::string most(32000, 'm');
    ASSERT_TRUE(queue.reserveEntry(LgTypes::Warning));
    queue.getStream() << most.c_str() << most.c_str() << Vn::ends;
    queue.addEntry();
    EXPECT_EQ(taken(queue), most + "#");
}

TEST(LgQueue, suppressedMessagesLeaveNoTrace)
{
    LgQueue queue;
    {
        const LgQueue::SuppressGuard outer(queue);
        {
            const LgQueue::SuppressGuard inner(queue);
            EXPECT_FALSE(queue.reserveEntry(LgTypes::InternalError));
        }
        EXPECT_FALSE(queue.reserveEntry(LgTypes::InternalError));
        queue.addEntry();
        EXPECT_TRUE(queue.isEmpty());
    }
    EXPECT_TRUE(log(queue, "heard"));
    fill(queue);
    while (!queue.isEmpty())
        taken(queue);
    log(queue, std::string(32766, 't').c_str());
    const LgQueue::SuppressGuard guard(queue);
    EXPECT_FALSE(queue.reserveEntry(LgTypes::Warning));
    EXPECT_EQ(taken(queue).size(), 32766u);
    EXPECT_TRUE(queue.isEmpty()) << "no count of losses either";
}

TEST(LgQueue, theObserverHearsOfWhatIsDone)
{
    std::string events;
    bool isAlive = false;
    {
        LgQueue queue;
        queue.waitForSpace(7);  // nobody waits
        EXPECT_EQ(queue.changeObserver(ObjPtr<LgQueue::Observer>(new Recorder(events, isAlive))).get(), nullptr);
        log(queue, "a");
        log(queue, "b");
        queue.reserveEntry(LgTypes::Warning);
        queue.addEntry();  // dropped
        EXPECT_EQ(taken(queue), "a");
        EXPECT_EQ(taken(queue), "b");
        queue.waitForSpace(100);
        EXPECT_EQ(events, "added, added, removed one of more, removed, wait 100, ");
        EXPECT_TRUE(isAlive);
    }
    EXPECT_FALSE(isAlive) << "the queue owns it";
}

TEST(LgQueue, anObserverIsHandedBackForAnother)
{
    std::string first, second;
    bool isFirstAlive = false, isSecondAlive = false;
    LgQueue queue;
    queue.changeObserver(ObjPtr<LgQueue::Observer>(new Recorder(first, isFirstAlive)));
    {
        const ObjPtrRet<LgQueue::Observer> before =
            queue.changeObserver(ObjPtr<LgQueue::Observer>(new Recorder(second, isSecondAlive)));
        EXPECT_NE(before.get(), nullptr);
        EXPECT_TRUE(isFirstAlive);
    }
    EXPECT_FALSE(isFirstAlive);
    log(queue, "text");
    EXPECT_EQ(first, "");
    EXPECT_EQ(second, "added, ");
    EXPECT_NE(queue.changeObserver(ObjPtr<LgQueue::Observer>()).get(), nullptr);
    EXPECT_FALSE(isSecondAlive);
    taken(queue);
    EXPECT_EQ(second, "added, ");
}

TEST(LgQueue, aCopySharesTheRingsAndTakesTheObserver)
{
    std::string events;
    bool isAlive = false;
    LgQueue queue(0x77);
    queue.changeObserver(ObjPtr<LgQueue::Observer>(new Recorder(events, isAlive)));
    log(queue, "shared");
    alignas(LgQueue) unsigned char memory[sizeof(LgQueue)];
    LgQueue* const copy = new (memory) LgQueue(queue);  // never destroyed
    EXPECT_EQ(copy->getThreadId(), 0x77u);
    queue.waitForSpace(1);
    EXPECT_EQ(events, "added, ") << "the source has no observer";
    copy->waitForSpace(2);
    EXPECT_EQ(events, "added, wait 2, ");
    EXPECT_EQ(&copy->readEntry(), &queue.readEntry());
    EXPECT_EQ(taken(*copy), "shared");
    queue = *copy;
    EXPECT_TRUE(queue.isEmpty());
    copy->waitForSpace(3);
    queue.waitForSpace(4);
    EXPECT_EQ(events, "added, wait 2, removed, wait 4, ");
}

TEST(LgQueue, doesWhatAPlainQueueDoesOverMillionsOfSteps)
{
    LgQueue queue;
    struct Item
    {
        bool isLoss;
        std::string text;  ///< of a message
        int count;         ///< of losses
    };
    std::deque<Item> expected;
    // What an entry's place last counted; 0 once it has held a message.
    std::vector<int> counts(1024, 0);
    std::uint32_t write = 0;
    std::mt19937 random(17);
    std::uint32_t readChance = 50;
    log(queue, "start");  // no empty first text
    expected.push_back({false, "start", 0});
    counts[write++] = 0;
    for (int step = 0; step < VnTest::steps(2000000); ++step) {
        if (step % 8192 == 0)
            readChance = 20 + static_cast<std::uint32_t>(random() % 50);
        if (random() % 100 < readChance) {
            if (expected.empty()) {
                ASSERT_TRUE(queue.isEmpty());
                continue;
            }
            Item const& item = expected.front();
            ASSERT_EQ(taken(queue), item.isLoss ? "[" + std::to_string(item.count) + "]" : item.text) << step;
            expected.pop_front();
            continue;
        }
        const bool isFull = expected.size() >= 1022 || queue.getStream().isFull();
        const std::string text(random() % 60, static_cast<char>('a' + random() % 26));
        const bool fits = text.size() <= queue.getStream().getNumCharacters();
        ASSERT_EQ(log(queue, text.c_str()), !isFull) << step;
        if (!isFull) {
            expected.push_back({false, fits ? text : "#", 0});
            counts[write % 1024] = 0;
            ++write;
        } else if (int& last = counts[(write - 1) % 1024]; last != 0) {
            ++last;  // of an entry that waits, or of one that is long gone
            if (!expected.empty() && expected.back().isLoss)
                expected.back().count = last;
        } else {
            int& count = counts[write % 1024];
            count = count != 0 ? count : 1;
            expected.push_back({true, "", count});
            ++write;
        }
    }
}

TEST(LgQueue, oneThreadLogsAndAnotherOneReads)
{
    LgQueue queue;
    constexpr int messages = 100000;
    std::atomic<int> accepted = 0;
    std::thread writer([&queue, &accepted] {
        for (int i = 1; i <= messages; ++i) {
            if (!queue.reserveEntry(LgTypes::Warning))
                continue;
            queue.getStream() << i << ' ' << std::string(static_cast<std::size_t>(i) % 20, 'w').c_str() << Vn::ends;
            queue.addEntry();
            accepted.fetch_add(1, std::memory_order_relaxed);
        }
        queue.creatorExit();
    });
    int last = 0;
    int received = 0;
    int losses = 0;
    for (;;) {
        const bool isAlive = queue.isCreatorAlive();
        if (queue.isEmpty()) {
            if (!isAlive)
                break;
            std::this_thread::yield();
            continue;
        }
        const std::string text = taken(queue);
        if (text[0] == '[') {
            ++losses;
            continue;
        }
        const int number = std::stoi(text);
        ASSERT_GT(number, last);
        const std::string whole =
            std::to_string(number) + ' ' + std::string(static_cast<std::size_t>(number) % 20, 'w');
        ASSERT_EQ(text, whole);
        last = number;
        ++received;
    }
    writer.join();
    EXPECT_EQ(received, accepted);
    EXPECT_GT(received, 0);
    if (received < messages) {
        EXPECT_GT(losses, 0);
    }
}

TEST(LgQueue, aFullQueueIsWatchedByTwoThreads)
{
    // The count of losses rises while the reader prints it, and the mark of the stream is set while it is cleared.
    LgQueue queue;
    std::atomic<bool> isDone = false;
    std::thread writer([&queue, &isDone] {
        for (int i = 0; i < 300000; ++i)
            log(queue, "a text that is long enough to fill the ring of text before the entries are used up");
        isDone = true;
    });
    while (!isDone) {
        if (!queue.isEmpty()) {
            ASSERT_FALSE(taken(queue).empty());
        }
        queue.getStream().hasOverflowed();
    }
    writer.join();
}
