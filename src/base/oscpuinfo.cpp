#include <base/oscpuinfo.h>

#include <base/exsyserror.h>
#include <base/oscpuinfosystem.h>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/oscpuinfowinnt";
}  // namespace

std::uint64_t OsCpuInfo::_hwCounterFrequency = 0;

void OsCpuInfo::initialize()
{
    std::uint64_t frequency;
    if (!System::readCounterFrequency(frequency))
        throw ExSysErrorANSI(sourceName, __LINE__);
    _hwCounterFrequency = frequency;
}

void OsCpuInfo::finalize() {}

std::uint64_t OsCpuInfo::getHwCounterValue()
{
    std::uint64_t value;
    if (!System::readCounter(value))
        throw ExSysErrorANSI(sourceName, __LINE__);
    return value;
}

std::uint64_t OsCpuInfo::getHwCounterFrequency()
{
    return _hwCounterFrequency;
}

}  // namespace Vn
