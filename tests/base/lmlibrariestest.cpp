#include <base/lmlibraries.h>
#include <base/lmmap_p.h>
#include <base/lmtext_p.h>
#include <base/lmwalk_p.h>
#include <base/ossharedlib.h>

#include "expectchild.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using Vn::LmAddressSpace;
using Vn::LmBlock;
using Vn::LmLibraries;
using Vn::LmLibrary;
using Vn::LmMap;
using Vn::LmText;
using Vn::LmWalk;
using VnTest::getProgramFolder;
using VnTest::TempFolder;

static_assert(std::is_same_v<decltype(LmLibraries::getList()), std::vector<LmLibrary> const&>);

namespace
{
int written = 1;
const int readOnly = 2;

std::string pointer(std::uintptr_t address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", reinterpret_cast<void*>(address));
    return text;
}

LmLibrary libraryOf(std::uintptr_t address, char const* path, std::vector<LmBlock> const& blocks)
{
    LmLibrary library(address);
    library.setPath(path);
    for (LmBlock const& block : blocks)
        library.addBlock(block);
    return library;
}

LmLibrary const* findFile(std::vector<LmLibrary> const& list, std::filesystem::path const& file)
{
    for (LmLibrary const& library : list) {
        std::error_code ignored;
        if (std::filesystem::equivalent(library.getPath(), file, ignored))
            return &library;
    }
    return nullptr;
}

/// Flags of the block that holds an address; 0 if none does.
unsigned flagsAt(LmLibrary const& library, void const* address)
{
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    for (LmBlock const& block : library.getBlocks())
        if (place >= block.getAddress() && place - block.getAddress() < block.getSize())
            return block.getFlags();
    return 0;
}
}  // namespace

TEST(LmLibrary, isUnknownAtFirst)
{
    const LmLibrary library(0x1000);
    EXPECT_EQ(library.getBaseAddress(), 0x1000u);
    EXPECT_EQ(library.getAddress(), 0x1000u);
    EXPECT_STREQ(library.getPath(), "Unknown");
    EXPECT_TRUE(library.getBlocks().empty());
}

TEST(LmLibrary, withoutAPathIsUnknownAgain)
{
    LmLibrary library = libraryOf(0x1000, "path", {});
    library.setPath(nullptr);
    EXPECT_STREQ(library.getPath(), "Unknown");
    EXPECT_EQ(library, LmLibrary(0x1000));
}

TEST(LmLibrary, isAValue)
{
    LmLibrary library = libraryOf(0x1000, "path", {LmBlock(0x1000, 0x2000, 4)});
    const LmLibrary copy(library);
    EXPECT_EQ(copy, library);
    library.setPath("other");
    EXPECT_STREQ(copy.getPath(), "path");
    EXPECT_FALSE(copy == library);
    LmLibrary assigned(0);
    assigned = copy;
    EXPECT_EQ(assigned, copy);
    assigned.addBlock(LmBlock(0x3000, 1, 12));
    EXPECT_FALSE(assigned == copy);
    EXPECT_FALSE(libraryOf(0x1000, "p", {}) == libraryOf(0x2000, "p", {}));
}

TEST(LmBlock, hasTwoEqualAddresses)
{
    const LmBlock block(0x1000, 0x2000, 44);
    EXPECT_EQ(block.getBaseAddress(), 0x1000u);
    EXPECT_EQ(block.getAddress(), 0x1000u);
    EXPECT_EQ(block.getSize(), 0x2000u);
    EXPECT_EQ(block.getFlags(), 44u);
    EXPECT_EQ(LmBlock::Read + LmBlock::Write + LmBlock::CopyOnWrite, 44);
    EXPECT_EQ(LmBlock::Execute, 16);
    EXPECT_TRUE(block == LmBlock(0x1000, 0x2000, 44));
    EXPECT_FALSE(block == LmBlock(0x1000, 0x2000, 12));
    EXPECT_FALSE(block == LmBlock(0x1000, 0x1000, 44));
    EXPECT_FALSE(block == LmBlock(0x2000, 0x2000, 44));
}

