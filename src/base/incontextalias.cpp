// The part of an alias that doesn't depend on its kind: value, description, and whether the value may be read.
//
// `_initialized` and `_value` are separate on purpose: an unset environment variable is initialised without a value,
// and a stopped alias keeps its value without being readable. isValid() is true for both together.
//
// A value is parsed once, when the alias gets it: parsing at each read would take longer than all the rest of that.
#include <base/incontextalias.h>

#include <base/incontextaliasmgr.h>
#include <base/inex.h>
#include <base/invalueform.h>

#include <cstring>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/incontextalias";
}  // namespace

/// Without a value until the manager of the kind gives one.
InContextAliasBase::InContextAliasBase(char const* description)
    : _initialized(false), _description(duplicateString(description))
{}

/// For clone(). An alias without a value has a null pointer there, and so has its clone.
InContextAliasBase::InContextAliasBase(InContextAliasBase const& other)
    : _initialized(other._initialized), _description(duplicateString(other._description))
{
    if (other._value)
        _value = ValueBuffer::make(other._value);
}

InContextAliasBase::~InContextAliasBase() = default;

/// Intended: null leaves an old value in place and still makes the alias readable; do not mend. A second start thus
/// keeps what the first one found.
void InContextAliasBase::initialize(char const* value)
{
    if (value != nullptr) {
        ArrayPtr<char> copy = ValueBuffer::make(value);  // first, as `value` may be the old one
        _value = copy;
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

char const* InContextAliasBase::getDescription() const
{
    return _description;
}

/// The 21 bytes of a short text take no more of the heap than the text alone would.
ArrayPtrRet<char> InContextAliasBase::ValueBuffer::make(char const* text)
{
    const std::size_t length = std::strlen(text);
    if (length >= numberPlace)
        return duplicateString(text);
    ArrayPtrRet<char> buffer(new char[size]());
    std::memcpy(buffer.get(), text, length);
    const int number = InValueForm<int>::read(text);
    std::memcpy(buffer.get() + numberPlace, &number, sizeof number);
    buffer.get()[truthPlace] = InValueForm<bool>::read(text) ? 1 : 0;
    return buffer;
}

/// Out of line, as it is rare.
int InContextAliasBase::ValueBuffer::parseNumber(char const* text)
{
    return InValueForm<int>::read(text);
}

/// The four kinds, compiled once: other libraries must share their static managers.
template class InContextAlias<InInitOvr, 0>;
template class InContextAlias<InInitArg, 1>;
template class InContextAlias<InInitEnv, 1>;
template class InContextAlias<InInitDef, 0>;

}  // namespace Vn
