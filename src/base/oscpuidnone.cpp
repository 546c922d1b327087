// oscpuidnone.cpp (for processors with the instruction: oscpuidx86.cpp)
#include <base/oscpuid_p.h>

namespace Vn::System
{

OsCpuid::Registers queryCpuid(std::uint32_t)
{
    return {0, 0, 0, 0};
}

}  // namespace Vn::System
