#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/osenv.h>
#include <base/osfileex.h>
#include <base/osfilepath.h>
#include <base/osfilepathgrammar_p.h>

#include "expectthrow.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <type_traits>

#if defined(_WIN32)
#    include "wine.h"
#endif

using Vn::OsEnv;
using Vn::OsFileEx;
using Vn::OsFilePath;
using Vn::OsFilePathGrammar;
using Vn::OsFilePathGrammars;
using VnTest::expectThrow;

static_assert(sizeof(OsFilePath) == sizeof(char*) && !std::is_polymorphic_v<OsFilePath>);
static_assert(std::is_convertible_v<char const*, OsFilePath>);

namespace
{
const OsFilePathGrammar windows = OsFilePathGrammars::onWindows();
const OsFilePathGrammar linuxOnes = OsFilePathGrammars::onLinux();

/// `path` with this system's separator in place of "/".
std::string native(std::string path)
{
    for (char& c : path)
        if (c == '/')
            c = OsFilePath::getSeparator()[0];
    return path;
}

OsFilePath nativePath(std::string const& path)
{
    return OsFilePath(native(path).c_str());
}

#if defined(_WIN32)
constexpr char absolute[] = "C:\\a";
#else
constexpr char absolute[] = "/a";
#endif

void expectSystemError(int code, OsFilePath const& path)
{
    for (auto call : {&OsFilePath::getBaseName, &OsFilePath::getDirectoryName}) {
        try {
            (path.*call)();
            ADD_FAILURE() << "nothing thrown for " << path;
        } catch (Vn::ExSysErrorWindows const& failure) {
            EXPECT_EQ(failure.getErrorCode(), code);
            EXPECT_STREQ(failure.getFileName(), "src/base/osfilepathwindows");
        }
    }
    EXPECT_THROW(path.getExtension(), Vn::ExSysErrorWindows);
}
}  // namespace

// The grammars of both systems, as functions of their input.

