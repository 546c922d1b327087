#include "loggertest.h"

#include "expectchild.h"
#include "steps.h"

#include <base/exsyserror.h>
#include <base/hwcounter.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <deque>
#include <future>
#include <iomanip>
#include <iostream>
#include <random>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

using namespace Vn;
using VnTest::LoggerTest;
using VnTest::LogLine;
using VnTest::StampedQueue;

namespace
{
using LgReaderTest = LoggerTest;

/// Tells when its queue is deleted.
class Witness : public LgQueue::Observer
{
public:
    explicit Witness(int& deaths) : _deaths(deaths) {}
    ~Witness() override { ++_deaths; }

    void entryAdded(LgQueue&) override {}
    void entryRemoved(LgQueue&) override {}
    void waitForSpace(LgQueue const&, int) override {}

private:
    int& _deaths;
};

void watch(LgQueue& queue, int& deaths)
{
    queue.changeObserver(ObjPtr<LgQueue::Observer>(new Witness(deaths)));
}

std::vector<std::string> textsOf(std::vector<std::string> const& lines)
{
    std::vector<std::string> texts;
    for (std::string const& line : lines) {
        const auto parsed = LogLine::parse(line);
        texts.push_back(parsed ? parsed->text : "malformed: " + line);
    }
    return texts;
}
}  // namespace

TEST_F(LgReaderTest, aLineHasTimeThreadLevelAndText)
{
    set("VN_LOG_TRACING", folder.path("events.log"));
    set("VN_LOG_PROFILING", folder.path("events.log"));
    start();
    StampedQueue queue(0x1A2B);
    queue.log((1ULL << 32) + 5, "Cache text");
    queue.log(0, "a", LgTypes::InternalError);
    queue.log(0xFFFFFFFFFFFFFFFF, "b", LgTypes::FatalError);
    queue.log(1, "c", LgTypes::RecoverableError);
    queue.log(2, "d", LgTypes::Informational);
    queue.log(4294967295, "e", LgTypes::Tracing);
    queue.log(1234567890123456789, "f", LgTypes::Profiling);
    LgReader().flushAll();
    EXPECT_EQ(messages(), (std::vector<std::string>{"0000000001 0000000005 (0x00001a2b) Warning: Cache text",
                                                    "0000000000 0000000000 (0x00001a2b) Internal Error: a",
                                                    "4294967295 4294967295 (0x00001a2b) Fatal Error: b",
                                                    "0000000000 0000000001 (0x00001a2b) Error: c",
                                                    "0000000000 0000000002 (0x00001a2b) Informational: d",
                                                    "0000000000 4294967295 (0x00001a2b) Tracing: e",
                                                    "0287445236 2112454933 (0x00001a2b) Profiling: f"}));
    queue.end();
}

TEST_F(LgReaderTest, thePagesLineIsOne)
{
    start();
    StampedQueue queue(0x1A2B);
    queue.log((1ULL << 32) + 5, "Cache evicted 17 pages");
    LgReader().flushAll();
    queue.end();
    const std::vector<std::string> page = VnTest::linesOf(VN_LOGGING_PAGE);
    ASSERT_EQ(messages().size(), 1u);
    EXPECT_EQ(std::count(page.begin(), page.end(), "    " + messages()[0]), 1);
}

TEST_F(LgReaderTest, lossesAreALineOfTheirOwn)
{
    start();
    StampedQueue queue(0xFFFFFFFF);
    for (int i = 0; i < 1022; ++i)
        queue.log(1, "x");
    for (int i = 0; i < 12; ++i)
        EXPECT_FALSE(queue->reserveEntry(LgTypes::InternalError));
    queue.stampLast(7);
    LgReader().flushAll();
    ASSERT_EQ(messages().size(), 1023u);
    EXPECT_EQ(messages().back(), "0000000000 0000000007 (0xffffffff) Informational: Event overflow [12]");
    queue.end();
}

