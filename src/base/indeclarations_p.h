// Private to incommandline.cpp, incontextaliasmgr.cpp, inusageentries.cpp, inusagereport.cpp and invariable.cpp.
#pragma once

#include <base/incontextalias.h>
#include <base/invariable.h>

#include <vector>

namespace Vn
{

/// What a process has declared so far: its settings and their sources, and what waits to override them. Asks the
/// registers and changes nothing, before the start, while the library runs and after the stop. Implemented where these
/// are kept.
class InDeclarations
{
public:
    InDeclarations() = delete;

    /// All variables, by handle.
    static std::vector<InVariableBase const*> getVariables();

    /// The sources of a variable, highest rank first.
    static std::vector<InContextAliasBase const*> getSources(InVariableBase const& variable);

    /// The source that a variable whose package runs has chosen; null for others.
    static InContextAliasBase const* getChosen(InVariableBase const& variable);

    /// The text of the override that waits for the variable, or null.
    static char const* findOverride(InVariableBase const& variable);

    /// All options, clones included.
    static std::vector<InContextAlias<InInitArg, 1> const*> getOptions();

    /// What an alias of the environment would get from the start; null if the variable is unset.
    static char const* readVariable(char const* name);
};

}  // namespace Vn
