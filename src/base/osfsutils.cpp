// The tolerant rules, the same on each system, above the calls in osfile_p.h. A null path becomes the empty one,
// which the system refuses by itself. All failures carry the source name of the platform's form on every system, as
// do those that the calls throw themselves.
#include <base/osfsutils.h>

#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/osfile_p.h>
#include <base/osfileex.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfsutilswindows";

/// The empty path names nothing on every system, and each call refuses it.
char const* orEmpty(char const* path)
{
    return path != nullptr ? path : "";
}
}  // namespace

// A path that the system does not let us look at counts as missing: these questions have no way to report an error.
bool OsFsUtils::fileExists(char const* path)
{
    return System::getFileKind(orEmpty(path)) != System::FileKind::Missing;
}

bool OsFsUtils::isDirectory(char const* path)
{
    return System::getFileKind(orEmpty(path)) == System::FileKind::Directory;
}

// Intended: true for a path at which nothing exists, unlike isDirectory(). Do not mend: it asks only that the path be
// no directory, and callers were written for that.
bool OsFsUtils::isFile(char const* path)
{
    return System::getFileKind(orEmpty(path)) != System::FileKind::Directory;
}

bool OsFsUtils::isSymLink(char const* path)
{
    return System::isSymLink(orEmpty(path));
}

// Intended: the flag is ignored, and an existing directory is always accepted. Do not mend: both values have always
// been treated alike.
void OsFsUtils::createDir(char const* path, bool)
{
    if (System::createDirectory(orEmpty(path)))
        return;
    System::requireDirectory(System::getFileKind(orEmpty(path)));
}

// Something has the name. It may be a link to nothing, or be removed by now: then the question itself has failed.
void System::requireDirectory(FileKind existing)
{
    if (existing == FileKind::Missing)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if (existing != FileKind::Directory)
        throw ExInternalError(sourceName, __LINE__, "A regular file with the same path name exists.");
}

// Unlike deleteFile(), a directory that does not exist is a failure.
void OsFsUtils::removeDir(char const* path)
{
    System::removeDirectory(orEmpty(path));
}

// Tested here, because an empty path has an exception of its own; the system's error would be ENOENT.
void OsFsUtils::createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    if (orEmpty(path)[0] == '\0')
        throw OsFileEx::ExNullFilePath(sourceName, __LINE__);
    if (!System::createFile(path, permissions, failIfExists))
        throw OsFileEx::ExFileExists(sourceName, __LINE__);
}

// The tolerance is in the platform's form, which alone can tell a missing file from a missing directory.
void OsFsUtils::deleteFile(char const* path)
{
    System::deleteFile(orEmpty(path));
}

}  // namespace Vn
