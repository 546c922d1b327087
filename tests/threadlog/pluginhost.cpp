// Unloads a plug-in with the thread layer while a thread that has logged through it lives on. Prints whether the layer is still
// there, then what the thread does.
#include "library.h"

#include <base/ininitmgr.h>

#include <atomic>
#include <iostream>
#include <optional>
#include <thread>
#include <utility>

namespace
{
using Function = void();

void waitFor(std::atomic<bool> const& event)
{
    while (!event)
        std::this_thread::yield();
}
}  // namespace

int main(int argc, char** argv)
{
    // Before the start: the layer has settings, and these can't be declared later.
    std::optional<VnTest::Library> plugin(std::in_place, "VNtestthreadplugin");
    char const* const* arguments = argv;
    const Vn::InInitGuard guard(argc, arguments);
    plugin->find<Function>("openLog")();
    std::atomic<bool> hasLogged = false, isUnloaded = false;
    std::thread thread([&, logOnce = plugin->find<Function>("logOnce")] {
        logOnce();
        hasLogged = true;
        waitFor(isUnloaded);
    });
    waitFor(hasLogged);
    plugin->find<Function>("closeLog")();
    plugin.reset();
    std::cout << (VnTest::Library::isLoaded("VNtestthreadplugin") ? "plug-in " : "no plug-in ")
              << (VnTest::Library::isLoaded("VNthreadlog") ? "and layer" : "and no layer") << " loaded"
              << std::endl;
    isUnloaded = true;
    thread.join();
    std::cout << "thread ended" << std::endl;
    return 0;
}
