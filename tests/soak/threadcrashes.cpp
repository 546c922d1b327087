// threadcrashes RUNS [reader]: processes whose threads log without a pause crash at any moment, by each signal in turn. With
// `reader` the signal hits the thread that writes the log, in the middle of a line for the most part.
//
// What must hold of each process, in its log:
// - Every message that a queue had accepted before the crash is there, once, in the order of its thread.
// - Every line is whole.
// - The process ended by that signal.
// Where the reader itself was hit, the one message that it had taken off its queue may be missing, and a line then tells so.
// Ends with 0 if so, and with 1 and a line that tells what is wrong if not.
#include "logfile.h"
#include "tempfolder.h"

#include <threadlog/threadlog.h>

#include <base/ininitmgr.h>
#include <base/lglog.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr int signals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr int writers = 3;

/// What the crashing process leaves for the one that looks: how many messages of each thread were accepted, now and when the
/// signal was sent. Its threads go on until the process is no more.
struct Accepted
{
    std::atomic<int> messages[writers];
    std::atomic<int> before[writers];
};

Accepted& makeAccepted()
{
    void* const memory =
        ::mmap(nullptr, sizeof(Accepted), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no shared memory");
    return *new (memory) Accepted;
}

/// Errors, which wait for room: each one is accepted.
void logOn(int writer, std::atomic<int>& accepted)
{
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Soak"), "Soak");
    const std::string filling(static_cast<std::size_t>(10 + 90 * writer), 'x');
    for (int i = 0;; ++i) {
        VN_LOG(group, Vn::LgTypes::RecoverableError, writer << ' ' << i << ' ' << filling.c_str());
        accepted.store(i + 1, std::memory_order_release);
    }
}

/// The thread that writes, which names itself when it begins.
::pid_t findReader()
{
    for (;;)
        for (auto const& task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::ifstream comm(task.path() / "comm");
            std::string name;
            std::getline(comm, name);
            if (name == "vn-threadlog")
                return static_cast<::pid_t>(std::stol(task.path().filename().string()));
        }
}

[[noreturn]] void runVictim(Accepted& accepted, int signal, bool isReaderHit, unsigned seed)
{
    const ::rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    int argc = 0;
    char const* const* argv = nullptr;
    Vn::InInitMgr::getInstance().initialize(argc, argv);
    auto& log = *new Vn::ThreadLog;
    log.installCrashHandlers();
    for (int i = 0; i < writers; ++i)
        std::thread([i, &accepted] { logOn(i, accepted.messages[i]); }).detach();
    const ::pid_t target = isReaderHit ? findReader() : ::gettid();
    // A moment that nobody can foresee; nothing is decided by how long it is.
    std::mt19937 random(seed);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    for (int i = 0; i < writers; ++i)
        accepted.before[i].store(accepted.messages[i].load(std::memory_order_acquire));
    ::syscall(SYS_tgkill, ::getpid(), target, signal);
    for (;;)
        ::pause();
}

void check(bool isRight, std::string const& what)
{
    if (!isRight)
        throw std::runtime_error(what);
}

/// Under the address sanitizer its own handler, which was there before, ends the process in its way.
bool isEndedBy(int status, int signal)
{
#if defined(__SANITIZE_ADDRESS__)
    return status != 0 && signal != 0;
#else
    return WIFSIGNALED(status) && WTERMSIG(status) == signal;
#endif
}

/// Returns the messages that were told to be missing.
int checkLog(std::string const& path, Accepted const& accepted, long& total)
{
    int next[writers] = {}, missing = 0, told = 0;
    for (std::string const& line : VnTest::linesOf(path)) {
        if (line.empty() || line.starts_with("===== "))
            continue;
        const auto message = VnTest::LogLine::parse(line);
        check(message.has_value(), "a line that is torn: " + line);
        if (message->text == "Event overflow [1]") {
            ++told;
            continue;
        }
        int writer = -1, number = -1, end = 0;
        check(std::sscanf(message->text.c_str(), "Soak %d %d %n", &writer, &number, &end) == 2 && writer >= 0 &&
                  writer < writers,
              "a line of nobody: " + line);
        check(message->text.size() - static_cast<std::size_t>(end) == static_cast<std::size_t>(10 + 90 * writer),
              "a line that is cut: " + line);
        check(number >= next[writer], "twice, or out of order: " + line);
        missing += number - next[writer];
        next[writer] = number + 1;
    }
    for (int i = 0; i < writers; ++i) {
        const int last = accepted.before[i].load();
        missing += std::max(0, last - next[i]);
        total += next[i];
    }
    check(missing <= told, std::to_string(missing) + " messages are missing, " + std::to_string(told) + " told");
    return told;
}

int crashOnce(int signal, bool isReaderHit, unsigned seed, long& total)
{
    const VnTest::TempFolder folder;
    Accepted& accepted = makeAccepted();
    const ::pid_t child = ::fork();
    if (child == 0) {
        ::setenv("T4Q_TEST_DIR", folder.path().c_str(), 1);
        runVictim(accepted, signal, isReaderHit, seed);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    check(isEndedBy(status, signal), "the process didn't end by the signal");
    const int told = checkLog(folder.path("events.log"), accepted, total);
    check(told == 0 || isReaderHit, "a loss was told, but the reader wasn't hit");
    ::munmap(&accepted, sizeof accepted);
    return told;
}
}  // namespace

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::atoi(argv[1]) : 0;
    const bool isReaderHit = argc > 2;
    long total = 0;
    int told = 0;
    for (int run = 0; run < runs; ++run)
        try {
            told += crashOnce(signals[run % 5], isReaderHit, static_cast<unsigned>(run), total);
            if (run % 100 == 99 && ::isatty(STDERR_FILENO) == 1)
                std::cerr << "\r" << run + 1 << " of " << runs << std::flush;
        } catch (std::exception const& failure) {
            std::cout << "crash " << run << ", signal " << signals[run % 5] << ": " << failure.what() << "\n";
            return 1;
        }
    std::cout << runs << " crashes, " << total << " messages whole, " << told << " lost and told\n";
    return 0;
}
