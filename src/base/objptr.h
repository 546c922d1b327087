#pragma once

#include <utility>

namespace Vn
{

template <class T>
class ObjPtrRet;

/// How both owners destroy an object: by `delete`; null is allowed. A class that is destroyed in another way has an
/// overload in its own namespace, which the owners find.
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

    /// @{
    /// Takes what `source` holds; null is left in `source`, be it named or a temporary.
    ///
    ///     ObjPtr<T> second = first;    // first.get() == nullptr
    ///
    /// A `ObjPtrRet` gives its object away in the same way. Throws nothing.
    ObjPtr(ObjPtr& source) noexcept : _object(source.release()) {}
    ObjPtr(ObjPtr&& source) noexcept : _object(source.release()) {}
    ObjPtr(ObjPtrRet<T>& source) noexcept : _object(source.release()) {}
    ObjPtr(ObjPtrRet<T>&& source) noexcept : _object(source.release()) {}
    /// @}

    /// Destroys what is held, if anything.
    ~ObjPtr() { destroyOwned(_object); }

    /// @{
    /// Destroys what is held, then takes what `source` holds. Assignment to itself does nothing.
    ///
    ///     second = first;     // what `second` held is destroyed, `first` holds null
    ///     second = second;    // nothing happens
    ///
    ObjPtr& operator=(ObjPtr& source) { return take(source); }
    ObjPtr& operator=(ObjPtr&& source) { return take(source); }
    ObjPtr& operator=(ObjPtrRet<T>& source) { return take(source); }
    ObjPtr& operator=(ObjPtrRet<T>&& source) { return take(source); }
    /// @}

    /// @{
    /// The object, which stays here. Not while null is held.
    T& operator*() const { return *_object; }
    T* operator->() const noexcept { return _object; }
    /// @}

    /// The object, which stays here, or null.
    T* get() const noexcept { return _object; }

    /// Whether an object is held.
    explicit operator bool() const noexcept { return _object != nullptr; }

    /// Gives the object away; null is left.
    T* release() noexcept { return std::exchange(_object, nullptr); }

    /// Destroys what is held, then takes `object`, which may be null.
    ///
    ///     shape.reset(new Shape);
    ///     shape.reset();             // holds null
    ///
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
    /// Takes ownership of `object`, which may be null.
    explicit ObjPtrRet(T* object = nullptr) noexcept : _object(object) {}

    /// @{
    /// Takes what `source` holds; null is left in `source`. Throws nothing.
    ObjPtrRet(ObjPtrRet& source) noexcept : _object(source.release()) {}
    ObjPtrRet(ObjPtrRet&& source) noexcept : _object(source.release()) {}
    ObjPtrRet(ObjPtr<T>& source) noexcept : _object(source.release()) {}
    ObjPtrRet(ObjPtr<T>&& source) noexcept : _object(source.release()) {}
    /// @}

    /// Destroys what nobody has taken.
    ~ObjPtrRet() { destroyOwned(_object); }

    /// @{
    /// Destroys what is held, then takes what `source` holds. Assignment to itself does nothing.
    ObjPtrRet& operator=(ObjPtrRet& source) { return take(source); }
    ObjPtrRet& operator=(ObjPtrRet&& source) { return take(source); }
    ObjPtrRet& operator=(ObjPtr<T>& source) { return take(source); }
    ObjPtrRet& operator=(ObjPtr<T>&& source) { return take(source); }
    /// @}

    /// @{
    /// The object, which stays here. Not while null is held.
    T& operator*() const { return *_object; }
    T* operator->() const noexcept { return _object; }
    /// @}

    /// The object, which stays here, or null.
    T* get() const noexcept { return _object; }

    /// Whether an object is held.
    explicit operator bool() const noexcept { return _object != nullptr; }

    /// Gives the object away; null is left.
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
