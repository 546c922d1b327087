#pragma once

#include <cstdint>

namespace Vn
{

/// A position in a ring of `size` cells: a number that wraps.
///
///     Index index(1023);    // of LgRingIndex<1024>
///     ++index;              // 0
///     index - Index(1020)   // 4: steps from 1020 to here
///
/// Each index of a ring has one thread that moves it, and another one that looks at it. The first reads it by get() and
/// moves it by storeRelease(); the second reads it by loadAcquire(). All else isn't atomic: as a value, an index
/// belongs to one thread. Tests: tests/base/lgringindextest.cpp.
template <std::uint32_t size>
class LgRingIndex
{
    static_assert(size != 0 && (size & (size - 1)) == 0, "a power of two wraps by a mask");

public:
    /// Largest position.
    static constexpr std::uint32_t mask = size - 1;

    /// Position 0.
    constexpr LgRingIndex() = default;

    /// `value` modulo `size`.
    constexpr explicit LgRingIndex(std::uint32_t value) : _value(value & mask) {}

    /// The position, from 0 to `mask`.
    constexpr std::uint32_t get() const { return _value; }

    /// @{
    /// One step on or back; position `mask` is next to 0.
    constexpr LgRingIndex& operator++() { return *this = *this + 1; }
    constexpr LgRingIndex& operator--() { return *this = *this - 1; }
    constexpr LgRingIndex operator++(int)
    {
        const LgRingIndex before = *this;
        ++*this;
        return before;
    }
    constexpr LgRingIndex operator--(int)
    {
        const LgRingIndex before = *this;
        --*this;
        return before;
    }
    /// @}

    /// @{
    /// `count` steps on or back.
    constexpr LgRingIndex operator+(std::uint32_t count) const { return LgRingIndex(_value + count); }
    constexpr LgRingIndex operator-(std::uint32_t count) const { return LgRingIndex(_value - count); }
    /// @}

    /// Steps from `from` up to this one, below `size`.
    ///
    ///     Index(3) - Index(1020)  ->  7, of LgRingIndex<1024>
    ///     Index(3) - Index(3)     ->  0, whether the ring is empty or its writer has gone round it
    constexpr std::uint32_t operator-(LgRingIndex from) const { return (_value - from._value) & mask; }

    /// Whether both are the same position.
    constexpr bool operator==(LgRingIndex const&) const = default;

    /// The other side's index. Acquire: without it this thread could look at cells from before the other side's step,
    /// so that a reader takes old text, or a writer fills a cell that is still being read.
    LgRingIndex loadAcquire() const { return LgRingIndex(__atomic_load_n(&_value, __ATOMIC_ACQUIRE)); }

    /// Moves this thread's own index where the other side can see it. Release: without it the step could be seen before
    /// what was done to the cells behind it.
    void storeRelease(LgRingIndex index) { __atomic_store_n(&_value, index._value, __ATOMIC_RELEASE); }

private:
    std::uint32_t _value = 0;
};

}  // namespace Vn
