// The tasks of docs/from-spdlog-glog.md with spdlog: withspdlog TASK.
#include "tasks.h"

#include <spdlog/async.h>
#include <spdlog/cfg/env.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

struct Cue
{
    int frame;
    char const* name;
};

template <>
struct fmt::formatter<Cue> : fmt::formatter<std::string>
{
    template <class Context>
    auto format(Cue const& cue, Context& context) const
    {
        return fmt::format_to(context.out(), "{}@{}", cue.name, cue.frame);
    }
};

namespace
{
void message()
{
    const auto cache = spdlog::stdout_logger_mt("Cache");
    const std::string side = "left";
    cache->warn("evicted {} pages of {}", 17, side);
}

void levels()
{
    const auto cache = spdlog::stdout_logger_mt("Cache");
    const auto net = spdlog::stdout_logger_mt("Net");
    spdlog::cfg::load_env_levels();
    cache->info("is warm");
    net->info("is up");
    net->warn("is slow");
}

void types()
{
    const auto show = spdlog::stdout_logger_mt("Show");
    const Cue cue{48, "thunder"};
    show->warn("missed {}", cue);
}

void threads()
{
    spdlog::init_thread_pool(8192, 1);
    const auto work = spdlog::basic_logger_mt<spdlog::async_factory>("Work", "spdlog.log");
    std::vector<std::thread> crew;
    for (int thread = 0; thread < 4; ++thread) {
        crew.emplace_back([&work] {
            for (int i = 0; i < 1000; ++i)
                work->warn("step {}", i);
        });
    }
    for (std::thread& member : crew)
        member.join();
    spdlog::shutdown();
}

void crash()
{
    const auto show = spdlog::basic_logger_mt("Show", "spdlog.log");
    show->flush_on(spdlog::level::info);
    show->info("the curtain falls");
    std::abort();
}
}  // namespace

int main(int argc, char** argv)
{
    return From::runTask(
        {{"message", message}, {"levels", levels}, {"types", types}, {"threads", threads}, {"crash", crash}}, argc,
        argv);
}
