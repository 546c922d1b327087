#include "crew.h"

#include "threadlog.h"

#include <base/exbase.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace Inventory
{
namespace
{
Crew::Result readOne(Crew::Task const& task)
{
    try {
        return {readFile(task.path), ""};
    } catch (Vn::ExBase const& failure) {
        return {{}, failure.getReason()};
    } catch (std::exception const& failure) {
        return {{}, failure.what()};
    }
}

void logResult(Vn::LgMinorGroup const& group, Crew::Task const& task, Crew::Result const& result)
{
    ThreadLog::waitForSpace(static_cast<int>(task.name.size() + result.failure.size()) + 100);
    if (result.failure.empty())
        VN_LOG(group, Vn::LgTypes::Informational,
               task.name.c_str() << ": " << static_cast<double>(result.reading.bytes) / 1024 << " KiB");
    else
        VN_LOG(group, Vn::LgTypes::Warning, task.name.c_str() << ": " << result.failure.c_str());
}
}  // namespace

unsigned Crew::getUsualSize()
{
    return std::clamp(std::thread::hardware_concurrency(), 2u, 8u);
}

std::vector<Crew::Result> Crew::read(std::vector<Task> const& tasks,
                                     std::function<void(Result const&)> const& onResult) const
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Inventory"), "Read");
    std::vector<Result> results(tasks.size());
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    const auto work = [&] {
        const ThreadLog::Thread ownQueue;
        for (std::size_t i = next++; i < tasks.size(); i = next++) {
            results[i] = readOne(tasks[i]);
            logResult(group, tasks[i], results[i]);
            const std::lock_guard guard(mutex);
            onResult(results[i]);
        }
    };
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < _threads; ++i)
        threads.emplace_back(work);
    threads.clear();  // waits for them
    return results;
}

}  // namespace Inventory
