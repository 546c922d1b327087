// The words of man pages and completions. Pure functions of texts.
//
// Both kinds of page are programs: man's formatter obeys lines that begin with a dot and words that begin with a backslash, and
// bash obeys nearly everything. A description that somebody wrote for people, or a name from outside, must come out as it was
// written, and never be obeyed. So each text passes through one of these functions on its way, and there is no other way.
#include <base/inusagepages_p.h>

#include <base/osterminal.h>

#include <algorithm>

namespace Vn
{

/// Each of these characters has a meaning, or a typographic stand-in: a plain "-" may be printed as a hyphen, which nobody finds
/// again or can copy into a command line. The names behind the backslash are the portable ones, which mandoc knows as well.
std::string InUsagePages::roffOf(std::string_view text)
{
    std::string escaped;
    for (char letter : OsTerminal::shown(text)) {
        switch (letter) {
        case '\\':
            escaped += "\\e";
            break;
        case '-':
            escaped += "\\-";
            break;
        case '"':
            escaped += "\\(dq";
            break;
        case '\'':
            escaped += "\\(aq";
            break;
        case '`':
            escaped += "\\(ga";
            break;
        case '^':
            escaped += "\\(ha";
            break;
        case '~':
            escaped += "\\(ti";
            break;
        default:
            escaped += letter;
        }
    }
    return escaped;
}

/// Within single quotes nothing has a meaning but the quote itself, which ends them: it stands between two quoted parts.
///
///     it's  ->  'it'\''s'
std::string InUsagePages::quotedForShell(std::string_view word)
{
    std::string quoted = "'";
    for (char letter : word) {
        if (letter == '\'')
            quoted += "'\\''";
        else
            quoted += letter;
    }
    return quoted + "'";
}

/// Two programs may get one identifier, "a-b" and "a_b"; a user would have to complete both in one shell to notice.
///
///     vn-inventory 2  ->  vn_inventory_2
std::string InUsagePages::identifierOf(std::string_view program)
{
    std::string identifier;
    for (char letter : program) {
        const bool isPart = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                            (letter >= '0' && letter <= '9');
        identifier += isPart ? letter : '_';
    }
    return identifier;
}

/// From the compiler's form, whose days below 10 have a blank in front; empty for anything else, as a library may tell its date
/// in a form of its own.
///
///     "Nov  2 2026"  ->  "2026-11-02"
///     "yesterday"    ->  ""
std::string InUsagePages::isoDateOf(std::string_view date)
{
    constexpr std::string_view months = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec ";
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    if (date.size() != 11 || date[3] != ' ' || date[6] != ' ' || !isDigit(date[5]) ||
        !std::all_of(date.begin() + 7, date.end(), isDigit) || !(isDigit(date[4]) || date[4] == ' '))
        return "";
    const std::size_t place = months.find(date.substr(0, 4));  // with the blank, so it is a whole name
    if (place == months.npos)
        return "";
    const std::string month = std::to_string(place / 4 + 101).substr(1);
    const char tens = date[4] == ' ' ? '0' : date[4];
    return std::string(date.substr(7)) + "-" + month + "-" + tens + date[5];
}

/// The words of a demand that lists what is right, as it stands in the message of a refusal; none if it is a sentence.
///
///     "bytes, files or suffix"   ->  bytes, files, suffix
///     "left, or right"           ->  left, right
///     "a number of levels"       ->  none
std::vector<std::string> InUsagePages::wordsOf(std::string_view demand)
{
    std::vector<std::string> words;
    while (!demand.empty()) {
        const std::size_t comma = demand.find(", ");
        const std::size_t either = demand.find(" or ");
        const std::size_t end = std::min({comma, either, demand.size()});
        std::string_view word = demand.substr(0, end);
        if (word.starts_with("or "))  // behind a comma
            word.remove_prefix(3);
        if (word.find(' ') != word.npos)
            return {};
        if (!word.empty())
            words.emplace_back(word);
        demand.remove_prefix(std::min(end + (either < comma ? 4 : 2), demand.size()));
    }
    return words;
}

}  // namespace Vn
