// Private to oscpuinfo.cpp.
#pragma once

#include <base/oscpuinfo.h>

namespace Vn
{

/// The type for the number that a system gives an architecture: 6, 9, or one that isn't told apart, such as 0 for the
/// 32-bit processors.
inline OsCpuInfo::Type typeOfArchitecture(unsigned architecture)
{
    switch (architecture) {
    case 6:
        return OsCpuInfo::IA64;
    case 9:
        return OsCpuInfo::AMD64;
    default:
        return OsCpuInfo::Unknown;
    }
}

/// Null for AMD64 and for a number that is no type.
inline char const* nameOfType(OsCpuInfo::Type type)
{
    switch (type) {
    case OsCpuInfo::MIPS:
        return "MIPS";
    case OsCpuInfo::IA32:
        return "IA32";
    case OsCpuInfo::IA64:
        return "IA64";
    case OsCpuInfo::Unknown:
        return "UNKNOWN";
    case OsCpuInfo::AMD64:
        break;
    }
    return nullptr;
}

}  // namespace Vn
