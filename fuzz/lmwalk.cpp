// The walk over an address space of any regions. In one that stands still, each allocation whose base has a module becomes one
// library, with its regions as blocks; in one that answers otherwise at each question the walk ends all the same.
#include <base/lmwalk_p.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{
using Region = Vn::LmAddressSpace::Region;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

constexpr std::uintptr_t page = 0x1000;
constexpr std::uint32_t states[] = {Vn::LmAddressSpace::committed, Vn::LmAddressSpace::reserved,
                                    Vn::LmAddressSpace::unused};

/// Which bases have a module: any rule will do.
bool hasModule(std::uintptr_t base)
{
    return base / page % 3 != 0;
}

void nameOf(std::uintptr_t base, char (&name)[Vn::LmAddressSpace::nameSize])
{
    std::memset(name, 'm', sizeof name);
    name[base / page % sizeof name] = '\0';
    name[sizeof name - 1] = '\0';
}

/// Regions one behind the other from address 0 on.
class Still final : public Vn::LmAddressSpace
{
public:
    /// A byte for each region: state, pages, whether it begins an allocation, protection.
    Still(std::uint8_t const* data, std::size_t size)
    {
        std::uintptr_t address = 0;
        std::uintptr_t allocation = 0;
        bool wasUnused = true;
        for (std::size_t i = 0; i < size; ++i) {
            const std::uint32_t state = states[data[i] % 3];
            const std::uintptr_t length = (1 + data[i] / 4 % 8) * page;
            const bool isUnused = state == unused;
            if (isUnused || wasUnused || (data[i] & 0x80) != 0)
                allocation = address;
            wasUnused = isUnused;
            const std::uint32_t protection = 1u << (data[i] >> 4 & 7);
            regions.push_back({address, allocation, length, state, protection, 0x20});
            address += length;
        }
    }

    bool query(std::uintptr_t address, Region& region) const override
    {
        for (Region const& candidate : regions)
            if (address >= candidate.base && address - candidate.base < candidate.size) {
                region = candidate;
                return true;
            }
        return false;
    }
    bool getModuleName(std::uintptr_t base, char (&name)[nameSize]) const override
    {
        nameOf(base, name);
        return hasModule(base);
    }
    void reportUnknownState() const override { std::abort(); }

    std::vector<Region> regions;
};

/// The next answer, whatever is asked; none when they have run out.
class Restless final : public Vn::LmAddressSpace
{
public:
    Restless(std::uint8_t const* data, std::size_t size) : _data(data), _size(size) {}

    bool query(std::uintptr_t, Region& region) const override
    {
        std::uint64_t words[4];
        if (_at + sizeof words > _size)
            return false;
        std::memcpy(words, _data + _at, sizeof words);
        _at += sizeof words;
        region = {words[0],
                  words[1],
                  words[2],
                  words[3] % 5 < 3 ? states[words[3] % 5] : static_cast<std::uint32_t>(words[3]),
                  static_cast<std::uint32_t>(words[3] >> 8),
                  static_cast<std::uint32_t>(words[3] >> 16)};
        return true;
    }
    bool getModuleName(std::uintptr_t base, char (&name)[nameSize]) const override
    {
        nameOf(base, name);
        return hasModule(base);
    }
    void reportUnknownState() const override {}

private:
    std::uint8_t const* _data;
    std::size_t _size;
    mutable std::size_t _at = 0;
};

/// From the list of regions and not by questions. Free memory that a module is named for has no blocks.
std::vector<Vn::LmLibrary> reckon(std::vector<Region> const& regions)
{
    std::vector<Vn::LmLibrary> libraries;
    for (std::size_t i = 0; i < regions.size();) {
        const std::uintptr_t base = regions[i].allocationBase;
        std::size_t end = i + 1;
        const bool isUnused = regions[i].state == Vn::LmAddressSpace::unused;
        while (!isUnused && end < regions.size() && regions[end].allocationBase == base &&
               regions[end].state != Vn::LmAddressSpace::unused)
            ++end;
        if (base != 0 && hasModule(base)) {
            char name[Vn::LmAddressSpace::nameSize];
            nameOf(base, name);
            libraries.emplace_back(base);
            libraries.back().setPath(name);
            for (std::size_t k = i; k < end && !isUnused; ++k) {
                const bool isReserved = regions[k].state == Vn::LmAddressSpace::reserved;
                libraries.back().addBlock(
                    Vn::LmBlock(regions[k].base, regions[k].size,
                                Vn::LmWalk::flagsOf(isReserved ? 0x20 : regions[k].protection)));
            }
        }
        i = end;
    }
    return libraries;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const Still still(data, size < 256 ? size : 256);
    std::vector<Vn::LmLibrary> found;
    Vn::LmWalk(still).addModules(found);
    check(found == reckon(still.regions));

    const Restless restless(data, size);
    std::vector<Vn::LmLibrary> any;
    Vn::LmWalk(restless).addModules(any);
    check(any.size() <= size);
    return 0;
}
