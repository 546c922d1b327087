// everything ROUNDS [SECONDS]: processes with threads log into one file, under one lock, while all that happens to a log in years
// happens in each round: a process is killed or stops and starts again, the disk fills up, the clock jumps, the file is moved away
// and opened anew, a library comes and goes, a process forks. Ends after ROUNDS or SECONDS, whatever comes first.
//
// What must hold, of all that was ever written:
// - Each message that a queue accepted is there once, whole, and in the order of its thread, of a process that wasn't killed. What
//   was dropped for want of room or of disk is told, and the figures agree. Of a process that was killed, the end may be missing.
// - No more lines are half than processes were killed.
// - The process that lives through all of it takes no more memory and no more descriptors in the end than after a quarter.
// Ends with 0 if so, and with 1 and a line that tells what is wrong if not. Without the right to mount a small disk, the disk
// doesn't fill up, and that is told.
#include "child.h"
#include "library.h"
#include "livememory.h"
#include "tempfolder.h"

#include <threadlog/threadlog.h>

#include <base/ininitmgr.h>
#include <base/lglog.h>
#include <base/osenv.h>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace
{
using Clock = std::chrono::steady_clock;

constexpr int places = 3;             ///< processes at a time; the one at place 0 lives through all of it
constexpr int threads = 2;            ///< of each process
constexpr int tellers = threads + 1;  ///< with the children that it forks, one behind another
constexpr int child = threads;
constexpr std::chrono::seconds patience(600);  ///< of what must come sooner or later

/// What a process tells the one that looks on, and is told.
struct Place
{
    std::atomic<bool> isUp;
    std::atomic<bool> isToStop;
    std::atomic<unsigned> reopened;  ///< the number of the last move of the file that it has seen
    std::atomic<std::uint64_t> said[tellers];
    std::atomic<std::uint64_t> visits, forks, memory, descriptors;
};

struct Board
{
    std::atomic<unsigned> moves;
    std::atomic<std::int64_t> clockStep;  ///< seconds
    std::atomic<std::uint64_t> ofARound;  ///< messages that each teller has in a round, so that reading keeps up
    Place at[places];
};

Board* board = nullptr;
int boardFile = -1;

void check(bool isRight, std::string const& what)
{
    if (!isRight)
        throw std::runtime_error(what);
}

/// Waits for what another process does, which may have been killed, so nobody wakes this one: it looks again and again. A
/// process that hangs is an error.
template <class Condition>
void await(std::string const& what, Condition const& isSo)
{
    for (const Clock::time_point begin = Clock::now(); !isSo();) {
        check(Clock::now() < begin + patience, "no end of waiting: " + what);
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}
}  // namespace

/// The clock of all libraries of this program; it jumps as the board says.
extern "C" int clock_gettime(::clockid_t clock, struct ::timespec* time) noexcept
{
    if (::syscall(SYS_clock_gettime, clock, time) != 0)
        return -1;
    if (clock == CLOCK_REALTIME && board != nullptr)
        time->tv_sec += board->clockStep.load(std::memory_order_relaxed);
    return 0;
}

// A process that logs.
namespace
{
/// Of two levels, which go to one file.
Vn::LgTypes::Level levelOf(std::uint64_t number)
{
    return number % 16 == 5 ? Vn::LgTypes::Warning : Vn::LgTypes::RecoverableError;
}

/// The letters of message `number`. A few are long.
std::pair<char, std::size_t> fillingOf(std::uint64_t number)
{
    return {static_cast<char>('a' + number % 26), number % 1024 == 512 ? 3500 : number * 7 % 61};
}

void say(Vn::LgMinorGroup const& group, unsigned process, int teller, std::atomic<std::uint64_t>& said)
{
    const std::uint64_t number = said.load(std::memory_order_relaxed);
    const auto [letter, length] = fillingOf(number);
    char filling[4000];
    std::memset(filling, letter, length);
    filling[length] = '\0';
    VN_LOG(group, levelOf(number),
           process << ' ' << teller << ' ' << static_cast<unsigned long>(number) << ' '
                   << static_cast<char const*>(filling) << '.');
    said.store(number + 1, std::memory_order_release);
}

/// The library comes, logs, and goes; what it writes is its own affair.
void bringGuest()
{
    std::optional<VnTest::Library> guest;
    {
        const Vn::InReinitGuard starts;
        guest.emplace("VNtestguest");
    }
    guest->find<double()>("guestWork")();
}

void forkTeller(Vn::ThreadLog& log, Vn::LgMinorGroup const& group, unsigned process, Place& place)
{
    const ::pid_t forked = ::fork();
    if (forked == 0) {
        for (int i = 0; i < 3; ++i)
            say(group, process, child, place.said[child]);
        log.flush();
        ::_exit(0);
    }
    check(forked != -1, "no process");
    int status = 0;
    while (::waitpid(forked, &status, 0) == -1 && errno == EINTR) {
    }
    check(status == 0, "a child ended in another way");
}

std::uint64_t countDescriptors()
{
    const auto descriptors = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<std::uint64_t>(std::distance(begin(descriptors), end(descriptors)));
}

int beProcess(unsigned process, Place& place)
{
    const unsigned begun = place.reopened.load();
    int argc = 0;
    char const* const* argv = nullptr;
    Vn::InInitMgr::getInstance().initialize(argc, argv);
    {
        Vn::ThreadLog log;
        log.installCrashHandlers();
        const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Soak"), "Soak");
        std::atomic<bool> isOver = false;
        std::vector<std::thread> tellersOfAll;
        for (int teller = 0; teller < threads; ++teller)
            tellersOfAll.emplace_back([&, teller] {
                unsigned round = board->moves.load();
                for (std::uint64_t said = 0; !isOver.load(std::memory_order_relaxed);) {
                    if (round != board->moves.load(std::memory_order_relaxed)) {
                        round = board->moves.load();
                        said = 0;
                    }
                    if (said < board->ofARound.load(std::memory_order_relaxed)) {
                        say(group, process, teller, place.said[teller]);
                        ++said;
                    } else {
                        std::this_thread::sleep_for(std::chrono::microseconds(200));  // until the next round
                    }
                }
            });
        place.isUp = true;
        for (unsigned seen = begun; !place.isToStop.load();) {
            const unsigned moves = board->moves.load();
            if (moves == seen) {
                std::this_thread::sleep_for(std::chrono::microseconds(500));  // until the board tells of a move
                continue;
            }
            check(log.reopen(), "the file can't be opened anew");
            bringGuest();
            ++place.visits;
            forkTeller(log, group, process, place);
            ++place.forks;
            log.flush();
            place.memory.store(VnSoak::getLiveMemory());
            place.descriptors.store(countDescriptors());
            seen = moves;
            place.reopened.store(moves, std::memory_order_release);
        }
        isOver = true;
        for (std::thread& teller : tellersOfAll)
            teller.join();
    }
    Vn::InInitMgr::getInstance().finalize();
    return 0;
}
}  // namespace

// The one that looks on.
namespace
{
struct Tally
{
    std::uint64_t lines = 0, told = 0, halfLines = 0, killed = 0, kills = 0, stops = 0, full = 0, jumps = 0;
};

/// Reads the files one after another, and throws what is wrong.
class Judge
{
public:
    explicit Judge(Tally& tally) : _tally(tally) {}

    void read(std::string const& path)
    {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        check(file >= 0, "the file is gone");
        std::string rest;
        std::vector<char> block(1 << 20);
        for (::ssize_t size = 0; (size = ::read(file, block.data(), block.size())) > 0;) {
            std::string_view text(block.data(), static_cast<std::size_t>(size));
            for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;
                 text.remove_prefix(end + 1)) {
                if (rest.empty()) {
                    look(text.substr(0, end));
                } else {
                    look(rest.append(text.substr(0, end)));
                    rest.clear();
                }
            }
            rest += text;
        }
        ::close(file);
        if (!rest.empty())
            half(rest);
    }

    /// Holds what process number `process` has said against what was read; all its files have been.
    void close(unsigned process, Place const& place, bool wasKilled)
    {
        for (int teller = 0; teller < tellers; ++teller) {
            const std::uint64_t read = std::exchange(_next[{process, teller}], 0);
            const std::uint64_t said = place.said[teller].load();
            const std::string who = "process " + std::to_string(process) + ", teller " + std::to_string(teller) +
                                    ", of " + std::to_string(said) + " messages " + std::to_string(read);
            check(read <= said + 1, who + " were read");
            check(wasKilled || read == said, who + " were read, and it wasn't killed");
            _next.erase({process, teller});
        }
        check(wasKilled || _told[process] == 0, "process " + std::to_string(process) + " told of " +
                                                    std::to_string(_told[process]) + " more than were missing");
        _told.erase(process);
    }

private:
    /// The line that tells what the disk had no room for has the stamp of the next message of its process, and tells of all
    /// threads there.
    struct Thread
    {
        std::string stamp;
        std::uint64_t told = 0;
    };

    static bool take(std::string_view& text, std::string_view expected)
    {
        if (!text.starts_with(expected))
            return false;
        text.remove_prefix(expected.size());
        return true;
    }

    template <class Number>
    static bool takeNumber(std::string_view& text, Number& number, int base = 10)
    {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
        if (error != std::errc())
            return false;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        return true;
    }

    void look(std::string_view line)
    {
        if (line.empty() || isBanner(line))
            return;
        constexpr std::size_t stampSize = 10 + 1 + 10;
        const std::string_view stamp = line.substr(0, std::min(stampSize, line.size()));
        std::string_view text = line.substr(stamp.size());
        std::uint32_t thread = 0;
        if (!take(text, " (0x") || !takeNumber(text, thread, 16) || !take(text, ") "))
            return half(line);
        text.remove_prefix(std::min(text.find(": ") + 2, text.size()));
        Thread& of = _threads[thread];
        if (take(text, "Event overflow [")) {
            if (!takeNumber(text, of.told) || text != "]")
                return half(line);
            of.stamp = stamp;
            _tally.told += of.told;
            return;
        }
        if (text == "Arrival is here" || text.starts_with("Work "))
            return;
        unsigned process = 0;
        int teller = 0;
        std::uint64_t number = 0;
        if (!take(text, "Soak ") || !takeNumber(text, process) || !take(text, " ") || !takeNumber(text, teller) ||
            !take(text, " ") || !takeNumber(text, number) || !take(text, " "))
            return half(line);
        const auto [letter, length] = fillingOf(number);
        if (text.size() != length + 1 || text.find_first_not_of(letter) != length || text.back() != '.')
            return half(line);
        std::uint64_t& told = _told[process];
        if (of.stamp == stamp)
            told += std::exchange(of.told, 0);
        std::uint64_t& next = _next[{process, teller}];
        check(number >= next && number - next <= told, "expected " + std::to_string(next) + " with " +
                                                           std::to_string(told) +
                                                           " told: " + std::string(line.substr(0, 120)));
        told -= number - next;
        next = number + 1;
        ++_tally.lines;
    }

    static bool isBanner(std::string_view line)
    {
        return line == "===== Message Logger Startup =====" || line == "===== Message Logger Stopped =====" ||
               line.starts_with("===== Started on ") || line.starts_with("===== Clock Frequency: ");
    }

    void half(std::string_view line)
    {
        ++_tally.halfLines;
        check(_tally.halfLines <= _tally.killed,
              "more half lines than killed processes: " + std::string(line.substr(0, 200)));
    }

    Tally& _tally;
    std::map<std::pair<unsigned, int>, std::uint64_t> _next;  ///< number of a teller's next message
    std::map<unsigned, std::uint64_t> _told;                  ///< of each process, and not yet missed
    std::map<std::uint32_t, Thread> _threads;  ///< by number, which those of other processes have too
};

/// A small disk of its own, seen by this process and its children alone. False if that isn't allowed.
bool mountSmallDisk(std::string const& folder)
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=256m") == 0;
}

