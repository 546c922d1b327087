// Private to lmlibrarieswindows.cpp.
#pragma once

#include <base/lmlibrary.h>

#include <cstdint>
#include <vector>

namespace Vn
{

/// The address space of a process as Windows describes it. A seam: the tests give LmWalk spaces that no system has.
class LmAddressSpace
{
public:
    /// The numbers of Windows: MEM_COMMIT, MEM_RESERVE, MEM_FREE.
    enum State : std::uint32_t
    {
        committed = 0x1000,
        reserved = 0x2000,
        unused = 0x10000
    };

    /// Consecutive pages of equal state and protection. What one call has allocated is one allocation; protecting
    /// parts of it in different ways divides it into regions, all with the same `allocationBase`.
    struct Region
    {
        std::uintptr_t base;
        std::uintptr_t allocationBase;
        std::uintptr_t size;
        std::uint32_t state;
        std::uint32_t protection;
        std::uint32_t allocationProtection;
    };

    /// Bytes for a module's name with its terminator.
    static constexpr std::size_t nameSize = 150;

    /// The region that holds `address`; false beyond the last one.
    virtual bool query(std::uintptr_t address, Region& region) const = 0;

    /// File of the module at `base`, cut and terminated; false if there is no module.
    virtual bool getModuleName(std::uintptr_t base, char (&name)[nameSize]) const = 0;

    /// Called for a state other than the three; the walk then ends.
    virtual void reportUnknownState() const = 0;

protected:
    ~LmAddressSpace() = default;
};

/// Finds the modules of an address space, going from allocation to allocation from address 0 on.
///
///     address  ->  find(): its allocation, measured       free memory counts as an allocation without blocks
///                  is there a module of that base?        then one LmLibrary, with one LmBlock for each region
///              ->  the end of the allocation
///
/// Other threads may map and unmap memory during a walk, so no query relies on an earlier one. Tests:
/// tests/base/lmlibrariestest.cpp.
class LmWalk
{
public:
    explicit LmWalk(LmAddressSpace const& space) : _space(space) {}

    /// Appends a library for each module. Ends at the first query that fails, which is the end of the address space.
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
                return;  // the end of the address space; without this test, a wrapped address would start over
            address = next;
        }
    }

    /// Windows' protection (PAGE_READONLY is 2, and so on) as a sum of LmBlock::Flags; 0 for no access or an unknown
    /// value. The mask takes off guard, no-cache and write-combine, which don't concern the kind of access.
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

    /// The block at an address and the allocation that it belongs to: its base, its size in bytes and its number of
    /// blocks. Free memory is an allocation of no blocks.
    struct Found
    {
        std::uintptr_t blockBase, blockSize;
        std::uint32_t blockProtection;
        std::uintptr_t base, size;
        std::size_t blocks;
    };

    /// False if there is nothing at the address. A reserved region has the protection that its allocation was made
    /// with.
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

    /// Adds up the regions of the allocation. The tests of size and address end it if a system reports a region of no
    /// size or one that wraps.
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

    /// Adds the regions from `address` on. The allocation may have changed since it was measured, so a failed query
    /// ends it early.
    void addBlocks(LmLibrary& library, std::uintptr_t address, Found block) const
    {
        const std::size_t count = block.blocks;
        library.reserveBlocks(count);
        // The first block has been found already; each further one is asked for at its own address.
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
