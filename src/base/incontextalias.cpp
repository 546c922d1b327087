// The part of an alias that doesn't depend on its kind: value, description, and whether the value may be read.
//
// `_initialized` and `_value` are separate on purpose: an unset environment variable is initialised without a value,
// and a stopped alias keeps its value without being readable. isValid() is true for both together.
#include <base/incontextalias.h>

#include <base/incontextaliasmgr.h>
#include <base/inex.h>
#include <base/wholenumber_p.h>

#include <algorithm>
#include <string_view>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/incontextalias";

/// Whether `text` says no: "0", or "false" in any case. Compares ASCII letters only, so that no locale changes what a
/// setting means.
bool isFalse(char const* text)
{
    constexpr std::string_view word = "false";
    const std::string_view given = text;
    if (given == "0")
        return true;
    const auto isSameLetter = [](char left, char right) { return (left | 0x20) == right; };
    return std::equal(given.begin(), given.end(), word.begin(), word.end(), isSameLetter);
}
}  // namespace

/// Without a value until the manager of the kind gives one.
InContextAliasBase::InContextAliasBase(char const* description)
    : _initialized(false), _description(duplicateString(description))
{}

/// For clone(). An alias without a value has a null pointer there, which duplicateString() would turn into the empty
/// text.
InContextAliasBase::InContextAliasBase(InContextAliasBase const& other)
    : _initialized(other._initialized), _description(duplicateString(other._description))
{
    if (other._value)
        _value = duplicateString(other._value);
}

InContextAliasBase::~InContextAliasBase() = default;

/// Intended: null leaves an old value in place and still makes the alias readable; do not mend. A second start thus
/// keeps what the first one found.
void InContextAliasBase::initialize(char const* value)
{
    if (value != nullptr) {
        ArrayPtr<char> copy = duplicateString(value);  // first, as `value` may be the old one
        _value = copy;
        if (_isConverted)
            convert();
    }
    _initialized = true;
}

/// Intended: the text stays, though nobody can read it; initialize(nullptr) makes it readable again. Do not mend.
void InContextAliasBase::finalize()
{
    _initialized = false;
}

char const* InContextAliasBase::getValue() const
{
    if (!isValid())
        throwNotValid();
    return _value;
}

/// Out of line, so that reading a setting stays small. Which of the two is missing decides the class.
void InContextAliasBase::throwNotValid() const
{
    if (!_initialized)
        throw InEx::ExUninitializedObject(sourceName, __LINE__, _description);
    throw InEx::ExInvalidObject(sourceName, __LINE__, _description);
}

/// Not at each read, as that would take longer than all the rest of it.
void InContextAliasBase::convert()
{
    _number = wholeNumberOf<int>(_value);
    _truth = !isFalse(_value);
    _isConverted = true;
}

char const* InContextAliasBase::getDescription() const
{
    return _description;
}

/// The four kinds, compiled once: other libraries must share their static managers.
template class InContextAlias<InInitOvr, 0>;
template class InContextAlias<InInitArg, 1>;
template class InContextAlias<InInitEnv, 1>;
template class InContextAlias<InInitDef, 0>;

}  // namespace Vn
