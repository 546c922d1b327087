// What programs see of the thread layer: its package, its settings, its build information, and the object that stands for it.
//
// The object holds nothing. What it starts belongs to the process, since threads may log and end behind any object:
// ThreadLogEngine has it, and the constructor and the destructor only switch it on and off. The order of switching matters. On:
// first the engine, then the queue function, then the logger, so that the first message that goes to a queue finds a reader. Off:
// the other way round, and the engine last, so that it writes what came in between.
//
// The package ends a log that still exists when it stops, because it stops before the logger closes its files.
//
// Two settings have an option besides their variable, but only if the program gives a letter to it (ThreadLogOptions): a
// library that took letters for itself would break each program that has them already. A variable's sources are fixed when it
// is made, so the options are variables of their own, which are asked first.
#include <threadlog/threadlog.h>

#include <threadlog/threadlogcrash_p.h>
#include <threadlog/threadlogengine_p.h>
#include <threadlog/threadlogpolicy_p.h>

#include <base/dbgbuildinfo.h>
#include <base/dbgbuildinfoutil.h>
#include <base/exinternalerror.h>
#include <base/lglog.h>
#include <base/lgtrace.h>
#include <base/osterminal.h>
#include <base/trace.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

VN_DEFINE_PACKAGE(threadlog, VnInit::base);

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/threadlog/threadlog";

InInit<VnInit::threadlog> package;

using Option = InContextAlias<InInitArg, 1>;
using Variable = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;
using Override = InContextAlias<InInitOvr, 0>;

constexpr char defaultWait[] = "Internal Error,Fatal Error,Error";
constexpr char defaultFlush[] = "Error";
constexpr char waitText[] = "levels whose messages wait for room in a full queue, with commas; all, none";
constexpr char flushText[] = "level from which on messages are written at once; none";
constexpr char dozeText[] = "milliseconds that other messages may rest, up to an hour";

InVariable<char const*> waitSetting("threadlog.wait", package, Variable("VN_THREADLOG_WAIT", waitText),
                                    Default(defaultWait, defaultWait));
InVariable<char const*> flushSetting("threadlog.flush", package, Variable("VN_THREADLOG_FLUSH", flushText),
                                     Default(defaultFlush, defaultFlush));
InVariable<int> dozeSetting("threadlog.doze", package, Variable("VN_THREADLOG_DOZE", dozeText), Default("1", "1"));

/// What the option says, unless it wasn't given or an override beats it.
char const* getText(InVariable<char const*> const& setting, char const* optionHandle)
{
    auto const* const option =
        dynamic_cast<InVariable<char const*> const*>(InVariableBase::queryViaHandle(optionHandle));
    const bool isOverridden = std::strcmp(setting.initSource(), Override::initSourceString()) == 0;
    return option != nullptr && option->isValid() && !isOverridden ? option->getValue() : setting.getValue();
}

/// A mistyped setting must not keep a program from starting, nor go by unseen.
void tellUnreadable(char const* setting, std::string const& text, std::string const& fallback)
{
    std::cerr << std::string("log: ") + setting + ": \"" + OsTerminal::shown(text) + "\" can't be read; it is \"" +
                     fallback + "\"\n";
}

ThreadLogPolicy readPolicy()
{
    ThreadLogPolicy policy;
    char const* const wait = getText(waitSetting, "threadlog.wait.option");
    if (const auto levels = ThreadLogPolicy::parseLevels(wait))
        policy.waiting = *levels;
    else
        tellUnreadable("threadlog.wait", wait, defaultWait);
    char const* const flush = getText(flushSetting, "threadlog.flush.option");
    if (const auto threshold = ThreadLogPolicy::parseThreshold(flush))
        policy.urgent = *threshold;
    else
        tellUnreadable("threadlog.flush", flush, defaultFlush);
    const int doze = dozeSetting.getValue();
    policy.doze = std::chrono::milliseconds(std::clamp(doze, 0, 3600000));
    return policy;
}

/// Trace with a depth for each thread, written into the log. Of priority 1, one above the library's own manager; a program's own
/// of a higher one keeps its place.
class ThreadTraceManager : public TraceManager
{
public:
    ThreadTraceManager() : TraceManager(1) {}

