// The whole start with 10, 1,000 and 10,000 packages and as many settings, each in a process of its own, beside a POCO
// application with as many subsystems and flags of gflags.
//
//     benchgrowth [ROUNDS]
#include "../rounds.h"
#include "../workfolder.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{
/// Milliseconds that startgrown, beside this program, measures.
double timeOfStart(std::string const& arguments)
{
    static const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::FILE* const pipe = ::popen(("'" + (folder / "startgrown").string() + "' " + arguments).c_str(), "r");
    double nanoseconds = 0;
    if (pipe == nullptr || std::fscanf(pipe, "%lf", &nanoseconds) != 1 || ::pclose(pipe) != 0) {
        std::fprintf(stderr, "benchgrowth: can't run startgrown %s\n", arguments.c_str());
        std::exit(1);
    }
    return nanoseconds / 1e6;
}
}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 20;
    const VnBench::WorkFolder folder;
    VnBench::Rounds::printHead();
    for (char const* count : {"10", "1000", "10000"}) {
        VnBench::Rounds starts("start with " + std::string(count), "ms");
        for (char const* who : {"ours", "peers"}) {
            const std::string arguments = std::string(who) + " " + count + " " + count;
            starts.add(who, [arguments] { return timeOfStart(arguments); });
        }
        starts.run(rounds);
    }
    return 0;
}
