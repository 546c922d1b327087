// What the thread layer adds to a message: sites of one, two, four and eight threads at a time, beside sites whose queues
// nobody reads meanwhile. Processor time of the threads, as there may be more of them than processors.
#include "rounds.h"

#include <threadlog/threadlog.h>

#include <base/ininitmgr.h>
#include <base/lglog.h>

#include <unistd.h>

#include <barrier>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <list>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{
constexpr int burst = 500;  // fewer than a queue takes

thread_local Vn::LgQueue* bareQueue = nullptr;

Vn::LgQueue* getBareQueue()
{
    return bareQueue;
}

void emptyBareQueue(std::vector<char>& text)
{
    while (!bareQueue->isEmpty()) {
        bareQueue->getStream() >> text.data();
        bareQueue->removeEntry();
    }
}

double getThreadTime()
{
    std::timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// Threads that wait for a site to log, and log it all at once.
class Crew
{
public:
    using Site = void (*)(Vn::LgMinorGroup const&, int);

    explicit Crew(int threads) : _times(static_cast<std::size_t>(threads)), _step(threads + 1)
    {
        for (std::size_t i = 0; i < _times.size(); ++i)
            _threads.emplace_back([this, i] { work(_times[i]); });
    }

    ~Crew()
    {
        _site = nullptr;
        _step.arrive_and_wait();
        for (std::thread& thread : _threads)
            thread.join();
    }

    /// Nanoseconds of a message.
    double time(Site site)
    {
        _site = site;
        _step.arrive_and_wait();
        _step.arrive_and_wait();
        double sum = 0;
        for (const double time : _times)
            sum += time;
        return sum / static_cast<double>(_times.size()) / burst;
    }

private:
    void work(double& time)
    {
        const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Bench"), "Bench");
        Vn::LgQueue queue;
        std::vector<char> text(32768);
        bareQueue = &queue;
        for (;;) {
            _step.arrive_and_wait();
            if (_site == nullptr)
                return;
            const double start = getThreadTime();
            for (int i = 0; i < burst; ++i)
                _site(group, i);
            time = getThreadTime() - start;
            emptyBareQueue(text);
            _step.arrive_and_wait();
        }
    }

    std::vector<double> _times;
    std::barrier<> _step;
    Site _site = nullptr;
    std::vector<std::thread> _threads;
};

constexpr struct
{
    char const* name;
    Crew::Site site;
} sites[] = {
    {"text", [](Vn::LgMinorGroup const& group,
                int) { VN_LOG(group, Vn::LgTypes::Warning, "a message of some forty characters in all"); }},
    {"text, int", [](Vn::LgMinorGroup const& group,
                     int i) { VN_LOG(group, Vn::LgTypes::Warning, "a message with the number " << i); }},
    {"2 int, double",
     [](Vn::LgMinorGroup const& group, int i) {
         VN_LOG(group, Vn::LgTypes::Warning, "tile " << i << " of " << i * 7 << " took " << i * 0.37);
     }},
};

/// A log of its own for each round: its end, which isn't measured, writes all.
void addComparisons(std::vector<VnBench::Rounds>& comparisons, Crew& crew, int threads)
{
    for (auto const& [name, site] : sites) {
        VnBench::Rounds rounds("thread layer: " + std::string(name) + ", " + std::to_string(threads) +
                                   (threads == 1 ? " thread" : " threads"),
                               "ns");
        rounds.add("the layer", [&crew, site = site] {
            const Vn::ThreadLog log;
            return crew.time(site);
        });
        rounds.add("the bare site", [&crew, site = site] {
            Vn::LgLog::setQueueFunction(getBareQueue);
            Vn::LgLog::setLoggerActivation(true);
            return crew.time(site);
        });
        comparisons.push_back(std::move(rounds));
    }
}
}  // namespace

int main()
{
    std::string folder = (std::filesystem::temp_directory_path() / "vnbase-bench-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr)
        return 1;
    ::setenv("T4Q_TEST_DIR", folder.c_str(), 1);
    VnBench::Rounds::printHead();
    {
        int argc = 0;
        char const* const* argv = nullptr;
        Vn::InInitGuard guard(argc, argv);
        std::list<Crew> crews;
        std::vector<VnBench::Rounds> comparisons;
        for (const int threads : {1, 2, 4, 8})
            addComparisons(comparisons, crews.emplace_back(threads), threads);
        VnBench::Rounds::runInPasses(comparisons, 300);
    }
    std::filesystem::remove_all(folder);
    return 0;
}