TEST(LmText, isExactlyThis)
{
    const std::vector<LmLibrary> list{
        libraryOf(0x10000, "first",
                  {LmBlock(0x10000, 4096, 4), LmBlock(0x11000, 0, 63), LmBlock(0x12000, 8192, 60)}),
        libraryOf(0x7FFF12345000, "second", {LmBlock(0x7FFF12345000, 0x80000000, 12), LmBlock(1, 2, 0)})};
    EXPECT_EQ(LmText::of(list),
              "\n\nLibrary: 0 \n"
              "\tLibrary path: first \n"
              "\tAddress: " +
                  pointer(0x10000) +
                  " \n\n"
                  "\tBlock: 0 \n"
                  "\t\tAddress: " +
                  pointer(0x10000) +
                  " \n "
                  "\t\tSize:    4096 \n"
                  "\t\tFlags:   READ \n"
                  "\tBlock: 1 \n"
                  "\tBlock: 2 \n"
                  "\t\tAddress: " +
                  pointer(0x12000) +
                  " \n "
                  "\t\tSize:    8192 \n"
                  "\t\tFlags:   READ WRITE COPY EXECUTE \n"
                  "\n\nLibrary: 1 \n"
                  "\tLibrary path: second \n"
                  "\tAddress: " +
                  pointer(0x7FFF12345000) +
                  " \n\n"
                  "\tBlock: 0 \n"
                  "\t\tAddress: " +
                  pointer(0x7FFF12345000) +
                  " \n "
                  "\t\tSize:    -2147483648 \n"  // 32 bits are shown
                  "\t\tFlags:   READ WRITE \n"
                  "\tBlock: 1 \n"
                  "\t\tAddress: " +
                  pointer(1) +
                  " \n "
                  "\t\tSize:    2 \n"
                  "\t\tFlags:   \n");
    EXPECT_EQ(LmText::of({}), "");
}

// --- the walk over an address space ---------------------------------------------------------------------------------

namespace
{
using Region = LmAddressSpace::Region;

class MadeUpSpace final : public LmAddressSpace
{
public:
    MadeUpSpace(std::vector<Region> regions, std::vector<std::pair<std::uintptr_t, std::string>> modules)
        : _regions(std::move(regions)), _modules(std::move(modules))
    {}

    bool query(std::uintptr_t address, Region& region) const override
    {
        if (--queriesLeft < 0)
            return false;
        for (Region const& known : _regions) {
            if (address >= known.base && address - known.base < known.size) {
                region = known;
                return true;
            }
        }
        return false;
    }

    bool getModuleName(std::uintptr_t base, char (&name)[nameSize]) const override
    {
        for (auto const& module : _modules) {
            if (module.first == base) {
                std::snprintf(name, sizeof name, "%s", module.second.c_str());
                return true;
            }
        }
        return false;
    }

    void reportUnknownState() const override { ++unknownStates; }

    mutable int queriesLeft = 1000;
    mutable int unknownStates = 0;

private:
    std::vector<Region> _regions;
    std::vector<std::pair<std::uintptr_t, std::string>> _modules;
};

constexpr auto committed = LmAddressSpace::committed;
constexpr auto reserved = LmAddressSpace::reserved;
constexpr auto unused = LmAddressSpace::unused;

std::vector<LmLibrary> modulesOf(MadeUpSpace const& space)
{
    std::vector<LmLibrary> libraries;
    LmWalk(space).addModules(libraries);
    return libraries;
}
}  // namespace

TEST(LmWalk, findsModulesAmongOtherAllocations)
{
    const MadeUpSpace space(
        {
            {0x0, 0, 0x10000, unused, 1, 0},
            {0x10000, 0x10000, 0x1000, committed, 0x04, 0x04},  // no module
            {0x11000, 0, 0xF000, unused, 1, 0},
            {0x20000, 0x20000, 0x1000, committed, 0x02, 0x80},  // a module of four blocks
            {0x21000, 0x20000, 0x3000, committed, 0x20, 0x80},
            {0x24000, 0x20000, 0x1000, committed, 0x08, 0x80},
            {0x25000, 0x20000, 0x2000, reserved, 0x02, 0x80},    // of the allocation's protection
            {0x27000, 0x27000, 0x1000, committed, 0x102, 0x02},  // next to it another one
            {0x28000, 0, 0x8000, unused, 1, 0},
        },
        {{0x20000, "one.dll"}, {0x27000, "two.dll"}});
    const std::vector<LmLibrary> expected{libraryOf(0x20000, "one.dll",
                                                    {LmBlock(0x20000, 0x1000, 4), LmBlock(0x21000, 0x3000, 20),
                                                     LmBlock(0x24000, 0x1000, 44), LmBlock(0x25000, 0x2000, 60)}),
                                          libraryOf(0x27000, "two.dll", {LmBlock(0x27000, 0x1000, 4)})};
    EXPECT_EQ(modulesOf(space), expected);
}

