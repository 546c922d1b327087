#include "child.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;

namespace
{
namespace fs = std::filesystem;

std::string withPlainLines(std::string text)
{
    std::erase(text, '\r');
    return text;
}

std::string contentOf(fs::path const& path)
{
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << path;
    return withPlainLines(std::string(std::istreambuf_iterator<char>(stream), {}));
}

/// A folder of one's own for logs and output.
class SkylightTest : public testing::Test
{
protected:
    SkylightTest()
        : folder(fs::current_path() /
                 (std::string("skylight.") + testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }

    ~SkylightTest() override { fs::remove_all(folder); }

    ChildRun run(std::vector<std::string> arguments) const
    {
        Child child = Child::program("skylight");
        child.arguments(std::move(arguments)).with("T4Q_TEST_DIR", folder.string()).without("VN_DEBUG_INITIALIZE");
        ChildRun result = child.run();
        result.out = withPlainLines(result.out);
        result.err = withPlainLines(result.err);
        return result;
    }

    fs::path folder;
};

/// The errors of the table, row by row; column 0 is the number of directions.
std::vector<std::vector<double>> rowsOf(std::string const& table)
{
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    std::vector<std::vector<double>> rows;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        rows.emplace_back(std::istream_iterator<double>(fields), std::istream_iterator<double>());
    }
    return rows;
}
}  // namespace

/// What one compiler on one platform has made, as a mark for all others. Whether the light is right, the errors show.
TEST_F(SkylightTest, sameOptionsGiveTheSameBitsEverywhere)
{
    const struct
    {
        char const* source;
        char const* sampler;
        char const* bits;
    } table[] = {
        {"lecuyer", "cosine", "06f1171743ca31ae"},      {"shuffled", "cosine", "67a260bc676caf9b"},
        {"vandercorput", "cosine", "48883657cb5b4e5b"}, {"halton", "cosine", "e6fce6bec4edbd8a"},
        {"hammersley", "cosine", "6304b4861b20bf66"},   {"niederreiter", "cosine", "3fd563cbf5105859"},
        {"halton", "hemisphere", "2217616d705218a2"},   {"halton", "sphere", "ac344130fba1afeb"},
    };
    for (auto const& row : table) {
        const ChildRun result = run({"-q", "-w", "32", "-n", "20", "-s", row.source, "-d", row.sampler, "-o", ""});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, std::string("32 x 20 pixels, 20 directions each, ") + row.source + ", " +
                                  row.sampler + "\nbits " + row.bits + "\n");
    }
}

TEST_F(SkylightTest, anyNumberOfThreadsGivesTheSameBits)
{
    for (char const* source : {"lecuyer", "system", "halton", "hammersley"}) {
        std::string one;
        for (char const* threads : {"1", "2", "3", "64"}) {
            const ChildRun result = run({"-q", "-w", "40", "-n", "20", "-s", source, "-o", "", "-j", threads});
            EXPECT_EQ(result.exitCode, 0) << result.err;
            one = one.empty() ? result.out : one;
            EXPECT_EQ(result.out, one) << threads;
        }
    }
}

TEST_F(SkylightTest, theTraceShowsWhatEachThreadDoes)
{
    const std::string log = (folder / "trace.log").string();
    Child child = Child::program("skylight");
    child.arguments({"-q", "-w", "64", "-n", "8", "-o", "", "-j", "3"})
        .with("T4Q_TEST_DIR", folder.string())
        .with("VN_TRACE_OPTIONS", "show=Skylight")
        .with("VN_LOG_TRACING", log);
    EXPECT_EQ(child.run().exitCode, 0);
    std::istringstream lines(contentOf(log));
    std::map<std::string, int> passes;
    std::multiset<std::string> bands;
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with("Tracing: + pass"))
            ++passes[line.substr(22, 12)];
        if (const std::size_t rows = line.find("| | rows "); rows != std::string::npos)
            bands.insert(line.substr(rows + 4));
    }
    ASSERT_EQ(passes.size(), 3u) << "a lane for each thread";
    for (auto const& [thread, count] : passes)
        EXPECT_EQ(count, 8) << thread;
    EXPECT_EQ(bands.size(), 5u * 8) << "40 rows in each of 8 passes";
    for (char const* rows : {"rows 0 to 7", "rows 32 to 39"})
        EXPECT_EQ(bands.count(rows), 8u);
}

TEST_F(SkylightTest, quasiRandomErrorsFallFaster)
{
    const ChildRun result = run({"-q", "-t", "-w", "16"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.substr(0, 10), "directions");
    const std::vector<std::vector<double>> rows = rowsOf(result.out);
    ASSERT_EQ(rows.size(), 6u);
    for (std::vector<double> const& row : rows)
        ASSERT_EQ(row.size(), 8u);
    EXPECT_EQ(rows[0][0], 4);
    EXPECT_EQ(rows[5][0], 4096);
    for (std::size_t random : {1u, 2u, 3u}) {
        EXPECT_NEAR(rows[5][random] / rows[0][random], 1 / 32.0, 0.012);  // by the root of their number
        for (std::size_t quasi : {5u, 6u, 7u}) {
            EXPECT_LT(rows[3][quasi] * 4, rows[3][random]);
            EXPECT_LT(rows[5][quasi] * 8, rows[5][random]);
        }
    }
    EXPECT_GT(rows[5][4], 0.05);  // points of one sequence are none of a square
}

TEST_F(SkylightTest, writesPictureAndHistogram)
{
    const std::string picture = (folder / "picture").string(), histogram = (folder / "directions").string();
    const ChildRun result = run({"-q", "-w", "16", "-n", "4", "-o", picture, "-H", histogram});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    const std::string bytes = contentOf(picture).substr(0, 4);
    EXPECT_TRUE(bytes == "\x89PNG" || bytes == "P6\n1") << bytes;
    const std::string lines = contentOf(histogram + ".txt");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 12 * 24);
    EXPECT_EQ(contentOf(histogram + ".iv").substr(0, 20), "#Inventor V2.1 ascii");
}

