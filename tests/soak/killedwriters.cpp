// killedwriters KILLS LENGTH [full]: processes write lines of LENGTH characters into one log, under one lock, and are
// killed at any moment. With `full` the disk fills up again and again; that takes the right to mount a file system.
//
// What must hold, of all that the processes wrote:
// - Each line is whole, but for at most one of each process that was killed, which is the beginning of its next line.
// - The lines of a process come in their order. Where some are missing, an overflow line tells how many.
// Ends with 0 if so, with 1 and a line that tells what is wrong if not, and with 77 if the disk can't be filled here.
#include "logfile.h"
#include "tempfolder.h"

#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/osenv.h>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr int writers = 3;
constexpr int killsOfARound = 100;  // then the log is looked at, and begun anew
constexpr char skipped = 77;

/// The text of line `number`, which tells everything that comes after it.
std::string makeText(unsigned long number, std::size_t length)
{
    std::string text = std::to_string(number) + ' ' + std::to_string(length) + ' ';
    for (char letter = static_cast<char>('a' + number % 26); text.size() + 1 < length;)
        text += letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1);
    return text + '.';
}

[[noreturn]] void runWriter(std::size_t length)
{
    Vn::LgLog::init();
    Vn::LgQueue& queue = *new Vn::LgQueue(static_cast<unsigned long>(::getpid()));
    Vn::LgLog::getRegistry()->registerQueue(&queue);
    Vn::LgReader reader;
    for (unsigned long number = 0;; ++number) {
        if (queue.reserveEntry(Vn::LgTypes::Warning)) {
            queue.getStream() << makeText(number, length).c_str() << Vn::ends;
            queue.addEntry();
        }
        reader.flushAll();
    }
}

::pid_t startWriter(std::size_t length)
{
    const ::pid_t child = ::fork();
    if (child == 0)
        runWriter(length);
    if (child == -1)
        throw std::runtime_error("no process");
    return child;
}

/// A small disk of its own, seen by this process and its children alone. False if that isn't allowed.
bool mountSmallDisk(std::string const& folder)
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=4m") == 0;
}

