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

ExBase::ExBase(char const* file, int line) : _lineNo(line)
{
    _detailedReason[0] = '\0';
    _reason[0] = '\0';
    _fileName[0] = '\0';
    setFileName(file);
}

ExBase::ExBase(ExBase const& other) : _lineNo(other._lineNo)
{
    std::memcpy(_detailedReason, other._detailedReason, sizeof _detailedReason);
    std::memcpy(_reason, other._reason, sizeof _reason);
    std::memcpy(_fileName, other._fileName, sizeof _fileName);
}

ExBase const& ExBase::operator=(ExBase const& other)
{
    if (this == &other)
        return *this;
    _lineNo = other._lineNo;
    std::memcpy(_reason, other._reason, sizeof _reason);
    std::memcpy(_fileName, other._fileName, sizeof _fileName);
    return *this;
}

ExBase::~ExBase() = default;

char const* ExBase::getReason() const
{
    return _reason;
}

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

void ExBase::setReason(char const* text)
{
    if (text != nullptr)
        append(_reason, text);
}

void ExBase::setFileName(char const* file)
{
    if (file == nullptr)
        return;
    _fileName[0] = '\0';
    append(_fileName, file);
}

}  // namespace Vn
