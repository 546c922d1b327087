#pragma once

#include <base/lglog.h>
#include <base/trace.h>

#include <atomic>
#include <mutex>
#include <thread>

/// What a program with threads puts around the logger: a queue for each thread, a registry that locks, an observer that
/// wakes the reader and holds back a writer without space, and one thread that reads.
///
///     Vn::InInitGuard guard(argc, argv);
///     ThreadLog log;                      // from here on messages of all threads go to the outputs
///     std::thread worker([] {
///         const ThreadLog::Thread thread; // gives its queue back when the thread ends
///         VN_LOG(group, Vn::LgTypes::Warning, "text");
///     });
///     worker.join();                      // threads that log are over before the log is
///
/// Take these two files into your own program and change what you like.
class ThreadLog
{
public:
    ThreadLog();

    /// Writes what is left.
    ~ThreadLog();

    ThreadLog(ThreadLog const&) = delete;
    ThreadLog& operator=(ThreadLog const&) = delete;

    /// What a thread has of its own while it logs and traces. A thread without one has a queue as well, which stays to
    /// the log's end, and shares a depth of trace with others of its kind.
    ///
    /// An object in the thread's function and not a thread-local one: on Windows the compiler frees the memory of
    /// thread-local objects before it destroys them.
    class Thread
    {
    public:
        Thread();
        ~Thread();

        Thread(Thread const&) = delete;
        Thread& operator=(Thread const&) = delete;

        Vn::Trace trace;
    };

    /// Holds the calling thread back until its queue takes a message of `size` characters. A thread that calls this
    /// before it logs loses nothing, unless the reader can't write, which is told on the error stream.
    static void waitForSpace(int size) { Vn::LgLog::getQueue().waitForSpace(size); }

private:
    void read();

    std::atomic<bool> _isEnding = false;
    std::thread _reader;
};

/// A registry for threads that come and go while the reader walks.
class LockingRegistry : public Vn::LgRegistry
{
public:
    void registerQueue(Vn::LgQueue* queue) override;
    void deregisterQueue(Vn::LgQueue* queue) override;
    Vn::List<Vn::LgQueue*> getQueueList() const override;

private:
    mutable std::mutex _mutex;
    Vn::LgSimpleRegistry _queues;
};

/// Trace with a depth for each thread, written into the log; its lines are of the level "Tracing".
class ThreadTraceManager : public Vn::TraceManager
{
public:
    ThreadTraceManager() : TraceManager(1) {}

    Vn::Trace& getTrace() override;
    void print(char const* text) const override;
};
