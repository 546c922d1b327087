// Listing, copying, and reading and writing in small pieces, each beside the standard library or the system's own program,
// in memory (/dev/shm) and on the disk of the temporary directory.
//
//     benchfiles              all rows
//     benchfiles copy         those whose name contains the word
#include "rounds.h"

#include <base/osdirectory.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using namespace Vn;
namespace fs = std::filesystem;

constexpr int entries = 100000;
constexpr int levels = 60;
constexpr int filesPerLevel = 20;
constexpr std::size_t small = 1000 * 1000;
constexpr std::size_t large = 1000 * small;
constexpr int lines = 100000;

/// A directory for one bench, removed at the end.
class Ground
{
public:
    explicit Ground(fs::path const& parent) : _root(parent / ("vnbase-bench-" + std::to_string(::getpid())))
    {
        fs::create_directories(_root);
    }
    ~Ground() { fs::remove_all(_root); }
    Ground(Ground const&) = delete;
    Ground& operator=(Ground const&) = delete;

    std::string at(std::string const& name) const { return _root / name; }

    std::string fileOf(std::size_t size, std::string const& name) const
    {
        const std::string block(1 << 20, 'x');
        std::ofstream file(at(name), std::ios::binary);
        for (std::size_t written = 0; written < size; written += block.size())
            file.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), size - written)));
        return at(name);
    }

private:
    fs::path _root;
};

OsFilePath pathOf(std::string const& path)
{
    return OsFilePath(path.c_str());
}

template <class Action>
VnBench::Rounds::Measure timed(Action action, int count = 1)
{
    return [action, count] { return VnBench::timeOfEach(count, action) / 1000.0; };
}

void require(std::size_t found, std::size_t expected)
{
    if (found != expected)
        throw std::runtime_error("found " + std::to_string(found) + " of " + std::to_string(expected));
}

void run(std::vector<std::string> words)
{
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ::pid_t child;
    int status = -1;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error(words[0] + " failed");
}

// --- listing ---------------------------------------------------------------------------------------------------------

void list(Ground const& ground, std::string const& where)
{
    for (int i = 0; i < entries; ++i)
        std::ofstream(ground.at("entry-" + std::to_string(i) + (i % 10 == 0 ? ".exr" : ".txt")));
    const std::string folder = ground.at("");
    const OsDirectory directory(pathOf(folder));
    const auto ours = [&](OsFileFilter const& filter, std::size_t expected) {
        const ObjPtr<Vector<OsFilePath>> names(directory.getChildrenPath(OsFileTypes::FullPath, filter));
        require(names->size(), expected);
    };
    const auto theirs = [&](bool isExr, std::size_t expected) {
        std::vector<fs::path> names;
        for (auto const& entry : fs::directory_iterator(folder))
            if (!isExr || entry.path().extension() == ".exr")
                names.push_back(entry.path());
        require(names.size(), expected);
    };
    VnBench::Rounds all("list 100,000 names, " + where, "us");
    all.add("getChildrenPath", timed([&] { ours(OsPassThroughFilter(), entries); }));
    all.add("directory_iterator", timed([&] { theirs(false, entries); }));
    all.run(20);
    VnBench::Rounds some("list 100,000 names by suffix, " + where, "us");
    const auto floor = [&] {  // what the system itself takes, and no path made of it
        ::DIR* const stream = ::opendir(folder.c_str());
        std::size_t count = 0;
        while (::dirent const* const entry = ::readdir(stream))
            count += std::string_view(entry->d_name).ends_with(".exr");
        ::closedir(stream);
        require(count, entries / 10);
    };
    some.add("getChildrenPath", timed([&] { ours(OsLeafFileFilter(".exr"), entries / 10); }));
    some.add("directory_iterator", timed([&] { theirs(true, entries / 10); }));
    some.add("readdir", timed(floor));
    some.run(20);
}

/// The files below a directory, by our own classes.
std::size_t countBelow(OsDirectory const& directory)
{
    const ObjPtr<Vector<OsFile*>> children(directory.getChildren(OsPassThroughFilter()));
    std::size_t count = 0;
    for (OsFile* child : *children) {
        const std::unique_ptr<OsFile> owned(child);
        if (auto const* const below = dynamic_cast<OsDirectory const*>(child))
            count += countBelow(*below);
        else
            ++count;
    }
    return count;
}

/// 60 levels of 20 files each, of `size` bytes.
void makeTree(Ground const& ground, std::string const& name, std::size_t size)
{
    const std::string content(size, 'x');
    fs::path level = ground.at(name);
    for (int i = 0; i < levels; ++i, level /= "level") {
        fs::create_directories(level);
        for (int k = 0; k < filesPerLevel; ++k)
            std::ofstream(level / ("file-" + std::to_string(k))) << content;
    }
}

