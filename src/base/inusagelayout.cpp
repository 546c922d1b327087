// The columns of a usage text. Pure functions of texts and a width.
//
//     |<------------------------- width ------------------------->|
//       -d LEVELS   how deep to look (REEL_DEPTH,
//                   default 3)
//     |<>|<- left ->|<-3->|
//
// The left column is as wide as its longest entry, but never more than half of the page: a longer entry has a line of its own,
// and its description begins on the next one. Lengths count characters and not bytes; a character that a terminal shows two
// columns wide is counted as one, which makes a line a little longer than asked for.
#include <base/inusagelayout_p.h>

#include <algorithm>
#include <ostream>

namespace Vn::InUsageLayout
{
namespace
{
constexpr std::size_t indent = 2;
constexpr std::size_t gap = 3;  ///< between the columns

std::string_view withoutLeadingBlanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

/// Takes the first word off.
std::string_view takeWord(std::string_view& text)
{
    text = withoutLeadingBlanks(text);
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(word.size());
    return word;
}

/// Capital letters, digits, and what joins or repeats such words: no sentence begins with that.
bool isPlaceholder(std::string_view word)
{
    constexpr std::string_view others = "0123456789_-./|,[]";
    const auto isCapital = [](char letter) { return letter >= 'A' && letter <= 'Z'; };
    return std::count_if(word.begin(), word.end(), isCapital) > 1 &&
           std::all_of(word.begin(), word.end(),
                       [&](char letter) { return isCapital(letter) || others.find(letter) != others.npos; });
}

/// Prints words in lines of at most `width` characters, the second and all later ones behind `margin` blanks; the first
/// begins where the stream stands. A longer word gets a line of its own.
void printWrapped(std::ostream& stream, std::string_view text, std::size_t margin, std::size_t width)
{
    std::size_t used = 0;
    for (std::string_view word = takeWord(text); !word.empty(); word = takeWord(text)) {
        if (used != 0 && margin + used + 1 + lengthOf(word) > width) {
            stream << "\n" << std::string(margin, ' ');
            used = 0;
        }
        stream << (used != 0 ? " " : "") << word;
        used += (used != 0 ? 1 : 0) + lengthOf(word);
    }
    stream << "\n";
}
}  // namespace

std::size_t lengthOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

/// Descriptions may begin with the option and with a word for its value, as many programs' own texts do; both then move to the left
/// column. A word counts as such if it looks like one and is set off, so that a sentence in capitals keeps its first word.
///
///     'd', "LEVELS", "-d FOLDERS: where"   ->  "-d FOLDERS", "where"
///     'd', "LEVELS", "how deep"            ->  "-d LEVELS", "how deep"
///     'd', "",       "-d: as a list"       ->  "-d", "as a list"
Row describeOption(char letter, std::string_view placeholder, std::string_view description)
{
    const std::string option = {'-', letter};
    std::string_view rest = withoutLeadingBlanks(description);
    if (rest.starts_with(option) && (rest.size() == 2 || rest[2] == ' ' || rest[2] == ':'))
        rest.remove_prefix(2);
    std::string left = option;
    if (!placeholder.empty()) {
        std::string_view behind = rest;
        std::string_view word = takeWord(behind);
        const bool hasColon = word.ends_with(':');
        if (hasColon)
            word.remove_suffix(1);
        const bool isOwn = isPlaceholder(word) && (hasColon || behind.starts_with("  ") || behind.empty());
        left += " " + std::string(isOwn ? word : placeholder);
        if (isOwn)
            rest = behind;
    }
    rest = withoutLeadingBlanks(rest);
    if (rest.starts_with(':'))
        rest = withoutLeadingBlanks(rest.substr(1));
    return {left, std::string(rest)};
}

/// A row of a note, whose columns the program has set apart by two blanks or more.
Row splitRow(std::string_view line)
{
    line = withoutLeadingBlanks(line);
    const std::size_t end = std::min(line.find("  "), line.size());
    return {std::string(line.substr(0, end)), std::string(withoutLeadingBlanks(line.substr(end)))};
}

/// Half of the page at most, less what stands around the column.
std::size_t leftWidthOf(std::vector<Row> const& rows, std::size_t width)
{
    std::size_t longest = 0;
    for (Row const& row : rows)
        longest = std::max(longest, lengthOf(row.left));
    return std::min(longest, width / 2 - indent - gap);
}

void printRows(std::ostream& stream, std::vector<Row> const& rows, std::size_t left, std::size_t width)
{
    const std::size_t margin = indent + left + gap;
    for (Row const& row : rows) {
        const std::size_t length = lengthOf(row.left);
        stream << std::string(indent, ' ') << row.left;
        if (row.right.empty()) {
            stream << "\n";
            continue;
        }
        if (length > left)  // a line of its own
            stream << "\n" << std::string(margin, ' ');
        else
            stream << std::string(left - length + gap, ' ');
        printWrapped(stream, row.right, margin, width);
    }
}

/// Lines that begin with a blank are rows; those that follow each other share their columns. Everything else is a paragraph.
void printText(std::ostream& stream, std::string_view text, std::size_t width)
{
    std::vector<Row> rows;
    const auto flushRows = [&] {
        printRows(stream, rows, leftWidthOf(rows, width), width);
        rows.clear();
    };
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with(' ')) {
            rows.push_back(splitRow(line));
            continue;
        }
        flushRows();
        printWrapped(stream, line, 0, width);
    }
    flushRows();
}

}  // namespace Vn::InUsageLayout
