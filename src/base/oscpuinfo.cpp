// The state is four static fields, written once by initialize() and read without a lock afterwards. What the
// registers of cpuid mean is in oscpudecode_p.h; the platform's form supplies the architecture, two feature flags and
// the counter. The frequency is read last: if the system has no counter, the type and the flags are there all the
// same.
#include <base/oscpuinfo.h>

#include <base/exsyserror.h>
#include <base/oscpudecode_p.h>
#include <base/oscpuinfo_p.h>
#include <base/oscputype_p.h>

namespace Vn
{
namespace
{
/// The same on every platform, so that a message doesn't depend on the form that threw it.
constexpr char const* sourceName = "src/base/oscpuinfowinnt";

constexpr OsOwnCpuid ownCpuid;
}  // namespace

void System::throwCounterError(int line)
{
    throw ExSysErrorANSI(sourceName, line);
}

// Constant-initialised, so they hold these values before any constructor of the program runs.
OsCpuInfo::Type OsCpuInfo::_type = OsCpuInfo::Unknown;
bool OsCpuInfo::_hasMMX = false;
bool OsCpuInfo::_hasSSE = false;
std::uint64_t OsCpuInfo::_hwCounterFrequency = 0;

void OsCpuInfo::initialize()
{
    _type = typeOfArchitecture(System::getArchitecture());
    _hasMMX = System::hasFeature(System::CpuFeature::mmx);
    _hasSSE = System::hasFeature(System::CpuFeature::sse);
    const std::optional<std::uint64_t> frequency = System::readCounterFrequency();
    if (!frequency)
        System::throwCounterError(__LINE__);  // the field stays 0
    _hwCounterFrequency = *frequency;
}

// The answers stay: they hold nothing that would have to be released.
void OsCpuInfo::finalize() {}

// Null for AMD64, which has no name in the table.
char const* OsCpuInfo::getTypeName()
{
    return nameOfType(_type);
}

bool OsCpuInfo::hasMMX()
{
    return _hasMMX;
}

bool OsCpuInfo::hasSSE()
{
    return _hasSSE;
}

void OsCpuInfo::getDetailedType(Type* type, int* family, int* model, int* stepping)
{
    if (type != nullptr)
        *type = _type;
    // The instruction is slow, and traps in a virtual machine: not executed for the type alone.
    if (family != nullptr || model != nullptr || stepping != nullptr)
        OsCpuDecode(ownCpuid).readSignature(family, model, stepping);
}

// Works before initialize(): the reading needs no frequency.
std::uint64_t OsCpuInfo::getHwCounterValue()
{
    const std::optional<std::uint64_t> value = System::readCounter();
    if (!value)
        System::throwCounterError(__LINE__);
    return *value;
}

// A stored number and no call of the system: it is asked for with every conversion of an interval to seconds.
std::uint64_t OsCpuInfo::getHwCounterFrequency()
{
    return _hwCounterFrequency;
}

void OsCpuInfo::getMemoryInfo(CacheInfo* data, CacheInfo* instruction, CacheInfo* level2, int* pageSize)
{
    OsCpuDecode(ownCpuid).readMemory(*data, *instruction, *level2, *pageSize);
}

}  // namespace Vn
