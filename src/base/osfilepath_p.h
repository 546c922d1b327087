// Private to osdirectory.cpp and osfilepath.cpp; implemented in osfilepathposix.cpp and osfilepathwindows.cpp.
#pragma once

#include <base/osfilepathgrammar_p.h>

#include <cstddef>
#include <string>

namespace Vn::System
{

/// How this system writes its paths.
OsFilePathGrammar getPathGrammar();

/// A path from the root, and where its last element starts: at its end, if it ends in a separator.
struct ResolvedPath
{
    std::string path;
    std::size_t lastElement = 0;
};

/// `path` against the process's current directory. Throws ExSysErrorWindows.
ResolvedPath resolvePath(char const* path);

/// Fill a caller's buffer; a longer text is cut. getTempDir() throws ExSysErrorWindows.
void getTempDir(char* buffer, std::size_t size);
void getRootDir(char* buffer, std::size_t size);

}  // namespace Vn::System
