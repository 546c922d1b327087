#pragma once

#include <base/baseexport.h>
#include <base/osfiletypes.h>

namespace Vn
{

/// Questions and small operations on paths given as plain texts; tolerant where OsFile throws.
///
///     Vn::OsFsUtils::createDir("frames", true);        // succeeds if it exists already
///     Vn::OsFsUtils::deleteFile("frames/old.exr");     // succeeds if it doesn't exist
///
/// Questions follow symlinks, removing does not. What the system refuses is thrown as ExSysErrorWindows with its
/// code; the questions throw nothing. A null path means the empty one, at which nothing exists. Static and stateless:
/// any thread. Nothing is locked between a question and the act that follows.
/// Tests: tests/base/osfsutilstest.cpp.
class VN_BASE_EXPORT OsFsUtils
{
public:
    OsFsUtils() = delete;

    /// @{
    /// What is at a path.
    ///
    ///                        fileExists   isDirectory   isFile
    ///     a file             true         false         true
    ///     a directory        true         true          false
    ///     a device           true         false         true
    ///     nothing            false        false         true
    ///     a link to nothing  false        false         true
    ///
    /// isFile() says only that it is no directory; what the system does not let us look at counts as nothing.
    static bool fileExists(char const* path);

    static bool isDirectory(char const* path);

    static bool isFile(char const* path);
    /// @}

    /// Whether the path itself is a symlink, be it to nothing. Always false on Windows.
    static bool isSymLink(char const* path);

    /// Creates one directory.
    ///
    ///     nothing there          ->  created, open to all on Linux but for the file mode mask
    ///     a directory            ->  accepted, whatever the flag, which is ignored
    ///     anything else          ->  throws ExInternalError ("A regular file with the same path name exists.")
    ///     no parent directory    ->  throws ExSysErrorWindows
    ///
    static void createDir(char const* path, bool);

    /// Removes an empty directory. Throws ExSysErrorWindows for any other, and for a symlink on Linux.
    static void removeDir(char const* path);

    /// Creates an empty file, or empties the one that is there.
    ///
    ///     exists, failIfExists false  ->  emptied
    ///     exists, failIfExists true   ->  throws OsFileEx::ExFileExists
    ///     null or ""                  ->  throws OsFileEx::ExNullFilePath
    ///
    /// `permissions` apply to a new file, under the file mode mask; Windows ignores them.
    static void createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

    /// Deletes a file, or a symlink as such.
    ///
    ///     "frames/old.exr", no such file     ->  nothing happens
    ///     "missing/old.exr", no such folder  ->  throws ExSysErrorWindows
    ///     a directory                        ->  throws ExSysErrorWindows
    ///
    static void deleteFile(char const* path);
};

}  // namespace Vn
