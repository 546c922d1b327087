#include <base/dbgbuildinfo.h>

#include <base/dbgbuildvalues_p.h>

#include <new>

namespace Vn
{
namespace
{
class BaseBuildInfo : public DbgBuildInfo
{
public:
    char const* getApiName() const override { return "Tessola"; }
    int getMajorVersion() const override { return 0; }
    int getMinorVersion() const override { return 2; }
    char const* getStatus() const override { return "pre-alpha"; }
    char const* getLibraryName(bool) const override { return "libVNbase"; }
    char const* getBuildStamp(bool verbose) const override
    {
        return verbose ? DbgBuildValues::stamp : DbgBuildValues::shortStamp;
    }
    char const* getBuildDate(bool) const override { return DbgBuildValues::date; }
    char const* getBuildType(bool) const override { return DbgBuildValues::type; }
    char const* getBuilder(bool) const override { return DbgBuildValues::builder; }
    char const* getExtraInfo() const override { return "[Information not available]"; }

    virtual ~BaseBuildInfo() = default;
};
}  // namespace

DbgBuildInfo* DbgBuildValues::createInfo()
{
    return new BaseBuildInfo;
}

void destroyOwned(DbgBuildInfo* info)
{
    if (info == nullptr)
        return;
    info->DbgBuildInfo::~DbgBuildInfo();
    ::operator delete(info);
}

}  // namespace Vn

VN_BUILD_INFO_ENTRY(VN_BASE_EXPORT)
{
    return Vn::DbgBuildValues::createInfo();
}
