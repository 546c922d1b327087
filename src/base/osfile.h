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

/// A path, and what can be asked of it and done with it.
///
///     Vn::OsFile image(Vn::OsFilePath("frame.exr"));
///     if (image.exists() && image.isReadable())
///         image.copyTo(Vn::OsFilePath("backup"));        // into the directory, if it is one
///
/// Holds the path and nothing else: every answer comes from the file system at that moment, and nothing is locked
/// between a question and the act that follows. Symbolic links are followed, but removing and renaming take the link.
/// An empty path throws OsFileEx::ExNullFilePath, a question about a path at which nothing stands
/// OsFileEx::ExInvalidPath, and what the system refuses ExSysErrorWindows with its code. One thread at a time.
///
/// Which questions are const is part of the interface that subclasses override: a class that keeps answers may change
/// in those that aren't. Those of this class change nothing.
/// Tests: tests/base/osfiletest.cpp.
class VN_BASE_EXPORT OsFile
{
public:
    explicit OsFile(OsFilePath const& path);
    virtual ~OsFile();

    /// Name of the owner, or its number in decimal where it has no name; "" on Windows.
    virtual ArrayPtrRet<char> getOwner();

    /// The low 32 bits of the size in bytes. A size whose low bits are all set is refused.
    virtual std::uint32_t getSize() const;

    /// In whole seconds, UTC; all bits set if the system's time is none that a date can hold.
    virtual ObjPtrRet<OsDateTypes::DateRep> getLastModificationTime();
    virtual ObjPtrRet<OsDateTypes::DateRep> getLastAccessTime();

    /// What input and output past the system's cache would need: 0, 0 and 0x7FFFFFFF. Throws
    /// OsFileEx::ExNoRemoteUnbuffered for what lies on another machine.
    virtual ObjPtrRet<OsFileTypes::UnbufferedInfo> getUnbufferedInfo();

    /// A sum of 1 (may be read) and 2 (may be written), 0 for a directory and where nothing stands. On Windows what
    /// somebody else holds open counts as neither.
    virtual std::int32_t getAccess() const;
    virtual bool isReadable() const;
    virtual bool isWritable() const;

    /// By getType(), so these throw where nothing stands; OsFsUtils has questions that don't. On a const object, too,
    /// they call the getType() of a subclass, which isn't const.
    virtual bool isFile() const;
    virtual bool isDirectory() const;

    /// Throws for a link to nothing, as nothing stands there.
    virtual bool isSymLink() const;

    virtual OsFileTypes::ElementType getType();

    virtual bool exists() const;

    /// For systems whose answers would be kept. Does nothing.
    virtual void refreshInfo() const;

    virtual void remove();

    /// Moves what stands here, and this object's path along. What stands at `target` is refused and never replaced, be
    /// it the own path. On Windows only the case of the own name may change.
    virtual void renameTo(OsFilePath const& target);

    /// Copies the bytes to `target`, replacing the file there from its first byte, or into it under the own name if it
    /// is a directory. Times, attributes and permissions stay behind. Throws OsFileEx::ExPathNotWritable, and
    /// OsFileEx::ExFileExists for a copy onto itself. A failure leaves what was copied so far.
    virtual void copyTo(OsFilePath const& target);

    OsFilePath const& getPath() const { return _path; }

    /// As OsFsUtils::createFile().
    void create(OsFileTypes::Permissions const& permissions, bool failIfExists);

protected:
    /// Opens what exists, by the sum of 1 (read) and 2 (write). The system's handle, for close().
    std::int64_t open(int mode) const;
    void close(std::int64_t handle) const;
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
