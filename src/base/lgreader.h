#pragma once

#include <base/baseexport.h>

namespace Vn
{

class LgQueue;

/// Moves messages from the queues to the outputs, in the order of their time stamps.
///
///     Vn::LgReader reader;
///     while (isRunning)
///         if (!reader.flushEarliest())
///             waitForMessages();
///     reader.flushAll();
///
/// One thread at a time flushes, through however many readers. A queue whose creator has ended is deleted once it is
/// empty. What LgInterProcessLock throws reaches the caller; the message then waits for the next call. Without a
/// registry, so before the package `logger` starts, there is nothing to flush.
///
/// A thread may go on flushing while the logger stops and while the process ends. It finishes the line that it is writing;
/// messages after the stop are taken from their queues and dropped, or only echoed. Queues must live as long as a thread
/// flushes.
/// Tests: tests/base/lgreadertest.cpp.
class VN_BASE_EXPORT LgReader
{
public:
    /// Whether any queue holds a message. Looks at all queues; changes nothing.
    bool eventsPending();

    /// Writes one message, the earliest; false if there is none. Among equal time stamps the queue that was
    /// registered first comes first.
    bool flushEarliest();

    /// Writes until there is none, messages added meanwhile included: writers that never pause keep it running.
    void flushAll();

private:
    void flushQueue(LgQueue* queue);
};

}  // namespace Vn