TEST(OsFilePathGrammar, whatIsAbsolute)
{
    const struct
    {
        char const* path;
        bool onWindows;
        bool onLinux;
    } table[] = {
        {"", false, false},     {"a", false, false},    {"ab", false, false},   {"abc", false, false},
        {"C:", false, false},   {"\\\\", false, false}, {"C:x", true, false},   {"C:\\", true, false},
        {"1:x", true, false},   {"::x", true, false},   {"\\\\x", true, false}, {"\\temp", false, false},
        {"\\", false, false},   {"/", false, true},     {"/a", false, true},    {"//server/x", false, true},
        {"c:/x", true, false},  {"ab:", false, false},  {"./a", false, false},  {"/:x", true, true},
        {"\\/x", false, false}, {"a\\b", false, false}, {"/\\b", false, true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(windows.isAbsolute(row.path), row.onWindows);
        EXPECT_EQ(linuxOnes.isAbsolute(row.path), row.onLinux);
    }
}

TEST(OsFilePathGrammar, joining)
{
    const struct
    {
        char const* path;
        char const* tail;
        char const* onWindows;
        char const* onLinux;
    } table[] = {
        {"", "a", "a", "a"},         {"a", "b", "a\\b", "a/b"}, {"a\\", "b", "a\\b", "a\\/b"},
        {"a/", "b", "a/\\b", "a/b"}, {"a", "", "a\\", "a/"},    {"a\\", "", "a\\", "a\\/"},
        {"a/", "", "a/\\", "a/"},    {"", "", "", ""},          {"a", "\\b", "a\\\\b", "a/\\b"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(std::string(row.path) + " + " + row.tail);
        EXPECT_EQ(windows.join(row.path, row.tail), row.onWindows);
        EXPECT_EQ(linuxOnes.join(row.path, row.tail), row.onLinux);
    }
}

TEST(OsFilePathGrammar, directoryOfAResolvedPath)
{
    const struct
    {
        OsFilePathGrammar grammar;
        char const* stored;
        char const* resolved;
        char const* expected;
    } table[] = {
        {windows, "C:\\a\\b", "C:\\a\\b", "C:\\a"},
        {windows, "C:\\a\\", "C:\\a\\", "C:\\a"},
        {windows, "C:\\a", "C:\\a", "C:"},
        {windows, "C:\\", "C:\\", "C:"},
        {windows, ".", "C:\\here", "C:\\here"},
        {windows, "..", "C:\\", "C:\\"},
        {windows, ".\\", "C:\\here\\", "C:\\here"},
        {windows, "a", "C:\\here\\a", "C:\\here"},
        {windows, "x", "", ""},
        {windows, "x", "nothing", "nothing"},
        {windows, "\\x", "\\x", ""},
        {linuxOnes, "/a/b", "/a/b", "/a"},
        {linuxOnes, "/a/", "/a/", "/a"},
        {linuxOnes, "/a", "/a", "/"},
        {linuxOnes, "/", "/", "/"},
        {linuxOnes, ".", "/here", "/here"},
        {linuxOnes, "..", "/", "/"},
        {linuxOnes, "a", "/here/a", "/here"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.stored);
        EXPECT_EQ(row.grammar.directoryOf(row.stored, row.resolved), row.expected);
    }
}

TEST(OsFilePathGrammar, resolvingOnLinuxIsLexical)
{
    const struct
    {
        char const* path;
        char const* expected;
    } table[] = {
        {"a", "/here/there/a"},
        {"a/", "/here/there/a/"},
        {".", "/here/there"},
        {"./", "/here/there/"},
        {"..", "/here"},
        {"../", "/here/"},
        {"../..", "/"},
        {"../../../..", "/"},
        {"../../../x", "/x"},
        {"a/../b", "/here/there/b"},
        {"a//b", "/here/there/a/b"},
        {"a/./b", "/here/there/a/b"},
        {"a/..", "/here/there"},
        {"a/.", "/here/there/a"},
        {"/", "/"},
        {"//", "/"},
        {"/a", "/a"},
        {"//a//b//", "/a/b/"},
        {"/a/../..", "/"},
        {"/..", "/"},
        {"...", "/here/there/..."},
        {"..a", "/here/there/..a"},
        {".a/", "/here/there/.a/"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(OsFilePathGrammars::resolveOnLinux("/here/there", row.path), row.expected);
    }
    EXPECT_EQ(OsFilePathGrammars::resolveOnLinux("/here", ""), "/here");
    EXPECT_EQ(OsFilePathGrammars::resolveOnLinux("/", ""), "/");
    EXPECT_EQ(OsFilePathGrammars::resolveOnLinux("/", "a"), "/a");
    EXPECT_EQ(OsFilePathGrammars::resolveOnLinux("/", "."), "/");
}

TEST(OsFilePathGrammar, resolvingOnLinuxAgreesWithTheStandardLibrary)
{
    // Every path of up to six of these characters, against the standard library's lexical form.
    constexpr char letters[] = {'/', '.', 'a', '\\'};
    for (unsigned length = 1; length <= 6; ++length) {
        for (unsigned number = 0; number < 1U << (2 * length); ++number) {
            std::string path;
            for (unsigned i = 0; i < length; ++i)
                path += letters[number >> (2 * i) & 3];
            std::string expected = std::filesystem::path("/h/i/" + path).lexically_normal().generic_string();
            if (path[0] == '/')
                expected = std::filesystem::path("/" + path.substr(path.find_first_not_of('/') == std::string::npos
                                                                       ? path.size()
                                                                       : path.find_first_not_of('/')))
                               .lexically_normal()
                               .generic_string();
            // There a dot at the end leaves a separator; here only a separator does.
            if (path.back() != '/' && expected.size() > 1 && expected.back() == '/')
                expected.pop_back();
#if defined(_WIN32)
            if (path.find('\\') != std::string::npos)
                continue;  // a separator for this system's library
#endif
            ASSERT_EQ(OsFilePathGrammars::resolveOnLinux("/h/i", path), expected) << path;
        }
    }
}

TEST(OsFilePathGrammar, extension)
{
    const struct
    {
        char const* name;
        char const* expected;
    } table[] = {{"a.tar.gz", "gz"}, {".profile", "profile"}, {"a.", ""}, {"a", ""}, {"", ""}, {".", ""},
                 {"a..b", "b"}};
    for (auto const& row : table)
        EXPECT_EQ(OsFilePathGrammars::extensionOf(row.name), row.expected) << row.name;
}

// The class, on this system.

TEST(OsFilePath, nullAndTheEmptyStringMakeAnEmptyPath)
{
    for (OsFilePath const& path : {OsFilePath(), OsFilePath(nullptr), OsFilePath("")}) {
        EXPECT_TRUE(path.isEmpty());
        EXPECT_FALSE(path.isAbsolute());
        EXPECT_TRUE(path.isRelative());
        EXPECT_STREQ(path.getChars(), "");
    }
}

TEST(OsFilePath, keepsWhatItIsGiven)
{
    char const* const odd = "C:/x\\..//Y/./\xFF ";
    OsFilePath path(odd);
    EXPECT_STREQ(path.getChars(), odd);
    path = "second/";
    EXPECT_STREQ(path.getChars(), "second/");
    path.set("third");
    EXPECT_STREQ(path.getChars(), "third");
    EXPECT_FALSE(path.isEmpty());
}

TEST(OsFilePath, aCopyIsDeep)
{
    OsFilePath path("first");
    const OsFilePath copy(path);
    OsFilePath assigned;
    assigned = path;
    path = "second";
    EXPECT_STREQ(copy.getChars(), "first");
    EXPECT_STREQ(assigned.getChars(), "first");
    char const* const before = path.getChars();
    OsFilePath& self = path;
    path = self;
    EXPECT_EQ(path.getChars(), before) << "assignment to itself does nothing";
}

TEST(OsFilePath, takesAPartOfItself)
{
    OsFilePath path("abc");
    path.set(path.getChars() + 1);
    EXPECT_STREQ(path.getChars(), "bc");
    path += path;
    EXPECT_EQ(path.getChars(), native("bc/bc"));
    path += path.getChars() + 3;
    EXPECT_EQ(path.getChars(), native("bc/bc/bc"));
}

TEST(OsFilePath, nullIsRefusedWhereNoPathIsMade)
{
    OsFilePath path("kept");
    char const* const null = nullptr;
    expectThrow<Vn::ExInternalError, std::runtime_error>([&] { path = null; }, "Assertion 'path != 0' failed.");
    expectThrow<Vn::ExInternalError, std::runtime_error>([&] { path.set(null); }, "Assertion 'path != 0' failed.");
    expectThrow<Vn::ExInternalError, std::runtime_error>([&] { path += null; }, "Assertion 'path != 0' failed.");
    expectThrow<Vn::ExInternalError, std::runtime_error>([&] { path + null; }, "Assertion 'path != 0' failed.");
    EXPECT_STREQ(path.getChars(), "kept");
}

TEST(OsFilePath, comparesUnsignedBytes)
{
    const struct
    {
        char const* a;
        char const* b;
        int expected;
    } table[] = {
        {"", "", 0},      {"a", "a", 0},         {"", "a", -1},          {"ab", "a", 1},
        {"a", "b", -1},   {"A", "a", -1},        {"C:\\A", "c:\\a", -1}, {"a\\b", "a/b", 1},
        {"\xFF", "a", 1}, {"a\x80", "a\x7F", 1}, {"zzz", "a", 1},
    };
    for (auto const& row : table) {
        EXPECT_EQ(OsFilePath::compare(row.a, row.b), row.expected) << row.a << " " << row.b;
        EXPECT_EQ(OsFilePath::compare(row.b, row.a), -row.expected) << row.a << " " << row.b;
    }
    EXPECT_EQ(OsFilePath::compare(nullptr, ""), 0);
    EXPECT_EQ(OsFilePath::compare(nullptr, "a"), -1);
    EXPECT_EQ(OsFilePath::compare("a", nullptr), 1);
}

TEST(OsFilePath, dumpWritesThePathAlone)
{
    std::ostringstream stream;
    const OsFilePath path("a b");
    EXPECT_EQ(&path.dump(stream), &stream);
    stream << '|' << path << '|' << OsFilePath();
    EXPECT_EQ(stream.str(), "a b|a b|");
}

TEST(OsFilePath, aPlainStringIsOneElement)
{
    OsFilePath path("a");
    const std::string two = native("b/c");
    auto append = [&] { path += two.c_str(); };
    auto join = [&] { path + two.c_str(); };
    expectThrow<OsFileEx::ExSeparatorNotAllowed, std::invalid_argument>(append,
                                                                        "Separator not allowed in path elements.");
    expectThrow<OsFileEx::ExSeparatorNotAllowed, std::invalid_argument>(join,
                                                                        "Separator not allowed in path elements.");
    EXPECT_THROW(path += OsFilePath::getSeparator(), OsFileEx::ExSeparatorNotAllowed);
    EXPECT_STREQ(path.getChars(), "a") << "a refused join leaves it unchanged";
    path += "b";
    EXPECT_EQ(path.getChars(), native("a/b"));
    EXPECT_EQ((path + "c").getChars(), native("a/b/c"));
    EXPECT_EQ(path.getChars(), native("a/b"));
}

TEST(OsFilePath, aPathBringsSeveralElementsButNoRoot)
{
    OsFilePath path("a");
    path += nativePath("b/c");
    EXPECT_EQ(path.getChars(), native("a/b/c"));
    auto append = [&] { path += OsFilePath(absolute); };
    auto join = [&] { path + OsFilePath(absolute); };
    expectThrow<OsFileEx::ExIllegalPathConcat, std::runtime_error>(append, "Attempt to concatenate absolute path.");
    expectThrow<OsFileEx::ExIllegalPathConcat, std::runtime_error>(join, "Attempt to concatenate absolute path.");
    EXPECT_EQ(path.getChars(), native("a/b/c"));
    EXPECT_EQ((path + OsFilePath("d")).getChars(), native("a/b/c/d"));
    EXPECT_EQ(path.getChars(), native("a/b/c"));
}

#if defined(_WIN32)
TEST(OsFilePath, aLeadingSeparatorIsNoRootOnWindows)
{
    OsFilePath path("x");
    path += OsFilePath("\\a");
    EXPECT_STREQ(path.getChars(), "x\\\\a");
}
#endif

TEST(OsFilePath, joiningAddsOneSeparator)
{
    OsFilePath path;
    path += "a";
    EXPECT_STREQ(path.getChars(), "a");
    path += "";
    EXPECT_EQ(path.getChars(), native("a/"));
    path += "";
    EXPECT_EQ(path.getChars(), native("a/"));
    path += "b";
    EXPECT_EQ(path.getChars(), native("a/b"));
    OsFilePath empty;
    empty += "";
    EXPECT_TRUE(empty.isEmpty());
}

TEST(OsFilePath, separatorIsOneCharacter)
{
#if defined(_WIN32)
    EXPECT_STREQ(OsFilePath::getSeparator(), "\\");
#else
    EXPECT_STREQ(OsFilePath::getSeparator(), "/");
#endif
}

TEST(OsFilePath, takenApartAgainstTheWorkingFolder)
{
    const VnTest::TempFolder temp;
    const std::string here = temp.folder("here");
    const VnTest::WorkingFolder working(here);
    const struct
    {
        char const* path;
        char const* base;
        std::string directory;
        char const* extension;
    } table[] = {
        {".", "here", here, ""},
        {"..", nullptr, temp.path(), nullptr},
        {"a", "a", here, ""},
        {"a/", "", native(here + "/a"), ""},
        {"a.tar.gz", "a.tar.gz", here, "gz"},
        {".profile", ".profile", here, "profile"},
        {"a.x/../b.y", "b.y", here, "y"},
        {"dir.d/file", "file", native(here + "/dir.d"), ""},
        {"./", "", here, ""},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.path);
        const OsFilePath path = nativePath(row.path);
        if (row.base != nullptr) {
            EXPECT_STREQ(path.getBaseName().getChars(), row.base);
        }
        EXPECT_EQ(path.getDirectoryName().getChars(), row.directory);
        if (row.extension != nullptr) {
            EXPECT_STREQ(path.getExtension(), row.extension);
        }
        EXPECT_EQ(path.getChars(), native(row.path)) << "asking changes nothing";
    }
}

TEST(OsFilePath, takenApartFromTheRoot)
{
#if defined(_WIN32)
    const struct
    {
        char const* path;
        char const* base;
        char const* directory;
    } table[] = {{"C:\\a\\b", "b", "C:\\a"},
                 {"C:\\a\\", "", "C:\\a"},
                 {"C:\\a", "a", "C:"},
                 {"C:\\", "", "C:"},
                 {"c:/a/b", "b", "c:\\a"}};
#else
    const struct
    {
        char const* path;
        char const* base;
        char const* directory;
    } table[] = {{"/a/b", "b", "/a"}, {"/a/", "", "/a"}, {"/a", "a", "/"},
                 {"/", "", "/"},      {"//", "", "/"},   {"/a/../b", "b", "/"}};
#endif
    for (auto const& row : table) {
        SCOPED_TRACE(row.path);
        EXPECT_STREQ(OsFilePath(row.path).getBaseName().getChars(), row.base);
        EXPECT_STREQ(OsFilePath(row.path).getDirectoryName().getChars(), row.directory);
    }
#if defined(_WIN32)
    EXPECT_STREQ(OsFilePath("C:\\x\\dir.d\\file").getExtension(), "");
#else
    EXPECT_STREQ(OsFilePath("/x/dir.d/file").getExtension(), "");
#endif
}

TEST(OsFilePath, theSystemCantResolveAnEmptyPath)
{
#if defined(_WIN32)
    try {
        OsFilePath().getBaseName();
        ADD_FAILURE() << "nothing thrown";
    } catch (Vn::ExSysErrorWindows const& failure) {
        EXPECT_STREQ(failure.getFileName(), "src/base/osfilepathwindows");
    }
    EXPECT_THROW(OsFilePath().getDirectoryName(), Vn::ExSysErrorWindows);
    EXPECT_THROW(OsFilePath().getExtension(), Vn::ExSysErrorWindows);
#else
    expectSystemError(ENOENT, OsFilePath());
#endif
}

#if defined(_WIN32)
TEST(OsFilePath, aResolvedPathHasItsLimit)
{
    // Wine resolves no path of over 259 bytes.
    const std::size_t longest = VnTest::isWine() ? 256 : 1020;
    const std::string name(longest, 'n');
    EXPECT_EQ(OsFilePath(("C:\\" + name).c_str()).getBaseName().getChars(), name);
    expectSystemError(206, OsFilePath(("C:\\" + name + "n").c_str()));
}
#else
TEST(OsFilePath, aLongPathIsTakenApartWhole)
{
    const std::string name(5000, 'n');
    EXPECT_EQ(OsFilePath(("/" + name).c_str()).getBaseName().getChars(), name);
    EXPECT_EQ(OsFilePath(("/" + name + "/x").c_str()).getDirectoryName().getChars(), "/" + name);
}

TEST(OsFilePath, aDeepWorkingFolderIsFoundWhole)
{
    const VnTest::TempFolder temp;
    std::string deep = temp.path();
    for (int level = 0; level < 6; ++level)
        deep += "/" + std::string(200, 'd');
    std::filesystem::create_directories(deep);
    const VnTest::WorkingFolder working(deep);
    EXPECT_EQ(OsFilePath(".").getDirectoryName().getChars(), deep);
}

TEST(OsFilePath, aRemovedWorkingFolderIsTold)
{
    const VnTest::TempFolder temp;
    const VnTest::WorkingFolder working(temp.folder("gone"));
    std::filesystem::remove(temp.path("gone"));
    expectSystemError(ENOENT, OsFilePath("a"));
    EXPECT_STREQ(OsFilePath("/a").getBaseName().getChars(), "a");
}
#endif

TEST(OsFilePath, homeComesFromTheEnvironment)
{
    OsEnv::putVariable("HOME=c:/x/y");
    EXPECT_EQ(OsFilePath::getHomeDir().getChars(), native("c:/x/y"));
    OsEnv::putVariable("HOME=/x/");
    EXPECT_EQ(OsFilePath::getHomeDir().getChars(), native("/x/"));
    OsEnv::putVariable("HOME=");
    expectThrow<OsFileEx::ExHomeNotDefined, std::runtime_error>([] { OsFilePath::getHomeDir(); },
                                                                "Cannot get home directory from the environment.");
}

TEST(OsFilePath, homeIsCutToItsBuffer)
{
    for (std::size_t length : {1022U, 1023U, 1024U, 3000U}) {
        SCOPED_TRACE(length);
        OsEnv::putVariable(("HOME=" + std::string(length, 'h')).c_str());
        EXPECT_EQ(OsFilePath::getHomeDir().getChars(), std::string(std::min<std::size_t>(length, 1023), 'h'));
    }
}

#if defined(_WIN32)
TEST(OsFilePath, tempAndRootAreTheSystems)
{
    EXPECT_TRUE(OsFilePath::getTempDir().isAbsolute());
    EXPECT_TRUE(std::filesystem::is_directory(OsFilePath::getTempDir().getChars()));
    const std::string drive = std::filesystem::current_path().root_name().string();
    EXPECT_EQ(OsFilePath::getRootDir().getChars(), drive + "\\");
}
#else
TEST(OsFilePath, tempAndRoot)
{
    OsEnv::putVariable("TMPDIR=/x/y/");
    EXPECT_STREQ(OsFilePath::getTempDir().getChars(), "/x/y/");
    OsEnv::putVariable(("TMPDIR=" + std::string(1024, 't')).c_str());
    EXPECT_EQ(OsFilePath::getTempDir().getChars(), std::string(1023, 't'));
    ::setenv("TMPDIR", "", 1);
    EXPECT_STREQ(OsFilePath::getTempDir().getChars(), "/tmp");
    ::unsetenv("TMPDIR");
    EXPECT_STREQ(OsFilePath::getTempDir().getChars(), "/tmp");
    EXPECT_STREQ(OsFilePath::getRootDir().getChars(), "/");
}
#endif
