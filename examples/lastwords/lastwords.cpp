#include <base/ininitmgr.h>
#include <base/inusage.h>
#include <base/lglog.h>
#include <base/lgtext.h>
#include <base/trace.h>
#include <threadlog/threadlog.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace VnInit { class lastWords {}; }
template <> class Vn::InInit<VnInit::lastWords> : public Vn::InPackageInit { VN_PACKAGE_MEMBERS(); };
VN_DEFINE_PACKAGE(lastWords, VnInit::threadlog);
static Vn::InInit<VnInit::lastWords> package;

using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;
static Vn::InVariable<std::string> name("name", package, Option("n:", "-n NAME: who speaks"), Default("Ada", ""));
static Vn::InVariable<int> count("count", package, Option("c:", "-c COUNT: how often"), Default("2", ""));
static Vn::InVariable<bool> isCrashing("crash", package, Option("x", "-x: crashes"), Default("false", ""));
static Vn::TraceLevel& level = *Vn::Trace::registerLevel("Speech", __FILE__);

static void speak(Vn::LgMinorGroup group, char const* what)
{
    VN_TRACE_ENTRY(level, "speak");
    for (int i = 1; i <= count.getValue(); ++i)
        VN_LOG(group, Vn::LgTypes::Warning, name.getValue() << ": " << what << ' ' << i);
}

int main(int argc, char** argv)
{
    if (auto const end = Vn::InUsage("Speaks in two threads, and may crash.").handle(argc, argv))
        return *end;
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Vn::ThreadLog log;
    log.installCrashHandlers();
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Speech"), "Speech");
    std::thread(speak, group, "good morning").join();
    speak(group, "good night");
    if (isCrashing.getValue())
        std::abort();
}
