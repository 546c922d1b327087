#include <base/exinternalerror.h>
#include <base/prex.h>
#include <base/prperfcounter_p.h>
#include <base/prperfdata_p.h>

#include "expectthrow.h"
#include "perfblock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

using namespace VnTest;
using Vn::PrEx;
using Vn::PrPerfData;

static_assert(std::is_base_of_v<Vn::ExBase, PrEx>);

namespace
{
constexpr std::uint32_t number32 = 0x000;
constexpr std::uint32_t number64 = 0x100;
constexpr std::uint32_t impossible = 0x200;
constexpr std::uint32_t variable = 0x300;
constexpr std::uint32_t otherBits = 0x10410400;  // which say nothing of the size

/// Asks with a copy in an allocation that fits, so that the address sanitizer sees what is read behind it.
std::uint64_t valueIn(std::string const& block, unsigned object, unsigned counter, char const* instance)
{
    const std::unique_ptr<char[]> bytes(new char[block.size()]);
    block.copy(bytes.get(), block.size());
    return PrPerfData(bytes.get(), block.size()).getValue(object, counter, instance);
}

const std::vector<std::string> counters = {
    perfCounter(6, number64 | otherBits, 8), perfCounter(142, number32 | otherBits, 16),
    perfCounter(144, variable | otherBits, 8), perfCounter(146, impossible | otherBits, 8)};
const std::string values = perfValues({0x1122334455667788, 0xFFFFFFFFFFFFFFFF});
const std::string otherValues = perfValues({7, 8});
const std::string plain = perfObject(2, counters, -1, values);
const std::string many =
    perfObject(238, counters, 3,
               perfInstance("first", otherValues) + perfInstance("second", values) + perfInstance("", otherValues));
const std::string block = perfBlock({plain, many, perfObject(2, counters, 0, otherValues)});

void expectNoObject(std::string const& bytes, unsigned index, char const* text)
{
    expectThrow<PrEx::ExBadCounterObjectIndex, std::runtime_error>(
        [&] { valueIn(bytes, index, 6, ""); },
        (std::string("Request with illegal counter object index ") + text + ".").c_str());
}

void expectNoCounter(std::string const& bytes, unsigned object, unsigned index, char const* text)
{
    expectThrow<PrEx::ExBadCounterIndex, std::runtime_error>(
        [&] { valueIn(bytes, object, index, "second"); },
        (std::string("Request with illegal counter index ") + text + ".").c_str());
}

void expectNoInstance(std::string const& bytes, char const* name, std::string const& text)
{
    expectThrow<PrEx::ExBadCounterInstance, std::runtime_error>(
        [&] { valueIn(bytes, 238, 6, name); },
        ("Request with illegal counter instance name " + text + ".").c_str());
}

/// Whether the block gives a value or one of the stated exceptions; anything else ends the test.
bool isHarmless(std::string const& bytes, unsigned object, unsigned counter, char const* instance)
{
    try {
        valueIn(bytes, object, counter, instance);
    } catch (PrEx const&) {
    } catch (Vn::ExInternalError const&) {
    }
    return true;
}
}  // namespace

TEST(PrPerfCounter, readsBothSizes)
{
    EXPECT_EQ(valueIn(block, 2, 6, ""), 0x1122334455667788U);
    EXPECT_EQ(valueIn(block, 2, 142, ""), 0xFFFFFFFFU) << "zero-extended";
}

TEST(PrPerfCounter, anObjectWithoutInstancesIgnoresTheName)
{
    for (char const* name : {"", "second", "nobody", static_cast<char const*>(nullptr)})
        EXPECT_EQ(valueIn(block, 2, 6, name), 0x1122334455667788U);
    EXPECT_EQ(valueIn(perfBlock({perfObject(9, counters, 0, otherValues)}), 9, 6, "x"), 7U);
    EXPECT_EQ(valueIn(perfBlock({perfObject(9, counters, INT32_MIN, otherValues)}), 9, 6, "x"), 7U);
}

