// Two libraries of the family beside libVNbase: linked, loaded, started late, refused.
#include "child.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;

namespace
{
Child program(std::string const& name, std::vector<std::string> const& arguments)
{
    Child child = Child::program(name);
    child.arguments(arguments).without("VN_BUILDINFO_NO_VALIDATE").without("VN_BUILDINFO_CHECK_STAMPS");
    // What is refused belongs to nobody from then on, so the leak checker finds the object of that one library.
    child.with("LSAN_OPTIONS", "suppressions=" VN_LEAKS_THAT_ARE_RULES ":print_suppressions=0");
    return child;
}

/// The output with each date replaced by the word "date".
std::string withoutDates(std::string const& out)
{
    return std::regex_replace(out, std::regex("[A-Z][a-z]{2} [ 0-9]{2} [0-9]{4}"), "date");
}

constexpr char head[] =
    "Unknown application name / version.\nAPI Tessola 0.2 pre-alpha: \n\tlibVNbase (P. 187, date)\n";
constexpr char swatch[] = "API Swatch 1.2 example: \n\tlibVNswatch (S. 187, date)\n";
constexpr char loaded[] = "swatch: registered\n250, 120, 130 is nearly silver\n";
constexpr char versionReport[] =
    "BuildInfo Version mismatch, registering with API Swatch v1.2: library libVNswatchold using v1.1\n";
}  // namespace

TEST(Swatch, aLinkedLibraryRegistersItselfWhenItStarts)
{
    const ChildRun run = program("swatch", {"-v"}).run();
    EXPECT_EQ(withoutDates(run.out), std::string(head) + swatch);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
}

TEST(Swatch, knowsColours)
{
    const ChildRun run = program("swatch", {"red", "teal", "nocolour"}).run();
    EXPECT_EQ(run.out, "red  #ff0000\nteal  #008080\nnocolour  unknown\n");
    EXPECT_EQ(run.exitCode, 1);
}

TEST(Swatch, aLoadedLibraryIsRegisteredOnceAndStartsLate)
{
    const ChildRun run = program("swatchloader", {"swatch"}).with("VN_DEBUG_INITIALIZE", "1").run();
    EXPECT_EQ(withoutDates(run.out), std::string(loaded) + head + swatch);
    const std::size_t base = run.err.find("InInit<base>::performInitialize()");
    const std::size_t late = run.err.find("InInit<swatch>::performInitialize()");
    const std::size_t stop = run.err.find("InInit<swatch>::performFinalize()");
    EXPECT_TRUE(base < late && late < stop && stop < run.err.find("InInit<base>::performFinalize()")) << run.err;
    EXPECT_EQ(run.exitCode, 0);
}

TEST(Swatch, aLibraryOfAnotherVersionIsRefused)
{
    const ChildRun run = program("swatchloader", {"swatch", "swatchold"}).run();
    EXPECT_EQ(withoutDates(run.out), std::string(loaded) + versionReport +
                                         "swatchold: Version mismatch, API 'Swatch' v1.2: library 'libVNswatchold' "
                                         "at v1.1.\n" +
                                         head + swatch);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 1);
}

TEST(Swatch, withoutValidationItIsTakenAndOnRequestItsStampIsLookedAt)
{
    const ChildRun taken =
        program("swatchloader", {"swatch", "swatchold"}).with("VN_BUILDINFO_NO_VALIDATE", "1").run();
    EXPECT_EQ(withoutDates(taken.out), std::string(loaded) + versionReport + "swatchold: registered\n" + head +
                                           swatch + "\tlibVNswatchold (S. old, date)\n");
    EXPECT_EQ(taken.exitCode, 0);

    const ChildRun refused = program("swatchloader", {"swatch", "swatchold"})
                                 .with("VN_BUILDINFO_NO_VALIDATE", "1")
                                 .with("VN_BUILDINFO_CHECK_STAMPS", "1")
                                 .run();
    EXPECT_EQ(
        withoutDates(refused.out),
        std::string(loaded) + versionReport +
            "BuildInfo Build stamp mismatch, registering with API Swatch build S. 187: library libVNswatchold "
            "using  build S. old\n"
            "swatchold: Build stamp mismatch, API 'Swatch' build S. 187: library 'libVNswatchold' using build "
            "S. old.\n" +
            head + swatch);
    EXPECT_EQ(refused.exitCode, 1);
}

TEST(Swatch, aLibraryThatIsNotThereIsNamed)
{
    const ChildRun run = program("swatchloader", {"nothing"}).run();
    EXPECT_EQ(run.out.find("nothing: Can't open dynamic library 'libVNnothing"), 0u) << run.out;
    EXPECT_EQ(run.exitCode, 1);
}
