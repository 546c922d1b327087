// consoleposix.cpp (Windows form: consolewindows.cpp)
#include "console.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vnlog
{
const bool hasPagers = true;
char const* const usualPager = "less -R";

namespace
{
int lastError = 0;
::pid_t pager = 0;
}  // namespace

bool isInputTerminal()
{
    return ::isatty(STDIN_FILENO) == 1;
}

/// As the C library chooses a locale for characters: the first of three variables that is set.
bool isUtf8()
{
    for (char const* name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (char const* const value = ::getenv(name); value != nullptr && *value != '\0')
            return std::strstr(value, "UTF-8") != nullptr || std::strstr(value, "utf8") != nullptr;
    return false;
}

void setBinary() {}

bool writeOutput(std::string_view text, bool& isLeft)
{
    while (!text.empty()) {
        const ::ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        lastError = errno;
        if (lastError == EINTR)
            continue;
        isLeft = lastError == EPIPE && pager != 0;
        return isLeft;
    }
    return true;
}

std::string getReason()
{
    return std::strerror(lastError);
}

/// Whether one of the folders of PATH has a program of that name.
bool isInPath(std::string const& program)
{
    char const* const variable = ::getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "";
    while (!folders.empty()) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        if (::access((std::string(folders.substr(0, end)) + "/" + program).c_str(), X_OK) == 0)
            return true;
        folders.remove_prefix(std::min(end + 1, folders.size()));
    }
    return false;
}

/// Who names a pager that doesn't exist is told so by the shell. The usual one isn't missed where it isn't installed.
bool openPager(std::string const& command)
{
    if (command == usualPager && !isInPath("less"))
        return false;
    std::array<int, 2> ends = {};
    if (::pipe(ends.data()) != 0)
        return false;
    ::posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    ::posix_spawn_file_actions_addclose(&actions, ends[0]);
    ::posix_spawn_file_actions_addclose(&actions, ends[1]);
    std::string shell = "sh", option = "-c", text = "exec " + command;
    std::array<char*, 4> arguments = {shell.data(), option.data(), text.data(), nullptr};
    // Ends by itself where the output has fewer lines than the screen.
    ::setenv("LESS", "FRX", 0);
    const bool isStarted = ::posix_spawn(&pager, "/bin/sh", &actions, nullptr, arguments.data(), environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    if (isStarted) {
        ::dup2(ends[1], STDOUT_FILENO);
        // Who leaves the pager ends the writing, not with a signal; and Ctrl-C is the pager's.
        ::signal(SIGPIPE, SIG_IGN);
        ::signal(SIGINT, SIG_IGN);
    } else
        pager = 0;
    ::close(ends[0]);
    ::close(ends[1]);
    return isStarted;
}

void awaitPager()
{
    // The pager sees the end once no descriptor leads to it.
    ::close(STDOUT_FILENO);
    while (::waitpid(pager, nullptr, 0) < 0 && errno == EINTR) {
    }
    pager = 0;
}

}  // namespace vnlog
