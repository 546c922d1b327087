// Everything that lists goes through visitChildren(): it opens the directory, judges each child by the filter, and
// hands on what passes, in the system's order. The listing tells the type of most children, so the library's own
// filters are applied to name and type (ListingFilter), and only a symlink, or a child whose type the file system
// doesn't list, costs a question to the system. A filter of another class, also a derived one, is asked about the
// full path. Three results are made of that:
//
//     getChildrenPath()   one block of text first (ChildTexts), then the vector of paths, whose length is then known
//     getChildren()       an object for each child: a directory is told from a file by the listing, which costs no
//                         question; only for a symlink the system is asked
//     hasChildren()       ends at the first child
//
// removeChildren() lists and removes in one directory that it holds open; a tree is copied by ostreecopy.cpp.
//
// Failures of the system have the source name of the platform's form on every system.
#include <base/osdirectory.h>

#include <base/exsyserror.h>
#include <base/osdirectory_p.h>
#include <base/osfile_p.h>
#include <base/osfileex.h>
#include <base/osfilepath_p.h>
#include <base/osfsutils.h>
#include <base/osopendirectory_p.h>
#include <base/ostreecopy_p.h>

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
using System::OpenDirectory;

/// Both systems list these two; neither is a child.
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
    DirectoryListing const& listing;

    bool isDirectory() const { return listing.isDirectory(); }
};

/// The path of one child after the other, in one block of memory.
class ChildPath
{
public:
    explicit ChildPath(OsFilePath const& directory)
        : _path(System::getPathGrammar().join(directory.getChars(), "")), _nameStart(_path.size())
    {}

    /// The name that was given last.
    char const* getName() const { return _path.c_str() + _nameStart; }

    /// The path of the child `name`; valid until the next call.
    char const* set(char const* name)
    {
        _path.resize(_nameStart);
        _path += name;
        return _path.c_str();
    }

private:
    std::string _path;
    const std::size_t _nameStart;
};
}  // namespace

/// A filter as a listing applies it: by what the listing tells, as far as that goes.
class ListingFilter
{
public:
    explicit ListingFilter(OsFileFilter const& filter) : _filter(filter), _rule(ruleOf(typeid(filter))) {}

    /// Whether the name rules the child out, without its path and without a question.
    bool refusesName(char const* name, DirectoryListing::Kind kind) const
    {
        if (_rule == Rule::Directories)
            return kind == DirectoryListing::Kind::RegularFile || kind == DirectoryListing::Kind::Other;
        if (_rule != Rule::Leaves)
            return false;
        return kind == DirectoryListing::Kind::Directory || (isPlain(name) && !leafFilter().acceptsName(name));
    }

    /// For a child that refusesName() has let pass.
    bool accepts(Child const& child) const
    {
        switch (_rule) {
        case Rule::All:
            return true;
        case Rule::Directories:
            return child.isDirectory();
        case Rule::Leaves:
            return isPlain(child.name) ? !child.isDirectory() : asksFilter(child);
        default:
            return asksFilter(child);
        }
    }

private:
    enum class Rule
    {
        All,
        Directories,
        Leaves,
        Own  ///< that of a class which is not the library's
    };

    /// By the exact class: one that is derived from ours may judge in any way.
    static Rule ruleOf(std::type_info const& type)
    {
        if (type == typeid(OsPassThroughFilter))
            return Rule::All;
        if (type == typeid(OsDirectoryFilter))
            return Rule::Directories;
        return type == typeid(OsLeafFileFilter) ? Rule::Leaves : Rule::Own;
    }

    /// Whether the base name of a path that ends in `name` is just that. Windows drops dots and blanks at the end.
    static bool isPlain(char const* name)
    {
        const std::size_t length = std::strlen(name);
        return length != 0 && name[length - 1] != '.' && name[length - 1] != ' ';
    }

    OsLeafFileFilter const& leafFilter() const { return static_cast<OsLeafFileFilter const&>(_filter); }
    bool asksFilter(Child const& child) const { return _filter.filter(OsFilePath(child.path)); }

    OsFileFilter const& _filter;
    const Rule _rule;
};

namespace
{
/// Calls `visit` with each child that passes the filter, until it returns false.
template <class Visit>
void visitChildren(DirectoryListing& listing, OsFilePath const& directory, OsFileFilter const& filter,
                   Visit const& visit)
{
    const ListingFilter listingFilter(filter);
    ChildPath path(directory);
    while (listing.next()) {
        if (listingFilter.refusesName(listing.getName(), listing.getKind()))
            continue;
        char const* const whole = path.set(listing.getName());
        const Child child{whole, path.getName(), listing};
        if (listingFilter.accepts(child) && !visit(child))
            return;
    }
}

template <class Visit>
void visitChildren(OsFilePath const& directory, OsFileFilter const& filter, Visit const& visit)
{
    DirectoryListing listing(directory.getChars());
    visitChildren(listing, directory, filter, visit);
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

    template <class Use>
    void forEach(Use const& use) const
    {
        for (std::size_t start = 0; start < _texts.size(); start = _texts.find('\0', start) + 1)
            use(_texts.c_str() + start);
    }

    ObjPtrRet<Vector<OsFilePath>> makePaths() const
    {
        ObjPtrRet<Vector<OsFilePath>> paths(new Vector<OsFilePath>);
        paths->reserve(_count);
        forEach([&paths](char const* text) { paths->emplace_back(text); });
        return paths;
    }

private:
    std::string _texts;  ///< each with its terminator
    std::size_t _count = 0;
};
}  // namespace

bool System::DirectoryListing::isDirectory() const
{
    return _kind == Kind::Unknown ? leadsToDirectory() : _kind == Kind::Directory;
}

// Portable, so that both platforms' forms only read entries.
bool System::DirectoryListing::next()
{
    while (readEntry())
        if (!isSelfOrParent(_name))
            return true;
    return false;
}

OsDirectory::OsDirectory(OsFilePath const& path) : OsFile(path) {}

OsDirectory::~OsDirectory() = default;

// A public operation checks its paths, a private one makes the call.
void OsDirectory::remove()
{
    requirePath(getPath(), __LINE__);
    performRemove();
}

// Into an existing directory under the own name, as a file is copied; onto a file never, also if that may be written.
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

// By what the path leads to: a symlink to a directory becomes an OsDirectory, one to nothing an OsFile.
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

// Intended: every kind but FullPath gives names. Do not mend: any other number is taken for LeafPath.
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
// that leads to a directory. The listing is complete before the first removal, and the directory stays open from the
// one to the other: what another process puts at its path meanwhile is left alone.
void OsDirectory::removeChildren(OsFileFilter const& filter)
{
    requirePath(getPath(), __LINE__);
    const OpenDirectory directory(getPath().getChars(), System::Links::Followed, OpenDirectory::Use::Listing);
    ChildTexts names;
    {
        DirectoryListing listing(directory);
        visitChildren(listing, getPath(), filter, [&names](Child const& child) {
            names.add(child.name);
            return true;
        });
    }
    names.forEach([&directory](char const* name) { directory.removeChild(name); });
}

void OsDirectory::copyHierarchy(OsFilePath const& source, OsFilePath const& target)
{
    copyTree(source, target);
}

void OsDirectory::performCreate(OsFileTypes::Permissions const& permissions)
{
    if (!System::makeDirectory(getPath().getChars(), permissions))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

// Only an empty directory can be removed; removeChildren() empties one of files.
void OsDirectory::performRemove()
{
    if (!System::removeEmptyDirectory(getPath().getChars()))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
}

// Names alone, of which each is the end of its child's path.
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
