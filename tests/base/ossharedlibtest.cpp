#include <base/lmlibraries.h>
#include <base/ossharedlib.h>
#include <base/ossharedlibex.h>

#include "expectchild.h"
#include "expectthrow.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#if defined(_WIN32)
#    include "wine.h"
#else
#    include <dlfcn.h>
#endif

using Vn::LmLibraries;
using Vn::LmLibrary;
using Vn::ObjPtr;
using Vn::OsFilePath;
using Vn::OsSharedLib;
using Vn::OsSharedLibEx;
using VnTest::expectThrow;
using VnTest::getProgramFolder;
using VnTest::TempFolder;

static_assert(std::is_abstract_v<OsSharedLib> && std::has_virtual_destructor_v<OsSharedLib>);

namespace
{
#if defined(_WIN32)
const std::string suffix = ".dll";

/// The text of the system for a library that it can't load.
std::string systemTextFor(std::string const& path)
{
    EXPECT_EQ(::LoadLibraryA(path.c_str()), nullptr);
    char text[256] = "";
    ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, ::GetLastError(), 0, text, sizeof text, nullptr);
    return text;
}
#else
const std::string suffix = ".so";

std::string systemTextFor(std::string const& path)
{
    EXPECT_EQ(::dlopen(path.c_str(), RTLD_NOW), nullptr);
    return ::dlerror();
}
#endif

std::string fileNameOf(char const* library)
{
    return std::string("lib") + library + suffix;
}

std::string modulePath()
{
    return (std::filesystem::path(getProgramFolder()) / fileNameOf("VNtestmodule")).string();
}

template <class Function>
Function* functionOf(OsSharedLib& library, char const* name)
{
    void* const address = library.getFunction(name);
    Function* function;
    std::memcpy(&function, &address, sizeof function);
    return function;
}

bool isListed(std::filesystem::path const& file)
{
    for (LmLibrary const& library : LmLibraries::getList()) {
        std::error_code ignored;
        if (std::filesystem::equivalent(library.getPath(), file, ignored))
            return true;
    }
    return false;
}

/// Shows what the family sees.
class ShownLib : public OsSharedLib
{
public:
    explicit ShownLib(OsFilePath const& path) : OsSharedLib(path) {}
    void* getFunction(char const*) override { return nullptr; }
    char const* path() const { return getPath().getChars(); }
};
}  // namespace

TEST(OsSharedLib, findsFunctionsAndObjects)
{
    ObjPtr<OsSharedLib> library = OsSharedLib::open(modulePath().c_str());
    EXPECT_EQ(functionOf<int()>(*library, "vnTestModuleAnswer")(), 42);
    *static_cast<int*>(library->getFunction("vnTestModuleNumber")) = 1;
    EXPECT_EQ(functionOf<int()>(*library, "vnTestModuleAnswer")(), 2);
    *static_cast<int*>(library->getFunction("vnTestModuleNumber")) = 41;
}

TEST(OsSharedLib, isOpenedTwiceAsOne)
{
    ObjPtr<OsSharedLib> first = OsSharedLib::open(modulePath().c_str());
    ObjPtr<OsSharedLib> second = OsSharedLib::open(modulePath().c_str());
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(first->getFunction("vnTestModuleNumber"), second->getFunction("vnTestModuleNumber"));
}

TEST(OsSharedLib, staysLoadedWhenItsObjectIsGone)
{
    ObjPtr<OsSharedLib> library = OsSharedLib::open(modulePath().c_str());
    auto* const answer = functionOf<int()>(*library, "vnTestModuleAnswer");
    library.reset();
    EXPECT_EQ(answer(), 42);
    EXPECT_TRUE(isListed(modulePath()));
}

VN_CHILD(siblingsInAFolder)
{
    const TempFolder folder;
    const std::filesystem::path bin = getProgramFolder(), there = folder.path();
    for (char const* name : {"VNtestmodule", "VNtestsibling"})
        std::filesystem::copy_file(bin / fileNameOf(name), there / fileNameOf(name));
    ObjPtr<OsSharedLib> library = OsSharedLib::open((there / fileNameOf("VNtestmodule")).string().c_str());
    std::cout << functionOf<int()>(*library, "vnTestModuleAnswer")()
              << isListed(there / fileNameOf("VNtestmodule"));
#if defined(_WIN32)
    std::cout << 1 << "\n";  // the program's folder comes first there
#else
    std::cout << isListed(there / fileNameOf("VNtestsibling")) << "\n";
#endif
    return 0;
}

TEST(OsSharedLib, findsItsSiblingsInItsOwnFolder)
{
    VnTest::expectOutput("siblingsInAFolder", "4211\n");
}

TEST(OsSharedLib, aMissingFileIsNamedWithTheSystemsText)
{
    const TempFolder folder;
    const std::string path = folder.path("missing") + suffix;
    const std::string text = "Can't open dynamic library '" + path + "': " + systemTextFor(path) + ".";
    expectThrow<OsSharedLibEx::ExCantOpenLib, std::runtime_error>([&] { OsSharedLib::open(path.c_str()); },
                                                                  text.c_str());
    EXPECT_GT(systemTextFor(path).size(), 5u);
}

