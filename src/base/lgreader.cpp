// How a message leaves its queue.
//
// In the order of the calls: LgQueueHeads finds the queue whose turn it is, LgReader::flushQueue() makes the line (LgLine), and
// LgFile writes it, or echo() does.
//
// flushEarliest() looks at the heads of all queues in the registry's list, in its order, and writes the one with the smallest
// time stamp. Each queue is in time order, so the heads are enough. flushQueue() makes the line on the stack, under the output lock (no thread closes the file meanwhile) and the inter-process lock (no other
// process writes), and hands it over in one piece. The text is taken off the ring even if no output wants it;
// otherwise each later message would come out with the text of the one before.
//
// One thread at a time may be here: two would both move the read indices. Writers go on meanwhile. A queue is
// deleted only when its writer has said that it is gone and the queue was found empty after that.
#include <base/lgreader.h>

#include <base/lgfile_p.h>
#include <base/lgline_p.h>
#include <base/lglog.h>
#include <base/lgoutputlock_p.h>
#include <base/lgregistry_p.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <numeric>
#include <optional>
#include <string_view>
#include <typeinfo>
#include <unordered_set>
#include <vector>

namespace Vn
{

/// The queues in the registry's order, and the time stamps of their heads as far as they have been seen.
///
/// A head that was seen doesn't change until the reader removes it. So a call looks only at queues that were empty before, and
/// at the one that has lost its head; the others wait in a heap. All that stays from one message to the next while the
/// registry's list is the same. A registry of the program's own can't tell that, and is asked for its list each time.
class LgQueueHeads
{
public:
    /// The one table. Never destroyed: a reader may be at work while the process ends.
    static LgQueueHeads& get()
    {
        static LgQueueHeads& heads = *new LgQueueHeads;
        return heads;
    }

    /// The queue whose head is the earliest; null if all are empty. Among equal time stamps the queue that was registered
    /// first wins.
    ///
    /// Deletes the queues in front of the first one with a message that are finished. Finished queues behind it wait for a
    /// later call.
    LgQueue* takeEarliest();

private:
    using Place = std::uint32_t;

    /// A registry's list in one of its states.
    struct Source
    {
        LgRegistry const* registry = nullptr;  ///< null: of no list that could be found again
        std::uint64_t changes = 0;

        bool operator==(Source const&) const = default;
    };

    struct Head
    {
        std::uint64_t timeStamp;
        Place place;
    };

    static bool isLater(Head const& one, Head const& other)
    {
        return one.timeStamp != other.timeStamp ? one.timeStamp > other.timeStamp : one.place > other.place;
    }

    void update();
    void fill();
    std::size_t findChange(std::size_t first, bool isInFront) const;
    void lookAtUnseen();
    Head takeFirst();

