// The exceptions of the reference clock. GetCount is for clock sources that can fail; the counter of this library can't,
// so only SourceMismatch is thrown here.
#include <base/dtrefclockex.h>

namespace Vn
{

// As in dtex.cpp, the standard base gets an empty text, and what() returns the reason that is kept by ExBase.

DtRefClockEx::DtRefClockEx(char const* file, int line) : ExBase(file, line) {}

DtRefClockEx::GetCount::GetCount(char const* file, int line) : std::logic_error(""), DtRefClockEx(file, line)
{
    setReason("Reference clock failed to get clock value.");
}

VN_EX_DEFINE_MEMBERS(DtRefClockEx::GetCount);

DtRefClockEx::SourceMismatch::SourceMismatch(char const* file, int line)
    : std::logic_error(""), DtRefClockEx(file, line)
{
    setReason("Clock source name does not match system reference clock.");
}

VN_EX_DEFINE_MEMBERS(DtRefClockEx::SourceMismatch);

}  // namespace Vn
