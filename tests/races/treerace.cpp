// A tree is copied, listed and emptied while another process swaps what is in it: `treerace SWAPS [SEED]`. Folders
// become links out of the tree, files become pipes, links and folders, and things vanish and appear. However that
// goes,
//
//     what lies outside the tree stays as it is,
//     each operation ends, with a result or one of the library's exceptions,
//     and no descriptor is left.
//
// The other process is this program again. It is told what to swap by a letter, swaps a number of times while the
// operation runs, and answers with a letter; so both stand still when the result is looked at. It keeps its pipes open
// at both ends: whoever reads or writes one without care waits for ever.
#include "child.h"

#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/osdirectory.h>
#include <base/osfileex.h>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{
namespace fs = std::filesystem;

constexpr int swapsPerRound = 20;
constexpr int folders = 3;  ///< in each folder of the tree
constexpr int files = 3;
constexpr int levels = 3;

constexpr char copyRound = 'c';
constexpr char removalRound = 'r';
constexpr char done = '.';

/// What lies where.
struct Ground
{
    explicit Ground(fs::path const& folder) : root(folder) {}

    fs::path root;
    fs::path outside = root / "outside";
    fs::path source = root / "source";
    fs::path target = root / "target";
    fs::path emptied = root / "emptied";
    fs::path spare = root / "spare";  ///< things on their way into a tree, and those that a swap took out
};