TEST_F(LgReaderTest, withoutTimeStampsALineIsTheMessageAlone)
{
    set("VN_LOG_DISABLE_TIMESTAMPS", "1");
    start();
    StampedQueue queue;
    for (int i = 0; i < 1022; ++i)
        queue.log(1, "Cache text");
    EXPECT_FALSE(queue->reserveEntry(LgTypes::Warning));
    LgReader().flushAll();
    ASSERT_EQ(messages().size(), 1023u);
    EXPECT_EQ(messages().front(), "Cache text");
    EXPECT_EQ(messages().back(), "Event overflow [1]");
    queue.end();
}

TEST_F(LgReaderTest, lossesGoWhereInformationalMessagesGo)
{
    set("VN_LOG_INFORMATIONAL", "%");
    start();
    StampedQueue queue;
    for (int i = 0; i < 1022; ++i)
        queue.log(1, "x", LgTypes::RecoverableError);
    EXPECT_FALSE(queue->reserveEntry(LgTypes::RecoverableError));
    queue.stampLast(9);
    testing::internal::CaptureStdout();
    LgReader().flushAll();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "0000000000 0000000009 (0x00000000) Informational: Event overflow [1]\n");
    EXPECT_EQ(messages().size(), 1022u);
    queue.end();
}

TEST_F(LgReaderTest, echoAndFileGetTheSameLine)
{
    set("VN_LOG_WARNING", "%" + folder.path("warning.log"));
    start();
    StampedQueue queue;
    queue.log(5, "both");
    testing::internal::CaptureStdout();
    LgReader().flushAll();
    const std::string line = "0000000000 0000000005 (0x00000000) Warning: both";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line + "\n");
    EXPECT_EQ(VnTest::linesOf(folder.path("warning.log")).back(), line);
    queue.end();
}

TEST_F(LgReaderTest, messagesOfALevelWithoutOutputAreThrownAway)
{
    set("VN_LOG_WARNING", "--");
    start();
    StampedQueue queue;
    queue.log(1, "nowhere");
    queue.log(2, "somewhere", LgTypes::RecoverableError);
    LgReader().flushAll();
    EXPECT_TRUE(queue->isEmpty());
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{"somewhere"});
    queue.end();
}

TEST_F(LgReaderTest, theStreamsFormatIsPlainBehindALine)
{
    start();
    std::ostream& stream = *LgLog::getLevelOutput(LgTypes::Warning);
    stream << std::hex << std::setfill('*');
    StampedQueue queue;
    queue.log(11, "text 16");
    LgReader().flushAll();
    EXPECT_EQ(messages(), std::vector<std::string>{"0000000000 0000000011 (0x00000000) Warning: text 16"});
    EXPECT_EQ(stream.fill(), ' ');
    EXPECT_EQ(stream.flags() & std::ios::basefield, std::ios::dec);
    queue.end();
}

TEST_F(LgReaderTest, eachLineIsInTheFileAtOnce)
{
    start();
    StampedQueue queue;
    queue.log(1, "first");
    queue.log(2, "second");
    LgReader reader;
    EXPECT_TRUE(reader.flushEarliest());
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{"first"});
    EXPECT_TRUE(reader.flushEarliest());
    EXPECT_EQ(messages().size(), 2u);
    EXPECT_FALSE(reader.flushEarliest());
    queue.end();
}

TEST_F(LgReaderTest, theLongestTextIsWrittenWhole)
{
    start();
    StampedQueue queue;
    queue.log(1, std::string(32767, 't'));
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{std::string(32767, 't')});
    queue.end();
}

TEST_F(LgReaderTest, queuesAreMergedByTheirStamps)
{
    start();
    StampedQueue one(1), two(2), three(3);
    one.log(10, "10");
    one.log(40, "40");
    two.log(5, "5");
    two.log(20, "20");
    two.log(50, "50");
    three.log(30, "30");
    EXPECT_TRUE(LgReader().eventsPending());
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"5", "10", "20", "30", "40", "50"}));
    EXPECT_FALSE(LgReader().eventsPending());
    one.end();
    two.end();
    three.end();
}

