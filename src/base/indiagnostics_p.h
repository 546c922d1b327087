// Private to incontextaliasmgr.cpp, ininitmgrstate.cpp, inpackageinit.cpp and invariable.cpp.
#pragma once

#include <base/osenv_p.h>

namespace Vn::InDiagnostics
{

/// Whether `VN_DEBUG_INITIALIZE` is in the environment now, with whatever value, the empty text included. A program
/// with more rights than its caller takes it as unset.
inline bool areOn()
{
    return System::getOwnVariable("VN_DEBUG_INITIALIZE") != nullptr;
}

}  // namespace Vn::InDiagnostics
