// Private to dbgbuildinfo.cpp, dbgbuildvalues.cpp, inpackages.cpp, inusageman.cpp and testmgr.cpp.
#pragma once

namespace Vn
{
class DbgBuildInfo;
}

namespace Vn::DbgBuildValues
{

// What the build has told this library of itself.
extern char const shortStamp[];
extern char const stamp[];
extern char const date[];
extern char const type[];
extern char const builder[];

/// This library's own build information; the caller owns it. What getBuildInfo() returns, but no other library that
/// is loaded can stand in for it.
DbgBuildInfo* createInfo();

}  // namespace Vn::DbgBuildValues