std::string contentOf(fs::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

void write(fs::path const& file, std::string const& content)
{
    std::ofstream(file, std::ios::binary) << content;
}

void plant(fs::path const& folder, int depth)
{
    fs::create_directories(folder);
    for (int i = 0; i < files; ++i)
        write(folder / ("f" + std::to_string(i)), std::string(i == 0 ? 150000 : 20, 's'));
    for (int i = 0; i < folders && depth > 1; ++i)
        plant(folder / ("d" + std::to_string(i)), depth - 1);
}

// --- the process that swaps ------------------------------------------------------------------------------------------

class Swapper
{
public:
    Swapper(fs::path const& root, unsigned seed) : _ground(root), _random(seed) {}

    int run()
    {
        char letter;
        while (::read(0, &letter, 1) == 1) {
            for (int i = 0; i < swapsPerRound; ++i)
                letter == copyRound ? swapOne() : swapEmptied();
            restore();
            for (int pipe : _pipes)
                ::close(pipe);
            _pipes.clear();
            if (::write(1, &done, 1) != 1)
                return 1;
        }
        return 0;
    }

private:
    unsigned below(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit - 1)(_random); }

    /// A place in one of the trees: something may be there or not. Reached without any link, as this process must not
    /// touch what lies outside either.
    struct Place
    {
        int folder;
        std::string name;
    };

    Place somewhere()
    {
        fs::path const& root = below(2) == 0 ? _ground.source : _ground.target;
        constexpr int flags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        int folder = ::open(root.c_str(), flags);
        for (unsigned depth = below(levels); depth > 0 && folder != -1; --depth) {
            const int inner = ::openat(folder, ("d" + std::to_string(below(folders))).c_str(), flags);
            ::close(folder);
            folder = inner;
        }
        return {folder, (below(3) == 0 ? "d" : "f") + std::to_string(below(folders))};
    }

    /// Makes a thing that no tree should hold.
    fs::path bait()
    {
        const fs::path path = _ground.spare / ("bait" + std::to_string(_count++));
        std::error_code ignored;
        switch (below(8)) {
        case 0:
        case 1:
            fs::create_symlink(_ground.outside / "folder", path, ignored);
            break;
        case 2:
            fs::create_symlink(_ground.outside / "victim", path, ignored);
            break;
        case 3:
            fs::create_symlink("..", path, ignored);  // a cycle
            break;
        case 4:
            fs::create_symlink(_ground.outside / "nothing", path, ignored);
            break;
        case 5:
            fs::create_hard_link(_ground.outside / "victim", path, ignored);
            break;
        case 6:
            fs::create_directory(path, ignored);
            write(path / "f0", "planted");
            break;
        default:
            if (::mkfifo(path.c_str(), 0600) == 0)
                _pipes.push_back(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
            break;
        }
        return path;
    }

    void swapOne()
    {
        const Place place = somewhere();
        if (place.folder == -1)
            return;
        char const* const name = place.name.c_str();
        const auto exchange = [&](fs::path const& thing, unsigned flags) {
            return ::renameat2(AT_FDCWD, thing.c_str(), place.folder, name, flags) == 0;
        };
        switch (below(4)) {
        case 0:  // away
            ::renameat(place.folder, name, AT_FDCWD, (_ground.spare / ("away" + std::to_string(_count++))).c_str());
            break;
        case 1: {  // there and back
            const fs::path thing = bait();
            exchange(thing, RENAME_EXCHANGE);
            exchange(thing, RENAME_EXCHANGE);
            break;
        }
        default: {  // one for the other, at once; or the bait to a free place
            const fs::path thing = bait();
            if (!exchange(thing, RENAME_EXCHANGE))
                exchange(thing, RENAME_NOREPLACE);
            break;
        }
        }
        ::close(place.folder);
    }

    /// The directory that is being emptied, for a link to the folder outside.
    void swapEmptied()
    {
        const fs::path link = _ground.spare / "link";
        if (!_isSwapped) {
            std::error_code ignored;
            fs::create_symlink(_ground.outside / "folder", link, ignored);
        }
        if (::renameat2(AT_FDCWD, link.c_str(), AT_FDCWD, _ground.emptied.c_str(), RENAME_EXCHANGE) == 0)
            _isSwapped = !_isSwapped;
    }

    void restore()
    {
        if (_isSwapped)
            swapEmptied();
    }

    const Ground _ground;
    std::mt19937 _random;
    std::vector<int> _pipes;
    unsigned long _count = 0;
    bool _isSwapped = false;
};

/// That process, at the other ends of two pipes.
class Swapping
{
public:
    Swapping(fs::path const& root, std::string const& seed)
    {
        int to[2];
        int from[2];
        if (::pipe2(to, O_CLOEXEC) != 0 || ::pipe2(from, O_CLOEXEC) != 0)
            std::abort();
        const std::string program = VnTest::getProgramPath();
        _process = ::fork();
        if (_process == 0) {
            ::dup2(to[0], 0);
            ::dup2(from[1], 1);
            ::execl(program.c_str(), "treerace", "--swap", root.c_str(), seed.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(to[0]);
        ::close(from[1]);
        _to = to[1];
        _from = from[0];
    }

    void begin(char what) const
    {
        if (::write(_to, &what, 1) != 1)
            std::abort();
    }

    void finish() const
    {
        char answer = 0;
        if (::read(_from, &answer, 1) != 1 || answer != done)
            std::abort();
    }

    bool end() const
    {
        ::close(_to);
        ::close(_from);
        int status = 1;
        return ::waitpid(_process, &status, 0) == _process && status == 0;
    }

private:
    ::pid_t _process;
    int _to;
    int _from;
};

// --- the process that uses the library -------------------------------------------------------------------------------

struct Counts
{
    long whole = 0;
    long failed = 0;
    long strange = 0;  ///< ended in an exception that is none of the library's
};

template <class Act>
void count(Counts& counts, Act const& act)
{
    try {
        act();
        ++counts.whole;
    } catch (Vn::ExBase const&) {
        ++counts.failed;
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "strange: %s\n", failure.what());
        ++counts.strange;
    }
}

/// Begins the swapping once the directory is listed, so that its path led into the tree when it was opened.
class BeginningFilter : public Vn::OsFileFilter
{
public:
    explicit BeginningFilter(Swapping const& swapping) : _swapping(swapping) {}

    bool filter(Vn::OsFilePath const&) const override
    {
        if (!_hasBegun)
            _swapping.begin(removalRound);
        _hasBegun = true;
        return true;
    }

private:
    Swapping const& _swapping;
    mutable bool _hasBegun = false;
};

Vn::OsFilePath pathOf(fs::path const& path)
{
    return Vn::OsFilePath(path.c_str());
}

/// Whatever there is to know about all that lies outside, but when it was read.
std::map<std::string, std::string> look(fs::path const& outside)
{
    std::map<std::string, std::string> found;
    for (auto const& entry : fs::recursive_directory_iterator(outside)) {
        struct ::stat status = {};
        ::lstat(entry.path().c_str(), &status);
        std::ostringstream text;
        text << status.st_ino << ' ' << status.st_mode << ' ' << status.st_size << ' '
             << (entry.is_regular_file() ? contentOf(entry.path()) : "");
        found[entry.path()] = text.str();
    }
    return found;
}

long countDescriptors()
{
    const auto descriptors = fs::directory_iterator("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

/// By the library's own operations, as far as they get: another round may have left anything there.
void listAll(fs::path const& folder, int depth)
{
    const Vn::ObjPtr<Vn::Vector<Vn::OsFile*>> children(
        Vn::OsDirectory(pathOf(folder)).getChildren(Vn::OsPassThroughFilter()));
    std::vector<std::unique_ptr<Vn::OsFile>> owned(children->begin(), children->end());
    for (auto const& child : owned)
        if (depth > 0 && dynamic_cast<Vn::OsDirectory const*>(child.get()) != nullptr)
            listAll(child->getPath().getChars(), depth - 1);
}

class Race
{
public:
    Race(fs::path const& root, std::string const& seed) : _ground(root)
    {
        fs::create_directories(_ground.outside / "folder");
        write(_ground.outside / "victim", "untouched");
        for (char const* name : {"f0", "f1", "f2", "g", "d0"})
            write(_ground.outside / "folder" / name, "untouched as well");
        _outside = look(_ground.outside);
        _swapping.emplace_back(root, seed);
        _descriptors = countDescriptors();
    }

    bool run(long swaps)
    {
        for (long i = 0; i < swaps; i += 2L * swapsPerRound)
            if (!copyOnce() || !emptyOnce())
                return false;
        return _swapping.front().end() && _copies.strange + _lists.strange + _removals.strange == 0;
    }

    void report(double seconds) const
    {
        std::printf(
            "%ld copies whole, %ld ended; %ld lists whole, %ld ended; %ld folders emptied, %ld not; %.1f s\n",
            _copies.whole, _copies.failed, _lists.whole, _lists.failed, _removals.whole, _removals.failed, seconds);
    }

private:
    void clear(fs::path const& folder) const
    {
        fs::remove_all(folder);
        fs::remove_all(_ground.spare);
        fs::create_directory(_ground.spare);
    }

    bool copyOnce()
    {
        clear(_ground.source);
        clear(_ground.target);
        plant(_ground.source, levels);
        _swapping.front().begin(copyRound);
        count(_copies, [&] { Vn::OsDirectory::copyHierarchy(pathOf(_ground.source), pathOf(_ground.target)); });
        count(_lists, [&] { listAll(_ground.source, levels); });
        _swapping.front().finish();
        return isIntact("copy");
    }

    bool emptyOnce()
    {
        clear(_ground.emptied);
        plant(_ground.emptied, 1);
        for (char const* name : {"g", "h", "i", "j", "k", "l"})
            write(_ground.emptied / name, "goes");
        const BeginningFilter filter(_swapping.front());
        count(_removals, [&] { Vn::OsDirectory(pathOf(_ground.emptied)).removeChildren(filter); });
        _swapping.front().finish();
        if (!fs::is_empty(_ground.emptied)) {
            std::fprintf(stderr, "emptied: something is left in the directory\n");
            return false;
        }
        return isIntact("emptied");
    }

    bool isIntact(char const* after) const
    {
        if (countDescriptors() != _descriptors) {
            std::fprintf(stderr, "%s: %ld descriptors, there were %ld\n", after, countDescriptors(), _descriptors);
            return false;
        }
        const std::map<std::string, std::string> now = look(_ground.outside);
        if (now == _outside)
            return true;
        for (auto const& [path, before] : _outside)
            if (!now.contains(path) || now.at(path) != before)
                std::fprintf(stderr, "%s: %s was touched\n", after, path.c_str());
        for (auto const& [path, text] : now)
            if (!_outside.contains(path))
                std::fprintf(stderr, "%s: %s is new\n", after, path.c_str());
        return false;
    }

    const Ground _ground;
    std::map<std::string, std::string> _outside;
    std::vector<Swapping> _swapping;  ///< one, which starts after the ground is laid
    long _descriptors = 0;
    Counts _copies;
    Counts _lists;
    Counts _removals;
};
}  // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string(argv[1]) == "--swap")
        return Swapper(argv[2], static_cast<unsigned>(std::atol(argv[3]))).run();
    const long swaps = argc >= 2 ? std::atol(argv[1]) : 0;
    if (swaps <= 0) {
        std::fprintf(stderr, "usage: treerace SWAPS [SEED]\n");
        return 2;
    }
    std::string root = (fs::temp_directory_path() / "treeraceXXXXXX").string();
    if (::mkdtemp(root.data()) == nullptr) {
        std::perror("treerace");
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    Race race(root, argc > 2 ? argv[2] : "1");
    const bool holds = race.run(swaps);
    race.report(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    if (holds)
        fs::remove_all(root);
    else
        std::fprintf(stderr, "left in %s\n", root.c_str());
    return holds ? 0 : 1;
}
