// Several threads that log at once: threadlog [-t THREADS] [-n MESSAGES] [-h]. Nothing is lost, as each thread waits for
// space. Started more than once at a time with one file, VN_LOG_WARNING=+FILE, and a lock,
// VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME, the lines of all stay whole.
#include "threadlog.h"

#include <base/exbase.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>
#include <base/osutils.h>

#include <iostream>
#include <vector>

namespace VnInit
{
class threadlog
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::threadlog> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(threadlog, VnInit::base);

namespace
{
Vn::InInit<VnInit::threadlog> package;

Vn::TraceLevel& workLevel = *Vn::Trace::registerLevel("Work", __FILE__);

const Vn::InContextAlias<Vn::InInitArg, 1> threadsOption("t:", "-t THREADS: how many threads log");
const Vn::InContextAlias<Vn::InInitDef, 0> threadsDefault("4", "default");
Vn::InVariable<int> threadCount("threadlogExample.threads", package, threadsOption, threadsDefault);

const Vn::InContextAlias<Vn::InInitArg, 1> messagesOption("n:", "-n MESSAGES: how many each of them logs");
const Vn::InContextAlias<Vn::InInitDef, 0> messagesDefault("1000", "default");
Vn::InVariable<int> messageCount("threadlogExample.messages", package, messagesOption, messagesDefault);

/// The type is looked at as well.
bool isNotNegative(char const* text)
{
    return *text != '-';
}

/// One thread's messages: their number, and a text whose length changes.
void work(Vn::LgMinorGroup const& group, int thread, int messages)
{
    const ThreadLog::Thread ownQueue;
    VN_TRACE_ENTRY(workLevel, "work");
    static constexpr char text[] = "abcdefghijklmnopqrstuvwxyz";
    for (int i = 0; i < messages; ++i) {
        ThreadLog::waitForSpace(200);
        VN_LOG(group, Vn::LgTypes::Warning,
               Vn::OsUtils::getPid() << ' ' << thread << ' ' << i << ' ' << text + i % 26 << '.');
        VN_LOG(group, Vn::LgTypes::Informational, "thread " << thread << " is at " << i);
        VN_TRACE(workLevel, "message " << i);
    }
}

void runThreads()
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Example"), "Work");
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount.getValue(); ++i)
        threads.emplace_back([&group, i] { work(group, i, messageCount.getValue()); });
    for (std::thread& thread : threads)
        thread.join();
}
}  // namespace

int main(int argc, char** argv)
{
    const Vn::InUsage usage =
        Vn::InUsage("Logs from several threads at once.")
            .expect(threadCount, "a number of threads", isNotNegative)
            .expect(messageCount, "a number of messages", isNotNegative)
            .note("Where messages go, and which:\n"
                  "  VN_LOG_WARNING=FILE      a file; +FILE appends, %FILE shows them as well\n"
                  "  VN_LOG_GROUPS=Example=Informational\n"
                  "  VN_TRACE_OPTIONS=show=Work\n"
                  "  VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME   where several write to one file");
    if (auto const end = usage.handle(argc, argv))
        return *end;
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        ThreadLog log;
        const ThreadTraceManager traces;
        runThreads();
    } catch (Vn::ExBase const& failure) {
        std::cerr << "threadlog: " << failure.getReason() << '\n';
        return 1;
    }
    return 0;
}
