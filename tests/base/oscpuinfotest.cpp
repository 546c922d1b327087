#include <base/oscpudecode_p.h>
#include <base/oscpuinfo.h>
#include <base/oscputype_p.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <utility>
#include <vector>

using Vn::OsCpuDecode;
using Vn::OsCpuid;
using Vn::OsCpuInfo;
using CacheInfo = OsCpuInfo::CacheInfo;
using Registers = OsCpuid::Registers;

static_assert(OsCpuInfo::MIPS == 0 && OsCpuInfo::IA32 == 1 && OsCpuInfo::IA64 == 2 && OsCpuInfo::AMD64 == 3 &&
              OsCpuInfo::Unknown == 4);

namespace
{
/// A processor that answers as told: leaf 2 differs from query to query.
class MadeUpCpuid final : public OsCpuid
{
public:
    Registers query(std::uint32_t leaf) const override
    {
        asked.push_back(leaf);
        if (leaf == 0)
            return {highestLeaf, 1, 2, 3};
        if (leaf == 1)
            return signature;
        const std::size_t round = _round++;
        return round < rounds.size() ? rounds[round] : Registers{0, 0, 0, 0};
    }

    std::uint32_t highestLeaf = 2;
    Registers signature{0, 0, 0, 0};
    std::vector<Registers> rounds;
    mutable std::vector<std::uint32_t> asked;

private:
    mutable std::size_t _round = 0;
};

struct Memory
{
    CacheInfo data{7, 7, 7}, instruction{7, 7, 7}, level2{7, 7, 7};
    int pageSize = 7;
};

Memory memoryOf(MadeUpCpuid const& cpuid)
{
    Memory memory;
    OsCpuDecode(cpuid).readMemory(memory.data, memory.instruction, memory.level2, memory.pageSize);
    return memory;
}

Memory memoryOf(std::vector<Registers> rounds)
{
    MadeUpCpuid cpuid;
    cpuid.rounds = std::move(rounds);
    return memoryOf(cpuid);
}

void expectCache(CacheInfo const& cache, int size, int associativity, int lineSize)
{
    EXPECT_EQ(cache.size, size);
    EXPECT_EQ(cache.associativity, associativity);
    EXPECT_EQ(cache.lineSize, lineSize);
}

/// Nothing was told; line sizes were left alone.
void expectStartingValues(Memory const& memory)
{
    expectCache(memory.data, 0, 1, 7);
    expectCache(memory.instruction, 0, 1, 7);
    expectCache(memory.level2, 0, 1, 7);
    EXPECT_EQ(memory.pageSize, 0);
}
}  // namespace

TEST(OsCpuInfo, architectureNumbersThatAreToldApart)
{
    for (unsigned number = 0; number < 70; ++number) {
        const OsCpuInfo::Type expected = number == 6   ? OsCpuInfo::IA64
                                         : number == 9 ? OsCpuInfo::AMD64
                                                       : OsCpuInfo::Unknown;
        EXPECT_EQ(Vn::typeOfArchitecture(number), expected) << number;
    }
    EXPECT_EQ(Vn::typeOfArchitecture(0xFFFF), OsCpuInfo::Unknown);
}

TEST(OsCpuInfo, namesOfTypes)
{
    EXPECT_STREQ(Vn::nameOfType(OsCpuInfo::MIPS), "MIPS");
    EXPECT_STREQ(Vn::nameOfType(OsCpuInfo::IA32), "IA32");
    EXPECT_STREQ(Vn::nameOfType(OsCpuInfo::IA64), "IA64");
    EXPECT_EQ(Vn::nameOfType(OsCpuInfo::AMD64), nullptr);
    EXPECT_STREQ(Vn::nameOfType(OsCpuInfo::Unknown), "UNKNOWN");
    EXPECT_EQ(Vn::nameOfType(static_cast<OsCpuInfo::Type>(5)), nullptr);
    EXPECT_EQ(Vn::nameOfType(static_cast<OsCpuInfo::Type>(7)), nullptr);
}

