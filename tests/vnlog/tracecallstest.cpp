#include <tracecalls.h>

#include <base/trace.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace vnlog;

namespace
{
constexpr int notDrawn = TraceLine::notDrawn;

/// Lines as the library draws them.
class Drawer : public Vn::TraceManager
{
public:
    Drawer() : TraceManager(1000) {}
    Vn::Trace& getTrace() override { return _trace; }
    void print(char const* text) const override { lines.emplace_back(text); }

    mutable std::vector<std::string> lines;

private:
    Vn::Trace _trace;
};

Vn::TraceLevel& level = *Vn::Trace::registerLevel("TraceCallsTest", "dir/tracecallstest.cpp");

/// f calls g, which logs what looks like a drawing, and calls h.
std::vector<std::string> drawCalls(char const* options)
{
    Vn::Trace::setOptions("reset,show=TraceCallsTest");
    Vn::Trace::setOptions(options);
    const Drawer drawer;
    Vn::Trace& trace = const_cast<Drawer&>(drawer).getTrace();
    const auto log = [&](std::string const& text) {
        std::ostringstream stream;
        trace.log(stream, "dir/tracecallstest.cpp", 7);
        stream << text;
        drawer.print(stream.str().c_str());
    };
    {
        const Vn::Trace::Entry f(trace, level, "f(int)", "dir/tracecallstest.cpp", 12);
        log("in f");
        {
            const Vn::Trace::Entry g(trace, level, "g", "dir/tracecallstest.cpp", 12345);
            log("+ h");
            log("| | bars");
            log("/");
            const Vn::Trace::Entry h(trace, level, "h", "dir/tracecallstest.cpp", 3);
            log("");
        }
        log("back in f");
    }
    Vn::Trace::setOptions("reset");
    return drawer.lines;
}

struct Expected
{
    TraceStep step;
    int depth;
    std::string text;
};

void expectSteps(std::vector<std::string> const& lines, std::vector<Expected> const& expected)
{
    ASSERT_EQ(lines.size(), expected.size());
    TraceCalls calls;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(lines[i]);
        const TraceCalls::Change change = calls.take(lines[i]);
        EXPECT_EQ(change.line.step, expected[i].step);
        EXPECT_EQ(change.line.depth, expected[i].depth);
        EXPECT_EQ(change.line.text, expected[i].text);
        EXPECT_EQ(change.ended, 0u);
        EXPECT_EQ(change.unseen, 0u);
    }
    EXPECT_TRUE(calls.getOpen().empty());
}
}  // namespace

TEST(TraceCalls, readWhatTheLibraryDraws)
{
    const std::vector<Expected> expected = {
        {TraceStep::Enter, 0, "f(int)"}, {TraceStep::Text, 1, "in f"},      {TraceStep::Enter, 1, "g"},
        {TraceStep::Text, 2, "+ h"},     {TraceStep::Text, 2, "| | bars"},  {TraceStep::Text, 2, "/"},
        {TraceStep::Enter, 2, "h"},      {TraceStep::Text, 3, ""},          {TraceStep::Leave, 3, ""},
        {TraceStep::Leave, 2, ""},       {TraceStep::Text, 1, "back in f"}, {TraceStep::Leave, 1, ""}};
    for (char const* options : {"noline", "line", "pid", "line,pid", "line,fndirs=1,fnwidth=40",
                                "line,fnwidth=0,pid", "line,fnwidth=3"}) {
        SCOPED_TRACE(options);
        expectSteps(drawCalls(options), expected);
    }
}

