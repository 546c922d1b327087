// Private to osdirectory.cpp, osdirectory_p.h and ostreecopy.cpp; implemented in osopendirectorylinux.cpp and osopendirectorywindows.cpp.
#pragma once

#include <base/osfile_p.h>

#include <cstdint>
#include <optional>
#include <string>

namespace Vn::System
{

/// What opening does with a symlink at the last name of a path; on Windows, with a reparse point.
enum class Links
{
    Followed,
    Refused  ///< with the system's error
};

/// A file that has been opened in an OpenDirectory.
struct OpenedFile
{
    std::int64_t handle;  ///< closedHandle, with the system's error, if it has been refused
    FileIdentity identity;
    bool isTaken = false;  ///< refused because something has the name already
};

/// An open directory. What is asked and done through it happens in this very directory, whatever another process puts
/// in place of it, or of one above it, in the meantime.
///
///     const OpenDirectory frames("frames", Links::Followed, OpenDirectory::Use::Listing);
///     frames.removeChild("0001.exr");
///
/// A child's name is one element of a path. One thread at a time.
class OpenDirectory
{
public:
    /// What has to be allowed in the directory.
    enum class Use
    {
        Listing,
        Search  ///< to reach children by their names, and to create them
    };

    /// These throw ExSysErrorWindows, also for what is no directory. The empty path is the current directory.
    OpenDirectory(char const* path, Links links, Use use);
    OpenDirectory(OpenDirectory const& parent, char const* name, Links links, Use use);
    OpenDirectory(OpenDirectory&& other) noexcept;
    OpenDirectory& operator=(OpenDirectory&&) = delete;
    ~OpenDirectory();

    /// Throws ExSysErrorWindows.
    FileIdentity getIdentity() const;

    /// For messages: may lead elsewhere by now.
    std::string pathOf(char const* name) const;

    // Questions about a child; they follow symlinks, as those of osfile_p.h do.
    FileKind getKind(char const* name) const;
    bool isWritable(char const* name) const noexcept;

    /// Nothing, with the system's error, if that refuses.
    std::optional<FileIdentity> identify(char const* name, Links links) const;

    /// With all permissions that the process's mask leaves. False if something has that name already. Throws as
    /// createDirectory() does.
    bool createChild(char const* name) const;

    /// A directory must be empty; a symlink is removed itself. Accepts that nothing has the name, but not that this
    /// directory is gone. Throws as deleteFile() and removeDirectory() do.
    void removeChild(char const* name) const;

    /// For reading, without ever waiting: not while opening, nor in a reading of a pipe that is empty, which fails.
    /// `isRegular` says that it was a regular file when it was listed: anything else is refused then.
    OpenedFile openSource(char const* name, Links links, bool isRegular) const;

    /// Creates a file for writing; refused if something has that name already.
    OpenedFile createTarget(char const* name) const;

    /// Opens a file for writing, or creates it; leaves its content. Never waits, as openSource(). Where links are
    /// refused, so is a file that has another name elsewhere (a hard link), and on Linux what is no regular file.
    OpenedFile openTarget(char const* name, Links links) const;

    /// The descriptor, which stays ours. Of use on Linux only.
    std::int64_t getHandle() const { return _handle; }

private:
    std::string _path;
    std::int64_t _handle;
};

/// Empties an open file, unless it is no regular one. False, with the system's error, if that fails.
bool emptyFile(std::int64_t handle);

/// Sets the system's last error to the one for a thing that is no longer what it was.
void setChangedError();

}  // namespace Vn::System
