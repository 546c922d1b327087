// Private to the sources of this library; implemented in threadlogsystemposix.cpp and threadlogsystemwindows.cpp.
#pragma once

#include <base/hwcounter.h>

#include <chrono>
#include <cstdint>

namespace Vn
{
class ThreadLogWriter;
}

namespace Vn::ThreadLogSystem
{

/// @{
/// The calling thread's writer, null at first. A writer that is set is handed to ThreadLogEngine::endWriter() when the
/// thread ends, behind the thread's own thread-local objects.
ThreadLogWriter* getWriterOfThread();
bool setWriterOfThread(ThreadLogWriter* writer);  ///< false if the system refuses; then it stays null
/// @}

/// @{
/// Numbers of the calling thread and of the process. Usable in a signal handler.
std::uint64_t getThread();
std::uint64_t getProcess();
/// @}

/// Names the calling thread for debuggers and process lists.
void nameThread();

/// A full memory fence in every thread of the process. So the side that runs often needs none: a writer stores its message and
/// then loads the reader's state; the reader stores its state, calls this, and then looks for messages. One of the two
/// sees the other. False if the system has no such call.
bool fenceAllThreads();

/// @{
/// The reader's sleep: until `isAwake()` is true, looked at again behind each wakeSleeper(), or for `atMost`; zero: without end. What
/// makes it true comes before wakeSleeper(). On Windows wakeSleeper() takes no lock, as a thread that ends may call it.
void sleepUntil(bool (*isAwake)(), std::chrono::milliseconds atMost);
void wakeSleeper();
void forgetSleeper();  ///< in a child of `fork`, which has none
/// @}

/// Waits for a tenth of a millisecond, on Windows for one. Usable in a signal handler.
void pause();

/// Until `isDone()`, for two seconds at most. False if that was too short. Usable in a signal handler.
template <class IsDone>
bool waitBriefly(IsDone const& isDone)
{
    const std::uint64_t start = HwCounter::timeStamp();
    while (!isDone()) {
        if (HwCounter::seconds(start, HwCounter::timeStamp()) > 2)
            return false;
        pause();
    }
    return true;
}

/// Where the system has such calls: the engine's functions around each `fork`, and its stopAtExit() when the program ends.
void installHooks();

/// While it lives, the calling thread and those that it makes are given no signals but those of a crash.
class SignalsBlocked
{
public:
    SignalsBlocked();
    ~SignalsBlocked();

    SignalsBlocked(SignalsBlocked const&) = delete;
    SignalsBlocked& operator=(SignalsBlocked const&) = delete;
};

/// Gives the calling thread a stack for signal handlers, unless it has one: without it a stack overflow finds no room for
/// its handler. Freed when the thread ends.
void provideSignalStack();

}  // namespace Vn::ThreadLogSystem
