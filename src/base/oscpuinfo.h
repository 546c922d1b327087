#pragma once

#include <base/baseexport.h>

#include <cstdint>

namespace Vn
{

/// The processor that the program runs on, and the counter behind HwCounter.
///
///     char const* const name = Vn::OsCpuInfo::getTypeName();
///     std::cout << (name != nullptr ? name : "(no name)") << '\n';
///
/// Static only. The package `osal` calls initialize(); before that the type is Unknown, no feature is there and the
/// frequency is 0. Afterwards the state is read-only: any thread.
/// Tests: tests/base/oscpuinfotest.cpp, tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT OsCpuInfo
{
public:
    /// Kind of processor, by the architecture that the system reports.
    enum Type
    {
        MIPS = 0,    ///< never reported
        IA32 = 1,    ///< never reported: 32-bit processors are Unknown
        IA64 = 2,    ///< "ia64"
        AMD64 = 3,   ///< "x86_64"; its name is null
        Unknown = 4  ///< any other, and before initialize()
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
    /// has none. For the package `osal`, which runs it before other threads read.
    static void initialize();

    /// Does nothing: the answers stay.
    static void finalize();

    /// The type as a text, or null.
    ///
    ///     MIPS     ->  "MIPS"
    ///     IA32     ->  "IA32"
    ///     IA64     ->  "IA64"
    ///     AMD64    ->  null, so expect it: most machines are of this type
    ///     Unknown  ->  "UNKNOWN"
    ///
    static char const* getTypeName();

    /// @{
    /// Whether the processor has the instructions of that name. False before initialize().
    static bool hasMMX();
    static bool hasSSE();
    /// @}

    /// Stores what the pointers ask for; each may be null.
    ///
    ///     type      as found by initialize()
    ///     family    0 to 15, without the extended family: 15 for many processors
    ///     model     0 to 15, without the extended model
    ///     stepping  0 to 15
    ///
    /// The numbers stay as they were if the processor does not tell them. Throws nothing.
    static void getDetailedType(Type* type, int* family, int* model, int* stepping);

    /// A monotonic counter of getHwCounterFrequency() counts per second. Throws ExSysErrorANSI if the system fails.
    static std::uint64_t getHwCounterValue();

    /// Counts per second, 1,000,000,000 on Linux; 0 before initialize().
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
