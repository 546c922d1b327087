// What this library says of itself, and how objects of such classes are destroyed.
#include <base/dbgbuildinfo.h>

#include <base/dbgbuildvalues_p.h>

#include <new>

namespace Vn
{
namespace
{
/// The values of stamp, date, type and builder come from the build (dbgbuildvalues.cpp).
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

/// For the package `base`, which registers the result, and for the entry below.
DbgBuildInfo* DbgBuildValues::createInfo()
{
    return new BaseBuildInfo;
}

/// Intended: the base's plain destructor, although `info` points to a derived class. The base has no virtual
/// destructor, as its slots are given, so a description must hold nothing that needs destruction. Do not mend.
void destroyOwned(DbgBuildInfo* info)
{
    if (info == nullptr)
        return;
    info->DbgBuildInfo::~DbgBuildInfo();
    ::operator delete(info);
}

}  // namespace Vn

/// Looked up by name in each library of the family: DbgBuildInfoUtil::registerModule() calls it.
VN_BUILD_INFO_ENTRY(VN_BASE_EXPORT)
{
    return Vn::DbgBuildValues::createInfo();
}
