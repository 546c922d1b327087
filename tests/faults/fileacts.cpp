// Files and trees. No failure may lose a file, or give out half a copy as a whole one.
#include "act.h"

#include "tempfolder.h"

#include <base/osdirectory.h>
#include <base/osfile.h>
#include <base/osfilefilter.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>
#include <base/vector.h>

#include <pwd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

using namespace Vn;

namespace VnTest
{
namespace
{
const OsFileTypes::Permissions usual;
const OsPassThroughFilter everything;

class WithFolder : public Act
{
protected:
    OsFilePath at(std::string const& name) const { return OsFilePath(folder.path(name).c_str()); }
    bool isThere(std::string const& name) const { return std::filesystem::exists(folder.path(name)); }

    TempFolder folder;
};

void require(bool isRight, char const* what)
{
    if (!isRight)
        throw std::logic_error(what);
}

/// Over a file that is there: what is thrown tells that the target may be half.
class Copy : public WithFolder
{
public:
    void prepare() override
    {
        folder.file("source", _content);
        folder.file("target", "old");
    }

    void run() override { OsFile(at("source")).copyTo(at("target")); }

    std::string findFault(bool hasThrown) override
    {
        if (contentOf(folder.path("source")) != _content)
            return "the source has changed";
        const std::string target = contentOf(folder.path("target"));
        if (!hasThrown && target != _content)
            return "half a copy, and nothing thrown";
        return target != "old" && !std::string_view(_content).starts_with(target) ? "the target is a third thing"
                                                                                  : "";
    }

private:
    std::string _content = std::string(0x10000, 'a') + std::string(0x9000, 'b') + "end";
};

class Rename : public WithFolder
{
public:
    void prepare() override { folder.file("source", "content"); }

    void run() override
    {
        OsFile file(at("source"));
        file.renameTo(at("target"));
        require(std::string(file.getPath().getChars()) == folder.path("target"), "the object's path");
    }

    std::string findFault(bool hasThrown) override
    {
        if (isThere("source") == isThere("target"))
            return isThere("source") ? "the file is there twice" : "the file is lost";
        if (!hasThrown && !isThere("target"))
            return "not renamed, and nothing thrown";
        return contentOf(folder.path(isThere("source") ? "source" : "target")) != "content" ? "the content is lost"
                                                                                            : "";
    }

    void recover() override
    {
        if (isThere("target"))
            std::filesystem::rename(folder.path("target"), folder.path("source"));
    }
};

/// A file that some bytes are written to, and read back.
class Bytes : public WithFolder
{
public:
    void run() override
    {
        OsFileWriter writer(at("file"), usual, false);
        require(writer.write("0123456789", 10) == 10, "short of room");
        require(writer.seek(5, OsFileTypes::FromBegin) == 5, "seek");
        require(writer.write("abc", 3) == 3, "short of room");
        writer.reserve(9);
        writer.close();
        OsFileReader reader(at("file"));
        char buffer[16] = {};
        unsigned long size = 0;
        while (const unsigned long now = reader.read(buffer + size, sizeof buffer - size))
            size += now;
        require(std::string(buffer, size) == "01234abc8", "other bytes");
        reader.close();
    }

    std::string findFault(bool hasThrown) override
    {
        return !hasThrown && contentOf(folder.path("file")) != "01234abc8" ? "other bytes, and nothing thrown" : "";
    }
};

class Tree : public WithFolder
{
public:
    void prepare() override
    {
        folder.file("tree/one", "1");
        folder.file("tree/folder/two", "22");
        folder.folder("tree/empty");
    }

    void run() override { OsDirectory::copyHierarchy(at("tree"), at("copy")); }

    std::string findFault(bool hasThrown) override
    {
        if (contentOf(folder.path("tree/one")) != "1" || contentOf(folder.path("tree/folder/two")) != "22")
            return "the source has changed";
        const bool isWhole = contentOf(folder.path("copy/one")) == "1" &&
                             contentOf(folder.path("copy/folder/two")) == "22" && isThere("copy/empty");
        return !hasThrown && !isWhole ? "half a tree, and nothing thrown" : "";
    }

    void recover() override { std::filesystem::remove_all(folder.path("copy")); }
};

/// What is listed, and then removed.
class Removal : public WithFolder
{
public:
    void prepare() override { recover(); }

    void run() override
    {
        OsDirectory directory(at("tree"));
        require(directory.hasChildren(everything), "no children");
        const ObjPtr<Vector<OsFilePath>> paths(directory.getChildrenPath(OsFileTypes::FullPath, everything));
        require(paths->size() == 3, "a child is missing in the list");
        const ObjPtr<Vector<OsFile*>> children(directory.getChildren(everything));
        std::size_t folders = 0;
        for (OsFile* child : *children) {
            folders += dynamic_cast<OsDirectory*>(child) != nullptr;
            delete child;
        }
        require(children->size() == 3 && folders == 1, "a child is missing");
        directory.removeChildren(everything);
        directory.remove();
    }

