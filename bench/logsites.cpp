// What a message costs: at its site beside the clock alone, and in the reader with many queues beside one; a flushed line
// beside another logger's; what the locks of the outputs add; a trace site that is on and one that is off.
//
// benchlogsites             all of that, in one process
// benchlogsites --readers   the reader with many queues alone
// benchlogsites --shared    lines under the inter-process lock, of one process and of several that share a file
#include "rounds.h"
#include "workfolder.h"

#include <base/hwcounter.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/lginterprocesslock.h>
#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/lgtext.h>
#include <base/trace.h>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using VnBench::Rounds;
using VnBench::timeOfEach;

namespace
{
constexpr int burst = 500;  // fewer than a queue takes

std::vector<std::unique_ptr<Vn::LgQueue>> queues;
Vn::LgQueue* current = nullptr;

Vn::LgQueue* getCurrent()
{
    return current;
}

Vn::LgMinorGroup const& getGroup()
{
    static const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Bench"), "Bench");
    return group;
}

void drain()
{
    Vn::LgReader().flushAll();
}

/// Nanoseconds of each site of a burst; the reader writes the lines outside the time that is measured.
template <class Site>
double timeOfSites(Site const& site)
{
    int i = 0;
    const double time = timeOfEach(burst, [&] { site(i++); });
    drain();
    return time;
}

/// The times of groups of eight sites, for one site: a clock may tick no faster than a site takes.
template <class Site>
std::vector<double> timesOfGroups(Site const& site)
{
    constexpr int group = 8;
    std::vector<double> times;
    for (int i = 0; i + group <= burst; i += group) {
        const std::uint64_t start = Vn::HwCounter::timeStamp();
        for (int k = 0; k < group; ++k)
            site(i + k);
        times.push_back(Vn::HwCounter::seconds(start, Vn::HwCounter::timeStamp()) * 1e9 / group);
    }
    drain();
    return times;
}

/// The time below which 99 of 100 of 6,200 groups stay.
template <class Site>
double percentileOfGroups(Site const& site)
{
    std::vector<double> times;
    for (int i = 0; i < 100; ++i)
        for (const double time : timesOfGroups(site))
            times.push_back(time);
    const auto place = times.begin() + static_cast<std::ptrdiff_t>(times.size() * 99 / 100);
    std::nth_element(times.begin(), place, times.end());
    return *place;
}

/// The least that the message "Bench TEXT" takes: the queue is asked for, the level is looked at, three pieces go into a ring
/// of bytes, and an entry with the stamp into a ring of entries. No room is looked for, and no end of a ring.
class LeastSite
{
public:
    void log(char const* text)
    {
        LeastSite& queue = *_getQueue(*this);
        constexpr unsigned bit = 1u << Vn::LgTypes::Warning;
        if ((queue._enabled.load(std::memory_order_relaxed) & bit) == 0)
            return;
        queue.put(queue._name, std::strlen(queue._name));
        queue.put(" ", 1);
        queue.put(text, std::strlen(text) + 1);
        Entry& entry = queue._entries[queue._next];
        entry.level = Vn::LgTypes::Warning;
        entry.time = Vn::HwCounter::timeStamp();
        queue._written.store(++queue._next, std::memory_order_release);
    }
    void clear()
    {
        _end = 0;
        _next = 0;
    }

private:
    struct Entry
    {
        std::uint64_t time;
        Vn::LgTypes::Level level;
    };

    void put(char const* text, std::size_t size)
    {
        std::memcpy(_bytes.get() + _end, text, size);
        _end += size;
    }

