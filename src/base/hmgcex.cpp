// Intended: no standard base, unlike in every other exception, so a catch of std::exception lets a leak pass. Do not
// mend.
#include <base/hmgcex.h>

namespace Vn
{

/// The driver of test programs turns it into an exit code of its own.
HmGCEx::ExGarbageDetected::ExGarbageDetected(char const* file, int line) : ExBase(file, line)
{
    setReason("Garbage Collector has detected leaks.");
}

VN_EX_DEFINE_MEMBERS(HmGCEx::ExGarbageDetected);

}  // namespace Vn
