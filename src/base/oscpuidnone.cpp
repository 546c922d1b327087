// oscpuidnone.cpp (for processors with the instruction: oscpuidx86.cpp)
//
// Without the instruction every question has the answer of a processor that knows leaf 0 only.
#include <base/oscpuid_p.h>

namespace Vn::System
{

OsCpuid::Registers queryCpuid(std::uint32_t)
{
    return {0, 0, 0, 0};  // highest leaf 0: OsCpuDecode then reports nothing
}

}  // namespace Vn::System
