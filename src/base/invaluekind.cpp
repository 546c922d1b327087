#include <base/invaluekind_p.h>

#include <base/invariable.h>

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace Vn
{
namespace
{
/// In any case; ASCII letters only, so that no locale changes what a setting means.
bool isWord(std::string_view text, std::string_view word)
{
    if (text.size() != word.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((text[i] | 0x20) != word[i])
            return false;
    return true;
}

bool isWholeNumber(char const* text) noexcept
{
    using Limits = std::numeric_limits<int>;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    const bool hasOnlyBlanksBehind =
        std::string_view(end).find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
    return end != text && errno == 0 && hasOnlyBlanksBehind && value >= Limits::min() && value <= Limits::max();
}

/// The empty text is what an option without a value has.
bool isTruth(char const* text) noexcept
{
    const std::string_view given = text;
    return given.empty() || given == "0" || given == "1" || isWord(given, "true") || isWord(given, "false");
}

bool isText(char const*) noexcept
{
    return true;
}
}  // namespace

InValueKind::InValueKind(InVariableBase const& variable) noexcept : _name("text"), _isWhole(isText)
{
    if (dynamic_cast<InVariable<int> const*>(&variable) != nullptr) {
        _name = "whole number";
        _isWhole = isWholeNumber;
    } else if (dynamic_cast<InVariable<bool> const*>(&variable) != nullptr) {
        _name = "true or false";
        _isWhole = isTruth;
    }
}

bool InValueKind::readTruth(char const* text) noexcept
{
    return std::string_view(text) != "0" && !isWord(text, "false");
}

}  // namespace Vn
