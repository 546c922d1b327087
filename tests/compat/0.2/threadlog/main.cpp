// Several threads that log at once: threadlog [-t THREADS] [-n MESSAGES] [-h]. Nothing is lost, as each thread waits for
// space. Started more than once at a time with one file, VN_LOG_WARNING=+FILE, and a lock,
// VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME, the lines of all stay whole.
#include "threadlog.h"

#include <base/exbase.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inoptionparser.h>
#include <base/inpackages.h>
#include <base/osutils.h>

#include <cstdlib>
#include <cstring>
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

constexpr char usage[] = "threadlog [-t THREADS] [-n MESSAGES]   4 and 1000 by default\n"
                         "Where messages go, and which:\n"
                         "  VN_LOG_WARNING=FILE      a file; +FILE appends, %FILE shows them as well\n"
                         "  VN_LOG_GROUPS=Example=Informational\n"
                         "  VN_TRACE_OPTIONS=show=Work\n"
                         "  VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME, where several write to one file\n";

struct Work
{
    int threads = 4;
    int messages = 1000;
};

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

void runThreads(Work const& all)
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Example"), "Work");
    std::vector<std::thread> threads;
    for (int i = 0; i < all.threads; ++i)
        threads.emplace_back([&group, i, &all] { work(group, i, all.messages); });
    for (std::thread& thread : threads)
        thread.join();
}

/// False if the arguments are none of ours.
bool readArguments(int argc, char** argv, Work& all)
{
    Vn::InOptionParser parser(argc, argv, "t:n:");
    for (int option = parser.getOption(); option != -1; option = parser.getOption()) {
        char const* const value = parser.getValue();
        if (value == nullptr)
            return false;
        (option == 't' ? all.threads : all.messages) = std::atoi(value);
    }
    return parser.getArgumentIndex() == argc && all.threads >= 0 && all.messages >= 0;
}
}  // namespace

int main(int argc, char** argv)
{
    Work all;
    if (argc == 2 && std::strcmp(argv[1], "-h") == 0) {
        std::cout << usage;
        return 0;
    }
    if (!readArguments(argc, argv, all)) {
        std::cerr << "threadlog: see threadlog -h\n";
        return 2;
    }
    try {
        int noArguments = 0;
        char const* const* none = nullptr;
        Vn::InInitGuard guard(noArguments, none);
        ThreadLog log;
        const ThreadTraceManager traces;
        runThreads(all);
    } catch (Vn::ExBase const& failure) {
        std::cerr << "threadlog: " << failure.getReason() << '\n';
        return 1;
    }
    return 0;
}
