#include "settings.h"

#include "command.h"
#include "console.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

VN_DEFINE_PACKAGE(vnlog, VnInit::base);

namespace vnlog
{
namespace
{
bool isZone(char const* text)
{
    try {
        Zone::parse(text);
        return true;
    } catch (std::runtime_error const&) {
        return false;
    }
}
}  // namespace

Vn::InPackageInit& getPackage()
{
    static Vn::InInit<VnInit::vnlog> package;
    return package;
}

void ZoneSettings::explain(Vn::InUsage& usage) const
{
    char const* const zones = "local, UTC, an offset as +05:30, or a zone that the system knows";
    usage.expect(shown.getVariable(), zones, isZone).expect(written.getVariable(), zones, isZone);
}

std::vector<std::string> getWords(std::string const& list)
{
    std::vector<std::string> words(1);
    for (const char c : list)
        if (c != ',')
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    if (words.back().empty())
        words.pop_back();
    return words;
}

bool isOneOf(char const* text, std::initializer_list<char const*> words)
{
    return std::any_of(words.begin(), words.end(),
                       [text](char const* word) { return std::strcmp(text, word) == 0; });
}

bool isDigitCount(char const* text)
{
    return text[0] >= '0' && text[0] <= '9' && text[1] == '\0';
}

std::vector<std::string> getNames(std::vector<std::string> const& operands)
{
    if (!operands.empty())
        return operands;
    if (isInputTerminal())
        throw WrongUse("which file?");
    return {"-"};
}

}  // namespace vnlog
