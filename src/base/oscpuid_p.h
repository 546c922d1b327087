// Private to oscpudecode_p.h, oscpuidnone.cpp and oscpuidx86.cpp.
#pragma once

#include <cstdint>

namespace Vn
{

/// What the processor tells of itself: four registers for each leaf of its identification. Leaf 0 has the highest
/// leaf in its first register.
class OsCpuid
{
public:
    /// EAX, EBX, ECX and EDX, in this order.
    struct Registers
    {
        std::uint32_t first, second, third, fourth;
    };

    /// The answer for a leaf, subleaf 0. Asking for a leaf beyond the highest one gives meaningless numbers.
    virtual Registers query(std::uint32_t leaf) const = 0;

protected:
    ~OsCpuid() = default;
};

namespace System
{

/// The processor's own answer; all zeros where it has no such instruction.
OsCpuid::Registers queryCpuid(std::uint32_t leaf);

}  // namespace System

/// The processor that runs this. Threads may move between processors, which answer alike for the leaves that are
/// read.
class OsOwnCpuid final : public OsCpuid
{
public:
    Registers query(std::uint32_t leaf) const override { return System::queryCpuid(leaf); }
};

}  // namespace Vn