TEST_F(LgReaderTest, equalStampsComeOutInTheOrderOfRegistration)
{
    start();
    StampedQueue one, two, three;
    three.log(7, "three");
    two.log(7, "two");
    one.log(7, "one");
    two.log(7, "two again");
    one.log(7, "one again");
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "one again", "two", "two again", "three"}));
    one.end();
    two.end();
    three.end();
}

TEST_F(LgReaderTest, onlyHeadsAreCompared)
{
    start();
    StampedQueue one, two;
    one.log(9, "9");
    one.log(1, "1");  // out of order in its queue, which no writer does
    two.log(5, "5");
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"5", "9", "1"}));
    one.end();
    two.end();
}

TEST_F(LgReaderTest, mergedLinesAreThoseOfAStableSort)
{
    start();
    std::mt19937 random(5);
    std::vector<StampedQueue> queues;
    std::vector<std::pair<std::uint64_t, std::string>> expected;
    for (int i = 0; i < 20; ++i) {
        queues.emplace_back(static_cast<unsigned long>(i));
        std::uint64_t ticks = 0;
        for (int j = 0; j < 200; ++j) {
            ticks += random() % 3;
            const std::string text = std::to_string(i) + ":" + std::to_string(j);
            queues.back().log(ticks, text);
            expected.push_back({ticks, text});
        }
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](auto const& a, auto const& b) { return a.first < b.first; });
    LgReader().flushAll();
    const std::vector<std::string> texts = textsOf(messages());
    ASSERT_EQ(texts.size(), expected.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(texts[i], expected[i].second) << i;
    for (StampedQueue& queue : queues)
        queue.end();
}

TEST_F(LgReaderTest, aFinishedQueueIsDeleted)
{
    start();
    int deaths = 0;
    StampedQueue queue;
    watch(*queue, deaths);
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_EQ(deaths, 0) << "its creator lives";
    queue->creatorExit();
    EXPECT_FALSE(LgReader().eventsPending());
    EXPECT_EQ(deaths, 0) << "asking deletes nothing";
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_EQ(deaths, 1);
    EXPECT_TRUE(LgLog::getRegistry()->getQueueList().empty());
}

TEST_F(LgReaderTest, aDeadQueueWithMessagesIsDrainedFirst)
{
    start();
    int deaths = 0;
    StampedQueue queue;
    watch(*queue, deaths);
    queue.log(1, "last words");
    queue->creatorExit();
    LgReader reader;
    EXPECT_TRUE(reader.flushEarliest());
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{"last words"});
    EXPECT_FALSE(reader.flushEarliest());
    EXPECT_EQ(deaths, 1);
}

TEST_F(LgReaderTest, finishedQueuesGoOnlyBeforeTheFirstMessage)
{
    start();
    int before = 0, behind = 0;
    StampedQueue first, busy, last;
    watch(*first, before);
    watch(*last, behind);
    first->creatorExit();
    last->creatorExit();
    busy.log(1, "message");
    EXPECT_TRUE(LgReader().flushEarliest());
    EXPECT_EQ(before, 1);
    EXPECT_EQ(behind, 0);
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_EQ(behind, 1);
    busy.end();
}

TEST_F(LgReaderTest, aFinishedQueueThatIsListedTwiceIsDeletedOnce)
{
    start();
    int deaths = 0;
    StampedQueue queue, other;
    watch(*queue, deaths);
    LgLog::getRegistry()->registerQueue(&*queue);
    LgLog::getRegistry()->registerQueue(&*other);
    LgLog::getRegistry()->registerQueue(&*queue);
    queue->creatorExit();
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(LgLog::getRegistry()->getQueueList().size(), 2u);
    other.end();
}

