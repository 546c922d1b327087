// Starts a program of another processor in its emulator: `NAME.emulated` is a copy of this, and runs `NAME` beside it.
//
// So a test, a shell and the library under test start such a program as they start any other, and none of them needs to know of
// the emulator. The process stays the same one, with its number, its descriptors and its signals.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace
{
constexpr char suffix[] = VN_PROGRAM_SUFFIX;

/// A path without our suffix.
std::string withoutSuffix(std::string path)
{
    const std::size_t length = sizeof suffix - 1;
    if (path.size() > length && path.compare(path.size() - length, length, suffix) == 0)
        path.resize(path.size() - length);
    return path;
}

std::string ownPath()
{
    char path[PATH_MAX];
    const ::ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0);
}
}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> words{VN_EMULATOR};
    // What is meant for the program's loader would make the emulator's own one load libraries of another processor.
    std::vector<char*> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, "LD_", 3) == 0)
            words.insert(words.end(), {"-E", *entry});
        else
            environment.push_back(*entry);
    }
    environment.push_back(nullptr);
    words.insert(words.end(), {"-0", withoutSuffix(argc > 0 ? argv[0] : ""), withoutSuffix(ownPath())});

    std::vector<char*> command;
    for (std::string& word : words)
        command.push_back(word.data());
    for (int i = 1; i < argc; ++i)
        command.push_back(argv[i]);
    command.push_back(nullptr);
    ::execvpe(command[0], command.data(), environment.data());
    std::perror(command[0]);
    return 126;
}
