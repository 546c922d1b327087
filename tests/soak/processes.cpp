// Starts programs from several threads at once, while others open files, take memory and have children of their own:
// `startsoak COUNT`. Some of the programs are waited for, some outlive their object, some don't exist. In the end each
// that exists must have run once, with descriptors 0 to 2 and no others, and no zombie and no descriptor may be left.
//
// The programs are this one again. Each writes one letter to the standard output, which is a pipe that ends with the
// last of them.
#include "child.h"

#include <base/exsyserror.h>
#include <base/osprocess.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr char const* asProgram = "--program";
constexpr int starters = 4;

/// The letters of the programs.
constexpr char hasRun = '.';
constexpr char hadDescriptors = 'd';

struct Counts
{
    std::atomic<long> started = 0;
    std::atomic<long> refused = 0;
    std::atomic<long> wrong = 0;  ///< what should have been refused and wasn't, or the other way round
    long ran = 0;
    long withDescriptors = 0;
};

/// What a program does.
int beProgram()
{
    char letter = hasRun;
    for (int number = 3; number < 1024; ++number)
        if (::fcntl(number, F_GETFD) != -1)
            letter = hadDescriptors;
    return ::write(1, &letter, 1) == 1 ? 0 : 1;
}

long countDescriptors()
{
    const auto descriptors = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

bool hasChildren()
{
    return ::waitpid(-1, nullptr, WNOHANG | __WALL) != -1 || errno != ECHILD;
}

void startOne(long number, char const* own, Counts& counts)
{
    char const* const program[] = {own, asProgram, nullptr};
    char const* const missing[] = {"/missing", nullptr};
    const bool exists = number % 8 != 7;
    const bool isWaitedFor = number % 8 < 5;
    Vn::OsProcess process;
    try {
        process.start(exists ? program : missing);
        ++(exists ? counts.started : counts.wrong);
    } catch (Vn::ExSysErrorWindows const& failure) {
        const bool isRight = !exists && failure.getErrorCode() == ENOENT;
        if (!isRight)
            std::fprintf(stderr, "start %ld: %s\n", number, failure.getReason());
        ++(isRight ? counts.refused : counts.wrong);
    }
    if (isWaitedFor)
        process.wait();
}

/// What the other threads of a program may do meanwhile; each a little of it, again and again.
void openAFile()
{
    // Not closed at exec by itself.
    const int file = ::open("/dev/null", O_RDONLY);
    if (file != -1)
        ::close(file);
}

void takeMemory()
{
    std::vector<std::string> texts;
    for (std::size_t size = 1; size < 100000; size *= 3)
        texts.emplace_back(size, 'x');
}

void haveAChild()
{
    const ::pid_t child = ::fork();
    if (child == 0)
        ::_exit(7);
    int status = 0;
    if (child != -1 && (::waitpid(child, &status, 0) != child || WEXITSTATUS(status) != 7)) {
        std::fprintf(stderr, "somebody else has collected our child\n");
        std::abort();
    }
}

/// Reads what the programs write, until the last of them has ended.
void read(int end, Counts& counts)
{
    char letters[256];
    for (;;) {
        const ::ssize_t got = ::read(end, letters, sizeof letters);
        if (got == 0 || (got == -1 && errno != EINTR))
            return;
        for (::ssize_t at = 0; at < got; ++at)
            ++(letters[at] == hasRun ? counts.ran : counts.withDescriptors);
    }
}

void startAll(long count, char const* own, Counts& counts)
{
    std::atomic<bool> isOver = false;
    std::vector<std::thread> stirring;
    for (auto const& stir : {openAFile, takeMemory, haveAChild})
        stirring.emplace_back([&isOver, stir] {
            while (!isOver)
                stir();
        });
    std::atomic<long> next = 0;
    std::vector<std::thread> starting;
    for (int i = 0; i < starters; ++i)
        starting.emplace_back([&] {
            for (long number = next++; number < count; number = next++)
                startOne(number, own, counts);
        });
    for (std::thread& thread : starting)
        thread.join();
    isOver = true;
    for (std::thread& thread : stirring)
        thread.join();
}

/// Where this process takes in orphans, the next start collects those that nobody has waited for.
void collectOrphans(char const* own)
{
    int takesIn = ::getpid() == 1;
    if (takesIn == 0)
        ::prctl(PR_GET_CHILD_SUBREAPER, &takesIn);
    for (int tries = 0; takesIn != 0 && hasChildren() && tries < 1000; ++tries) {
        ::siginfo_t unread;
        ::waitid(P_ALL, 0, &unread, WEXITED | WNOWAIT);
        char const* const program[] = {own, asProgram, nullptr};
        Vn::OsProcess process;
        process.start(program);
        process.wait();
    }
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::string(argv[1]) == asProgram)
        return beProgram();
    const long count = argc == 2 ? std::atol(argv[1]) : 0;
    if (count <= 0) {
        std::fprintf(stderr, "usage: startsoak COUNT\n");
        return 2;
    }
    const std::string own = VnTest::getProgramPath();
    const auto begin = std::chrono::steady_clock::now();
    const long descriptors = countDescriptors();
    const int output = ::fcntl(1, F_DUPFD_CLOEXEC, 3);
    int ends[2];
    if (output == -1 || ::pipe2(ends, O_CLOEXEC) != 0 || ::dup2(ends[1], 1) == -1) {
        std::perror("startsoak");
        return 2;
    }
    ::close(ends[1]);

    Counts counts;
    std::thread reader([&] { read(ends[0], counts); });
    startAll(count, own.c_str(), counts);
    ::dup2(output, 1);  // the pipe's last end but those of the programs
    ::close(output);
    reader.join();
    ::close(ends[0]);
    collectOrphans(own.c_str());

    const bool hasZombies = hasChildren();
    const long left = countDescriptors() - descriptors;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::printf(
        "%ld started, %ld ran, %ld with descriptors of ours, %ld refused, %ld wrongly; %s, %ld descriptors left; "
        "%.1f s\n",
        counts.started.load(), counts.ran, counts.withDescriptors, counts.refused.load(), counts.wrong.load(),
        hasZombies ? "children left" : "no child left", left, seconds);
    const bool isRight = counts.started + counts.refused == count && counts.ran == counts.started &&
                         counts.withDescriptors == 0 && counts.wrong == 0 && !hasZombies && left == 0;
    return isRight ? 0 : 1;
}
