// Registers of processors that nobody has built: the decoder asks for no leaf beyond the highest one, and caches and page size
// are those of the table of descriptors, reckoned here from a list of the bytes.
#include <base/oscpudecode_p.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace
{
using Cache = Vn::OsCpuInfo::CacheInfo;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

class Made final : public Vn::OsCpuid
{
public:
    Registers query(std::uint32_t leaf) const override
    {
        check(leaf == 0 || leaf <= leaves[0].first);
        check(leaf < 3);
        return leaves[leaf];
    }
    Registers leaves[3];
};

enum Place
{
    page,
    code,
    data1,
    second
};

struct Row
{
    Place place;
    int size, ways, line;
};

const std::map<unsigned, Row> table = {
    {0x03, {page, 4096, 0, 0}},      {0x04, {page, 4096, 0, 0}},       {0x06, {code, 8192, 4, 32}},
    {0x08, {code, 16384, 4, 32}},    {0x0A, {data1, 8192, 2, 32}},     {0x0C, {data1, 16384, 2, 32}},
    {0x40, {second, 0, 1, 0}},       {0x41, {second, 131072, 4, 32}},  {0x42, {second, 262144, 4, 32}},
    {0x43, {second, 524288, 4, 32}}, {0x44, {second, 1048576, 4, 32}}, {0x45, {second, 2097152, 4, 32}},
    {0x82, {second, 262144, 8, 32}},
};

/// The bytes that count, in their order. Behind the first round the third register stands for the fourth as well.
std::vector<unsigned> descriptorsOf(Made const& made)
{
    std::vector<unsigned> bytes;
    Vn::OsCpuid::Registers const& all = made.leaves[2];
    if (made.leaves[0].first < 2 || all.first >= 0x80000000u)
        return bytes;
    const auto add = [&bytes](std::uint32_t value, int from) {
        for (int i = from; i < 4; ++i)
            bytes.push_back(value >> 8 * i & 0xFF);
    };
    for (unsigned round = 0; round == 0 || round < (all.first & 0xFF); ++round) {
        add(all.first, 1);
        add(all.second, 0);
        add(all.third, 0);
        add(round == 0 ? all.fourth : all.third, 0);
    }
    return bytes;
}

bool isEqual(Cache const& left, Cache const& right)
{
    return left.size == right.size && left.associativity == right.associativity && left.lineSize == right.lineSize;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Made made;
    std::uint8_t bytes[sizeof made.leaves] = {};
    std::memcpy(bytes, data, size < sizeof bytes ? size : sizeof bytes);
    std::memcpy(made.leaves, bytes, sizeof bytes);
    // The low byte alone: the highest leaf of a real processor is small.
    made.leaves[0].first &= 0xFF;
    const Vn::OsCpuDecode decode(made);

    Cache caches[3] = {{7, 7, 7}, {7, 7, 7}, {7, 7, 7}};
    int pageSize = 7;
    decode.readMemory(caches[0], caches[1], caches[2], pageSize);
    Cache expected[3] = {{0, 1, 7}, {0, 1, 7}, {0, 1, 7}};
    int expectedPage = 0;
    for (unsigned byte : descriptorsOf(made)) {
        const auto found = table.find(byte);
        if (found == table.end())
            continue;
        Row const& row = found->second;
        if (row.place == page)
            expectedPage = row.size;
        else
            expected[row.place == data1 ? 0 : row.place == code ? 1 : 2] = {row.size, row.ways, row.line};
    }
    check(pageSize == expectedPage);
    for (int i = 0; i < 3; ++i)
        check(isEqual(caches[i], expected[i]));

    int family = -1, model = -1, stepping = -1;
    decode.readSignature(&family, &model, &stepping);
    const std::uint32_t signature = made.leaves[1].first;
    if (made.leaves[0].first == 0)
        check(family == -1 && model == -1 && stepping == -1);
    else
        check(static_cast<std::uint32_t>(family << 8 | model << 4 | stepping) == (signature & 0xFFF));
    decode.readSignature(nullptr, nullptr, nullptr);
    for (unsigned bit : {Vn::OsCpuDecode::mmxBit, Vn::OsCpuDecode::sseBit})
        check(decode.hasFeature(bit) == (made.leaves[0].first != 0 && (made.leaves[1].fourth & 1u << bit) != 0));
    return 0;
}