TEST(PrPerfCounter, findsAnInstanceByItsBytes)
{
    EXPECT_EQ(valueIn(block, 238, 6, "first"), 7U);
    EXPECT_EQ(valueIn(block, 238, 6, "second"), 0x1122334455667788U);
    EXPECT_EQ(valueIn(block, 238, 6, ""), 7U);
    EXPECT_EQ(valueIn(block, 238, 6, nullptr), 7U) << "null is as the empty name";
    for (char const* name : {"secon", "second ", "Second", "x"})
        expectNoInstance(block, name, name);
    // A wide name is compared as the narrow text that its first byte makes.
    const std::string wide =
        perfBlock({perfObject(238, counters, 1, perfInstance(std::string("_\0T\0", 4), values))});
    EXPECT_EQ(valueIn(wide, 238, 6, "_"), 0x1122334455667788U);
    expectNoInstance(wide, "_T", "_T");
}

TEST(PrPerfCounter, theFirstOfSeveralCounts)
{
    EXPECT_EQ(valueIn(block, 2, 6, ""), 0x1122334455667788U) << "the first object of the number";
    const std::string twice =
        perfBlock({perfObject(3, {perfCounter(1, number64, 8), perfCounter(1, number64, 16)}, 2,
                              perfInstance("a", perfValues({1, 2})) + perfInstance("a", perfValues({3, 4})))});
    EXPECT_EQ(valueIn(twice, 3, 1, "a"), 1U);
}

TEST(PrPerfCounter, whatIsNotThereIsNamed)
{
    expectNoObject(block, 4, "4");
    expectNoObject(block, 0xFFFFFFFF, "-1");
    expectNoObject(perfBlock({}), 2, "2");
    expectNoCounter(block, 2, 7, "7");
    expectNoCounter(block, 238, 0x80000000, "-2147483648");
    expectNoCounter(perfBlock({perfObject(2, {}, -1, values)}), 2, 6, "6");
    expectNoInstance(perfBlock({perfObject(238, counters, 1, "")}), "second", "second");
    const std::string start = "Request with illegal counter instance name ";
    expectThrow<PrEx::ExBadCounterInstance, std::runtime_error>(
        [] { valueIn(block, 238, 6, std::string(3000, 'n').c_str()); },
        (start + std::string(1023 - start.size(), 'n')).c_str());
}

TEST(PrPerfCounter, sizesThatCantBeRead)
{
    expectThrow<PrEx::ExUnsupported, std::runtime_error>([] { valueIn(block, 2, 144, ""); },
                                                         "Functionality unsupported by profiling package.");
    EXPECT_THROW(valueIn(block, 2, 146, ""), Vn::ExInternalError);
    EXPECT_THROW(valueIn(block, 238, 146, "first"), Vn::ExInternalError);
}

TEST(PrPerfCounter, namesAtTheLimitsOfTheBlock)
{
    // The last instance's name has no terminator and ends with the block, so its counters lie behind that.
    const std::string whole = perfBlock({perfObject(238, counters, 1, perfInstance("second", ""))});
    const std::string cut = whole.substr(0, whole.size() - 1);
    expectNoCounter(patched(cut, 20, static_cast<std::uint32_t>(cut.size())), 238, 6, "6");
}

