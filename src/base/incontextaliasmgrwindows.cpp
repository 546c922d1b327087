// incontextaliasmgrwindows.cpp (Linux form: incontextaliasmgrposix.cpp)
//
// The runtime library compares names by rules of its own, in a copy of the environment of its own, so it is asked
// each time: here n variables that are set cost n * n steps of a walk.
#include <base/incontextaliasmgr_p.h>

#include <cstdlib>

namespace Vn::System
{

/// Nothing to prepare here.
EnvironmentReader::EnvironmentReader() = default;

char const* EnvironmentReader::find(char const* name) const
{
    return std::getenv(name);
}

}  // namespace Vn::System