TEST(OsSharedLib, refusalsNameTheirSource)
{
    ObjPtr<OsSharedLib> library = OsSharedLib::open(modulePath().c_str());
    const auto sourceOf = [](auto const& call) -> std::string {
        try {
            call();
        } catch (OsSharedLibEx const& failure) {
            return failure.getFileName();
        }
        return "nothing thrown";
    };
    EXPECT_EQ(sourceOf([] { OsSharedLib::open(""); }), "src/base/ossharedlibwindows");
    EXPECT_EQ(sourceOf([&] { OsSharedLib::open((modulePath() + ".missing").c_str()); }),
              "src/base/ossharedlibwindows");
    EXPECT_EQ(sourceOf([&] { library->getFunction("vnTestNoFunction"); }), "src/base/ossharedlibwindows");
}

TEST(OsSharedLib, whatIsNoLibraryIsRefused)
{
    const TempFolder folder;
    for (std::string const& path : {folder.file("text" + suffix, "no library"), folder.file("empty" + suffix),
                                    folder.folder("folder" + suffix)}) {
        const std::string text = "Can't open dynamic library '" + path + "': " + systemTextFor(path) + ".";
        expectThrow<OsSharedLibEx::ExCantOpenLib, std::runtime_error>([&] { OsSharedLib::open(path.c_str()); },
                                                                      text.c_str());
    }
}

TEST(OsSharedLib, anEmptyPathIsNotTheProgram)
{
    expectThrow<OsSharedLibEx::ExCantOpenLib, std::runtime_error>([] { OsSharedLib::open(""); }, nullptr);
    expectThrow<OsSharedLibEx::ExCantOpenLib, std::runtime_error>([] { OsSharedLib::open(OsFilePath()); }, nullptr);
}

TEST(OsSharedLib, anUnknownFunctionIsNamedBeforeItsLibrary)
{
    ObjPtr<OsSharedLib> library = OsSharedLib::open(modulePath().c_str());
    const std::string behind = "' not found in dynamic library '" + modulePath() + "'.";
    expectThrow<OsSharedLibEx::ExFunctionNotFound, std::runtime_error>(
        [&] { library->getFunction("vnTestNoFunction"); }, ("Function 'vnTestNoFunction" + behind).c_str());
    expectThrow<OsSharedLibEx::ExFunctionNotFound, std::runtime_error>([&] { library->getFunction(""); },
                                                                       ("Function '" + behind).c_str());
    expectThrow<OsSharedLibEx::ExFunctionNotFound, std::runtime_error>([&] { library->getFunction(nullptr); },
                                                                       ("Function '" + behind).c_str());
}

TEST(OsSharedLib, aLongPathIsCutInTheMessageAndNotRefused)
{
    const TempFolder folder;
    std::string path = folder.path("x");
    path.append(300 - path.size(), 'x');
    try {
        OsSharedLib::open(path.c_str());
        ADD_FAILURE() << "nothing thrown";
    } catch (OsSharedLibEx::ExCantOpenLib const& failure) {
        const std::string start = "Can't open dynamic library '" + path.substr(0, 256) + "': ";
        EXPECT_EQ(std::string(failure.what()).substr(0, start.size()), start);
    }
}

TEST(OsSharedLib, exceptionsCutTheirTexts)
{
    using std::string;
    const auto cantOpen = [](string const& path, string const& text) {
        return string(OsSharedLibEx::ExCantOpenLib("src/base/x", 1, path.c_str(), text.c_str()).what());
    };
    const auto notFound = [](string const& path, string const& function) {
        return string(OsSharedLibEx::ExFunctionNotFound("src/base/x", 1, path.c_str(), function.c_str()).what());
    };
    for (int more : {0, 1}) {
        const auto extra = static_cast<std::size_t>(more);
        EXPECT_EQ(cantOpen(string(256 + extra, 'p'), string(512 + extra, 't')),
                  "Can't open dynamic library '" + string(256, 'p') + "': " + string(512, 't') + ".");
        EXPECT_EQ(notFound(string(256 + extra, 'p'), string(64 + extra, 'f')),
                  "Function '" + string(64, 'f') + "' not found in dynamic library '" + string(256, 'p') + "'.");
    }
    EXPECT_EQ(cantOpen("p", "line end kept\r\n"), "Can't open dynamic library 'p': line end kept\r\n.");
    EXPECT_STREQ(OsSharedLibEx::ExCantOpenLib("src/base/x", 1, nullptr, nullptr).what(),
                 "Can't open dynamic library '': .");
    EXPECT_STREQ(OsSharedLibEx::ExFunctionNotFound("src/base/x", 1, nullptr, nullptr).what(),
                 "Function '' not found in dynamic library ''.");
}

TEST(OsSharedLib, hasThePlatformsSuffix)
{
    EXPECT_EQ(OsSharedLib::getSuffix(), suffix);
}

TEST(OsSharedLib, copiesItsPath)
{
    auto* const first = new ShownLib("the/path");
    const ShownLib copy(*first);
    EXPECT_STREQ(copy.path(), "the/path");
    EXPECT_NE(copy.path(), first->path());
    delete first;
    EXPECT_STREQ(copy.path(), "the/path");
}
