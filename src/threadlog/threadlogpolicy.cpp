// The texts of the two settings that name levels. A text is taken whole or not at all: a list with one mistyped name switches
// nothing, and the caller tells that and keeps its default. Names are those of the log's lines, with their blanks and capitals:
//
//     "Error,Fatal Error"   ->  two bits
//     "error"               ->  none: nothing is guessed
//     "Error,"              ->  none: the part behind the comma names no level
#include <threadlog/threadlogpolicy_p.h>

namespace Vn
{
namespace
{
constexpr int levels = LgTypes::Profiling + 1;

/// The levels are few and their names short, so this looks at each.
std::optional<int> levelOf(std::string_view name)
{
    for (int level = 0; level < levels; ++level)
        if (name == LgTypes::levelToString(static_cast<LgTypes::Level>(level)))
            return level;
    return {};
}
}  // namespace

std::optional<unsigned> ThreadLogPolicy::parseLevels(std::string_view text)
{
    if (text == "none")
        return 0u;
    if (text == "all")
        return (1u << levels) - 1;
    unsigned found = 0;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        const std::optional<int> level = levelOf(text.substr(start, end - start));
        if (!level)
            return {};
        found |= 1u << *level;
        start = end + 1;
    }
    return found;
}

/// "Profiling" stands apart from the ranks of the others, so nothing begins at it.
std::optional<int> ThreadLogPolicy::parseThreshold(std::string_view text)
{
    if (text == "none")
        return -1;
    const std::optional<int> level = levelOf(text);
    return level && *level != LgTypes::Profiling ? level : std::nullopt;
}

}  // namespace Vn