class Soak
{
public:
    Soak(std::string folder, bool hasDisk)
        : _disk(std::move(folder)), _log(_disk + "/shared.log"), _hasDisk(hasDisk), _judge(_tally)
    {
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
        for (int i = 0; i < places; ++i)
            start(i);
    }

    ~Soak()
    {
        for (const ::pid_t process : _processes)
            ::kill(-process, SIGKILL);
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    Soak(Soak const&) = delete;
    Soak& operator=(Soak const&) = delete;

    void run(std::uint64_t rounds, std::chrono::seconds most)
    {
        const Clock::time_point begin = Clock::now();
        std::uint64_t done = 0, first = 0;
        const auto progress = [&] {
            return std::max(static_cast<double>(done) / static_cast<double>(rounds),
                            std::chrono::duration<double>(Clock::now() - begin) / most);
        };
        for (; progress() < 1; ++done) {
            round();
            Place const& living = board->at[0];
            if (first == 0 && progress() >= 0.25) {
                first = living.memory;
                _descriptors = living.descriptors;
            }
            if (::isatty(STDERR_FILENO) == 1)
                std::cerr << "\r" << static_cast<int>(100 * progress()) << " %, " << _tally.lines << " lines "
                          << std::flush;
        }
        std::cout << done << " rounds in "
                  << std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin).count()
                  << " s: " << board->at[0].visits << " visits of a library and " << board->at[0].forks
                  << " forks of the process that lives, whose memory was " << first << " bytes after a quarter and "
                  << board->at[0].memory << " in the end, with " << board->at[0].descriptors << " descriptors\n";
        check(board->at[0].descriptors == _descriptors, "descriptors are left");
        check(!VnSoak::isFlatWithoutLeaks() || board->at[0].memory < first + tolerance, "memory grows");
        for (int i = 0; i < places; ++i)
            stop(i);
        _judge.read(_log);
        closeEnded();
    }

