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

char const* orEmpty(char const* text)
{
    return ExReasonText::orEmpty(text);
}

bool haveSameVersion(DbgBuildInfo const& left, DbgBuildInfo const& right)
{
    return left.getMajorVersion() == right.getMajorVersion() && left.getMinorVersion() == right.getMinorVersion();
}

bool haveSameStamp(DbgBuildInfo const& left, DbgBuildInfo const& right)
{
    return std::strcmp(orEmpty(left.getBuildStamp(false)), orEmpty(right.getBuildStamp(false))) == 0;
}

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
[[maybe_unused]] DbgApiTable const* const apis = ::new (static_cast<void*>(apisStorage)) DbgApiTable;
}  // namespace

void DbgBuildInfoMgr::registerInfo(ObjPtr<DbgBuildInfo> info, bool validateVersions, bool checkStamps)
{
    if (!info)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "info != 0");
    if (DbgApiTable::Infos const* const known = _apis.find(info->getApiName())) {
        DbgBuildInfo const& first = *known->front();
        if (!haveSameVersion(first, *info)) {
            reportVersion(first, *info);
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

void DbgBuildInfoMgr::registerAppInfo(ObjPtr<DbgBuildInfo> info)
{
    if (_appInfo)
        throw DbgBuildInfoEx::ExAppAlreadyRegistered(sourceName, __LINE__);
    _appInfo = info;
}

DbgBuildInfo const& DbgBuildInfoMgr::getAppInfo()
{
    if (!_appInfo)
        throw DbgBuildInfoEx::ExAppNotRegistered(sourceName, __LINE__);
    return *_appInfo;
}

std::ostream& DbgBuildInfoMgr::printAppInfo(std::ostream& stream, bool verbose)
{
    if (!_appInfo)
        return stream << "Unknown application name / version.\n";
    printApi(stream, *_appInfo);
    printBuild(stream, *_appInfo, verbose, "\t");
    return stream;
}

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

void DbgBuildInfoMgr::init() {}

void DbgBuildInfoMgr::fini()
{
    _appInfo.reset();
    _apis.clear();
}

}  // namespace Vn
