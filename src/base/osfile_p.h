// Private to the library.
#pragma once

#include <base/osdatetypes.h>
#include <base/osfiletypes.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// What the file layer asks of the system; implemented in osfilelinux.cpp and osfilewindows.cpp. Paths are never
/// null. Stateless: any thread. A call that a signal interrupts is repeated.
namespace Vn::System
{

enum class FileKind
{
    Missing,  ///< or not to be found out
    RegularFile,
    Directory,
    SpecialFile
};

/// Follows symlinks, so a link to nothing is Missing. Throws nothing; for Missing the system's error says why.
FileKind getFileKind(char const* path);

/// Whether the path itself is a link. Always false on Windows.
bool isSymLink(char const* path);

// These throw ExSysErrorWindows for what the system refuses.

/// False if something has that name already.
bool createDirectory(char const* path);

void removeDirectory(char const* path);

/// Makes an empty file. False if `failIfExists` is true and something has that name already.
bool createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

/// Accepts that the file does not exist, but not that its directory doesn't.
void deleteFile(char const* path);

// These answer false and leave the system's error standing for the caller, who throws it with a source name of its
// own.

/// Whoever may read the directory may search it as well.
bool makeDirectory(char const* path, OsFileTypes::Permissions const& permissions);
bool removeEmptyDirectory(char const* path);
bool removeFile(char const* path);

/// Refuses to replace what is at `target`.
bool renameFile(char const* path, char const* target);

/// Name of the owner, or the number in decimal; "" on Windows.
bool readOwner(char const* path, std::string& owner);

/// The low 32 bits; all bits set are refused.
bool readSize(char const* path, std::uint32_t& size);

/// Whether `path` lies on another machine, and what a message calls the place: the path, on Windows the root of its
/// drive.
bool readPlace(char const* path, std::string& place, bool& isRemote);

/// `access`: 1 for reading, 2 for writing. A directory has neither.
bool hasAccess(char const* path, std::int32_t access);

/// Which of a file's times is asked for.
enum class FileTime
{
    LastModification,
    LastAccess
};

/// A new date in whole seconds, with all bits set if the file's time is none. Throws with `source`.
OsDateTypes::DateRep* readTime(char const* path, FileTime which, char const* source);

/// Equal for two paths exactly if they lead to the same file or directory.
struct FileIdentity
{
    std::uint64_t volume = 0;
    std::uint64_t index = 0;

    bool operator==(FileIdentity const&) const = default;
};

/// Follows symlinks.
bool identify(char const* path, FileIdentity& identity);

/// Sets the system's last error to "cycle of links".
void setLoopError();

}  // namespace Vn::System
