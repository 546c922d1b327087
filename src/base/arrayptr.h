#pragma once

#include <cstddef>
#include <utility>

namespace Vn
{

template <class T>
class ArrayPtrRet;

/// Owner of one array, above all of a string.
///
///     Vn::ArrayPtr<char> name = Vn::duplicateString("left");
///     name[0] = 'L';
///     std::puts(name);                     // converts to char const*
///
/// A copy transfers, from a named source as well, so at most one owner holds an array. Exactly one pointer wide;
/// destroys with `delete[]`. Indices are not checked. One thread at a time.
/// Tests: tests/base/arrayptrtest.cpp.
template <class T>
class ArrayPtr
{
public:
    /// Takes ownership of the array that starts at `first`; null is allowed.
    explicit ArrayPtr(T* first = nullptr) noexcept : _first(first) {}

    /// @{
    /// Takes what `source` holds; null is left in `source`, be it named or a temporary.
    ///
    ///     ArrayPtr<T> second = first;    // first.get() == nullptr
    ///
    /// A `ArrayPtrRet` gives its array away in the same way. Throws nothing.
    ArrayPtr(ArrayPtr& source) noexcept : _first(source.release()) {}
    ArrayPtr(ArrayPtr&& source) noexcept : _first(source.release()) {}
    ArrayPtr(ArrayPtrRet<T>& source) noexcept : _first(source.release()) {}
    ArrayPtr(ArrayPtrRet<T>&& source) noexcept : _first(source.release()) {}
    /// @}

    /// Destroys what is held, if anything.
    ~ArrayPtr() { delete[] _first; }

    /// @{
    /// Destroys what is held, then takes what `source` holds. Assignment to itself does nothing.
    ///
    ///     second = first;     // what `second` held is destroyed, `first` holds null
    ///     second = second;    // nothing happens
    ///
    ArrayPtr& operator=(ArrayPtr& source) { return take(source); }
    ArrayPtr& operator=(ArrayPtr&& source) { return take(source); }
    ArrayPtr& operator=(ArrayPtrRet<T>& source) { return take(source); }
    ArrayPtr& operator=(ArrayPtrRet<T>&& source) { return take(source); }
    /// @}

    // The signed index keeps `pointer[i]` from being ambiguous with the index of the converted pointer.
    /// The element at `index`, counted from 0. Nothing knows the array's length, so the caller keeps to it.
    T& operator[](std::ptrdiff_t index) const { return _first[index]; }

    /// @{
    /// The first element, or null; the array stays here. The conversion lets a string be passed on as it is.
    operator T const*() const noexcept { return _first; }
    T* get() const noexcept { return _first; }
    /// @}

    /// Whether an array is held.
    explicit operator bool() const noexcept { return _first != nullptr; }

    /// Gives the array away; null is left.
    T* release() noexcept { return std::exchange(_first, nullptr); }

    /// Destroys what is held, then takes the array that starts at `first`; null is allowed.
    void reset(T* first = nullptr)
    {
        delete[] release();
        _first = first;
    }

private:
    template <class Source>
    ArrayPtr& take(Source& source)
    {
        if (static_cast<void*>(this) != static_cast<void*>(&source)) {
            delete[] release();
            _first = source.release();
        }
        return *this;
    }

    T* _first;
};

/// Owner of one array, as a result: hands the array to the caller, and destroys it if nobody takes it.
///
/// Otherwise as ArrayPtr, into which it converts and from which it is made.
/// Tests: tests/base/arrayptrtest.cpp.
template <class T>
class ArrayPtrRet
{
public:
    /// Takes ownership of the array that starts at `first`; null is allowed.
    explicit ArrayPtrRet(T* first = nullptr) noexcept : _first(first) {}

    /// @{
    /// Takes what `source` holds; null is left in `source`. Throws nothing.
    ArrayPtrRet(ArrayPtrRet& source) noexcept : _first(source.release()) {}
    ArrayPtrRet(ArrayPtrRet&& source) noexcept : _first(source.release()) {}
    ArrayPtrRet(ArrayPtr<T>& source) noexcept : _first(source.release()) {}
    ArrayPtrRet(ArrayPtr<T>&& source) noexcept : _first(source.release()) {}
    /// @}

    /// Destroys what nobody has taken.
    ~ArrayPtrRet() { delete[] _first; }

    /// @{
    /// Destroys what is held, then takes what `source` holds. Assignment to itself does nothing.
    ArrayPtrRet& operator=(ArrayPtrRet& source) { return take(source); }
    ArrayPtrRet& operator=(ArrayPtrRet&& source) { return take(source); }
    ArrayPtrRet& operator=(ArrayPtr<T>& source) { return take(source); }
    ArrayPtrRet& operator=(ArrayPtr<T>&& source) { return take(source); }
    /// @}

    /// The element at `index`, counted from 0. Nothing knows the array's length, so the caller keeps to it.
    T& operator[](std::ptrdiff_t index) const { return _first[index]; }

    /// @{
    /// The first element, or null; the array stays here. The conversion lets a string be passed on as it is.
    operator T const*() const noexcept { return _first; }
    T* get() const noexcept { return _first; }
    /// @}

    /// Whether an array is held.
    explicit operator bool() const noexcept { return _first != nullptr; }

    /// Gives the array away; null is left.
    T* release() noexcept { return std::exchange(_first, nullptr); }

private:
    template <class Source>
    ArrayPtrRet& take(Source& source)
    {
        if (static_cast<void*>(this) != static_cast<void*>(&source)) {
            delete[] release();
            _first = source.release();
        }
        return *this;
    }

    T* _first;
};

}  // namespace Vn
