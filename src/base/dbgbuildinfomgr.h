#pragma once

#include <base/dbgbuildinfo.h>
#include <base/objptr.h>

#include <iosfwd>

namespace VnInit
{
class debugging;
}  // namespace VnInit

namespace Vn
{

template <class Tag>
class InInit;
class DbgApiTable;

/// The registry of what the libraries of a process say of their versions and builds. It refuses a library whose
/// version, or on request whose build, isn't that of the first one of the same API.
///
///     Vn::DbgBuildInfoMgr::registerAppInfo(Vn::ObjPtr<Vn::DbgBuildInfo>(new ViewerBuildInfo));
///     Vn::DbgBuildInfoMgr::printBuildInfo(std::cout, false);
///
/// Libraries register through DbgBuildInfoUtil, in the hook of a package that depends on `debugging`; that package's
/// stop empties the registry. Each refusal is reported through the minor group "BuildInfo" of the major group "Base"
/// at the level `FatalError`, once the package has started. Nothing is locked: all belongs to the thread that drives
/// the start.
/// Tests: tests/base/dbgbuildinfomgrtest.cpp.
class VN_BASE_EXPORT DbgBuildInfoMgr
{
public:
    DbgBuildInfoMgr() = delete;

    /// Takes `info` behind the others of its API; the first of an API is compared with nothing. Throws
    /// DbgBuildInfoEx::ExVersionMismatch if `validateVersions` and the versions differ, and ExBuildStampMismatch if
    /// `checkStamps` and the short stamps differ: nothing is registered then, and nobody owns or frees `info` any
    /// more. Throws ExInternalError for null.
    static void registerInfo(ObjPtr<DbgBuildInfo> info, bool validateVersions, bool checkStamps);

    /// Takes what the application says of itself; its versions are compared with nothing. Throws
    /// DbgBuildInfoEx::ExAppAlreadyRegistered at the second time, and `info` is destroyed.
    static void registerAppInfo(ObjPtr<DbgBuildInfo> info);

    /// What the application has registered. Throws DbgBuildInfoEx::ExAppNotRegistered before that.
    static DbgBuildInfo const& getAppInfo();

    /// Prints the application, and with `verbose` a second line with its builder:
    ///
    ///     registered      ->  "Viewer 1.2 beta (P. 12, Aug 27 2018)"
    ///     not registered  ->  "Unknown application name / version."
    static std::ostream& printAppInfo(std::ostream& stream, bool verbose);

    /// Prints the application, then each API with its libraries in the order of their registration. The APIs come in
    /// no particular order.
    static std::ostream& printBuildInfo(std::ostream& stream, bool verbose);

private:
    friend class InInit<VnInit::debugging>;  // begins and ends the registry's life

    static void init();
    static void fini();

    static ObjPtr<DbgBuildInfo> _appInfo;
    static DbgApiTable _apis;
};

}  // namespace Vn
