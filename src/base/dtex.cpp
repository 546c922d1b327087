// The exceptions of stream time. Their texts are part of the interface, to the byte: programs compare them.
#include <base/dtex.h>

#include <base/exreasontext_p.h>

namespace Vn
{

// The standard base gets an empty text: what() of these classes returns the reason that is kept by ExBase. Each class
// defines its members by the macro here and not in the header, so that its type information stands in the library once
// and a catch in another module finds it.

DtEx::DtEx(char const* file, int line) : ExBase(file, line) {}

DtEx::BadRate::BadRate(char const* file, int line) : std::logic_error(""), DtEx(file, line)
{
    setReason("Null rate not allowed in DtTime.");
}

VN_EX_DEFINE_MEMBERS(DtEx::BadRate);

// The library throws this nowhere. It is for programs that combine reference times of several clocks.
DtEx::BadRefRate::BadRefRate(char const* file, int line) : std::logic_error(""), DtEx(file, line)
{
    setReason("Mismatched reference clock rates.");
}

VN_EX_DEFINE_MEMBERS(DtEx::BadRefRate);

DtEx::DtStringError::DtStringError(char const* file, int line, ErrorCode errorCode)
    : std::logic_error(""), DtEx(file, line), _errorCode(errorCode)
{
    // The code is kept as well as the text, so that a program need not take the text apart.
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
