// Everything that lists goes through visitChildren(): it opens the directory, asks the filter about the full path of
// each child, and hands on what passes, in the system's order. Three results are made of that:
//
//     getChildrenPath()   one block of text first (ChildTexts), then the vector of paths, whose length is then known
//     getChildren()       an object for each child: a directory is told from a file by the listing, which costs no
//                         question; only for a symlink the system is asked
//     hasChildren()       ends at the first child
//
// A tree is copied by TreeCopy, depth first: it creates the target directory, then lists the source, then copies child
// by child. It remembers the identities of the directories that it is in the middle of. A symlink to one of these would
// make the copy endless and is refused as the system refuses a cycle of links; and the root of the target, if it lies
// inside the source, is passed over. The first failure ends the copy, and what has been copied stays.
//
// Failures of the system have the source name of the platform's form on every system.
#include <base/osdirectory.h>

#include <base/exsyserror.h>
#include <base/osdirectory_p.h>
#include <base/osfile_p.h>
#include <base/osfileex.h>
#include <base/osfilepath_p.h>
#include <base/osfsutils.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osdirectory";
constexpr char systemSourceName[] = "src/base/osdirectorywindows";

using System::DirectoryListing;

bool isSelfOrParent(char const* name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

void requirePath(OsFilePath const& path, int line)
{
    if (path.isEmpty())
        throw OsFileEx::ExNullFilePath(sourceName, line);
}

/// A child of a directory. The texts are valid only while it is visited.
struct Child
{
    char const* path;
    char const* name;  ///< the end of `path`
    DirectoryListing::Kind kind;

    bool isDirectory() const
    {
        return kind == DirectoryListing::Kind::Unknown ? OsFsUtils::isDirectory(path)
                                                       : kind == DirectoryListing::Kind::Directory;
    }
};

/// Calls `visit` with each child that passes the filter, until it returns false.
template <class Visit>
void visitChildren(OsFilePath const& directory, OsFileFilter const& filter, Visit const& visit)
{
    DirectoryListing listing(directory.getChars());
    // A filter is asked with a path object, made for the purpose; the one that passes everything need not be asked.
    const bool takesAll = typeid(filter) == typeid(OsPassThroughFilter);
    std::string path = System::getPathGrammar().join(directory.getChars(), "");
    const std::size_t folderLength = path.size();
    while (listing.next()) {
        path.resize(folderLength);
        path += listing.getName();
        if (takesAll || filter.filter(OsFilePath(path.c_str()))) {
            if (!visit(Child{path.c_str(), path.c_str() + folderLength, listing.getKind()}))
                return;
        }
    }
}

/// Collects the texts of paths in one block, so that the vector of paths can be allocated once, at its length.
class ChildTexts
{
public:
    void add(char const* text)
    {
        _texts.append(text, std::strlen(text) + 1);
        ++_count;
    }

    ObjPtrRet<Vector<OsFilePath>> makePaths() const
    {
        ObjPtrRet<Vector<OsFilePath>> paths(new Vector<OsFilePath>);
        paths->reserve(_count);
        for (std::size_t start = 0; start < _texts.size(); start = _texts.find('\0', start) + 1)
            paths->emplace_back(_texts.c_str() + start);
        return paths;
    }

private:
    std::string _texts;  ///< each with its terminator
    std::size_t _count = 0;
};

/// Copies one tree. One object for one copy.
class TreeCopy
{
public:
    void copy(OsFilePath const& source, OsFilePath const& target)
    {
        if (!OsFsUtils::isDirectory(source.getChars())) {
            OsFile(source).copyTo(target);
            return;
        }
        const System::FileIdentity identity = requireIdentity(source);
        if (!_ancestors.empty() && identity == _targetRoot)
            return;  // the target lies inside the source
        if (std::find(_ancestors.begin(), _ancestors.end(), identity) != _ancestors.end()) {
            System::setLoopError();
            throw ExSysErrorWindows(systemSourceName, __LINE__);
        }
        OsFsUtils::createDir(target.getChars(), true);
        if (_ancestors.empty())
            _targetRoot = requireIdentity(target);
        _ancestors.push_back(identity);
        copyChildren(source, target);
        _ancestors.pop_back();
    }

private:
    static System::FileIdentity requireIdentity(OsFilePath const& path)
    {
        const std::optional<System::FileIdentity> identity = System::identify(path.getChars());
        if (!identity)
            throw ExSysErrorWindows(systemSourceName, __LINE__);
        return *identity;
    }

    /// The listing is complete before the first child is copied: the target may be created in the same directory.
    void copyChildren(OsFilePath const& source, OsFilePath const& target)
    {
        const ObjPtrRet<Vector<OsFilePath>> names =
            OsDirectory(source).getChildrenPath(OsFileTypes::LeafPath, OsPassThroughFilter());
        for (OsFilePath const& name : *names)
            copy(source + name.getChars(), target + name.getChars());
    }

    std::vector<System::FileIdentity>
        _ancestors;                    ///< the source directories that contain the present one, and itself
    System::FileIdentity _targetRoot;  ///< set with the first directory
};
}  // namespace

