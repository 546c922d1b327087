#pragma once

#include <base/baseexport.h>

namespace Vn
{

class LgQueue;

/// Moves messages from the queues to the outputs, in the order of their stamps.
///
///     Vn::LgReader reader;
///     while (isRunning)
///         if (!reader.flushEarliest())
///             waitForMessages();
///     reader.flushAll();
///
/// One thread at a time flushes, through however many of these. A queue whose creator has gone is deleted once it is
/// empty; the others must live as long as anybody flushes. What LgInterProcessLock throws comes through; the message then
/// waits for the next call.
///
/// A thread may go on flushing while the logger stops and while the process ends. The line that it is writing is finished;
/// messages after the stop are taken from their queues and dropped, or only echoed.
/// Tests: tests/base/lgreadertest.cpp.
class VN_BASE_EXPORT LgReader
{
public:
    /// Whether there is something to flush; looks at all queues.
    bool eventsPending();

    /// Writes the earliest message. False if there is none.
    bool flushEarliest();

    /// Writes until there is none, those that are added meanwhile included.
    void flushAll();

private:
    void flushQueue(LgQueue* queue);
};

}  // namespace Vn
