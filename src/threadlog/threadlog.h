#pragma once

#include <threadlog/threadlogexport.h>

#include <base/incontextalias.h>
#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/invariable.h>

namespace VnInit
{
class threadlog
{};
}  // namespace VnInit

/// The thread layer of the log. Starts behind the whole of libVNbase; a package that logs in its hooks needs no
/// dependency on it.
template <>
class VN_THREADLOG_EXPORT Vn::InInit<VnInit::threadlog> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Registers the build information of this library.
    void performInitialize() override;

    /// Ends a ThreadLog that still exists, as its destructor would: its outputs are about to be closed.
    void performFinalize() override;
};

namespace Vn
{

/// Writes what all threads log, in a thread of its own. One line in `main` is all that a program needs:
///
///     Vn::InInitGuard guard(argc, argv);
///     Vn::ThreadLog log;                              // from here on messages go to the outputs
///     log.installCrashHandlers();                     // and those before a crash as well
///     std::thread([] { VN_LOG(group, Vn::LgTypes::Warning, "text"); }).join();
///
/// While it exists, each thread that logs or traces has a queue of its own, numbered from 1 on, from its first message to
/// its end; lines of trace go the same way, with a depth for each thread. A queue takes 1,022 messages and 32,766
/// characters. What finds no room waits or is dropped, by level; what was dropped is counted in the log.
///
/// Three settings, each with a variable; a ThreadLogOptions gives the first two an option as well:
///
///     setting          variable            default
///     threadlog.wait   VN_THREADLOG_WAIT   Internal Error,Fatal Error,Error   levels that wait for room; "all", "none"
///     threadlog.flush  VN_THREADLOG_FLUSH  Error                              from this level on written at once; "none"
///     threadlog.doze   VN_THREADLOG_DOZE   1                                  ms that other messages may rest, up to an hour
///
/// Threads: any thread may call a member function while the object exists; threads that log should end before it does. The
/// object's own thread wakes up only for messages, and takes no signals of the program's. Ownership: one object at a time,
/// made and destroyed between the start and the stop of the packages; meanwhile nobody else reads, registers queues, or calls
/// LgLog::init() or LgLog::destroy(). A site asks LgLog::getQueue() for each message, as VN_LOG does, and keeps none.
/// A child of `fork` that logs gets a thread and queues of its own, unless the parent's reader was stuck in a line for two seconds
/// when it was forked: its messages are then lost, and that is told. Messages of the parent stay the parent's, which writes them if
/// it doesn't end by `_exit` itself. The child
/// calls flush() before `_exit` and before it executes another program, which write nothing. A program that calls `exit`
/// while the object exists loses nothing on Linux; on Windows it calls flush() before.
/// Edges: a message of up to 4,096 characters whose level waits is never cut. A message of a thread for which there is no
/// memory is lost, and that is told. Once there was an object the library isn't unloaded any more, whoever unloads a plug-in that
/// needs it: threads that have logged give their queues back when they end.
/// Tests: tests/threadlog/threadlogtest.cpp.
class VN_THREADLOG_EXPORT ThreadLog
{
public:
    /// Takes over the queue function and the trace, activates the logger and starts the thread.
    ///
    ///     before the package `threadlog` has started  ->  throws ExInternalError
    ///     while another one exists                    ->  throws ExInternalError
    ///     no thread can be made                       ->  throws std::system_error; nothing has changed
    ///     an output that can't be opened              ->  one line on standard error, with its path and the reason
    ///     a setting that can't be read                ->  one line on standard error; its default holds. The doze is a number
    ///                                                     as InVariable<int> reads it, and is kept within its limits
    ThreadLog();

    /// Writes what is queued, and puts the library's own queue function and trace back. Later messages go to standard output. Nothing is left
    /// to do behind the stop of the packages.
    ~ThreadLog();

    ThreadLog(ThreadLog const&) = delete;
    ThreadLog& operator=(ThreadLog const&) = delete;

    /// Writes every message that a queue accepted before the call, in the calling thread. Throws what the outputs throw:
    /// ExSysErrorWindows if the inter-process lock fails.
    void flush();

    /// Opens the files anew, by their names: call it when a log was moved away. Each new file begins with the banner of
    /// the run. Messages that were accepted before go to the files before.
    ///
    /// False if a file can't be opened, or couldn't be at the start: that one stays as it is, and its path and the reason go to
    /// standard error. On Windows an open file can't be moved, so there is nothing to do, and the result is true.
    bool reopen();

    /// From now on a crash writes every message that a queue had accepted before it, and then goes its usual way: to the
    /// handler before, with its core dump and its exit code. If the reader itself crashes within a line, the message that it
    /// had in its hands may be lost; it is then counted in its place.
    ///
    ///     Linux    SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL and std::terminate; a stack overflow as well, in threads whose
    ///              first message comes behind this call and in the calling one
    ///     Windows  exceptions that nobody handles, abort() and std::terminate
    ///
    /// Lines are written straight to the files, without the inter-process lock. Undone by the destructor.
    void installCrashHandlers();
};

/// Options of the command line for two settings of ThreadLog, with letters that the program chooses. A static object:
///
///     const Vn::ThreadLogOptions options("w:", "f:");    // -w "Error,Warning" -f Warning
///
/// The option beats the variable. It is a setting of its own, "threadlog.wait.option" or "threadlog.flush.option", and --settings
/// lists both. Throws InEx::ExContextAliasAlreadyDefined for a letter that is in use, and
/// InEx::ExHandleAlreadyInUse for a second object.
/// Tests: tests/threadlog/threadlogtest.cpp.
class VN_THREADLOG_EXPORT ThreadLogOptions
{
public:
    /// Each key is a letter and a colon, as InContextAlias takes it.
    ThreadLogOptions(char const* waitKey, char const* flushKey);
    ~ThreadLogOptions();

    ThreadLogOptions(ThreadLogOptions const&) = delete;
    ThreadLogOptions& operator=(ThreadLogOptions const&) = delete;

private:
    InVariable<char const*> _wait;
    InVariable<char const*> _flush;
};

/// Address and text that identify this library among the build information of the process.
extern VN_THREADLOG_EXPORT char const threadLogApiName[];

}  // namespace Vn
