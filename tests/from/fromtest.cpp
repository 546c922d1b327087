// Each page for those who come from another library shows what its programs print.
//
// A block marked "console" holds commands and what they print, on standard output first and then on standard error. The test
// runs each of them, one after the other, in a folder of the page's own. It knows these forms:
//
//     $ NAME=VALUE PROGRAM ARGUMENT...     a program of this folder; nothing but these variables is set for it
//     $ PROGRAM; echo $?                   with its exit code as the last line
//     $ tail -n COUNT FILE                 the last lines of a file
//     $ grep -c WORD FILE                  how many lines of a file hold a word
//     $ echo WORD... > FILE                makes a file of one line
//
// In what is printed, "..." stands for what differs from run to run: on a line of its own for any lines, within a line for any
// text. Where the other library isn't there, its commands are left out, and this library's own still run.
#include "child.h"
#include "tempfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using VnTest::Child;
using VnTest::ChildRun;
using VnTest::contentOf;

namespace
{
using Lines = std::vector<std::string>;

/// The parts between the marks, without what text mode adds to lines on Windows.
Lines split(std::string text, char mark)
{
    std::erase(text, '\r');
    Lines parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, mark);)
        parts.push_back(part);
    return parts;
}

/// Whether a line is what a page shows of it.
bool isLine(std::string const& shown, std::string const& line)
{
    const std::size_t gap = shown.find("...");
    if (gap == std::string::npos)
        return shown == line;
    if (line.compare(0, gap, shown, 0, gap) != 0)
        return false;
    const std::string rest = shown.substr(gap + 3);
    for (std::size_t at = gap; at <= line.size(); ++at) {
        if (isLine(rest, line.substr(at)))
            return true;
    }
    return false;
}

/// Whether lines, from the one at `line` on, are what a page shows from the one at `at` on.
bool areLines(Lines const& shown, std::size_t at, Lines const& lines, std::size_t line)
{
    if (at == shown.size())
        return line == lines.size();
    if (shown[at] == "...") {
        for (std::size_t next = line; next <= lines.size(); ++next) {
            if (areLines(shown, at + 1, lines, next))
                return true;
        }
        return false;
    }
    return line < lines.size() && isLine(shown[at], lines[line]) && areLines(shown, at + 1, lines, line + 1);
}

struct Command
{
    std::string line;
    Lines output;
    std::string section;
};

std::vector<Command> commandsOf(std::string const& page)
{
    std::vector<Command> commands;
    bool isConsole = false;
    std::string section;
    for (std::string const& line : split(page, '\n')) {
        if (line.starts_with("## "))
            section = line.substr(3);
        else if (line.starts_with("```"))
            isConsole = line == "```console";
        else if (isConsole && line.starts_with("$ "))
            commands.push_back({line.substr(2), {}, section});
        else if (isConsole)
            commands.back().output.push_back(line);
    }
    return commands;
}

/// The commands that look at a file or make one.
Lines outputOfCommand(std::string const& command)
{
    const Lines words = split(command, ' ');
    if (words[0] == "echo") {
        std::ofstream(words.back()) << command.substr(5, command.find(" > ") - 5) << '\n';
        return {};
    }
    Lines lines = split(contentOf(words.back()), '\n');
    if (words[0] == "grep") {
        const auto count = std::count_if(lines.begin(), lines.end(), [&words](std::string const& line) {
            return line.find(words[2]) != std::string::npos;
        });
        return {std::to_string(count)};
    }
    const std::size_t count = std::min(lines.size(), std::size_t(std::stoul(words[2])));
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
    return lines;
}

class Page
{
public:
    explicit Page(std::string const& name) : _commands(commandsOf(contentOf(VN_DOCS "/" + name))) {}

    void check()
    {
        ASSERT_GT(_commands.size(), 5u);
        for (Command const& command : _commands)
            check(command);
        EXPECT_GT(_ran, 2);
        // A program of the other side begins with "with", one of this side with "vn".
        EXPECT_GE(
            std::count_if(_sides.begin(), _sides.end(), [](auto const& side) { return side.second.size() == 2; }),
            3)
            << "tasks that show both sides";
        EXPECT_TRUE(_leftOut == 0 || !VN_FROM_ALL) << _leftOut;
    }

private:
    void check(Command const& command)
    {
        SCOPED_TRACE(command.line);
        std::string line = command.line;
        const std::string tail = "; echo $?";
        const bool isCode = line.ends_with(tail);
        if (isCode)
            line.resize(line.size() - tail.size());
        Lines words = split(line, ' ');
        if (words[0] != "tail" && words[0] != "grep" && words[0] != "echo") {
            const auto program = std::find_if(words.begin(), words.end(), [](std::string const& word) {
                return word.find('=') == std::string::npos;
            });
            ASSERT_NE(program, words.end());
            _isHere = isHere(*program);
            _sides[command.section].insert(program->substr(0, 2));
            if (_isHere)
                expect(command, outputOf(words, program, isCode));
        } else if (_isHere) {
            expect(command, outputOfCommand(line));
        }
        ++(_isHere ? _ran : _leftOut);
    }

    static bool isHere(std::string const& program)
    {
        const Lines programs = split(VN_FROM_PROGRAMS, ' ');
        return std::find(programs.begin(), programs.end(), program) != programs.end();
    }

    static Lines outputOf(Lines const& words, Lines::const_iterator program, bool isCode)
    {
        Child child = Child::program(*program);
        // What a page doesn't set isn't set: the tests' own environment, or the user's, may have any of these.
        for (char const* name : {"VN_DEBUG_INITIALIZE", "VN_TRACE_OPTIONS", "COLUMNS", "LANG", "LC_ALL"})
            child.without(name);
        for (auto word = words.begin(); word != program; ++word) {
            const std::size_t mark = word->find('=');
            child.with(word->substr(0, mark), word->substr(mark + 1));
        }
        const ChildRun run = child.arguments({program + 1, words.end()}).run();
        Lines lines = split(run.out + run.err, '\n');
        if (isCode)
            lines.push_back(std::to_string(run.exitCode));
        return lines;
    }

    static void expect(Command const& command, Lines const& lines)
    {
        std::string text;
        for (std::string const& line : lines)
            text += line + '\n';
        EXPECT_TRUE(areLines(command.output, 0, lines, 0)) << text;
    }

    std::vector<Command> _commands;
    VnTest::TempFolder _folder;
    VnTest::WorkingFolder _working{_folder.path()};
    std::map<std::string, std::set<std::string>> _sides;  ///< by task, how the names of its programs begin
    bool _isHere = false;
    int _ran = 0;
    int _leftOut = 0;
};
}  // namespace

TEST(LoggingPage, showsWhatItsProgramsPrint)
{
    Page("from-spdlog-glog.md").check();
}

TEST(SettingsPage, showsWhatItsProgramsPrint)
{
    Page("from-gflags-absl.md").check();
}

TEST(ExactTimePage, showsWhatItsProgramsPrint)
{
    Page("from-chrono-timecode.md").check();
}

TEST(SamplingPage, showsWhatItsProgramsPrint)
{
    Page("from-gsl-random.md").check();
}

TEST(TestGroupsPage, showsWhatItsProgramsPrint)
{
    Page("from-googletest.md").check();
}
