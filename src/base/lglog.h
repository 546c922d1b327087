#pragma once

#include <base/lginterprocesslock.h>
#include <base/lgqueue.h>
#include <base/lgregistry.h>
#include <base/lgstandardoutput.h>
#include <base/lgtypes.h>
#include <base/objptr.h>

#include <cstdint>
#include <iostream>

namespace Vn
{

class LgFile;

/// The outputs of the seven levels, and the switches between a message and its queue.
///
///     Vn::LgLog::setQueueFunction(getQueueOfThisThread);
///     Vn::LgLog::setLoggerActivation(true);
///     VN_LOG(group, Vn::LgTypes::Warning, "evicted " << count << " pages");    // on any thread
///     Vn::LgReader().flushAll();                                               // on one
///
/// The package `logger` calls init() and destroy(); the environment says where each level goes (docs/logging.md).
/// Nothing here empties the queues: the program does so with LgReader when it likes, and what no reader has taken
/// when the package stops is lost. On a full disk 64 KiB of lines wait for each file; further ones are dropped, and
/// their number is written once there is room. What waits when the program ends is lost. Members may be read and switched on any thread while others log; a change reaches
/// those a little later. init(), destroy() and setRegistry() belong to one thread. Tests: tests/base/lglogtest.cpp.
class VN_BASE_EXPORT LgLog
{
public:
    /// Where the messages of one level go.
    struct LevelInfo
    {
        /// Only shown by displaySetup(): messages of a level that isn't enabled are read and dropped, as they have
        /// no output.
        bool enabled;
        bool echo;             ///< to the standard output stream as well
        bool append;           ///< behind what the file holds
        std::ostream* output;  ///< null without a file; owned by the lowest level of the same file
        char const* fileName;  ///< null without a file; a part of the environment, or a default path
    };

    LgLog() = delete;

    /// Reads the environment, makes the log directory, opens the files and writes their banners. May be called again,
    /// and then begins anew: with a new registry, and with files of write mode emptied.
    ///
    /// A file that can't be opened makes no error: its stream has failed and takes nothing. Nor does a directory that
    /// can't be made: there are no default files then. Throws ExInternalError if a regular file stands where the
    /// directory should be, and ExSysErrorWindows if the inter-process lock fails.
    static void init();

    /// Writes the last banners and closes the files. Waits for the line that another thread is writing. What is left
    /// in the queues stays there. Throws ExSysErrorWindows if the inter-process lock fails.
    static void destroy();

    /// Prints where each level goes to standard output:
    ///
    ///     ===== Log Setup =====
    ///     Internal Error: /tmp/events.log
    ///     ...
    ///     Tracing: stdout,
    ///     Profiling: Disabled
    ///     ===== End Setup =====
    static void displaySetup();

    /// The calling thread's queue, as the queue function finds it.
    // Relaxed: isLoggerActive(), which a site asks before, acquires the function.
    static LgQueue& getQueue() { return *__atomic_load_n(&_queueFunction, __ATOMIC_RELAXED)(); }

    /// `function` finds the calling thread's queue and never returns null; it is called for each message, on the
    /// thread that logs. Null restores the library's own, which has one queue of number 0 that no reader sees: after
    /// 1,022 messages it is full and stays so.
    static void setQueueFunction(LgQueue* (*function)());

    /// @{
    /// Whether messages go to queues, and not to standard output. False at first; only the program sets it.
    static void setLoggerActivation(bool active)
    {
        // Release, and acquire in isLoggerActive(): without them a site could find the logger active and still call
        // the queue function that was installed before.
        // model: tests/models/publish.pml.
        __atomic_store_n(&_loggerActive, active, __ATOMIC_RELEASE);
    }
    static bool isLoggerActive() { return __atomic_load_n(&_loggerActive, __ATOMIC_ACQUIRE); }
    /// @}

    /// Whether a message goes to standard output while the logger isn't active: true for all but `Profiling`.
    static bool isInactiveOutputAllowed(LgTypes::Level level) { return level != LgTypes::Profiling; }

    /// Whether messages of that level go to standard output as well; false for a value that is no level.
    static bool isLevelEchoed(LgTypes::Level level);

    /// The file of that level; null without a file and for a value that is no level. `fail()` is true if it could not
    /// be opened. Owned by LgLog, until destroy() or the next init(); only the thread that reads may write to it.
    static std::ostream* getLevelOutput(LgTypes::Level level);

    /// The name of that level's file, as the environment or the default has it; null without a file and for a value that
    /// is no level. Valid until destroy() or the next init().
    static char const* getLevelFileName(LgTypes::Level level);

    /// @{
    /// Whether lines begin with time, thread and level, and banners tell the date. True at first;
    /// `VN_LOG_DISABLE_TIMESTAMPS` makes it false.
    static void enableTimeStamps();
    static void disableTimeStamps();
    static bool isTimeStampsEnabled();
    /// @}

    /// HwCounter::timeStamp() at init(), in counts; 0 before. Lines show the time since then.
    static std::uint64_t getStart();

    /// @{
    /// Whether LgTrace waits for space in a queue. False at first; `VN_BLOCKING_TRACE` makes it true.
    static void setBlockingTrace(bool blocking);
    static bool getBlockingTrace();
    /// @}

    /// The lock under which outputs are written; null if there is none. Owned by LgLog.
    static LgInterProcessLock* getInterProcessLock();

    /// All queues that the reader sees; null before init(). Owned by LgLog.
    static LgRegistry* getRegistry();

    /// Moves all queues to `registry`, installs it and returns the one before.
    ///
    ///     null                                       ->  nothing changes; returns null
    ///     a registry that throws while it is filled  ->  nothing is installed; the exception goes on
    ///
    /// Not while a reader or another registration is at work.
    static ObjPtrRet<LgRegistry> setRegistry(ObjPtr<LgRegistry> registry);

private:
    friend class LgReader;

    /// The level's file as the logger made it; null without one.
    static LgFile* getFile(LgTypes::Level level);

    static LevelInfo parseEnvVar(char const* value);

    static void readOutputs(bool hasDirectory);
    static void readSettings();
    static void openOutput(LevelInfo* level);
    static void closeOutput(LevelInfo* level);
    static void forgetOutputs();

    static LevelInfo _level[7];
    static bool _loggerActive;
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
/// MESSAGE has what LgStream takes, and with further headers much more: std::string and exceptions (lgtext.h), durations
/// (lgduration.h), times and paths (lgvalues.h), and whatever has an operator for `std::ostream` (lgstreamed.h).
///
/// MESSAGE must not throw, and nothing in it may log through the same queue: the text of each later message of the
/// thread would come out one message late. Safe on any thread whose queue is its own. Not in a
/// signal handler, which may have interrupted a message: set a flag of type `volatile std::sig_atomic_t` there, and log
/// where the program looks at it.
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
            } else if (Vn::LgLog::isInactiveOutputAllowed(vnLogLevel)) {                          \
                Vn::LgStandardOutput vnLogOutput(std::cout);                                      \
                vnLogOutput << vnLogGroup.getName() << ' ' << MESSAGE;                            \
                std::cout << std::endl;                                                           \
            }                                                                                     \
        }                                                                                         \
    } while (false)
