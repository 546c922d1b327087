#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VnTest
{

/// Two texts, of one length or of two, whose hashes agree in the 32 bits that our tables keep; both are empty if none was found.
/// About a hundred thousand texts hold such a pair; where the standard library has the hash of GCC's, no search is needed.
inline std::pair<std::string, std::string> findTextsOfOneHash(bool areOfOneLength)
{
    const auto textOf = [areOfOneLength](std::uint32_t number) {
        return std::to_string(1000000 + number) + (!areOfOneLength && number % 2 != 0 ? "longer" : "");
    };
    const auto hashOf = [](std::string const& text) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>()(text));
    };
    std::pair<std::string, std::string> known("1064466", "1068269");
    if (!areOfOneLength)
        known = {"1070313longer", "1152138"};
    if (hashOf(known.first) == hashOf(known.second))
        return known;
    struct Seen
    {
        std::uint32_t hash = 0, number = 0;
    };
    constexpr std::uint32_t places = 1 << 20;
    std::vector<Seen> seen(places);  // the last text of each place
    for (std::uint32_t number = 1; number < 4000000; ++number) {
        const std::string text = textOf(number);
        const std::uint32_t hash = hashOf(text);
        Seen& before = seen[hash % places];
        if (before.number != 0 && before.hash == hash &&
            (textOf(before.number).size() == text.size()) == areOfOneLength)
            return {textOf(before.number), text};
        before = {hash, number};
    }
    return {};
}

}  // namespace VnTest
