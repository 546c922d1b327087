#include <callfinder.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using vnlog::CallFinder;
using vnlog::parseTraceLine;
using vnlog::TraceLine;
using vnlog::TraceStep;

TEST(TraceLine, isReadWhateverTheOptionsPutAhead)
{
    const struct
    {
        char const* text;
        int openCalls;
        TraceStep step;
        int depth;
        char const* name;
    } table[] = {
        {"+ f", -1, TraceStep::Enter, 0, "f"},
        {"  | text", -1, TraceStep::Text, 1, "text"},
        {"  + g", -1, TraceStep::Enter, 1, "g"},
        {"  | | text", -1, TraceStep::Text, 2, "text"},
        {"  | /", -1, TraceStep::Leave, 2, ""},
        {"  /", -1, TraceStep::Leave, 1, ""},
        {"  | | | + deep", -1, TraceStep::Enter, 4, "deep"},
        {"| outside of calls", -1, TraceStep::Text, 0, "outside of calls"},
        {"+ operator+ (a)", -1, TraceStep::Enter, 0, "operator+ (a)"},
        {">>> f", -1, TraceStep::Enter, -1, "f"},
        {"<<< f", -1, TraceStep::Leave, -1, "f"},
        {"12221     main.cpp             (  78) + work", -1, TraceStep::Enter, 0, "work"},
        {"12221     main.cpp             (  84)   | message 0", -1, TraceStep::Text, 1, "message 0"},
        {"main.cpp             (12345)   /", -1, TraceStep::Leave, 1, ""},
        {"12221       | + g", -1, TraceStep::Enter, 2, "g"},
        {"src/a (b).cpp        (   7) + f", -1, TraceStep::Enter, 0, "f"},
        {"  | text (  12) + not a call", -1, TraceStep::Text, 1, "text (  12) + not a call"},
        // Texts that look like the drawing: the open calls decide.
        {"  | + g", 1, TraceStep::Text, 1, "+ g"},
        {"  | + g", 2, TraceStep::Enter, 2, "g"},
        {"  | /", 1, TraceStep::Text, 1, "/"},
        {"  | | a", 1, TraceStep::Text, 1, "| a"},
        {"", -1, TraceStep::None, -1, ""},
        {"/", -1, TraceStep::None, -1, ""},
        {"+ ", -1, TraceStep::None, -1, ""},
        {"Render pass 1", -1, TraceStep::None, -1, ""},
        {"Render 3 + 4", -1, TraceStep::None, -1, ""},
        {">>> ", -1, TraceStep::None, -1, ""},
        {"1234567890 + ten digits are no process", -1, TraceStep::None, -1, ""},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.text + (" with " + std::to_string(row.openCalls)));
        const TraceLine line = parseTraceLine(row.text, row.openCalls);
        EXPECT_EQ(line.step, row.step);
        EXPECT_EQ(line.depth, row.depth);
        EXPECT_EQ(line.text, line.step == TraceStep::None ? row.text : row.name);
    }
}

/// "0-5 1-2" for calls from line 0 to 5 and from 1 to 2; "x" behind a cut one, "0-" for an open one; levels in parentheses.
std::string callsOf(std::vector<std::string> const& lines, CallFinder& finder, bool sharesDepth)
{
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (lines[i] == "!")
            finder.addLoss();
        else
            finder.addLine(i, parseTraceLine(lines[i], sharesDepth ? -1 : finder.getExpectedDepth()));
    std::string text;
    for (CallFinder::Call const& call : finder.getCalls()) {
        text += (text.empty() ? "" : " ") + std::to_string(call.entered) + "-";
        if (call.left != CallFinder::none)
            text += std::to_string(call.left);
        text += (call.isCut ? "x(" : "(") + std::to_string(call.level) + ")";
    }
    return text;
}

TEST(CallFinder, callsNestAsTheTraceDrewThem)
{
    const struct
    {
        char const* what;
        std::vector<std::string> lines;
        char const* calls;
        std::uint64_t unmatched;
    } table[] = {
        {"nothing", {}, "", 0},
        {"one in the other", {"+ f", "  | a", "  + g", "  | | a", "  | /", "  /"}, "0-5(0) 2-4(1)", 0},
        {"one behind the other", {"+ f", "  /", "+ g", "  /"}, "0-1(0) 2-3(0)", 0},
        {"a call that doesn't end", {"+ f", "  + g", "  | /"}, "0-(0) 1-2(1)", 0},
        {"an end without a beginning", {"  | /", "  /", "+ f", "  /"}, "2-3(0)", 2},
        {"without indentation", {">>> f", ">>> g", "<<< g", "<<< f"}, "0-3(0) 1-2(1)", 0},
        {"without indentation, an end is missing", {">>> f", ">>> g", "<<< f"}, "0-2(0) 1-2x(1)", 0},
        {"threads share one depth", {"+ f", "  | + g", "  | /", "  | /"}, "0-3(0) 1-2(1)", 0},
        {"a lost beginning", {"+ f", "!", "  | + h", "  | | /", "  | /", "  /"}, "0-5(0) 2-3(1)", 1},
        {"a lost end", {"+ f", "  + g", "!", "  + h", "  | /", "  /"}, "0-5(0) 1-3x(1) 3-4(1)", 0},
        {"two lost ends", {"+ f", "  + g", "!", "+ h", "  /"}, "0-3x(0) 1-3x(1) 3-4(0)", 0},
        {"an end shows a lost one", {"+ f", "  + g", "!", "  /"}, "0-3(0) 1-3x(1)", 0},
        {"a loss outside of calls", {"!", "+ f", "  | + text", "  /"}, "1-3(0)", 0},
        {"texts that look like calls", {"+ f", "  | + text", "  | /", "  /"}, "0-3(0)", 0},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        CallFinder finder;
        EXPECT_EQ(callsOf(row.lines, finder, std::string(row.what) == "threads share one depth"), row.calls);
        EXPECT_EQ(finder.getUnmatchedCount(), row.unmatched);
    }
}

}  // namespace
