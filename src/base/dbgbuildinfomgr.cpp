// The registry of what the libraries of a process say of themselves.
//
// A library that registers is compared with the first library of its API, and only with that one: major and minor
// version, then the build stamp. A mismatch is reported through the log group "BuildInfo", and refused by an
// exception if the caller asks for that. Two libraries have the same API only if their names stand at the same
// address (dbgapitable_p.h).
//
// Intended: an object that is refused has been taken from the caller already and is never destroyed; do not mend.
#include <base/dbgbuildinfomgr.h>

#include <base/assertions.h>
#include <base/dbgapitable_p.h>
#include <base/dbgbuildinfoex.h>
#include <base/dbggroup_p.h>
#include <base/exreasontext_p.h>
#include <base/lglog.h>
#include <base/neverdestroyed_p.h>

#include <cstring>
#include <optional>
#include <ostream>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/dbgbuildinfomgr";

/// Descriptions come from other libraries, which may return null.
char const* orEmpty(char const* text)
{
    return ExReasonText::orEmpty(text);
}

/// Major and minor alone; the status may differ.
bool haveSameVersion(DbgBuildInfo const& left, DbgBuildInfo const& right)
{
    return left.getMajorVersion() == right.getMajorVersion() && left.getMinorVersion() == right.getMinorVersion();
}

/// Short stamps, which name the build alone.
bool haveSameStamp(DbgBuildInfo const& left, DbgBuildInfo const& right)
{
    return std::strcmp(orEmpty(left.getBuildStamp(false)), orEmpty(right.getBuildStamp(false))) == 0;
}

/// Before the package `debugging` has started there is no group, and nothing is written: registration then is only
/// meant for the first library of an API, which is compared with nothing.
void reportVersion(DbgBuildInfo const& first, DbgBuildInfo const& info)
{
    if (DbgGroup::get() == nullptr)
        return;
    VN_LOG(*DbgGroup::get(), LgTypes::FatalError,
           "Version mismatch, registering with API "
               << orEmpty(first.getApiName()) << " v" << first.getMajorVersion() << "." << first.getMinorVersion()
               << ": library " << orEmpty(info.getLibraryName(false)) << " using v" << info.getMajorVersion() << "."
               << info.getMinorVersion());
}

/// Intended: two blanks in front of "build" in the second half; programs compare the text. Do not mend.
void reportStamp(DbgBuildInfo const& first, DbgBuildInfo const& info)
{
    if (DbgGroup::get() == nullptr)
        return;
    VN_LOG(*DbgGroup::get(), LgTypes::FatalError,
           "Build stamp mismatch, registering with API "
               << orEmpty(first.getApiName()) << " build " << orEmpty(first.getBuildStamp(false)) << ": library "
               << orEmpty(info.getLibraryName(false)) << " using  build " << orEmpty(info.getBuildStamp(false)));
}

/// Name, version and status of an API.
void printApi(std::ostream& stream, DbgBuildInfo const& info)
{
    stream << orEmpty(info.getApiName()) << " " << info.getMajorVersion() << "." << info.getMinorVersion() << " "
           << orEmpty(info.getStatus());
}

/// Stamp, date and line end; with `verbose` a further line, indented by `tabs`, for who built it.
void printBuild(std::ostream& stream, DbgBuildInfo const& info, bool verbose, char const* tabs)
{
    stream << " (" << orEmpty(info.getBuildStamp(verbose)) << ", " << orEmpty(info.getBuildDate(verbose)) << ")\n";
    if (verbose)
        stream << tabs << "Built by " << orEmpty(info.getBuilder(true)) << " ("
               << orEmpty(info.getBuildType(verbose)) << ")\n";
}
}  // namespace

// Without a stop, build information is shown until the last static object is gone.
VN_NEVER_DESTROYED_MEMBER(ObjPtr<DbgBuildInfo>, appInfoStorage, "_ZN2Vn15DbgBuildInfoMgr8_appInfoE");
VN_NEVER_DESTROYED_MEMBER(DbgApiTable, apisStorage, "_ZN2Vn15DbgBuildInfoMgr5_apisE");

namespace
{
/// Constructs the table in its memory; a table of zeros has no buckets.
[[maybe_unused]] DbgApiTable const* const apis = ::new (static_cast<void*>(apisStorage)) DbgApiTable;
}  // namespace

void DbgBuildInfoMgr::registerInfo(ObjPtr<DbgBuildInfo> info, bool validateVersions, bool checkStamps)
{
    if (!info)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "info != 0");
    // Intended: the comparison is with the first library alone, even if later ones were let in that differ from it.
    // Do not mend.
    if (DbgApiTable::Infos const* const known = _apis.find(info->getApiName())) {
        DbgBuildInfo const& first = *known->front();
        if (!haveSameVersion(first, *info)) {
            reportVersion(first, *info);
            // Without validation the difference is written all the same, and the stamps are compared as well.
            if (validateVersions) {
                DbgBuildInfo const& refused = *info.release();
                throw DbgBuildInfoEx::ExVersionMismatch(
                    sourceName, __LINE__, first.getApiName(), first.getMajorVersion(), first.getMinorVersion(),
                    refused.getLibraryName(false), refused.getMajorVersion(), refused.getMinorVersion());
            }
        }
        if (checkStamps && !haveSameStamp(first, *info)) {
            reportStamp(first, *info);
            DbgBuildInfo const& refused = *info.release();
            throw DbgBuildInfoEx::ExBuildStampMismatch(sourceName, __LINE__, first.getApiName(),
                                                       first.getBuildStamp(false), refused.getLibraryName(false),
                                                       refused.getBuildStamp(false));
        }
    }
    _apis.add(info->getApiName(), info);
}

/// An object that is refused dies with the parameter, unlike in registerInfo().
void DbgBuildInfoMgr::registerAppInfo(ObjPtr<DbgBuildInfo> info)
{
    if (_appInfo)
        throw DbgBuildInfoEx::ExAppAlreadyRegistered(sourceName, __LINE__);
    _appInfo = info;
}

/// A reference, so an application that hasn't registered is an error and not a null pointer.
DbgBuildInfo const& DbgBuildInfoMgr::getAppInfo()
{
    if (!_appInfo)
        throw DbgBuildInfoEx::ExAppNotRegistered(sourceName, __LINE__);
    return *_appInfo;
}

/// The status stands behind the version of an API and of an application alike, so both share printApi().
std::ostream& DbgBuildInfoMgr::printAppInfo(std::ostream& stream, bool verbose)
{
    if (!_appInfo)
        return stream << "Unknown application name / version.\n";
    printApi(stream, *_appInfo);
    printBuild(stream, *_appInfo, verbose, "\t");
    return stream;
}

/// The order of the APIs is that of the table's buckets; within an API it is the order of registration.
std::ostream& DbgBuildInfoMgr::printBuildInfo(std::ostream& stream, bool verbose)
{
    printAppInfo(stream, verbose);
    _apis.forEach([&](DbgApiTable::Infos const& infos) {
        stream << "API ";
        printApi(stream, *infos.front());
        stream << ": \n";
        for (DbgBuildInfo const* info : infos) {
            stream << "\t" << orEmpty(info->getLibraryName(verbose));
            printBuild(stream, *info, verbose, "\t\t");
        }
    });
    return stream;
}

/// Nothing to do: the table is there from static construction on, so that libraries may register before the start.
void DbgBuildInfoMgr::init() {}

/// Afterwards everything can be registered again.
void DbgBuildInfoMgr::fini()
{
    _appInfo.reset();
    _apis.clear();
}

}  // namespace Vn
