#include <base/hmgcex.h>

namespace Vn
{

HmGCEx::ExGarbageDetected::ExGarbageDetected(char const* file, int line) : ExBase(file, line)
{
    setReason("Garbage Collector has detected leaks.");
}

VN_EX_DEFINE_MEMBERS(HmGCEx::ExGarbageDetected);

}  // namespace Vn
