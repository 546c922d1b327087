#pragma once

#include <base/lgstream.h>
#include <base/lgtypes.h>
#include <base/objptr.h>

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
/// The writer is one thread, the reader another one; neither waits, locks or allocates. A message that finds no room
/// is lost, and an entry that counts such losses takes its place. A registered queue must exist until a reader has
/// deleted it, once it is empty after creatorExit(): end its thread with that call, not with `delete`. A copy shares
/// entries and text with its source and takes its observer; only one of the two may be destroyed.
/// Tests: tests/base/lgqueuetest.cpp.
class VN_BASE_EXPORT LgQueue
{
public:
    class Observer;
    class SuppressGuard;

    /// One message, or the number of messages lost at this place. The writer fills it, the reader reads it.
    class VN_BASE_EXPORT Entry
    {
    public:
        /// All fields 0: a message of the level `InternalError`.
        Entry() = default;

        /// @{
        /// The level of a message. Of an overflow entry the same word is the count.
        LgTypes::Level getLevel() const { return static_cast<LgTypes::Level>(load()); }
        void setLevel(LgTypes::Level level) { store(level); }
        /// @}

        /// The messages lost, of an overflow entry. It can be too high, as an entry keeps the count of its last use
        /// until it is used for a message; it may rise while it is read.
        std::int32_t getOverflowCount() const { return load(); }

        /// One more is lost. For the writer.
        void incOverflowCount() { store(load() + 1); }

        /// @{
        /// HwCounter::timeStamp() at the reservation, or at the first loss of an overflow entry.
        std::uint64_t getTimeStamp() const { return _timeStamp; }
        void setTimeStamp(std::uint64_t timeStamp) { _timeStamp = timeStamp; }
        /// @}

        /// Whether this counts losses and has no text in the stream.
        bool isOverflowEntry() const { return _overflow; }

        /// Makes this an overflow entry of count 1, or a message of the level `Tracing`. If it is so already, the
        /// word stays.
        void setOverflowEntry(bool value)
        {
            if (_overflow == value)
                return;
            _overflow = value;
            store(value ? 1 : LgTypes::Tracing);
        }

    private:
        // Relaxed: the writer counts on while the reader prints. What the entry says besides comes with its index.
        std::int32_t load() const { return __atomic_load_n(&_levelOrCount, __ATOMIC_RELAXED); }
        void store(std::int32_t value) { __atomic_store_n(&_levelOrCount, value, __ATOMIC_RELAXED); }

        bool _overflow = false;
        std::int32_t _levelOrCount = 0;
        std::uint64_t _timeStamp = 0;
    };

    /// Allocates both rings, 32 KiB of text and 1,024 entries. `threadId` is what the lines of this queue's messages
    /// show; its low 32 bits count. Throws `std::bad_alloc`.
    explicit LgQueue(unsigned long threadId = 0);

    /// @{
    /// Copies the fields, so that both share one pair of rings, and moves the observer. Only one of the two may be
    /// destroyed, and only one used.
    LgQueue(LgQueue& source);
    LgQueue& operator=(LgQueue& source);
    /// @}

    /// Frees both rings and the observer. Neither side may use the queue any more.
    ~LgQueue();

    // Writer.

    /// Begins a message, stamped with the present time. True if there is room: write to getStream(), then call
    /// addEntry().
    ///
    ///     1,022 calls on an empty queue  ->  true
    ///     the next one                   ->  false; publishes an overflow entry of count 1
    ///     each further one               ->  false; raises that count
    ///     while a SuppressGuard exists   ->  false; counts nothing
    ///
    /// The level plays no part in that. Called again without addEntry(), it reuses the reservation, and text written
    /// so far begins the next message.
    bool reserveEntry(LgTypes::Level level);

    /// Shows the message to the reader. Terminates the string if the caller did not. Without a reservation, or if no
    /// text was written, nothing happens and the reservation is dropped.
    void addEntry();

    /// Blocks until there is room for `size` bytes, if there is an observer; returns at once otherwise.
    void waitForSpace(int size) const;

    /// Whether a message would be refused because no entry is free. True with 1,022 entries in the queue: the last but
    /// one free entry is kept for the count of losses.
    bool isFull() const;

    /// Says that the writer has ended and touches the queue no more. LgReader deletes the queue once it is empty.
    void creatorExit();

    // Reader.

    /// The oldest entry; not of an empty queue. Valid until removeEntry().
    Entry const& readEntry() const { return _entries[_readIndex.get()]; }

    /// Frees the oldest entry; not of an empty queue. Take its text from the stream first, unless it is an overflow
    /// entry.
    void removeEntry();

    // Either side.

    // model: tests/models/entries.pml.

    /// Whether there is nothing to read. May be stale: a message that the writer adds meanwhile shows at the next
    /// call.
    bool isEmpty() const { return _writeIndex.loadAcquire() == _readIndex.loadAcquire(); }

    /// Entries that the ring can hold, the count of losses included: 1,023.
    static std::uint32_t getMaxSize() { return ringSize - 1; }

    /// The number given to the constructor, its low 32 bits.
    unsigned long getThreadId() const { return _threadId; }

    /// False once creatorExit() was called. If it is false and isEmpty() is true after that, no message will follow.
    bool isCreatorAlive() const { return __atomic_load_n(&_creatorAlive, __ATOMIC_ACQUIRE); }

    /// @{
    /// The text of the messages: the writer writes to it, the reader reads from it.
    LgStream& getStream() { return _stream; }
    LgStream const& getStream() const { return _stream; }
    /// @}

    /// Gives the queue another observer, or none, and returns the one before. Not while another thread uses the
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
    Index _cachedReadIndex;      ///< as it was when the writer last looked
    LgStream::Mark _reservedAt;  ///< where the text of the last reservation begins
};

/// What a thread layer installs in a queue to hear of its traffic; the only way in which a queue wakes anybody.
/// The library `threadlog` has one.
///
///     queue.changeObserver(Vn::ObjPtr<Vn::LgQueue::Observer>(new WakeReader));
///
/// The queue owns it. Its functions run in two threads at once.
/// Tests: tests/base/lgqueuetest.cpp.
class VN_BASE_EXPORT LgQueue::Observer
{
public:
    /// Called by the queue's destructor.
    virtual ~Observer();

    /// A message can be read. Called by addEntry(), in the writer's thread; not for overflow entries.
    virtual void entryAdded(LgQueue& queue) = 0;

    /// An entry is free. Called by removeEntry(), in the reader's thread.
    virtual void entryRemoved(LgQueue& queue) = 0;

    /// Blocks the writer until the queue has room for `size` bytes. Called in the writer's thread.
    virtual void waitForSpace(LgQueue const& queue, int size) = 0;
};

/// While one exists, its queue takes no messages and counts no losses. For the writer; guards nest.
///
///     Vn::LgQueue::SuppressGuard quiet(queue);
///     callWhatMustNotLog();
class VN_BASE_EXPORT LgQueue::SuppressGuard
{
public:
    /// `queue` must outlive the guard.
    explicit SuppressGuard(LgQueue& queue) : _queue(queue) { ++_queue._suppressCount; }
    ~SuppressGuard() { --_queue._suppressCount; }

    SuppressGuard(SuppressGuard const&) = delete;
    SuppressGuard& operator=(SuppressGuard const&) = delete;

private:
    LgQueue& _queue;
};

}  // namespace Vn
