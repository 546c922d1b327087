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
/// and the name is compared only the first time.
///
/// A module that is unloaded may leave its addresses to another one. So when a package goes, the owner erases its type by
/// the key that insert() gave, without a look at the type's information, or at least calls forgetAliases(): the address at
/// which a type was inserted is that of a package, and as lasting; all others go. Tests: tests/base/intypetabletest.cpp.
class InTypeTable
{
public:
    static constexpr unsigned none = 0xFFFFFFFF;

    /// What erase() needs of a type that may be gone by then.
    struct Key
    {
        std::type_info const* type = nullptr;  ///< an address to compare, not to look at
        std::uint32_t hash = 0;                ///< of the name
    };

    /// Adds `type` with its position and stores its key; false, and nothing changed, if it is there already. By address
    /// first: that answers most second insertions without a look at the name.
    bool insert(std::type_info const& type, unsigned position, Key* key = nullptr)
    {
        if (findByAddress(type) != none)
            return false;
        const std::uint32_t hash = hashOfName(type);
        const unsigned named = findByName(type, hash);
        if (named != none) {
            add(_aliases, hashOfAddress(&type), type, named);
            return false;
        }
        add(_byName, hash, type, position);
        add(_byAddress, hashOfAddress(&type), type, position);
        if (key != nullptr)
            *key = {&type, hash};
        return true;
    }

    /// Position of `type`, or `none`. Not const: it remembers the address.
    unsigned find(std::type_info const& type)
    {
        const unsigned position = findByAddress(type);
        if (position != none || _byName.used == 0)
            return position;
        const unsigned named = findByName(type, hashOfName(type));
        if (named != none)
            add(_aliases, hashOfAddress(&type), type, named);
        return named;
    }

    /// Removes the type that was inserted with that key, and forgets the aliases. Its information may be gone.
    void erase(Key const& key) noexcept
    {
        const auto isSame = [&key](Slot const& slot) { return slot.type == key.type; };
        remove(_byName, key.hash, isSame);
        remove(_byAddress, hashOfAddress(key.type), isSame);
        forgetAliases();
    }

    /// Forgets all addresses but those at which types were inserted.
    void forgetAliases() noexcept { _aliases = Table(); }

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
        _aliases = Table();
    }

private:
    struct Slot
    {
        std::type_info const* type = nullptr;  ///< null in an empty slot
        std::uint32_t hash = 0;
        unsigned position = 0;
    };

    /// Open addressing; the number of slots is a power of two, and at most half of them are used.
    struct Table
    {
        std::vector<Slot> slots;
        std::size_t used = 0;
    };

    static std::uint32_t hashOfAddress(std::type_info const* type)
    {
        // The odd factor spreads the address, whose low bits are all alike, over the high ones.
        const std::uint64_t spread = reinterpret_cast<std::uintptr_t>(type) * std::uint64_t{0x9E3779B97F4A7C15};
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
        const std::uint32_t hash = hashOfAddress(&type);
        const auto isSame = [&type](Slot const& slot) { return slot.type == &type; };
        const unsigned position = look(_byAddress, hash, isSame);
        return position != none ? position : look(_aliases, hash, isSame);
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

    /// Removes the slot that `isSame` accepts, if there is one. The slots behind it that only stand there because it was
    /// taken move up, so that no search ends too early.
    template <class IsSame>
    static void remove(Table& table, std::uint32_t hash, IsSame const& isSame) noexcept
    {
        if (table.slots.empty())
            return;
        const std::size_t mask = table.slots.size() - 1;
        std::size_t gap = hash & mask;
        while (table.slots[gap].type != nullptr && !isSame(table.slots[gap]))
            gap = (gap + 1) & mask;
        if (table.slots[gap].type == nullptr)
            return;
        for (std::size_t i = (gap + 1) & mask; table.slots[i].type != nullptr; i = (i + 1) & mask) {
            const std::size_t fromHome = (i - table.slots[i].hash) & mask;
            const std::size_t fromGap = (i - gap) & mask;
            if (fromHome < fromGap)
                continue;
            table.slots[gap] = table.slots[i];
            gap = i;
        }
        table.slots[gap] = Slot();
        --table.used;
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

    /// One slot for each type, by the address at which it was inserted.
    Table _byAddress;

    /// One slot for each other address that was asked for.
    Table _aliases;
};

}  // namespace Vn
