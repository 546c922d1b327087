#pragma once

#include <base/dbgbuildinfo.h>
#include <base/objptr.h>

#if defined(__GNUC__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

namespace VnTest
{

/// What a test's library says of itself.
struct BuildFacts
{
    char const* api = "Api";
    int majorVersion = 1;
    int minorVersion = 2;
    char const* status = "beta";
    char const* library = "libVNtest";
    char const* stamp = "P. 1";
    char const* longStamp = "Product_1";
};

/// Tells those facts, which must stay.
class BuildInfo : public Vn::DbgBuildInfo
{
public:
    explicit BuildInfo(BuildFacts const& facts) : _facts(&facts) {}

    char const* getApiName() const override { return _facts->api; }
    int getMajorVersion() const override { return _facts->majorVersion; }
    int getMinorVersion() const override { return _facts->minorVersion; }
    char const* getStatus() const override { return _facts->status; }
    char const* getLibraryName(bool verbose) const override { return verbose ? "the library" : _facts->library; }
    char const* getBuildStamp(bool verbose) const override { return verbose ? _facts->longStamp : _facts->stamp; }
    char const* getBuildDate(bool verbose) const override { return verbose ? "August 27" : "Aug 27"; }
    char const* getBuildType(bool verbose) const override { return verbose ? "Verbose build" : "Build"; }
    char const* getBuilder(bool verbose) const override { return verbose ? "Ann Builder" : "ann"; }
    char const* getExtraInfo() const override { return "extra"; }

    // Never runs.
    virtual ~BuildInfo() { ++destructions; }

    static inline int destructions = 0;

private:
    BuildFacts const* _facts;
};

inline Vn::ObjPtr<Vn::DbgBuildInfo> ownedInfo(BuildFacts const& facts)
{
    return Vn::ObjPtr<Vn::DbgBuildInfo>(new BuildInfo(facts));
}

}  // namespace VnTest

#if defined(__GNUC__)
#    pragma GCC diagnostic pop
#endif