TEST_F(LgReaderTest, finishedQueuesGoWhereverElseTheyAreListed)
{
    start();
    int deaths = 0;
    StampedQueue first, second, quiet, busy;
    for (StampedQueue* queue : {&first, &second}) {
        watch(**queue, deaths);
        (*queue)->creatorExit();
    }
    // Listed now: first, second, quiet, busy, second, first.
    LgLog::getRegistry()->registerQueue(&*second);
    LgLog::getRegistry()->registerQueue(&*first);
    busy.log(1, "message");
    EXPECT_TRUE(LgReader().flushEarliest());
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{"message"});
    EXPECT_EQ(LgLog::getRegistry()->getQueueList(), (List<LgQueue*>{&*quiet, &*busy}));
    quiet.end();
    busy.end();
}

TEST_F(LgReaderTest, aQueueThatRegistersBetweenTwoMessagesIsSeen)
{
    start();
    StampedQueue first;
    first.log(1, "one");
    first.log(5, "five");
    EXPECT_TRUE(LgReader().flushEarliest());
    StampedQueue second;
    second.log(3, "three");
    EXPECT_TRUE(LgReader().flushEarliest());
    second.log(7, "seven");
    second.end();  // with its message, which nobody writes
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "three", "five"}));
    first.end();
}

TEST_F(LgReaderTest, anotherRegistryIsAnotherList)
{
    start();
    StampedQueue first;
    first.log(1, "one");
    first.log(9, "nine");
    EXPECT_TRUE(LgReader().flushEarliest());
    const ObjPtr<LgRegistry> before = LgLog::setRegistry(ObjPtr<LgRegistry>(new LgSimpleRegistry));
    StampedQueue second;
    second.log(3, "three");
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "three", "nine"}));
    first.end();
    second.end();
}

TEST_F(LgReaderTest, anotherRegistryWithoutAChangeIsAnotherList)
{
    start();
    StampedQueue queue;
    LgRegistry& first = *LgLog::getRegistry();
    first.deregisterQueue(&*queue);
    auto* const second = new LgSimpleRegistry;
    second->registerQueue(&*queue);
    queue.log(1, "one");
    queue.log(2, "two");
    EXPECT_FALSE(LgReader().flushEarliest());
    // The first one has no queue to hand over, so neither registry changes.
    const ObjPtr<LgRegistry> before = LgLog::setRegistry(ObjPtr<LgRegistry>(second));
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "two"}));
    queue.end();
}

TEST_F(LgReaderTest, aRegistryThatIsAssignedIsSeen)
{
    start();
    auto& registry = dynamic_cast<LgSimpleRegistry&>(*LgLog::getRegistry());
    const LgSimpleRegistry empty;
    StampedQueue queue;
    queue.log(1, "one");
    queue.log(2, "two");
    const LgSimpleRegistry full(registry);
    EXPECT_TRUE(LgReader().flushEarliest());
    registry = empty;
    EXPECT_FALSE(LgReader().flushEarliest());
    registry = full;
    EXPECT_TRUE(LgReader().flushEarliest());
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "two"}));
    queue.end();
}

namespace
{
/// Shows another list than the one of its base.
class OtherList : public LgSimpleRegistry
{
public:
    List<LgQueue*> getQueueList() const override { return shown; }

    List<LgQueue*> shown;
};
}  // namespace

TEST_F(LgReaderTest, aRegistryOfTheProgramIsAskedForEachMessage)
{
    start();
    auto* const registry = new OtherList;
    LgLog::setRegistry(ObjPtr<LgRegistry>(registry));
    StampedQueue first, second;
    first.log(1, "one");
    first.log(4, "four");
    second.log(2, "two");
    second.log(3, "three");
    EXPECT_FALSE(LgReader().flushEarliest());
    registry->shown = {&*first};
    EXPECT_TRUE(LgReader().eventsPending());
    EXPECT_TRUE(LgReader().flushEarliest());
    registry->shown = {&*first, &*second};
    EXPECT_TRUE(LgReader().flushEarliest());
    registry->shown = {&*first};
    EXPECT_TRUE(LgReader().flushEarliest());
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "two", "four"}));
    first.end();
    second.end();
}

namespace
{
/// What a reader must do, by a walk through all queues for each message.
class PlainReader
{
public:
    explicit PlainReader(std::vector<std::string>& texts) : _texts(texts) {}

