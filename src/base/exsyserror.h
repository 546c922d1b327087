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
    /// The reason, as getReason() gives it.
    char const* what() const noexcept override;

protected:
    /// Leaves the reason to the concrete class.
    ExSysError(char const* file, int line);
};

/// The C library's error: `errno`, with its text.
///
///     catch (Vn::ExSysErrorANSI const& failure) {
///         if (failure.getError() == EBADF)
///             reopen();
///     }
///
/// Tests: tests/base/exsyserrortest.cpp.
class VN_BASE_EXPORT ExSysErrorANSI : public ExSysError
{
public:
    /// Reads `errno`. `file` and `line` are the place of the throw.
    ExSysErrorANSI(char const* file, int line);

    /// `errno` as it was when this object was made.
    int getError() const;

    /// A copy with the same error number; the caller owns it.
    ExBase* clone() const override;

private:
    ExSysErrorANSI(char const* file, int line, int error);

    int _error;
};

/// The operating system's error. On Windows that is `GetLastError()` with the text of `FormatMessageA`, less its line
/// end; elsewhere `errno` with the C library's text.
///
///     catch (Vn::ExSysErrorWindows const& failure) {
///         std::cerr << path << ": " << failure.getReason() << '\n';    // the text names no path
///     }
///
/// Tests: tests/base/exsyserrortest.cpp.
class VN_BASE_EXPORT ExSysErrorWindows : public ExSysError
{
public:
    /// Reads the system's last error. `file` and `line` are the place of the throw.
    ExSysErrorWindows(char const* file, int line);

    /// The system's error number as it was when this object was made.
    int getErrorCode() const;

    /// A copy with the same error number; the caller owns it.
    ExBase* clone() const override;

private:
    ExSysErrorWindows(char const* file, int line, int errorCode);

    int _errorCode;
};

}  // namespace Vn
