// Private to the library.
#pragma once

#include <base/osdatetypes.h>
#include <base/osfiletypes.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// What the file layer asks of the system. Paths are never null.
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

// These throw ExSysErrorWindows for what the system refuses.

/// False if something has that name already.
bool createDirectory(char const* path);

void removeDirectory(char const* path);

/// Makes an empty file. False if `failIfExists` is true and something has that name already.
bool createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

/// A file that isn't there is deleted already.
void deleteFile(char const* path);

// These answer false and leave the system's error standing for the caller, who throws it with a source name of its
// own.

bool makeDirectory(char const* path, OsFileTypes::Permissions const& permissions);
bool removeEmptyDirectory(char const* path);
bool removeFile(char const* path);

/// Refuses to replace what is at `target`.
bool renameFile(char const* path, char const* target);

bool readOwner(char const* path, std::string& owner);

/// The low 32 bits; all bits set are refused.
bool readSize(char const* path, std::uint32_t& size);

/// Which machine `path` lies on, by what the system calls that place.
bool readPlace(char const* path, std::string& place, bool& isRemote);

/// `access`: 1 for reading, 2 for writing. A directory has neither.
bool hasAccess(char const* path, std::int32_t access);

enum class FileTime
{
    LastModification,
    LastAccess
};

/// A new date in whole seconds, with all bits set if the file's time is none. Throws with `source`.
OsDateTypes::DateRep* readTime(char const* path, FileTime which, char const* source);

/// What tells one file from all others, whatever path led to it.
struct FileIdentity
{
    std::uint64_t volume = 0;
    std::uint64_t index = 0;

    bool operator==(FileIdentity const&) const = default;
};

bool identify(char const* path, FileIdentity& identity);

/// Makes a circle of links the system's last error.
void setLoopError();

}  // namespace Vn::System
