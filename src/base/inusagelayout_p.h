// Private to inusageentries_p.h, inusagelayout.cpp and inusagereport.cpp.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Vn::InUsageLayout
{

/// A row of two columns: an option, and what it does.
struct Row
{
    std::string left;
    std::string right;
};

/// What an option's description says of it, for the two columns.
///
///     'n', "NAME", "-n NAME: whom to greet"   ->  "-n NAME", "whom to greet"
///     'v', "",     "-v           tell more"   ->  "-v", "tell more"
///
/// `placeholder` stands for the value of an option whose description has no word in capitals for it; empty for an
/// option that takes none.
Row describeOption(char letter, std::string_view placeholder, std::string_view description);

/// Characters and not bytes: UTF-8 has one byte of each character that isn't a continuation.
std::size_t lengthOf(std::string_view text);

/// A line of a note as a row: "  LEFT   RIGHT", with two or more blanks between them.
Row splitRow(std::string_view line);

/// Prints the rows in two columns, in lines of at most `width` characters; `left` is the width of the first one.
void printRows(std::ostream& stream, std::vector<Row> const& rows, std::size_t left, std::size_t width);

/// The width that the first column of these rows needs, but no more than leaves the second one half of the line.
std::size_t leftWidthOf(std::vector<Row> const& rows, std::size_t width);

/// Prints a text in lines of at most `width` characters. Its own line ends stay; lines that begin with a blank are rows.
void printText(std::ostream& stream, std::string_view text, std::size_t width);

}  // namespace Vn::InUsageLayout
