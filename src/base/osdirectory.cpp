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

void requirePath(OsFilePath const& path, int line)
{
    if (path.isEmpty())
        throw OsFileEx::ExNullFilePath(sourceName, line);
}

/// A child as a listing shows it to whoever asks.
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

/// Shows each child that passes to `visit`, until that returns false.
template <class Visit>
void visitChildren(OsFilePath const& directory, OsFileFilter const& filter, Visit const& visit)
{
    DirectoryListing listing(directory.getChars());
    // Asking a filter takes a path made for it; one that lets everything pass need not be asked.
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

/// The children of a directory in one block of text: the vector of paths is made when their number is known.
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

/// Copies one tree and knows where it came from and where it goes.
class TreeCopy
{
public:
    void copy(OsFilePath const& source, OsFilePath const& target)
    {
        if (!OsFsUtils::isDirectory(source.getChars())) {
            OsFile(source).copyTo(target);
            return;
        }
        System::FileIdentity identity;
        requireIdentity(source, identity);
        if (!_ancestors.empty() && identity == _targetRoot)
            return;
        if (std::find(_ancestors.begin(), _ancestors.end(), identity) != _ancestors.end()) {
            System::setLoopError();
            throw ExSysErrorWindows(systemSourceName, __LINE__);
        }
        OsFsUtils::createDir(target.getChars(), true);
        if (_ancestors.empty())
            requireIdentity(target, _targetRoot);
        _ancestors.push_back(identity);
        copyChildren(source, target);
        _ancestors.pop_back();
    }

private:
    static void requireIdentity(OsFilePath const& path, System::FileIdentity& identity)
    {
        if (!System::identify(path.getChars(), identity))
            throw ExSysErrorWindows(systemSourceName, __LINE__);
    }

    void copyChildren(OsFilePath const& source, OsFilePath const& target)
    {
        const ObjPtrRet<Vector<OsFilePath>> names =
            OsDirectory(source).getChildrenPath(OsFileTypes::LeafPath, OsPassThroughFilter());
        for (OsFilePath const& name : *names)
            copy(source + name.getChars(), target + name.getChars());
    }

    std::vector<System::FileIdentity> _ancestors;  ///< of the sources that are being copied, the root first
    System::FileIdentity _targetRoot;
};
}  // namespace

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

bool OsDirectory::hasChildren(OsFileFilter const& filter) const
{
    bool isFound = false;
    visitChildren(getPath(), filter, [&isFound](Child const&) {
        isFound = true;
        return false;
    });
    return isFound;
}

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
