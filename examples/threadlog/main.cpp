// Several threads that log at once, and a picture of when they did: threadlog [-t THREADS] [-n MESSAGES] [-q] [-h]. Nothing is
// lost, as every level is set to wait for room. Started more than once at a time with one file, VN_LOG_WARNING=+FILE, and a
// lock, VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME, the lines of all stay whole.
#include <threadlog/threadlog.h>

#include <base/hwcounter.h>
#include <base/ininitmgr.h>
#include <base/inusage.h>
#include <base/invalueform.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/osterminal.h>
#include <base/osutils.h>
#include <base/trace.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace VnInit
{
class threadlogExample
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::threadlogExample> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(threadlogExample, VnInit::threadlog);

namespace
{
Vn::InInit<VnInit::threadlogExample> package;

Vn::TraceLevel& workLevel = *Vn::Trace::registerLevel("Work", __FILE__);

const Vn::InContextAlias<Vn::InInitArg, 1> threadsOption("t:", "-t THREADS: how many threads log");
const Vn::InContextAlias<Vn::InInitDef, 0> threadsDefault("4", "default");
Vn::InVariable<int> threadCount("threadlogExample.threads", package, threadsOption, threadsDefault);

const Vn::InContextAlias<Vn::InInitArg, 1> messagesOption("n:", "-n MESSAGES: how many each of them logs");
const Vn::InContextAlias<Vn::InInitDef, 0> messagesDefault("1000", "default");
Vn::InVariable<int> messageCount("threadlogExample.messages", package, messagesOption, messagesDefault);

const Vn::InContextAlias<Vn::InInitArg, 1> quietOption("q", "-q: draws nothing");
const Vn::InContextAlias<Vn::InInitDef, 0> quietDefault("false", "default");
Vn::InVariable<bool> isQuiet("threadlogExample.quiet", package, quietOption, quietDefault);

/// @{
/// The type is looked at as well.
bool isThreadCount(char const* text)
{
    const int count = Vn::InValueForm<int>::read(text);
    return count >= 1 && count <= 256;
}

bool isNotNegative(char const* text)
{
    return Vn::InValueForm<int>::read(text) >= 0;
}
/// @}

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

void runThreads()
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Example"), "Work");
    std::vector<std::thread> threads;
    std::atomic<int> missing = threadCount.getValue();
    for (int i = 0; i < threadCount.getValue(); ++i)
        threads.emplace_back([&group, i, &missing] {
            for (--missing; missing != 0;)
                std::this_thread::yield();
            work(group, i, messageCount.getValue());
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
    if (times.empty()) {
        std::cout << "nothing to draw: no message with a time in " << Vn::OsTerminal::shown(path) << "\n";
        return;
    }
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
    std::cout << "  " << static_cast<double>(last - first) * Vn::HwCounter::resolution() * 1e3 << " ms, in "
              << Vn::OsTerminal::shown(path) << "\n";
}
}  // namespace

int main(int argc, char** argv)
{
    const Vn::InUsage usage =
        Vn::InUsage("Logs from several threads at once.")
            .expect(threadCount, "1 to 256 threads", isThreadCount)
            .expect(messageCount, "0 or more messages", isNotNegative)
            .note("Where messages go, and which:\n"
                  "  VN_LOG_WARNING=FILE      a file; +FILE appends, %FILE shows them as well\n"
                  "  VN_LOG_GROUPS=Example=Informational\n"
                  "  VN_TRACE_OPTIONS=show=Work\n"
                  "  VN_INTERNAL_INTERPROCESS_LOG_LOCK=NAME   where several write to one file");
    if (auto const end = usage.handle(argc, argv))
        return *end;
    try {
        Vn::InVariableBase::overrideViaHandle("threadlog.wait", "all", "no message is to be lost here");
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        Vn::ThreadLog log;
        log.installCrashHandlers();
        runThreads();
        log.flush();
        char const* const path = Vn::LgLog::getLevelFileName(Vn::LgTypes::Warning);
        if (isQuiet.getValue())
            return 0;
        if (path != nullptr)
            draw(path);
        else
            std::cout << "nothing to draw: the messages went to no file\n";
    } catch (std::exception const& failure) {
        std::cerr << "threadlog: " << Vn::OsTerminal::shown(failure.what()) << '\n';
        return 1;
    }
    return 0;
}
