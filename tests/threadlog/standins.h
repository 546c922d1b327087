// Stands in for calls of the system, in this program and in the libraries that it uses: for what a test can't bring about
// otherwise, or would have to wait for. Not under the thread sanitizer, which stands there itself.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <optional>
#include <string_view>

namespace VnTest::StandIns
{

/// Asked for each write() of the process, in the thread that writes. What it returns is the call's result; without a value the
/// call is made.
using Write = std::optional<::ssize_t> (*)(int file, std::string_view text);
extern std::atomic<Write> onWrite;

/// Writes past onWrite.
::ssize_t writeItself(int file, std::string_view text);

/// How often a thread has paused: each time that something waits in a crash is one.
extern std::atomic<int> pauses;

/// Seconds that all clocks but the time of day are ahead.
extern std::atomic<long> clockAhead;

/// Milliseconds that all calls of poll() together might have waited, if `areCounted`; they then don't wait.
extern std::atomic<bool> arePollsCounted;
extern std::atomic<long> polled;

/// The error of the next dup3(), and of each opendir(); 0: the call is made.
extern std::atomic<int> dup3Error;
extern std::atomic<int> opendirError;

/// Whether the system knows no fences for all threads. Waits with a limit then end at once.
extern std::atomic<bool> hasNoFence;

/// @{
/// Waits for a condition that have begun: the limits of those with one, in milliseconds, and the number of each kind.
extern std::atomic<long> shortestWait;
extern std::atomic<long> longestWait;
extern std::atomic<int> limitedWaits;
extern std::atomic<int> endlessWaits;
/// @}

/// Threads that were woken for a condition, or would have been.
extern std::atomic<int> wakeUps;

}  // namespace VnTest::StandIns
