#include "threadlog.h"

#include <base/lgreader.h>
#include <base/lgtrace.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <iostream>
#include <utility>

namespace
{
/// A number that rises, and that a thread can wait for. Raising it costs no lock while nobody waits.
class Signal
{
public:
    void raise()
    {
        // Sequentially consistent, here and in waitBeyond(): one side raises the number and then looks for sleepers, the
        // other one counts as a sleeper and then looks at the number, so one of them sees the other.
        ++_number;
        if (_sleepers == 0)
            return;
        _mutex.lock();  // the sleeper is now before its look at the number, or asleep
        _mutex.unlock();
        _condition.notify_all();
    }

    unsigned get() const { return _number; }

    /// Until the number isn't `seen` any more, or for so long.
    void waitBeyond(unsigned seen, std::chrono::seconds atMost)
    {
        std::unique_lock guard(_mutex);
        ++_sleepers;
        _condition.wait_for(guard, atMost, [this, seen] { return _number != seen; });
        --_sleepers;
    }

private:
    std::atomic<unsigned> _number = 0;
    std::atomic<int> _sleepers = 0;
    std::mutex _mutex;
    std::condition_variable _condition;
};

/// Raised with each message; never destroyed, as threads may end behind the static objects.
Signal& messages = *new Signal;

/// The reader can't write, as when the lock's file is somebody else's now. It tries again, and holds nobody back: messages
/// that find no room are lost and counted.
std::atomic<bool> isFailing = false;

constexpr std::chrono::seconds
    aLook(1);  ///< how soon a change of `isFailing` is seen, and how long until the next try
constexpr std::chrono::seconds forEver = std::chrono::hours(24);

/// One for each queue.
class SpaceObserver : public Vn::LgQueue::Observer
{
public:
    void entryAdded(Vn::LgQueue&) override { messages.raise(); }
    void entryRemoved(Vn::LgQueue&) override { _removed.raise(); }

    void waitForSpace(Vn::LgQueue const& queue, int size) override
    {
        for (;;) {
            // Before the look at the queue: what is removed after the look raises the number, and nobody waits.
            const unsigned seen = _removed.get();
            if (hasSpace(queue, static_cast<unsigned>(size)) || isFailing)
                return;
            _removed.waitBeyond(seen, aLook);
        }
    }

private:
    static bool hasSpace(Vn::LgQueue const& queue, unsigned size)
    {
        // More than fits is waited for until the queue is empty, and is cut by the queue then.
        return queue.isEmpty() || (!queue.isFull() && queue.getStream().getNumCharacters() >= size);
    }

    Signal _removed;
};

thread_local Vn::LgQueue* queueOfThread = nullptr;
thread_local ThreadLog::Thread* currentThread = nullptr;

Vn::LgQueue* makeQueue()
{
    static std::atomic<unsigned long> threads = 0;
    Vn::ObjPtr<Vn::LgQueue> queue(new Vn::LgQueue(++threads));
    queue->changeObserver(Vn::ObjPtr<Vn::LgQueue::Observer>(new SpaceObserver));
    Vn::LgLog::getRegistry()->registerQueue(queue.get());
    return queue.release();
}

Vn::LgQueue* getQueueOfThread()
{
    if (queueOfThread == nullptr)
        queueOfThread = makeQueue();
    return queueOfThread;
}

/// From here on the queue is the reader's, which deletes it once it is empty.
void endQueueOfThread()
{
    if (Vn::LgQueue* const queue = std::exchange(queueOfThread, nullptr)) {
        queue->creatorExit();
        messages.raise();
    }
}

/// A lock whose holder has died fails once on Windows, and works again; what fails twice waits for the next time. It is
/// told once.
void flush()
{
    for (int tries = 0; tries < 2; ++tries)
        try {
            Vn::LgReader().flushAll();
            isFailing = false;
            return;
        } catch (std::exception const& failure) {
            if (!isFailing)
                std::cerr << "log: " << failure.what() << '\n';
        }
    isFailing = true;
}
}  // namespace

ThreadLog::ThreadLog()
{
    Vn::LgLog::setRegistry(Vn::ObjPtr<Vn::LgRegistry>(new LockingRegistry));
    Vn::LgLog::setQueueFunction(getQueueOfThread);
    _reader = std::thread([this] { read(); });
    Vn::LgLog::setLoggerActivation(true);
}

ThreadLog::~ThreadLog()
{
    Vn::LgLog::setLoggerActivation(false);
    Vn::LgLog::setQueueFunction(nullptr);
    endQueueOfThread();
    _isEnding = true;
    messages.raise();
    _reader.join();
    flush();
    for (Vn::LgQueue* queue : Vn::LgLog::getRegistry()->getQueueList())
        queue->creatorExit();  // of threads that ended without a word
    flush();
}

ThreadLog::Thread::Thread()
{
    currentThread = this;
}

ThreadLog::Thread::~Thread()
{
    currentThread = nullptr;
    endQueueOfThread();
}

void ThreadLog::read()
{
    while (!_isEnding) {
        const unsigned seen = messages.get();
        flush();
        if (!_isEnding)
            messages.waitBeyond(seen, isFailing ? aLook : forEver);
    }
}

void LockingRegistry::registerQueue(Vn::LgQueue* queue)
{
    const std::lock_guard guard(_mutex);
    _queues.registerQueue(queue);
}

void LockingRegistry::deregisterQueue(Vn::LgQueue* queue)
{
    const std::lock_guard guard(_mutex);
    _queues.deregisterQueue(queue);
}

Vn::List<Vn::LgQueue*> LockingRegistry::getQueueList() const
{
    const std::lock_guard guard(_mutex);
    return _queues.getQueueList();
}

Vn::Trace& ThreadTraceManager::getTrace()
{
    static Vn::Trace shared;
    return currentThread != nullptr ? currentThread->trace : shared;
}

void ThreadTraceManager::print(char const* text) const
{
    Vn::LgTrace::print(text);
}
