#include "child.h"
#include "lockname.h"
#include "logfile.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#    include <sys/stat.h>
#    include <unistd.h>
#endif

using VnTest::Child;
using VnTest::ChildRun;

namespace
{
namespace fs = std::filesystem;

/// A small tree of files, with its own folder for each test.
class InventoryTest : public testing::Test
{
protected:
    InventoryTest()
        : root(fs::current_path() /
               (std::string("inventory.") + testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        fs::remove_all(root);
        write("a.txt", 10);
        write("b.txt", 5);
        write("c.bin", 100);
        write("README", 1);
        write(".hidden.txt", 1000);
        write("sub/d.txt", 20);
        write("sub/deep/e.bin", 200);
    }

    ~InventoryTest() override { fs::remove_all(root); }

    void write(char const* name, int size) const
    {
        fs::create_directories((root / name).parent_path());
        std::ofstream(root / name, std::ios::binary) << std::string(static_cast<std::size_t>(size), 'x');
    }

    Child inventory(std::vector<std::string> arguments) const
    {
        Child child = Child::program("inventory");
        child.arguments(std::move(arguments));
        for (char const* name : {"INVENTORY_ALL", "INVENTORY_COPY", "INVENTORY_DEPTH", "INVENTORY_HIDDEN",
                                 "INVENTORY_ORDER", "INVENTORY_PROGRESS", "VN_DEBUG_INITIALIZE"})
            child.without(name);
        return child;
    }

    ChildRun run(std::vector<std::string> arguments) const
    {
        arguments.push_back(root.string());
        return inventory(std::move(arguments)).run();
    }

    /// The part of the output from `title` to the next empty line, without the title.
    static std::string section(std::string const& text, std::string const& title)
    {
        const std::size_t start = text.find(title);
        if (start == std::string::npos)
            return "no section '" + title + "' in:\n" + text;
        const std::size_t first = text.find('\n', start) + 1;
        const std::size_t end = text.find("\n\n", first);
        return text.substr(first, end == std::string::npos ? end : end + 1 - first);
    }

    static void expectWrongUse(ChildRun const& run, std::string const& message)
    {
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.err, "inventory: " + message + "; inventory -h tells more\n");
        EXPECT_EQ(run.out, "");
    }

    const fs::path root;
};
}  // namespace

TEST_F(InventoryTest, countsFilesAndBytesBySuffix)
{
    const ChildRun result = run({});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(section(result.out, "Inventory of"), "  suffix                     files           bytes\n"
                                                   "  .bin                           2             300\n"
                                                   "  .txt                           3              35\n"
                                                   "  (none)                         1               1\n"
                                                   "  total                          6             336\n");
}

TEST_F(InventoryTest, tellsEachSettingAndItsSource)
{
    EXPECT_EQ(section(run({}).out, "Settings, and"), "  inventory.all       false    default\n"
                                                     "  inventory.copy      ''       default\n"
                                                     "  inventory.depth     100      default\n"
                                                     "  inventory.hidden    false    default\n"
                                                     "  inventory.order     'bytes'  default\n"
                                                     "  inventory.progress  false    override\n");
    EXPECT_EQ(section(inventory({"-d", "0", "-H", root.string()})
                          .with("INVENTORY_DEPTH", "7")
                          .with("INVENTORY_ORDER", "suffix")
                          .with("INVENTORY_PROGRESS", "true")
                          .run()
                          .out,
                      "Settings, and"),
              "  inventory.all       false     default\n"
              "  inventory.copy      ''        default\n"
              "  inventory.depth     0         option -d\n"
              "  inventory.hidden    true      option -H\n"
              "  inventory.order     'suffix'  environment INVENTORY_ORDER\n"
              "  inventory.progress  false     override\n");
}

TEST_F(InventoryTest, settingsSteerTheWalk)
{
    EXPECT_EQ(section(run({"-d", "0", "-H", "-s", "suffix"}).out, "Inventory of"),
              "  suffix                     files           bytes\n"
              "  (none)                         1               1\n"
              "  .bin                           1             100\n"
              "  .txt                           3            1015\n"
              "  total                          5            1116\n");
    EXPECT_EQ(section(run({"-d1", "-sfiles"}).out, "Inventory of"),
              "  suffix                     files           bytes\n"
              "  .txt                           3              35\n"
              "  (none)                         1               1\n"
              "  .bin                           1             100\n"
              "  total                          5             136\n");
}

