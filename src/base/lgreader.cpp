#include <base/lgreader.h>

#include <base/lgfile_p.h>
#include <base/lgline_p.h>
#include <base/lglog.h>

#include <algorithm>
#include <iostream>
#include <unordered_set>

namespace Vn
{
namespace
{
List<LgQueue*> getQueues()
{
    LgRegistry const* const registry = LgLog::getRegistry();
    return registry != nullptr ? registry->getQueueList() : List<LgQueue*>();
}

/// The creator first: a queue that is empty, and whose creator is found dead after that, may have got a message between.
bool isFinished(LgQueue const& queue)
{
    const bool isAlive = queue.isCreatorAlive();
    return !isAlive && queue.isEmpty();
}

/// The first queue that isn't empty. Those before it that are finished are deleted, and leave both lists.
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

/// The queue whose head is the earliest, and of equal ones the first; null if all are empty.
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

/// What a prefix leaves of a stream's formatting.
void resetFormat(std::ostream& stream, LgLine const& line)
{
    if (!line.hasPrefix())
        return;
    stream.setf(std::ios::dec, std::ios::basefield);
    stream.fill(' ');
}
}  // namespace

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

void LgReader::flushAll()
{
    while (flushEarliest())
        ;
}

void LgReader::flushQueue(LgQueue* queue)
{
    LgQueue::Entry const& entry = queue->readEntry();
    const LgTypes::Level level = entry.isOverflowEntry() ? LgTypes::Informational : entry.getLevel();
    const LgInterProcessLockGuard guard(LgLog::getInterProcessLock());
    LgLine line;
    if (LgLog::isTimeStampsEnabled())
        line.putPrefix(entry.getTimeStamp() - LgLog::getStart(), queue->getThreadId(), level);
    if (entry.isOverflowEntry())
        line.putOverflow(entry.getOverflowCount());
    else
        line.putText(queue->getStream());
    try {
        // In one piece, so that a crash in between can't tear it.
        if (std::ostream* const output = LgLog::getLevelOutput(level)) {
            static_cast<LgFile*>(output)->writeLine(line.get(), line.getSize());  // no level has another kind
            resetFormat(*output, line);
        }
        if (LgLog::isLevelEchoed(level)) {
            std::cout.write(line.get(), static_cast<std::streamsize>(line.getSize())).flush();
            resetFormat(std::cout, line);
        }
    } catch (...) {
        queue->removeEntry();  // its text has been taken
        throw;
    }
    queue->removeEntry();
}

}  // namespace Vn
