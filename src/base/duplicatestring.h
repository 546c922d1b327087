#pragma once

#include <base/arrayptr.h>

#include <cstring>

namespace Vn
{

/// A new array with a copy of at most `length` characters of `source`, fewer if it ends before that; always
/// terminated. Nothing behind `length` characters is read. A null `source` gives the empty string.
inline ArrayPtrRet<char> duplicateString(char const* source, unsigned length)
{
    const std::size_t copied = source != nullptr ? ::strnlen(source, length) : 0;
    ArrayPtrRet<char> copy(new char[copied + 1]);
    if (copied != 0)
        std::memcpy(copy.get(), source, copied);
    copy.get()[copied] = '\0';
    return copy;
}

/// A new array with a copy of `source`; the empty string for null. Tests: tests/base/duplicatestringtest.cpp.
inline ArrayPtrRet<char> duplicateString(char const* source)
{
    if (source == nullptr)
        source = "";
    const std::size_t size = std::strlen(source) + 1;
    ArrayPtrRet<char> copy(new char[size]);
    std::memcpy(copy.get(), source, size);
    return copy;
}

}  // namespace Vn
