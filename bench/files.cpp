// Copying a large file beside cp, listing a large directory and walking a deep tree beside the standard library.
#include "sidebyside.h"

#include <base/osdirectory.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

namespace
{
using namespace Vn;
namespace fs = std::filesystem;

constexpr std::size_t largeSize = std::size_t{64} << 20;
constexpr int entries = 100000;
constexpr int levels = 60;
constexpr int filesPerLevel = 20;

/// What the benchmarks work on, removed at the end.
class Ground
{
public:
    Ground() : _root(fs::temp_directory_path() / ("vnbase-bench-" + std::to_string(::getpid())))
    {
        fs::create_directories(flat());
        std::ofstream large(source(), std::ios::binary);
        const std::string block(1 << 20, 'x');
        for (std::size_t written = 0; written < largeSize; written += block.size())
            large << block;
        for (int i = 0; i < entries; ++i)
            std::ofstream(flat() + "/entry-" + std::to_string(i));
        fs::path level = deep();
        for (int i = 0; i < levels; ++i, level /= "level") {
            fs::create_directories(level);
            for (int k = 0; k < filesPerLevel; ++k)
                std::ofstream(level / ("file-" + std::to_string(k)));
        }
    }
    ~Ground() { fs::remove_all(_root); }

    std::string source() const { return _root / "source"; }
    std::string target() const { return _root / "target"; }
    std::string flat() const { return _root / "flat"; }
    std::string deep() const { return _root / "deep"; }

private:
    fs::path _root;
};

void runCp(std::string const& source, std::string const& target)
{
    std::string program = "cp", from = source, to = target;
    char* const arguments[] = {program.data(), from.data(), to.data(), nullptr};
    ::pid_t child;
    int status = -1;
    if (::posix_spawnp(&child, "cp", nullptr, nullptr, arguments, environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("cp failed");
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

void requireCount(std::size_t count, std::size_t expected)
{
    if (count != expected)
        throw std::runtime_error("found " + std::to_string(count) + " of " + std::to_string(expected));
}
}  // namespace

int main(int argc, char** argv)
{
    const Ground ground;
    VnBench::SideBySide comparison;
    comparison.byTheClock();

    comparison.add(
        "copy 64 MiB",
        [&](benchmark::State& state) {
            OsFile source(OsFilePath(ground.source().c_str()));
            for (auto _ : state)
                source.copyTo(OsFilePath(ground.target().c_str()));
        },
        "cp",
        [&](benchmark::State& state) {
            for (auto _ : state)
                runCp(ground.source(), ground.target());
        });

    comparison.add(
        "list 100,000 names",
        [&](benchmark::State& state) {
            const OsDirectory directory(OsFilePath(ground.flat().c_str()));
            for (auto _ : state) {
                const ObjPtr<Vector<OsFilePath>> names(
                    directory.getChildrenPath(OsFileTypes::FullPath, OsPassThroughFilter()));
                requireCount(names->size(), entries);
            }
        },
        "directory_iterator",
        [&](benchmark::State& state) {
            for (auto _ : state) {
                std::vector<fs::path> names;
                for (auto const& entry : fs::directory_iterator(ground.flat()))
                    names.push_back(entry.path());
                requireCount(names.size(), entries);
            }
        });

    comparison.add(
        "walk 60 levels, 1,200 files",
        [&](benchmark::State& state) {
            const OsDirectory directory(OsFilePath(ground.deep().c_str()));
            for (auto _ : state)
                requireCount(countBelow(directory), levels * filesPerLevel);
        },
        "recursive_directory_iterator",
        [&](benchmark::State& state) {
            for (auto _ : state) {
                std::size_t count = 0;
                for (auto const& entry : fs::recursive_directory_iterator(ground.deep()))
                    count += !entry.is_directory();
                requireCount(count, levels * filesPerLevel);
            }
        });

    return comparison.run(argc, argv);
}
