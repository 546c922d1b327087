// Private to oscpuinfo.cpp; implemented in oscpuinfoposix.cpp.
#pragma once

#include <base/oscpuid_p.h>
#include <base/oscpuinfo.h>

#include <initializer_list>

namespace Vn
{

/// Reads what the processor's identification says; the source of the registers can be a made-up one.
/// Published source: the processor's manual, "CPUID: processor identification", leaves 0, 1 and 2 with the table of
/// cache descriptors.
class OsCpuDecode
{
public:
    using CacheInfo = OsCpuInfo::CacheInfo;

    explicit OsCpuDecode(OsCpuid const& cpuid) : _cpuid(cpuid) {}

    /// Bits of leaf 1's fourth register.
    static constexpr unsigned mmxBit = 23;
    static constexpr unsigned sseBit = 25;

    bool hasFeature(unsigned bit) const { return highestLeaf() >= 1 && (_cpuid.query(1).fourth >> bit & 1) != 0; }

    /// Each pointer may be null. Untouched where the processor has no leaf 1.
    void readSignature(int* family, int* model, int* stepping) const
    {
        if (highestLeaf() == 0)
            return;
        const std::uint32_t signature = _cpuid.query(1).first;
        if (family != nullptr)
            *family = static_cast<int>(signature >> 8 & 0xF);
        if (model != nullptr)
            *model = static_cast<int>(signature >> 4 & 0xF);
        if (stepping != nullptr)
            *stepping = static_cast<int>(signature & 0xF);
    }

    /// Sizes are 0, ways 1 and the page size 0 where the processor tells nothing; a line size stays as it was until a
    /// descriptor sets it.
    void readMemory(CacheInfo& data, CacheInfo& instruction, CacheInfo& level2, int& pageSize) const
    {
        for (CacheInfo* cache : {&data, &instruction, &level2}) {
            cache->size = 0;
            cache->associativity = 1;
        }
        pageSize = 0;
        if (highestLeaf() < 2)
            return;
        const OsCpuid::Registers all = _cpuid.query(2);
        if (all.first >> 31 != 0)
            return;
        const Target target{data, instruction, level2, pageSize};
        decodeFirst(all.first, target);
        for (std::uint32_t descriptors : {all.second, all.third, all.fourth})
            decodeFrom(0, descriptors, target);
        for (std::uint32_t round = 1; round < (all.first & 0xFF); ++round)
            decodeLaterRound(target);
    }

private:
    struct Target
    {
        CacheInfo& data;
        CacheInfo& instruction;
        CacheInfo& level2;
        int& pageSize;
    };

    std::uint32_t highestLeaf() const { return _cpuid.query(0).first; }

    /// The third register counts twice here and the fourth not at all: what blocks are sized by stays what it has
    /// always been.
    void decodeLaterRound(Target const& target) const
    {
        const OsCpuid::Registers all = _cpuid.query(2);
        decodeFirst(all.first, target);
        for (std::uint32_t descriptors : {all.second, all.third, all.third})
            decodeFrom(0, descriptors, target);
    }

    /// Its low byte is the number of rounds.
    static void decodeFirst(std::uint32_t descriptors, Target const& target) { decodeFrom(1, descriptors, target); }

    static void decodeFrom(unsigned byte, std::uint32_t descriptors, Target const& target)
    {
        for (; byte < 4; ++byte)
            decode(descriptors >> 8 * byte & 0xFF, target);
    }

    static void decode(std::uint32_t descriptor, Target const& target)
    {
        switch (descriptor) {
        case 0x03:
        case 0x04:
            target.pageSize = 4096;
            break;
        case 0x06:
            target.instruction = {8192, 4, 32};
            break;
        case 0x08:
            target.instruction = {16384, 4, 32};
            break;
        case 0x0A:
            target.data = {8192, 2, 32};
            break;
        case 0x0C:
            target.data = {16384, 2, 32};
            break;
        case 0x40:
            target.level2 = {0, 1, 0};
            break;
        case 0x41:
            target.level2 = {131072, 4, 32};
            break;
        case 0x42:
            target.level2 = {262144, 4, 32};
            break;
        case 0x43:
            target.level2 = {524288, 4, 32};
            break;
        case 0x44:
            target.level2 = {1048576, 4, 32};
            break;
        case 0x45:
            target.level2 = {2097152, 4, 32};
            break;
        case 0x82:
            target.level2 = {262144, 8, 32};
            break;
        default:
            break;
        }
    }

    OsCpuid const& _cpuid;
};

}  // namespace Vn
