#include <base/lgqueue.h>

#include <base/hwcounter.h>

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

LgQueue::LgQueue(LgQueue& source) = default;
LgQueue& LgQueue::operator=(LgQueue& source) = default;

LgQueue::~LgQueue()
{
    delete[] _entries;
}

bool LgQueue::reserveEntry(LgTypes::Level level)
{
    if (_suppressCount > 0)
        return false;
    if (!_stream.hasRoom() || !hasFreeEntry()) {
        countLoss();
        return false;
    }
    Entry& entry = _entries[_writeIndex.get()];
    entry.setTimeStamp(HwCounter::timeStamp());
    entry.setOverflowEntry(false);
    entry.setLevel(level);
    _stream.resetOutputFlags();
    _open = _stream.getMark();
    _entryReserved = true;
    return true;
}

/// Whether two entries are free, one of them for a count of losses.
bool LgQueue::hasFreeEntry()
{
    // What the writer saw last says too little at worst, and spares it a look at what the reader is changing.
    const auto hasTwo = [this] { return _knownReadIndex - (_writeIndex + 1) >= 2; };
    if (hasTwo())
        return true;
    _knownReadIndex = _readIndex.watch();
    return hasTwo();
}

/// There is an entry for this: the last free one is never taken by a message.
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
    _writeIndex.publish(_writeIndex + 1);
}

void LgQueue::addEntry()
{
    if (!_entryReserved)
        return;
    _entryReserved = false;
    const unsigned flags = _stream.getOutputFlags();
    if ((flags & LgStream::textWritten) == 0) {
        // An `ends` alone has left a string that belongs to no entry: the next one would get its text.
        if ((flags & LgStream::stringTerminated) != 0)
            _stream.takeBack(_open);
        return;
    }
    // A ring that was full has ended the string, but only where nobody finds its end.
    if ((flags & LgStream::stringTerminated) == 0 || _stream.isStringOpen())
        _stream << ends;
    _writeIndex.publish(_writeIndex + 1);
    if (_observer)
        _observer->entryAdded(*this);
}

void LgQueue::waitForSpace(int size) const
{
    if (_observer)
        _observer->waitForSpace(*this, size);
}

bool LgQueue::isFull() const
{
    const Index readIndex = _readIndex.watch();
    return _writeIndex + 1 == readIndex || _writeIndex + 2 == readIndex;
}

void LgQueue::creatorExit()
{
    // Release, and acquire in isCreatorAlive(): without them the reader could delete the queue under the writer's last
    // steps.
    std::atomic_ref(_creatorAlive).store(false, std::memory_order_release);
}

bool LgQueue::isCreatorAlive() const
{
    return std::atomic_ref(const_cast<bool&>(_creatorAlive)).load(std::memory_order_acquire);
}

void LgQueue::removeEntry()
{
    _readIndex.publish(_readIndex + 1);
    if (_observer)
        _observer->entryRemoved(*this);
}

ObjPtrRet<LgQueue::Observer> LgQueue::changeObserver(ObjPtr<Observer> observer)
{
    ObjPtrRet<Observer> before(_observer.release());
    _observer = observer;
    return before;
}

}  // namespace Vn