TEST(OsCpuInfo, theSignatureIsThreeFieldsOfFourBits)
{
    MadeUpCpuid cpuid;
    cpuid.signature = {0x0FF8ABC9, 0x111, 0x222, 0x333};  // extended family and model are not consulted
    int family = -1, model = -1, stepping = -1;
    OsCpuDecode(cpuid).readSignature(&family, &model, &stepping);
    EXPECT_EQ(family, 0xB);
    EXPECT_EQ(model, 0xC);
    EXPECT_EQ(stepping, 9);
    EXPECT_EQ(cpuid.asked, (std::vector<std::uint32_t>{0, 1}));
}

TEST(OsCpuInfo, theSignatureIsStoredWhereAskedFor)
{
    MadeUpCpuid cpuid;
    cpuid.highestLeaf = 1;
    cpuid.signature.first = 0x123;
    int value = -1;
    OsCpuDecode(cpuid).readSignature(&value, nullptr, nullptr);
    EXPECT_EQ(value, 1);
    OsCpuDecode(cpuid).readSignature(nullptr, &value, nullptr);
    EXPECT_EQ(value, 2);
    OsCpuDecode(cpuid).readSignature(nullptr, nullptr, &value);
    EXPECT_EQ(value, 3);
}

TEST(OsCpuInfo, withoutLeaf1TheSignatureIsLeftUntouched)
{
    MadeUpCpuid cpuid;
    cpuid.highestLeaf = 0;
    cpuid.signature.first = 0x123;
    int family = -1, model = -2, stepping = -3;
    OsCpuDecode(cpuid).readSignature(&family, &model, &stepping);
    EXPECT_EQ(family, -1);
    EXPECT_EQ(model, -2);
    EXPECT_EQ(stepping, -3);
    EXPECT_EQ(cpuid.asked, (std::vector<std::uint32_t>{0}));
}

TEST(OsCpuInfo, featuresAreBitsOfLeaf1)
{
    MadeUpCpuid cpuid;
    cpuid.signature = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 1u << 23};
    EXPECT_TRUE(OsCpuDecode(cpuid).hasFeature(OsCpuDecode::mmxBit));
    EXPECT_FALSE(OsCpuDecode(cpuid).hasFeature(OsCpuDecode::sseBit));
    cpuid.signature.fourth = 1u << 25;
    EXPECT_FALSE(OsCpuDecode(cpuid).hasFeature(OsCpuDecode::mmxBit));
    EXPECT_TRUE(OsCpuDecode(cpuid).hasFeature(OsCpuDecode::sseBit));
    cpuid.highestLeaf = 0;
    EXPECT_FALSE(OsCpuDecode(cpuid).hasFeature(OsCpuDecode::sseBit));
}

TEST(OsCpuInfo, withoutLeaf2NothingIsTold)
{
    for (std::uint32_t highest : {0u, 1u}) {
        MadeUpCpuid cpuid;
        cpuid.highestLeaf = highest;
        cpuid.rounds = {{0x0A060301, 0x42, 0, 0}};
        expectStartingValues(memoryOf(cpuid));
        EXPECT_EQ(cpuid.asked, (std::vector<std::uint32_t>{0}));
    }
}

TEST(OsCpuInfo, theTopBitOfTheFirstRegisterMakesTheAnswerVoid)
{
    expectStartingValues(memoryOf({{0x8A060301, 0x42, 0, 0}}));
    // The top bits of the others are not looked at: a byte of 0x82 there is a descriptor.
    expectCache(memoryOf({{0x00000001, 0x82000000, 0, 0}}).level2, 262144, 8, 32);
    expectCache(memoryOf({{0x00000001, 0, 0x82000000, 0}}).level2, 262144, 8, 32);
    expectCache(memoryOf({{0x00000001, 0, 0, 0x82000000}}).level2, 262144, 8, 32);
}

