// Private to the library.
#pragma once

#include <type_traits>

namespace Vn
{

// Access to plain fields that several threads use. The interface gives these fields plain types, so they can't be
// std::atomic; std::atomic_ref would do, but takes no const field, is missing from Clang's own library before version 19,
// and its header is the largest that the public headers with the same need would include: those use the same built-in
// functions of the compilers.
//
// Each use states what would break with a weaker order. Relaxed means that the value stands for itself: no other memory
// is read because of it, and a value seen late does no harm.
// Tests: the tests of the fields, under the thread sanitizer.

/// The value of `field`, as some thread stored it; never a mixture of two values.
template <class T>
T loadRelaxed(T const& field)
{
    T value;
    __atomic_load(&field, &value, __ATOMIC_RELAXED);  // this form takes a double as well
    return value;
}

/// Other threads see `value` a little later, and in no order with other stores of this thread.
template <class T>
void storeRelaxed(T& field, std::type_identity_t<T> value)
{
    __atomic_store(&field, &value, __ATOMIC_RELAXED);
}

/// Sets `bits` in `field`; bits that another thread sets at the same time stay set.
template <class T>
void setBitsRelaxed(T& field, std::type_identity_t<T> bits)
{
    __atomic_fetch_or(&field, bits, __ATOMIC_RELAXED);
}

/// The value of `field`; this thread also sees what the storing thread did before its storeRelease().
template <class T>
T loadAcquire(T const& field)
{
    return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

/// A thread that loads `value` by loadAcquire() also sees what this thread did before.
template <class T>
void storeRelease(T& field, std::type_identity_t<T> value)
{
    __atomic_store_n(&field, value, __ATOMIC_RELEASE);
}

}  // namespace Vn