    void add(LgQueue* queue) { _queues.push_back({queue, {}, true}); }

    /// A queue with a living creator; null if there is none.
    LgQueue* pick(std::mt19937& random)
    {
        if (_queues.empty())
            return nullptr;
        Queue const& queue = _queues[random() % _queues.size()];
        return queue.isAlive ? queue.queue : nullptr;
    }

    void log(LgQueue* queue, int number) { find(queue).messages.push_back(number); }
    void end(LgQueue* queue) { find(queue).isAlive = false; }

    bool flushEarliest()
    {
        const auto isFinished = [](Queue const& queue) { return !queue.isAlive && queue.messages.empty(); };
        const auto hasMessage = [](Queue const& queue) { return !queue.messages.empty(); };
        const auto first = std::find_if(_queues.begin(), _queues.end(), hasMessage);
        _queues.erase(std::remove_if(_queues.begin(), first, isFinished), first);
        Queue* earliest = nullptr;
        for (Queue& queue : _queues)
            if (hasMessage(queue) && (earliest == nullptr || queue.messages.front() < earliest->messages.front()))
                earliest = &queue;
        if (earliest == nullptr)
            return false;
        _texts.push_back(std::to_string(earliest->messages.front()));
        earliest->messages.pop_front();
        return true;
    }

    List<LgQueue*> getQueueList() const
    {
        List<LgQueue*> queues;
        for (Queue const& queue : _queues)
            queues.push_back(queue.queue);
        return queues;
    }

private:
    struct Queue
    {
        LgQueue* queue;
        std::deque<int> messages;
        bool isAlive;
    };

    Queue& find(LgQueue* queue)
    {
        return *std::find_if(_queues.begin(), _queues.end(), [queue](Queue const& q) { return q.queue == queue; });
    }

    std::vector<Queue> _queues;
    std::vector<std::string>& _texts;
};
}  // namespace

TEST_F(LgReaderTest, doesWhatAPlainWalkDoesWhileQueuesComeAndGo)
{
    start();
    std::vector<std::string> expected;
    PlainReader model(expected);
    std::mt19937 random(48);
    for (int step = 0; step < VnTest::steps(20000); ++step) {
        const auto choice = random() % 100;
        if (choice < 3) {
            auto* const queue = new LgQueue;
            LgLog::getRegistry()->registerQueue(queue);
            model.add(queue);
        } else if (choice < 50) {
            // The model orders by number, so each message needs a time of its own.
            for (const std::uint64_t now = HwCounter::timeStamp(); HwCounter::timeStamp() == now;)
                ;
            if (LgQueue* const queue = model.pick(random);
                queue != nullptr && queue->reserveEntry(LgTypes::Warning)) {
                queue->getStream() << step << ends;
                queue->addEntry();
                model.log(queue, step);
            }
        } else if (choice < 53) {
            if (LgQueue* const queue = model.pick(random)) {
                queue->creatorExit();
                model.end(queue);
            }
        } else {
            ASSERT_EQ(LgReader().flushEarliest(), model.flushEarliest()) << step;
            ASSERT_EQ(LgLog::getRegistry()->getQueueList(), model.getQueueList()) << step;
        }
    }
    while (model.flushEarliest())
        ASSERT_TRUE(LgReader().flushEarliest());
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_TRUE(textsOf(messages()) == expected);
    for (LgQueue* queue : model.getQueueList()) {
        LgLog::getRegistry()->deregisterQueue(queue);
        delete queue;
    }
}

TEST_F(LgReaderTest, aRegistryThatStandsWhereAnotherStoodHasItsOwnQueues)
{
    start();
    LgRegistry const* const first = LgLog::getRegistry();
    StampedQueue queue;
    EXPECT_FALSE(LgReader().flushEarliest());  // has seen the first registry's list
    LgLog::init();
    for (int tries = 0; tries < 100 && LgLog::getRegistry() != first; ++tries)
        LgLog::init();
    if (LgLog::getRegistry() != first)
        GTEST_SKIP() << "the allocator never gave the first registry's place again, so nothing could be mistaken";
    queue.log(1, "of the first registry");
    EXPECT_FALSE(LgReader().flushEarliest());
    LgLog::getRegistry()->registerQueue(&*queue);
    EXPECT_TRUE(LgReader().flushEarliest());
    queue.end();
}