TEST_F(InventoryTest, tellsThePackagesInTheirOrder)
{
    const std::string packages = section(run({}).out, "Packages");
    EXPECT_NE(
        packages.find("\n16 packages currently saved:\n\t'initialize' Initialized (0 dependencies)\n\t'heapMgr'"),
        std::string::npos)
        << packages;
    EXPECT_NE(packages.find("\t'base' Initialized (12 dependencies)\n"
                            "\t'inventorySettings' Initialized (13 dependencies)\n"
                            "\t'threadlog' Initialized (13 dependencies)\n"
                            "\t'inventoryScanner' Initialized (14 dependencies)\n"),
              std::string::npos)
        << packages;
}

TEST_F(InventoryTest, tellsWhatItIsMadeOf)
{
    const ChildRun brief = inventory({"--version"}).run();
    EXPECT_TRUE(std::regex_match(brief.out, std::regex("Inventory 1\\.0 example \\(I\\. 187, [^)]+\\)\n"
                                                       "libVNbase 0\\.2 pre-alpha \\(P\\. 187, [^)]+\\)\n"
                                                       "libVNthreadlog 0\\.2 pre-alpha \\(T\\. 187, [^)]+\\)\n")))
        << brief.out;
    EXPECT_EQ(brief.exitCode, 0);
    const ChildRun full = inventory({"--build"}).run();
    EXPECT_TRUE(std::regex_match(full.out, std::regex("Inventory 1\\.0 example \\(Inventory_187, [^)]+\\)\n"
                                                      "\tBuilt by .+ \\(.+\\)\n"
                                                      "API Threadlog 0\\.2 pre-alpha: \n"
                                                      "\tlibVNthreadlog \\(Threadlog_187, [^)]+\\)\n"
                                                      "\t\tBuilt by .+ \\(.+\\)\n"
                                                      "API Tessola 0\\.2 pre-alpha: \n"
                                                      "\tlibVNbase \\(ProductNG-Tessola_187, [^)]+\\)\n"
                                                      "\t\tBuilt by .+ \\(.+\\)\n")))
        << full.out;
}

TEST_F(InventoryTest, tellsTheArgumentsThatNoOptionTook)
{
    const std::string unbound = section(run({"-H", "--"}).out, "Arguments");
    EXPECT_NE(unbound.find(" " + root.string() + "\n"), std::string::npos) << unbound;
    EXPECT_EQ(unbound.find("-H"), std::string::npos);
}

TEST_F(InventoryTest, copiesWhatItFoundAndComparesIt)
{
    const fs::path copy = root.string() + ".copy";
    fs::remove_all(copy);
    const ChildRun result = run({"-c", copy.string()});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("Copied to " + copy.string() + ", and compared byte for byte: 2 folders, 6 files\n"),
              std::string::npos)
        << result.out;
    EXPECT_FALSE(fs::exists(copy / ".hidden.txt")) << "what wasn't found isn't copied";
    EXPECT_EQ(fs::file_size(copy / "sub/deep/e.bin"), 200U);
    // A folder in the way of a file, and a file in the way of a folder.
    fs::remove_all(copy);
    fs::create_directories(copy / "a.txt/a.txt");
    std::ofstream(copy / "sub");
    const ChildRun again = run({"-c", copy.string()});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.out.find(": 0 folders, 3 files\n"), std::string::npos) << again.out;
    EXPECT_NE(again.out.find("  failed: sub: A regular file with the same path name exists.\n"), std::string::npos)
        << again.out;
    fs::remove_all(copy);
}

TEST_F(InventoryTest, aTargetThatCantBeMadeIsNamedWithTheReason)
{
    const std::string target = (root / "a.txt/copy").string();
    const ChildRun result = run({"-c", target});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(std::regex_match(result.err, std::regex("inventory: can't make the folder .+copy: [^\n]+\n")))
        << result.err;
    EXPECT_NE(result.err.find(" " + target + ": "), std::string::npos) << result.err;
    const std::string taken = (root / "a.txt").string();
    EXPECT_EQ(run({"-c", taken}).err,
              "inventory: can't make the folder " + taken + ": A regular file with the same path name exists.\n");
}

TEST_F(InventoryTest, aCopyIntoItselfEnds)
{
    const ChildRun result = run({"-c", (root / "sub/copy").string()});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find(": 2 folders, 6 files\n"), std::string::npos) << result.out;
    EXPECT_FALSE(fs::exists(root / "sub/copy/sub/copy"));
}

TEST_F(InventoryTest, tellsOfTheLargestFiles)
{
    const std::string largest = section(run({}).out, "The largest files");
    EXPECT_EQ(largest.substr(0, 16), "           200  ");
    EXPECT_NE(largest.find("d9fca50c83282457  b.txt\n"), std::string::npos) << largest;  // FNV-1a of "xxxxx"
    EXPECT_EQ(std::count(largest.begin(), largest.end(), '\n'), 5);
}

