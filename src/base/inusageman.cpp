// A man page, from the rows of help. What is a text there is a text here: all that a program has declared is escaped.
//
// The page is in the language of man(7), as man, mandoc and groff read it. Lines of text are wrapped below 80 bytes, as
// their checkers ask for it. The day and the version are those of the application, if it has registered, and else of this
// library, so a build that can be repeated has pages that can be.
//
//     -d LEVELS   how deep to look     ->     .TP
//                                             \fB\-d\fR \fILEVELS\fR
//                                             how deep to look
#include <base/inusage.h>

#include <base/dbgbuildinfo.h>
#include <base/dbgbuildinfoex.h>
#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildvalues_p.h>
#include <base/exreasontext_p.h>
#include <base/inusageentries_p.h>
#include <base/inusagepages_p.h>
#include <base/objptr.h>
#include <base/osterminal.h>

#include <algorithm>
#include <ostream>

namespace Vn
{
namespace
{
using namespace InUsagePages;
using InUsageLayout::Row;

/// Prints words in lines of less than 80 bytes, none of which is a request.
void printLines(std::ostream& stream, std::string_view text)
{
    constexpr std::size_t longestLine = 79;
    std::size_t used = 0;
    while (!text.empty()) {
        const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
        text.remove_prefix(begin);
        const std::string_view raw = text.substr(0, text.find_first_of(" \t"));
        text.remove_prefix(raw.size());
        if (raw.empty())
            break;
        std::string word = roffOf(raw);
        const bool goesOn = used != 0 && used + 1 + word.size() <= longestLine;
        if (!goesOn && word[0] == '.')  // a quotation mark would be a request too, but is written as "\(aq"
            word.insert(0, "\\&");
        stream << (goesOn ? " " : used != 0 ? "\n" : "") << word;
        used = goesOn ? used + 1 + word.size() : word.size();
    }
    if (used != 0)
        stream << "\n";
}

/// "-d" in bold, "LEVELS" in italics.
std::string fontsOf(std::string_view left)
{
    std::string text;
    while (!left.empty()) {
        const std::string_view word = left.substr(0, left.find(' '));
        left.remove_prefix(std::min(word.size() + 1, left.size()));
        text += (text.empty() ? "" : " ") + std::string(word.starts_with('-') ? "\\fB" : "\\fI") + roffOf(word) +
                "\\fR";
    }
    return text;
}

/// A row without a description still needs a line: the next request would be taken for it.
void printRows(std::ostream& stream, std::vector<Row> const& rows)
{
    for (Row const& row : rows) {
        stream << ".TP\n" << fontsOf(row.left) << "\n";
        if (row.right.empty())
            stream << "\\&\n";
        else
            printLines(stream, row.right);
    }
}

/// Lines are paragraphs, and those that begin with a blank are rows, as in the usage text.
void printNote(std::ostream& stream, std::string_view note, bool& isFirst)
{
    while (!note.empty()) {
        const std::string_view line = note.substr(0, note.find('\n'));
        note.remove_prefix(std::min(line.size() + 1, note.size()));
        if (line.starts_with(' '))
            printRows(stream, {InUsageLayout::splitRow(line)});
        else if (!line.empty()) {
            // Behind the section's title a paragraph begins by itself, and man's checkers ask for no second one.
            stream << (isFirst ? "" : ".PP\n");
            printLines(stream, line);
        }
        isFirst = false;
    }
}

/// "whom to greet" of "Greets somebody.": what stands behind a name has no capital and no full stop.
std::string asPartOfALine(std::string summary)
{
    if (summary.ends_with('.'))
        summary.pop_back();
    const auto isCapital = [](char letter) { return letter >= 'A' && letter <= 'Z'; };
    if (!summary.empty() && isCapital(summary[0]) && (summary.size() == 1 || !isCapital(summary[1])))
        summary[0] = static_cast<char>(summary[0] + ('a' - 'A'));
    return summary;
}

/// ASCII letters alone, under every locale. Titles of man pages are written so.
std::string inCapitals(std::string text)
{
    for (char& letter : text)
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - ('a' - 'A'));
    return text;
}

/// The arguments of the page's title behind its section: the day, and whose version it is of.
std::string titleOf(char const* name, DbgBuildInfo const& info)
{
    return " \"" + isoDateOf(ExReasonText::orEmpty(info.getBuildDate(false))) + "\" \"" +
           roffOf(ExReasonText::orEmpty(name)) + " " + std::to_string(info.getMajorVersion()) + "." +
           std::to_string(info.getMinorVersion()) + "\"";
}

/// The library is always there to answer; a program registers itself if it has a version of its own.
std::string titleOfProcess()
{
    try {
        DbgBuildInfo const& application = DbgBuildInfoMgr::getAppInfo();
        return titleOf(application.getApiName(), application);
    } catch (DbgBuildInfoEx::ExAppNotRegistered const&) {
        const ObjPtr<DbgBuildInfo> library(DbgBuildValues::createInfo());
        return titleOf(library->getLibraryName(false), *library);
    }
}

/// Those of options too, as the page has a place for all of them.
std::vector<Row> rowsOfVariables(InUsageEntries const& entries)
{
    std::vector<Row> rows;
    for (auto const& [letter, entry] : entries.getOptions())
        for (std::string const& variable : entry.variables)
            rows.push_back({variable, std::string("what -") + letter + " sets, where that isn't given"});
    for (Row& row : entries.getVariableRows())
        rows.push_back(std::move(row));
    return rows;
}
}  // namespace

/// In the order of sections that man(7) gives. A section without content is left out, as the checkers ask for it.
std::ostream& InUsage::printManPage(std::ostream& stream, char const* program) const
{
    const InUsageEntries entries;
    const std::string name = OsTerminal::shown(ExReasonText::orEmpty(program));
    stream << ".TH \"" << roffOf(inCapitals(name)) << "\" 1" << titleOfProcess() << "\n"
           << ".SH NAME\n";
    printLines(stream, name + " - " + asPartOfALine(_state->summary));
    stream << ".SH SYNOPSIS\n\\fB" << roffOf(name) << "\\fR [\\fIOPTION\\fR]...\n";
    printLines(stream, _state->operandNames);
    stream << ".SH DESCRIPTION\n";
    printLines(stream, _state->summary.empty() ? name : _state->summary);
    stream << ".SH OPTIONS\n";
    printRows(stream, entries.getOptionRows(_state->words));
    if (entries.hasRanks()) {
        stream << ".PP\n";
        printLines(stream, InUsageEntries::ranks);
    }
    const std::vector<Row> variables = rowsOfVariables(entries);
    if (!variables.empty()) {
        stream << ".SH ENVIRONMENT\n";
        printRows(stream, variables);
    }
    if (!_state->notes.empty())
        stream << ".SH NOTES\n";
    bool isFirst = true;
    for (std::string const& note : _state->notes)
        printNote(stream, note, isFirst);
    return stream;
}

}  // namespace Vn
