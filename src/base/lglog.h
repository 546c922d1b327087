#pragma once

#include <base/lginterprocesslock.h>
#include <base/lgqueue.h>
#include <base/lgregistry.h>
#include <base/lgtypes.h>
#include <base/objptr.h>

#include <atomic>
#include <cstdint>
#include <iostream>

namespace Vn
{

/// The outputs of the seven levels, and what stands between a message and its queue.
///
///     Vn::LgLog::setQueueFunction(getQueueOfThisThread);
///     Vn::LgLog::setLoggerActivation(true);
///     VN_LOG(group, Vn::LgTypes::Warning, "evicted " << count << " pages");    // on any thread
///     Vn::LgReader().flushAll();                                               // on one
///
/// The package `logger` calls init() and destroy(); the environment says where each level goes (docs/logging.md). Nothing
/// here empties the queues: a program does so with LgReader when it likes, and what no reader has taken when the package
/// stops is lost. What is set while other threads log reaches them a little later.
/// Tests: tests/base/lglogtest.cpp.
class VN_BASE_EXPORT LgLog
{
public:
    /// Where a level's messages go.
    struct LevelInfo
    {
        bool enabled;
        bool echo;             ///< to the standard output stream as well
        bool append;           ///< behind what the file holds
        std::ostream* output;  ///< null without a file; owned by the lowest level of the same file
        char const* fileName;  ///< null without a file; a part of the environment, or a default path
    };

    LgLog() = delete;

    /// Reads the environment, makes the log directory, opens the files and writes their banners. Throws ExInternalError
    /// if a file stands where the directory should be, ExSysErrorWindows if the inter-process lock fails.
    static void init();

    /// Writes the last banners and closes the files, once the line that a reader is writing is finished. What is left in
    /// the queues stays there.
    static void destroy();

    /// Writes where each level goes to the standard output stream.
    static void displaySetup();

    /// The calling thread's queue, as the queue function finds it.
    static LgQueue& getQueue() { return *std::atomic_ref(_queueFunction).load(std::memory_order_relaxed)(); }

    /// `function` finds the calling thread's queue, and never returns null. Null brings the first function back, which
    /// has one queue for all threads that no reader sees.
    static void setQueueFunction(LgQueue* (*function)());

    /// Whether messages go to queues, and not to the standard output stream.
    static void setLoggerActivation(bool active)
    {
        // Release, and acquire in isLoggerActive(): without them a site could find the logger active and still take the
        // queue function of before.
        _loggerActive.store(active, std::memory_order_release);
    }
    static bool isLoggerActive() { return _loggerActive.load(std::memory_order_acquire); }

    /// Whether a message goes to the standard output stream while the logger isn't active.
    static bool isInactiveOutputAllowed(LgTypes::Level level) { return level != LgTypes::Profiling; }

    static bool isLevelEchoed(LgTypes::Level level);

    /// Null if the level has no file.
    static std::ostream* getLevelOutput(LgTypes::Level level);

    // Whether lines begin with time, thread and level, and banners tell the date.
    static void enableTimeStamps();
    static void disableTimeStamps();
    static bool isTimeStampsEnabled();

    /// HwCounter::timeStamp() at init().
    static std::uint64_t getStart();

    /// Whether LgTrace waits for space in a queue.
    static void setBlockingTrace(bool blocking);
    static bool getBlockingTrace();

    /// The lock under which outputs are written; null if there is none.
    static LgInterProcessLock* getInterProcessLock();

    /// Null before init().
    static LgRegistry* getRegistry();

    /// Moves all queues to `registry` and installs it; hands back the one before. Null changes nothing, and neither does
    /// a `registry` that throws when it is given a queue. Not while a reader or another registration is at work.
    static ObjPtrRet<LgRegistry> setRegistry(ObjPtr<LgRegistry> registry);

private:
    friend class LgReader;

    static LevelInfo parseEnvVar(char const* value);

    static void readOutputs(bool hasDirectory);
    static void readSettings();
    static void openOutput(LevelInfo* level);
    static void closeOutput(LevelInfo* level);

    static LevelInfo _level[7];
    static std::atomic<bool> _loggerActive;
    static bool _blockingTrace;
    static bool _logTimeStamps;
    static std::uint64_t _start;
    static LgQueue* (*_queueFunction)();
    static ObjPtr<LgRegistry> _registry;
    static ObjPtr<LgInterProcessLock> _interprocessLock;
};

}  // namespace Vn

/// Logs a message: VN_LOG(group, Vn::LgTypes::Warning, "evicted " << count << " pages").
///
/// GROUP is an LgMinorGroup. Nothing of MESSAGE is evaluated unless the group enables LEVEL and the message has found
/// room in its queue. While the logger isn't active, the message goes to the standard output stream.
///
/// MESSAGE must not throw, and nothing in it may log through the same queue: the text of each later message of the thread
/// would come out one message late.
#define VN_LOG(GROUP, LEVEL, MESSAGE)                                                             \
    do {                                                                                          \
        Vn::LgMinorGroup const& vnLogGroup = (GROUP);                                             \
        const Vn::LgTypes::Level vnLogLevel = (LEVEL);                                            \
        if (vnLogGroup.isLevelEnabled(vnLogLevel)) {                                              \
            if (Vn::LgLog::isLoggerActive()) {                                                    \
                Vn::LgQueue& vnLogQueue = Vn::LgLog::getQueue();                                  \
                if (vnLogQueue.reserveEntry(vnLogLevel)) {                                        \
                    vnLogQueue.getStream() << vnLogGroup.getName() << ' ' << MESSAGE << Vn::ends; \
                    vnLogQueue.addEntry();                                                        \
                }                                                                                 \
            } else if (Vn::LgLog::isInactiveOutputAllowed(vnLogLevel))                            \
                std::cout << vnLogGroup.getName() << ' ' << MESSAGE << std::endl;                 \
        }                                                                                         \
    } while (false)
