// osfilepathposix.cpp (Windows form: osfilepathwindows.cpp)
//
// Resolving a path works on its text: the current directory in front of a relative one, then ".", ".." and doubled
// separators collapse. The file system is not asked, so nothing need exist and symlinks are not followed; realpath()
// would do both, and would fail for a file that is about to be created. Only getcwd() can fail: the current directory
// may have been removed, or be out of reach.
#include <base/exsyserror.h>
#include <base/osenv_p.h>
#include <base/osfilepath_p.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osfilepathwindows";

/// The current directory, however long: the buffer doubles until it suffices.
std::string getCurrentDirectory()
{
    std::string directory(256, '\0');
    while (::getcwd(directory.data(), directory.size()) == nullptr) {
        if (errno != ERANGE)
            throw ExSysErrorWindows(sourceName, __LINE__);
        directory.resize(directory.size() * 2);
    }
    directory.resize(directory.find('\0'));
    return directory;
}
}  // namespace

OsFilePathGrammar getPathGrammar()
{
    return OsFilePathGrammars::onLinux();
}

ResolvedPath resolvePath(char const* path)
{
    if (path[0] == '\0') {
        errno = ENOENT;  // what every system call says to an empty path
        throw ExSysErrorWindows(sourceName, __LINE__);
    }
    const std::string directory = path[0] == '/' ? std::string() : getCurrentDirectory();
    ResolvedPath resolved;
    resolved.path = OsFilePathGrammars::resolveOnLinux(directory, path);
    resolved.lastElement = resolved.path.rfind('/') + 1;  // there is one: the path begins with it
    return resolved;
}

void getTempDir(char* buffer, std::size_t size)
{
    // Not for a program with more rights than its caller, who could lead its files elsewhere by the variable.
    char const* const directory = getOwnVariable("TMPDIR");
    const bool isSet = directory != nullptr && directory[0] != '\0';
    // A directory that doesn't exist is returned all the same: using it then fails, and names it.
    std::snprintf(buffer, size, "%s", isSet ? directory : "/tmp");
}

void getRootDir(char* buffer, std::size_t size)
{
    std::snprintf(buffer, size, "/");
}

}  // namespace Vn::System
