#pragma once

#include <base/osfile.h>
#include <base/osfilefilter.h>
#include <base/vector.h>

namespace Vn
{

/// A directory: what is in it, and building and copying whole trees.
///
///     Vn::OsDirectory frames(Vn::OsFilePath("frames"));
///     Vn::ObjPtr<Vn::Vector<Vn::OsFilePath>> names =
///         frames.getChildrenPath(Vn::OsFileTypes::LeafPath, Vn::OsLeafFileFilter(".exr"));
///     frames.copyTo(Vn::OsFilePath("backup"));
///
/// Children come in the order of the system's listing, unsorted, without "." and "..". What comes or goes while a
/// listing runs is listed or isn't. Failures as OsFile's; one thread at a time.
/// Tests: tests/base/osdirectorytest.cpp.
class VN_BASE_EXPORT OsDirectory : public OsFile
{
public:
    explicit OsDirectory(OsFilePath const& path);
    ~OsDirectory() override;

    /// Removes the directory if it is empty; throws ExSysErrorWindows if not.
    void remove() override;

    /// Copies the tree to `target`, or into it under the own name if it is a directory. Throws OsFileEx::ExFileExists
    /// if something else is there. Otherwise as copyHierarchy().
    void copyTo(OsFilePath const& target) override;

    /// Makes the directory. What is there already is a failure here, a directory included.
    void create(OsFileTypes::Permissions const& permissions);

    /// An OsDirectory for each directory, an OsFile for each other child. The objects are the caller's, as is the
    /// vector, which doesn't delete them.
    ObjPtrRet<Vector<OsFile*>> getChildren(OsFileFilter const& filter) const;

    ObjPtrRet<Vector<OsFilePath>> getChildrenPath(OsFileTypes::PathTypes kind, OsFileFilter const& filter) const;

    /// Ends at the first child that passes. Of an empty path it looks at the current directory.
    bool hasChildren(OsFileFilter const& filter) const;

    /// Removes the children that pass, not what is in them: a directory that isn't empty ends it, and what came before
    /// is gone. A link to a directory goes as a link.
    void removeChildren(OsFileFilter const& filter);

    /// Copies a tree, or one file, to the name `target`. Directories that are there are merged into: files of the same
    /// name are replaced, others stay. Symbolic links are followed; a circle of them ends in ExSysErrorWindows (`ELOOP`,
    /// on Windows 1921). A target inside its source isn't copied itself. The first failure ends it, and what was copied
    /// stays.
    static void copyHierarchy(OsFilePath const& source, OsFilePath const& target);

private:
    void performCreate(OsFileTypes::Permissions const& permissions);
    void performRemove();
    ObjPtrRet<Vector<OsFilePath>> performGetChildrenPath(OsFileFilter const& filter) const;
};

}  // namespace Vn
