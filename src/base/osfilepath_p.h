// Private to the files.
#pragma once

#include <base/osfilepathgrammar_p.h>

#include <cstddef>
#include <string>

namespace Vn::System
{

/// How this system writes its paths.
OsFilePathGrammar getPathGrammar();

/// A path from the root, and the index at which its last element starts.
///
///     "/pass/frame.exr"  6
///     "/pass/"           6, the end: there is no last element
///
struct ResolvedPath
{
    std::string path;
    std::size_t lastElement = 0;
};

/// `path` against the process's current directory. Throws ExSysErrorWindows, also for the empty path. Does not look
/// at the file system, so the path need not exist.
ResolvedPath resolvePath(char const* path);

/// Fill a caller's buffer with a terminated text. Linux cuts a longer one. getTempDir() throws ExSysErrorWindows
/// where the system has no answer.
void getTempDir(char* buffer, std::size_t size);
void getRootDir(char* buffer, std::size_t size);

}  // namespace Vn::System
