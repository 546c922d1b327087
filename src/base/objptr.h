#pragma once

#include <utility>

namespace Vn
{

template <class T>
class ObjPtrRet;

/// How both owners destroy an object. A class that is destroyed otherwise has an overload in its namespace.
template <class T>
void destroyOwned(T* object)
{
    delete object;
}

/// Owner of one object, in a signature: an `ObjPtr<T>` parameter takes the object from the caller.
///
///     Vn::ObjPtr<Shape> first(new Shape);
///     Vn::ObjPtr<Shape> second = first;    // second owns the shape now, first holds null
///
/// A copy transfers, from a named source as well, so at most one owner holds an object. Exactly one pointer wide;
/// destroys with `delete`. One thread at a time.
/// Tests: tests/base/objptrtest.cpp.
template <class T>
class ObjPtr
{
public:
    /// Takes ownership of `object`, which may be null.
    explicit ObjPtr(T* object = nullptr) noexcept : _object(object) {}

    ObjPtr(ObjPtr& source) noexcept : _object(source.release()) {}
    ObjPtr(ObjPtr&& source) noexcept : _object(source.release()) {}
    ObjPtr(ObjPtrRet<T>& source) noexcept : _object(source.release()) {}
    ObjPtr(ObjPtrRet<T>&& source) noexcept : _object(source.release()) {}

    ~ObjPtr() { destroyOwned(_object); }

    /// Destroys what is held, then takes what `source` holds. Assignment to itself does nothing.
    ObjPtr& operator=(ObjPtr& source) { return take(source); }
    ObjPtr& operator=(ObjPtr&& source) { return take(source); }
    ObjPtr& operator=(ObjPtrRet<T>& source) { return take(source); }
    ObjPtr& operator=(ObjPtrRet<T>&& source) { return take(source); }

    T& operator*() const { return *_object; }
    T* operator->() const noexcept { return _object; }
    T* get() const noexcept { return _object; }
    explicit operator bool() const noexcept { return _object != nullptr; }

    /// Gives the object away; null is left.
    T* release() noexcept { return std::exchange(_object, nullptr); }

    /// Destroys what is held, then takes `object`.
    void reset(T* object = nullptr)
    {
        destroyOwned(release());
        _object = object;
    }

private:
    template <class Source>
    ObjPtr& take(Source& source)
    {
        if (static_cast<void*>(this) != static_cast<void*>(&source)) {
            destroyOwned(release());
            _object = source.release();
        }
        return *this;
    }

    T* _object;
};

/// Owner of one object, as a result: hands the object to the caller, and destroys it if nobody takes it.
///
/// Otherwise as ObjPtr, into which it converts and from which it is made.
/// Tests: tests/base/objptrtest.cpp.
template <class T>
class ObjPtrRet
{
public:
    explicit ObjPtrRet(T* object = nullptr) noexcept : _object(object) {}

    ObjPtrRet(ObjPtrRet& source) noexcept : _object(source.release()) {}
    ObjPtrRet(ObjPtrRet&& source) noexcept : _object(source.release()) {}
    ObjPtrRet(ObjPtr<T>& source) noexcept : _object(source.release()) {}
    ObjPtrRet(ObjPtr<T>&& source) noexcept : _object(source.release()) {}

    ~ObjPtrRet() { destroyOwned(_object); }

    ObjPtrRet& operator=(ObjPtrRet& source) { return take(source); }
    ObjPtrRet& operator=(ObjPtrRet&& source) { return take(source); }
    ObjPtrRet& operator=(ObjPtr<T>& source) { return take(source); }
    ObjPtrRet& operator=(ObjPtr<T>&& source) { return take(source); }

    T& operator*() const { return *_object; }
    T* operator->() const noexcept { return _object; }
    T* get() const noexcept { return _object; }
    explicit operator bool() const noexcept { return _object != nullptr; }

    T* release() noexcept { return std::exchange(_object, nullptr); }

private:
    template <class Source>
    ObjPtrRet& take(Source& source)
    {
        if (static_cast<void*>(this) != static_cast<void*>(&source)) {
            destroyOwned(release());
            _object = source.release();
        }
        return *this;
    }

    T* _object;
};

}  // namespace Vn
