// The tasks of docs/from-spdlog-glog.md with this library: vnlogging TASK.
#include "tasks.h"

#include <base/ininitmgr.h>
#include <base/lglog.h>
#include <base/lgstreamed.h>
#include <base/lgtext.h>
#include <threadlog/threadlog.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

struct Cue
{
    int frame;
    char const* name;
};

std::ostream& operator<<(std::ostream& stream, Cue const& cue)
{
    return stream << cue.name << '@' << cue.frame;
}

namespace
{
void message()
{
    const Vn::LgMinorGroup cache(Vn::LgMajorGroup::getInstanceForName("Cache"), "Cache");
    const std::string side = "left";
    VN_LOG(cache, Vn::LgTypes::Warning, "evicted " << 17 << " pages of " << side);
}

void levels()
{
    const Vn::LgMinorGroup cache(Vn::LgMajorGroup::getInstanceForName("Cache"), "Cache");
    const Vn::LgMinorGroup net(Vn::LgMajorGroup::getInstanceForName("Net"), "Net");
    VN_LOG(cache, Vn::LgTypes::Informational, "is warm");
    VN_LOG(net, Vn::LgTypes::Informational, "is up");
    VN_LOG(net, Vn::LgTypes::Warning, "is slow");
}

void types()
{
    const Vn::LgMinorGroup show(Vn::LgMajorGroup::getInstanceForName("Show"), "Show");
    const Cue cue{48, "thunder"};
    VN_LOG(show, Vn::LgTypes::Warning, "missed " << Vn::streamed(cue));
}

void threads()
{
    const Vn::LgMinorGroup work(Vn::LgMajorGroup::getInstanceForName("Work"), "Work");
    std::vector<std::thread> crew;
    for (int thread = 0; thread < 4; ++thread) {
        crew.emplace_back([&work] {
            for (int i = 0; i < 1000; ++i)
                VN_LOG(work, Vn::LgTypes::Warning, "step " << i);
        });
    }
    for (std::thread& member : crew)
        member.join();
}

void crash()
{
    const Vn::LgMinorGroup show(Vn::LgMajorGroup::getInstanceForName("Show"), "Show");
    VN_LOG(show, Vn::LgTypes::Informational, "the curtain falls");
    std::abort();
}
}  // namespace

int main(int argc, char** argv)
{
    int count = argc;
    char const* const* arguments = argv;
    Vn::InInitGuard guard(count, arguments);
    Vn::ThreadLog log;
    log.installCrashHandlers();
    return From::runTask(
        {{"message", message}, {"levels", levels}, {"types", types}, {"threads", threads}, {"crash", crash}}, argc,
        argv);
}
