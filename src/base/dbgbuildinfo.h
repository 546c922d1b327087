#pragma once

#include <base/baseexport.h>

namespace Vn
{

#if defined(__GNUC__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// What a library says of itself: which API it implements, at which version, and who built it when.
///
///     class PaletteBuildInfo : public Vn::DbgBuildInfo { ... };
///     Vn::DbgBuildInfoUtil::registerInfo(Vn::ObjPtr<Vn::DbgBuildInfo>(new PaletteBuildInfo));    // in a package's hook
///
/// An API is known by the address of its name: two libraries implement the same one only if both return the same
/// pointer, so whoever defines an API exports its name for others. All texts must stay as long as the object is
/// registered. A form has no data: objects are destroyed as what this class is, and the destructor of a form never
/// runs. docs/heap-and-build.md shows a whole library.
/// Tests: tests/base/dbgbuildinfomgrtest.cpp.
class VN_BASE_EXPORT DbgBuildInfo
{
public:
    /// Name of the API, at an address that is the same in all libraries that implement it.
    virtual char const* getApiName() const = 0;

    /// @{
    /// The API's version: libraries of one API fit each other if both numbers are equal.
    ///
    ///     3 and 14    ->  shown as "3.14"
    ///
    virtual int getMajorVersion() const = 0;
    virtual int getMinorVersion() const = 0;
    /// @}

    /// How far the API is, as "pre-alpha"; may be empty.
    virtual char const* getStatus() const = 0;

    /// Name of the library, in short or in full.
    virtual char const* getLibraryName(bool verbose) const = 0;

    /// What tells one build from another; the short form is what checkStamps compares.
    ///
    ///     "P. 12" and "Patch level 12"
    ///
    virtual char const* getBuildStamp(bool verbose) const = 0;

    /// Day of the build, and in full its time.
    ///
    ///     "Aug 27 2018" and "Aug 27 2018 11:30:05"
    ///
    virtual char const* getBuildDate(bool verbose) const = 0;

    /// Platform and configuration.
    virtual char const* getBuildType(bool verbose) const = 0;

    /// The account that built the library.
    virtual char const* getBuilder(bool verbose) const = 0;

    /// Whatever else there is to say; may be empty.
    virtual char const* getExtraInfo() const = 0;
};

/// How ObjPtr destroys an object: as what the base class is, and so without a look for a destructor. Null is allowed.
VN_BASE_EXPORT void destroyOwned(DbgBuildInfo* info);

#if defined(__GNUC__)
#    pragma GCC diagnostic pop
#endif

}  // namespace Vn

/// Heads the definition of the function that every library of the family exports, with its library's export macro.
/// The function returns a new object of its own, which the caller owns:
///
///     VN_BUILD_INFO_ENTRY(VN_PALETTE_EXPORT)
///     {
///         return new PaletteBuildInfo;
///     }
#define VN_BUILD_INFO_ENTRY(EXPORT)                     \
    extern "C" EXPORT Vn::DbgBuildInfo* getBuildInfo(); \
    Vn::DbgBuildInfo* getBuildInfo()
