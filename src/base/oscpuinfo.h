#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The processor that the program runs on, and the counter behind HwCounter.
///
/// Static only. The package `osal` calls initialize(); before that the type is Unknown, no feature is there and the
/// frequency is 0. Afterwards any thread reads.
/// Tests: tests/base/oscpuinfotest.cpp, tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT OsCpuInfo
{
public:
    enum Type
    {
        MIPS = 0,  ///< never found today
        IA32 = 1,  ///< never found today: such a processor is Unknown
        IA64 = 2,
        AMD64 = 3,
        Unknown = 4
    };

    /// One cache of the processor.
    struct CacheInfo
    {
        int size;           ///< bytes
        int associativity;  ///< ways
        int lineSize;       ///< bytes
    };

    OsCpuInfo() = delete;

    /// Finds out what the processor is, and asks the system for the counter's frequency. Throws ExSysErrorANSI if it
    /// has none.
    static void initialize();

    static void finalize();

    /// "MIPS", "IA32", "IA64" or "UNKNOWN". AMD64, on which the library normally runs, has no text: null.
    static char const* getTypeName();

    static bool hasMMX();
    static bool hasSSE();

    /// Stores what is asked for; each pointer may be null. The integers have four bits each, without the extended
    /// family and model, and stay as they were where the processor doesn't tell. With `type` alone it isn't asked.
    static void getDetailedType(Type* type, int* family, int* model, int* stepping);

    /// A monotonic counter of getHwCounterFrequency() counts per second. Throws ExSysErrorANSI if the system fails.
    static std::uint64_t getHwCounterValue();

    /// Counts per second; 0 before initialize().
    static std::uint64_t getHwCounterFrequency();

private:
    friend class OsMemoryArch;  // keeps what getMemoryInfo() finds

    /// The processor's caches and the size of a page in bytes. Sizes of 0 and one way where it doesn't tell; a line
    /// size is then left as it was.
    static void getMemoryInfo(CacheInfo* data, CacheInfo* instruction, CacheInfo* level2, int* pageSize);

    static Type _type;
    static bool _hasMMX;
    static bool _hasSSE;
    static std::uint64_t _hwCounterFrequency;
};

}  // namespace Vn