    Tally const& getTally() const { return _tally; }

private:
    // What the queues of a moment and the C library keep back may come and go.
    static constexpr std::uint64_t tolerance = 1 << 18;

    struct Ended
    {
        unsigned process;
        bool wasKilled;
        Place* place;
    };

    void start(int i)
    {
        Place& place = *new (&board->at[i]) Place{};
        place.reopened = board->moves.load();
        const unsigned number = _next++;
        const std::string program = VnTest::getProgramPath();
        const ::pid_t process = ::fork();
        if (process == 0) {
            ::setpgid(0, 0);
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            const std::string of = std::to_string(number), at = std::to_string(i),
                              memory = std::to_string(boardFile);
            ::execl(program.c_str(), "everything", "--process", of.c_str(), at.c_str(), memory.c_str(), nullptr);
            ::_exit(127);
        }
        check(process > 0, "no process");
        ::setpgid(process, process);
        _processes[i] = process;
        _numbers[i] = number;
        // A file that is moved before a process has opened it twice is none that it could open anew.
        await("a process starts", [&] { return place.isUp.load(); });
    }

    void kill(int i)
    {
        ::kill(-_processes[i], SIGKILL);
        for (int status = 0; ::waitpid(-_processes[i], &status, 0) > 0;)
            _tally.killed += WIFSIGNALED(status) ? 1 : 0;
        ++_tally.kills;
        end(i, true);
    }

