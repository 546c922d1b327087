// osfilepathposix.cpp (Windows form: osfilepathwindows.cpp)
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
        errno = ENOENT;
        throw ExSysErrorWindows(sourceName, __LINE__);
    }
    const std::string directory = path[0] == '/' ? std::string() : getCurrentDirectory();
    ResolvedPath resolved;
    resolved.path = OsFilePathGrammars::resolveOnLinux(directory, path);
    resolved.lastElement = resolved.path.rfind('/') + 1;
    return resolved;
}

void getTempDir(char* buffer, std::size_t size)
{
    char const* const directory = getOwnVariable("TMPDIR");
    const bool isSet = directory != nullptr && directory[0] != '\0';
    std::snprintf(buffer, size, "%s", isSet ? directory : "/tmp");
}

void getRootDir(char* buffer, std::size_t size)
{
    std::snprintf(buffer, size, "/");
}

}  // namespace Vn::System
