// Start of a program and wait for its end beside `posix_spawn` and `waitpid`: `benchprocesses [SECONDS]` for each row
// (2 s if not said), with a parent that holds nothing, 256 MB and 2 GB of touched memory in pages of 4 KB. The two are
// started in turn, one each, many times over. Shown are the best start of each, its ratio, the median, and what lies
// between the 10th and the 90th percentile; last how many pages of ours each start has made the system map anew.
#include "rows.h"

#include <base/osprocess.h>

#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

extern "C" char** environ;

namespace
{
char const* const command[] = {"/bin/true", nullptr};

double now()
{
    ::timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Memory that this process has written to, a page table entry for each 4 KB.
class Held
{
public:
    explicit Held(std::size_t size) : _size(size)
    {
        if (size == 0)
            return;
        void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            std::perror("memory to hold");
            std::exit(1);
        }
        ::madvise(memory, size, MADV_NOHUGEPAGE);
        _memory = static_cast<char*>(memory);
        touch();
    }
    Held(Held const&) = delete;
    Held& operator=(Held const&) = delete;
    ~Held()
    {
        if (_memory != nullptr)
            ::munmap(_memory, _size);
    }

    void touch()
    {
        for (std::size_t at = 0; at < _size; at += 4096)
            ++_memory[at];
    }

private:
    std::size_t _size;
    char* _memory = nullptr;
};

void startOurs()
{
    Vn::OsProcess process;
    process.start(command);
    process.wait();
}

void spawn()
{
    ::pid_t child = 0;
    if (::posix_spawn(&child, command[0], nullptr, nullptr, const_cast<char* const*>(command), environ) != 0)
        std::abort();
    while (::waitpid(child, nullptr, 0) == -1 && errno == EINTR)
        continue;
}

struct Side
{
    char const* name;
    std::function<void()> start;
    std::vector<double> times = {};  ///< microseconds

    void run()
    {
        const double begin = now();
        start();
        times.push_back((now() - begin) * 1e6);
    }

    double quantile(double part)
    {
        std::sort(times.begin(), times.end());
        return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
    }
};

long pagesMapped()
{
    ::rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

/// What it costs to write to all that is held after a start, which is nothing unless its page table was copied.
long pagesMappedAfter(Held& held, void (*start)())
{
    start();
    const long before = pagesMapped();
    held.touch();
    return pagesMapped() - before;
}

void measure(char const* what, std::size_t size, double duration)
{
    Held held(size);
    Side ours{"OsProcess", startOurs}, peer{"posix_spawn", spawn};
    for (double end = now() + duration; now() < end;) {
        ours.run();
        peer.run();
        peer.run();  // in both orders, so that neither is always the second one
        ours.run();
    }
    for (Side* side : {&ours, &peer})
        std::printf("%-7s %-12s %9.1f %7.2f %11.1f   %8.1f to %-8.1f %8zu\n", what, side->name, side->quantile(0),
                    side->quantile(0) / peer.quantile(0), side->quantile(0.5), side->quantile(0.1),
                    side->quantile(0.9), side->times.size());
    VnBench::keepRow(std::string("start a program, parent of ") + what, peer.name, "us", VnBench::Times(ours.times),
                     VnBench::Times(peer.times));
    std::printf("%-7s pages mapped anew: %ld, %ld\n", what, pagesMappedAfter(held, startOurs),
                pagesMappedAfter(held, spawn));
}
}  // namespace

int main(int argc, char** argv)
{
    const double duration = argc > 1 ? std::atof(argv[1]) : 2.0;
    if (!(duration > 0.0))
        return 2;
    std::printf("%-7s %-12s %9s %7s %11s   %20s %8s\n", "parent", "", "best us", "ratio", "median us",
                "10th to 90th", "starts");
    measure("0", 0, duration);
    measure("256 MB", std::size_t(256) << 20, duration);
    measure("2 GB", std::size_t(2) << 30, duration);
    return 0;
}