TEST(TraceCalls, readWhatTheLibraryWritesWithoutIndentation)
{
    const std::vector<Expected> expected = {
        {TraceStep::Enter, notDrawn, "f(int)"},   {TraceStep::Text, notDrawn, "in f"},
        {TraceStep::Enter, notDrawn, "g"},        {TraceStep::Text, notDrawn, "+ h"},
        {TraceStep::Text, notDrawn, "| | bars"},  {TraceStep::Text, notDrawn, "/"},
        {TraceStep::Enter, notDrawn, "h"},        {TraceStep::Text, notDrawn, ""},
        {TraceStep::Leave, notDrawn, "h"},        {TraceStep::Leave, notDrawn, "g"},
        {TraceStep::Text, notDrawn, "back in f"}, {TraceStep::Leave, notDrawn, "f(int)"}};
    std::vector<Expected> located = expected;
    // A text that looks like a drawing can't be told from one here.
    located[3] = {TraceStep::Enter, 0, "h"};
    located[4] = {TraceStep::Text, 0, "| bars"};
    const std::vector<std::string> lines = drawCalls("noindent,line");
    ASSERT_EQ(lines.size(), located.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(lines[i]);
        const TraceLine line = parseTraceLine(lines[i]);
        EXPECT_EQ(line.step, located[i].step);
        EXPECT_EQ(line.depth, located[i].depth);
        EXPECT_EQ(line.text, located[i].text);
    }
}

TEST(TraceCalls, tellProcessAndPlace)
{
    const struct
    {
        char const* message;
        char const *process, *file;
        int line;
        TraceStep step;
        char const* text;
    } table[] = {
        {"+ work", "", "", 0, TraceStep::Enter, "work"},
        {"7844      main.cpp             (  78) + work", "7844", "main.cpp", 78, TraceStep::Enter, "work"},
        {"999999999 + work", "999999999", "", 0, TraceStep::Enter, "work"},
        {"main.cpp (12345)   /", "", "main.cpp", 12345, TraceStep::Leave, ""},
        {" (   1)   | a ( 22) b", "", "", 1, TraceStep::Text, "a ( 22) b"},
        {"/home/x/main.cpp     (   7) | t", "", "/home/x/main.cpp", 7, TraceStep::Text, "t"},
        {"my file.cpp          (   7) | t", "", "my file.cpp", 7, TraceStep::Text, "t"},
        {"main.cpp             (   7) plain", "", "main.cpp", 7, TraceStep::Text, "plain"},
        {"7844      plain", "7844", "", 0, TraceStep::Text, "plain"},
        {"7844      my group (   7) plain", "7844", "", 0, TraceStep::Text, "my group (   7) plain"},
        // No drawings: messages like any others.
        {"my group (   7) plain", "", "", 0, TraceStep::None, "my group (   7) plain"},
        {"Cache (7) evicted", "", "", 0, TraceStep::None, "Cache (7) evicted"},
        {"Cache (  7) evicted", "", "", 0, TraceStep::None, "Cache (  7) evicted"},
        {"Cache (   7)", "", "", 0, TraceStep::None, "Cache (   7)"},
        {"Cache (  x7) evicted", "", "", 0, TraceStep::None, "Cache (  x7) evicted"},
        {"1234567890 plain", "", "", 0, TraceStep::None, "1234567890 plain"},
        {"12 pages 3 ", "", "", 0, TraceStep::None, "12 pages 3 "},
        {"/", "", "", 0, TraceStep::None, "/"},
        {"", "", "", 0, TraceStep::None, ""},
        {"  ", "", "", 0, TraceStep::None, "  "},
        {"  text", "", "", 0, TraceStep::None, "  text"},
        {"+work", "", "", 0, TraceStep::None, "+work"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.message);
        const TraceLine line = parseTraceLine(row.message);
        EXPECT_EQ(line.process, row.process);
        EXPECT_EQ(line.file, row.file);
        EXPECT_EQ(line.line, row.line);
        EXPECT_EQ(line.step, row.step);
        EXPECT_EQ(line.text, row.text);
    }
}