TEST(LmWalk, aModuleAtAddress0IsNone)
{
    const MadeUpSpace space({{0, 0, 0x1000, committed, 2, 2}}, {{0, "zero.dll"}});
    EXPECT_TRUE(modulesOf(space).empty());
}

TEST(LmWalk, endsWhereAQueryFailsAlsoAmongTheBlocks)
{
    const std::vector<Region> regions{{0, 0x0, 0x1000, unused, 1, 0},
                                      {0x1000, 0x1000, 0x1000, committed, 2, 2},
                                      {0x2000, 0x1000, 0x1000, committed, 4, 2}};
    // One query for the free region, one for the module's first block, three to measure it, and no more.
    MadeUpSpace space(regions, {{0x1000, "one.dll"}});
    space.queriesLeft = 5;
    const std::vector<LmLibrary> cut = modulesOf(space);
    ASSERT_EQ(cut.size(), 1u);
    ASSERT_EQ(cut[0].getBlocks().size(), 1u);
    space.queriesLeft = 1000;
    EXPECT_EQ(modulesOf(space)[0].getBlocks().size(), 2u);
    space.queriesLeft = 0;
    EXPECT_TRUE(modulesOf(space).empty());
}

TEST(LmWalk, aStateThatNoSystemKnowsIsReportedAndEndsIt)
{
    const MadeUpSpace space({{0, 0, 0x1000, 0x4000, 2, 2}, {0x1000, 0x1000, 0x1000, committed, 2, 2}},
                            {{0x1000, "one.dll"}});
    EXPECT_TRUE(modulesOf(space).empty());
    EXPECT_EQ(space.unknownStates, 1);
}

TEST(LmWalk, asksNoMoreThanItMust)
{
    const MadeUpSpace space({{0, 0, 0x1000, unused, 1, 0},
                             {0x1000, 0x1000, 0x1000, committed, 2, 2},
                             {0x2000, 0x1000, 0x1000, committed, 4, 2}},
                            {{0x1000, "one.dll"}});
    modulesOf(space);
    // The free region; each of the two blocks, and three to measure its allocation; the end.
    EXPECT_EQ(1000 - space.queriesLeft, 1 + 4 + 4 + 1);
}

TEST(LmWalk, aFreeRegionBelongsToNoModuleWhateverItSaysOfItsAllocation)
{
    const MadeUpSpace space({{0, 0, 0x1000, unused, 1, 0},
                             {0x1000, 0x1000, 0x1000, committed, 2, 2},
                             {0x2000, 0x1000, 0x1000, unused, 1, 0},
                             {0x3000, 0x3000, 0x1000, committed, 4, 4}},
                            {{0x1000, "one.dll"}, {0x3000, "two.dll"}});
    EXPECT_EQ(modulesOf(space),
              (std::vector<LmLibrary>{libraryOf(0x1000, "one.dll", {LmBlock(0x1000, 0x1000, 4)}),
                                      libraryOf(0x3000, "two.dll", {LmBlock(0x3000, 0x1000, 12)})}));
}

namespace
{
/// Answers always the same, so that nothing leads on from it.
class StandingSpace final : public LmAddressSpace
{
public:
    explicit StandingSpace(Region const& region) : _region(region) {}

    bool query(std::uintptr_t, Region& region) const override
    {
        region = _region;
        return --queriesLeft >= 0;
    }

    bool getModuleName(std::uintptr_t, char (&name)[nameSize]) const override
    {
        name[0] = '\0';
        return true;
    }