TEST(OsCpuInfo, eachDescriptorHasItsEffect)
{
    enum Kind
    {
        page,
        instruction,
        data,
        level2
    };
    const struct
    {
        std::uint32_t descriptor;
        Kind kind;
        int size, ways, line;
    } table[] = {
        {0x03, page, 4096, 0, 0},          {0x04, page, 4096, 0, 0},       {0x06, instruction, 8192, 4, 32},
        {0x08, instruction, 16384, 4, 32}, {0x0A, data, 8192, 2, 32},      {0x0C, data, 16384, 2, 32},
        {0x40, level2, 0, 1, 0},           {0x41, level2, 131072, 4, 32},  {0x42, level2, 262144, 4, 32},
        {0x43, level2, 524288, 4, 32},     {0x44, level2, 1048576, 4, 32}, {0x45, level2, 2097152, 4, 32},
        {0x82, level2, 262144, 8, 32},
    };
    bool isKnown[256] = {};
    for (auto const& row : table) {
        SCOPED_TRACE(row.descriptor);
        isKnown[row.descriptor] = true;
        const Memory memory = memoryOf({{1, row.descriptor << 8, 0, 0}});
        Memory expected;
        for (CacheInfo* cache : {&expected.data, &expected.instruction, &expected.level2})
            *cache = {0, 1, 7};
        expected.pageSize = row.kind == page ? row.size : 0;
        if (row.kind == instruction)
            expected.instruction = {row.size, row.ways, row.line};
        if (row.kind == data)
            expected.data = {row.size, row.ways, row.line};
        if (row.kind == level2)
            expected.level2 = {row.size, row.ways, row.line};
        EXPECT_EQ(memory.pageSize, expected.pageSize);
        expectCache(memory.data, expected.data.size, expected.data.associativity, expected.data.lineSize);
        expectCache(memory.instruction, expected.instruction.size, expected.instruction.associativity,
                    expected.instruction.lineSize);
        expectCache(memory.level2, expected.level2.size, expected.level2.associativity, expected.level2.lineSize);
    }
    for (std::uint32_t descriptor = 0; descriptor < 256; ++descriptor) {
        if (!isKnown[descriptor]) {
            SCOPED_TRACE(descriptor);
            expectStartingValues(memoryOf({{1, descriptor, 0, 0}}));
        }
    }
}

TEST(OsCpuInfo, aLaterDescriptorOverwritesAnEarlierOne)
{
    expectCache(memoryOf({{1, 0x4340, 0, 0}}).level2, 524288, 4, 32);
    expectCache(memoryOf({{1, 0x4043, 0, 0}}).level2, 0, 1, 0);
}

TEST(OsCpuInfo, bytesAreReadFromLowToHighAndRegistersInOrder)
{
    // Each place holds a further descriptor of the second level; the last one read stays.
    const Registers all{0x43424101, 0x82454443, 0x44434241, 0x40824544};
    expectCache(memoryOf({all}).level2, 0, 1, 0);
    expectCache(memoryOf({{0x43424101, 0, 0, 0}}).level2, 524288, 4, 32);
    expectCache(memoryOf({{0x41434201, 0, 0, 0}}).level2, 131072, 4, 32);
    expectCache(memoryOf({{0x43424101, 0x00000044, 0, 0}}).level2, 1048576, 4, 32);
    expectCache(memoryOf({{0x43424101, 0x44, 0x45, 0}}).level2, 2097152, 4, 32);
    expectCache(memoryOf({{0x43424101, 0x44, 0x45, 0x82}}).level2, 262144, 8, 32);
}

TEST(OsCpuInfo, theLowByteOfTheFirstRegisterIsNoDescriptor)
{
    EXPECT_EQ(memoryOf({{0x00000003, 0, 0, 0}}).pageSize, 0);  // three rounds, not a page size
    EXPECT_EQ(memoryOf({{0x00000301, 0, 0, 0}}).pageSize, 4096);
}