    void stop(int i)
    {
        board->at[i].isToStop = true;
        int status = 0;
        await("a process stops", [&] { return ::waitpid(_processes[i], &status, WNOHANG) == _processes[i]; });
        check(status == 0, "a process ended with status " + std::to_string(status));
        ++_tally.stops;
        end(i, false);
    }

    /// Its account is closed when all that it has written is read.
    void end(int i, bool wasKilled)
    {
        auto* const copy = new Place{};
        for (int teller = 0; teller < tellers; ++teller)
            copy->said[teller] = board->at[i].said[teller].load();
        _ended.push_back({_numbers[i], wasKilled, copy});
    }

    void closeEnded()
    {
        for (Ended const& ended : std::exchange(_ended, {})) {
            _judge.close(ended.process, *ended.place, ended.wasKilled);
            delete ended.place;
        }
    }

    void fill() const
    {
        const int file = ::open((_disk + "/filler").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        struct ::statvfs disk = {};
        ::statvfs(_disk.c_str(), &disk);
        for (::off_t more = static_cast<::off_t>(disk.f_bavail * disk.f_frsize); more >= 4096;)
            if (::posix_fallocate(file, ::lseek(file, 0, SEEK_END), more) != 0)
                more /= 2;
        ::close(file);
    }

    void round()
    {
        const auto chance = [this](unsigned of) { return _random() % of == 0; };
        if (chance(3)) {
            board->clockStep = static_cast<std::int64_t>(_random() % 200000) - 100000;
            ++_tally.jumps;
        }
        const bool isFull = _hasDisk && chance(4);
        if (isFull) {
            fill();
            ++_tally.full;
        }
        pause();
        const int i = 1 + static_cast<int>(_random() % (places - 1));
        switch (_random() % 4) {
        case 0:
        case 1:
            kill(i);
            start(i);
            break;
        case 2:
            if (isFull)
                break;  // it would lose what it can't write, and tell nobody
            stop(i);
            start(i);
            break;
        default:
            break;
        }
        pause();
        if (isFull)
            ::unlink((_disk + "/filler").c_str());
        const std::string moved = _disk + "/moved.log";
        check(::rename(_log.c_str(), moved.c_str()) == 0, "the file can't be moved");
        const unsigned moves = ++board->moves;
        await("a process opens the file anew", [&] {
            for (Place const& place : board->at)
                if (place.reopened.load(std::memory_order_acquire) != moves)
                    return false;
            return true;
        });
        _judge.read(moved);
        ::unlink(moved.c_str());
        closeEnded();
    }

    /// What comes next is to hit the processes at a moment that nobody can foresee; nothing is decided by how long this is.
    void pause() { std::this_thread::sleep_for(std::chrono::microseconds(_random() % 100000)); }

    std::string _disk;
    std::string _log;
    bool _hasDisk;
    Tally _tally;
    Judge _judge;
    std::mt19937 _random{std::random_device{}()};
    ::pid_t _processes[places] = {};
    unsigned _numbers[places] = {};
    unsigned _next = 1;
    std::uint64_t _descriptors = 0;
    std::vector<Ended> _ended;
};

Board* mapBoard(int file)
{
    void* const memory = ::mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    check(memory != MAP_FAILED, "no shared memory");
    return static_cast<Board*>(memory);
}
}  // namespace

