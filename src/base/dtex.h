#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Root of the exceptions of stream time: catch it for all of them.
///
///     catch (Vn::DtEx const& failure) {
///         std::cerr << failure.getReason() << '\n';    // "Null rate not allowed in DtTime."
///     }
///
/// Each class below is a std::logic_error as well. A zero denominator is not in this family: Rational throws
/// RationalEx::ExDenominatorZero.
/// Tests: tests/base/dttimetest.cpp, tests/base/dttimeutiltest.cpp.
class VN_BASE_EXPORT DtEx : public ExBase
{
public:
    class BadRate;
    class BadRefRate;
    class DtStringError;

protected:
    /// For the classes of the family, which set the reason. The place of the throw is passed on to ExBase.
    DtEx(char const* file, int line);
};

/// A DtTime was asked for at a rate of zero counts per second: "Null rate not allowed in DtTime."
///
///     Vn::DtTime(10, 0, 1)     // throws
///     Vn::DtTime(10, 1, 0)     // throws RationalEx::ExDenominatorZero
///
class VN_BASE_EXPORT DtEx::BadRate : public std::logic_error, public DtEx
{
public:
    /// Thrown in line `line` of the source `file`.
    BadRate(char const* file, int line);

    VN_EX_MEMBERS();
};

/// Two readings of the reference clock have different rates: "Mismatched reference clock rates."
///
/// The library itself never throws it; it is for programs that compare readings of more than one run.
class VN_BASE_EXPORT DtEx::BadRefRate : public std::logic_error, public DtEx
{
public:
    /// Thrown in line `line` of the source `file`.
    BadRefRate(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The text form of a DtTime cannot be read. The code tells which rate field is wrong, and how.
///
///     "100 x 1"            ->  ErrRateNumeratorMalformed
///     "100 99999999999 1"  ->  ErrRateNumeratorOverflow
///     "100 25"             ->  ErrRateDenominatorMalformed
///     "100 0 1"            ->  none of these: a zero is a number, so DtEx::BadRate
///
/// The message is "DtString conversion error: " and toString() of the code.
class VN_BASE_EXPORT DtEx::DtStringError : public std::logic_error, public DtEx
{
public:
    /// What is wrong with which field. There is no code for the count, whose reading never fails.
    enum ErrorCode : int
    {
        ErrRateNumeratorMalformed = 0,    ///< the second field is missing or does not begin with a number
        ErrRateNumeratorOverflow = 1,     ///< the second field does not fit 32 bits
        ErrRateDenominatorMalformed = 2,  ///< the third field is missing or does not begin with a number
        ErrRateDenominatorOverflow = 3    ///< the third field does not fit 32 bits
    };

    /// Thrown in line `line` of the source `file`. `errorCode` is kept as it is, whatever its value.
    DtStringError(char const* file, int line, ErrorCode errorCode);

    /// The code given at construction.
    ErrorCode getErrorCode() const;

    /// The code as a sentence; a static text, never null.
    ///
    ///     ErrRateNumeratorOverflow  ->  "Rate numerator overflow."
    ///     ErrorCode(4)              ->  "Unknown error."
    ///
    static char const* toString(ErrorCode errorCode);

    VN_EX_MEMBERS();

private:
    ErrorCode _errorCode;
};

}  // namespace Vn
