#pragma once

#include <base/baseexport.h>
#include <base/osfiletypes.h>

namespace Vn
{

/// Questions and small acts on paths given as plain texts, tolerant where OsFile throws.
///
///     Vn::OsFsUtils::createDir("frames", true);        // there already? so much the better
///     Vn::OsFsUtils::deleteFile("frames/old.exr");     // not there? the same
///
/// Existence and type follow symbolic links, removing doesn't. What the system refuses is thrown as ExSysErrorWindows
/// with its code. A null path is taken for the empty one, at which nothing stands. Static only, any thread; nothing is
/// locked between a question and the act that follows.
/// Tests: tests/base/osfsutilstest.cpp.
class VN_BASE_EXPORT OsFsUtils
{
public:
    OsFsUtils() = delete;

    static bool fileExists(char const* path);

    static bool isDirectory(char const* path);

    /// False for a directory only: so true where nothing stands.
    static bool isFile(char const* path);

    /// Whether the path itself is a symbolic link, whatever it leads to. Always false on Windows.
    static bool isSymLink(char const* path);

    /// Makes one directory; its parent must exist. A directory that is there is accepted, whatever the flag says. Throws
    /// ExInternalError ("A regular file with the same path name exists.") if something else is.
    static void createDir(char const* path, bool);

    /// Removes an empty directory.
    static void removeDir(char const* path);

    /// Makes an empty file, or empties the one that is there. Throws OsFileEx::ExNullFilePath for null and "", and
    /// OsFileEx::ExFileExists if `failIfExists` is true and something is there.
    static void createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

    /// Deletes a file, or a link as a link. Nothing there is no failure, but a missing directory in the path is.
    static void deleteFile(char const* path);
};

}  // namespace Vn
