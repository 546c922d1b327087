#include "version.h"

#include <base/dbgbuildinfomgr.h>

#include <ostream>

namespace Inventory
{
namespace
{
class BuildInfo : public Vn::DbgBuildInfo
{
public:
    char const* getApiName() const override { return "Inventory"; }
    int getMajorVersion() const override { return 1; }
    int getMinorVersion() const override { return 0; }
    char const* getStatus() const override { return "example"; }
    char const* getLibraryName(bool) const override { return "inventory"; }
    char const* getBuildStamp(bool verbose) const override
    {
        return verbose ? "Inventory_" VN_BUILD_NUMBER : "I. " VN_BUILD_NUMBER;
    }
    char const* getBuildDate(bool) const override { return VN_BUILD_DATE; }
    char const* getBuildType(bool) const override { return VN_BUILD_TYPE; }
    char const* getBuilder(bool) const override { return VN_BUILDER; }
    char const* getExtraInfo() const override { return ""; }
};
}  // namespace

void printVersion(std::ostream& stream, bool verbose)
{
    Vn::DbgBuildInfoMgr::registerAppInfo(Vn::ObjPtr<Vn::DbgBuildInfo>(new BuildInfo));
    Vn::DbgBuildInfoMgr::printBuildInfo(stream, verbose);
}

}  // namespace Inventory
