#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/osdirectory.h>
#include <base/osfileex.h>

#include "expectthrow.h"
#include "systemerror.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#if !defined(_WIN32)
#    include <fcntl.h>
#    include <sys/resource.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

using Vn::ObjPtr;
using Vn::OsDirectory;
using Vn::OsDirectoryFilter;
using Vn::OsFile;
using Vn::OsFileEx;
using Vn::OsFileFilter;
using Vn::OsFilePath;
using Vn::OsFileTypes;
using Vn::OsLeafFileFilter;
using Vn::OsPassThroughFilter;
using Vn::Vector;
using VnTest::contentOf;
using VnTest::expectThrow;
using VnTest::systemErrorOf;
using VnTest::TempFolder;

static_assert(std::is_base_of_v<OsFile, OsDirectory> && sizeof(OsDirectory) == sizeof(OsFile));
static_assert(std::is_abstract_v<OsFileFilter> && std::has_virtual_destructor_v<OsFileFilter>);
static_assert(sizeof(OsPassThroughFilter) == sizeof(void*) && sizeof(OsDirectoryFilter) == sizeof(void*));

namespace
{
constexpr char systemSource[] = "src/base/osdirectorywindows";
const OsPassThroughFilter everything;
const OsFileTypes::Permissions usual;

OsFilePath pathOf(std::string const& path)
{
    return OsFilePath(path.c_str());
}

OsDirectory directoryOf(std::string const& path)
{
    return OsDirectory(pathOf(path));
}

std::vector<std::string> sorted(Vector<OsFilePath> const& paths)
{
    std::vector<std::string> texts;
    for (OsFilePath const& path : paths)
        texts.emplace_back(path.getChars());
    std::sort(texts.begin(), texts.end());
    return texts;
}

std::vector<std::string> listed(std::string const& path, OsFileTypes::PathTypes kind, OsFileFilter const& filter)
{
    const ObjPtr<Vector<OsFilePath>> paths(directoryOf(path).getChildrenPath(kind, filter));
    return sorted(*paths);
}

/// What a tree holds, by the standard library: path behind the root, and the content or "<folder>".
std::map<std::string, std::string> treeOf(std::string const& root)
{
    std::map<std::string, std::string> tree;
    for (auto const& entry : std::filesystem::recursive_directory_iterator(root))
        tree[std::filesystem::relative(entry.path(), root).generic_string()] =
            entry.is_directory() ? "<folder>" : contentOf(entry.path().string());
    return tree;
}

using Tree = std::map<std::string, std::string>;

/// A small tree with a file at each level, one of them empty.
std::string plant(TempFolder const& temp, std::string const& name)
{
    temp.folder(name + "/sub/deep");
    temp.folder(name + "/empty");
    temp.file(name + "/a.txt", "a");
    temp.file(name + "/sub/b.txt", std::string(0x20001, 'b'));
    temp.file(name + "/sub/deep/c", "");
    return temp.path(name);
}

const Tree planted = {{"a.txt", "a"},        {"sub", "<folder>"},      {"sub/b.txt", std::string(0x20001, 'b')},
                      {"empty", "<folder>"}, {"sub/deep", "<folder>"}, {"sub/deep/c", ""}};

template <class Call>
void expectNullPath(Call const& call)
{
    expectThrow<OsFileEx::ExNullFilePath, std::runtime_error>(call, "File has null file path.");
}

#if defined(_WIN32)
constexpr int taken = 183;
constexpr int missing = 2;
constexpr int missingFolder = 3;
constexpr int notEmpty = 145;
#else
constexpr int taken = EEXIST;
constexpr int missing = ENOENT;
constexpr int missingFolder = ENOENT;
constexpr int notEmpty = ENOTEMPTY;
#endif
}  // namespace

