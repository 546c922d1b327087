#include <base/incontextalias.h>

#include <base/incontextaliasmgr.h>
#include <base/inex.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/incontextalias";
}  // namespace

InContextAliasBase::InContextAliasBase(char const* description)
    : _initialized(false), _description(duplicateString(description))
{}

InContextAliasBase::InContextAliasBase(InContextAliasBase const& other)
    : _initialized(other._initialized), _description(duplicateString(other._description))
{
    if (other._value)
        _value = duplicateString(other._value);
}

InContextAliasBase::~InContextAliasBase() = default;

void InContextAliasBase::initialize(char const* value)
{
    if (value != nullptr) {
        ArrayPtr<char> copy = duplicateString(value);  // first, as `value` may be the old one
        _value = copy;
    }
    _initialized = true;
}

void InContextAliasBase::finalize()
{
    _initialized = false;
}

bool InContextAliasBase::isValid() const
{
    return _initialized && _value;
}

char const* InContextAliasBase::getValue() const
{
    if (!_initialized)
        throw InEx::ExUninitializedObject(sourceName, __LINE__, _description);
    if (!_value)
        throw InEx::ExInvalidObject(sourceName, __LINE__, _description);
    return _value;
}

char const* InContextAliasBase::getDescription() const
{
    return _description;
}

template class InContextAlias<InInitOvr, 0>;
template class InContextAlias<InInitArg, 1>;
template class InContextAlias<InInitEnv, 1>;
template class InContextAlias<InInitDef, 0>;

}  // namespace Vn
