// Private to incontextaliasmgr.cpp, ininitmgrstate_p.h, inpackageinit.cpp and invariable.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

namespace Vn
{

/// Key of an InTable: the address of an object.
class InAddressKey
{
public:
    InAddressKey() = default;
    InAddressKey(void const* address) : _address(address) {}

    bool isEmpty() const { return _address == nullptr; }

    /// Multiplication by 2^64 over the golden ratio spreads addresses, whose low bits are alike, over the high bits.
    std::uint32_t hash() const
    {
        const std::uint64_t spread = reinterpret_cast<std::uintptr_t>(_address) * std::uint64_t{0x9E3779B97F4A7C15};
        return static_cast<std::uint32_t>(spread >> 32);
    }

    bool operator==(InAddressKey const&) const = default;

private:
    void const* _address = nullptr;
};

/// Key of an InTable: a text that stays where it is as long as the entry exists. Keeps its hash, so that a growing
/// table reads no text again.
class InTextKey
{
public:
    InTextKey() = default;
    InTextKey(char const* text)
        : _text(text),
          _length(static_cast<std::uint32_t>(std::strlen(text))),
          _hash(static_cast<std::uint32_t>(std::hash<std::string_view>()({_text, _length})))
    {}

    bool isEmpty() const { return _text == nullptr; }
    std::uint32_t hash() const { return _hash; }
    char const* getText() const { return _text; }

    /// The same key with an equal text that lives longer.
    InTextKey withText(char const* text) const
    {
        InTextKey key = *this;
        key._text = text;
        return key;
    }

    bool operator==(InTextKey const& other) const
    {
        return _hash == other._hash && _length == other._length && std::memcmp(_text, other._text, _length) == 0;
    }

private:
    char const* _text = nullptr;
    std::uint32_t _length = 0;
    std::uint32_t _hash = 0;
};

/// A hash table for registers of thousands of objects, by the object's address or by its name.
///
///     InTable<InAddressKey, int> table;
///     table.get(&object) = 7;    // makes the entry
///     *table.find(&object)       // 7
///     table.erase(&object);      // the last entry takes the memory along
///
/// Entries stand in one array (open addressing, linear probing), so an insertion allocates nothing of its own, where
/// std::map and std::unordered_map allocate a node: that makes most of the time in which a program with a thousand
/// settings starts. `Value` is a small structure that is copied freely; a fresh entry holds Value().
/// Tests: tests/base/intabletest.cpp.
template <class Key, class Value>
class InTable
{
public:
    /// The value of `key`, or null if it has none. The pointer holds until the next get() or erase().
    Value* find(Key const& key) noexcept
    {
        if (_used == 0)
            return nullptr;
        Slot& slot = _slots[placeOf(key)];
        return slot.key.isEmpty() ? nullptr : &slot.value;
    }

    /// The value of `key`, which isn't empty; made if there is none. If there is no memory, nothing changes.
    Value& get(Key const& key)
    {
        if (_slots.empty())
            grow();
        std::size_t place = placeOf(key);
        if (!_slots[place].key.isEmpty())
            return _slots[place].value;
        if (2 * (_used + 1) > _slots.size()) {
            grow();
            place = placeOf(key);
        }
        _slots[place].key = key;
        ++_used;
        return _slots[place].value;
    }

    /// The key of an entry that exists, as it was first given: it may refer to another text than `key` does.
    Key const& keyOf(Key const& key) const { return _slots[placeOf(key)].key; }

    /// Removes the entry, if there is one. Allocates nothing, so destructors may call it.
    void erase(Key const& key) noexcept
    {
        if (_used == 0)
            return;
        const std::size_t place = placeOf(key);
        if (_slots[place].key.isEmpty())
            return;
        if (--_used == 0)
            std::vector<Slot>().swap(_slots);
        else
            closeGap(place);
    }

    /// Number of entries.
    std::size_t size() const { return _used; }

    /// Calls `action` with each value, in no particular order.
    template <class Action>
    void forEach(Action const& action) const
    {
        for (Slot const& slot : _slots)
            if (!slot.key.isEmpty())
                action(slot.value);
    }

private:
    struct Slot
    {
        Key key{};  ///< empty in an empty slot
        Value value{};
    };

    /// The slot of `key`, or the empty one where it would go. Ends, as at most half of the slots are used.
    std::size_t placeOf(Key const& key) const
    {
        const std::size_t mask = _slots.size() - 1;
        std::size_t i = key.hash() & mask;
        while (!_slots[i].key.isEmpty() && !(_slots[i].key == key))
            i = (i + 1) & mask;
        return i;
    }

    /// Moves up the entries that only stand behind `gap` because it was taken. So no search ends too early, and no
    /// marks of former entries pile up.
    void closeGap(std::size_t gap)
    {
        const std::size_t mask = _slots.size() - 1;
        for (std::size_t i = (gap + 1) & mask; !_slots[i].key.isEmpty(); i = (i + 1) & mask) {
            const std::size_t fromHome = (i - _slots[i].key.hash()) & mask;
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
            if (!slot.key.isEmpty())
                _slots[placeOf(slot.key)] = slot;
    }

    std::vector<Slot> _slots;  ///< a power of two of them
    std::size_t _used = 0;
};

}  // namespace Vn