    std::vector<LgQueue*> _queues;
    std::vector<Head> _heads;    ///< a heap with the earliest one in front
    std::vector<Place> _unseen;  ///< queues without an element there, in ascending order
    Source _source;              ///< of the list in the table
};

namespace
{
/// Whether the writer has ended and nothing is left. The order of the two questions matters: a queue found empty
/// first could get its last message before its writer is found gone, and would be deleted with it.
bool isFinished(LgQueue const& queue)
{
    const bool isAlive = queue.isCreatorAlive();
    return !isAlive && queue.isEmpty();
}
}  // namespace

/// Takes the registry's list over, unless the table holds it already.
void LgQueueHeads::update()
{
    LgRegistry const* const registry = LgLog::getRegistry();
    Source source;
    // Only of that very type: a class derived from it may show another list.
    if (registry != nullptr && typeid(*registry) == typeid(LgSimpleRegistry))
        source = {registry, getRegistryChanges()};
    if (source.registry != nullptr && source == _source)
        return;
    fill();
    _source = source;
}

/// Until that is done the table has no source, so a lack of memory on the way makes the next call begin again.
void LgQueueHeads::fill()
{
    _source = {};
    _queues.clear();
    _heads.clear();
    LgRegistry const* const registry = LgLog::getRegistry();
    List<LgQueue*> queues = registry != nullptr ? registry->getQueueList() : List<LgQueue*>();
    _queues.assign(queues.begin(), queues.end());
    _heads.reserve(_queues.size());
    _unseen.resize(_queues.size());
    std::iota(_unseen.begin(), _unseen.end(), 0u);
    recycleQueueList(queues);
}

/// Index of the first unseen queue from `first` on that is not as empty as before, or that is finished and may go; nearly always
/// there is none. Only loads, since this is what each message costs for each queue that is empty. `isInFront`: no queue before
/// `first` has a message.
std::size_t LgQueueHeads::findChange(std::size_t first, bool isInFront) const
{
    Place const* const unseen = _unseen.data();
    LgQueue* const* const queues = _queues.data();
    const std::size_t count = _unseen.size();
    std::size_t i = first;
    // As long as no place is missing, no queue before has a message.
    for (; isInFront && i < count && unseen[i] == i; ++i)
        if (!queues[i]->isEmpty() || isFinished(*queues[i]))
            return i;
    while (i < count && queues[unseen[i]]->isEmpty())
        ++i;
    return i;
}

/// Moves the heads that are there by now into the heap, and deletes what is finished. The queues that stay empty in between are
/// looked at by findChange() alone, and move up together.
void LgQueueHeads::lookAtUnseen()
{
    std::size_t change = findChange(0, true);
    if (change == _unseen.size())
        return;
    std::unordered_set<LgQueue*> deleted;  // for queues that are listed twice
    const auto unseen = _unseen.begin();
    auto kept = unseen;
    bool isInFront = true;  // no queue before this one has a message
    std::size_t i = 0;
    while (change < _unseen.size()) {
        kept =
            std::copy(unseen + static_cast<std::ptrdiff_t>(i), unseen + static_cast<std::ptrdiff_t>(change), kept);
        const Place place = _unseen[change];
        LgQueue* const queue = _queues[place];
        isInFront = isInFront && place == change;
        if (deleted.contains(queue)) {
            // Gone already.
        } else if (isInFront && isFinished(*queue)) {
            _source = {};  // the registry's list changes: this table serves for the present call only
            deleted.insert(queue);
            LgLog::getRegistry()->deregisterQueue(queue);
            delete queue;
        } else if (queue->isEmpty()) {
            *kept = place;
            ++kept;
        } else {
            isInFront = false;
            _heads.push_back({queue->readEntry().getTimeStamp(), place});
            std::push_heap(_heads.begin(), _heads.end(), isLater);
        }
        // A deleted queue may be listed again, and nobody may look at it.
        i = change + 1;
        change = deleted.empty() ? findChange(i, isInFront) : i;
    }
    kept = std::copy(unseen + static_cast<std::ptrdiff_t>(i), _unseen.end(), kept);
    _unseen.erase(kept, _unseen.end());
}

/// The caller removes that head from its queue, so the queue is unseen again.
LgQueueHeads::Head LgQueueHeads::takeFirst()
{
    std::pop_heap(_heads.begin(), _heads.end(), isLater);
    const Head first = _heads.back();
    _heads.pop_back();
    _unseen.insert(std::lower_bound(_unseen.begin(), _unseen.end(), first.place), first.place);
    return first;
}

LgQueue* LgQueueHeads::takeEarliest()
{
    update();
    for (;;) {
        lookAtUnseen();
        if (_heads.empty())
            return nullptr;
        const Head first = takeFirst();
        LgQueue* const queue = _queues[first.place];
        if (!queue->isEmpty() && queue->readEntry().getTimeStamp() == first.timeStamp)
            return queue;
        // The program has read the queue itself since, or it is listed twice. What else was seen may be as wrong.
        fill();
    }
}

namespace
{
/// Lines that standard output has refused since the last one that it took.
std::int32_t droppedFromEcho = 0;

/// What std::cout writes to unless the program has put another buffer in its place.
std::streambuf const* const standardOutput = std::cout.rdbuf();

/// Where our last line has left standard output, if it is a file.
std::optional<std::uint64_t> echoEnd;

/// Writes and flushes; false if standard output refuses.
bool writeEcho(std::string_view text)
{
    return !std::cout.write(text.data(), static_cast<std::streamsize>(text.size())).flush().fail();
}

/// Makes sure that the next byte of standard output begins a line, where that can be seen. Other processes may write
/// the same file, and one of them may have been killed within a line. Behind a line of ours that was dropped the file
/// counts as ending within a line if it can't be read. False if standard output refuses.
bool startEchoLine()
{
    if (std::cout.rdbuf() != standardOutput)
        return true;
    std::cout.flush();  // what the program has written itself
    const std::optional<std::uint64_t> end = System::getStandardOutputEnd();
    if (end.value_or(0) == 0 || end == echoEnd)
        return true;
    return System::isLineEndOfStandardOutput(*end).value_or(droppedFromEcho == 0) || writeEcho("\n");
}

/// Says how many messages were dropped, in the form of a queue's overflow entry.
bool reportDroppedEcho(bool hasPrefix, std::uint64_t ticks, unsigned long threadId)
{
    LgLine note;
    if (hasPrefix)
        note.putPrefix(ticks, threadId, LgTypes::Informational);
    note.putOverflow(droppedFromEcho);
    return writeEcho(note.getText());
}

/// Writes to standard output, which is tried again with each line: a pipe may be read again, a disk may have room
/// again. A stream that failed for another reason than the device keeps its state.
///
/// With `isShared` other processes wait meanwhile, so that the line can begin at the start of a line.
void echo(LgLine const& line, std::int32_t messages, std::uint64_t ticks, unsigned long threadId, bool isShared)
{
    // Whoever writes to a bad stream sets failbit as well.
    if (std::cout.bad())
        std::cout.clear(std::cout.rdstate() & ~(std::ios::badbit | std::ios::failbit));
    const bool hasDropped = droppedFromEcho != 0;
    bool isWritten = (!isShared && !hasDropped) || startEchoLine();
    if (isWritten && hasDropped && reportDroppedEcho(line.hasPrefix(), ticks, threadId))
        droppedFromEcho = 0;
    isWritten = isWritten && writeEcho(line.getText());
    if (!isWritten)
        droppedFromEcho += std::min(messages, std::numeric_limits<std::int32_t>::max() - droppedFromEcho);
    if (isShared)
        echoEnd = isWritten ? System::getStandardOutputEnd() : std::nullopt;
}

/// Removes the head of a queue whose text has been taken, also if an output throws: standard output does if the program has
/// asked it to. Left in the queue, the entry would come out again with the text of the next one.
class EntryRemoval
{
public:
    explicit EntryRemoval(LgQueue& queue) : _queue(queue) {}
    ~EntryRemoval() { _queue.removeEntry(); }

