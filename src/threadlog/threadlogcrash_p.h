// Private to the sources of this library; partly implemented in threadlogcrashposix.cpp and threadlogcrashwindows.cpp.
#pragma once

#include <base/lgqueue.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vn
{

class ThreadLogWriter;

/// Writes what the queues hold while the process crashes.
///
/// All of it may run in a signal handler: it takes no lock, allocates nothing, and uses no stream.
class ThreadLogCrash
{
public:
    static void install();
    static void uninstall();
    static bool isInstalled();

    /// Writes each message that was accepted before the call, in the order of their times. A crash within this call returns at
    /// once; one in another thread waits until the first is done, for two seconds at most. True if the reader is at rest because
    /// of this call, until resume().
    static bool writeAll() noexcept;

    /// Lets the reader go on, behind a writeAll() that was true: the process may be saved yet.
    static void resume() noexcept;

private:
    static void writeQueues(bool isLineOpen);
    static void writeHead(LgQueue& queue);
    static void skipOpenLine(ThreadLogWriter& writer);
    static int countSpareTexts(ThreadLogWriter& writer);
    static bool isTextTaken(ThreadLogWriter& writer);
};

}  // namespace Vn