TEST(OsDirectory, refusesAnEmptyPathExceptWhenAskedForChildren)
{
    OsDirectory directory{OsFilePath()};
    expectNullPath([&] { directory.create(usual); });
    expectNullPath([&] { directory.remove(); });
    expectNullPath([&] { directory.getChildrenPath(OsFileTypes::FullPath, everything); });
    expectNullPath([&] { directory.getChildrenPath(OsFileTypes::LeafPath, everything); });
    expectNullPath([&] { directory.getChildren(everything); });
    expectNullPath([&] { directory.removeChildren(everything); });
    expectNullPath([&] { directory.copyTo(OsFilePath("x")); });
    expectNullPath([&] { OsDirectory(OsFilePath("x")).copyTo(OsFilePath()); });
    const TempFolder temp;
    const VnTest::WorkingFolder working(temp.path());
    EXPECT_FALSE(directory.hasChildren(everything));
    temp.file("x");
    EXPECT_TRUE(directory.hasChildren(everything)) << "the current directory";
    EXPECT_TRUE(directory.hasChildren(OsLeafFileFilter("x")));
    EXPECT_FALSE(directory.hasChildren(OsLeafFileFilter("y")));
}

TEST(OsDirectory, createsAndRemoves)
{
    const TempFolder temp;
    OsDirectory directory = directoryOf(temp.path("made"));
    directory.create(usual);
    EXPECT_TRUE(directory.isDirectory());
    EXPECT_EQ(systemErrorOf([&] { directory.create(usual); }, systemSource), taken);
    EXPECT_EQ(systemErrorOf([&] { directoryOf(temp.path("a/b")).create(usual); }, systemSource), missingFolder);
    temp.file("made/file");
    EXPECT_EQ(systemErrorOf([&] { directory.remove(); }, systemSource), notEmpty);
    std::filesystem::remove(temp.path("made/file"));
    OsFile& base = directory;
    base.remove();  // through the virtual table
    EXPECT_FALSE(std::filesystem::exists(temp.path("made")));
    EXPECT_EQ(systemErrorOf([&] { directory.remove(); }, systemSource), missing);
}

TEST(OsDirectory, listsNamesOrPaths)
{
    const TempFolder temp;
    temp.file("b", "x");
    temp.file(".hidden");
    temp.file("a b.txt");
    temp.folder("folder");
    temp.file("folder/below");
    using Texts = std::vector<std::string>;
    EXPECT_EQ(listed(temp.path(), OsFileTypes::LeafPath, everything), (Texts{".hidden", "a b.txt", "b", "folder"}));
    EXPECT_EQ(listed(temp.path(), OsFileTypes::FullPath, everything),
              (Texts{temp.path(".hidden"), temp.path("a b.txt"), temp.path("b"), temp.path("folder")}));
    EXPECT_EQ(listed(temp.path(), static_cast<OsFileTypes::PathTypes>(2), OsDirectoryFilter()), Texts{"folder"});
    // The directory's path as it was written, with one separator.
    const std::string slashed = temp.path() + OsFilePath::getSeparator();
    EXPECT_EQ(listed(slashed, OsFileTypes::FullPath, OsDirectoryFilter()), Texts{temp.path("folder")});
    const VnTest::WorkingFolder working(temp.path());
    EXPECT_EQ(listed(".", OsFileTypes::FullPath, OsDirectoryFilter()),
              Texts{std::string(".") + OsFilePath::getSeparator() + "folder"});
}

TEST(OsDirectory, anEmptyDirectoryHasNoChildren)
{
    const TempFolder temp;
    EXPECT_TRUE(listed(temp.path(), OsFileTypes::LeafPath, everything).empty());
    EXPECT_TRUE(listed(temp.path(), OsFileTypes::FullPath, everything).empty());
    EXPECT_TRUE(ObjPtr<Vector<OsFile*>>(directoryOf(temp.path()).getChildren(everything))->empty());
    EXPECT_FALSE(directoryOf(temp.path()).hasChildren(everything));
}