    void reportUnknownState() const override {}

    mutable int queriesLeft = 1000;

private:
    Region _region;
};
}  // namespace

TEST(LmWalk, endsWhereASystemLeadsNowhere)
{
    for (Region const& region : {Region{0, 0, 0, unused, 1, 0}, Region{0x1000, 0x1000, 0, committed, 2, 2},
                                 Region{0x1000, 0x1000, 0, unused, 1, 0}}) {
        const StandingSpace space(region);
        std::vector<LmLibrary> libraries;
        LmWalk(space).addModules(libraries);
        EXPECT_GT(space.queriesLeft, 990) << region.base << " " << region.state;
        EXPECT_LE(libraries.size(), 2u);
    }
}

TEST(LmWalk, endsAtTheTopOfTheAddressSpace)
{
    const std::uintptr_t top = UINTPTR_MAX - 0xFFF;
    const MadeUpSpace space({{0, 0, top, unused, 1, 0}, {top, top, 0x1000, committed, 2, 2}}, {{top, "top.dll"}});
    const std::vector<LmLibrary> found = modulesOf(space);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].getBlocks().size(), 1u);
    EXPECT_GT(space.queriesLeft, 900);
}

TEST(LmWalk, flagsOfEachProtection)
{
    const struct
    {
        std::uint32_t protection;
        unsigned flags;
    } table[] = {{0x02, 4},  {0x04, 12}, {0x08, 44}, {0x10, 16}, {0x20, 20}, {0x40, 28},
                 {0x80, 60}, {0x01, 0},  {0x00, 0},  {0x06, 0},  {0x822, 0}, {0xFF, 0}};
    for (auto const& row : table) {
        EXPECT_EQ(LmWalk::flagsOf(row.protection), row.flags) << row.protection;
        for (std::uint32_t more : {0x100u, 0x200u, 0x400u, 0x700u})  // guard, no-cache, write-combine
            EXPECT_EQ(LmWalk::flagsOf(row.protection | more), row.flags) << row.protection;
    }
}

// --- the memory map -------------------------------------------------------------------------------------------------

namespace
{
std::vector<LmLibrary> modulesOf(std::vector<LmMap::Object> objects, std::string const& map)
{
    std::vector<LmLibrary> libraries;
    LmMap::addModules(std::move(objects), map, libraries);
    return libraries;
}
}  // namespace

TEST(LmMap, joinsObjectsAndStretches)
{
    const std::string map = "00400000-00401000 r--p 00000000 08:01 1234   /bin/program\n"
                            "00401000-00403000 r-xp 00001000 08:01 1234   /bin/program\n"
                            "00403000-00404000 rw-p 00003000 08:01 1234   /bin/program\n"
                            "00404000-00406000 rw-p 00000000 00:00 0 \n"
                            "00500000-00600000 rw-p 00000000 00:00 0      [heap]\n"
                            "7f0000000000-7f0000001000 r--p 00000000 fd:00 99 /lib/with blanks in its name\n"
                            "7f0000001000-7f0000002000 ---p 00001000 fd:00 99 /lib/with blanks in its name\n"
                            "7f0000002000-7f0000003000 rwxs 00001000 fd:00 99 /lib/with blanks in its name\n"
                            "7f0000003000-7f0000004000 --xp 00001000 fd:00 99 /lib/with blanks in its name\n";
    const std::vector<LmLibrary> expected{
        libraryOf(0x400000, "/bin/program",
                  {LmBlock(0x400000, 0x1000, 4), LmBlock(0x401000, 0x2000, 20), LmBlock(0x403000, 0x1000, 44),
                   LmBlock(0x404000, 0x2000, 12)}),
        libraryOf(0x7f0000000000, "/lib/with blanks in its name",
                  {LmBlock(0x7f0000000000, 0x1000, 4), LmBlock(0x7f0000001000, 0x1000, 0),
                   LmBlock(0x7f0000002000, 0x1000, 28), LmBlock(0x7f0000003000, 0x1000, 16)})};
    EXPECT_EQ(modulesOf({{0x7f0000000000, 0x7f0000004000, "/lib/with blanks in its name"},
                         {0x400000, 0x406000, "/bin/program"}},
                        map),
              expected);
}