    EntryRemoval(EntryRemoval const&) = delete;
    EntryRemoval& operator=(EntryRemoval const&) = delete;

private:
    LgQueue& _queue;
};

/// The state of the stream after a prefix is part of the interface: decimal, and blanks as fill characters.
void resetFormat(std::ostream& stream, LgLine const& line)
{
    if (!line.hasPrefix())
        return;
    stream.setf(std::ios::dec, std::ios::basefield);
    stream.fill(' ');
}
}  // namespace

/// May be stale at once: writers go on. A message that is there stays there until this thread flushes.
bool LgReader::eventsPending()
{
    LgRegistry const* const registry = LgLog::getRegistry();
    if (registry == nullptr)
        return false;
    List<LgQueue*> queues = registry->getQueueList();
    const bool isAny =
        std::any_of(queues.begin(), queues.end(), [](LgQueue const* queue) { return !queue->isEmpty(); });
    recycleQueueList(queues);
    return isAny;
}

bool LgReader::flushEarliest()
{
    LgQueue* const queue = LgQueueHeads::get().takeEarliest();
    if (queue == nullptr)
        return false;
    flushQueue(queue);
    return true;
}

/// A fresh look at the list for each message, so a queue that registers meanwhile is seen.
void LgReader::flushAll()
{
    while (flushEarliest())
        ;
}

/// One line, under both locks from its first character to its last, and in one call to the output.
///
/// What the inter-process lock throws comes before anything was taken, so the message stays in its queue.
void LgReader::flushQueue(LgQueue* queue)
{
    const LgOutputLock outputs;
    LgQueue::Entry const& entry = queue->readEntry();
    const LgTypes::Level level = entry.isOverflowEntry() ? LgTypes::Informational : entry.getLevel();
    LgInterProcessLock* const lock = LgLog::getInterProcessLock();
    const LgInterProcessLockGuard guard(lock);
    // Unsigned: an entry stamped before init() wraps and shows a huge time.
    const std::uint64_t ticks = entry.getTimeStamp() - LgLog::getStart();
    const bool hasPrefix = LgLog::isTimeStampsEnabled();
    LgLine line;
    if (hasPrefix)
        line.putPrefix(ticks, queue->getThreadId(), level);
    // What a line of lost messages tells isn't lost with it.
    const std::int32_t messages = entry.isOverflowEntry() ? entry.getOverflowCount() : 1;
    if (entry.isOverflowEntry())
        line.putOverflow(messages);
    else
        line.putText(queue->getStream());
    const EntryRemoval removal(*queue);
    // In one piece, so that a crash in between can't cut it.
    if (LgFile* const file = LgLog::getFile(level)) {
        file->reportDropped(ticks, queue->getThreadId(), hasPrefix, line.getText().size());
        file->writeLines(line.getText(), messages);
        resetFormat(*file, line);
    }
    if (LgLog::isLevelEchoed(level)) {
        echo(line, messages, ticks, queue->getThreadId(), lock != nullptr);
        resetFormat(std::cout, line);
    }
}

}  // namespace Vn
