#pragma once

#include <base/lgstream.h>
#include <base/lgtypes.h>
#include <base/objptr.h>

#include <atomic>
#include <cstdint>

namespace Vn
{

/// The messages of one thread on their way to the outputs: a ring of 1,024 entries beside a ring of text.
///
///     if (queue.reserveEntry(Vn::LgTypes::Warning)) {     // the writer; VN_LOG does this
///         queue.getStream() << "text" << Vn::ends;
///         queue.addEntry();
///     }
///
///     while (!queue.isEmpty()) {                          // the reader; LgReader does this
///         if (!queue.readEntry().isOverflowEntry())
///             queue.getStream() >> text;
///         queue.removeEntry();
///     }
///
/// The writer is one thread, the reader another one; neither waits, locks or allocates. A message that finds no room is
/// lost, and an entry that counts such losses stands in its place. A copy shares entries and text with its source and
/// takes its observer; only one of the two may be destroyed.
/// Tests: tests/base/lgqueuetest.cpp.
class VN_BASE_EXPORT LgQueue
{
public:
    class Observer;
    class SuppressGuard;

    /// A message, or messages that were lost.
    class VN_BASE_EXPORT Entry
    {
    public:
        Entry() = default;

        LgTypes::Level getLevel() const { return static_cast<LgTypes::Level>(load()); }
        void setLevel(LgTypes::Level level) { store(level); }

        /// The messages lost, of an overflow entry. It can be too high, as an entry keeps the count of its last use
        /// until it is used for a message; it may rise while it is read.
        std::int32_t getOverflowCount() const { return load(); }
        void incOverflowCount() { store(load() + 1); }

        /// HwCounter::timeStamp() at the reservation.
        std::uint64_t getTimeStamp() const { return _timeStamp; }
        void setTimeStamp(std::uint64_t timeStamp) { _timeStamp = timeStamp; }

        bool isOverflowEntry() const { return _overflow; }

        /// A change makes the count 1, or the level `Tracing`.
        void setOverflowEntry(bool value)
        {
            if (_overflow == value)
                return;
            _overflow = value;
            store(value ? 1 : LgTypes::Tracing);
        }

    private:
        // Relaxed: the writer counts on while the reader prints. What the entry says besides comes with its index.
        std::int32_t load() const
        {
            return std::atomic_ref(const_cast<std::int32_t&>(_levelOrCount)).load(std::memory_order_relaxed);
        }
        void store(std::int32_t value) { std::atomic_ref(_levelOrCount).store(value, std::memory_order_relaxed); }

        bool _overflow = false;
        std::int32_t _levelOrCount = 0;
        std::uint64_t _timeStamp = 0;
    };

    /// `threadId` is what the lines of this queue's messages show.
    explicit LgQueue(unsigned long threadId = 0);

    LgQueue(LgQueue& source);
    LgQueue& operator=(LgQueue& source);
    ~LgQueue();

    // Writer.

    /// Begins a message, stamped with the present time. False if it is suppressed, or lost and counted: then there is
    /// nothing to write. The level plays no part in that.
    bool reserveEntry(LgTypes::Level level);

    /// Shows the message to the reader. Without a reservation, or if no text was written, nothing happens; a string that
    /// hasn't been ended is.
    void addEntry();

    /// Holds the caller back until there is room for `size` bytes, if there is an observer.
    void waitForSpace(int size) const;

    /// Whether a message would be refused for want of an entry: with 1,022 in the queue, as the last but one free entry
    /// is kept for the count of losses.
    bool isFull() const;

    /// The writer is gone, and touches the queue no more. LgReader deletes the queue once it is empty.
    void creatorExit();

    // Reader.

    /// The oldest entry; not of an empty queue.
    Entry const& readEntry() const { return _entries[_readIndex.get()]; }

    void removeEntry();

    // Either side.

    bool isEmpty() const { return _writeIndex.watch() == _readIndex.watch(); }
    static std::uint32_t getMaxSize() { return ringSize - 1; }
    unsigned long getThreadId() const { return _threadId; }
    bool isCreatorAlive() const;
    LgStream& getStream() { return _stream; }
    LgStream const& getStream() const { return _stream; }

    /// Gives the queue another observer, or none, and hands back the one before. Not while another thread uses the
    /// queue.
    ObjPtrRet<Observer> changeObserver(ObjPtr<Observer> observer);

private:
    static constexpr std::uint32_t ringSize = 1024;
    using Index = LgRingIndex<ringSize>;

    bool hasFreeEntry();
    void countLoss();

    LgStream _stream;
    Entry* _entries;
    Index _readIndex;   ///< oldest entry; the reader's
    Index _writeIndex;  ///< next free entry; the writer's
    bool _creatorAlive;
    bool _entryReserved;
    std::uint32_t _threadId;
    ObjPtr<Observer> _observer;
    std::int32_t _suppressCount;

    // The writer's own.
    Index _knownReadIndex;  ///< as it was when the writer last looked
    LgStream::Mark _open;   ///< of the last reservation
};

/// What a thread layer hangs into a queue to learn of its traffic; the only way in which a queue wakes anybody.
class VN_BASE_EXPORT LgQueue::Observer
{
public:
    virtual ~Observer();

    /// A message is there to be read. In the writer's thread.
    virtual void entryAdded(LgQueue& queue) = 0;

    /// An entry has become free. In the reader's thread.
    virtual void entryRemoved(LgQueue& queue) = 0;

    /// Holds the writer back until the queue has room for `size` bytes. In the writer's thread.
    virtual void waitForSpace(LgQueue const& queue, int size) = 0;
};

/// While one lives, its queue takes no messages and counts no losses. For the writer.
class VN_BASE_EXPORT LgQueue::SuppressGuard
{
public:
    explicit SuppressGuard(LgQueue& queue) : _queue(queue) { ++_queue._suppressCount; }
    ~SuppressGuard() { --_queue._suppressCount; }

    SuppressGuard(SuppressGuard const&) = delete;
    SuppressGuard& operator=(SuppressGuard const&) = delete;

private:
    LgQueue& _queue;
};

}  // namespace Vn
