// Private to the sources of this library.
#pragma once

#include <threadlog/threadlogexport.h>

#include <base/lgqueue.h>
#include <base/trace.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace Vn
{

/// What one thread has while it logs: a queue, the depth of its trace, and a place where messages wait for room.
///
/// It is the observer of its queue, which owns it: both go together, when the reader has emptied the queue behind the
/// thread's end.
///
/// A site asks for its queue before it says how important the message is, and a full queue would count any message as
/// lost. So while there is little room, getCurrent() is another queue, the spill, which holds one message at a time. Once the
/// message is there its level is known: it is moved into the thread's own queue, waits for room there first, or is counted
/// there as lost. The reader never sees the spill.
class ThreadLogWriter : public LgQueue::Observer
{
public:
    /// Makes the queue, and itself known to the reader and the crash handlers. Null without memory.
    static ThreadLogWriter* create(unsigned long threadId) noexcept;

    /// Called by the queue's destructor.
    ~ThreadLogWriter() override;

    /// The queue that takes the thread's next message.
    LgQueue* getCurrent() { return _current; }

    Trace& getTrace() { return _trace; }

    // Reader.

    LgQueue& getQueue() { return *_queue; }

    // model: tests/models/spill.pml.

    /// The message that waits for room, alone in its queue; null if there is none. For the crash handlers.
    LgQueue* getWaiting() const
    {
        LgQueue* const spill = _spill.load(std::memory_order_acquire);
        return spill != nullptr && !_isTaken.load() && !spill->isEmpty() ? spill : nullptr;
    }

    /// Takes that message: true for one of the two that may try, the thread itself and a crash handler.
    bool takeWaiting() { return !_isTaken.exchange(true); }

    /// Whether the logger's registry lists the queue; the reader's own mark.
    bool isRegistered() const { return _isRegistered; }
    void setRegistered(bool registered) { _isRegistered = registered; }

    /// Messages in the queue, without entries that count losses. For the crash handlers.
    std::uint32_t countMessages() const;

    // model: tests/models/publish.pml.

    /// Entries that the thread has written so far. For the crash handlers.
    std::uint32_t getWritten() const { return _written.load(std::memory_order_acquire); }

    /// Empties the queue without writing anything.
    void discardAll();

    // Of LgQueue::Observer.

    void entryAdded(LgQueue& queue) override;
    void entryRemoved(LgQueue&) override;
    void waitForSpace(LgQueue const& queue, int size) override;

private:
    class Spill;

    /// Characters that must be free for the next message, or it goes through the spill.
    static constexpr std::uint32_t comfortableRoom = 4096;

    ThreadLogWriter() = default;

    LgQueue::Entry const& getNewest() const;
    void countEntry();
    bool hasRoomFor(std::uint32_t size) const;
    bool isFillingUp() const;
    LgQueue* provideSpill() noexcept;
    void chooseCurrent();
    void move(LgQueue& spill, char* text);
    void writeCut(char* text);

    LgQueue* _queue = nullptr;  ///< owns this object
    LgQueue* _current = nullptr;
    LgQueue::Entry const* _entries = nullptr;  ///< the queue's ring
    std::atomic<std::uint32_t> _written = 0;  ///< entries so far; the index of the next one, modulo the ring's size
    std::atomic<std::uint32_t> _removed = 0;  ///< entries that the reader has taken
    std::atomic<LgQueue*> _spill = nullptr;   ///< null as long as there has always been room
    std::atomic<bool> _isTaken = true;        ///< whether what is in the spill is being moved
    bool _isRegistered = false;
    Trace _trace;
};

/// The writers of all threads. Adding and removing takes no lock, and a signal handler can walk it.
///
/// Removing is the reader's, as is a walk outside a handler. Memory for as many writers as there ever were at a time is kept.
class ThreadLogWriters
{
public:
    /// False without memory.
    static bool add(ThreadLogWriter& writer) noexcept;
    static void remove(ThreadLogWriter const& writer) noexcept;

    // model: tests/models/writers.pml.

    /// Calls `visit` with each writer, in the order of their places.
    template <class Visit>
    static void forEach(Visit const& visit)
    {
        for (Chunk* chunk = &_first; chunk != nullptr; chunk = chunk->next.load(std::memory_order_acquire))
            for (auto& place : chunk->places)
                // Acquire, with the release in add(): without it a writer could be seen before its fields.
                if (ThreadLogWriter* const writer = place.load(std::memory_order_acquire))
                    visit(*writer);
    }

private:
    struct Chunk
    {
        std::atomic<ThreadLogWriter*> places[64] = {};
        std::atomic<Chunk*> next = nullptr;
    };

    static bool addTo(Chunk& chunk, ThreadLogWriter& writer);

    /// Exported for debuggers alone: they find the queues in a program without debug symbols.
    static VN_THREADLOG_EXPORT Chunk _first;
};

}  // namespace Vn
