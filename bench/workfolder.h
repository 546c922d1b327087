#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace VnBench
{

/// A folder for what a bench writes, the library's default logs included; it goes with the object, with exit(), and with a
/// signal that ends the program.
///
///     const VnBench::WorkFolder folder;
///     std::ofstream(folder.path() + "/source.cpp") << text;
///
/// One in a program.
class WorkFolder
{
public:
    WorkFolder()
    {
        std::string made = (std::filesystem::temp_directory_path() / "vnbase-bench-XXXXXX").string();
        if (::mkdtemp(made.data()) == nullptr || ::setenv("T4Q_TEST_DIR", made.c_str(), 1) != 0) {
            std::perror(made.c_str());
            std::exit(1);
        }
        current() = made;
        std::atexit(remove);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM})
            std::signal(signal, removeAndEnd);
    }
    ~WorkFolder() { remove(); }
    WorkFolder(WorkFolder const&) = delete;
    WorkFolder& operator=(WorkFolder const&) = delete;

    std::string const& path() const { return current(); }

    /// For a program that ends by _Exit(); may be called twice.
    static void remove()
    {
        if (!current().empty())
            std::filesystem::remove_all(current());
        current().clear();
    }

private:
    // Never destroyed: exit() still needs it.
    static std::string& current()
    {
        static std::string& path = *new std::string;
        return path;
    }

    /// By a process of its own, since nothing that allocates may be called here.
    static void removeAndEnd(int signal)
    {
        const ::pid_t child = ::fork();
        if (child == 0) {
            ::execl("/bin/rm", "rm", "-rf", "--", current().c_str(), nullptr);
            ::_exit(1);
        }
        ::waitpid(child, nullptr, 0);
        std::signal(signal, SIG_DFL);
        ::raise(signal);
    }
};

}  // namespace VnBench
