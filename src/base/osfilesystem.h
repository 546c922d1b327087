#pragma once

#include <base/osfiletypes.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// What the file layer asks of the system. Paths are never null; failures throw ExSysErrorWindows with the system's code,
/// read before anything else can change it.
namespace Vn::System
{

enum class FileKind
{
    Missing,  ///< or not to be found out
    RegularFile,
    Directory,
    SpecialFile
};

/// Follows symbolic links. Throws nothing.
FileKind getFileKind(char const* path);
bool isSymLink(char const* path);

/// False if something has that name already.
bool createDirectory(char const* path);

void removeDirectory(char const* path);

/// Makes an empty file. False if `failIfExists` is true and something has that name already.
bool createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

/// A file that isn't there is deleted already.
void deleteFile(char const* path);

}  // namespace Vn::System