TEST_F(InventoryTest, tellsOfTheMachineAndItsOwnModules)
{
    const std::string text = run({}).out;
    const std::string machine = section(text, "Machine:");
    for (char const* row : {"  name ", "  user ", "  time ", "  processor ", "  clock ", "  first-level cache ",
                            "  second-level cache ", "  page "})
        EXPECT_NE(machine.find(row), std::string::npos) << row;
    const std::string processor = machine.substr(machine.find("  processor "));
    EXPECT_NE(processor.substr(0, processor.find('\n')).find(", type "), std::string::npos) << processor;
    const std::string modules = section(text, "Modules of this process");
    EXPECT_NE(modules.find("libVNbase"), std::string::npos) << modules;
    EXPECT_NE(modules.find("inventory"), std::string::npos) << modules;
}

#if !defined(_WIN32)
TEST_F(InventoryTest, goesOnPastWhatCantBeRead)
{
    fs::create_symlink("nowhere", root / "dangling");
    fs::create_symlink("circle", root / "circle");
    fs::create_symlink("sub", root / "link.txt");
    ASSERT_EQ(::mkfifo((root / "pipe").c_str(), 0600), 0);
    fs::permissions(root / "c.bin", fs::perms::none);
    fs::permissions(root / "sub/deep", fs::perms::none);
    const ChildRun result = run({"-c", (root / "copy").string()});
    fs::permissions(root / "sub/deep", fs::perms::owner_all);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.exitCode, 0);
    const std::string unread = section(result.out, "Not read: ");
    EXPECT_NE(unread.find("  dangling: a link to nothing\n"), std::string::npos) << unread;
    EXPECT_NE(unread.find("  circle: a link to nothing\n"), std::string::npos) << unread;
    EXPECT_NE(unread.find("  pipe: neither file nor folder\n"), std::string::npos) << unread;
    if (::geteuid() != 0) {  // who may read everything
        EXPECT_NE(unread.find("  c.bin: "), std::string::npos) << unread;
        EXPECT_NE(unread.find("  sub/deep: "), std::string::npos) << unread;
        EXPECT_NE(result.out.find("Not read: 5\n"), std::string::npos) << result.out;
    } else {
        EXPECT_NE(result.out.find("Not read: 3\n"), std::string::npos) << result.out;
    }
    EXPECT_NE(section(result.out, "Inventory of").find("  .txt                           4 "), std::string::npos)
        << "a link counts and isn't followed";
    EXPECT_FALSE(fs::exists(root / "copy/link.txt"));
}
#endif

#if !defined(_WIN32)
TEST_F(InventoryTest, aPackageThatNobodyRegistersIsNamedAsSourcesWriteIt)
{
    const ChildRun result = inventory({root.string()})
                                .with("LD_PRELOAD", VnTest::getProgramFolder() + "/libVNteststray.so")
                                // The preloaded library comes before the sanitizer's own.
                                .with("ASAN_OPTIONS", "verify_asan_link_order=0")
                                .run();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "inventory: nothing in this process registers the package VnInit::absent, which another "
                          "package needs; link or load the library that has it\n");
    EXPECT_EQ(result.out.substr(0, result.out.find('\n')),
              "Initialisation failed: Init Package not registered: 'N2Vn6InInitIN6VnInit6absentEEE'.");
}
#endif

TEST_F(InventoryTest, helpIsNoFailure)
{
    for (char const* option : {"-h", "--help", "-ah"}) {
        SCOPED_TRACE(option);
        const ChildRun result = inventory({option, "whatever"}).run();
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out.substr(0, 35), "inventory [OPTION]... FOLDER\nFiles ");
        EXPECT_NE(result.out.find("(INVENTORY_DEPTH, default 100)"), std::string::npos);
    }
}