bool System::DirectoryListing::next()
{
    while (readEntry())
        if (!isSelfOrParent(_name))
            return true;
    return false;
}

OsDirectory::OsDirectory(OsFilePath const& path) : OsFile(path) {}

OsDirectory::~OsDirectory() = default;

void OsDirectory::remove()
{
    requirePath(getPath(), __LINE__);
    performRemove();
}

void OsDirectory::copyTo(OsFilePath const& target)
{
    requirePath(getPath(), __LINE__);
    requirePath(target, __LINE__);
    OsFilePath workingCopy(target);
    if (OsFsUtils::fileExists(target.getChars())) {
        if (!OsFsUtils::isDirectory(target.getChars()))
            throw OsFileEx::ExFileExists(sourceName, __LINE__);
        workingCopy += getPath().getBaseName();
    }
    copyHierarchy(getPath(), workingCopy);
}

void OsDirectory::create(OsFileTypes::Permissions const& permissions)
{
    requirePath(getPath(), __LINE__);
    performCreate(permissions);
}

ObjPtrRet<Vector<OsFile*>> OsDirectory::getChildren(OsFileFilter const& filter) const
{
    requirePath(getPath(), __LINE__);
    std::vector<std::unique_ptr<OsFile>> children;
    visitChildren(getPath(), filter, [&children](Child const& child) {
        const OsFilePath path(child.path);
        children.push_back(child.isDirectory() ? std::make_unique<OsDirectory>(path)
                                               : std::make_unique<OsFile>(path));
        return true;
    });
    // The plain pointers come last, when nothing can throw any more: until then the objects have an owner.
    ObjPtrRet<Vector<OsFile*>> result(new Vector<OsFile*>(children.size()));
    std::transform(children.begin(), children.end(), result->begin(), [](auto& child) { return child.release(); });
    return result;
}

ObjPtrRet<Vector<OsFilePath>> OsDirectory::getChildrenPath(OsFileTypes::PathTypes kind,
                                                           OsFileFilter const& filter) const
{
    requirePath(getPath(), __LINE__);
    if (kind != OsFileTypes::FullPath)
        return performGetChildrenPath(filter);
    ChildTexts texts;
    visitChildren(getPath(), filter, [&texts](Child const& child) {
        texts.add(child.path);
        return true;
    });
    return texts.makePaths();
}

// Intended: the empty path is no error here, and means the current directory. Do not mend.
bool OsDirectory::hasChildren(OsFileFilter const& filter) const
{
    bool isFound = false;
    visitChildren(getPath(), filter, [&isFound](Child const&) {
        isFound = true;
        return false;
    });
    return isFound;
}

// Doesn't descend: a directory with children ends it with the system's error. A symlink is removed itself, also one
// that leads to a directory.
void OsDirectory::removeChildren(OsFileFilter const& filter)
{
    const ObjPtrRet<Vector<OsFilePath>> paths = getChildrenPath(OsFileTypes::FullPath, filter);
    for (OsFilePath const& path : *paths) {
        char const* const text = path.getChars();
        if (OsFsUtils::isDirectory(text) && !OsFsUtils::isSymLink(text))
            OsFsUtils::removeDir(text);
        else
            OsFsUtils::deleteFile(text);
    }
}

void OsDirectory::copyHierarchy(OsFilePath const& source, OsFilePath const& target)
{
    TreeCopy().copy(source, target);
}

void OsDirectory::performCreate(OsFileTypes::Permissions const& permissions)
{
    if (!System::makeDirectory(getPath().getChars(), permissions))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

void OsDirectory::performRemove()
{
    if (!System::removeEmptyDirectory(getPath().getChars()))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

ObjPtrRet<Vector<OsFilePath>> OsDirectory::performGetChildrenPath(OsFileFilter const& filter) const
{
    ChildTexts texts;
    visitChildren(getPath(), filter, [&texts](Child const& child) {
        texts.add(child.name);
        return true;
    });
    return texts.makePaths();
}

}  // namespace Vn
