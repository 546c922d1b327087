// Errors of the system, with its own code and text.
//
// The error must be read before anything else can change it, an allocation included. So the public constructors only
// read it, as the argument of a private constructor that builds the bases.
#include <base/exsyserror.h>

#include <base/exsyserror_p.h>

#include <cerrno>
#include <cstring>

namespace Vn
{

ExSysError::ExSysError(char const* file, int line) : ExBase(file, line), std::runtime_error("") {}

/// From the virtual base, which both concrete classes share.
char const* ExSysError::what() const noexcept
{
    return getReason();
}

ExSysErrorANSI::ExSysErrorANSI(char const* file, int line) : ExSysErrorANSI(file, line, errno) {}

/// A virtual base is built by the most derived class: hence ExBase in the list.
ExSysErrorANSI::ExSysErrorANSI(char const* file, int line, int error)
    : ExBase(file, line), ExSysError(file, line), _error(error)
{
    setReason(std::strerror(error));
}

int ExSysErrorANSI::getError() const
{
    return _error;
}

/// Without the usual macro, which would define what() as well: that is the base's here.
ExBase* ExSysErrorANSI::clone() const
{
    return new ExSysErrorANSI(*this);
}

ExSysErrorWindows::ExSysErrorWindows(char const* file, int line)
    : ExSysErrorWindows(file, line, System::getLastError())
{}

ExSysErrorWindows::ExSysErrorWindows(char const* file, int line, int errorCode)
    : ExBase(file, line), ExSysError(file, line), _errorCode(errorCode)
{
    char text[1024];
    System::getErrorText(errorCode, text, sizeof text);
    System::cutLineEnd(text);  // Windows ends its texts with a line end
    setReason(text);
}

int ExSysErrorWindows::getErrorCode() const
{
    return _errorCode;
}

ExBase* ExSysErrorWindows::clone() const
{
    return new ExSysErrorWindows(*this);
}

}  // namespace Vn
