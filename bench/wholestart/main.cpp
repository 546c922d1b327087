// From the start of a process to the end of its `main`: the whole library, beside POCO's Foundation and Util with glog, and
// beside a program of nothing. Both write their logs' files to a folder of their own.
#include "../sidebyside.h"
#include "../workfolder.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{
void benchProgram(benchmark::State& state, std::string const& program)
{
    std::string path = (std::filesystem::read_symlink("/proc/self/exe").parent_path() / program).string();
    char* const arguments[] = {path.data(), nullptr};
    for (auto _ : state) {
        ::pid_t child = 0;
        int status = -1;
        if (::posix_spawn(&child, path.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
            ::waitpid(child, &status, 0) != child || status != 0) {
            state.SkipWithError(("can't run " + path).c_str());
            return;
        }
    }
}

auto program(char const* name)
{
    return [name](benchmark::State& state) { benchProgram(state, name); };
}
}  // namespace

int main(int argc, char** argv)
{
    const VnBench::WorkFolder folder;
    VnBench::SideBySide comparison;
    comparison.byTheClock();
    comparison.add("whole start", program("startours"), "POCO and glog", program("startpeers"));
    comparison.add("whole start, again", program("startours"), "a process that does nothing",
                   program("startnothing"));
    return comparison.run(argc, argv);
}
