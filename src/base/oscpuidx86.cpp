// oscpuidx86.cpp (other processors: oscpuidnone.cpp)
#include <base/oscpuid_p.h>

#include <cpuid.h>

namespace Vn::System
{

OsCpuid::Registers queryCpuid(std::uint32_t leaf)
{
    OsCpuid::Registers answer;
    // Subleaf 0 explicitly: some leaves look at that register, and it would hold whatever came before.
    __cpuid_count(leaf, 0, answer.first, answer.second, answer.third, answer.fourth);
    return answer;
}

}  // namespace Vn::System
