#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// A call that the system refused. The concrete classes read the system's error in their constructors, so throw one
/// directly after the failing call:
///
///     if (::close(descriptor) != 0)
///         throw Vn::ExSysErrorWindows(sourceName, __LINE__);
///
/// Tests: tests/base/exsyserrortest.cpp.
class VN_BASE_EXPORT ExSysError : public virtual ExBase, public std::runtime_error
{
public:
    char const* what() const noexcept override;

protected:
    ExSysError(char const* file, int line);
};

/// The C library's error: `errno`, with its text.
class VN_BASE_EXPORT ExSysErrorANSI : public ExSysError
{
public:
    ExSysErrorANSI(char const* file, int line);

    /// `errno` as it was when this object was made.
    int getError() const;

    ExBase* clone() const override;

private:
    ExSysErrorANSI(char const* file, int line, int error);

    int _error;
};

/// The operating system's error. On Windows that is `GetLastError()` with the text of `FormatMessageA`, less its line
/// end; elsewhere `errno` with the C library's text.
class VN_BASE_EXPORT ExSysErrorWindows : public ExSysError
{
public:
    ExSysErrorWindows(char const* file, int line);

    /// The system's error number as it was when this object was made.
    int getErrorCode() const;

    ExBase* clone() const override;

private:
    ExSysErrorWindows(char const* file, int line, int errorCode);

    int _errorCode;
};

}  // namespace Vn