TEST(OsDirectory, whatCantBeListedHasTheSystemsCode)
{
    const TempFolder temp;
    OsDirectory nothing = directoryOf(temp.path("missing"));
    EXPECT_EQ(systemErrorOf([&] { nothing.getChildrenPath(OsFileTypes::FullPath, everything); }, systemSource),
              missingFolder);
    EXPECT_EQ(systemErrorOf([&] { nothing.getChildren(everything); }, systemSource), missingFolder);
    EXPECT_EQ(systemErrorOf([&] { nothing.hasChildren(everything); }, systemSource), missingFolder);
    EXPECT_EQ(systemErrorOf([&] { nothing.removeChildren(everything); }, systemSource), missingFolder);
    OsDirectory file = directoryOf(temp.file("file"));
    EXPECT_NE(systemErrorOf([&] { file.getChildren(everything); }, systemSource), -1);
}

TEST(OsDirectory, aFilterSeesTheWholePathOfEachChildOnce)
{
    struct Noting : OsFileFilter
    {
        bool filter(OsFilePath const& path) const override
        {
            seen.emplace_back(path.getChars());
            return seen.size() % 2 == 0;
        }
        mutable std::vector<std::string> seen;
    };
    const TempFolder temp;
    for (char const* name : {"a", "b", "c", "d"})
        temp.file(name);
    for (auto kind : {OsFileTypes::FullPath, OsFileTypes::LeafPath}) {
        Noting filter;
        EXPECT_EQ(listed(temp.path(), kind, filter).size(), 2U);
        std::sort(filter.seen.begin(), filter.seen.end());
        EXPECT_EQ(filter.seen,
                  (std::vector<std::string>{temp.path("a"), temp.path("b"), temp.path("c"), temp.path("d")}));
    }
    Noting first;
    EXPECT_TRUE(directoryOf(temp.path()).hasChildren(first));
    EXPECT_EQ(first.seen.size(), 2U) << "ends at the first that passes";
}

TEST(OsDirectory, whatAFilterThrowsEndsTheListing)
{
    struct Throwing : OsFileFilter
    {
        bool filter(OsFilePath const&) const override { throw std::domain_error("filter"); }
    };
    const TempFolder temp;
    temp.file("a");
    OsDirectory directory = directoryOf(temp.path());
    EXPECT_THROW(directory.getChildrenPath(OsFileTypes::FullPath, Throwing()), std::domain_error);
    EXPECT_THROW(directory.getChildren(Throwing()), std::domain_error);
    EXPECT_THROW(directory.hasChildren(Throwing()), std::domain_error);
    EXPECT_THROW(directory.removeChildren(Throwing()), std::domain_error);
    EXPECT_TRUE(std::filesystem::exists(temp.path("a")));
}

TEST(OsDirectory, aSubclassOfTheFilterForAllIsAsked)
{
    struct Choosy : OsPassThroughFilter
    {
        bool filter(OsFilePath const&) const override { return false; }
    };
    const TempFolder temp;
    temp.file("a");
    EXPECT_FALSE(directoryOf(temp.path()).hasChildren(Choosy()));
}

TEST(OsFileFilter, choosesByKindAndSuffix)
{
    const TempFolder temp;
    const std::string file = temp.file("a.txt");
    const std::string shorter = temp.file("t");
    const std::string folder = temp.folder("folder.txt");
    const std::string nothing = temp.path("missing.txt");
    const struct
    {
        char const* what;
        std::shared_ptr<OsFileFilter> filter;
        bool file, shorter, folder, nothing;
    } table[] = {
        {"all", std::make_shared<OsPassThroughFilter>(), true, true, true, true},
        {"directories", std::make_shared<OsDirectoryFilter>(), false, false, true, false},
        {"leaves", std::make_shared<OsLeafFileFilter>(), true, true, false, true},
        {"null", std::make_shared<OsLeafFileFilter>(nullptr), true, true, false, true},
        {"empty suffix", std::make_shared<OsLeafFileFilter>(""), true, true, false, true},
        {".txt", std::make_shared<OsLeafFileFilter>(".txt"), true, false, false, true},
        {".TXT", std::make_shared<OsLeafFileFilter>(".TXT"), false, false, false, false},
        {"t", std::make_shared<OsLeafFileFilter>("t"), true, true, false, true},
        {"a.txt", std::make_shared<OsLeafFileFilter>("a.txt"), true, false, false, false},
        {"longer", std::make_shared<OsLeafFileFilter>("longer.a.txt"), false, false, false, false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.filter->filter(pathOf(file)), row.file);
        EXPECT_EQ(row.filter->filter(pathOf(shorter)), row.shorter);
        EXPECT_EQ(row.filter->filter(pathOf(folder)), row.folder);
        EXPECT_EQ(row.filter->filter(pathOf(nothing)), row.nothing);
    }
}

