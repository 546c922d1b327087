#pragma once

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace From
{

/// One task of a page, by the name that it has on the command line.
struct Task
{
    char const* name;
    void (*run)();
};

/// Runs the task that the first argument names. 2 if there is none of that name.
inline int runTask(std::initializer_list<Task> tasks, int argc, char** argv)
{
    for (Task const& task : tasks) {
        if (argc > 1 && std::strcmp(argv[1], task.name) == 0) {
            task.run();
            return 0;
        }
    }
    for (Task const& task : tasks)
        std::fprintf(stderr, "%s %s\n", argv[0], task.name);
    return 2;
}

}  // namespace From
