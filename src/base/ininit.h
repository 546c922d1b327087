#pragma once

#include <base/inpackageinit.h>

namespace Vn
{

/// A package, named by an empty class in the namespace `VnInit`. Each package is a full specialisation, written like
/// any class; the two macros supply what all of them have in common.
///
///     namespace VnInit { class palette {}; }
///
///     template <>
///     class Vn::InInit<VnInit::palette> : public Vn::InPackageInit
///     {
///         VN_PACKAGE_MEMBERS();
///         void performInitialize() override;    // only the hooks that it needs
///     };
///
/// and, in one source file,
///
///     VN_DEFINE_PACKAGE(palette, VnInit::base, VnInit::settings);
///     static Vn::InInit<VnInit::palette> palettePackage;
///
/// The object registers the package; without it nothing starts. It must outlive InInitMgr::finalize(), so make it
/// static. A package that other libraries depend on stands in a header, with its library's export macro behind
/// `class`. Two objects of one tag, for instance in two libraries, are one package, which starts once.
/// Tests: tests/base/ininitmgrtest.cpp, tests/base/inpackagestest.cpp.
template <class Tag>
class InInit;

}  // namespace Vn

/// First line of a package's class: declares the constructor, getType() and setInitialized().
///
/// What follows it is private; write `public:` or `protected:` for other members.
#define VN_PACKAGE_MEMBERS()                        \
public:                                             \
    InInit();                                       \
    static std::type_info const* getType();         \
    void setInitialized(bool initialized) override; \
                                                    \
private:                                            \
    static bool _initialized

/// Defines those members for the package `VnInit::TAG`, at namespace scope outside every namespace. Behind the tag
/// stand the tags of the packages that must start first.
///
///     VN_DEFINE_PACKAGE(palette);                  // depends on nothing
///     VN_DEFINE_PACKAGE(palette, VnInit::base);    // starts behind the whole library
///
/// The order of the dependencies has no effect. The package's name is the tag as text.
#define VN_DEFINE_PACKAGE(TAG, ...)                                \
    bool Vn::InInit<VnInit::TAG>::_initialized = false;            \
    Vn::InInit<VnInit::TAG>::InInit() : InPackageInit(#TAG)        \
    {                                                              \
        registerPackage();                                         \
        addDependencies<__VA_ARGS__>();                            \
    }                                                              \
    std::type_info const* Vn::InInit<VnInit::TAG>::getType()       \
    {                                                              \
        return &typeid(InInit);                                    \
    }                                                              \
    void Vn::InInit<VnInit::TAG>::setInitialized(bool initialized) \
    {                                                              \
        _initialized = initialized;                                \
    }                                                              \
    static_assert(true, "a semicolon follows")