TEST(OsFileFilter, theSuffixIsCopied)
{
    const TempFolder temp;
    std::string suffix = ".txt";
    const OsLeafFileFilter filter(suffix.c_str());
    suffix = ".doc";
    EXPECT_TRUE(filter.filter(pathOf(temp.file("a.txt"))));
}

TEST(OsDirectory, childrenAreDirectoriesAndFilesOfTheCallers)
{
    const TempFolder temp;
    temp.file("file", "12");
    temp.folder("folder");
    ObjPtr<Vector<OsFile*>> children(directoryOf(temp.path()).getChildren(everything));
    ASSERT_EQ(children->size(), 2U);
    std::vector<OsFile*> kept(children->begin(), children->end());
    children.reset();
    for (OsFile* child : kept) {
        const bool isFolder = std::string(child->getPath().getChars()) == temp.path("folder");
        EXPECT_EQ(dynamic_cast<OsDirectory*>(child) != nullptr, isFolder);
        if (!isFolder) {
            EXPECT_EQ(child->getPath().getChars(), temp.path("file"));
        }
        delete child;
    }
}

TEST(OsDirectory, removesChildrenAndDoesNotDescend)
{
    const TempFolder temp;
    temp.file("a.txt");
    temp.file("b.doc");
    temp.folder("empty");
    temp.file("full/x");
    directoryOf(temp.path()).removeChildren(OsLeafFileFilter(".txt"));
    EXPECT_EQ(treeOf(temp.path()),
              (Tree{{"b.doc", ""}, {"empty", "<folder>"}, {"full", "<folder>"}, {"full/x", ""}}))
        << "a filter for leaves leaves directories alone";
    EXPECT_EQ(systemErrorOf([&] { directoryOf(temp.path()).removeChildren(OsDirectoryFilter()); },
                            "src/base/osfsutilswindows"),
              notEmpty);
    EXPECT_TRUE(std::filesystem::exists(temp.path("full/x")));
    std::filesystem::remove(temp.path("full/x"));
    directoryOf(temp.path()).removeChildren(everything);
    EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
    EXPECT_TRUE(std::filesystem::exists(temp.path()));
}

TEST(OsDirectory, copiesATree)
{
    const TempFolder temp;
    const std::string source = plant(temp, "source");
    OsDirectory directory = directoryOf(source);
    OsFile& base = directory;
    base.copyTo(pathOf(temp.path("copy")));  // through the virtual table
    EXPECT_EQ(treeOf(temp.path("copy")), planted);
    EXPECT_EQ(treeOf(source), planted);
    OsDirectory::copyHierarchy(pathOf(source), pathOf(temp.path("other")));
    EXPECT_EQ(treeOf(temp.path("other")), planted);
}

TEST(OsDirectory, copiesIntoADirectoryUnderItsOwnName)
{
    const TempFolder temp;
    OsDirectory source = directoryOf(plant(temp, "source"));
    const std::string target = temp.folder("target");
    source.copyTo(pathOf(target));
    EXPECT_EQ(treeOf(temp.path("target/source")), planted);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(target), {}), 1);
}

TEST(OsDirectory, doesNotCopyOntoAFile)
{
    const TempFolder temp;
    OsDirectory source = directoryOf(plant(temp, "source"));
    const std::string file = temp.file("file", "content");
    expectThrow<OsFileEx::ExFileExists, std::runtime_error>([&] { source.copyTo(pathOf(file)); },
                                                            "File already exists.");
    expectThrow<Vn::ExInternalError, std::runtime_error>(
        [&] { OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(file)); },
        "A regular file with the same path name exists.");
    EXPECT_EQ(contentOf(file), "content");
}

