// Included by the compiler into every source of a tree of mutants (tools/mutate.py): each place of a small change asks here
// whether its change is the one of this process.
#pragma once

#if __cplusplus >= 202002L  // CMake tries the compiler without
#    include <type_traits>

// The number of the change that this process makes; nowhere a change bears 0.
extern "C" unsigned vnMutantChosen;
// A byte for each change, set where its place has been run; null if nobody asks. Processes share it.
extern "C" unsigned char* vnMutantReached;

namespace vnmutant
{

inline bool active(unsigned change) noexcept
{
    if (vnMutantReached) [[unlikely]] {
        vnMutantReached[change] = 1;
    }
    return change == vnMutantChosen;
}

/// Whether the change is made. What the compiler computes is never changed.
constexpr bool on(unsigned change) noexcept
{
    return !std::is_constant_evaluated() && active(change);
}

constexpr bool flip(unsigned change, bool value) noexcept
{
    return on(change) ? !value : value;
}

constexpr bool yes(unsigned change, bool value) noexcept
{
    return on(change) || value;
}

constexpr bool no(unsigned change, bool value) noexcept
{
    return !on(change) && value;
}

template <typename T>
constexpr T oneMore(unsigned change, T value) noexcept
{
    if constexpr (std::is_same_v<T, bool>) {
        return on(change) ? !value : value;
    } else {
        return on(change) ? static_cast<T>(value + 1) : value;
    }
}

template <typename T>
constexpr T& one(unsigned change, T& usual, T& other) noexcept
{
    return on(change) ? other : usual;
}

// Each of these takes the numbers of two changes, `change` and the one behind it: the limit, and the opposite.
template <typename A, typename B>
constexpr bool less(unsigned change, A const& a, B const& b)
{
    const bool limit = on(change), opposite = on(change + 1);
    return limit ? a <= b : opposite ? a >= b : a < b;
}

template <typename A, typename B>
constexpr bool greater(unsigned change, A const& a, B const& b)
{
    const bool limit = on(change), opposite = on(change + 1);
    return limit ? a >= b : opposite ? a <= b : a > b;
}

template <typename A, typename B>
constexpr bool notGreater(unsigned change, A const& a, B const& b)
{
    const bool limit = on(change), opposite = on(change + 1);
    return limit ? a < b : opposite ? a > b : a <= b;
}

template <typename A, typename B>
constexpr bool notLess(unsigned change, A const& a, B const& b)
{
    const bool limit = on(change), opposite = on(change + 1);
    return limit ? a > b : opposite ? a < b : a >= b;
}

template <typename A, typename B>
constexpr bool equal(unsigned change, A const& a, B const& b)
{
    return on(change) ? a != b : a == b;
}

template <typename A, typename B>
constexpr bool different(unsigned change, A const& a, B const& b)
{
    return on(change) ? a == b : a != b;
}

// Arithmetic of built-in types, each with its opposite.
template <typename A, typename B>
constexpr auto plus(unsigned change, A a, B b)
{
    return on(change) ? a - b : a + b;
}

template <typename A, typename B>
constexpr auto minus(unsigned change, A a, B b)
{
    return on(change) ? a + b : a - b;
}

template <typename A, typename B>
constexpr auto times(unsigned change, A a, B b)
{
    return on(change) ? a + b : a * b;
}

template <typename A, typename B>
constexpr auto over(unsigned change, A a, B b)
{
    return on(change) ? a * b : a / b;
}

template <typename A, typename B>
constexpr auto remainder(unsigned change, A a, B b)
{
    return on(change) ? a / b : a % b;
}

template <typename A, typename B>
constexpr auto both(unsigned change, A a, B b)
{
    return on(change) ? a | b : a & b;
}

template <typename A, typename B>
constexpr auto either(unsigned change, A a, B b)
{
    return on(change) ? a & b : a | b;
}

template <typename A, typename B>
constexpr auto up(unsigned change, A a, B b)
{
    return on(change) ? a >> b : a << b;
}

template <typename A, typename B>
constexpr auto down(unsigned change, A a, B b)
{
    return on(change) ? a << b : a >> b;
}

}  // namespace vnmutant
#endif
