// Private to lmlibrarieswindows.cpp.
#pragma once

#include <base/lmlibrary.h>

#include <cstdint>
#include <vector>

namespace Vn
{

/// The address space of a process, as Windows tells of it.
class LmAddressSpace
{
public:
    enum State : std::uint32_t
    {
        committed = 0x1000,
        reserved = 0x2000,
        unused = 0x10000
    };

    /// Pages that are alike.
    struct Region
    {
        std::uintptr_t base;
        std::uintptr_t allocationBase;
        std::uintptr_t size;
        std::uint32_t state;
        std::uint32_t protection;
        std::uint32_t allocationProtection;
    };

    static constexpr std::size_t nameSize = 150;

    /// The region that holds `address`; false beyond the last one.
    virtual bool query(std::uintptr_t address, Region& region) const = 0;

    /// File of the module at `base`, cut and terminated; false if there is no module.
    virtual bool getModuleName(std::uintptr_t base, char (&name)[nameSize]) const = 0;

    /// A state that no system should know.
    virtual void reportUnknownState() const = 0;

protected:
    ~LmAddressSpace() = default;
};

/// Finds the modules of an address space, from its beginning to its end.
class LmWalk
{
public:
    explicit LmWalk(LmAddressSpace const& space) : _space(space) {}

    void addModules(std::vector<LmLibrary>& libraries) const
    {
        std::uintptr_t address = 0;
        Found found;
        while (find(address, found)) {
            char name[LmAddressSpace::nameSize];
            if (found.base != 0 && _space.getModuleName(found.base, name)) {
                libraries.emplace_back(found.base);
                libraries.back().setPath(name);
                addBlocks(libraries.back(), address, found);
            }
            const std::uintptr_t next = found.base + found.size;
            if (next <= address)
                return;  // the end of the address space, or a system that leads in a circle
            address = next;
        }
    }

    /// For the flags guard, no-cache and write-combine, which say nothing about the access.
    static unsigned flagsOf(std::uint32_t protection)
    {
        switch (protection & ~0x700u) {
        case 0x02:
            return LmBlock::Read;
        case 0x04:
            return LmBlock::Read | LmBlock::Write;
        case 0x08:
            return LmBlock::Read | LmBlock::Write | LmBlock::CopyOnWrite;
        case 0x10:
            return LmBlock::Execute;
        case 0x20:
            return LmBlock::Execute | LmBlock::Read;
        case 0x40:
            return LmBlock::Execute | LmBlock::Read | LmBlock::Write;
        case 0x80:
            return LmBlock::Execute | LmBlock::Read | LmBlock::Write | LmBlock::CopyOnWrite;
        default:
            return 0;
        }
    }

private:
    using Region = LmAddressSpace::Region;

    /// The block at an address and the allocation that it belongs to.
    struct Found
    {
        std::uintptr_t blockBase, blockSize;
        std::uint32_t blockProtection;
        std::uintptr_t base, size;
        std::size_t blocks;
    };

    bool find(std::uintptr_t address, Found& found) const
    {
        Region region;
        if (!_space.query(address, region))
            return false;
        switch (region.state) {
        case LmAddressSpace::committed:
            found = {region.base, region.size, region.protection, region.allocationBase, 0, 0};
            break;
        case LmAddressSpace::reserved:
            found = {region.base, region.size, region.allocationProtection, region.allocationBase, 0, 0};
            break;
        case LmAddressSpace::unused:
            found = {0, 0, 0, region.base, region.size, 0};
            return true;
        default:
            _space.reportUnknownState();
            return false;
        }
        measure(found);
        return true;
    }

    /// Adds up the regions of the allocation.
    void measure(Found& found) const
    {
        Region region;
        std::uintptr_t address = found.base;
        while (_space.query(address, region) && region.state != LmAddressSpace::unused &&
               region.allocationBase == found.base && region.size != 0) {
            found.size += region.size;
            ++found.blocks;
            if (address + region.size < address)
                return;
            address += region.size;
        }
    }

    void addBlocks(LmLibrary& library, std::uintptr_t address, Found block) const
    {
        const std::size_t count = block.blocks;
        library.reserveBlocks(count);
        for (std::size_t i = 0; i < count; ++i) {
            library.addBlock(LmBlock(block.blockBase, block.blockSize, flagsOf(block.blockProtection)));
            address += block.blockSize;
            if (i + 1 < count && !find(address, block))
                return;
        }
    }

    LmAddressSpace const& _space;
};

}  // namespace Vn