TEST(OsDirectory, aCopyOntoATreeMergesIt)
{
    const TempFolder temp;
    const std::string source = plant(temp, "source");
    temp.file("target/a.txt", "old and longer");
    temp.file("target/kept", "kept");
    temp.file("target/sub/deep/kept too", "kept");
    OsDirectory::copyHierarchy(pathOf(source), pathOf(temp.path("target")));
    Tree expected = planted;
    expected["kept"] = "kept";
    expected["sub/deep/kept too"] = "kept";
    EXPECT_EQ(treeOf(temp.path("target")), expected);
}

TEST(OsDirectory, aDirectoryOfAFilesNameTakesTheFileIn)
{
    const TempFolder temp;
    temp.file("source/name", "content");
    temp.folder("target/name");
    OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("target")));
    EXPECT_EQ(treeOf(temp.path("target")), (Tree{{"name", "<folder>"}, {"name/name", "content"}}));
}

TEST(OsDirectory, oneFileIsAHierarchyToo)
{
    const TempFolder temp;
    const std::string file = temp.file("file", "content");
    OsDirectory::copyHierarchy(pathOf(file), pathOf(temp.path("copy")));
    EXPECT_EQ(contentOf(temp.path("copy")), "content");
    EXPECT_THROW(OsDirectory::copyHierarchy(pathOf(temp.path("missing")), pathOf(temp.path("x"))),
                 Vn::ExSysErrorWindows);
}

TEST(OsDirectory, theFirstFailureEndsACopyAndWhatWasCopiedStays)
{
    const TempFolder temp;
    temp.folder("source/sub");
    temp.file("source/sub/file", "content");
    temp.file("target/sub", "in the way");
    EXPECT_THROW(OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("target"))),
                 Vn::ExInternalError);
    EXPECT_EQ(treeOf(temp.path("target")), (Tree{{"sub", "in the way"}}));
    EXPECT_TRUE(std::filesystem::exists(temp.path("source/sub/file")));
}

TEST(OsDirectory, aCopyIntoItselfEnds)
{
    const TempFolder temp;
    const std::string source = plant(temp, "source");
    OsDirectory::copyHierarchy(pathOf(source), pathOf(temp.path("source/sub/inside")));
    Tree expected = planted;
    expected["sub/inside"] = "<folder>";
    for (auto const& [name, content] : planted)
        expected["sub/inside/" + name] = content;
    EXPECT_EQ(treeOf(source), expected) << "the copy isn't copied";

    const std::string second = plant(temp, "second");
    directoryOf(second).copyTo(pathOf(second));
    expected = planted;
    expected["second"] = "<folder>";
    for (auto const& [name, content] : planted)
        expected["second/" + name] = content;
    EXPECT_EQ(treeOf(second), expected);
}

TEST(OsDirectory, aTreeCopiedOntoItselfIsRefusedAtItsFirstFile)
{
    const TempFolder temp;
    const std::string source = plant(temp, "source");
    expectThrow<OsFileEx::ExFileExists, std::runtime_error>(
        [&] { OsDirectory::copyHierarchy(pathOf(source), pathOf(source)); }, "File already exists.");
    EXPECT_EQ(treeOf(source), planted);
}

TEST(OsDirectory, aDeepTreeIsCopiedWhole)
{
    const TempFolder temp;
    std::string deep = "source";
    for (int level = 0; level < 60; ++level)
        deep += "/d";
    temp.folder(deep);
    temp.file(deep + "/file", "content");
    OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("copy")));
    EXPECT_EQ(treeOf(temp.path("copy")), treeOf(temp.path("source")));
}

