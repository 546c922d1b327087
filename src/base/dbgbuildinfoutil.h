#pragma once

#include <base/dbgbuildinfo.h>
#include <base/objptr.h>

namespace Vn
{

/// How libraries come into DbgBuildInfoMgr: with the settings of the process, and from modules that are loaded by
/// name.
///
/// The package `debugging` takes the settings from `VN_BUILDINFO_NO_VALIDATE` and `VN_BUILDINFO_CHECK_STAMPS`, or
/// from the variables `Vn::Tessola::debugging::buildInfoNoValidate` and
/// `Vn::Tessola::debugging::buildInfoCheckStamps`, when it starts. All belongs to the thread that drives the start.
/// Tests: tests/base/dbgbuildinfomgrtest.cpp, tests/examples/swatchtest.cpp.
class VN_BASE_EXPORT DbgBuildInfoUtil
{
public:
    DbgBuildInfoUtil() = delete;

    /// DbgBuildInfoMgr::registerInfo() with both settings.
    static void registerInfo(ObjPtr<DbgBuildInfo> info);

    /// Loads the family's library `name`, the file "libVN", `name` and the system's suffix, and registers what its
    /// getBuildInfo() returns. It stays loaded. Throws as OsSharedLib::open(), OsSharedLib::getFunction(), the entry
    /// and registerInfo() do; ExInternalError for an entry that returns null.
    static void registerModule(char const* name);

    /// Whether a version that differs is refused; true at first.
    static void setValidateVersions(bool validate);

    /// Whether a build stamp that differs is refused; false at first.
    static void setCheckStamps(bool check);

private:
    static bool _validateVersions;
    static bool _checkStamps;
};

}  // namespace Vn
