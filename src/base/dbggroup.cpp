#include <base/dbggroup_p.h>

#include <base/lgtypes.h>

#include <optional>

namespace Vn::DbgGroup
{
namespace
{
std::optional<LgMinorGroup> group;
}  // namespace

void create()
{
    group.emplace(LgMajorGroup::getInstanceForName("Base"), "BuildInfo");
}

void destroy()
{
    group.reset();
}

LgMinorGroup const* get()
{
    return group.has_value() ? &*group : nullptr;
}

}  // namespace Vn::DbgGroup
