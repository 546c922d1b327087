// How a message leaves its queue.
//
// flushEarliest() takes a copy of the registry's list, finds the queue whose first entry has the smallest time
// stamp, and writes that one entry. Each queue is in time order, so the heads are enough. flushQueue() makes the
// line on the stack, under the output lock (no thread closes the file meanwhile) and the inter-process lock (no other
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

#include <algorithm>
#include <iostream>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_set>

namespace Vn
{
namespace
{
/// By value: queues may register and leave while the copy is walked.
List<LgQueue*> getQueues()
{
    LgRegistry const* const registry = LgLog::getRegistry();
    return registry != nullptr ? registry->getQueueList() : List<LgQueue*>();
}

/// Whether the writer has ended and nothing is left. The order of the two questions matters: a queue found empty
/// first could get its last message before its writer is found gone, and would be deleted with it.
bool isFinished(LgQueue const& queue)
{
    const bool isAlive = queue.isCreatorAlive();
    return !isAlive && queue.isEmpty();
}

/// The first queue that isn't empty. Those before it that are finished are deleted, and leave both lists. Finished
/// queues behind it wait for a later call.
List<LgQueue*>::iterator findFirst(List<LgQueue*>& queues)
{
    std::unordered_set<LgQueue*> deleted;  // for queues that are listed twice
    const auto isDeleted = [&deleted](LgQueue* queue) { return deleted.contains(queue); };
    auto place = queues.begin();
    while (place != queues.end()) {
        LgQueue* const queue = *place;
        if (!deleted.empty() && isDeleted(queue)) {
            place = queues.erase(place);
        } else if (isFinished(*queue)) {
            deleted.insert(queue);
            LgLog::getRegistry()->deregisterQueue(queue);
            place = queues.erase(place);
            delete queue;
        } else if (queue->isEmpty())
            ++place;
        else
            break;
    }
    if (!deleted.empty())
        queues.remove_if(isDeleted);
    return place;
}

/// The queue whose head is the earliest; null if all are empty. The comparison is strict, so among equal stamps the
/// queue that was registered first wins.
LgQueue* findEarliest()
{
    List<LgQueue*> queues = getQueues();
    LgQueue* earliest = nullptr;
    for (auto place = findFirst(queues); place != queues.end(); ++place) {
        LgQueue* const queue = *place;
        if (queue->isEmpty())
            continue;
        if (earliest == nullptr || queue->readEntry().getTimeStamp() < earliest->readEntry().getTimeStamp())
            earliest = queue;
    }
    return earliest;
}

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
    if (!end || *end == 0 || end == echoEnd)
        return true;
    return System::isLineEndOfStandardOutput(*end).value_or(droppedFromEcho == 0) || writeEcho("\n");
}

/// Says how many lines were dropped, in the form of a queue's overflow entry.
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
void echo(LgLine const& line, std::uint64_t ticks, unsigned long threadId, bool isShared)
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
        droppedFromEcho += droppedFromEcho != std::numeric_limits<std::int32_t>::max() ? 1 : 0;
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
    const List<LgQueue*> queues = getQueues();
    return std::any_of(queues.begin(), queues.end(), [](LgQueue const* queue) { return !queue->isEmpty(); });
}

bool LgReader::flushEarliest()
{
    LgQueue* const queue = findEarliest();
    if (queue == nullptr)
        return false;
    flushQueue(queue);
    return true;
}

/// A fresh copy of the list for each message, so a queue that registers meanwhile is seen.
void LgReader::flushAll()
{
    while (flushEarliest())
        ;
}

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
    if (entry.isOverflowEntry())
        line.putOverflow(entry.getOverflowCount());
    else
        line.putText(queue->getStream());
    const EntryRemoval removal(*queue);
    // In one piece, so that a crash in between can't cut it.
    if (LgFile* const file = LgLog::getFile(level)) {
        file->reportDropped(ticks, queue->getThreadId(), hasPrefix, line.getText().size());
        file->writeLines(line.getText());
        resetFormat(*file, line);
    }
    if (LgLog::isLevelEchoed(level)) {
        echo(line, ticks, queue->getThreadId(), lock != nullptr);
        resetFormat(std::cout, line);
    }
}

}  // namespace Vn
