// What a public header costs each source that includes it: the processor's time of the compiler, beside <iostream>.
//
//     benchheadercost [ROUNDS]
#include "rounds.h"
#include "workfolder.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{
double secondsOf(::timeval const& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Seconds that the processor worked for children that have ended.
double secondsOfChildren()
{
    ::rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

VnBench::Rounds::Measure compiling(std::filesystem::path const& folder, std::string const& header)
{
    static int number = 0;
    const std::string source = (folder / ("source" + std::to_string(number++) + ".cpp")).string();
    std::ofstream(source) << "#include <" << header << ">\n";
    const std::string command =
        VN_BENCH_COMPILER " -std=c++20 -O2 -I'" VN_BENCH_SOURCES "' -c '" + source + "' -o '" + source + ".o'";
    return [command] {
        const double before = secondsOfChildren();
        if (std::system(command.c_str()) != 0) {
            std::fprintf(stderr, "benchheadercost: fails: %s\n", command.c_str());
            std::exit(1);
        }
        return secondsOfChildren() - before;
    };
}
}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 10;
    const VnBench::WorkFolder folder;
    VnBench::Rounds::printHead();
    for (char const* header :
         {"base/invariable.h", "base/ininit.h", "base/ininitmgr.h", "base/osdirectory.h", "base/lglog.h",
          "base/trace.h", "base/lgtext.h", "base/lgvalues.h", "base/lgstreamed.h"}) {
        VnBench::Rounds compiles(header, "s");
        compiles.add("ours", compiling(folder.path(), header));
        compiles.add("<iostream>", compiling(folder.path(), "iostream"));
        compiles.run(rounds);
    }
    return 0;
}