    LeastSite* (*volatile _getQueue)(LeastSite&) = [](LeastSite& self) { return &self; };
    std::atomic<unsigned> _enabled = ~0u;
    char const* volatile _name = "Bench";
    std::unique_ptr<char[]> _bytes = std::make_unique<char[]>(64 * burst);
    Entry _entries[burst] = {};
    std::size_t _end = 0;
    unsigned _next = 0;
    std::atomic<unsigned> _written = 0;
};

void logInteger(int i)
{
    VN_LOG(getGroup(), Vn::LgTypes::Warning, "a message with the number " << i);
}

void compareSites()
{
    Vn::LgMinorGroup const& group = getGroup();
    const auto text = [&group](int) {
        VN_LOG(group, Vn::LgTypes::Warning, "a message of some forty characters in all");
    };
    const auto integer = [&group](int i) {
        VN_LOG(group, Vn::LgTypes::Warning, "a message with the number " << i);
    };
    const auto mixed = [&group](int i) {
        VN_LOG(group, Vn::LgTypes::Warning, "tile " << i << " of " << i * 7 << " took " << i * 0.37);
    };
    const auto stamp = [] {
        return timeOfEach(burst, [] { [[maybe_unused]] volatile std::uint64_t now = Vn::HwCounter::timeStamp(); });
    };
    std::vector<Rounds> comparisons;
    const auto compare = [&comparisons, &stamp](char const* what, auto const& site) {
        Rounds& rounds = comparisons.emplace_back(what, "ns");
        rounds.add("a site", [&site] { return timeOfSites(site); });
        rounds.add("its time stamp alone", stamp);
    };
    LeastSite least;
    compare("site: text", text);
    comparisons.back().add("floor: ask, copy, stamp, publish", [&least] {
        least.clear();
        return timeOfEach(burst, [&least] { least.log("a message of some forty characters in all"); });
    });
    compare("site: text, int", integer);
    compare("site: 2 int, double", mixed);
    Rounds::runInPasses(comparisons, 400);
    comparisons.clear();
    const auto compareWorst = [&comparisons](char const* what, auto const& site) {
        Rounds& rounds = comparisons.emplace_back(what, "ns");
        rounds.add("a site", [&site] { return percentileOfGroups(site); });
        rounds.add("its time stamp alone", [] {
            return percentileOfGroups(
                [](int) { [[maybe_unused]] volatile std::uint64_t now = Vn::HwCounter::timeStamp(); });
        });
    };
    // The same text as a view, whose end no zero marks.
    const std::string message = "a message of some forty characters in all";
    const std::string_view view = message;
    Rounds views("site: a std::string_view", "ns");
    views.add("a site",
              [&] { return timeOfSites([&group, view](int) { VN_LOG(group, Vn::LgTypes::Warning, view); }); });
    views.add("as a char const*", [&] {
        return timeOfSites([&group, &message](int) { VN_LOG(group, Vn::LgTypes::Warning, message.c_str()); });
    });
    views.run(400);
    compareWorst("99 of 100: text", text);
    compareWorst("99 of 100: text, int", integer);
    compareWorst("99 of 100: 2 int, double", mixed);
    Rounds::runInPasses(comparisons, 40);
}

void useQueues(std::size_t count)
{
    drain();
    Vn::LgLog::setRegistry(Vn::ObjPtr<Vn::LgRegistry>(new Vn::LgSimpleRegistry));
    for (auto const& queue : queues)
        Vn::LgLog::getRegistry()->deregisterQueue(queue.get());
    queues.clear();
    for (std::size_t i = 0; i < count; ++i) {
        queues.push_back(std::make_unique<Vn::LgQueue>(i + 1));
        Vn::LgLog::getRegistry()->registerQueue(queues.back().get());
    }
    current = queues.front().get();
}

/// A line by the reader. `used` of the queues have messages, each `run` after one another, as threads log them.
double timeOfLine(std::size_t used, int run)
{
    constexpr int lines = 2048;
    int done = 0;
    while (done < lines)
        for (std::size_t i = 0; i < used && done < lines; ++i) {
            current = queues[i * (queues.size() / used)].get();
            for (int k = 0; k < run && done < lines; ++k, ++done)
                logInteger(done);
        }
    const double time = timeOfEach(1, drain);
    current = queues.front().get();
    return time / lines;
}

/// A bare loop over the queues, which are where they are for the reader: as it looks at them for one line.
double timeOfLook()
{
    std::vector<Vn::LgQueue const*> all;
    for (auto const& queue : queues)
        all.push_back(queue.get());
    return timeOfEach(2048, [&all] {
        for (Vn::LgQueue const* const queue : all)
            if (!queue->isEmpty() || !queue->isCreatorAlive())
                std::abort();
    });
}

void compareReaders()
{
    // Each round changes the queues, so the times of few and of many stand in one run. Where each message is in another queue
    // than the one before, it is also in memory that nothing has touched for long, whatever the reader does.
    const auto compare = [](std::size_t count, std::size_t used, int run) {
        Rounds rounds(
            std::to_string(count) + " queues, " + std::to_string(used) + " used by " + std::to_string(run), "ns");
        rounds.add("a line", [count, used, run] {
            useQueues(count);
            return timeOfLine(used, run);
        });
        rounds.add("with 2 queues", [run] {
            useQueues(2);
            return timeOfLine(2, run);
        });
        // The rule's own part: whether each queue is empty is asked for each line.
        rounds.add("with 2, and a bare look at all", [count, run] {
            useQueues(2);
            const double line = timeOfLine(2, run);
            useQueues(count);
            return line + timeOfLook();
        });
        rounds.run(30);
    };
    for (const std::size_t count : {16, 64, 256, 1024}) {
        compare(count, 2, 1);
        compare(count, count, 8);
        compare(count, count, 1);
    }
    useQueues(1);
}

class Lines
{
public:
    explicit Lines(std::string const& folder)
        : _file(::open((folder + "/bare.log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_TRUNC, 0600)),
          _logger(spdlog::basic_logger_mt("flushing", folder + "/spdlog.log", true))
    {
        _logger->flush_on(spdlog::level::trace);
    }

    /// From the site to the line in the file.
    static double ours()
    {
        int i = 0;
        return timeOfEach(burst, [&i] {
            logInteger(i++);
            Vn::LgReader().flushEarliest();
        });
    }

    /// The lines of a whole burst.
    static double oursInBursts()
    {
        return timeOfEach(1,
                          [] {
                              for (int i = 0; i < burst; ++i)
                                  logInteger(i);
                              drain();
                          }) /
               burst;
    }

    double spdlog()
    {
        int i = 0;
        return timeOfEach(burst, [this, &i] { _logger->warn("Bench a message with the number {}", i++); });
    }

    double bare() const
    {
        constexpr std::string_view line =
            "0000000000 0123456789 (0x00000001) Warning: Bench a message with the number 123\n";
        return timeOfEach(burst, [this, line] {
            if (::write(_file, line.data(), line.size()) < 0)
                std::abort();
        });
    }

    /// The system calls that a shared file adds to a line: a lock, two questions for the size.
    double bareShared() const
    {
        struct ::stat status;
        return timeOfEach(burst, [this, &status] {
            ::flock(_file, LOCK_EX);
            ::fstat(_file, &status);
            ::fstat(_file, &status);
            ::flock(_file, LOCK_UN);
        });
    }

private:
    int _file;
    std::shared_ptr<spdlog::logger> _logger;
};

void compareLines(std::string const& folder)
{
    Lines lines(folder);
    Rounds rounds("a flushed line", "ns");
    rounds.add("ours, each at once", Lines::ours);
    rounds.add("ours, in bursts", Lines::oursInBursts);
    rounds.add("spdlog, flushing", [&lines] { return lines.spdlog(); });
    rounds.add("a bare write", [&lines] { return lines.bare(); });
    rounds.run(200);
}

void compareTraces()
{
    static Vn::TraceLevel const& level = *Vn::Trace::registerLevel("Bench", __FILE__);
    std::ios_base::sync_with_stdio(true);
    const auto site = [] {
        int i = 0;
        return timeOfEach(burst, [&i] { VN_TRACE(level, "takes " << i++ << " colours"); });
    };
    Vn::Trace::setOptions("hide=Bench");
    Rounds off("trace site, off", "ns");
    off.add("a site", site);
    off.add("an empty loop", [] {
        int i = 0;
        return timeOfEach(burst, [&i] { asm volatile("" : : "r"(i++) : "memory"); });
    });
    off.run(400);

    // The lines go nowhere, so that the terminal isn't measured.
    class NoTrace : public Vn::TraceManager
    {
    public:
        NoTrace() : TraceManager(1) {}
        Vn::Trace& getTrace() override { return _trace; }
        void print(char const*) const override {}

    private:
        Vn::Trace _trace;
    };
    NoTrace nowhere;
    Vn::Trace::setOptions("show=Bench");
    Rounds on("trace site, on", "ns");
    on.add("a site", site);
    on.add("its text by std::ostringstream", [] {
        int i = 0;
        return timeOfEach(burst, [&i] {
            std::ostringstream stream;
            stream << "| "
                   << "takes " << i++ << " colours" << '\0';
            [[maybe_unused]] volatile std::size_t size = stream.str().size();
        });
    });
    on.run(200);
}

constexpr int linesOfProcess = 20000;

/// What a child process does: so many lines into one file, by the logger or by plain calls.
void writeLines(std::string_view how, char const* path)
{
    if (how == "ours") {
        int i = 0;
        while (i < linesOfProcess) {
            for (int k = 0; k < burst; ++k)
                logInteger(i++);
            drain();
        }
        return;
    }
    const int file = ::open(path, O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int lock = how == "locked" ? ::open((std::string(path) + ".lock").c_str(), O_RDWR | O_CREAT, 0600) : -1;
    constexpr std::string_view line =
        "0000000000 0123456789 (0x00000001) Warning: Bench a message with the number 123\n";
    for (int i = 0; i < linesOfProcess; ++i) {
        if (lock != -1)
            ::flock(lock, LOCK_EX);
        if (::write(file, line.data(), line.size()) < 0)
            std::abort();
        if (lock != -1)
            ::flock(lock, LOCK_UN);
    }
}

/// Nanoseconds until all lines of `count` processes are in the file, for one line. Starts and ends included.
double timeOfProcesses(char const* self, std::string const& folder, std::string const& how, std::size_t count)
{
    const std::string path = folder + "/shared.log";
    std::vector<std::string> arguments = {self, "--lines", how, path};
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::setenv("VN_LOG_WARNING", ("+" + path).c_str(), 1);
    ::setenv("VN_INTERNAL_INTERPROCESS_LOG_LOCK", "vnbase bench", 1);
    const double time = timeOfEach(1, [&] {
        std::vector<::pid_t> children(count);
        for (::pid_t& child : children)
            if (::posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, argv.data(), environ) != 0)
                std::abort();
        for (const ::pid_t child : children) {
            int status = 0;
            if (::waitpid(child, &status, 0) != child || status != 0)
                std::abort();
        }
    });
    ::unsetenv("VN_LOG_WARNING");
    ::unsetenv("VN_INTERNAL_INTERPROCESS_LOG_LOCK");
    std::filesystem::remove(path);
    return time / (static_cast<double>(count) * linesOfProcess);
}

void compareProcesses(char const* self, std::string const& folder)
{
    for (const std::size_t count : {1, 2, 4}) {
        Rounds rounds(std::to_string(count) + " processes, one log", "ns");
        for (auto const& [who, how] : {std::pair("ours, under the lock", "ours"),
                                       {"plain, under a lock", "locked"},
                                       {"plain appending", "plain"}})
            rounds.add(who, [self, &folder, how = std::string(how), count] {
                return timeOfProcesses(self, folder, how, count);
            });
        rounds.run(7);
    }
}

/// The mutex that a reader takes for each line, so that no other thread closes the file.
void compareMutex()
{
    static std::recursive_mutex mutex;
    Rounds rounds("the outputs' mutex", "ns");
    rounds.add("a recursive mutex, both ways", [] {
        return timeOfEach(burst, [] {
            mutex.lock();
            mutex.unlock();
        });
    });
    rounds.run(200);
}

/// The process starts with or without the lock, so this runs in a process of its own.
void compareSharedLines(std::string const& folder)
{
    Lines lines(folder);
    Rounds rounds("a line under the lock", "ns");
    rounds.add("ours", Lines::oursInBursts);
    rounds.add("a bare write", [&lines] { return lines.bare(); });
    rounds.add("lock, 2 sizes, unlock", [&lines] { return lines.bareShared(); });
    rounds.run(200);
}
}  // namespace

int main(int argc, char** argv)
{
    const bool isShared = argc > 1 && std::string_view(argv[1]) == "--shared";
    const bool isReaders = argc > 1 && std::string_view(argv[1]) == "--readers";
    const bool isChild = argc == 4 && std::string_view(argv[1]) == "--lines";
    const VnBench::WorkFolder folder;
    if (isShared)
        ::setenv("VN_INTERNAL_INTERPROCESS_LOG_LOCK", "vnbase bench", 1);
    int count = 0;
    char const* const* arguments = nullptr;
    {
        const Vn::InInitGuard guard(count, arguments);
        Vn::LgLog::setQueueFunction(getCurrent);
        Vn::LgLog::setLoggerActivation(true);
        useQueues(1);
        if (!isChild)
            Rounds::printHead();
        if (isChild)
            writeLines(argv[2], argv[3]);
        else if (isShared) {
            compareSharedLines(folder.path());
            compareProcesses(argv[0], folder.path());
        } else if (isReaders)
            compareReaders();
        else {
            compareMutex();
            compareSites();
            compareReaders();
            compareLines(folder.path());
            compareTraces();
        }
        drain();
        Vn::LgLog::setLoggerActivation(false);
    }
}