TEST(OsDirectory, whatIsPutAtItsPathWhileItIsEmptiedStays)
{
    // A filter that puts another directory in place of the one that is being listed.
    struct Swapping : OsFileFilter
    {
        explicit Swapping(TempFolder const& folder) : temp(folder) {}
        bool filter(OsFilePath const&) const override
        {
            std::error_code error;
            std::filesystem::rename(temp.path("emptied"), temp.path("moved"), error);
            if (!error)
                std::filesystem::rename(temp.path("other"), temp.path("emptied"));
            hasMoved = hasMoved || !error;
            return true;
        }
        TempFolder const& temp;
        mutable bool hasMoved = false;
    };
    const TempFolder temp;
    temp.file("emptied/file");
    temp.folder("emptied/folder");
    temp.file("other/file", "stays");
    temp.folder("other/folder");
    const Swapping filter(temp);
    directoryOf(temp.path("emptied")).removeChildren(filter);
#if defined(_WIN32)
    EXPECT_FALSE(filter.hasMoved) << "the system keeps it in its place";
#else
    EXPECT_TRUE(filter.hasMoved);
#endif
    EXPECT_TRUE(std::filesystem::is_empty(temp.path(filter.hasMoved ? "moved" : "emptied")));
    EXPECT_EQ(treeOf(temp.path(filter.hasMoved ? "emptied" : "other")),
              (Tree{{"file", "stays"}, {"folder", "<folder>"}}));
}

#if !defined(_WIN32)
TEST(OsDirectory, permissionsOfADirectoryBringSearch)
{
    const TempFolder temp;
    const ::mode_t before = ::umask(0);
    const struct
    {
        OsFileTypes::Permissions permissions;
        unsigned expected;
    } table[] = {
        {usual, 0755}, {OsFileTypes::Permissions(3, 2, 0), 0720}, {OsFileTypes::Permissions(3, 3, 3), 0777}};
    for (auto const& row : table) {
        OsDirectory directory = directoryOf(temp.path("folder"));
        directory.create(row.permissions);
        struct ::stat status;
        ASSERT_EQ(::stat(temp.path("folder").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, row.expected);
        directory.remove();
    }
    ::umask(027);
    directoryOf(temp.path("folder")).create(OsFileTypes::Permissions(3, 3, 3));
    struct ::stat status;
    ASSERT_EQ(::stat(temp.path("folder").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750U);
    ::umask(before);
}

TEST(OsDirectory, aTreeMayBeDeeperThanTheProcessMayHaveFilesOpen)
{
    const TempFolder temp;
    std::filesystem::path level = temp.folder("source");
    for (int i = 0; i < 200; ++i) {
        level /= "d";
        std::filesystem::create_directory(level);
        std::filesystem::create_directory(level / "z");  // so that the copy returns to each level
    }
    struct ::rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const struct ::rlimit few = {100, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("copy")));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(treeOf(temp.path("copy")), treeOf(temp.path("source")));
    EXPECT_EQ(treeOf(temp.path("copy")).size(), 400U);
}

TEST(OsDirectory, aCopyComesBackToWhereTwoDeepTreesPart)
{
    const TempFolder temp;
    const auto deeper = [](std::string const& path) {
        std::string result = path;
        for (int level = 0; level < 45; ++level)
            result += "/d";
        return result;
    };
    const std::string middle = deeper("source");
    for (char const* name : {"/one", "/two"}) {
        temp.folder(deeper(middle + name));
        temp.file(deeper(middle + name) + "/file", name);
    }
    OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("copy")));
    EXPECT_EQ(treeOf(temp.path("copy")), treeOf(temp.path("source")));
    EXPECT_EQ(treeOf(temp.path("copy")).size(), 3U * 45 + 4);
}

TEST(OsDirectory, aCopyOfATreeDoesNotWaitForAPipe)
{
    const TempFolder temp;
    temp.folder("source");
    ASSERT_EQ(::mkfifo(temp.path("source/pipe").c_str(), 0600), 0);
    const auto copy = [&] { OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("copy"))); };
    copy();
    EXPECT_EQ(contentOf(temp.path("copy/pipe")), "") << "of one that nobody writes into";
    const int writer = ::open(temp.path("source/pipe").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_NE(writer, -1);
    EXPECT_EQ(systemErrorOf(copy, "src/base/osfilereaderwindows"), EAGAIN);
    ::close(writer);
}

