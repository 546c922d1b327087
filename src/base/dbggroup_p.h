// Private to dbgbuildinfomgr.cpp, dbggroup.cpp, inpackages.cpp and testmgr.cpp.
#pragma once

namespace Vn
{
class LgMinorGroup;
}

/// The group through which build information is logged: "BuildInfo" of "Base".
namespace Vn::DbgGroup
{

/// Throws as LgMajorGroup::getInstanceForName().
void create();

void destroy();

/// Null unless the package `debugging` is up.
LgMinorGroup const* get();

}  // namespace Vn::DbgGroup
