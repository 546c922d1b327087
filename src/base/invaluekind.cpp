#include <base/invaluekind_p.h>

#include <base/invariable.h>

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace Vn
{
namespace
{
using Limits = std::numeric_limits<int>;

/// Reads as the conversion does, so blanks and a sign may stand in front.
bool isInteger(char const* text)
{
    char* end = nullptr;
    std::strtol(text, &end, 10);
    return end != text && *end == '\0';
}

/// The conversion would give the nearest limit.
bool isInt(char const* text)
{
    errno = 0;
    const long value = std::strtol(text, nullptr, 10);
    return isInteger(text) && errno == 0 && value >= Limits::min() && value <= Limits::max();
}

/// The limits only concern one who came near them.
std::string describeInt(char const* text)
{
    const std::string limits =
        " from " + std::to_string(Limits::min()) + " to " + std::to_string(Limits::max());
    return "a whole number" + (isInteger(text) ? limits : "");
}

bool isAny(char const*)
{
    return true;
}

std::string describeAny(char const*)
{
    return "a text";
}

constexpr InValueKind wholeNumber = {"NUMBER", isInt, describeInt};
/// Every text is true or false: InVariable::getValue() has the rule.
constexpr InValueKind truth = {"YES-OR-NO", isAny, describeAny};
constexpr InValueKind anyText = {"TEXT", isAny, describeAny};
}  // namespace

InValueKind const& InValueKind::of(InVariableBase const& variable)
{
    if (dynamic_cast<InVariable<int> const*>(&variable) != nullptr)
        return wholeNumber;
    if (dynamic_cast<InVariable<bool> const*>(&variable) != nullptr)
        return truth;
    return anyText;
}

}  // namespace Vn
