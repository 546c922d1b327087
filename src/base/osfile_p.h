// Private to the library.
#pragma once

#include <base/osdatetypes.h>
#include <base/osfiletypes.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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

/// For what has the name of a directory that is to be created: throws as OsFsUtils::createDir() does unless it is a
/// directory. `existing` is the answer of the last question to the system. Implemented in osfsutils.cpp.
void requireDirectory(FileKind existing);

void removeDirectory(char const* path);

/// Makes an empty file. False if `failIfExists` is true and something has that name already.
bool createFile(char const* path, OsFileTypes::Permissions const& permissions, bool failIfExists);

/// Accepts that the file does not exist, but not that its directory doesn't.
void deleteFile(char const* path);

// These return false or nothing if the system refuses, and leave its error for the caller, who throws it with a
// source name of its own.

/// Creates a directory. A party that may read it may search it as well.
bool makeDirectory(char const* path, OsFileTypes::Permissions const& permissions);
bool removeEmptyDirectory(char const* path);
bool removeFile(char const* path);

/// Refuses to replace what is at `target`.
bool renameFile(char const* path, char const* target);

/// Name of the owner, or the number in decimal; "" on Windows.
std::optional<std::string> readOwner(char const* path);

/// The low 32 bits of the size. A size whose low half has all bits set is refused.
std::optional<std::uint32_t> readSize(char const* path);

/// Where a file lies.
struct FilePlace
{
    std::string name;  ///< for messages: the path, on Windows the root of its drive
    bool isRemote;     ///< on another machine
};

std::optional<FilePlace> readPlace(char const* path);

/// Whether the file may be opened for `access`, which is readAccess or writeAccess. False for a directory. Throws
/// nothing.
bool hasAccess(char const* path, std::int32_t access) noexcept;

/// Which of a file's times is asked for.
enum class FileTime
{
    LastModification,
    LastAccess
};

/// One of the file's times in whole seconds; all bits set if it is outside the range of dates. Throws
/// ExSysErrorWindows with the given source name.
std::unique_ptr<OsDateTypes::DateRep> readTime(char const* path, FileTime which, char const* source);

/// Equal for two paths exactly if they lead to the same file or directory.
struct FileIdentity
{
    std::uint64_t volume = 0;
    std::uint64_t index = 0;

    bool operator==(FileIdentity const&) const = default;
};

/// Follows symlinks.
std::optional<FileIdentity> identify(char const* path);

/// Sets the system's last error to "cycle of links".
void setLoopError();

}  // namespace Vn::System
