#pragma once

#include <base/baseexport.h>

namespace Vn
{

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // the one object lives to the end of the process

/// The processor's cache geometry, for code that sizes its blocks to the caches.
///
///     unsigned block = Vn::OsMemoryArch::getInstance().getL1WaySize();
///     if (block == 0)
///         block = 16384;    // the processor does not report it
///
/// Only processors that describe their caches in cpuid leaf 2 are understood; most current ones give 0 for every
/// cache size. The object is immutable: any thread, once the package `osal` has started.
/// Tests: tests/base/osmemoryarchtest.cpp.
class VN_BASE_EXPORT OsMemoryArch
{
public:
    /// The one object; made at the first call, never destroyed. The first call is not thread-safe; the package `osal`
    /// makes it.
    static OsMemoryArch const& getInstance();

    /// @{
    /// In bytes; 0 if the processor does not report it. The page size is 4096 or 0. Level 1 is the data cache.
    virtual unsigned getMemorySize() const = 0;  ///< always 268,435,456, whatever the machine has
    virtual unsigned getL1Size() const = 0;
    virtual unsigned getL2Size() const = 0;
    virtual unsigned getL1WaySize() const = 0;  ///< the size divided by the number of ways
    virtual unsigned getL2WaySize() const = 0;  ///< the size divided by the number of ways
    virtual unsigned getL1LineSize() const = 0;
    virtual unsigned getL2LineSize() const = 0;
    virtual unsigned getPageSize() const = 0;
    virtual unsigned getWordSize() const = 0;  ///< always 8
    /// @}

protected:
    /// @{
    /// For the one implementation. Not virtual: the object is never deleted.
    OsMemoryArch() = default;
    OsMemoryArch(OsMemoryArch const&) = default;
    OsMemoryArch& operator=(OsMemoryArch const&) = default;
    ~OsMemoryArch() = default;
    /// @}
};

#pragma GCC diagnostic pop

}  // namespace Vn