TEST_F(InventoryTest, wrongUseIsToldAndExitsWithTwo)
{
    expectWrongUse(inventory({}).run(), "which folder?");
    expectWrongUse(inventory({"a", "b"}).run(), "unexpected argument 'b'");
    expectWrongUse(inventory({"no such folder"}).run(), "there is no folder no such folder");
    expectWrongUse(inventory({(root / "a.txt").string()}).run(), "there is no folder " + (root / "a.txt").string());
    expectWrongUse(run({"-q"}), "unknown option -q");
    expectWrongUse(run({"-aq"}), "unknown option -q in -aq");
    expectWrongUse(run({"--word"}), "unknown option --word");
    expectWrongUse(run({"-a", "--word"}), "unknown option --word");
    expectWrongUse(run({"--graphs"}), "unknown option --graphs");
    expectWrongUse(inventory({"-d"}).run(), "a value is missing behind -d");
    expectWrongUse(inventory({"-c"}).run(), "a value is missing behind -c");
    expectWrongUse(run({"-d", "many"}), "-d takes a number of levels, not 'many'");
    expectWrongUse(run({"-d", "-1"}), "-d takes a number of levels, not '-1'");
    expectWrongUse(run({"-s", "--help"}), "-s takes bytes, files or suffix, not '--help'");
    expectWrongUse(inventory({root.string()}).with("INVENTORY_DEPTH", "x").run(),
                   "INVENTORY_DEPTH takes a number of levels, not 'x'");
    expectWrongUse(inventory({root.string()}).with("INVENTORY_ORDER", "x").run(),
                   "INVENTORY_ORDER takes bytes, files or suffix, not 'x'");
    EXPECT_EQ(inventory({"-d1", root.string()}).with("INVENTORY_DEPTH", "x").run().exitCode, 0) << "-d beats it";
}

TEST_F(InventoryTest, theFirstTwentySuffixesArePrintedUnlessAllAreAskedFor)
{
    for (int i = 10; i < 28; ++i)  // with the three that are there, one too many
        write(("x" + std::to_string(i) + ".s" + std::to_string(i)).c_str(), 1000 - i);
    const auto linesOf = [](std::string const& text) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    };
    const std::string some = section(run({}).out, "Inventory of");
    EXPECT_EQ(linesOf(some), 23u) << some;
    EXPECT_NE(some.find("  .txt                           3              35\n"
                        "  1 more (-a)                    1               1\n"
                        "  total                         24 "),
              std::string::npos)
        << some;
    const std::string all = section(run({"-a"}).out, "Inventory of");
    EXPECT_EQ(linesOf(all), 23u) << all;
    EXPECT_EQ(all.find("more"), std::string::npos);
    EXPECT_NE(all.find("  (none)                         1               1\n"), std::string::npos) << all;
}

TEST_F(InventoryTest, twentySuffixesAreAllPrinted)
{
    for (int i = 10; i < 27; ++i)
        write(("x" + std::to_string(i) + ".s" + std::to_string(i)).c_str(), 1000 - i);
    EXPECT_EQ(section(run({}).out, "Inventory of").find("more"), std::string::npos);
}

#if !defined(_WIN32)
TEST_F(InventoryTest, tellsOnATerminalHowFarItIs)
{
    for (int i = 0; i < 94; ++i)  // a hundred files with those that are there
        write(("many/" + std::to_string(i) + ".txt").c_str(), i);
    const std::string out = inventory({root.string()}).runOnTerminal(80).out;
    EXPECT_NE(out.find("\rwalking: 0 folders, 4 files ..."), std::string::npos) << out;
    for (int percent = 1; percent <= 100; ++percent)
        EXPECT_NE(out.find("\rreading: " + std::to_string(percent) + " % of 100 files ..."), std::string::npos)
            << percent;
    EXPECT_EQ(inventory({root.string()}).with("INVENTORY_PROGRESS", "false").runOnTerminal(80).out.find('\r'),
              std::string::npos);
    EXPECT_EQ(inventory({"-p", root.string()}).run().err, "") << "nobody watches";
}

