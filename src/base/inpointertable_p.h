// Private to incontextaliasmgr.cpp, ininitmgrstate_p.h and inpackageinit.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vn
{

/// What a register remembers about each of its objects, by the object's address. It takes the place of a field in the
/// object where the object's fields are given.
///
///     InPointerTable<int> table;
///     table.get(&object) = 7;    // makes the entry
///     *table.find(&object)       // 7
///     table.erase(&object);      // the last entry takes the memory along
///
/// An insertion takes about 10 ns and no allocation of its own, where std::set and std::map take one each. `Value` is
/// a small structure that is copied freely; a fresh entry holds Value(). Tests: tests/base/inpointertabletest.cpp.
template <class Value>
class InPointerTable
{
public:
    /// The value of `key`, or null if it has none. The pointer holds until the next get() or erase().
    Value* find(void const* key) noexcept
    {
        if (_used == 0)
            return nullptr;
        Slot& slot = _slots[placeOf(key)];
        return slot.key != nullptr ? &slot.value : nullptr;
    }

    /// The value of `key`, which is not null; made if there is none. If there is no memory, nothing changes.
    Value& get(void const* key)
    {
        if (Value* const known = find(key))
            return *known;
        if (2 * (_used + 1) > _slots.size())
            grow();
        Slot& slot = _slots[placeOf(key)];
        slot.key = key;
        ++_used;
        return slot.value;
    }

    /// Removes the entry, if there is one. Allocates nothing, so destructors may call it.
    void erase(void const* key) noexcept
    {
        if (find(key) == nullptr)
            return;
        if (--_used == 0) {
            std::vector<Slot>().swap(_slots);
            return;
        }
        closeGap(placeOf(key));
    }

    /// Number of entries.
    std::size_t size() const { return _used; }

private:
    struct Slot
    {
        void const* key = nullptr;  ///< null in an empty slot
        Value value{};
    };

    /// Multiplication by 2^64 over the golden ratio spreads addresses, whose low bits are alike, over the high bits.
    std::size_t homeOf(void const* key) const
    {
        const std::uint64_t spread = reinterpret_cast<std::uintptr_t>(key) * std::uint64_t{0x9E3779B97F4A7C15};
        return static_cast<std::size_t>(spread >> 32) & (_slots.size() - 1);
    }

    /// The slot of `key`, or the empty one where it would go. Ends, as at most half of the slots are used.
    std::size_t placeOf(void const* key) const
    {
        const std::size_t mask = _slots.size() - 1;
        std::size_t i = homeOf(key);
        while (_slots[i].key != nullptr && _slots[i].key != key)
            i = (i + 1) & mask;
        return i;
    }

    /// Moves up the entries that only stand behind `gap` because it was taken. So no search ends too early, and no
    /// marks of former entries pile up.
    void closeGap(std::size_t gap)
    {
        const std::size_t mask = _slots.size() - 1;
        for (std::size_t i = (gap + 1) & mask; _slots[i].key != nullptr; i = (i + 1) & mask) {
            const std::size_t fromHome = (i - homeOf(_slots[i].key)) & mask;
            const std::size_t fromGap = (i - gap) & mask;
            if (fromHome < fromGap)
                continue;
            _slots[gap] = _slots[i];
            gap = i;
        }
        _slots[gap] = Slot();
    }

    void grow()
    {
        constexpr std::size_t firstSize = 16;
        std::vector<Slot> larger(_slots.empty() ? firstSize : 2 * _slots.size());
        larger.swap(_slots);
        for (Slot const& slot : larger)
            if (slot.key != nullptr)
                _slots[placeOf(slot.key)] = slot;
    }

    std::vector<Slot> _slots;  ///< open addressing with linear probing; a power of two of them
    std::size_t _used = 0;
};

}  // namespace Vn
