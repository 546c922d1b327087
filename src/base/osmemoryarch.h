#pragma once

#include <base/baseexport.h>

namespace Vn
{

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // the one object lives to the end of the process

/// The processor's cache geometry, for code that sizes its blocks to the caches.
///
///     const unsigned block = Vn::OsMemoryArch::getInstance().getL1WaySize();
///
/// What the processor doesn't report in the way that is read here is 0, and so it is for most of today's.
/// Any thread once the package `osal` has started.
/// Tests: tests/base/osmemoryarchtest.cpp.
class VN_BASE_EXPORT OsMemoryArch
{
public:
    /// Made at the first call, never destroyed. The first call isn't locked; the package `osal` makes it.
    static OsMemoryArch const& getInstance();

    // All in bytes.
    virtual unsigned getMemorySize() const = 0;  ///< 268,435,456 on every machine
    virtual unsigned getL1Size() const = 0;      ///< of the data cache
    virtual unsigned getL2Size() const = 0;
    virtual unsigned getL1WaySize() const = 0;  ///< the size over the number of ways
    virtual unsigned getL2WaySize() const = 0;
    virtual unsigned getL1LineSize() const = 0;
    virtual unsigned getL2LineSize() const = 0;
    virtual unsigned getPageSize() const = 0;
    virtual unsigned getWordSize() const = 0;  ///< 8 on every machine

protected:
    OsMemoryArch() = default;
    OsMemoryArch(OsMemoryArch const&) = default;
    OsMemoryArch& operator=(OsMemoryArch const&) = default;
    ~OsMemoryArch() = default;
};

#pragma GCC diagnostic pop

}  // namespace Vn