void walk(Ground const& ground)
{
    makeTree(ground, "tree", 0);
    const std::string root = ground.at("tree");
    VnBench::Rounds rounds("walk 60 levels, 1,200 files", "us");
    rounds.add("getChildren",
               timed([&] { require(countBelow(OsDirectory(pathOf(root))), levels * filesPerLevel); }));
    rounds.add("recursive_directory_iterator", timed([&] {
                   std::size_t count = 0;
                   for (auto const& entry : fs::recursive_directory_iterator(root))
                       count += !entry.is_directory();
                   require(count, levels * filesPerLevel);
               }));
    rounds.run(50);
}

// --- copying ---------------------------------------------------------------------------------------------------------

/// To a new file each time: to empty one waits for the disk to finish what the other contestant has written there.
void copyFile(Ground const& ground, std::string const& what, std::size_t size, int count)
{
    const std::string source = ground.fileOf(size, "source");
    const std::string target = ground.at("target");
    VnBench::Rounds rounds(what, "us");
    const auto measure = [&](auto copy) {
        return [&, copy] {
            fs::remove(target);
            return VnBench::timeOfEach(1, copy) / 1000.0;
        };
    };
    rounds.add("copyTo", measure([&] { OsFile(pathOf(source)).copyTo(pathOf(target)); }));
    rounds.add("copy_file", measure([&] { fs::copy_file(source, target); }));
    rounds.run(count);
}

void copyTree(Ground const& ground, std::string const& what, std::size_t size)
{
    makeTree(ground, "tree", size);
    const std::string source = ground.at("tree");
    const std::string target = ground.at("copy");
    VnBench::Rounds rounds(what, "us");
    const auto measure = [&](auto copy) {
        return [&, copy] {
            fs::remove_all(target);
            return VnBench::timeOfEach(1, copy) / 1000.0;
        };
    };
    rounds.add("copyHierarchy", measure([&] { OsDirectory::copyHierarchy(pathOf(source), pathOf(target)); }));
    rounds.add("cp -r", measure([&] { run({"cp", "-r", source, target}); }));
    rounds.run(30);
}

// --- a program that reads a tree -------------------------------------------------------------------------------------

/// The example beside the system's checksums, two at a time: 80 folders of 100 files each. Both read every byte once, and
/// compute a checksum of each file.
void inventory(Ground const& ground)
{
    const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "inventory";
    if (!fs::exists(program)) {
        std::printf("no inventory beside this program: its row is left out\n");
        return;
    }
    const std::string root = ground.at("tree");
    std::string content(40000, 'x');
    for (int i = 0; i < 80; ++i) {
        const fs::path folder = fs::path(root) / ("folder-" + std::to_string(i));
        fs::create_directories(folder);
        for (int k = 0; k < 100; ++k)
            std::ofstream(folder / ("file-" + std::to_string(k)), std::ios::binary) << content;
    }
    VnBench::Rounds rounds("inventory of 8,000 files", "us");
    const std::string quiet = " '" + root + "' >/dev/null 2>&1";
    rounds.add("inventory", timed([&] { run({"sh", "-c", program.string() + quiet}); }));
    rounds.add("md5sum, two at a time", timed([&] {
                   run({"sh", "-c", "find '" + root + "' -type f -print0 | xargs -0 -P2 -n100 md5sum >/dev/null"});
               }));
    rounds.run(10);
}

// --- small pieces ----------------------------------------------------------------------------------------------------

/// The lines of a file through a reader, which has no buffer: a block is read, and the lines are taken from it.
std::size_t countLines(std::string const& path)
{
    OsFileReader reader(pathOf(path));
    char block[0x10000];
    std::string line;
    std::size_t count = 0;
    while (const std::uint32_t size = reader.read(block, sizeof block)) {
        char const* at = block;
        char const* const end = block + size;
        while (auto const* const next =
                   static_cast<char const*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) {
            line.append(at, next);
            count += !line.empty();
            line.clear();
            at = next + 1;
        }
        line.append(at, end);
    }
    return count;
}

void readLines(Ground const& ground)
{
    {
        std::ofstream file(ground.at("lines"));
        for (int i = 0; i < lines; ++i)
            file << "line " << i << " of a file that a program reads line by line\n";
    }
    const std::string path = ground.at("lines");
    VnBench::Rounds rounds("read 100,000 lines", "us");
    rounds.add("OsFileReader, by blocks", timed([&] { require(countLines(path), lines); }));
    rounds.add("std::getline", timed([&] {
                   std::ifstream file(path);
                   std::string line;
                   std::size_t count = 0;
                   while (std::getline(file, line))
                       count += !line.empty();
                   require(count, lines);
               }));
    rounds.add("fgets", timed([&] {
                   std::FILE* const file = std::fopen(path.c_str(), "r");
                   char line[256];
                   std::size_t count = 0;
                   while (std::fgets(line, sizeof line, file) != nullptr)
                       count += line[0] != '\n';
                   std::fclose(file);
                   require(count, lines);
               }));
    rounds.run(50);
}

