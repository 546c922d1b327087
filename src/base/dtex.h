#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of stream time.
/// Tests: tests/base/dttimetest.cpp, tests/base/dttimeutiltest.cpp.
class VN_BASE_EXPORT DtEx : public ExBase
{
public:
    class BadRate;
    class BadRefRate;
    class DtStringError;

protected:
    DtEx(char const* file, int line);
};

/// A DtTime was asked for at a rate of zero counts per second.
class VN_BASE_EXPORT DtEx::BadRate : public std::logic_error, public DtEx
{
public:
    BadRate(char const* file, int line);

    VN_EX_MEMBERS();
};

/// For a caller that has found two readings of the reference clock at different rates.
class VN_BASE_EXPORT DtEx::BadRefRate : public std::logic_error, public DtEx
{
public:
    BadRefRate(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The text form of a DtTime can't be read: which field it is, and whether it holds no number or too large a one.
class VN_BASE_EXPORT DtEx::DtStringError : public std::logic_error, public DtEx
{
public:
    enum ErrorCode : int
    {
        ErrRateNumeratorMalformed = 0,
        ErrRateNumeratorOverflow = 1,
        ErrRateDenominatorMalformed = 2,
        ErrRateDenominatorOverflow = 3
    };

    DtStringError(char const* file, int line, ErrorCode errorCode);

    ErrorCode getErrorCode() const;

    /// The sentence that the message ends with; "Unknown error." for any other value.
    static char const* toString(ErrorCode errorCode);

    VN_EX_MEMBERS();

private:
    ErrorCode _errorCode;
};

}  // namespace Vn
