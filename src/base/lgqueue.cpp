// The ring of entries, and how it keeps step with the ring of text.
//
// reserveEntry() fills the entry at the write index without moving it, so the reader doesn't see it; addEntry()
// moves the index. Text and terminator are in place by then, and the index is published with release: a reader that
// sees it sees them too. The reader takes the text before removeEntry() moves the read index, so the writer never
// fills a cell that is being read.
//
// The last free entry is kept for a count of losses, which is published at once and raised while it is the newest.
// The count is the one field that both sides may use at a time; it is a relaxed atomic, and a late value only
// changes a diagnostic.
//
// model: tests/models/entries.pml, and tests/models/queue.pml with the text.
#include <base/lgqueue.h>

#include <base/hwcounter.h>
#include <base/relaxed_p.h>

namespace Vn
{

LgQueue::Observer::~Observer() = default;

LgQueue::LgQueue(unsigned long threadId)
    : _entries(new Entry[ringSize]),
      _creatorAlive(true),
      _entryReserved(false),
      _threadId(static_cast<std::uint32_t>(threadId)),
      _suppressCount(0)
{}

/// Intended: copies share the rings, and only one of them may be destroyed. Do not mend. The observer moves, as ObjPtr does.
LgQueue::LgQueue(LgQueue& source) = default;
LgQueue& LgQueue::operator=(LgQueue& source) = default;

/// Not virtual: a queue has no derived classes, and the layout begins with the stream.
LgQueue::~LgQueue()
{
    delete[] _entries;
}

/// The level takes no part in the decision: an internal error is dropped as readily as a trace line.
bool LgQueue::reserveEntry(LgTypes::Level level)
{
    if (_suppressCount > 0)
        return false;
    if (!_stream.hasRoom() || !hasFreeEntry()) {
        countLoss();
        return false;
    }
    // Beyond what the reader may look at, until addEntry().
    Entry& entry = _entries[_writeIndex.get()];
    entry.setTimeStamp(HwCounter::timeStamp());
    entry.setOverflowEntry(false);
    entry.setLevel(level);
    _stream.resetOutputFlags();
    _reservedAt = _stream.getMark();
    _entryReserved = true;
    return true;
}

/// Whether two entries are free, one of them for a count of losses.
bool LgQueue::hasFreeEntry()
{
    // The read index as the writer last saw it may be stale; it never shows more free entries than there are. Only
    // when it shows too few does the writer touch the memory that the reader is changing.
    const auto hasTwo = [this] { return _cachedReadIndex - (_writeIndex + 1) >= 2; };
    if (hasTwo())
        return true;
    _cachedReadIndex = _readIndex.loadAcquire();
    return hasTwo();
}

/// Counts a message that was refused. Needs no test for room: the last free entry is never taken by a message.
///
/// Intended: an entry keeps its overflow flag and its count until it is used for a message. So a count can begin too
/// high, and a loss can be added to an entry that the reader has consumed already. A reset would need a write by the
/// reader; do not mend.
void LgQueue::countLoss()
{
    Entry& last = _entries[(_writeIndex - 1).get()];
    if (last.isOverflowEntry()) {
        last.incOverflowCount();
        return;
    }
    Entry& entry = _entries[_writeIndex.get()];
    entry.setTimeStamp(HwCounter::timeStamp());
    entry.setOverflowEntry(true);
    _writeIndex.storeRelease(_writeIndex + 1);
}

/// Without an effect if nothing was reserved or nothing was written.
void LgQueue::addEntry()
{
    if (!_entryReserved)
        return;
    _entryReserved = false;
    const unsigned flags = _stream.getOutputFlags();
    if ((flags & LgStream::textWritten) == 0) {
        // `ends` alone has left an empty string that belongs to no entry: the next entry would get it as its text,
        // and each later one the text of the entry before.
        if ((flags & LgStream::stringTerminated) != 0)
            _stream.removeEmptyString(_reservedAt);
        return;
    }
    // A ring that became full has set the flag and written a zero, but without moving the string's end: the reader
    // would not find it.
    if ((flags & LgStream::stringTerminated) == 0 || _stream.isStringOpen())
        _stream << ends;
    _writeIndex.storeRelease(_writeIndex + 1);
    if (_observer)
        _observer->entryAdded(*this);
}

/// The one call that may block. Without an observer it returns, and a message that doesn't fit is lost.
void LgQueue::waitForSpace(int size) const
{
    if (_observer)
        _observer->waitForSpace(*this, size);
}

/// The same rule as hasFreeEntry(), without the cache, which a const function can't renew. For the writer alone.
bool LgQueue::isFull() const
{
    const Index readIndex = _readIndex.loadAcquire();
    return _writeIndex + 1 == readIndex || _writeIndex + 2 == readIndex;
}

void LgQueue::creatorExit()
{
    // Release, and acquire in isCreatorAlive(): without them the reader could see the end of the writer before the
    // writer's last message, and delete the queue under it.
    storeRelease(_creatorAlive, false);
}

/// Publishes with release: without it the writer could reuse the entry while it is still being read.
void LgQueue::removeEntry()
{
    _readIndex.storeRelease(_readIndex + 1);
    if (_observer)
        _observer->entryRemoved(*this);
}

/// Without a lock: an observer is installed before the queue is registered.
ObjPtrRet<LgQueue::Observer> LgQueue::changeObserver(ObjPtr<Observer> observer)
{
    ObjPtrRet<Observer> before(_observer.release());
    _observer = observer;
    return before;
}

}  // namespace Vn