/// Reads and writes in pieces of a size: with each call one of the system for us, a buffer in between for the others.
void movePieces(Ground const& ground, std::size_t piece, int count)
{
    const std::size_t size = std::max<std::size_t>(small, piece * 64) / piece * piece;
    const std::string source = ground.fileOf(size, "pieces");
    const std::string target = ground.at("written");
    const std::unique_ptr<char[]> buffer(new char[piece]());
    const std::string what = " in pieces of " + std::to_string(piece);
    VnBench::Rounds reading("read" + what, "us");
    reading.add("OsFileReader", timed([&] {
                    OsFileReader reader(pathOf(source));
                    std::size_t sum = 0;
                    while (const std::uint32_t got = reader.read(buffer.get(), piece))
                        sum += got;
                    require(sum, size);
                }));
    reading.add("fread", timed([&] {
                    std::FILE* const file = std::fopen(source.c_str(), "rb");
                    std::size_t sum = 0;
                    while (const std::size_t got = std::fread(buffer.get(), 1, piece, file))
                        sum += got;
                    std::fclose(file);
                    require(sum, size);
                }));
    reading.add("ifstream", timed([&] {
                    std::ifstream file(source, std::ios::binary);
                    std::size_t sum = 0;
                    while (file.read(buffer.get(), static_cast<std::streamsize>(piece)))
                        sum += piece;
                    require(sum, size);
                }));
    reading.add("read", timed([&] {
                    const int file = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
                    std::size_t sum = 0;
                    for (::ssize_t got; (got = ::read(file, buffer.get(), piece)) > 0;)
                        sum += static_cast<std::size_t>(got);
                    ::close(file);
                    require(sum, size);
                }));
    reading.run(count);
    VnBench::Rounds writing("write" + what, "us");
    writing.add("OsFileWriter", timed([&] {
                    OsFileWriter writer(pathOf(target), OsFileTypes::Permissions(), false);
                    for (std::size_t done = 0; done < size; done += piece)
                        require(writer.write(buffer.get(), piece), piece);
                    writer.close();
                }));
    writing.add("fwrite", timed([&] {
                    std::FILE* const file = std::fopen(target.c_str(), "wb");
                    for (std::size_t done = 0; done < size; done += piece)
                        require(std::fwrite(buffer.get(), 1, piece, file), piece);
                    std::fclose(file);
                }));
    writing.add("ofstream", timed([&] {
                    std::ofstream file(target, std::ios::binary);
                    for (std::size_t done = 0; done < size; done += piece)
                        file.write(buffer.get(), static_cast<std::streamsize>(piece));
                }));
    writing.add("write", timed([&] {
                    const int file = ::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
                    for (std::size_t done = 0; done < size; done += piece)
                        require(static_cast<std::size_t>(::write(file, buffer.get(), piece)), piece);
                    ::close(file);
                }));
    writing.run(count);
}
}  // namespace

int main(int argc, char** argv)
{
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    const fs::path disk = fs::temp_directory_path();
    const fs::path memory = fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : disk;
    const auto bench = [&](std::string const& name, fs::path const& parent, auto const& body) {
        if (name.find(wanted) == std::string::npos)
            return;
        const Ground ground(parent);
        body(ground);
    };
    VnBench::Rounds::printHead();
    bench("list, disk", disk, [](Ground const& g) { list(g, "disk"); });
    bench("list, memory", memory, [](Ground const& g) { list(g, "memory"); });
    bench("walk", disk, walk);
    bench("copy 1 MB, memory", memory, [](Ground const& g) { copyFile(g, "copy 1 MB, memory", small, 200); });
    bench("copy 1 MB, disk", disk, [](Ground const& g) { copyFile(g, "copy 1 MB, disk", small, 600); });
    bench("copy 1 GB, memory", memory, [](Ground const& g) { copyFile(g, "copy 1 GB, memory", large, 5); });
    bench("copy 1 GB, disk", disk, [](Ground const& g) { copyFile(g, "copy 1 GB, disk", large, 5); });
    bench("copy tree, memory", memory, [](Ground const& g) { copyTree(g, "copy a tree, memory", 4000); });
    bench("inventory", memory, inventory);
    bench("read lines", memory, readLines);
    bench("pieces of 64", memory, [](Ground const& g) { movePieces(g, 64, 10); });
    bench("pieces of 4096", memory, [](Ground const& g) { movePieces(g, 4096, 50); });
    bench("pieces of 65536", memory, [](Ground const& g) { movePieces(g, 65536, 50); });
    return 0;
}
