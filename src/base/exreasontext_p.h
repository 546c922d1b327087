// Private to the library.
#pragma once

#include <base/baseexport.h>

#include <cstdarg>
#include <cstdio>

namespace Vn
{

/// A message formatted on the stack, cut to 1,023 characters: what the constructors of the exceptions hand to
/// setReason().
class ExReasonText
{
public:
    VN_BASE_PRINTF(2, 3)
    explicit ExReasonText(char const* format, ...)
    {
        std::va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(_text, sizeof _text, format, arguments);
        va_end(arguments);
    }

    char const* get() const { return _text; }

    /// For a "%s", which must not meet a null pointer.
    static char const* orEmpty(char const* text) { return text != nullptr ? text : ""; }

private:
    char _text[1024];
};

}  // namespace Vn
