// The root of all exceptions: texts in buffers of fixed size, so that an exception can be made when memory is short.
// A text that doesn't fit is cut and never refused.
#include <base/exbase.h>

#include <cstdio>
#include <cstring>
#include <typeinfo>

namespace Vn
{
namespace
{
/// Adds `text` to the terminated string in `buffer`, as far as it fits with its terminator.
template <unsigned size>
void append(char (&buffer)[size], char const* text)
{
    const std::size_t used = std::strlen(buffer);
    const std::size_t length = ::strnlen(text, size - 1 - used);
    std::memcpy(buffer + used, text, length);
    buffer[used + length] = '\0';
}
}  // namespace

/// First bytes only: clearing the whole buffers would take longer than all the rest.
ExBase::ExBase(char const* file, int line) : _lineNo(line)
{
    _detailedReason[0] = '\0';
    _reason[0] = '\0';
    _fileName[0] = '\0';
    setFileName(file);
}

/// Intended: a copy has the cached detailed text as well, unlike an assignment. Do not mend.
ExBase::ExBase(ExBase const& other) : _lineNo(other._lineNo)
{
    std::memcpy(_detailedReason, other._detailedReason, sizeof _detailedReason);
    std::memcpy(_reason, other._reason, sizeof _reason);
    std::memcpy(_fileName, other._fileName, sizeof _fileName);
}

/// Intended: unlike a copy, an assigned exception keeps the detailed text that it has cached; do not mend.
ExBase const& ExBase::operator=(ExBase const& other)
{
    if (this == &other)
        return *this;
    _lineNo = other._lineNo;
    std::memcpy(_reason, other._reason, sizeof _reason);
    std::memcpy(_fileName, other._fileName, sizeof _fileName);
    return *this;
}

/// Out of line: the vtable of this class then stands in this library alone, and a catch in any library finds it.
ExBase::~ExBase() = default;

/// Empty, not null, before the first setReason().
char const* ExBase::getReason() const
{
    return _reason;
}

/// Formed at the first call, since it needs the type of the finished object, and kept: text added to the reason later
/// on doesn't show. Writes into the object, so two threads must not make the first call at once.
char const* ExBase::getDetailedReason() const
{
    if (_detailedReason[0] != '\0')
        return _detailedReason;
    std::snprintf(_detailedReason, sizeof _detailedReason, "[Exception Type = %s, File = %s, Line=%d]\n",
                  typeid(*this).name(), _fileName, _lineNo);
    append(_detailedReason, _reason);
    return _detailedReason;
}

char const* ExBase::getFileName() const
{
    return _fileName;
}

int ExBase::getLineNo() const
{
    return _lineNo;
}

/// Intended: appends, whatever its name says; messages are put together by several calls. Do not mend.
void ExBase::setReason(char const* text)
{
    if (text != nullptr)
        append(_reason, text);
}

/// Unlike the reason, a file name replaces the one before.
void ExBase::setFileName(char const* file)
{
    if (file == nullptr)
        return;
    _fileName[0] = '\0';
    append(_fileName, file);
}

}  // namespace Vn