TEST(LmMap, aStretchCountsAsFarAsItsObjectGoes)
{
    const std::string map = "1000-9000 rw-p 00000000 00:00 0";
    EXPECT_EQ(modulesOf({{0x3000, 0x5000, "a"}, {0x8000, 0xa000, "b"}, {0x9000, 0xb000, "c"}}, map),
              (std::vector<LmLibrary>{libraryOf(0x3000, "a", {LmBlock(0x3000, 0x2000, 12)}),
                                      libraryOf(0x8000, "b", {LmBlock(0x8000, 0x1000, 12)}),
                                      libraryOf(0x9000, "c", {})}));
}

TEST(LmMap, anObjectHasAllPagesThatItsSegmentsTouch)
{
    const struct
    {
        char const* what;
        std::uintptr_t begin, size, expectedBegin, expectedEnd;
    } table[] = {
        {"whole pages", 0x1000, 0x2000, 0x1000, 0x3000},
        {"one byte", 0x1000, 1, 0x1000, 0x2000},
        {"the last byte of a page", 0x1FFF, 1, 0x1000, 0x2000},
        {"two bytes on two pages", 0x1FFF, 2, 0x1000, 0x3000},
        {"one byte more than a page", 0x1000, 0x1001, 0x1000, 0x3000},
        {"one byte less than a page", 0x1000, 0xFFF, 0x1000, 0x2000},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        LmMap::Object object{UINTPTR_MAX, 0, ""};
        LmMap::addSegment(object, row.begin, row.size, 0x1000);
        EXPECT_EQ(object.begin, row.expectedBegin);
        EXPECT_EQ(object.end, row.expectedEnd);
        LmMap::addSegment(object, 0x8010, 0x10, 0x1000);  // behind it, with a gap
        EXPECT_EQ(object.begin, row.expectedBegin);
        EXPECT_EQ(object.end, 0x9000u);
        LmMap::addSegment(object, row.begin, row.size, 0x1000);  // again
        EXPECT_EQ(object.end, 0x9000u);
    }
}

TEST(LmMap, linesThatDontReadAsSuchArePassedOver)
{
    for (char const* map : {"", "\n\n", "nonsense", "1000-2000", "1000-2000 rw-p", "1000-2000 rw-p 0 00:00",
                            "1000-2000 rw 0 00:00 0", "-2000 rw-p 0 00:00 0"})
        EXPECT_EQ(modulesOf({{0x1000, 0x2000, "a"}}, map), std::vector<LmLibrary>{libraryOf(0x1000, "a", {})})
            << map;
    EXPECT_EQ(modulesOf({{0x1000, 0x2000, "a"}}, "nonsense\n1000-2000 r--p 0 00:00 0")[0].getBlocks().size(), 1u);
}

TEST(LmMap, aLongPathIsCut)
{
    EXPECT_EQ(std::strlen(modulesOf({{1, 2, std::string(149, 'p')}}, "")[0].getPath()), 149u);
    EXPECT_EQ(std::strlen(modulesOf({{1, 2, std::string(150, 'p')}}, "")[0].getPath()), 149u);
}

// --- this process ---------------------------------------------------------------------------------------------------

TEST(LmLibraries, holdsThisLibraryAndTheProgram)
{
    std::vector<LmLibrary> const& list = LmLibraries::getList();
    LmLibrary const* const program = findFile(list, VnTest::getProgramFile());
    ASSERT_NE(program, nullptr);
    EXPECT_EQ(flagsAt(*program, reinterpret_cast<void const*>(&findFile)) & (LmBlock::Read | LmBlock::Execute),
              20u);
    EXPECT_EQ(flagsAt(*program, &readOnly) & LmBlock::Read, 4u);
    written = 3;
    EXPECT_EQ(flagsAt(*program, &written) & (LmBlock::Read | LmBlock::Write), 12u);
    const auto isThisLibrary = [](LmLibrary const& library) {
        return std::string(library.getPath()).find("libVNbase.") != std::string::npos;
    };
    EXPECT_EQ(std::count_if(list.begin(), list.end(), isThisLibrary), 1);
}

