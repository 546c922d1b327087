// Private to incontextaliasmgr.cpp; implemented in incontextaliasmgrposix.cpp and incontextaliasmgrwindows.cpp.
#pragma once

#include <string_view>
#include <unordered_map>

namespace Vn::System
{

/// Values of many environment variables, as std::getenv() gives them now.
class EnvironmentReader
{
public:
    EnvironmentReader();

    /// The environment's own text, or null.
    char const* find(char const* name) const;

private:
    std::unordered_map<std::string_view, char const*> _values;  ///< by name, where the platform fills it
};

}  // namespace Vn::System
