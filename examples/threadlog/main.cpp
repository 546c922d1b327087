// Several threads that log at once, and a picture of when they did: threadlog [-t THREADS] [-n MESSAGES] [-q] [-h]. Nothing is
// lost, as every level is set to wait for room. Started more than once at a time with one file, VN_LOG_WARNING=+FILE, and a
// lock, VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME, the lines of all stay whole.
#include <threadlog/threadlog.h>

#include <base/exbase.h>
#include <base/hwcounter.h>
#include <base/ininitmgr.h>
#include <base/inoptionparser.h>
#include <base/lglog.h>
#include <base/osutils.h>
#include <base/trace.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <latch>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace
{
Vn::TraceLevel& workLevel = *Vn::Trace::registerLevel("Work", __FILE__);

constexpr char usage[] = "threadlog [-t THREADS] [-n MESSAGES] [-q]   4 and 1000 by default; -q draws nothing\n"
                         "Where messages go, and which:\n"
                         "  VN_LOG_WARNING=FILE      a file; +FILE appends, %FILE shows them as well\n"
                         "  VN_LOG_GROUPS=Example=Informational\n"
                         "  VN_TRACE_OPTIONS=show=Work\n"
                         "  VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME, where several write to one file\n";

struct Work
{
    int threads = 4;
    int messages = 1000;
    bool isQuiet = false;
};

/// One thread's messages: their number, and a text whose length changes. The thread needs nothing else for that.
void work(Vn::LgMinorGroup const& group, int thread, int messages)
{
    VN_TRACE_ENTRY(workLevel, "work");
    static constexpr char text[] = "abcdefghijklmnopqrstuvwxyz";
    for (int i = 0; i < messages; ++i) {
        VN_LOG(group, Vn::LgTypes::Warning,
               Vn::OsUtils::getPid() << ' ' << thread << ' ' << i << ' ' << text + i % 26 << '.');
        VN_LOG(group, Vn::LgTypes::Informational, "thread " << thread << " is at " << i);
        VN_TRACE(workLevel, "message " << i);
    }
}

void runThreads(Work const& all)
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Example"), "Work");
    std::vector<std::thread> threads;
    std::latch everybody(all.threads);
    for (int i = 0; i < all.threads; ++i)
        threads.emplace_back([&group, i, &all, &everybody] {
            everybody.arrive_and_wait();
            work(group, i, all.messages);
        });
    for (std::thread& thread : threads)
        thread.join();
}

/// When each thread's messages were logged, in ticks since the logger's start; from the lines of the log, as a person would
/// read them.
std::map<std::string, std::vector<std::uint64_t>> readTimes(char const* path)
{
    std::map<std::string, std::vector<std::uint64_t>> times;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        unsigned long long upper = 0, lower = 0;
        unsigned thread = 0;
        if (std::sscanf(line.c_str(), "%10llu %10llu (0x%8x) Warning: Work", &upper, &lower, &thread) == 3)
            times["thread " + std::to_string(thread)].push_back(upper << 32 | lower);
    }
    return times;
}

/// A lane for each thread; the more messages fall into a slice of time, the darker it is.
void draw(char const* path)
{
    constexpr std::size_t slices = 64;
    constexpr std::string_view shades = " .:-=+*#%@";
    const auto times = readTimes(path);
    std::uint64_t first = UINT64_MAX, last = 0;
    for (auto const& [thread, stamps] : times) {
        first = std::min(first, stamps.front());
        last = std::max(last, stamps.back());
    }
    for (auto const& [thread, stamps] : times) {
        std::array<std::size_t, slices> counts = {};
        for (const std::uint64_t stamp : stamps)
            ++counts[static_cast<std::size_t>((stamp - first) * (slices - 1) /
                                              std::max<std::uint64_t>(last - first, 1))];
        const std::size_t most = *std::max_element(counts.begin(), counts.end());
        std::cout << "  " << thread << " |";
        for (const std::size_t count : counts)
            std::cout << shades[count == 0 ? 0 : 1 + count * (shades.size() - 2) / most];
        std::cout << "| " << stamps.size() << " messages\n";
    }
    std::cout << "  " << static_cast<double>(last - first) * Vn::HwCounter::resolution() * 1e3 << " ms, in " << path
              << "\n";
}

/// False if the arguments are none of ours.
bool readArguments(int argc, char** argv, Work& all)
{
    Vn::InOptionParser parser(argc, argv, "t:n:q");
    for (int option = parser.getOption(); option != -1; option = parser.getOption()) {
        char const* const value = parser.getValue();
        if (option == 'q')
            all.isQuiet = true;
        else if (value == nullptr)
            return false;
        else
            (option == 't' ? all.threads : all.messages) = std::atoi(value);
    }
    return parser.getArgumentIndex() == argc && all.threads >= 0 && all.messages >= 0;
}
}  // namespace

int main(int argc, char** argv)
{
    Work all;
    if (argc == 2 && std::strcmp(argv[1], "-h") == 0) {
        std::cout << usage;
        return 0;
    }
    if (!readArguments(argc, argv, all)) {
        std::cerr << "threadlog: see threadlog -h\n";
        return 2;
    }
    try {
        int noArguments = 0;
        char const* const* none = nullptr;
        Vn::InVariableBase::overrideViaHandle("threadlog.wait", "all", "no message is to be lost here");
        Vn::InInitGuard guard(noArguments, none);
        Vn::ThreadLog log;
        log.installCrashHandlers();
        runThreads(all);
        log.flush();
        char const* const path = Vn::LgLog::getLevelFileName(Vn::LgTypes::Warning);
        if (!all.isQuiet && path != nullptr)
            draw(path);
    } catch (Vn::ExBase const& failure) {
        std::cerr << "threadlog: " << failure.getReason() << '\n';
        return 1;
    }
    return 0;
}