TEST_F(SkylightTest, withoutANameThePictureGoesToTheCurrentFolderAndItSaysWhere)
{
    const VnTest::WorkingFolder there(folder.string());
    const ChildRun result = run({"-q", "-w", "16", "-n", "2"});
    EXPECT_EQ(result.exitCode, 0);
    fs::path picture;
    for (fs::directory_entry const& entry : fs::directory_iterator(folder))
        if (entry.path().stem() == "skylight")
            picture = entry.path();
    ASSERT_FALSE(picture.empty()) << result.err;
    const std::string bytes = contentOf(picture).substr(0, 4);
    EXPECT_EQ(bytes, picture.extension() == ".png" ? "\x89PNG" : "P6\n1");
    EXPECT_NE(result.out.find("\npicture " + picture.string() + "\n"), std::string::npos) << result.out;
}

TEST_F(SkylightTest, onesSequenceRunsAheadOfItselfFromTheStart)
{
    const std::string histogram = (folder / "directions").string();
    EXPECT_EQ(run({"-q", "-w", "16", "-n", "1", "-s", "vandercorput", "-H", histogram, "-o", ""}).exitCode, 0);
    // With one number for both coordinates the lowest row of cosines, from u < 1/144, would have no azimuth but the first.
    std::istringstream lines(contentOf(histogram + ".txt"));
    double elsewhere = 0;
    for (int ip = 0; ip < 24; ++ip) {
        double bounds[4], content;
        lines >> bounds[0] >> bounds[1] >> bounds[2] >> bounds[3] >> content;
        elsewhere += ip != 0 ? content : 0;
    }
    EXPECT_TRUE(lines);
    EXPECT_GT(elsewhere, 100);
}

TEST_F(SkylightTest, logsWhatItDoesAndHowLongItTook)
{
    const ChildRun result = run({"-w", "16", "-n", "8", "-o", ""});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("pass 8 of 8: "), std::string::npos);
    EXPECT_NE(contentOf(folder / "events.log")
                  .find("Informational: Render picture from source halton and sampler cosine\n"),
              std::string::npos);
    const std::string times = contentOf(folder / "prof.log");
    EXPECT_NE(times.find("Profiling: Render pass 8 of 8: "), std::string::npos);
    EXPECT_NE(times.find("Profiling: Render 8 passes in "), std::string::npos);
}

TEST_F(SkylightTest, refusesWhatItCantDo)
{
    const struct
    {
        std::vector<std::string> arguments;
        char const* fault;
    } table[] = {
        {{"-w", "15"}, "-w takes 16 to 4096 pixels, not '15'"},
        {{"-w", "4097"}, "-w takes 16 to 4096 pixels, not '4097'"},
        {{"-n", "0"}, "-n takes 1 to 65536 directions, not '0'"},
        {{"-n", "65537"}, "-n takes 1 to 65536 directions, not '65537'"},
        {{"-j", "65"}, "-j takes 0 to 64 threads, not '65'"},
        {{"-j", "-1"}, "-j takes 0 to 64 threads, not '-1'"},
        {{"-n", "many"}, "-n takes 1 to 65536 directions, not 'many'"},
        {{"-s", "dice"},
         "-s takes one of lecuyer, shuffled, system, vandercorput, halton, hammersley, niederreiter, not 'dice'"},
        {{"-d", "cube"}, "-d takes one of cosine, hemisphere, sphere, not 'cube'"},
        {{"--bogus"}, "unknown option --bogus"},
        {{"file"}, "unexpected argument 'file'"},
    };
    for (auto const& row : table) {
        const ChildRun result = run(row.arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, std::string("skylight: ") + row.fault + "; skylight -h tells more\n");
    }
    const std::string nowhere = (folder / "missing" / "picture").string();
    for (char const* option : {"-o", "-H"}) {
        const ChildRun result = run({"-q", "-w", "16", "-n", "1", "-o", "", option, nowhere});
        EXPECT_EQ(result.exitCode, 1);
        const std::string file = option[1] == 'H' ? nowhere + ".txt" : nowhere;
        EXPECT_EQ(result.err, "skylight: cannot write '" + file + "': No such file or directory\n");
    }
}

TEST_F(SkylightTest, helpTellsOfSourcesAndSamplers)
{
    const ChildRun result = run({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (char const* word : {"niederreiter", "hemisphere", "SKYLIGHT_SAMPLES", "on this platform", "same bits"})
        EXPECT_NE(result.out.find(word), std::string::npos) << word;
}

TEST(Pointsets, namesTheFileThatItCannotWriteAndWhy)
{
    const std::string nowhere = (fs::current_path() / "pointsets.missing").string();
    Child child = Child::program("pointsets");
    const ChildRun result = child.arguments({nowhere}).run();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(withPlainLines(result.err),
              "pointsets: cannot write '" + nowhere + "/pointsets.svg': No such file or directory\n");
}

TEST(Pointsets, drawsTheDocumentsPictures)
{
    const fs::path folder = fs::current_path() / "pointsets.drawing";
    fs::create_directories(folder);
    Child child = Child::program("pointsets");
    const ChildRun result = child.arguments({folder.string()}).run();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (char const* name : {"pointsets.svg", "scenes.svg"}) {
        EXPECT_EQ(contentOf(folder / name), contentOf(fs::path(VN_DOCS) / name))
            << "tools/drawsampling.sh draws anew";
    }
    fs::remove_all(folder);
}
