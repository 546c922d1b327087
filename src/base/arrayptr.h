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

    ArrayPtr(ArrayPtr& source) noexcept : _first(source.release()) {}
    ArrayPtr(ArrayPtr&& source) noexcept : _first(source.release()) {}
    ArrayPtr(ArrayPtrRet<T>& source) noexcept : _first(source.release()) {}
    ArrayPtr(ArrayPtrRet<T>&& source) noexcept : _first(source.release()) {}

    ~ArrayPtr() { delete[] _first; }

    /// Destroys what is held, then takes what `source` holds. Assignment to itself does nothing.
    ArrayPtr& operator=(ArrayPtr& source) { return take(source); }
    ArrayPtr& operator=(ArrayPtr&& source) { return take(source); }
    ArrayPtr& operator=(ArrayPtrRet<T>& source) { return take(source); }
    ArrayPtr& operator=(ArrayPtrRet<T>&& source) { return take(source); }

    // The signed index keeps `pointer[i]` from being ambiguous with the index of the converted pointer.
    T& operator[](std::ptrdiff_t index) const { return _first[index]; }
    operator T const*() const noexcept { return _first; }
    T* get() const noexcept { return _first; }
    explicit operator bool() const noexcept { return _first != nullptr; }

    /// Gives the array away; null is left.
    T* release() noexcept { return std::exchange(_first, nullptr); }

    /// Destroys what is held, then takes the array that starts at `first`.
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
    explicit ArrayPtrRet(T* first = nullptr) noexcept : _first(first) {}

    ArrayPtrRet(ArrayPtrRet& source) noexcept : _first(source.release()) {}
    ArrayPtrRet(ArrayPtrRet&& source) noexcept : _first(source.release()) {}
    ArrayPtrRet(ArrayPtr<T>& source) noexcept : _first(source.release()) {}
    ArrayPtrRet(ArrayPtr<T>&& source) noexcept : _first(source.release()) {}

    ~ArrayPtrRet() { delete[] _first; }

    ArrayPtrRet& operator=(ArrayPtrRet& source) { return take(source); }
    ArrayPtrRet& operator=(ArrayPtrRet&& source) { return take(source); }
    ArrayPtrRet& operator=(ArrayPtr<T>& source) { return take(source); }
    ArrayPtrRet& operator=(ArrayPtr<T>&& source) { return take(source); }

    T& operator[](std::ptrdiff_t index) const { return _first[index]; }
    operator T const*() const noexcept { return _first; }
    T* get() const noexcept { return _first; }
    explicit operator bool() const noexcept { return _first != nullptr; }

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
