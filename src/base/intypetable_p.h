// Private to inbatch_p.h and ininitmgrstate_p.h.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <typeinfo>
#include <vector>

namespace Vn
{

/// Positions by type, for thousands of packages.
///
///     table.insert(typeid(A), 0)    // true
///     table.find(typeid(A))         // 0
///     table.find(typeid(B))         // none
///
/// Types are equal by name, since each module may have a type's information at an address of its own. But hashing and
/// comparing names is slow, and nearly always the address decides. So each address that was asked for is remembered,
/// and the name is compared only the first time. A module that is unloaded may leave its addresses to another one:
/// the owner clears the table whenever a package is destroyed. Tests: tests/base/intypetabletest.cpp.
class InTypeTable
{
public:
    static constexpr unsigned none = 0xFFFFFFFF;

    /// Adds `type` with its position; false, and nothing changed, if it is there already. By address first: that
    /// answers most second insertions without a look at the name.
    bool insert(std::type_info const& type, unsigned position)
    {
        if (findByAddress(type) != none)
            return false;
        const std::uint32_t hash = hashOfName(type);
        const unsigned named = findByName(type, hash);
        if (named == none)
            add(_byName, hash, type, position);
        add(_byAddress, hashOfAddress(type), type, named == none ? position : named);
        return named == none;
    }

    /// Position of `type`, or `none`. Not const: it remembers the address.
    unsigned find(std::type_info const& type)
    {
        const unsigned position = findByAddress(type);
        if (position != none || _byName.used == 0)
            return position;
        const unsigned named = findByName(type, hashOfName(type));
        if (named != none)
            add(_byAddress, hashOfAddress(type), type, named);
        return named;
    }

    /// Makes room for `count` types in all, so that adding them moves none.
    void reserve(std::size_t count)
    {
        const std::size_t slots = std::bit_ceil(2 * count);
        for (Table* table : {&_byName, &_byAddress})
            if (slots > table->slots.size())
                resize(*table, slots);
    }

    /// Forgets all types and gives the memory back.
    void clear()
    {
        _byName = Table();
        _byAddress = Table();
    }

private:
    struct Slot
    {
        std::type_info const* type;  ///< null in an empty slot
        std::uint32_t hash;
        unsigned position;
    };

    /// Open addressing; the number of slots is a power of two, and at most half of them are used.
    struct Table
    {
        std::vector<Slot> slots;
        std::size_t used = 0;
    };

    static std::uint32_t hashOfAddress(std::type_info const& type)
    {
        // The odd factor spreads the address, whose low bits are all alike, over the high ones.
        const std::uint64_t spread = reinterpret_cast<std::uintptr_t>(&type) * std::uint64_t{0x9E3779B97F4A7C15};
        return static_cast<std::uint32_t>(spread >> 32);
    }

    /// The same in all modules, since it is made from the name.
    static std::uint32_t hashOfName(std::type_info const& type)
    {
        return static_cast<std::uint32_t>(type.hash_code());
    }

    /// Quick, and right if it finds something; `none` only says that this address is new.
    unsigned findByAddress(std::type_info const& type) const
    {
        return look(_byAddress, hashOfAddress(type), [&type](Slot const& slot) { return slot.type == &type; });
    }

    /// Compares by type_info's own equality, which compares names across modules.
    unsigned findByName(std::type_info const& type, std::uint32_t hash) const
    {
        return look(_byName, hash, [&type](Slot const& slot) { return *slot.type == type; });
    }

    /// Position of the slot that `isSame` accepts. Ends at an empty slot, which exists as at most half are used.
    template <class IsSame>
    static unsigned look(Table const& table, std::uint32_t hash, IsSame const& isSame)
    {
        if (table.slots.empty())
            return none;
        const std::size_t mask = table.slots.size() - 1;
        for (std::size_t i = hash & mask; table.slots[i].type != nullptr; i = (i + 1) & mask)
            if (table.slots[i].hash == hash && isSame(table.slots[i]))
                return table.slots[i].position;
        return none;
    }

    /// Adds a slot that isn't there yet, and doubles the table before it would be more than half full.
    static void add(Table& table, std::uint32_t hash, std::type_info const& type, unsigned position)
    {
        if (2 * (table.used + 1) > table.slots.size())
            resize(table, table.slots.empty() ? 64 : 2 * table.slots.size());
        put(table.slots, {&type, hash, position});
        ++table.used;
    }

    /// Moves all slots to a table of `slots` places, a power of two.
    static void resize(Table& table, std::size_t slots)
    {
        std::vector<Slot> larger(slots);
        for (Slot const& slot : table.slots)
            if (slot.type != nullptr)
                put(larger, slot);
        table.slots.swap(larger);
    }

    /// Linear probing: the next empty slot behind the one that the hash names.
    static void put(std::vector<Slot>& slots, Slot const& slot)
    {
        const std::size_t mask = slots.size() - 1;
        std::size_t i = slot.hash & mask;
        while (slots[i].type != nullptr)
            i = (i + 1) & mask;
        slots[i] = slot;
    }

    /// One slot for each type.
    Table _byName;

    /// One slot for each address asked for.
    Table _byAddress;
};

}  // namespace Vn