TEST_F(LgReaderTest, aQueueThatTheProgramReadsItselfHasItsPresentHead)
{
    start();
    StampedQueue first, second;
    first.log(1, "one");
    first.log(5, "five");
    second.log(3, "three");
    second.log(7, "seven");
    EXPECT_TRUE(LgReader().flushEarliest());  // has seen both heads
    std::vector<char> text(32768);
    second->getStream() >> text.data();
    second->removeEntry();
    EXPECT_TRUE(LgReader().flushEarliest());
    second->getStream() >> text.data();
    second->removeEntry();
    EXPECT_FALSE(LgReader().flushEarliest());
    EXPECT_EQ(textsOf(messages()), (std::vector<std::string>{"one", "five"}));
    first.end();
    second.end();
}

namespace
{
/// A lock that tells, and can refuse.
class TestLock : public LgInterProcessLock
{
public:
    void lock() override
    {
        if (isRefusing)
            throw ExSysErrorWindows("src/base/test", __LINE__);
        ++depth;
    }
    void unlock() override { --depth; }

    bool isRefusing = false;
    int depth = 0;
};

/// Logs another message for each that is taken, so many times.
class Refiller : public LgQueue::Observer
{
public:
    explicit Refiller(int count) : _count(count) {}

    void entryAdded(LgQueue&) override {}
    void entryRemoved(LgQueue& queue) override
    {
        if (_count-- <= 0 || !queue.reserveEntry(LgTypes::Warning))
            return;
        queue.getStream() << "more" << ends;
        queue.addEntry();
    }
    void waitForSpace(LgQueue const&, int) override {}

private:
    int _count;
};
}  // namespace

TEST_F(LgReaderTest, flushAllTakesWhatIsAddedMeanwhile)
{
    start();
    StampedQueue queue;
    queue->changeObserver(ObjPtr<LgQueue::Observer>(new Refiller(5)));
    queue.log(1, "first");
    LgReader().flushAll();
    EXPECT_EQ(messages().size(), 6u);
    queue.end();
}

TEST(LgInterProcessLockGuard, holdsItsLockOrNothing)
{
    const LgInterProcessLockGuard nothing(nullptr);
    TestLock lock;
    {
        const LgInterProcessLockGuard guard(&lock);
        EXPECT_EQ(lock.depth, 1);
    }
    EXPECT_EQ(lock.depth, 0);
    lock.isRefusing = true;
    EXPECT_THROW(const LgInterProcessLockGuard guard(&lock), ExSysErrorWindows);
}

namespace
{
class FailingUnlock : public LgInterProcessLock
{
public:
    void lock() override {}
    void unlock() override { throw ExSysErrorWindows("src/base/test", __LINE__); }
};
}  // namespace

TEST(LgInterProcessLockGuard, aFailingUnlockIsThrownUnlessSomethingElseIsOnItsWay)
{
    FailingUnlock lock;
    EXPECT_THROW({ const LgInterProcessLockGuard guard(&lock); }, ExSysErrorWindows);
    EXPECT_THROW(
        {
            const LgInterProcessLockGuard guard(&lock);
            throw 7;
        },
        int);
}

VN_CHILD(lgReaderAlone)
{
    const bool arePending = LgReader().eventsPending();
    const bool isFlushed = LgReader().flushEarliest();
    LgReader().flushAll();
    std::cout << (LgLog::getRegistry() == nullptr) << arePending << isFlushed << '\n';
    return 0;
}

TEST(LgReader, withoutARegistryThereIsNothing)
{
    VnTest::expectOutput("lgReaderAlone", "100\n");
}

