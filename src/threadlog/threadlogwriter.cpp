// One thread's side of the log: what happens between a site and the reader.
//
// The usual message costs two looks in entryAdded(): whether the reader sleeps, and whether the queue has enough room for the
// next message. Both load memory that the site has just used, or that is rarely written.
//
// When room gets short, getCurrent() becomes the spill, a second queue that is always empty when a message begins. So the message is
// accepted whatever it is, and only then, when its level can be read, is it decided: it waits until the thread's own queue has room
// for it, or it goes there at once, cut with a # to the room that is left, or without any room that queue counts it as lost. The order of a thread's messages stays, as the next
// one begins when this one is through. What is moved is stamped anew; that is later than all that the queue holds.
//
// The message is in the spill while its thread waits. A crash handler may look at it there, and take it: takeWaiting() gives it
// to one of the two.
//
// The level of a message is needed when the reader sleeps, to tell whether to wake it. LgQueue shows the oldest entry alone; the
// ring is an array, so the newest one is found by counting from where the oldest one was when the queue was new.
#include <threadlog/threadlogwriter_p.h>

#include <threadlog/threadlogengine_p.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace Vn
{
namespace
{
constexpr std::uint32_t entryMask = 0x3FF;
static_assert(entryMask > 1022, "as many entries as LgQueue has");
}  // namespace

/// Takes one message and hands it over. Its queue has room for the longest text, as nothing else is ever in it.
class ThreadLogWriter::Spill : public LgQueue::Observer
{
public:
    explicit Spill(ThreadLogWriter& writer) : _writer(writer) {}

    void entryAdded(LgQueue& queue) override { _writer.move(queue, _text); }
    void entryRemoved(LgQueue&) override {}
    void waitForSpace(LgQueue const&, int size) override { _writer.waitForSpace(*_writer._queue, size); }

private:
    ThreadLogWriter& _writer;
    char _text[32768];
};

// model: tests/models/writers.pml.
ThreadLogWriters::Chunk ThreadLogWriters::_first;

/// Release: a walk that finds the writer finds its fields. A place that was free a moment ago may be taken by another thread.
bool ThreadLogWriters::addTo(Chunk& chunk, ThreadLogWriter& writer)
{
    for (auto& place : chunk.places) {
        ThreadLogWriter* expected = nullptr;
        if (place.load(std::memory_order_relaxed) == nullptr &&
            place.compare_exchange_strong(expected, &writer, std::memory_order_release, std::memory_order_relaxed))
            return true;
    }
    return false;
}

/// Chunks are never freed, so that a walk needs no lock; they are added at the end.
bool ThreadLogWriters::add(ThreadLogWriter& writer) noexcept
{
    for (Chunk* chunk = &_first;;) {
        if (addTo(*chunk, writer))
            return true;
        Chunk* next = chunk->next.load(std::memory_order_acquire);
        if (next == nullptr) {
            Chunk* const made = new (std::nothrow) Chunk;
            if (made == nullptr)
                return false;
            // Acquire for the chunk that another thread has put there meanwhile, release for our own.
            if (chunk->next.compare_exchange_strong(next, made, std::memory_order_acq_rel))
                next = made;
            else
                delete made;
        }
        chunk = next;
    }
}

/// The place may be taken again at once. Nothing but the place is given on, so any order would do.
void ThreadLogWriters::remove(ThreadLogWriter const& writer) noexcept
{
    for (Chunk* chunk = &_first; chunk != nullptr; chunk = chunk->next.load(std::memory_order_acquire))
        for (auto& place : chunk->places)
            if (place.load(std::memory_order_relaxed) == &writer) {
                place.store(nullptr, std::memory_order_release);
                return;
            }
}

/// The queue owns the writer as its observer, and the writer knows the queue; both are complete before anybody finds them.
ThreadLogWriter* ThreadLogWriter::create(unsigned long threadId) noexcept
{
    try {
        auto queue = std::make_unique<LgQueue>(threadId);
        ObjPtr<LgQueue::Observer> owned(new ThreadLogWriter);
        auto* const writer = static_cast<ThreadLogWriter*>(owned.get());
        writer->_queue = queue.get();
        writer->_current = queue.get();
        writer->_entries = &queue->readEntry();  // the first place of the ring, as nothing was written yet
        queue->changeObserver(owned);
        if (!ThreadLogWriters::add(*writer))
            return nullptr;
        queue.release();
        return writer;
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

/// First out of the list: a crash handler must not find a queue that is being freed.
ThreadLogWriter::~ThreadLogWriter()
{
    ThreadLogWriters::remove(*this);
    delete _spill.load(std::memory_order_relaxed);
}

/// For the child of a process, whose queue is a copy of its parent's.
void ThreadLogWriter::discardAll()
{
    static char text[32768];
    LgQueue* const spill = _spill.load(std::memory_order_relaxed);
    for (LgQueue* const queue : {_queue, spill != nullptr ? spill : _queue})
        while (!queue->isEmpty()) {
            if (!queue->readEntry().isOverflowEntry())
                queue->getStream() >> text;
            queue->removeEntry();
        }
    _isRegistered = false;
    _isTaken.store(true);
}

std::uint32_t ThreadLogWriter::countMessages() const
{
    const std::uint32_t end = _written.load(std::memory_order_acquire) & entryMask;
    std::uint32_t messages = 0;
    for (auto i = static_cast<std::uint32_t>(&_queue->readEntry() - _entries); i != end; i = (i + 1) & entryMask)
        messages += _entries[i].isOverflowEntry() ? 0 : 1;
    return messages;
}

/// The newest entry. Not of a queue that was never written.
LgQueue::Entry const& ThreadLogWriter::getNewest() const
{
    return _entries[(_written.load(std::memory_order_relaxed) - 1) & entryMask];
}

/// Release: who sees the number, in a crash, sees the entry.
// model: tests/models/publish.pml.
void ThreadLogWriter::countEntry()
{
    _written.store(_written.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

void ThreadLogWriter::entryAdded(LgQueue&)
{
    countEntry();
    if (ThreadLogEngine::isReaderAsleep()) [[unlikely]]
        ThreadLogEngine::get().messageAdded(getNewest().getLevel(), isFillingUp());
    if (!hasRoomFor(comfortableRoom)) [[unlikely]]
        chooseCurrent();
}

/// Relaxed: the number only tells whether to wake the reader.
void ThreadLogWriter::entryRemoved(LgQueue&)
{
    _removed.store(_removed.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

/// As the writer sees it: the reader makes more room meanwhile, never less.
bool ThreadLogWriter::hasRoomFor(std::uint32_t size) const
{
    return !_queue->isFull() && _queue->getStream().getNumCharacters() >= size;
}

/// Whether half of the entries or of the characters are used, so that the reader should begin.
bool ThreadLogWriter::isFillingUp() const
{
    const std::uint32_t used = _written.load(std::memory_order_relaxed) - _removed.load(std::memory_order_relaxed);
    return used > entryMask / 2 || _queue->getStream().getNumCharacters() < LgStream::getMaxSize() / 2;
}

/// The spill, made when it is first needed. Null without memory.
LgQueue* ThreadLogWriter::provideSpill() noexcept
{
    LgQueue* spill = _spill.load(std::memory_order_relaxed);
    if (spill == nullptr)
        try {
            auto made = std::make_unique<LgQueue>(_queue->getThreadId());
            made->changeObserver(ObjPtr<LgQueue::Observer>(new Spill(*this)));
            spill = made.release();
            // Release: a crash handler that sees the queue sees what it holds.
            _spill.store(spill, std::memory_order_release);
        } catch (std::bad_alloc const&) {
        }
    return spill;
}

/// Without memory for a spill every message waits for room, whatever its level: the queue would take entries for losses that
/// nobody here counts.
void ThreadLogWriter::chooseCurrent()
{
    if (hasRoomFor(comfortableRoom))
        _current = _queue;
    else if (LgQueue* const spill = provideSpill())
        _current = spill;
    else
        waitForSpace(*_queue, static_cast<int>(comfortableRoom));
}

// model: tests/models/spill.pml.
/// The message in the spill goes into the queue, or its loss does. It is taken off the spill only when it waits no more, so
/// that a crash finds it there.
void ThreadLogWriter::move(LgQueue& spill, char* text)
{
    const LgTypes::Level level = spill.readEntry().getLevel();
    _isTaken.store(false);
    if (ThreadLogEngine::get().isWaiting(level))
        waitForSpace(*_queue, static_cast<int>(spill.getStream().getNextSize() + 1));
    if (!takeWaiting()) {
        // A crash handler has written it. If the program survives, it goes on when the handler is through.
        ThreadLogEngine::get().waitForHandler();
        chooseCurrent();
        return;
    }
    spill.getStream() >> text;
    spill.removeEntry();
    // The queue counts a loss in an entry of its own, unless the newest one is such an entry already.
    const bool isCounting = getNewest().isOverflowEntry();
    if (_queue->reserveEntry(level)) {
        writeCut(text);
        _queue->addEntry();
    } else if (!isCounting)
        countEntry();
    chooseCurrent();
}

/// A text that doesn't fit is cut and marked as LgStream marks what it leaves out.
void ThreadLogWriter::writeCut(char* text)
{
    const std::size_t room = _queue->getStream().getNumCharacters();
    const bool isCut = std::strlen(text) > room;
    if (isCut)
        text[std::max<std::size_t>(room, 1) - 1] = '\0';
    _queue->getStream() << text;
    if (isCut)
        _queue->getStream() << '#';
    _queue->getStream() << ends;
}

/// Room for `size` characters, or an empty queue: more than that there never is.
void ThreadLogWriter::waitForSpace(LgQueue const&, int size)
{
    const auto wanted = static_cast<std::uint32_t>(size);
    ThreadLogEngine::get().waitUntil([this, wanted] { return _queue->isEmpty() || hasRoomFor(wanted); });
}

}  // namespace Vn