/// Takes all of the disk but for some bytes, or gives it back.
class Filler
{
public:
    explicit Filler(std::string const& folder)
        : _folder(folder), _file(::open((folder + "/filler").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
    {}
    ~Filler() { ::close(_file); }
    Filler(Filler const&) = delete;
    Filler& operator=(Filler const&) = delete;

    void fill() const
    {
        struct ::statvfs disk = {};
        ::statvfs(_folder.c_str(), &disk);
        const auto left = static_cast<::off_t>(disk.f_bavail * disk.f_frsize);
        ::off_t size = ::lseek(_file, 0, SEEK_END);
        for (::off_t more = left; more >= 4096 && ::posix_fallocate(_file, size, more) != 0;)
            more /= 2;
    }

    void empty() const
    {
        if (::ftruncate(_file, 0) != 0)
            throw std::runtime_error("the filler stays");
    }

private:
    std::string _folder;
    int _file;
};

struct Tally
{
    unsigned long kills = 0;
    unsigned long lines = 0;
    unsigned long halfLines = 0;  ///< of killed writers
    unsigned long told = 0;       ///< lines that were dropped and counted
};

/// Throws what is wrong.
class Judge
{
public:
    Judge(std::size_t length, bool isFull, Tally& tally) : _length(length), _isFull(isFull), _tally(tally) {}

    void look(std::string const& path)
    {
        for (std::string const& line : VnTest::linesOf(path))
            look(std::string_view(line), line);
    }

private:
    struct Writer
    {
        unsigned long next = 0;
        unsigned long told = 0;  ///< since its last line
        bool hasHalfLine = false;
    };

    void look(std::string_view view, std::string const& line)
    {
        constexpr std::string_view noEnd = "(no line end)";
        if (view.ends_with(noEnd))
            return half(line.substr(0, line.size() - noEnd.size()));
        if (line.empty() || isBanner(line))
            return;
        const std::optional<VnTest::LogLine> parsed = VnTest::LogLine::parse(line);
        if (!parsed)
            return half(line);
        Writer& writer = _writers[parsed->threadId];
        constexpr std::string_view overflow = "Event overflow [";
        if (parsed->text.starts_with(overflow) && parsed->text.ends_with("]")) {
            writer.told += std::stoul(parsed->text.substr(overflow.size()));
            return;
        }
        const unsigned long number = std::strtoul(parsed->text.c_str(), nullptr, 10);
        if (parsed->text != makeText(number, _length))
            return half(line);
        if (writer.hasHalfLine)
            fail("a process goes on behind a half line", line);
        if (number != writer.next + writer.told)
            fail("expected number " + std::to_string(writer.next) + " with " + std::to_string(writer.told) +
                     " told",
                 line);
        _tally.told += writer.told;
        writer = {number + 1, 0, false};
        ++_tally.lines;
    }

    static bool isBanner(std::string const& line)
    {
        return line == "===== Message Logger Startup =====" || line == "===== Message Logger Stopped =====" ||
               line.starts_with("===== Started on ") || line.starts_with("===== Clock Frequency: ");
    }

    /// The beginning of a line of a process, and the last that it wrote, or of a banner.
    void half(std::string const& line)
    {
        ++_tally.halfLines;
        if (_tally.halfLines > _tally.kills)
            fail("more half lines than kills", line);
        const std::string text = line.substr(std::min<std::size_t>(line.size(), 44));
        const unsigned long number = std::strtoul(text.c_str(), nullptr, 10);
        const std::string thread = line.size() >= 33 ? line.substr(25, 8) : "";
        if (thread.empty())
            return;  // too short to tell whose it is
        Writer& writer = _writers[static_cast<std::uint32_t>(std::strtoul(thread.c_str(), nullptr, 16))];
        if (writer.hasHalfLine)
            fail("a second half line of one process", line);
        if (text.find(' ') != std::string::npos && text != makeText(number, _length).substr(0, text.size()))
            fail("torn", line);
        writer.hasHalfLine = true;
    }

    [[noreturn]] void fail(std::string const& what, std::string const& line) const
    {
        throw std::runtime_error(what + (_isFull ? ", on a full disk: " : ": ") + line.substr(0, 200));
    }

    std::size_t _length;
    bool _isFull;
    Tally& _tally;
    std::map<std::uint32_t, Writer> _writers;
};

void runRound(std::string const& log, std::size_t length, unsigned long kills, Filler const* filler, Tally& tally,
              std::mt19937& random)
{
    std::vector<::pid_t> running;
    for (int i = 0; i < writers; ++i)
        running.push_back(startWriter(length));
    std::uniform_int_distribution<int> wait(200, 4000), place(0, writers - 1);
    for (unsigned long kill = 0; kill < kills; ++kill) {
        if (filler != nullptr && kill % 4 == 1)
            filler->fill();
        if (filler != nullptr && kill % 4 == 3)
            filler->empty();
        std::this_thread::sleep_for(std::chrono::microseconds(wait(random)));  // any moment will do
        ::pid_t& victim = running[static_cast<std::size_t>(place(random))];
        ::kill(victim, SIGKILL);
        ::waitpid(victim, nullptr, 0);
        ++tally.kills;
        victim = startWriter(length);
    }
    if (filler != nullptr)
        filler->empty();
    for (const ::pid_t writer : running) {
        ::kill(writer, SIGKILL);
        ::waitpid(writer, nullptr, 0);
        ++tally.kills;
    }
    Judge(length, filler != nullptr, tally).look(log);
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: killedwriters KILLS LENGTH [full]\n";
        return 2;
    }
    const unsigned long kills = std::strtoul(argv[1], nullptr, 10);
    const std::size_t length = std::strtoul(argv[2], nullptr, 10);
    const bool isFull = argc > 3 && std::string(argv[3]) == "full";
    const VnTest::TempFolder folder;
    const std::string disk = folder.folder("disk");
    if (isFull && !mountSmallDisk(disk)) {
        std::cout << "skipped: a small disk to fill takes the right to mount one\n";
        return skipped;
    }
    const std::string log = disk + "/shared.log";
    // One log for all, which no start empties.
    Vn::OsEnv::putVariable(("T4Q_TEST_DIR=" + folder.folder("default")).c_str());
    Vn::OsEnv::putVariable(("VN_LOG_WARNING=+" + log).c_str());
    Vn::OsEnv::putVariable(("VN_LOG_INFORMATIONAL=+" + log).c_str());
    Vn::OsEnv::putVariable(("VN_INTERNAL_INTERPROCESS_LOG_LOCK=" + log).c_str());
    std::mt19937 random(std::random_device{}());
    Tally tally;
    int result = 0;
    try {
        Filler const* const filler = isFull ? new Filler(disk) : nullptr;
        while (tally.kills < kills) {
            runRound(log, length, std::min<unsigned long>(kills - tally.kills, killsOfARound), filler, tally,
                     random);
            std::ofstream(log, std::ios::trunc);
        }
        delete filler;
    } catch (std::exception const& failure) {
        std::cout << "FAILED: " << failure.what() << '\n';
        result = 1;
        std::ofstream(std::filesystem::temp_directory_path() / "vnbase-soak-failed.log", std::ios::binary)
            << VnTest::contentOf(log);
    }
    std::cout << tally.kills << " kills, " << tally.lines << " lines whole, " << tally.halfLines
              << " half lines of killed writers, " << tally.told << " dropped and told\n";
    if (isFull)
        ::umount(disk.c_str());
    // What a process that was killed has left of the lock.
    {
        delete Vn::LgInterProcessLock::create(log.c_str());
    }
    return result;
}