    std::string findFault(bool hasThrown) override
    {
        if (contentOf(folder.path("kept")) != "kept")
            return "what a link leads to is gone";
        return !hasThrown && isThere("tree") ? "still there, and nothing thrown" : "";
    }

    void recover() override
    {
        folder.file("kept", "kept");
        folder.file("tree/one", "1");
        folder.folder("tree/empty");
        if (!std::filesystem::is_symlink(folder.path("tree/link")))
            std::filesystem::create_symlink("../kept", folder.path("tree/link"));
    }
};

/// Questions, which throw.
class Questions : public WithFolder
{
public:
    void prepare() override
    {
        folder.file("file", "12345");
        askAllNameServices();
    }

    void run() override
    {
        OsFile file(at("file"));
        require(file.getSize() == 5, "size");
        require(file.getType() == OsFileTypes::RegularFile, "type");
        const ObjPtr<OsDateTypes::DateRep> modified(file.getLastModificationTime());
        const ObjPtr<OsDateTypes::DateRep> accessed(file.getLastAccessTime());
        const ArrayPtr<char> owner(file.getOwner());
        require(owner[0] != '\0', "owner");
        const ObjPtr<OsFileTypes::UnbufferedInfo> unbuffered(file.getUnbufferedInfo());
        require(!file.isSymLink(), "link");
    }
};

/// Questions that never throw for what the system says.
class TolerantQuestions : public WithFolder
{
public:
    void prepare() override { folder.file("file", "12345"); }

    void run() override
    {
        const std::string path = folder.path("file");
        OsFsUtils::fileExists(path.c_str());
        OsFsUtils::isDirectory(path.c_str());
        OsFsUtils::isFile(path.c_str());
        OsFsUtils::isSymLink(path.c_str());
        const OsFile file(at("file"));
        file.isReadable();
        file.isWritable();
        file.getAccess();
        file.exists();
    }
};

/// Made and removed without an object.
class Making : public WithFolder
{
public:
    void run() override
    {
        OsFsUtils::createDir(folder.path("made").c_str(), true);
        OsFsUtils::createFile(folder.path("made/file").c_str(), usual, true);
        OsFsUtils::deleteFile(folder.path("made/file").c_str());
        OsFsUtils::deleteFile(folder.path("made/missing").c_str());
        OsFsUtils::removeDir(folder.path("made").c_str());
        OsDirectory directory(at("made"));
        directory.create(usual);
        OsFile file(at("made/file"));
        file.create(usual, true);
        file.remove();
        directory.remove();
    }

    std::string findFault(bool hasThrown) override
    {
        return !hasThrown && isThere("made") ? "still there, and nothing thrown" : "";
    }

    void recover() override { std::filesystem::remove_all(folder.path("made")); }
};

/// Names of paths, which are made of memory alone, but for the current directory.
class Paths : public WithFolder
{
public:
    void run() override
    {
        OsFilePath path("a folder with a long name/another one with a long name");
        path += "a file with a long name.txt";
        const OsFilePath parts[] = {path.getBaseName(), path.getDirectoryName(), OsFilePath(path.getExtension()),
                                    OsFilePath::getTempDir(), path + "another"};
        require(std::string(parts[0].getChars()) == "a file with a long name.txt", "name");
    }
};

template <class Kind>
NamedAct makeNamed(char const* name, bool makesCalls = true)
{
    return {name, [] { return std::make_unique<Kind>(); }, makesCalls};
}
}  // namespace

void askAllNameServices()
{
    constexpr ::uid_t nobodys = 4294967293;
    char buffer[4096];
    ::passwd entry;
    ::passwd* found = nullptr;
    ::getpwuid_r(nobodys, &entry, buffer, sizeof buffer, &found);
}

void addFileActs(std::vector<NamedAct>& acts)
{
    acts.push_back(makeNamed<Copy>("copy"));
    acts.back().statedTexts = {"Invalid path: '"};  // of a target that the system doesn't call writable
    acts.push_back(makeNamed<Rename>("rename"));
    acts.push_back(makeNamed<Bytes>("bytes"));
    acts.back().statedTexts = {"short of room"};  // a full disk is a short count
    acts.push_back(makeNamed<Tree>("tree"));
    acts.back().statedTexts = {"Is a directory"};  // which the system didn't tell when it was asked
    acts.push_back(makeNamed<Removal>("removal"));
    acts.back().statedTexts = {"Is a directory"};  // which the system didn't tell when it was asked
    acts.push_back(makeNamed<Questions>("questions"));
    acts.back().statedTexts = {"Invalid path: '"};  // nothing is there, as far as the system tells
    acts.push_back(makeNamed<TolerantQuestions>("tolerantQuestions"));
    acts.push_back(makeNamed<Making>("making"));
    acts.back().statedTexts = {"No such file or directory"};  // a missing file, whose folder can't be looked at
    acts.push_back(makeNamed<Paths>("paths"));
}

}  // namespace VnTest
