// Private to osmemoryarch.cpp.
#pragma once

#include <base/oscpuinfo.h>
#include <base/osmemoryarch.h>

namespace Vn
{

/// The geometry of given caches, fixed at construction.
///
///     OsMemoryArchImp({16384, 4, 32}, {262144, 8, 32}, 4096).getL1WaySize();    // 4096
///
class OsMemoryArchImp final : public OsMemoryArch
{
public:
    /// The number of ways must not be 0 in either cache; OsCpuDecode sets it to 1 for a cache that is not reported.
    // Intended: the memory size is a fixed number and not the machine's. Do not mend: it is so on every machine.
    OsMemoryArchImp(OsCpuInfo::CacheInfo const& data, OsCpuInfo::CacheInfo const& level2, int pageSize)
        : _memorySize(0x10000000),
          _l1Size(static_cast<unsigned>(data.size)),
          _l2Size(static_cast<unsigned>(level2.size)),
          _l1WaySize(static_cast<unsigned>(data.size / data.associativity)),
          _l2WaySize(static_cast<unsigned>(level2.size / level2.associativity)),
          _l1LineSize(static_cast<unsigned>(data.lineSize)),
          _l2LineSize(static_cast<unsigned>(level2.lineSize)),
          _pageSize(static_cast<unsigned>(pageSize))
    {}

    // Signed numbers of the decoder become unsigned ones; none of its table is negative.
    unsigned getMemorySize() const override { return _memorySize; }
    unsigned getL1Size() const override { return _l1Size; }
    unsigned getL2Size() const override { return _l2Size; }
    unsigned getL1WaySize() const override { return _l1WaySize; }
    unsigned getL2WaySize() const override { return _l2WaySize; }
    unsigned getL1LineSize() const override { return _l1LineSize; }
    unsigned getL2LineSize() const override { return _l2LineSize; }
    unsigned getPageSize() const override { return _pageSize; }
    unsigned getWordSize() const override { return 8; }

private:
    // In bytes, in the order of the accessors. The word size, 8, is in the code.
    unsigned _memorySize;
    unsigned _l1Size;
    unsigned _l2Size;
    unsigned _l1WaySize;
    unsigned _l2WaySize;
    unsigned _l1LineSize;
    unsigned _l2LineSize;
    unsigned _pageSize;
};

}  // namespace Vn
