// Private to oscpuinfo.cpp; implemented in oscpuinfoposix.cpp.
#pragma once

#include <base/oscpuid_p.h>
#include <base/oscpuinfo.h>

#include <initializer_list>

namespace Vn
{

/// Decodes the processor's identification; the tests supply registers of processors that they don't run on.
///
///     OsCpuDecode(ownCpuid).readSignature(&family, &model, nullptr);
///
/// Published source: the processor's manual, "CPUID: processor identification", leaves 0, 1 and 2 with the table of
/// cache descriptors. Queries the processor anew in each call; keeps a reference to `cpuid`.
/// Tests: tests/base/oscpuinfotest.cpp, tests/base/osmemoryarchtest.cpp.
class OsCpuDecode
{
public:
    using CacheInfo = OsCpuInfo::CacheInfo;

    explicit OsCpuDecode(OsCpuid const& cpuid) : _cpuid(cpuid) {}

    /// Bits of leaf 1's fourth register.
    static constexpr unsigned mmxBit = 23;
    static constexpr unsigned sseBit = 25;

    /// False as well if the processor has no leaf 1.
    bool hasFeature(unsigned bit) const { return highestLeaf() >= 1 && (_cpuid.query(1).fourth >> bit & 1) != 0; }

    /// The four-bit fields of leaf 1's first register: stepping in bits 0 to 3, model in 4 to 7, family in 8 to 11.
    /// Each pointer may be null. Nothing is stored if the processor has no leaf 1.
    // Intended: without the extended family and model, so many processors have family 15 or 6. Do not mend: the
    // numbers are those of the four-bit fields.
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

    /// Caches and page size from leaf 2. Its low byte is the number of times that the leaf must be read; all other
    /// bytes are descriptors. What no descriptor reports has size 0 and one way, so that a size can always be divided
    /// by its ways. The line size then stays as it was, and so does what a later descriptor does not overwrite.
    void readMemory(CacheInfo& data, CacheInfo& instruction, CacheInfo& level2, int& pageSize) const
    {
        // One way, not none: the caller divides by it.
        for (CacheInfo* cache : {&data, &instruction, &level2}) {
            cache->size = 0;
            cache->associativity = 1;
        }
        pageSize = 0;
        if (highestLeaf() < 2)
            return;
        const OsCpuid::Registers all = _cpuid.query(2);
        if (all.first >> 31 != 0)  // the register holds no descriptors
            return;
        const Target target{data, instruction, level2, pageSize};
        decodeFirst(all.first, target);
        for (std::uint32_t descriptors : {all.second, all.third, all.fourth})
            decodeFrom(0, descriptors, target);
        for (std::uint32_t round = 1; round < (all.first & 0xFF); ++round)
            decodeLaterRound(target);
    }

private:
    /// Where the descriptors go.
    struct Target
    {
        CacheInfo& data;
        CacheInfo& instruction;
        CacheInfo& level2;
        int& pageSize;
    };

    /// 0 on a processor without the instruction.
    std::uint32_t highestLeaf() const { return _cpuid.query(0).first; }

    // Intended: the third register is decoded twice and the fourth not at all, unlike in the first round. Do not
    // mend: programs size their blocks by the result, which stays what it has always been.
    void decodeLaterRound(Target const& target) const
    {
        const OsCpuid::Registers all = _cpuid.query(2);
        decodeFirst(all.first, target);
        for (std::uint32_t descriptors : {all.second, all.third, all.third})
            decodeFrom(0, descriptors, target);
    }

    /// Skips the low byte, which is the number of rounds.
    static void decodeFirst(std::uint32_t descriptors, Target const& target) { decodeFrom(1, descriptors, target); }

    /// From the given byte up to the highest one of the register.
    static void decodeFrom(unsigned byte, std::uint32_t descriptors, Target const& target)
    {
        for (; byte < 4; ++byte)
            decode(descriptors >> 8 * byte & 0xFF, target);
    }

    /// Sets {size in bytes, ways, line size in bytes}; a later descriptor overwrites an earlier one. Unknown ones,
    /// which most of today's processors report, are ignored.
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
        case 0x40:  // no second-level cache
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

    OsCpuid const& _cpuid;  ///< outlives this object
};

}  // namespace Vn
