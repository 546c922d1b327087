// workers: threads that log and trace. Its page is docs/logging.md.
#include <base/ininitmgr.h>
#include <base/lglog.h>
#include <base/lgtext.h>
#include <base/trace.h>
#include <threadlog/threadlog.h>

#include <stdexcept>
#include <string>
#include <thread>

static Vn::TraceLevel& level = *Vn::Trace::registerLevel("Workers", __FILE__);

static void work(Vn::LgMinorGroup group, std::string const& task)
{
    VN_TRACE_ENTRY(level, "work");
    VN_TRACE(level, "on " << task);
    VN_LOG(group, Vn::LgTypes::Informational, "begins " << task);
    try {
        if (task == "dust")
            throw std::runtime_error("no broom");
    } catch (std::exception const& failure) {
        VN_LOG(group, Vn::LgTypes::Warning, "skips " << task << ": " << failure);
    }
}

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Vn::ThreadLog log;
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Workshop"), "Worker");
    // One after the other, so that this program's output is the same each time.
    for (char const* const task : {"paint", "dust"})
        std::thread(work, group, task).join();
}
