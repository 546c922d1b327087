// A tree is copied depth first, with a list of the levels from the root to where the copy stands. A level is a pair of
// directories, source and target, and the children that its listing has told. To enter a level is
//
//     identify the source     a directory that is already a level would make the copy endless
//     create the target       or accept the directory that is there
//     open both, list         the listing is complete before the first child is copied: the target may be created in
//                             the same directory
//
// Other processes may change both trees meanwhile. So a level holds its two directories open, every child is reached
// from there by its name (OpenDirectory), and never by a path that may lead elsewhere by now:
//
//     source    a link is followed only where the listing has told a link, or no type. What the listing called a
//               directory or a file must be one when it is opened.
//     target    a link is followed only if it stands in a directory that was there before the copy. Below the first
//               directory that the copy has created nothing is followed, and no file is replaced that has a name
//               elsewhere.
//
// What has changed ends the copy with the system's error; what was copied stays, as with any failure.
//
// A tree may be deeper than a process may have files open. Only the root and the deepest levels are held; a level that
// the copy returns to is opened again from the nearest held one above it, name by name, and must be the same directory
// as before.
#include <base/ostreecopy_p.h>

#include <base/exsyserror.h>
#include <base/osdirectory_p.h>
#include <base/osfile.h>
#include <base/osfile_p.h>
#include <base/osfilecopy_p.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>
#include <base/osfsutils.h>
#include <base/osopendirectory_p.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Vn
{
namespace
{
constexpr char fileSourceName[] = "src/base/osfile";
constexpr char systemSourceName[] = "src/base/osdirectorywindows";
constexpr std::size_t heldLevels = 32;  ///< of a deep tree; with two open directories each

using System::DirectoryListing;
using System::FileIdentity;
using System::FileKind;
using System::Links;
using System::OpenDirectory;

struct Child
{
    std::string name;
    DirectoryListing::Kind kind;
    Links links;  ///< followed if the listing has told one
};

/// How children of a target directory are reached.
struct TargetRule
{
    Links links;
    bool isNew;  ///< the copy has created the directory, so nothing is in it but what the copy puts there
};

struct Level
{
    std::string name;  ///< in the level above, on both sides
    Links sourceLinks;
    TargetRule rule;
    FileIdentity sourceIdentity;
    FileIdentity targetIdentity;
    std::optional<OpenDirectory> source;  ///< not held in the middle of a deep tree
    std::optional<OpenDirectory> target;
    std::vector<Child> children = {};
    std::size_t next = 0;  ///< index of the child that comes next
};

FileIdentity requireIdentity(std::optional<FileIdentity> identity, int line)
{
    if (!identity)
        throw ExSysErrorWindows(systemSourceName, line);
    return *identity;
}

void requireSame(FileIdentity identity, FileIdentity expected, int line)
{
    if (identity == expected)
        return;
    System::setChangedError();
    throw ExSysErrorWindows(systemSourceName, line);
}

std::vector<Child> list(OpenDirectory const& directory)
{
    std::vector<Child> children;
    for (DirectoryListing listing(directory); listing.next();)
        children.push_back({listing.getName(), listing.getKind(), listing.getLinks()});
    return children;
}

bool isDirectory(OpenDirectory const& parent, Child const& child)
{
    return child.kind == DirectoryListing::Kind::Unknown ? parent.getKind(child.name.c_str()) == FileKind::Directory
                                                         : child.kind == DirectoryListing::Kind::Directory;
}

/// One file on its way. The ends exist before anything is opened, so that what is opened always has an owner.
struct FileOnItsWay
{
    OsFileReader reader = FileCopy::closedReader();
    OsFileWriter writer = FileCopy::closedWriter();
    FileIdentity source;

    void openSource(OpenDirectory const& from, Child const& child)
    {
        const System::OpenedFile file =
            from.openSource(child.name.c_str(), child.links, child.kind == DirectoryListing::Kind::RegularFile);
        FileCopy::give(reader, file.handle);
        source = file.identity;
    }

    void run()
    {
        FileCopy::run(reader, writer);
        writer.close();
        reader.close();
    }
};

/// Into a directory that was there, or in which another process has put something of this name.
void copyOnto(OpenDirectory const& from, Child const& child, OpenDirectory const& to, Links links)
{
    FileOnItsWay file;
    file.openSource(from, child);
    const System::OpenedFile target = to.openTarget(child.name.c_str(), links);
    FileCopy::give(file.writer, target.handle);
    // It may have become the source since it was asked about.
    if (target.identity == file.source)
        throw OsFileEx::ExFileExists(fileSourceName, __LINE__);
    if (!System::emptyFile(target.handle))
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    file.run();
}

/// The rules of OsFile::copyTo(), with its exceptions: into a directory of that name; never onto itself, nor onto what
/// may not be written.
void copyByRule(OpenDirectory const& from, Child const& child, OpenDirectory const& to, Links links)
{
    char const* const name = child.name.c_str();
    const auto refuseItself = [&](OpenDirectory const& directory) {
        const std::optional<FileIdentity> source = from.identify(name, child.links);
        if (source && source == directory.identify(name, Links::Followed))
            throw OsFileEx::ExFileExists(fileSourceName, __LINE__);
    };
    const FileKind existing = to.getKind(name);
    if (existing == FileKind::Directory) {
        const OpenDirectory inner(to, name, links, OpenDirectory::Use::Search);
        refuseItself(inner);
        copyOnto(from, child, inner, links);
        return;
    }
    if (existing != FileKind::Missing) {
        refuseItself(to);
        if (!to.isWritable(name))
            throw OsFileEx::ExPathNotWritable(fileSourceName, __LINE__, to.pathOf(name).c_str());
    }
    copyOnto(from, child, to, links);
}

/// Into a directory that the copy has created. False, with nothing copied, if something has the name all the same.
bool copyAsNew(OpenDirectory const& from, Child const& child, OpenDirectory const& to)
{
    FileOnItsWay file;
    file.openSource(from, child);
    const System::OpenedFile target = to.createTarget(child.name.c_str());
    if (target.isTaken)
        return false;
    FileCopy::give(file.writer, target.handle);
    file.run();
    return true;
}

/// Copies one tree. One object for one copy.
class TreeCopy
{
public:
    void run(OsFilePath const& source, OsFilePath const& target)
    {
        enterRoot(source.getChars(), target.getChars());
        while (!_levels.empty())
            step();
    }

private:
    void enterRoot(char const* source, char const* target)
    {
        Level root{"", Links::Followed, {}, requireIdentity(System::identify(source), __LINE__), {}, {}, {}};
        root.rule.isNew = System::createDirectory(target);
        if (!root.rule.isNew)
            System::requireDirectory(System::getFileKind(target));
        root.rule.links = root.rule.isNew ? Links::Refused : Links::Followed;
        root.target.emplace(target, root.rule.links, OpenDirectory::Use::Search);
        root.targetIdentity = root.target->getIdentity();
        root.source.emplace(source, Links::Followed, OpenDirectory::Use::Listing);
        push(std::move(root));
    }

    /// `child` is a directory of the deepest level.
    void enter(Child const& child)
    {
        Level const& above = _levels.back();
        char const* const name = child.name.c_str();
        Level level{child.name, child.links, {}, {}, {}, {}, {}};
        level.sourceIdentity = requireIdentity(above.source->identify(name, child.links), __LINE__);
        // By identity and not by path: a symlink or a second mount may lead there as well.
        if (level.sourceIdentity == _levels.front().targetIdentity)
            return;  // the target lies inside the source
        refuseCycle(level.sourceIdentity);
        level.rule.isNew = above.target->createChild(name);
        if (!level.rule.isNew)
            System::requireDirectory(above.target->getKind(name));
        level.rule.links = level.rule.isNew ? Links::Refused : above.rule.links;
        level.target.emplace(*above.target, name, level.rule.links, OpenDirectory::Use::Search);
        level.targetIdentity = level.target->getIdentity();
        level.source.emplace(*above.source, name, child.links, OpenDirectory::Use::Listing);
        push(std::move(level));
    }

    void refuseCycle(FileIdentity identity) const
    {
        const bool isCycle = std::any_of(_levels.begin(), _levels.end(), [identity](Level const& level) {
            return level.sourceIdentity == identity;
        });
        if (!isCycle)
            return;
        System::setLoopError();
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    }

    void push(Level&& level)
    {
        requireSame(level.source->getIdentity(), level.sourceIdentity, __LINE__);
        level.children = list(*level.source);
        _levels.push_back(std::move(level));
        if (_levels.size() > heldLevels + 1)
            release(_levels[_levels.size() - heldLevels - 1]);
    }

    /// Copies the next child of the deepest level, or leaves it.
    void step()
    {
        Level& level = _levels.back();
        if (level.next == level.children.size()) {
            _levels.pop_back();
            return;
        }
        hold();
        const Child child = std::move(level.children[level.next++]);
        if (isDirectory(*level.source, child))
            enter(child);
        else if (!level.rule.isNew || !copyAsNew(*level.source, child, *level.target))
            copyByRule(*level.source, child, *level.target, level.rule.links);
    }

    /// The root stays, since every path begins there.
    void release(Level& level)
    {
        if (&level == &_levels.front())
            return;
        level.source.reset();
        level.target.reset();
    }

    /// Opens the deepest level again, and with it those above it that a walk from the nearest held one comes through.
    void hold()
    {
        std::size_t held = _levels.size() - 1;
        while (!_levels[held].source)
            --held;
        for (; held + 1 < _levels.size(); ++held) {
            Level const& above = _levels[held];
            Level& level = _levels[held + 1];
            char const* const name = level.name.c_str();
            level.source.emplace(*above.source, name, level.sourceLinks, OpenDirectory::Use::Listing);
            level.target.emplace(*above.target, name, level.rule.links, OpenDirectory::Use::Search);
            requireSame(level.source->getIdentity(), level.sourceIdentity, __LINE__);
            requireSame(level.target->getIdentity(), level.targetIdentity, __LINE__);
            if (held + heldLevels < _levels.size())
                release(_levels[held]);
        }
    }

    std::vector<Level> _levels;  ///< from the root down
};
}  // namespace

void copyTree(OsFilePath const& source, OsFilePath const& target)
{
    if (OsFsUtils::isDirectory(source.getChars()))
        TreeCopy().run(source, target);
    else
        OsFile(source).copyTo(target);
}

}  // namespace Vn