TEST(OsDirectory, aCopyFollowsTheLinksOfATargetThatWasThere)
{
    const TempFolder temp;
    temp.file("source/folder/file", "new");
    temp.file("source/plain", "new");
    temp.folder("elsewhere/folder");
    temp.file("elsewhere/plain", "old and longer");
    temp.folder("target");
    std::filesystem::create_directory_symlink("../elsewhere/folder", temp.path("target/folder"));
    std::filesystem::create_symlink("../elsewhere/plain", temp.path("target/plain"));
    temp.file("source/dropped", "dropped");
    std::filesystem::create_symlink("/dev/null", temp.path("target/dropped"));
    OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("target")));
    EXPECT_TRUE(std::filesystem::is_symlink(temp.path("target/dropped"))) << "a device takes what it is given";
    EXPECT_EQ(treeOf(temp.path("elsewhere")),
              (Tree{{"folder", "<folder>"}, {"folder/file", "new"}, {"plain", "new"}}));
}

TEST(OsDirectory, aCircleOfLinksEndsACopy)
{
    const TempFolder temp;
    temp.file("source/a/file", "content");
    std::filesystem::create_directory_symlink("../..", temp.path("source/a/up"));
    EXPECT_EQ(
        systemErrorOf([&] { OsDirectory::copyHierarchy(pathOf(temp.path("source/a")), pathOf(temp.path("copy"))); },
                      systemSource),
        ELOOP);
    EXPECT_TRUE(std::filesystem::exists(temp.path("copy/up"))) << "what was copied stays";
}

TEST(OsDirectory, aLinkToACircleOrToNothingEndsACopy)
{
    const TempFolder temp;
    temp.folder("source");
    std::filesystem::create_symlink("circle", temp.path("source/circle"));
    const auto copy = [&] { OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("copy"))); };
    EXPECT_EQ(systemErrorOf(copy, "src/base/osfilereaderwindows"), ELOOP);
    std::filesystem::remove(temp.path("source/circle"));
    std::filesystem::create_symlink("nothing", temp.path("source/dangling"));
    EXPECT_EQ(systemErrorOf(copy, "src/base/osfilereaderwindows"), ENOENT);
}

TEST(OsDirectory, aDirectoryReachedTwiceIsNoCircle)
{
    const TempFolder temp;
    temp.file("source/real/file", "content");
    std::filesystem::create_directory_symlink("real", temp.path("source/link"));
    OsDirectory::copyHierarchy(pathOf(temp.path("source")), pathOf(temp.path("copy")));
    EXPECT_EQ(contentOf(temp.path("copy/real/file")), "content");
    EXPECT_EQ(contentOf(temp.path("copy/link/file")), "content");
    EXPECT_FALSE(std::filesystem::is_symlink(temp.path("copy/link"))) << "links are followed";
}

TEST(OsDirectory, linksAreListedByWhatTheyLeadToAndRemovedAsLinks)
{
    const TempFolder temp;
    const std::string folder = temp.folder("elsewhere");
    temp.file("elsewhere/file");
    temp.folder("links");
    std::filesystem::create_directory_symlink(folder, temp.path("links/toFolder"));
    std::filesystem::create_symlink(temp.path("elsewhere/file"), temp.path("links/toFile"));
    std::filesystem::create_symlink("nothing", temp.path("links/dangling"));
    OsDirectory links = directoryOf(temp.path("links"));
    using Texts = std::vector<std::string>;
    EXPECT_EQ(listed(temp.path("links"), OsFileTypes::LeafPath, OsDirectoryFilter()), Texts{"toFolder"});
    const ObjPtr<Vector<OsFile*>> children(links.getChildren(everything));
    EXPECT_EQ(children->size(), 3U);
    for (OsFile* child : *children) {
        const bool leadsToFolder = std::string(child->getPath().getChars()) == temp.path("links/toFolder");
        EXPECT_EQ(dynamic_cast<OsDirectory*>(child) != nullptr, leadsToFolder);
        delete child;
    }
    links.removeChildren(everything);
    EXPECT_TRUE(std::filesystem::is_empty(temp.path("links")));
    EXPECT_TRUE(std::filesystem::exists(temp.path("elsewhere/file")));
}