    /// A thread without memory for a trace of its own shares one; its lines are right, their depth may not be.
    Trace& getTrace() override
    {
        static Trace shared;
        Trace* const own = ThreadLogEngine::getTraceOfThread();
        return own != nullptr ? *own : shared;
    }

    void print(char const* text) const override { LgTrace::print(text); }
};

/// While a log exists. Not a member of ThreadLog, since the package may end the log; and never destroyed with the static objects,
/// since threads may still trace when a program calls exit().
auto& traces = *new std::unique_ptr<ThreadTraceManager>;

/// Gives back what a ThreadLog has taken, if there is one. The handlers go first: stop() deletes queues, which no handler
/// may walk. So a crash while stop() writes loses what is still queued.
void endLog()
{
    if (!ThreadLogEngine::get().isRunning())
        return;
    LgLog::setLoggerActivation(false);
    LgLog::setQueueFunction(nullptr);
    traces.reset();
    ThreadLogCrash::uninstall();
    ThreadLogEngine::get().stop();
}

/// As each library of the family has one: see docs/heap-and-build.md.
class BuildInfo : public DbgBuildInfo
{
public:
    char const* getApiName() const override { return threadLogApiName; }
    int getMajorVersion() const override { return VN_THREADLOG_MAJOR; }
    int getMinorVersion() const override { return VN_THREADLOG_MINOR; }
    char const* getStatus() const override { return "pre-alpha"; }
    char const* getLibraryName(bool) const override { return "libVNthreadlog"; }
    char const* getBuildStamp(bool verbose) const override
    {
        return verbose ? "Threadlog_" VN_BUILD_NUMBER : "T. " VN_BUILD_NUMBER;
    }
    char const* getBuildDate(bool) const override { return VN_BUILD_DATE; }
    char const* getBuildType(bool) const override { return VN_BUILD_TYPE; }
    char const* getBuilder(bool) const override { return VN_BUILDER; }
    char const* getExtraInfo() const override { return ""; }
};

/// Whoever loads the library by its name registers it before its package starts.
bool isAskedFor = false;
}  // namespace

char const threadLogApiName[] = "Threadlog";

void InInit<VnInit::threadlog>::performInitialize()
{
    if (!isAskedFor)
        DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo>(new BuildInfo));
}

void InInit<VnInit::threadlog>::performFinalize()
{
    endLog();
}

/// Each failure leaves things as they were: the log isn't there, and messages go to standard output as before.
ThreadLog::ThreadLog()
{
    ThreadLogEngine& engine = ThreadLogEngine::get();
    if (LgLog::getRegistry() == nullptr || !waitSetting.isValid())
        throw ExInternalError(sourceName, __LINE__, "a ThreadLog is made once the packages have started");
    if (engine.isRunning())
        throw ExInternalError(sourceName, __LINE__, "there is a ThreadLog already");
    // Made first, as the one thing here that may throw without a trace of having been there.
    auto ownTraces = std::make_unique<ThreadTraceManager>();
    engine.start(readPolicy());
    traces = std::move(ownTraces);
    LgLog::setQueueFunction(ThreadLogEngine::getQueueOfThread);
    LgLog::setLoggerActivation(true);
}

ThreadLog::~ThreadLog()
{
    endLog();
}

/// The members may be called behind the package's stop, when no log runs any more: they then do nothing.
void ThreadLog::flush()
{
    ThreadLogEngine::get().flush();
}

bool ThreadLog::reopen()
{
    return ThreadLogEngine::get().reopen();
}

void ThreadLog::installCrashHandlers()
{
    if (ThreadLogEngine::get().isRunning())
        ThreadLogCrash::install();
}

/// Declared with the library's package: they get their values when its own settings do.
ThreadLogOptions::ThreadLogOptions(char const* waitKey, char const* flushKey)
    : _wait("threadlog.wait.option", package, Option(waitKey, waitText)),
      _flush("threadlog.flush.option", package, Option(flushKey, flushText))
{}

ThreadLogOptions::~ThreadLogOptions() = default;

}  // namespace Vn

VN_BUILD_INFO_ENTRY(VN_THREADLOG_EXPORT)
{
    Vn::isAskedFor = true;
    return new Vn::BuildInfo;
}
