// The log group of the build information. It exists while the package `debugging` runs.
#include <base/dbggroup_p.h>

#include <base/lgtypes.h>

#include <optional>

namespace Vn::DbgGroup
{
namespace
{
/// Not made by static construction: the major group is only there once the logger has started.
std::optional<LgMinorGroup> group;
}  // namespace

/// A second start after a stop makes a new group.
void create()
{
    group.emplace(LgMajorGroup::getInstanceForName("Base"), "BuildInfo");
}

/// Reports are dropped from here on.
void destroy()
{
    group.reset();
}

/// Asked for at each report, never kept: the group goes with its package.
LgMinorGroup const* get()
{
    return group.has_value() ? &*group : nullptr;
}

}  // namespace Vn::DbgGroup
