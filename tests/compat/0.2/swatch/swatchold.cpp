// swatchold: implements the API of swatch as it was a version ago, and so can't be used with it in one process.
#include "swatch.h"

#include <base/dbgbuildinfo.h>

#if defined(_WIN32)
#    define VN_SWATCHOLD_EXPORT __declspec(dllexport)
#else
#    define VN_SWATCHOLD_EXPORT __attribute__((visibility("default")))
#endif

namespace
{
class BuildInfo : public Vn::DbgBuildInfo
{
public:
    char const* getApiName() const override { return Swatch::apiName; }
    int getMajorVersion() const override { return 1; }
    int getMinorVersion() const override { return 1; }
    char const* getStatus() const override { return "example"; }
    char const* getLibraryName(bool) const override { return "libVNswatchold"; }
    char const* getBuildStamp(bool verbose) const override { return verbose ? "Swatch_old" : "S. old"; }
    char const* getBuildDate(bool) const override { return VN_BUILD_DATE; }
    char const* getBuildType(bool) const override { return VN_BUILD_TYPE; }
    char const* getBuilder(bool) const override { return VN_BUILDER; }
    char const* getExtraInfo() const override { return ""; }
};
}  // namespace

VN_BUILD_INFO_ENTRY(VN_SWATCHOLD_EXPORT)
{
    return new BuildInfo;
}
