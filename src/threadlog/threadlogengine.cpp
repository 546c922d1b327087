// The reader's thread.
//
// It writes until the queues are empty, dozes for a moment, and falls asleep if nothing came meanwhile. While it dozes only
// what is urgent wakes it, so that a busy program pays for a wake-up once for many messages and not once for each; asleep, any
// message does. An idle program has no timer at work.
//
// A writer that has added a message looks whether the reader sleeps, and a reader that falls asleep looks for messages. Each
// must see what the other has stored before it looked. The writer has no fence for that, since it would cost more than the
// message: the reader makes all threads pass one (ThreadLogSystem::fenceAllThreads) before its look.
//
// Queues are known in three places: ThreadLogWriters, which anybody may add to; the logger's registry, which the reader alone
// fills from there, so that the registry needs no lock; and the thread's own pointer.
//
// Whoever reads holds _readMutex, for some lines at a time. So `fork` finds the queues at rest, and flush() and reopen() get
// their turn. A crash handler can't wait for a lock: it raises _holds and waits until no line is being written.
//
// The life of a thread's queue:
//
//     first message     makeWriter(): the writer and its queue, made by the thread itself, enter the list of writers
//     next line         registerNewQueues(): the reader enters the queue in the logger's registry
//     thread's end      endWriter(): the creator has left; the reader is woken
//     drained           the registry deletes the queue, as it does with each queue without a creator, and the writer with it
//
// In a child of `fork` all of this is there but for the threads. The child owns nothing of it until its first message: then
// it drops the parent's messages, which the parent writes, keeps the queue of the thread that forked, and starts a reader.
#include <threadlog/threadlogengine_p.h>

#include <threadlog/threadlogcrash_p.h>
#include <threadlog/threadlogsystem_p.h>
#include <threadlog/threadlogwriter_p.h>

#include <base/hwcounter.h>
#include <base/lglog.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <new>
#include <utility>

namespace Vn
{
namespace
{
/// Takes no message and counts none: the queue of a thread for which there is no memory.
LgQueue& getRefusingQueue()
{
    static LgQueue& queue = *new LgQueue;
    static LgQueue::SuppressGuard& guard = *new LgQueue::SuppressGuard(queue);  // both stay for ever
    static_cast<void>(guard);
    return queue;
}

/// Whether this thread is within `fork` and has kept the queues at rest for that.
thread_local bool holdsForFork = false;

/// As long as the reason of any exception of ours.
using Reason = char[1024];

/// One write, so that the lines of several threads and processes don't mix; without memory, for want of which it may be called.
void tell(char const* what)
{
    char line[sizeof(Reason) + 8];
    const int size = std::snprintf(line, sizeof line, "log: %s\n", what);
    std::cerr.write(line, std::min<int>(size, sizeof line - 1));
}
}  // namespace

std::atomic<ThreadLogEngine::Sleep> ThreadLogEngine::_sleep = Sleep::Awake;

/// The right to read, for a block. Whoever waits for it is let in between two batches of the reader.
class ThreadLogEngine::Reading
{
public:
    explicit Reading(ThreadLogEngine& engine) : _engine(engine)
    {
        _engine._others.fetch_add(1, std::memory_order_relaxed);
        _engine._readMutex.lock();
        _engine._others.fetch_sub(1, std::memory_order_relaxed);
        _engine._lineThread.store(ThreadLogSystem::getThread(), std::memory_order_relaxed);
    }
    ~Reading() { _engine._readMutex.unlock(); }

    Reading(Reading const&) = delete;
    Reading& operator=(Reading const&) = delete;

private:
    ThreadLogEngine& _engine;
};

/// The time in which a line may be half-written, for a block: it ends with the block, also if the line can't be written.
class ThreadLogEngine::InLine
{
public:
    explicit InLine(ThreadLogEngine& engine) : _engine(engine) { engine.enterLine(); }
    ~InLine() { _engine.leaveLine(); }

