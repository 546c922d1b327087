// Private to inusagecompletion.cpp, inusageman.cpp and inusagepages.cpp.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vn::InUsagePages
{

/// A text as roff shows it to the letter, but for control characters, which are shown as such.
///
///     "-d"          ->  "\\-d"          a minus, that can be copied into a shell
///     "C:\\temp"   ->  "C:\\etemp"
///     "'red'"       ->  "\\(aqred\\(aq"
///
/// Safe in each place of a line but its first, where a "." would be a request.
std::string roffOf(std::string_view text);

/// A word in single quotes, as a shell reads it back.
///
///     "it's"  ->  "'it'\\''s'"
///
std::string quotedForShell(std::string_view word);

/// Letters, digits and "_" of a program's name; "_" in the place of all others.
std::string identifierOf(std::string_view program);

/// The compiler's form of a day as the international one; "" for a text that is none.
///
///     "Aug  7 2018"  ->  "2018-08-07"
///
std::string isoDateOf(std::string_view date);

/// The words that a demand lists, if it is a list of words and nothing else. Whether they are right is the program's to say.
///
///     "bytes, files or suffix"  ->  three
///     "1 to 64, or 0"           ->  none
///
std::vector<std::string> wordsOf(std::string_view demand);

}  // namespace Vn::InUsagePages
