#pragma once

#include <atomic>
#include <cstdint>

namespace Vn
{

/// A position in a ring of `size` cells: a number that wraps.
///
///     Index index(1023);    // of LgRingIndex<1024>
///     ++index;              // 0
///     index - Index(1020)   // 4: steps from 1020 to here
///
/// One side of a ring moves its index and the other side watches it. The owner reads its own by get(), shows a step
/// by publish() and reads the other side's by watch(). All else isn't atomic: as a value, an index belongs to one
/// thread. Tests: tests/base/lgringindextest.cpp.
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
    constexpr std::uint32_t operator-(LgRingIndex from) const { return (_value - from._value) & mask; }

    /// Whether both are the same position.
    constexpr bool operator==(LgRingIndex const&) const = default;

    /// The other side's index. Acquire: without it this thread could look at cells from before the other side's step,
    /// so that a reader takes old text, or a writer fills a cell that is still being read.
    LgRingIndex watch() const
    {
        return LgRingIndex(std::atomic_ref(const_cast<std::uint32_t&>(_value)).load(std::memory_order_acquire));
    }

    /// Moves the own index where the other side can see it. Release: without it the step could be seen before what
    /// was done to the cells behind it.
    void publish(LgRingIndex index) { std::atomic_ref(_value).store(index._value, std::memory_order_release); }

private:
    std::uint32_t _value = 0;
};

}  // namespace Vn