TEST(OsDirectory, namesAreBytes)
{
    const TempFolder temp;
    const std::string odd = "\xFF\x01 new\nline\\";
    temp.file(odd, "content");
    EXPECT_EQ(listed(temp.path(), OsFileTypes::LeafPath, everything), std::vector<std::string>{odd});
    OsDirectory::copyHierarchy(pathOf(temp.path()), pathOf(temp.path("copy")));
    EXPECT_EQ(contentOf(temp.path("copy/" + odd)), "content");
}

TEST(OsFileFilter, takesDotsAndBlanksAtTheEndOfANameAsTheyAre)
{
    const TempFolder temp;
    for (char const* name : {"a.", "b ", "c", "..."})
        temp.file(name);
    for (char const* name : {"d.", "e ", "f"})
        temp.folder(name);
    std::filesystem::create_symlink("a.", temp.path("g."));
    std::filesystem::create_symlink("d.", temp.path("h."));
    const auto leaves = [&](OsFileFilter const& filter) {
        return listed(temp.path(), OsFileTypes::LeafPath, filter);
    };
    using Texts = std::vector<std::string>;
    EXPECT_EQ(leaves(OsLeafFileFilter()), (Texts{"...", "a.", "b ", "c", "g."}));
    EXPECT_EQ(leaves(OsLeafFileFilter(".")), (Texts{"...", "a.", "g."}));
    EXPECT_EQ(leaves(OsLeafFileFilter(" ")), Texts{"b "});
    EXPECT_EQ(leaves(OsDirectoryFilter()), (Texts{"d.", "e ", "f", "h."}));
}

namespace
{
/// Takes the children away itself before they are to be removed, or the whole directory.
struct Removing : OsFileFilter
{
    explicit Removing(std::string const& all) : folder(all) {}
    bool filter(OsFilePath const& path) const override
    {
        if (folder.empty())
            std::filesystem::remove(path.getChars());
        else
            std::filesystem::remove_all(folder);
        return true;
    }
    const std::string folder;
};
}  // namespace

TEST(OsDirectory, removesChildrenThatHaveGoneAlreadyButNotThoseOfADirectoryThatHasGone)
{
    const TempFolder temp;
    for (char const* name : {"folder/a", "folder/b"})
        temp.file(name);
    temp.folder("folder/c");
    OsDirectory folder = directoryOf(temp.path("folder"));
    folder.removeChildren(Removing(""));
    EXPECT_TRUE(std::filesystem::is_empty(temp.path("folder")));
    temp.file("folder/a");
    EXPECT_EQ(
        systemErrorOf([&] { folder.removeChildren(Removing(temp.path("folder"))); }, "src/base/osfsutilswindows"),
        ENOENT);
}

TEST(OsDirectory, aDirectoryThatChangesWhileItIsListed)
{
    // A filter that takes the next ones away and adds others: the listing ends, and what never changed is in it.
    struct Meddling : OsFileFilter
    {
        explicit Meddling(TempFolder const& folder) : temp(folder) {}
        bool filter(OsFilePath const&) const override
        {
            if (count < 500) {
                std::filesystem::remove(temp.path("passing" + std::to_string(count)));
                temp.file("coming" + std::to_string(count));
                ++count;
            }
            return true;
        }
        TempFolder const& temp;
        mutable int count = 0;
    };
    const TempFolder temp;
    for (int i = 0; i < 500; ++i) {
        temp.file("passing" + std::to_string(i));
        temp.file("staying" + std::to_string(i));
    }
    const std::vector<std::string> names = listed(temp.path(), OsFileTypes::LeafPath, Meddling(temp));
    const auto staying = std::count_if(names.begin(), names.end(),
                                       [](std::string const& name) { return name.compare(0, 7, "staying") == 0; });
    EXPECT_EQ(staying, 500);
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << "none twice";
}
#endif
