// The tasks of docs/from-spdlog-glog.md with glog: withglog TASK.
#include "tasks.h"

#include <glog/logging.h>

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
    const std::string side = "left";
    LOG(WARNING) << "Cache evicted " << 17 << " pages of " << side;
}

void levels()
{
    VLOG(1) << "Cache is warm";
    LOG(WARNING) << "Net is slow";
}

void types()
{
    const Cue cue{48, "thunder"};
    LOG(WARNING) << "Show missed " << cue;
}

void threads()
{
    std::vector<std::thread> crew;
    for (int thread = 0; thread < 4; ++thread) {
        crew.emplace_back([] {
            for (int i = 0; i < 1000; ++i)
                LOG(WARNING) << "Work step " << i;
        });
    }
    for (std::thread& member : crew)
        member.join();
}

void crash()
{
    google::InstallFailureSignalHandler();
    LOG(INFO) << "Show the curtain falls";
    std::abort();
}
}  // namespace

int main(int argc, char** argv)
{
    google::InitGoogleLogging(argv[0]);
    return From::runTask(
        {{"message", message}, {"levels", levels}, {"types", types}, {"threads", threads}, {"crash", crash}}, argc,
        argv);
}