TEST(PrPerfCounter, lengthsThatLeadNowhereEndTheWalk)
{
    constexpr std::size_t first = 88;  // the first object
    const std::size_t second = first + plain.size();
    const std::size_t instance = second + 64 + 4 * 40;
    for (std::uint32_t length : {0U, 1U, 3U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SCOPED_TRACE(length);
        EXPECT_TRUE(isHarmless(patched(block, first, length), 4, 6, ""));
        EXPECT_TRUE(isHarmless(patched(block, first + 4, length), 2, 6, ""));
        EXPECT_TRUE(isHarmless(patched(block, first + 8, length), 2, 9, ""));
        EXPECT_TRUE(isHarmless(patched(block, first + 64, length), 2, 142, ""));
        EXPECT_TRUE(isHarmless(patched(block, first + 64 + 36, length), 2, 6, ""));
        EXPECT_TRUE(isHarmless(patched(block, second, length), 238, 6, "x"));
        EXPECT_TRUE(isHarmless(patched(block, second + 4, length), 238, 6, "second"));
        EXPECT_TRUE(isHarmless(patched(block, instance, length), 238, 6, "second"));
        EXPECT_TRUE(isHarmless(patched(block, instance + 16, length), 238, 6, "second"));
        EXPECT_TRUE(isHarmless(patched(block, instance + 24 + 6, length), 238, 6, "second"));
        EXPECT_TRUE(isHarmless(patched(block, 20, length), 9, 6, ""));
        EXPECT_TRUE(isHarmless(patched(block, 24, length), 9, 6, ""));
    }
    expectNoObject(patched(block, first, 0), 4, "4");
    expectNoObject(patched(block, 20, 0), 2, "2");
    expectNoCounter(patched(block, first + 64, 0), 2, 142, "142");
    expectNoCounter(patched(block, first + 64 + 36, 0xFFFFFFFF), 2, 6, "6");
    expectNoInstance(patched(patched(block, instance, 0), instance, 0), "nobody", "nobody");
}

TEST(PrPerfCounter, everyCutBlockIsHarmless)
{
    for (std::size_t size = 0; size < block.size(); ++size) {
        const std::string cut = block.substr(0, size);
        EXPECT_TRUE(isHarmless(cut, 2, 142, ""));
        EXPECT_TRUE(isHarmless(cut, 238, 6, "second"));
        EXPECT_TRUE(isHarmless(cut, 238, 142, "nobody"));
    }
}

TEST(PrPerfCounter, everyChangedNumberIsHarmless)
{
    std::mt19937 random(11);
    for (std::size_t offset = 0; offset + 4 <= block.size(); offset += 4) {
        for (std::uint32_t value : {0U, 4U, 0x80000000U, static_cast<std::uint32_t>(block.size()),
                                    static_cast<std::uint32_t>(random())}) {
            const std::string changed = patched(block, offset, value);
            EXPECT_TRUE(isHarmless(changed, 2, 142, ""));
            EXPECT_TRUE(isHarmless(changed, 238, 6, "second"));
        }
    }
}

TEST(PrPerfCounter, theBufferGrowsUntilTheDataFit)
{
    for (std::uint32_t needed : {1U, 8192U, 8193U, 9216U, 9217U, 50000U}) {
        SCOPED_TRACE(needed);
        std::vector<std::uint32_t> asked;
        const Vn::PrPerfBuffer buffer = Vn::fetchPerfData([&](char* bytes, std::uint32_t size) -> long {
            asked.push_back(size);
            if (size < needed) {
                std::memset(bytes, 0xEE, size);
                return 234;
            }
            block.copy(bytes, size);
            return 0;
        });
        for (std::size_t i = 0; i < asked.size(); ++i)
            EXPECT_EQ(asked[i], 8192 + 1024 * i);
        EXPECT_GE(asked.back(), needed);
        EXPECT_LT(asked.back(), std::max(needed + 1024, 8193U));
        EXPECT_EQ(buffer.size, asked.back());
        EXPECT_EQ(PrPerfData(buffer.bytes.get(), buffer.size).getValue(238, 6, "second"), 0x1122334455667788U);
    }
}

TEST(PrPerfCounter, aQueryThatFailsGivesNoObjects)
{
    const Vn::PrPerfBuffer buffer = Vn::fetchPerfData([](char*, std::uint32_t) { return 5L; });
    EXPECT_THROW(PrPerfData(buffer.bytes.get(), buffer.size).getValue(2, 6, ""), PrEx::ExBadCounterObjectIndex);
}

TEST(PrPerfCounter, aQueryThatAlwaysWantsMoreEnds)
{
    std::vector<std::uint32_t> sizes;
    const auto wantMore = [&sizes](char*, std::uint32_t size) {
        sizes.push_back(size);
        return 234L;
    };
    EXPECT_THROW(Vn::fetchPerfData(wantMore, 65536), Vn::ExInternalError);
    EXPECT_EQ(sizes.size(), 57u);
    EXPECT_EQ(sizes.front(), 8192u);
    EXPECT_EQ(sizes.back(), 65536u);
}

#if defined(_WIN32)
TEST(PrPerfCounter, asksTheSystem)
{
    // Wine has no objects, and Windows none of this number.
    expectThrow<PrEx::ExBadCounterObjectIndex, std::runtime_error>(
        [] { Vn::PrPerfCounter::getValue(0x7FFFFFF0, 6, "0"); },
        "Request with illegal counter object index 2147483632.");
}
#endif