TEST_F(InventoryTest, namesReachTheTerminalAsText)
{
    write("a\x1b[2Jb\nc.t\x07", 7);
    fs::create_symlink("nowhere", root / "dang\x1bling");
    const ChildRun result = inventory({"-c", (root / "copy\x1b").string(), root.string()}).runOnTerminal(80);
    EXPECT_EQ(result.out.find('\x1b'), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find('\x07'), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  a\\x1b[2Jb\\nc.t\\x07\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  dang\\x1bling: a link to nothing\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  .t\\x07                         1 "), std::string::npos) << result.out;
    expectWrongUse(inventory({"no\x1b[folder"}).run(), "there is no folder no\\x1b[folder");
}

TEST_F(InventoryTest, namesInShownMessagesReachTheTerminalAsText)
{
    write("a\x1b[2J.txt", 7);
    const VnTest::TempFolder log;
    const ChildRun result = inventory({root.string()})
                                .with("T4Q_TEST_DIR", log.path())
                                .with("VN_LOG_GROUPS", "Inventory=Informational")
                                .with("VN_LOG_INFORMATIONAL", "%")
                                .run();
    EXPECT_EQ(result.out.find('\x1b'), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("Read a\\x1b[2J.txt: "), std::string::npos) << result.out;
}
#endif

TEST_F(InventoryTest, folderMayLookLikeAnOptionBehindTheEndMark)
{
    expectWrongUse(inventory({"--", "-q"}).run(), "there is no folder -q");
    expectWrongUse(inventory({"--", "--help"}).run(), "there is no folder --help");
}

TEST_F(InventoryTest, graphIsTheOneThatIsDrawnInTheDocuments)
{
    const ChildRun result = inventory({"--graph"}).run();
    EXPECT_EQ(result.exitCode, 0);
    std::ifstream drawn(VN_STARTUP_GRAPH);
    std::ostringstream text;
    text << drawn.rdbuf();
    EXPECT_EQ(result.out, text.str()) << "tools/draw.sh draws it anew";
}

TEST_F(InventoryTest, logsWhatItsThreadsRead)
{
    const VnTest::TempFolder log;
    const ChildRun result = inventory({root.string()})
                                .with("T4Q_TEST_DIR", log.path())
                                .with("VN_LOG_GROUPS", "Inventory=Informational")
                                .run();
    EXPECT_EQ(result.exitCode, 0);
    std::vector<std::string> texts;
    for (std::string const& line : VnTest::linesOf(log.path("events.log")))
        if (const auto parsed = VnTest::LogLine::parse(line))
            texts.push_back(parsed->level + " " + parsed->text.substr(0, parsed->text.find(':')));
    std::sort(texts.begin(), texts.end());
    const std::string separator(1, static_cast<char>(fs::path::preferred_separator));
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "Informational Read README", "Informational Read a.txt", "Informational Read b.txt",
                         "Informational Read c.bin", "Informational Read sub" + separator + "d.txt",
                         "Informational Read sub" + separator + "deep" + separator + "e.bin"}));
    EXPECT_NE(result.out.find("Informational: " + log.path("events.log") + " \n"), std::string::npos);
}

TEST_F(InventoryTest, tellsHowLongItsPassesTookByTwoClocks)
{
    std::istringstream rows(section(run({}).out, "Passes, and"));
    std::vector<std::string> words;
    for (std::string line; std::getline(rows, line);)
        words.push_back(line.substr(0, 34));
    EXPECT_EQ(words,
              (std::vector<std::string>{"  pass      clock           rounds", "  walking   counter              3",
                                        "  walking   time of day          3", "  reading   counter              1",
                                        "  reading   time of day          1"}));
}

TEST_F(InventoryTest, drawsItsCallsWhenItIsAskedTo)
{
    const VnTest::TempFolder log;
    inventory({"-d0", root.string()})
        .with("VN_TRACE_OPTIONS", "show=Inventory")
        .with("VN_LOG_TRACING", log.path("trace.log"))
        .with("VN_LOG_DISABLE_TIMESTAMPS", "1")
        .run();
    std::string out;
    for (std::string const& line : VnTest::linesOf(log.path("trace.log")))
        out += line + "\n";
    EXPECT_NE(out.find("\n+ scan\n  + walk\n  | + listFolder\n  | | | .: 5\n  | | /\n  | /\n  + readFiles\n"
                       "  | | 4 files\n  | /\n  /\n"),
              std::string::npos)
        << out;
}

TEST_F(InventoryTest, twoAtOnceShareALogWithoutTearingALine)
{
    for (int i = 0; i < 200; ++i)
        write(("many/" + std::to_string(i) + ".txt").c_str(), i);
    const VnTest::TempFolder log;
    const VnTest::LockName lock(log);
    const std::string path = log.path("shared.log");
    const Child child = inventory({root.string()})
                            .with("T4Q_TEST_DIR", log.path())
                            .with("VN_LOG_GROUPS", "Inventory=Informational")
                            .with("VN_LOG_INFORMATIONAL", "+" + path)
                            .with("VN_INTERNAL_INTERPROCESS_LOG_LOCK", lock.get());
    std::vector<std::thread> runs;
    for (int i = 0; i < 2; ++i)
        runs.emplace_back([&child] { EXPECT_EQ(child.run().exitCode, 0); });
    for (std::thread& one : runs)
        one.join();
    std::map<std::string, int> files;
    for (std::string const& line : VnTest::linesOf(path)) {
        if (line.empty() || line.starts_with("====="))
            continue;
        const auto parsed = VnTest::LogLine::parse(line);
        ASSERT_TRUE(parsed) << line;
        ++files[parsed->text];
    }
    EXPECT_EQ(files.size(), 206u);
    for (auto const& [text, count] : files)
        EXPECT_EQ(count, 2) << text;
}