TEST_F(LgReaderTest, aMessageThatItsThreadNeverFinishedIsNotWritten)
{
    start();
    int deaths = 0;
    StampedQueue queue;
    watch(*queue, deaths);
    queue.log(1, "whole");
    ASSERT_TRUE(queue->reserveEntry(LgTypes::Warning));
    queue->getStream() << "half a mess";
    queue->creatorExit();
    LgReader().flushAll();
    EXPECT_EQ(textsOf(messages()), std::vector<std::string>{"whole"});
    EXPECT_EQ(deaths, 1);
}

TEST_F(LgReaderTest, aReaderThatIsTooSlowTearsNothing)
{
    start();
    LgQueue queue(1);
    LgLog::getRegistry()->registerQueue(&queue);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        if (queue.reserveEntry(LgTypes::Warning)) {
            queue.getStream() << "message " << i << ends;
            queue.addEntry();
            ++accepted;
        }
        if (i % 10 == 0)
            LgReader().flushEarliest();
    }
    LgReader().flushAll();
    int written = 0, last = -1;
    for (std::string const& text : textsOf(messages())) {
        if (text.starts_with("Event overflow ["))
            continue;
        ASSERT_TRUE(text.starts_with("message ")) << text;
        const int number = std::stoi(text.substr(8));
        ASSERT_GT(number, last);
        last = number;
        ++written;
    }
    EXPECT_EQ(written, accepted);
    EXPECT_LT(accepted, 20000);
    LgLog::getRegistry()->deregisterQueue(&queue);
}

namespace
{
/// Takes what is written, and holds the writer of the first piece until it may go on.
class HeldBuffer : public std::streambuf
{
public:
    std::promise<void> isWriting;
    std::promise<void> mayGoOn;
    std::string written;

protected:
    std::streamsize xsputn(char const* text, std::streamsize size) override
    {
        if (!_isHeld.exchange(true)) {
            isWriting.set_value();
            mayGoOn.get_future().wait();
        }
        written.append(text, static_cast<std::size_t>(size));
        return size;
    }
    int_type overflow(int_type character) override
    {
        written += traits_type::to_char_type(character);
        return character;
    }

private:
    std::atomic<bool> _isHeld = false;
};
}  // namespace

TEST_F(LgReaderTest, aStopWaitsForTheLineThatAnotherThreadWrites)
{
    start();
    LgLog::disableTimeStamps();
    HeldBuffer buffer;
    LgLog::getLevelOutput(LgTypes::Warning)->rdbuf(&buffer);
    StampedQueue queue;
    queue.log(1, "the line");
    queue.log(2, "too late");
    std::thread reader([] { LgReader().flushEarliest(); });
    buffer.isWriting.get_future().wait();
    std::promise<void> isStopping;
    std::thread stopper([this, &isStopping] {
        isStopping.set_value();
        stop();
    });
    isStopping.get_future().wait();
    for (int i = 0; i < 1000; ++i)  // time for a stop that doesn't wait
        std::this_thread::yield();
    buffer.mayGoOn.set_value();
    reader.join();
    stopper.join();
    EXPECT_EQ(buffer.written, "the line\n===== Message Logger Stopped =====\n");
    LgReader().flushAll();
    EXPECT_TRUE((*queue).isEmpty()) << "what comes behind the stop is dropped";
    queue.end();
}

TEST_F(LgReaderTest, aReaderGoesOnThroughTheStop)
{
    start();
    StampedQueue queue;
    for (int i = 0; i < 500; ++i)
        queue.log(static_cast<std::uint64_t>(i), "message");
    std::atomic<bool> isEnding = false;
    std::promise<void> hasBegun;
    std::thread reader([&] {
        LgReader().flushEarliest();
        hasBegun.set_value();
        while (!isEnding)
            LgReader().flushAll();
    });
    hasBegun.get_future().wait();
    stop();
    isEnding = true;
    reader.join();
    LgReader().flushAll();
    const std::vector<std::string> lines = events();
    EXPECT_EQ(lines.back(), "===== Message Logger Stopped =====");
    EXPECT_GE(messages().size(), 1u);
    EXPECT_TRUE((*queue).isEmpty());
    queue.end();
}
