// Private to incontextaliasmgr.cpp, ininitmgr.cpp, inpackageinit.cpp and invariable.cpp.
#pragma once

#include <base/osenv_p.h>

namespace Vn::InDiagnostics
{

/// Whether `VN_DEBUG_INITIALIZE` stands in the environment, with whatever value, now.
inline bool areOn()
{
    return System::getOwnVariable("VN_DEBUG_INITIALIZE") != nullptr;
}

}  // namespace Vn::InDiagnostics