int main(int argc, char** argv)
try {
    if (argc == 5 && std::string_view(argv[1]) == "--process") {
        board = mapBoard(std::atoi(argv[4]));
        ::close(std::atoi(argv[4]));
        return beProcess(static_cast<unsigned>(std::atoi(argv[2])), board->at[std::atoi(argv[3])]);
    }
    if (argc < 2) {
        std::cerr << "usage: everything ROUNDS [SECONDS]\n";
        return 2;
    }
    const std::uint64_t rounds = std::strtoul(argv[1], nullptr, 10);
    const std::chrono::seconds most(argc > 2 ? std::atol(argv[2]) : 1000000);
    boardFile = ::memfd_create("board", 0);
    check(::ftruncate(boardFile, sizeof(Board)) == 0, "no memory");
    board = new (mapBoard(boardFile)) Board{};
    board->ofARound = argc > 2 ? 100000 : 8000;
    const VnTest::TempFolder folder;
    const std::string disk = folder.folder("disk");
    const bool hasDisk = mountSmallDisk(disk);
    if (!hasDisk)
        std::cout << "the disk doesn't fill up: that takes the right to mount one\n";
    const std::string log = disk + "/shared.log";
    Vn::OsEnv::putVariable(("T4Q_TEST_DIR=" + folder.folder("default")).c_str());
    for (char const* level : {"INTERNAL_ERROR", "FATAL_ERROR", "RECOVERABLE_ERROR", "WARNING", "INFORMATIONAL"})
        Vn::OsEnv::putVariable(("VN_LOG_" + std::string(level) + "=+" + log).c_str());
    // What doesn't wait is counted by its queue, and that count may be off by a few.
    Vn::OsEnv::putVariable("VN_THREADLOG_WAIT=all");
    Vn::OsEnv::putVariable(("VN_INTERNAL_INTERPROCESS_LOG_LOCK=" + log).c_str());
    int result = 0;
    {
        Soak soak(disk, hasDisk);
        try {
            soak.run(rounds, most);
        } catch (std::exception const& failure) {
            std::cout << "FAILED: " << failure.what() << '\n';
            std::error_code none;
            for (char const* name : {"moved.log", "shared.log"})
                std::filesystem::copy(disk + "/" + name,
                                      std::filesystem::temp_directory_path() /
                                          (std::string("vnbase-soak-failed-") + name),
                                      std::filesystem::copy_options::overwrite_existing, none);
            result = 1;
        }
        Tally const& tally = soak.getTally();
        std::cout << tally.lines << " messages whole, " << tally.told << " dropped and told, " << tally.halfLines
                  << " half lines of " << tally.killed << " killed processes; " << tally.kills << " kills, "
                  << tally.stops << " stops, " << tally.full << " full disks, " << tally.jumps
                  << " jumps of the clock\n";
    }
    if (hasDisk)
        ::umount(disk.c_str());
    {
        delete Vn::LgInterProcessLock::create(log.c_str());
    }
    return result;
} catch (std::exception const& failure) {
    std::cerr << "everything: " << failure.what() << '\n';
    return 1;
}
