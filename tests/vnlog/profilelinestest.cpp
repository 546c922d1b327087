#include "profilelines.h"

#include <base/ininitmgr.h>
#include <base/profconsolidator.h>
#include <base/profiler.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace
{
using vnlog::ProfileReader;
using vnlog::ProfileReport;

std::optional<ProfileReport> readAll(std::string const& text)
{
    ProfileReader reader;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    EXPECT_TRUE(reader.begin(line));
    while (std::getline(lines, line) && reader.addRow(line))
        ;
    return reader.end();
}

TEST(ProfileReader, readsWhatAProfilerWritesToAStream)
{
    // Before the packages have started a count lasts infinitely long, and no count is then no number of seconds.
    int count = 1;
    char program[] = "vnlogtest";
    char* arguments[] = {program, nullptr};
    char const* const* list = arguments;
    const Vn::InInitGuard guard(count, list);
    Vn::Profiler<Vn::HwIntervalTimer> profiler("tiles (all): 1");
    for (int i = 0; i < 3; ++i) {
        profiler.start();
        profiler.stop();
        profiler.endCycle();
    }
    std::ostringstream text;
    text.precision(40);  // the form is fixed, and times are short
    text << static_cast<Vn::ProfilerBase&>(profiler);
    const auto report = readAll(text.str());
    ASSERT_TRUE(report);
    EXPECT_EQ(report->kind, ProfileReport::Kind::Profiler);
    EXPECT_EQ(report->name, "tiles (all): 1");
    EXPECT_EQ(report->rows, 6);
    EXPECT_EQ(report->cycles, 3.0);
    EXPECT_DOUBLE_EQ(report->total, profiler.totalTime());
    EXPECT_DOUBLE_EQ(report->average, profiler.averageTime());
    EXPECT_DOUBLE_EQ(report->minimum, profiler.minTime());
    EXPECT_DOUBLE_EQ(report->maximum, profiler.maxTime());
    const double deviation = profiler.standardDeviation();  // rounding may make it no number
    EXPECT_TRUE(report->deviation == deviation ||
                (report->deviation != report->deviation && deviation != deviation));

    Vn::ProfConsolidator consolidator;
    consolidator.consolidate(profiler);
    std::ostringstream all;
    all.precision(40);
    all << consolidator;
    const auto summary = readAll(all.str());
    ASSERT_TRUE(summary);
    EXPECT_EQ(summary->kind, ProfileReport::Kind::Consolidator);
    EXPECT_EQ(summary->name, "");
    EXPECT_EQ(summary->rows, 5);
    EXPECT_DOUBLE_EQ(summary->total, profiler.totalTime());
}

TEST(ProfileReader, readsAReportInTheLog)
{
    const auto report = readAll("Render Profiler passes:\n"
                                "        Nb of cycles:   8\n"
                                "        Total time  :   4.500000000\n"
                                "        Average time:   0.562500000\n"
                                "        Minimum time:   0.250000000\n"
                                "        Maximum time:   1.000000000\n"
                                "        Standard dev:   -nan\n");
    ASSERT_TRUE(report);
    EXPECT_EQ(report->name, "passes");
    EXPECT_EQ(report->cycles, 8.0);
    EXPECT_EQ(report->total, 4.5);
    EXPECT_EQ(report->average, 0.5625);
    EXPECT_EQ(report->minimum, 0.25);
    EXPECT_EQ(report->maximum, 1.0);
    EXPECT_TRUE(report->deviation != report->deviation) << "not a number stays that";
}

TEST(ProfileReader, readsATimer)
{
    ProfileReader reader;
    ASSERT_TRUE(reader.begin("Render Timer a: Total = b: Total = 1.5"));
    EXPECT_FALSE(reader.addRow("        Total time  :   2"));
    const auto report = reader.end();
    ASSERT_TRUE(report);
    EXPECT_EQ(report->kind, ProfileReport::Kind::Timer);
    EXPECT_EQ(report->name, "a: Total = b");
    EXPECT_EQ(report->total, 1.5);
    EXPECT_FALSE(reader.end()) << "it has been taken";
}

TEST(ProfileReader, leavesOtherLinesAlone)
{
    for (char const* line : {"", "Profiler", "Profiler :", "Profiler passes", "Profilers passes:",
                             "the big Profiler x:", "Timer x", "Timer x: Total = ", "Timer x: Total = 3 s"}) {
        ProfileReader reader;
        EXPECT_FALSE(reader.begin(line)) << line;
        EXPECT_FALSE(reader.addRow("        Nb of cycles:   8")) << line;
        EXPECT_FALSE(reader.end()) << line;
    }
    for (char const* row : {"", "Nb of cycles:   8", "        Nb of cycles", "        Nb of cycles:   eight",
                            "        Nb of birds:   8"}) {
        ProfileReader reader;
        EXPECT_TRUE(reader.begin("Profiler x:"));
        EXPECT_FALSE(reader.addRow(row)) << row;
        EXPECT_FALSE(reader.end()) << "a heading without rows";
    }
}

}  // namespace
