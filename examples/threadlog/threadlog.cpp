#include "threadlog.h"

#include <base/exsyserror.h>
#include <base/lgreader.h>
#include <base/lgtrace.h>

#include <iostream>

namespace
{
/// Rises with each message, so that the reader sleeps while it stands still.
std::atomic<unsigned> messages = 0;

void wakeReader()
{
    // Release: the reader that sees the number also finds the message.
    messages.fetch_add(1, std::memory_order_release);
    messages.notify_one();
}

/// One for each queue.
class SpaceObserver : public Vn::LgQueue::Observer
{
public:
    void entryAdded(Vn::LgQueue&) override { wakeReader(); }

    void entryRemoved(Vn::LgQueue&) override
    {
        // Release: the writer that sees the number also finds the space.
        _removed.fetch_add(1, std::memory_order_release);
        _removed.notify_one();
    }

    void waitForSpace(Vn::LgQueue const& queue, int size) override
    {
        for (;;) {
            // Before the look at the queue: what is removed after the look changes the number, and wait() returns.
            const unsigned before = _removed.load(std::memory_order_acquire);
            if (hasSpace(queue, static_cast<unsigned>(size)))
                return;
            _removed.wait(before, std::memory_order_acquire);
        }
    }

private:
    static bool hasSpace(Vn::LgQueue const& queue, unsigned size)
    {
        // More than fits is waited for until the queue is empty, and is cut by the queue then.
        return queue.isEmpty() || (!queue.isFull() && queue.getStream().getNumCharacters() >= size);
    }

    std::atomic<unsigned> _removed = 0;
};

/// The queue of a thread, from its first message to its end; the reader deletes it.
class QueueOfThread
{
public:
    ~QueueOfThread() { end(); }

    Vn::LgQueue* get()
    {
        if (_queue == nullptr)
            _queue = make();
        return _queue;
    }

    void end()
    {
        if (_queue == nullptr)
            return;
        _queue->creatorExit();
        _queue = nullptr;
        wakeReader();
    }

private:
    static Vn::LgQueue* make()
    {
        static std::atomic<unsigned long> threads = 0;
        Vn::ObjPtr<Vn::LgQueue> queue(new Vn::LgQueue(++threads));
        queue->changeObserver(Vn::ObjPtr<Vn::LgQueue::Observer>(new SpaceObserver));
        Vn::LgLog::getRegistry()->registerQueue(queue.get());
        return queue.release();
    }

    Vn::LgQueue* _queue = nullptr;
};

thread_local QueueOfThread queueOfThread;

Vn::LgQueue* getQueueOfThread()
{
    return queueOfThread.get();
}

/// A lock whose holder has died fails once on Windows, and works again; what fails twice waits for the next time.
void flush()
{
    for (int tries = 0; tries < 2; ++tries)
        try {
            Vn::LgReader().flushAll();
            return;
        } catch (Vn::ExSysError const& failure) {
            std::cerr << "log: " << failure.getReason() << '\n';
        }
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
    queueOfThread.end();
    _isEnding = true;
    wakeReader();
    _reader.join();
    flush();
}

void ThreadLog::read()
{
    while (!_isEnding) {
        const unsigned before = messages.load(std::memory_order_acquire);
        flush();
        if (!_isEnding)
            messages.wait(before, std::memory_order_acquire);
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
    thread_local Vn::Trace trace;
    return trace;
}

void ThreadTraceManager::print(char const* text) const
{
    Vn::LgTrace::print(text);
}
