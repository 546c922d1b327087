#include <base/dtex.h>

#include <base/exreasontext_p.h>

namespace Vn
{

// The standard base gets an empty text: what() of these classes returns the reason that is kept by ExBase.

DtEx::DtEx(char const* file, int line) : ExBase(file, line) {}

DtEx::BadRate::BadRate(char const* file, int line) : std::logic_error(""), DtEx(file, line)
{
    setReason("Null rate not allowed in DtTime.");
}

VN_EX_DEFINE_MEMBERS(DtEx::BadRate);

DtEx::BadRefRate::BadRefRate(char const* file, int line) : std::logic_error(""), DtEx(file, line)
{
    setReason("Mismatched reference clock rates.");
}

VN_EX_DEFINE_MEMBERS(DtEx::BadRefRate);

DtEx::DtStringError::DtStringError(char const* file, int line, ErrorCode errorCode)
    : std::logic_error(""), DtEx(file, line), _errorCode(errorCode)
{
    setReason(ExReasonText("DtString conversion error: %s", toString(errorCode)).get());
}

DtEx::DtStringError::ErrorCode DtEx::DtStringError::getErrorCode() const
{
    return _errorCode;
}

char const* DtEx::DtStringError::toString(ErrorCode errorCode)
{
    // Any number may come in, as callers can cast one to the enumeration; hence the default.
    switch (errorCode) {
    case ErrRateNumeratorMalformed:
        return "Rate numerator malformed.";
    case ErrRateNumeratorOverflow:
        return "Rate numerator overflow.";
    case ErrRateDenominatorMalformed:
        return "Rate denominator malformed.";
    case ErrRateDenominatorOverflow:
        return "Rate denominator overflow.";
    default:
        return "Unknown error.";
    }
}

VN_EX_DEFINE_MEMBERS(DtEx::DtStringError);

}  // namespace Vn