TEST(OsCpuInfo, laterRoundsReadTheThirdRegisterTwiceAndNeverTheFourth)
{
    const Registers first{2, 0, 0, 0};
    expectCache(memoryOf({first, {0x41000000, 0, 0, 0}}).level2, 131072, 4, 32);
    expectCache(memoryOf({first, {0, 0x42, 0, 0}}).level2, 262144, 4, 32);
    expectCache(memoryOf({first, {0, 0, 0x43, 0}}).level2, 524288, 4, 32);
    expectStartingValues(memoryOf({first, {0, 0, 0, 0x44}}));
    expectCache(memoryOf({first, {0, 0, 0x4340, 0x44}}).level2, 524288, 4, 32);
    // The top bit of a later first register voids nothing.
    expectCache(memoryOf({first, {0x82000000, 0, 0, 0}}).level2, 262144, 8, 32);
}

TEST(OsCpuInfo, asksAsOftenAsTheFirstAnswerSays)
{
    const struct
    {
        std::uint32_t rounds;
        std::size_t queries;  ///< of leaf 2
    } table[] = {{0, 1}, {1, 1}, {2, 2}, {3, 3}, {255, 255}};
    for (auto const& row : table) {
        MadeUpCpuid cpuid;
        cpuid.rounds = {{row.rounds, 0, 0, 0}, {77, 0, 0, 0}};
        memoryOf(cpuid);
        EXPECT_EQ(cpuid.asked.size(), 1 + row.queries) << row.rounds;
    }
}

VN_CHILD(cpuBeforeTheStart)
{
    std::cout << OsCpuInfo::getTypeName() << OsCpuInfo::hasMMX() << OsCpuInfo::hasSSE() << "\n";
    OsCpuInfo::Type type = OsCpuInfo::MIPS;
    OsCpuInfo::getDetailedType(&type, nullptr, nullptr, nullptr);
    std::cout << type << "\n";
    OsCpuInfo::getDetailedType(nullptr, nullptr, nullptr, nullptr);
    return 0;
}

TEST(OsCpuInfo, isUnknownBeforeTheStart)
{
    VnTest::expectOutput("cpuBeforeTheStart", "UNKNOWN00\n4\n");
}

VN_CHILD(cpuStarted)
{
    VnTest::start();
    OsCpuInfo::Type type = OsCpuInfo::MIPS;
    int family = -1, model = -1, stepping = -1;
    OsCpuInfo::getDetailedType(&type, &family, &model, &stepping);
    const bool isNamed = OsCpuInfo::getTypeName() != nullptr;
#if defined(__x86_64__)
    std::cout << (type == OsCpuInfo::AMD64) << !isNamed << OsCpuInfo::hasMMX() << OsCpuInfo::hasSSE() << "\n";
    std::cout << (family >= 0 && family <= 15) << (model >= 0 && model <= 15) << (stepping >= 0 && stepping <= 15);
#else
    std::cout << (type == OsCpuInfo::Unknown) << isNamed << !OsCpuInfo::hasMMX() << !OsCpuInfo::hasSSE() << "\n";
    std::cout << (family == -1) << (model == -1) << (stepping == -1);
#endif
    std::cout << "\n";
    int one = -1;
    OsCpuInfo::getDetailedType(nullptr, nullptr, &one, nullptr);
    std::cout << (one == model);
    OsCpuInfo::getDetailedType(nullptr, nullptr, nullptr, &one);
    std::cout << (one == stepping) << "\n";
    VnTest::stop();
    std::cout << (OsCpuInfo::getHwCounterFrequency() > 0) << "\n";  // the stop changes nothing
    return 0;
}

TEST(OsCpuInfo, knowsItsProcessorAfterTheStart)
{
    VnTest::expectOutput("cpuStarted", "1111\n111\n11\n1\n");
}
