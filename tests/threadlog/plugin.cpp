// A plug-in that brings the thread layer into a program which isn't linked to it.
#include <threadlog/threadlog.h>

#include <base/ininitmgr.h>
#include <base/lglog.h>

#include <memory>

#if defined(_WIN32)
#    define PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#    define PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace
{
std::unique_ptr<Vn::ThreadLog> threadLog;
}  // namespace

PLUGIN_EXPORT void openLog()
{
    threadLog = std::make_unique<Vn::ThreadLog>();
}

PLUGIN_EXPORT void logOnce()
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Test"), "Plug-in");
    VN_LOG(group, Vn::LgTypes::Warning, "from a plug-in");
}

PLUGIN_EXPORT void closeLog()
{
    threadLog.reset();
}