    InLine(InLine const&) = delete;
    InLine& operator=(InLine const&) = delete;

private:
    ThreadLogEngine& _engine;
};

/// Never destroyed: threads that the program hasn't joined may log while static objects go.
ThreadLogEngine& ThreadLogEngine::get()
{
    static ThreadLogEngine& engine = *new ThreadLogEngine;
    return engine;
}

/// What can throw comes last, and is undone below.
void ThreadLogEngine::start(ThreadLogPolicy const& policy)
{
    static const bool hasHooks = (ThreadLogSystem::installHooks(), true);
    static_cast<void>(hasHooks);
    getRefusingQueue();
    _policy = policy;
    _process.store(ThreadLogSystem::getProcess(), std::memory_order_relaxed);
    _isFailing.store(false, std::memory_order_relaxed);
    _seen = _made.load(std::memory_order_relaxed) - 1;  // queues of an earlier log are to be registered again
    setStopped(false);
    // model: tests/models/publish.pml.
    _isRunning.store(true, std::memory_order_release);
    try {
        _outputs.open();
        startReader();
    } catch (...) {
        _isRunning.store(false, std::memory_order_release);
        _outputs.close();
        setStopped(true);
        throw;
    }
}

/// Under the lock that threads at their end take: each of them sees the queue as one of the stop, or as its own to delete.
void ThreadLogEngine::setStopped(bool isStopped)
{
    const Reading reading(*this);
    _isStopped = isStopped;
}

/// The thread is nobody's but ours: signals for the program go to the program's threads.
/// Also called in a child of `fork`, by the first thread that logs there.
void ThreadLogEngine::startReader()
{
    const ThreadLogSystem::SignalsBlocked blocked;
    _thread = std::thread([this] { runReader(); });
}

/// The reader's thread ends first, so that what it leaves is written here, and whoever waits for room gives up.
void ThreadLogEngine::stop()
{
    _isRunning.store(false);
    wakeReader();
    if (_thread.joinable())
        _thread.join();
    {
        const Reading reading(*this);
        if (_isForked.exchange(false))
            forgetParent();
        drain();
    }
    tellWaiting();
    const Reading reading(*this);
    drain();
    ThreadLogWriters::forEach([](ThreadLogWriter& writer) {
        if (LgRegistry* const registry = LgLog::getRegistry())
            registry->deregisterQueue(&writer.getQueue());
        writer.setRegistered(false);
    });
    _isStopped = true;
    collectFinished();
    _outputs.close();
}

/// At the end of a program's main(), or behind it.
void ThreadLogEngine::stopAtExit() noexcept
{
    // Behind a crash all is written, and the reader is held for good.
    if (!isRunning() || _isForked.load() || _holds.load() != 0 || !tryToRead())
        return;
    LgLog::setLoggerActivation(false);
    _lineThread.store(ThreadLogSystem::getThread(), std::memory_order_relaxed);
    drain();
    _readMutex.unlock();
}

/// Called for each message. A thread's first one makes what it needs; later ones cost two loads.
LgQueue* ThreadLogEngine::getQueueOfThread()
{
    if (ThreadLogWriter* const writer = ThreadLogSystem::getWriterOfThread()) [[likely]]
        return writer->getCurrent();
    ThreadLogWriter* const writer = get().makeWriter();
    return writer != nullptr ? writer->getCurrent() : &getRefusingQueue();
}

/// A thread that traces will log the line, so it gets its queue at once.
Trace* ThreadLogEngine::getTraceOfThread()
{
    ThreadLogWriter* writer = ThreadLogSystem::getWriterOfThread();
    if (writer == nullptr)
        writer = get().makeWriter();
    return writer != nullptr ? &writer->getTrace() : nullptr;
}

/// Null without memory, which a message must not throw: its site is in the middle of a line. It is told once for the process.
ThreadLogWriter* ThreadLogEngine::makeWriter() noexcept
{
    if (!provideReader()) {
        static std::atomic<std::uint64_t> toldIn = 0;  // the process
        if (toldIn.exchange(ThreadLogSystem::getProcess()) != ThreadLogSystem::getProcess())
            tell("this process can't start the thread that writes: its messages are lost");
        return nullptr;
    }
    ThreadLogWriter* writer = takeInherited();
    if (writer == nullptr)
        writer = ThreadLogWriter::create(_threads.fetch_add(1, std::memory_order_relaxed) + 1);
    // Also for one that is ended at once: the registry must have it before the reader can delete it.
    if (writer != nullptr)
        _made.fetch_add(1, std::memory_order_release);
    if (writer == nullptr || !ThreadLogSystem::setWriterOfThread(writer)) {
        static std::atomic<bool> isTold = false;
        if (!isTold.exchange(true))
            tell("no memory for a thread's queue: its messages are lost");
        if (writer != nullptr)
            endWriter(*writer);
        return nullptr;
    }
    if (ThreadLogCrash::isInstalled())
        ThreadLogSystem::provideSignalStack();
    return writer;
}

/// The writer that the forking thread had: its trace and its guards may be in use further up the stack. Null for another thread.
ThreadLogWriter* ThreadLogEngine::takeInherited() noexcept
{
    return _inheritor == ThreadLogSystem::getThread() ? std::exchange(_inherited, nullptr) : nullptr;
}

/// In a child of `fork` the reader's thread is missing until the first message. False if there can be none.
// model: tests/models/once.pml.
bool ThreadLogEngine::provideReader() noexcept
{
    if (!_isForked.load(std::memory_order_acquire))
        return true;
    const std::lock_guard guard(_threadMutex);
    if (!_isForked.load(std::memory_order_relaxed))
        return true;
    if (!_isForkClean)
        return false;
    try {
        forgetParent();
        _process.store(ThreadLogSystem::getProcess(), std::memory_order_relaxed);
        startReader();
    } catch (std::exception const&) {
        return false;
    }
    _isForked.store(false, std::memory_order_release);
    return true;
}

/// The parent's queues in the memory of its child: the parent writes what they hold.
void ThreadLogEngine::forgetParent() noexcept
{
    ThreadLogWriters::forEach([this](ThreadLogWriter& writer) {
        if (LgRegistry* const registry = LgLog::getRegistry())
            registry->deregisterQueue(&writer.getQueue());
        if (&writer == _inherited)
            writer.discardAll();
        else
            delete &writer.getQueue();
    });
}

/// Woken even if nothing is in the queue: the reader frees it then, and not when the next message comes.
///
/// Windows calls this under a lock of its own, which a thread that starts wants, too, while it holds the loader's. So nothing here
/// may wait for somebody who needs the loader: who holds _readMutex doesn't, and the reader is woken without a lock.
void ThreadLogEngine::endWriter(ThreadLogWriter& writer) noexcept
{
    writer.getQueue().creatorExit();  // the writer may be gone from here on
    if (isRunning())
        wakeReader();
    else {
        const Reading reading(*this);
        collectFinished();
    }
}

/// Behind a stop: queues of threads that have ended since. Until the stop is through they belong to it, as they may hold messages
/// and be registered.
void ThreadLogEngine::collectFinished() noexcept
{
    if (!_isStopped)
        return;
    ThreadLogWriters::forEach([](ThreadLogWriter& writer) {
        if (!writer.getQueue().isCreatorAlive())
            delete &writer.getQueue();
    });
}

/// Some lines at a time under the lock. A mutex isn't fair: without a look at who else wants it, a busy reader would have it again
/// before anybody else wakes up.
void ThreadLogEngine::runReader() noexcept
{
    ThreadLogSystem::nameThread();
    while (isRunning()) {
        bool hasWritten = false;
        for (bool isMore = true; isMore && isRunning();) {
            while (_others.load(std::memory_order_relaxed) != 0)
                std::this_thread::yield();
            {
                const std::lock_guard guard(_readMutex);
                _lineThread.store(ThreadLogSystem::getThread(), std::memory_order_relaxed);
                isMore = writeUpTo(batch);
                hasWritten = hasWritten || isMore || _hasWritten;
            }
            tellWaiting();
        }
        if (isRunning())
            rest(hasWritten);
    }
}

/// Writes all that is there. Lines that can't be written now stay in their queues.
void ThreadLogEngine::drain() noexcept
{
    while (writeUpTo(batch))
        ;
}

/// False once the queues are empty, or if nothing can be written. A lock whose holder has died fails once on Windows and works
/// again, so a failure is tried once more.
bool ThreadLogEngine::writeUpTo(unsigned count) noexcept
{
    _hasWritten = false;
    Reason reason = "";
    for (int tries = 0; tries < 2; ++tries)
        try {
            errno = 0;
            unsigned written = 0;
            while (written < count && writeOne())
                ++written;
            _hasWritten = written != 0;
            if (_hasWritten)
                _outputs.tellFailures(errno);
            _isFailing.store(false, std::memory_order_relaxed);
            return written == count;
        } catch (std::exception const& failure) {
            std::snprintf(reason, sizeof reason, "%s", failure.what());
        }
    if (!_isFailing.exchange(true))
        tell(reason);
    return false;
}

/// A fresh look for queues each time: a message in a new one may be earlier than the next one in another.
bool ThreadLogEngine::writeOne()
{
    registerNewQueues();
    const InLine line(*this);
    return _reader.flushEarliest();
}

/// Sequentially consistent, here and in holdReader(): either the handler sees the line, or this sees that it is held.
// model: tests/models/hold.pml.
void ThreadLogEngine::enterLine()
{
    _isInLine.store(true);
    while (_holds.load() != 0) {
        _isInLine.store(false);
        waitForHandler();
        _isInLine.store(true);
    }
}

// model: tests/models/hold.pml.
void ThreadLogEngine::leaveLine() noexcept
{
    _isInLine.store(false, std::memory_order_release);
}

/// Until no queue was made meanwhile: the walk could miss a queue and find one that was made behind it, and a message of that
/// one would come out before one that it follows.
void ThreadLogEngine::registerNewQueues()
{
    // Acquire: the writers that were counted are there.
    // model: tests/models/writers.pml.
    for (unsigned made = _made.load(std::memory_order_acquire); made != _seen;
         made = _made.load(std::memory_order_acquire)) {
        ThreadLogWriters::forEach([](ThreadLogWriter& writer) {
            if (writer.isRegistered())
                return;
            LgLog::getRegistry()->registerQueue(&writer.getQueue());
            writer.setRegistered(true);
        });
        _seen = made;
    }
}

/// Also for a thread that has ended: its queue is to be freed.
bool ThreadLogEngine::isAnythingToDo()
{
    bool isAny = _made.load(std::memory_order_acquire) != _seen;
    ThreadLogWriters::forEach([&isAny](ThreadLogWriter& writer) {
        isAny = isAny || !writer.getQueue().isCreatorAlive() || !writer.getQueue().isEmpty();
    });
    return isAny;
}

/// A doze behind messages; a sleep if none came during the last one.
// model: tests/models/sleep.pml.
void ThreadLogEngine::rest(bool hasWritten)
{
    std::chrono::milliseconds atMost(0);  // for ever
    if (_isFailing.load(std::memory_order_relaxed))
        atMost = aLook;
    else if (hasWritten && _policy.doze.count() != 0)
        atMost = _policy.doze;
    _sleep.store(atMost.count() != 0 ? Sleep::Dozing : Sleep::Asleep);
    // What was added before a writer could see that is seen here; but a reader that can't write has seen it already.
    if (!ThreadLogSystem::fenceAllThreads() && (atMost.count() == 0 || atMost > withoutFence))
        atMost = withoutFence;
    {
        const std::lock_guard guard(_readMutex);
        if (!_isRunning.load() || (!_isFailing.load(std::memory_order_relaxed) && isAnythingToDo()))
            _sleep.store(Sleep::Awake);
    }
    ThreadLogSystem::sleepUntil(isAwake, atMost);
    _sleep.store(Sleep::Awake);
}

/// When the reader's sleep ends.
bool ThreadLogEngine::isAwake()
{
    return _sleep.load() == Sleep::Awake || !get()._isRunning.load();
}

/// Asleep, the reader is woken by any message, and then writes whatever comes for a while. Dozing, it will look soon by itself.
void ThreadLogEngine::messageAdded(LgTypes::Level level, bool isFillingUp)
{
    if (_sleep.load(std::memory_order_relaxed) == Sleep::Asleep || isFillingUp || _policy.isUrgent(level))
        wakeReader();
}

void ThreadLogEngine::wakeReader()
{
    if (_sleep.exchange(Sleep::Awake) != Sleep::Awake)
        ThreadLogSystem::wakeSleeper();
}

/// The addition of nothing is what orders this behind the removal of messages: see waitUntil().
///
/// Never under _readMutex: a thread that waits for room looks at the clock under _roomMutex, which on Windows may need the loader's
/// lock, and a thread's end must not come to wait for that one (see endWriter()).
// model: tests/models/room.pml.
void ThreadLogEngine::tellWaiting()
{
    if (_waiting.fetch_add(0, std::memory_order_acq_rel) == 0)
        return;
    _roomMutex.lock();
    _roomMutex.unlock();
    _room.notify_all();
}

/// By time, as messages go on coming: all that were accepted before carry an earlier stamp.
void ThreadLogEngine::flush()
{
    if (!isRunning() || _isForked.load(std::memory_order_acquire))
        return;  // nothing of this process's own is there
    const std::uint64_t now = HwCounter::timeStamp();
    const auto isBefore = [now] {
        bool isAny = false;
        ThreadLogWriters::forEach([&isAny, now](ThreadLogWriter& writer) {
            LgQueue const& queue = writer.getQueue();
            isAny = isAny || (!queue.isEmpty() && queue.readEntry().getTimeStamp() <= now);
        });
        return isAny;
    };
    {
        const Reading reading(*this);
        errno = 0;
        while (isBefore() && writeOne())
            ;
        _outputs.tellFailures(errno);
    }
    tellWaiting();
}

/// What was accepted before belongs to the files before.
bool ThreadLogEngine::reopen()
{
    flush();
    const Reading reading(*this);
    return !isRunning() || _outputs.reopen();
}

/// Without end for a reader that waits for what the crashed thread holds, so not for long: see threadlogcrash.cpp for what then.
bool ThreadLogEngine::holdReader() noexcept
{
    _holds.fetch_add(1);
    if (_isInLine.load() && _lineThread.load(std::memory_order_relaxed) == ThreadLogSystem::getThread())
        return false;
    return ThreadLogSystem::waitBriefly([this] { return !_isInLine.load(); });
}

/// Before the signal goes on: the program's own handler may save it, and its log goes on then.
void ThreadLogEngine::releaseReader() noexcept
{
    _holds.fetch_sub(1);
}

/// In small sleeps, as nobody could signal this: the handler may do nothing that takes a lock.
void ThreadLogEngine::waitForHandler() const
{
    while (_holds.load() != 0)
        ThreadLogSystem::pause();
}

/// False in a child of `fork` that hasn't logged: what its queues seem to hold is its parent's.
bool ThreadLogEngine::isOwner() const
{
    return _process.load(std::memory_order_relaxed) == ThreadLogSystem::getProcess();
}

/// Gives up after two seconds.
bool ThreadLogEngine::tryToRead() noexcept
{
    _others.fetch_add(1, std::memory_order_relaxed);
    const bool isLocked = ThreadLogSystem::waitBriefly([this] { return _readMutex.try_lock(); });
    _others.fetch_sub(1, std::memory_order_relaxed);
    return isLocked;
}

/// A reader that can't finish its line, as its pipe is full, must not hold up a `fork` for ever: the child then never logs.
void ThreadLogEngine::beforeFork() noexcept
{
    if (tryToRead())
        holdsForFork = true;
}

/// The parent was only held up; its reader goes on with the next batch.
void ThreadLogEngine::afterForkInParent() noexcept
{
    if (std::exchange(holdsForFork, false))
        _readMutex.unlock();
}

/// Of all threads only this one is left. Locks that others held stay held for ever, so they are made anew, in place; so is what
/// stands for the reader's thread.
void ThreadLogEngine::afterForkInChild() noexcept
{
    _isForkClean = std::exchange(holdsForFork, false);
    new (&_readMutex) std::mutex;
    ThreadLogSystem::forgetSleeper();
    new (&_roomMutex) std::mutex;
    new (&_room) std::condition_variable;
    new (&_threadMutex) std::mutex;
    new (&_thread) std::thread;
    _sleep.store(Sleep::Awake);
    _waiting.store(0);
    _others.store(0);
    _holds.store(0);
    _isForked.store(isRunning());
    // In a child's child, too, whose parent hasn't logged: its writer is still the one from the first fork.
    if (ThreadLogWriter* const writer = ThreadLogSystem::getWriterOfThread())
        _inherited = writer;
    _inheritor = ThreadLogSystem::getThread();
    ThreadLogSystem::setWriterOfThread(nullptr);
}

}  // namespace Vn
