#include "contestant.h"

#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

namespace VnBench
{
namespace
{
Contestant makeFrom(std::string const& name, std::shared_ptr<spdlog::logger> logger, std::function<void()> drain)
{
    spdlog::logger* const log = logger.get();
    if (!drain)
        drain = [logger] { logger->flush(); };
    return makeContestant(
        name, [log](int) { log->warn("Bench a message of some forty characters in all"); },
        [log](int i) { log->warn("Bench a message with the number {}", i); },
        [log](int i) { log->warn("Bench tile {} of {} took {:.6f}", i, i * 7, i * 0.37); }, std::move(drain));
}
}  // namespace

Contestant makeSpdlog(std::string const& folder)
{
    return makeFrom("spdlog", spdlog::basic_logger_mt("sync", folder + "/spdlog.log", true), {});
}

Contestant makeSpdlogFlushing(std::string const& folder)
{
    const auto logger = spdlog::basic_logger_mt("flushing", folder + "/spdlogflushing.log", true);
    logger->flush_on(spdlog::level::trace);
    return makeFrom("spdlog", logger, {});
}

Contestant makeSpdlogAsync(std::string const& folder)
{
    spdlog::init_thread_pool(8192, 1);
    const auto logger = spdlog::basic_logger_mt<spdlog::async_factory>("async", folder + "/spdlogasync.log", true);
    // The queue is empty when its worker has taken the last message; so the worker has nothing to do in a burst.
    return makeFrom("spdlog async", logger, [logger] {
        while (spdlog::thread_pool()->queue_size() != 0)
            std::this_thread::yield();
    });
}

}  // namespace VnBench
