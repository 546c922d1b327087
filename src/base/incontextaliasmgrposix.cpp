// incontextaliasmgrposix.cpp (Windows form: incontextaliasmgrwindows.cpp)
//
// getenv() walks through the whole environment each time, so asking it for each of n variables that are set costs n *
// n steps. One walk puts the environment into a table instead.
#include <base/incontextaliasmgr_p.h>

#include <cstdlib>
#include <cstring>

extern "C" char** environ;

namespace Vn::System
{

/// The first entry of a name counts, as for getenv(). The table points into the environment and so is used at once.
EnvironmentReader::EnvironmentReader()
{
    if (environ == nullptr)  // what clearenv() leaves
        return;
    for (char** entry = environ; *entry != nullptr; ++entry)
        if (char const* const sign = std::strchr(*entry, '='))
            _values.try_emplace(std::string_view(*entry, static_cast<std::size_t>(sign - *entry)), sign + 1);
}

char const* EnvironmentReader::find(char const* name) const
{
    // getenv() refuses the empty name, and finds "A=B" in the entry "A=B=C".
    if (*name == '\0' || std::strchr(name, '=') != nullptr)
        return std::getenv(name);
    const auto found = _values.find(name);
    return found != _values.end() ? found->second : nullptr;
}

}  // namespace Vn::System
