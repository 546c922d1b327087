#pragma once

#include <base/osfile.h>
#include <base/osfilefilter.h>
#include <base/vector.h>

namespace Vn
{

/// A directory: lists its children, creates, removes and copies it.
///
///     Vn::OsDirectory frames(Vn::OsFilePath("frames"));
///     Vn::ObjPtr<Vn::Vector<Vn::OsFilePath>> names =
///         frames.getChildrenPath(Vn::OsFileTypes::LeafPath, Vn::OsLeafFileFilter(".exr"));
///     frames.copyTo(Vn::OsFilePath("backup"));
///
/// Children come in the order of the system's listing, unsorted, without "." and "..". What appears or disappears
/// during a listing may be in it or not. Throws what OsFile throws, and what a filter throws. One thread at a time.
/// Tests: tests/base/osdirectorytest.cpp.
class VN_BASE_EXPORT OsDirectory : public OsFile
{
public:
    /// Copies `path`; whether a directory is there shows when an operation needs one.
    explicit OsDirectory(OsFilePath const& path);

    /// Leaves the file system as it is.
    ~OsDirectory() override;

    /// Removes the directory if it is empty; throws ExSysErrorWindows if it isn't, or if it is no directory.
    void remove() override;

    /// Copies the whole tree.
    ///
    ///     "frames" to "copy", nothing there       ->  copy
    ///     "frames" to "backup", a directory       ->  backup/frames, merged with what is there
    ///     "frames" to "list.txt", a file          ->  throws OsFileEx::ExFileExists
    ///
    /// Throws OsFileEx::ExNullFilePath if either path is empty. Otherwise as copyHierarchy().
    void copyTo(OsFilePath const& target) override;

    /// Creates this one directory; its parent must exist. Unlike OsFsUtils::createDir() it throws ExSysErrorWindows
    /// if the directory is there already. On Linux whoever may read it may also search it:
    ///
    ///     Permissions()         ->  rwxr-xr-x, less the file mode mask
    ///     Permissions(3, 0, 0)  ->  rwx------
    ///
    void create(OsFileTypes::Permissions const& permissions);

    /// An OsDirectory for each child directory, symlinks to one included, and an OsFile for each other child, all
    /// with their full path. The caller owns the objects and the vector; the vector does not delete the objects.
    ObjPtrRet<Vector<OsFile*>> getChildren(OsFileFilter const& filter) const;

    /// The children's names, or their paths beginning with this directory's.
    ///
    ///     "frames", LeafPath  ->  "0001.exr", "0002.exr"
    ///     "frames", FullPath  ->  "frames/0001.exr", "frames/0002.exr"
    ///     an empty directory  ->  an empty vector
    ///
    ObjPtrRet<Vector<OsFilePath>> getChildrenPath(OsFileTypes::PathTypes kind, OsFileFilter const& filter) const;

    /// Whether a child passes the filter; stops at the first that does. For an empty path it examines the current
    /// directory and does not throw.
    bool hasChildren(OsFileFilter const& filter) const;

    /// Removes the children that pass, in the order of the listing. Does not descend.
    ///
    ///     a file, an empty directory    ->  removed
    ///     a symlink to a directory      ->  the link is removed
    ///     a directory with children     ->  throws ExSysErrorWindows; earlier children are gone, later ones stay
    ///
    /// Removes from the directory that it has listed, also if another process puts a link or another directory at its
    /// path meanwhile. On Windows others can neither rename nor remove the directory until this ends.
    void removeChildren(OsFileFilter const& filter);

    /// Copies the tree or the single file at `source` to the name `target`. Symlinks are followed.
    ///
    ///     a directory on a directory           ->  merged: files of equal name are replaced, others stay
    ///     a directory on a file                ->  throws ExInternalError, as OsFsUtils::createDir() does
    ///     a cycle of links to directories      ->  throws ExSysErrorWindows (ELOOP; 1921 on Windows)
    ///     `target` lies inside `source`        ->  `target` itself is not copied
    ///
    /// Single files are copied as by OsFile::copyTo(), but nothing waits for a pipe: one that is held open by a writer
    /// and empty ends the copy (EAGAIN). The first failure ends the copy; what has been copied stays.
    ///
    /// Other processes may change both trees meanwhile. A directory or file that is swapped between its listing and its
    /// copy ends the copy with ExSysErrorWindows, for example:
    ///
    ///     a directory for a link             ->  ENOTDIR
    ///     a file for a link                  ->  ELOOP
    ///     a file for a pipe, a directory for another one    ->  ESTALE; 1006 on Windows
    ///
    /// What the copy has created leads nowhere else: links there are not followed, and no file with a second name is
    /// replaced. Links in a directory that was there before are followed.
    static void copyHierarchy(OsFilePath const& source, OsFilePath const& target);

private:
    void performCreate(OsFileTypes::Permissions const& permissions);
    void performRemove();
    ObjPtrRet<Vector<OsFilePath>> performGetChildrenPath(OsFileFilter const& filter) const;
};

}  // namespace Vn
