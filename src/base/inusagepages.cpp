// The words of man pages and completions. Pure functions of texts.
#include <base/inusagepages_p.h>

#include <base/osterminal.h>

#include <algorithm>

namespace Vn
{

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

std::string InUsagePages::isoDateOf(std::string_view date)
{
    constexpr std::string_view months = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec ";
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    if (date.size() != 11 || date[3] != ' ' || date[6] != ' ' || !isDigit(date[5]) ||
        !std::all_of(date.begin() + 7, date.end(), isDigit) || !(isDigit(date[4]) || date[4] == ' '))
        return "";
    const std::size_t place = months.find(date.substr(0, 4));
    if (place == months.npos || place % 4 != 0)
        return "";
    const std::string month = std::to_string(place / 4 + 101).substr(1);
    const char tens = date[4] == ' ' ? '0' : date[4];
    return std::string(date.substr(7)) + "-" + month + "-" + tens + date[5];
}

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
