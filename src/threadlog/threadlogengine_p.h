// Private to the sources of this library.
#pragma once

#include <threadlog/threadlogoutputs_p.h>
#include <threadlog/threadlogpolicy_p.h>

#include <base/lgreader.h>
#include <base/lgtypes.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace Vn
{

class LgQueue;
class ThreadLogWriter;
class Trace;

/// The thread that reads, and all that wakes it, stops it and waits for it. There is one, which is never destroyed:
/// threads may end, and log, behind the static objects.
///
/// At work between start() and stop(). In a child of `fork` it begins anew with the child's first message.
class ThreadLogEngine
{
public:
    static ThreadLogEngine& get();

    /// Throws std::system_error if no thread can be made.
    void start(ThreadLogPolicy const& policy);

    /// Writes what is there, and ends the thread.
    void stop();

    /// What a program's end calls that didn't destroy its log. Doesn't wait for a thread that is no more.
    void stopAtExit() noexcept;

    // model: tests/models/publish.pml.
    bool isRunning() const { return _isRunning.load(std::memory_order_acquire); }

    /// The calling thread's queue; the queue function of the logger.
    static LgQueue* getQueueOfThread();

    /// The calling thread's trace; null without memory for one.
    static Trace* getTraceOfThread();

    /// A thread ends: its queue is the reader's from now on, which deletes it once it is empty.
    void endWriter(ThreadLogWriter& writer) noexcept;

    void flush();
    bool reopen();

    // For writers.

    /// Relaxed: see ThreadLogSystem::fenceAllThreads() for what makes that enough.
    static bool isReaderAsleep() { return _sleep.load(std::memory_order_relaxed) != Sleep::Awake; }

    /// Wakes the reader, if the message is worth it.
    void messageAdded(LgTypes::Level level, bool isFillingUp);

    /// Whether messages of that level wait for room.
    bool isWaiting(LgTypes::Level level) const { return _policy.isWaiting(level); }

    /// Blocks until the reader has made `hasRoom` true; not while nobody reads or nothing can be written.
    template <class HasRoom>
    void waitUntil(HasRoom const& hasRoom)
    {
        if (hasRoom())
            return;
        // Acquire and release, with the addition in tellWaiting(): one of the two sides sees the other, so that either the
        // room is seen here or the waiting there.
        // model: tests/models/room.pml.
        _waiting.fetch_add(1, std::memory_order_acq_rel);
        std::unique_lock guard(_roomMutex);
        while (!hasRoom() && isRunning() && !_isFailing.load(std::memory_order_relaxed)) {
            wakeReader();  // each time: it may have been about to doze
            _room.wait_for(guard, aLook);
        }
        guard.unlock();
        _waiting.fetch_sub(1, std::memory_order_relaxed);
    }

    // For the crash handlers, which must not wait for a lock.

    /// Keeps the reader from writing a further line, and waits for the line that it is writing. False if that takes too
    /// long, or if the calling thread is the one that is writing it.
    bool holdReader() noexcept;
    void releaseReader() noexcept;

    /// Whatever handlers have held it: the process goes on.
    void releaseReaderFromAll() noexcept { _holds.store(0); }

    /// Until releaseReader(); not in a handler.
    void waitForHandler() const;

    /// Whether the messages in the queues are this process's own.
    bool isOwner() const;

    ThreadLogOutputs& getOutputs() { return _outputs; }

    // For `fork`.

    void beforeFork() noexcept;
    void afterForkInParent() noexcept;
    void afterForkInChild() noexcept;

private:
    enum class Sleep
    {
        Awake,
        Dozing,  ///< for a moment: only messages that are worth it wake the reader
        Asleep   ///< until any message wakes it
    };

    class InLine;
    class Reading;

    ThreadLogEngine() = default;

    ThreadLogWriter* makeWriter() noexcept;
    ThreadLogWriter* takeInherited() noexcept;
    void startReader();
    void setStopped(bool isStopped);
    bool provideReader() noexcept;
    void forgetParent() noexcept;
    void collectFinished() noexcept;
    void runReader() noexcept;
    void rest(bool hasWritten);
    static bool isAwake();
    void wakeReader();
    bool isAnythingToDo();
    bool tryToRead() noexcept;
    void drain() noexcept;
    bool writeUpTo(unsigned count) noexcept;
    bool writeOne();
    void enterLine();
    void leaveLine() noexcept;
    void registerNewQueues();
    void tellWaiting();

    static constexpr std::chrono::seconds aLook{1};  ///< how soon what nobody tells is seen
    static constexpr std::chrono::milliseconds withoutFence{
        100};                              ///< the same, where a writer's look may come too early
    static constexpr unsigned batch = 64;  ///< lines until others get a turn

    static std::atomic<Sleep> _sleep;

    ThreadLogPolicy _policy;
    ThreadLogOutputs _outputs;
    LgReader _reader;
    std::atomic<bool> _isRunning = false;
    std::atomic<bool> _isFailing = false;  ///< nothing can be written: the inter-process lock fails
    std::atomic<unsigned> _threads = 0;    ///< the number of the last one
    std::atomic<unsigned> _made = 0;       ///< queues so far
    unsigned _seen = 0;                    ///< how many of these the registry has got
    bool _hasWritten = false;              ///< by the last writeUpTo()
    bool _isStopped = true;  ///< no start and no stop is under way, and nobody reads; under _readMutex

    /// Held by whoever reads the queues; never while the reader sleeps.
    std::mutex _readMutex;
    std::atomic<int> _others = 0;  ///< threads that want it

    std::mutex _roomMutex;
    std::condition_variable _room;
    std::atomic<int> _waiting = 0;

    std::mutex _threadMutex;  ///< for making the thread in a child
    std::thread _thread;

    // What a crash handler looks at.
    std::atomic<int> _holds = 0;  ///< handlers that keep the reader at rest
    std::atomic<bool> _isInLine = false;
    std::atomic<std::uint64_t> _lineThread = 0;  ///< the thread that is in a line
    std::atomic<std::uint64_t> _process = 0;     ///< whose messages the queues hold

    bool _isForkClean = false;  ///< the queues were at rest when the process was forked
    ThreadLogWriter* _inherited =
        nullptr;  ///< of the thread that has forked, in its child, until its first message
    std::uint64_t _inheritor = 0;
    std::atomic<bool> _isForked = false;
};

}  // namespace Vn
