#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/objptr.h>
#include <base/osdatetypes.h>
#include <base/osfilepath.h>
#include <base/osfiletypes.h>

#include <cstdint>

namespace Vn
{

/// A path, what can be asked about the element there, and what can be done with it.
///
///     Vn::OsFile image(Vn::OsFilePath("frame.exr"));
///     if (image.exists() && image.isReadable())
///         image.copyTo(Vn::OsFilePath("backup"));        // into the directory, if it is one
///
/// Holds the path and nothing else: every answer comes from the file system at that moment, and nothing is locked
/// between a question and the act that follows. Symlinks are followed, except that remove() and renameTo() act on the
/// link itself. One thread at a time.
///
/// What every member throws unless its comment says otherwise:
///
///     the path is empty                         OsFileEx::ExNullFilePath
///     a question, and nothing is at the path    OsFileEx::ExInvalidPath
///     the system refuses                        ExSysErrorWindows, with the system's code
///
/// Which questions are const is part of the interface that subclasses override: a subclass that caches answers may
/// change itself in those that aren't const. Those of this class change nothing.
/// Tests: tests/base/osfiletest.cpp.
class VN_BASE_EXPORT OsFile
{
public:
    /// Copies `path`, which may be empty and may name nothing. Does not touch the file system.
    explicit OsFile(OsFilePath const& path);

    /// Leaves the file system as it is.
    virtual ~OsFile();

    /// Name of the owning user.
    ///
    ///     user 1000 is "anna"       ->  "anna"
    ///     user 4711 has no name     ->  "4711"
    ///     on Windows                ->  ""
    ///
    virtual ArrayPtrRet<char> getOwner();

    /// The low 32 bits of the size in bytes.
    ///
    ///     5 GiB            ->  1 GiB
    ///     4 GiB - 1 byte   ->  throws ExSysErrorWindows: its low bits are all set, which means a failure
    ///
    /// Windows opens the file for reading to find out, so a directory throws there.
    virtual std::uint32_t getSize() const;

    /// @{
    /// Time of the last change or the last access: UTC, in whole seconds. A system time outside the range of a date
    /// gives a date with all bits set. Windows opens the file for reading to find out, so a directory throws there.
    virtual ObjPtrRet<OsDateTypes::DateRep> getLastModificationTime();
    virtual ObjPtrRet<OsDateTypes::DateRep> getLastAccessTime();
    /// @}

    /// What transfers past the system's cache would need: alignment 0, block size 0, at most 0x7FFFFFFF bytes. Throws
    /// OsFileEx::ExNoRemoteUnbuffered for a file on another machine. Linux tells that by the type of the file system,
    /// Windows by the drive that the path begins with.
    virtual ObjPtrRet<OsFileTypes::UnbufferedInfo> getUnbufferedInfo();

    /// Sum of 1 (may be read) and 2 (may be written). Throws for an empty path only.
    ///
    ///     own file, mode rw-               ->  3
    ///     a directory                      ->  0
    ///     nothing at the path              ->  0
    ///     open elsewhere, on Windows       ->  0: the file is asked for exclusively
    ///
    virtual std::int32_t getAccess() const;

    /// @{
    /// The same for one kind of access. False, without an exception, where nothing is at the path.
    virtual bool isReadable() const;
    virtual bool isWritable() const;
    /// @}

    /// @{
    /// Whether getType() is RegularFile or Directory. These throw where nothing is at the path; OsFsUtils has the
    /// questions that don't. A special file is neither. On a const object, too, they call the getType() of a
    /// subclass.
    virtual bool isFile() const;
    virtual bool isDirectory() const;
    /// @}

    /// Whether the path itself is a symlink; always false on Windows.
    ///
    ///     link to a file        ->  true
    ///     link to nothing       ->  throws OsFileEx::ExInvalidPath: existence follows the link
    ///
    virtual bool isSymLink() const;

    /// Type of the element, of a symlink's target. See OsFileTypes::ElementType for what counts as special.
    virtual OsFileTypes::ElementType getType();

    /// Whether something is at the path. False for a link to nothing, and where the system does not let us look.
    virtual bool exists() const;

    /// Does nothing here. For subclasses that cache their answers.
    virtual void refreshInfo() const;

    /// Removes a file, or a symlink as such. A directory is refused, and so is what isn't there; see
    /// OsFsUtils::deleteFile(), which accepts a missing file.
    virtual void remove();

    /// Moves the element to `target`; on success getPath() is `target`.
    ///
    ///     "a" to "b", no "b"           ->  done
    ///     "a" to "b", "b" exists       ->  throws ExSysErrorWindows (EEXIST on Linux), "b" is untouched
    ///     "a" to "a"                   ->  the same; Windows accepts it if only the case of the name changes
    ///
    /// Throws OsFileEx::ExNullFilePath if either path is empty. Linux refuses another file system (EXDEV). A Linux
    /// file system that cannot refuse to replace is checked just before, so another process can create `target` in
    /// between.
    virtual void renameTo(OsFilePath const& target);

    /// Copies the bytes to the file `target`, or into the directory `target` under the own name.
    ///
    ///     "frame.exr" to "new.exr"     ->  new.exr, created or replaced from its first byte
    ///     "frame.exr" to "backup"      ->  backup/frame.exr, if backup is a directory
    ///     "frame.exr" to "frame.exr"   ->  throws OsFileEx::ExFileExists, by whatever path
    ///
    /// Times, attributes and permissions are not copied. On a Linux file system that can share blocks (btrfs, XFS) a
    /// large copy takes no space, and hardly any time, until one of the files is changed. Throws
    /// OsFileEx::ExNullFilePath if either path is empty, OsFileEx::ExPathNotWritable if the file `target` may not be
    /// written. A failure leaves a partial target behind.
    virtual void copyTo(OsFilePath const& target);

    /// The path that all of the above concerns.
    OsFilePath const& getPath() const { return _path; }

    /// Creates an empty file, or empties the one that is there; as OsFsUtils::createFile().
    void create(OsFileTypes::Permissions const& permissions, bool failIfExists);

protected:
    /// Opens an existing file; `mode` is a sum of 1 (read) and 2 (write). Returns the system's handle, which the
    /// caller passes to close(). Never waits for the other end of a pipe; a directory is refused.
    std::int64_t open(int mode) const;

    /// Closes a handle from open(). Throws ExSysErrorWindows for what the system reports on closing.
    void close(std::int64_t handle) const;

    /// Makes the object name another path; nothing moves in the file system.
    void setPath(OsFilePath const& path);

private:
    ArrayPtrRet<char> performGetOwner() const;
    std::uint32_t performGetSize() const;
    ObjPtrRet<OsDateTypes::DateRep> performGetLastModificationTime() const;
    ObjPtrRet<OsDateTypes::DateRep> performGetLastAccessTime() const;
    ObjPtrRet<OsFileTypes::UnbufferedInfo> performGetUnbufferedInfo() const;
    std::int32_t performGetAccess(std::int32_t mask) const;
    OsFileTypes::ElementType performGetType() const;
    std::int64_t performOpen(int mode) const;
    void performRemove();
    void performRenameTo(OsFilePath const& target);

    OsFilePath _path;
};

}  // namespace Vn
