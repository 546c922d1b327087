#pragma once

#include <cstdlib>

namespace Vn::InDiagnostics
{

/// Whether `VN_DEBUG_INITIALIZE` stands in the environment, with whatever value, now.
inline bool areOn()
{
    return std::getenv("VN_DEBUG_INITIALIZE") != nullptr;
}

}  // namespace Vn::InDiagnostics
