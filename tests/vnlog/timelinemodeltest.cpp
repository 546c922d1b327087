#include "timelinemodel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace
{
using namespace vnlog;
using RowKind = TimelineModel::RowKind;

constexpr std::time_t noon = 1795435200;  // 2026-11-23 12:00:00 UTC

Run runAt(std::optional<std::time_t> started, std::int64_t nanoseconds = 1)
{
    Run run;
    run.started = started;
    run.resolution = static_cast<double>(nanoseconds) * 1e-9;
    run.nanoseconds = nanoseconds;
    run.hasStamps = true;
    return run;
}

/// A model in UTC that is fed line by line.
class Fed
{
public:
    explicit Fed(int sources = 1)
    {
        for (int i = 0; i < sources; ++i)
            model.addSource("log " + std::to_string(i));
    }

    void add(std::string const& text, int source = 0, int number = -1, Run const* run = nullptr)
    {
        LogLine line = parseLine(text);
        line.isWhole = true;
        line.number = ++_lines;
        line.run = number;
        model.addLine(source, line, run);
    }

    /// "kind time text" of each row.
    std::vector<std::string> finish()
    {
        model.finish();
        std::vector<std::string> rows;
        for (std::uint64_t i = 0; i < model.getRows().size(); ++i) {
            TimelineModel::Row const& row = model.getRows()[i];
            rows.push_back(std::string(1, "MXELTBPR"[static_cast<int>(row.kind)]) + " " + std::to_string(row.time) +
                           " " + model.getText(i));
        }
        return rows;
    }

    TimelineModel model{Zone::parse("UTC")};

private:
    std::uint64_t _lines = 0;
};

std::string stamped(unsigned ticks, unsigned thread, std::string const& rest)
{
    char prefix[64];
    std::snprintf(prefix, sizeof prefix, "0000000000 %010u (0x%08x) ", ticks, thread);
    return prefix + rest;
}

using Texts = std::vector<std::string>;

TEST(TimelineModel, keepsEachTextToTheByte)
{
    const std::string texts[] = {"",
                                 "0",
                                 "00",
                                 "007",
                                 "10",
                                 "a1b22c",
                                 "1.050",
                                 "99999999999999",
                                 "100000000000000",
                                 "00000000000000",
                                 "000000000000000",
                                 std::string("zero \0 inside", 13),
                                 "\xff\xfe 12 \x80",
                                 "tile 5 of 7",
                                 "tile 6 of 7",
                                 "ünïcödé 3",
                                 "\"quoted\" \\ 4",
                                 std::string(200, '5')};
    Fed fed;
    Texts expected;
    for (std::string const& text : texts) {
        fed.add(stamped(static_cast<unsigned>(expected.size()), 1, "Warning: " + text));
        expected.push_back("M " + std::to_string(expected.size()) + " " + text);
    }
    EXPECT_EQ(fed.finish(), expected);
}

TEST(TimelineModel, textsOfOneFormShareIt)
{
    Fed one, many;
    for (unsigned i = 0; i < 1000; ++i) {
        one.add(stamped(i, 1, "Warning: same"));
        many.add(stamped(i, 1, "Warning: tile " + std::to_string(i) + " of 1000"));
    }
    one.finish();
    many.finish();
    // Numbers that count take a byte each, and those that stay as well.
    EXPECT_LE(many.model.encode().size(), one.model.encode().size() + 2 * 1000 + 100);
}

TEST(TimelineModel, tellsLinesApart)
{
    Fed fed;
    const auto run = runAt(noon);
    for (std::string const& text :
         {std::string("===== Message Logger Startup ====="),
          std::string("===== Started on Mon Nov 23 12:00:00 2026"),
          std::string("===== Clock Frequency: 0.000000001"), stamped(10, 1, "Tracing: + f"),
          stamped(20, 1, "Tracing:   | text"), stamped(30, 1, "Informational: Event overflow [3]"),
          stamped(35, 1, "Informational: + not traced"), std::string("another program"),
          stamped(40, 1, "Tracing:   /"), std::string("===== Message Logger Stopped =====")})
        fed.add(text, 0, 0, &run);
    EXPECT_EQ(fed.finish(),
              (Texts{"B 0 ===== Message Logger Startup =====", "B 0 ===== Started on Mon Nov 23 12:00:00 2026",
                     "B 0 ===== Clock Frequency: 0.000000001", "E 10 + f", "T 20   | text",
                     "X 30 Event overflow [3]", "M 35 + not traced", "P 35 another program", "L 40   /",
                     "B 40 ===== Message Logger Stopped ====="}));
    ASSERT_EQ(fed.model.getCalls().size(), 1u);
    EXPECT_EQ(fed.model.getCalls()[0].entered, 3u);
    EXPECT_EQ(fed.model.getCalls()[0].left, 8u);
    EXPECT_EQ(fed.model.getRows()[5].lost, 3u);
    EXPECT_EQ(fed.model.getLanes().size(), 2u) << "of the thread, and of lines without one";
}

TEST(TimelineModel, putsSourcesAndRunsIntoTheOrderOfTime)
{
    Fed fed(2);
    const auto first = runAt(noon), second = runAt(noon + 2, 1000), other = runAt(noon + 1);
    fed.add(stamped(100, 1, "Warning: a"), 0, 0, &first);
    fed.add(stamped(100, 1, "Warning: c"), 0, 1, &second);
    fed.add(stamped(50, 1, "Warning: b"), 1, 0, &other);
    fed.add(stamped(2'000'000'000, 1, "Warning: d"), 1, 0, &other);
    EXPECT_EQ(fed.finish(), (Texts{"M 100 a", "M 1000000050 b", "M 2000100000 c", "M 3000000000 d"}));
    EXPECT_EQ(fed.model.getLanes().size(), 3u) << "a thread of another run is another one";
}

TEST(TimelineModel, callsKeepTheirRowsWhenSourcesMix)
{
    Fed fed(2);
    for (int source : {0, 1})
        for (char const* text : {"+ f", "  + g", "  | /", "  /"}) {
            const unsigned ticks = 10 * static_cast<unsigned>(fed.model.getRows().size()) + 3;
            fed.add(stamped(source == 0 ? ticks : ticks + 1, 1, std::string("Tracing: ") + text), source, -1);
        }
    fed.finish();
    for (TimelineModel::Call const& call : fed.model.getCalls()) {
        auto const& rows = fed.model.getRows();
        EXPECT_EQ(rows[call.entered].kind, RowKind::Entered);
        EXPECT_EQ(rows[call.left].kind, RowKind::Left);
        EXPECT_EQ(rows[call.entered].lane, rows[call.left].lane);
        EXPECT_EQ(fed.model.getText(call.entered), call.level == 0 ? "+ f" : "  + g");
        EXPECT_EQ(fed.model.getText(call.left), call.level == 0 ? "  /" : "  | /");
    }
    EXPECT_EQ(fed.model.getCalls().size(), 4u);
}

TEST(TimelineModel, findsCallsWhereThreadsShareOneDepth)
{
    Fed fed;
    const std::pair<unsigned, char const*> lines[] = {{1, "+ f"},     {2, "  + h"}, {1, "  | + g"},
                                                      {1, "  | | /"}, {2, "  | /"}, {1, "  /"}};
    unsigned ticks = 0;
    for (auto const& [thread, text] : lines)
        fed.add(stamped(ticks++, thread, std::string("Tracing: ") + text));
    fed.finish();
    auto const& calls = fed.model.getCalls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(std::pair(calls[0].entered, calls[0].left), (std::pair<std::uint64_t, std::uint64_t>(0, 5)));
    EXPECT_EQ(std::pair(calls[1].entered, calls[1].left), (std::pair<std::uint64_t, std::uint64_t>(1, 4)));
    EXPECT_EQ(std::pair(calls[2].entered, calls[2].left), (std::pair<std::uint64_t, std::uint64_t>(2, 3)));
    EXPECT_EQ(calls[2].level, 1);
}

TEST(TimelineModel, linesWithoutAnyStampAreInTheirOwnOrder)
{
    Fed fed;
    for (char const* text : {"one", "+ f", "  | text", "  /", "+ echo of a shell"})
        fed.add(text);
    EXPECT_EQ(fed.finish(),
              (Texts{"P 0 one", "E 1000 + f", "T 2000   | text", "L 3000   /", "P 4000 + echo of a shell"}));
    EXPECT_EQ(fed.model.getCalls().size(), 1u);
}

TEST(TimelineModel, aReportBelongsToTheThreadThatWroteIt)
{
    Fed fed;
    const std::string heading = stamped(900, 7, "Profiling: Render Profiler passes:");
    for (std::string const& text :
         {heading, std::string("        Nb of cycles:   2"), std::string("        Total time  :   0.5"),
          std::string(""), std::string("another program"), stamped(950, 7, "Profiling: Profiler alone:"),
          stamped(960, 7, "Warning: end")})
        fed.add(text);
    EXPECT_EQ(fed.finish(), (Texts{"R 900 Render Profiler passes:", "R 900         Nb of cycles:   2",
                                   "R 900         Total time  :   0.5", "R 900 ", "P 900 another program",
                                   "M 950 Profiler alone:", "M 960 end"}));
    ASSERT_EQ(fed.model.getReports().size(), 1u);
    EXPECT_EQ(fed.model.getReports()[0].row, 0u);
    EXPECT_EQ(fed.model.getReports()[0].figures.total, 0.5);
    EXPECT_EQ(fed.model.getRows()[2].lane, fed.model.getRows()[0].lane);
}

TEST(TimelineModel, cutsTextsThatAreTooLongAndSaysSo)
{
    Fed fed;
    LogLine line = parseLine("x");
    const std::string piece(TimelineModel::longestText - 10, 'x');
    line.raw = piece;
    fed.model.addLine(0, line, nullptr);
    line.isStart = false;
    fed.model.addLine(0, line, nullptr);
    fed.model.addLine(0, line, nullptr);
    fed.finish();
    ASSERT_EQ(fed.model.getRows().size(), 1u);
    const std::string expected = " [" + std::to_string(2 * piece.size() - 10) + " more bytes]";
    EXPECT_EQ(fed.model.getText(0), std::string(TimelineModel::longestText, 'x') + expected);
}

TEST(TimelineModel, hugeTicksKeepTheOrder)
{
    Fed fed;
    const auto run = runAt(noon, 1'000'000'000);
    fed.add("4294967295 4294967295 (0x00000001) Warning: last", 0, 0, &run);
    fed.add(stamped(5, 1, "Warning: first"), 0, 0, &run);
    const Texts rows = fed.finish();
    EXPECT_EQ(rows[0], "M 5000000000 first");
    EXPECT_EQ(rows[1], "M " + std::to_string(std::int64_t(1) << 60) + " last");
}

}  // namespace