TEST(LmLibraries, blocksRiseAndLieInOnePiece)
{
    std::uintptr_t last = 0;
    for (LmLibrary const& library : LmLibraries::getList()) {
        SCOPED_TRACE(library.getPath());
        EXPECT_GT(library.getAddress(), last);
        EXPECT_EQ(library.getBaseAddress(), library.getAddress());
        ASSERT_FALSE(library.getBlocks().empty());
        EXPECT_EQ(library.getBlocks()[0].getAddress(), library.getAddress());
        last = library.getAddress();
        for (LmBlock const& block : library.getBlocks()) {
            EXPECT_GE(block.getAddress(), last);
            EXPECT_GT(block.getSize(), 0u);
            EXPECT_EQ(block.getAddress() % 4096, 0u);
            EXPECT_EQ(block.getSize() % 4096, 0u);
            last = block.getAddress() + block.getSize() - 1;
        }
    }
}

TEST(LmLibraries, aLibraryBeginsWithTheHeaderOfItsFile)
{
#if defined(_WIN32)
    const std::string header = "MZ";
#else
    const std::string header = "\x7f"
                               "ELF";
#endif
    int found = 0;
    for (LmLibrary const& library : LmLibraries::getList()) {
        const std::string name = std::filesystem::path(library.getPath()).filename().string();
        if (name.find("VN") == std::string::npos && name.find("basetest") == std::string::npos)
            continue;  // others may lie in memory as they like
        EXPECT_EQ(std::string(reinterpret_cast<char const*>(library.getAddress()), header.size()), header) << name;
        ++found;
    }
    EXPECT_GE(found, 2) << "the program and this library";
}

TEST(LmLibraries, twoListsWithoutALoadInBetweenAreEqual)
{
    LmLibraries::getList();  // what it touches for the first time is its own copy from then on
    const std::vector<LmLibrary> first = LmLibraries::getList();
    std::vector<LmLibrary> const& second = LmLibraries::getList();
    EXPECT_EQ(first.size(), second.size());
    EXPECT_TRUE(first == second);
    EXPECT_EQ(&second, &LmLibraries::getList());
}

VN_CHILD(listAfterALoad)
{
    const TempFolder folder;
    const std::string suffix = Vn::OsSharedLib::getSuffix();
    std::string deep = folder.path();
    while (deep.size() < 160)
        deep = (std::filesystem::path(deep) / "quite-a-long-name-of-a-folder").string();
    std::filesystem::create_directories(deep);
    const std::filesystem::path bin = getProgramFolder(), there = deep;
    for (std::string const& name : {"libVNtestmodule" + suffix, "libVNtestsibling" + suffix})
        std::filesystem::copy_file(bin / name, there / name);
    const std::size_t before = LmLibraries::getList().size();
    const std::string path = (there / ("libVNtestmodule" + suffix)).string();
    Vn::OsSharedLib::open(path.c_str());
    std::vector<LmLibrary> const& after = LmLibraries::getList();
    std::cout << (after.size() >= before + 2) << "\n";
    for (LmLibrary const& library : after)
        if (path.compare(0, 149, library.getPath()) == 0)
            std::cout << std::strlen(library.getPath()) << "\n";
    return 0;
}

TEST(LmLibraries, aNewModuleIsThereAndItsLongPathIsCut)
{
    const VnTest::ChildRun run = VnTest::Child("listAfterALoad").run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    // The sibling's path, where it was taken from the same folder, is cut to the same.
    EXPECT_TRUE(run.out == "1\n149\n" || run.out == "1\n149\n149\n") << run.out;
}

TEST(LmLibraries, dumpsItsListOnTheStandardOutput)
{
    LmLibraries::getList();
    std::ostringstream text;
    std::streambuf* const console = std::cout.rdbuf(text.rdbuf());
    LmLibraries::dumpList();
    std::cout.rdbuf(console);
    EXPECT_EQ(text.str(), LmText::of(LmLibraries::getList()));
    EXPECT_NE(text.str().find("\n\nLibrary: 1 \n\tLibrary path: "), std::string::npos);
}