TEST(TraceCalls, theOpenCallsDecideWhereADrawingCanBeReadInTwoWays)
{
    const struct
    {
        char const* message;
        int open;
        bool isSure;
        TraceStep step;
        int depth;
        char const* text;
    } table[] = {
        {"  | + h", 2, true, TraceStep::Enter, 2, "h"},  {"  | + h", 1, true, TraceStep::Text, 1, "+ h"},
        {"  | + h", 1, false, TraceStep::Enter, 2, "h"}, {"  | + h", 3, true, TraceStep::Enter, 2, "h"},
        {"  | + h", 0, true, TraceStep::Enter, 2, "h"},  {"  | + h", -1, true, TraceStep::Enter, 2, "h"},
        {"  | | /", 3, true, TraceStep::Leave, 3, ""},   {"  | | /", 2, true, TraceStep::Text, 2, "/"},
        {"  | | /", 1, true, TraceStep::Text, 1, "| /"}, {"  | | /", 1, false, TraceStep::Leave, 3, ""},
        {"  | | t", 2, true, TraceStep::Text, 2, "t"},   {"  | | t", 1, true, TraceStep::Text, 1, "| t"},
        {"  | | t", 3, true, TraceStep::Text, 2, "t"},   {"  | | t", 0, true, TraceStep::Text, 2, "t"},
        {"  | | t", -1, false, TraceStep::Text, 2, "t"}, {"  | | ", 2, true, TraceStep::Text, 2, ""},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.message + std::string(" at ") + std::to_string(row.open));
        const TraceLine line = parseTraceLine(row.message, row.open, row.isSure);
        EXPECT_EQ(line.step, row.step);
        EXPECT_EQ(line.depth, row.depth);
        EXPECT_EQ(line.text, row.text);
    }
}

TEST(TraceCalls, comeBackIntoStepBehindALoss)
{
    TraceCalls calls;
    calls.take("+ f");
    calls.take("  + g");
    // The exits of g and f are missing.
    TraceCalls::Change change = calls.take("+ k");
    EXPECT_EQ(change.ended, 2u);
    EXPECT_EQ(change.unseen, 0u);
    EXPECT_EQ(calls.getOpen(), std::vector<std::string>({"k"}));
    // Entries are missing; without a known loss this is a text.
    EXPECT_EQ(calls.take("  | + m").line.step, TraceStep::Text);
    calls.setUnsure();
    change = calls.take("  | | + m");
    EXPECT_EQ(change.line.step, TraceStep::Enter);
    EXPECT_EQ(change.ended, 0u);
    EXPECT_EQ(change.unseen, 2u);
    EXPECT_EQ(calls.getOpen(), std::vector<std::string>({"k", "", "", "m"}));
    // From here on it is sure again.
    EXPECT_EQ(calls.take("  | | | | + n").line.step, TraceStep::Text);
    change = calls.take("  /");
    EXPECT_EQ(change.ended, 3u);
    EXPECT_TRUE(calls.getOpen().empty());
    // An exit whose entry came before the log.
    change = calls.take("  | /");
    EXPECT_EQ(change.ended, 0u);
    EXPECT_EQ(change.unseen, 2u);
    EXPECT_EQ(calls.getOpen(), std::vector<std::string>({""}));
}

TEST(TraceCalls, withoutIndentationAnExitEndsTheInnermostCallOfItsName)
{
    TraceCalls calls;
    for (char const* line : {">>> f", ">>> g", ">>> f", ">>> h"})
        calls.take(line);
    TraceCalls::Change change = calls.take("<<< f");
    EXPECT_EQ(change.ended, 1u);
    EXPECT_EQ(calls.getOpen(), std::vector<std::string>({"f", "g"}));
    change = calls.take("<<< k");
    EXPECT_EQ(change.ended, 0u);
    EXPECT_EQ(change.unseen, 1u);
    EXPECT_EQ(calls.getOpen(), std::vector<std::string>({"f", "g"}));
}

TEST(TraceCalls, aLineOfBarsIsNoDrawing)
{
    const auto lineOf = [](int bars) {
        std::string line = "  ";
        for (int i = 0; i < bars; ++i)
            line += "| ";
        return line + "x";
    };
    TraceCalls calls;
    EXPECT_EQ(calls.take(lineOf(4096)).line.step, TraceStep::Text);
    EXPECT_EQ(calls.getOpen().size(), 4096u);
    EXPECT_EQ(calls.take(lineOf(4097)).line.step, TraceStep::None);
    EXPECT_EQ(calls.getOpen().size(), 4096u);
}
