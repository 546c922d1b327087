#include "swatch.h"

#include <base/dbgbuildinfo.h>
#include <base/dbgbuildinfoutil.h>

#include <cstring>

VN_DEFINE_PACKAGE(swatch, VnInit::base);

namespace Swatch
{
namespace
{
Vn::InInit<VnInit::swatch> package;

constexpr struct
{
    char const* name;
    Colour colour;
} colours[] = {
    {"black", {0, 0, 0}},    {"silver", {192, 192, 192}}, {"gray", {128, 128, 128}}, {"white", {255, 255, 255}},
    {"maroon", {128, 0, 0}}, {"red", {255, 0, 0}},        {"purple", {128, 0, 128}}, {"fuchsia", {255, 0, 255}},
    {"green", {0, 128, 0}},  {"lime", {0, 255, 0}},       {"olive", {128, 128, 0}},  {"yellow", {255, 255, 0}},
    {"navy", {0, 0, 128}},   {"blue", {0, 0, 255}},       {"teal", {0, 128, 128}},   {"aqua", {0, 255, 255}},
};

int squareOf(int left, int right)
{
    return (left - right) * (left - right);
}

int distance(Colour const& left, Colour const& right)
{
    return squareOf(left.red, right.red) + squareOf(left.green, right.green) + squareOf(left.blue, right.blue);
}

class BuildInfo : public Vn::DbgBuildInfo
{
public:
    char const* getApiName() const override { return apiName; }
    int getMajorVersion() const override { return 1; }
    int getMinorVersion() const override { return 2; }
    char const* getStatus() const override { return "example"; }
    char const* getLibraryName(bool) const override { return "libVNswatch"; }
    char const* getBuildStamp(bool verbose) const override
    {
        return verbose ? "Swatch_" VN_BUILD_NUMBER : "S. " VN_BUILD_NUMBER;
    }
    char const* getBuildDate(bool) const override { return VN_BUILD_DATE; }
    char const* getBuildType(bool) const override { return VN_BUILD_TYPE; }
    char const* getBuilder(bool) const override { return VN_BUILDER; }
    char const* getExtraInfo() const override { return ""; }
};

/// Whoever loads the library by its name registers it before its package starts.
bool isAskedFor = false;
}  // namespace

char const apiName[] = "Swatch";

bool find(char const* name, Colour& colour)
{
    for (auto const& known : colours)
        if (std::strcmp(known.name, name) == 0) {
            colour = known.colour;
            return true;
        }
    return false;
}

char const* nearestName(Colour const& colour)
{
    auto const* nearest = colours;
    for (auto const& known : colours)
        if (distance(known.colour, colour) < distance(nearest->colour, colour))
            nearest = &known;
    return nearest->name;
}

}  // namespace Swatch

void Vn::InInit<VnInit::swatch>::performInitialize()
{
    if (!Swatch::isAskedFor)
        DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo>(new Swatch::BuildInfo));
}

VN_BUILD_INFO_ENTRY(VN_SWATCH_EXPORT)
{
    Swatch::isAskedFor = true;
    return new Swatch::BuildInfo;
}

char const* vnSwatchNearestName(int red, int green, int blue)
{
    const auto part = [](int value) { return static_cast<std::uint8_t>(value); };
    return Swatch::nearestName({part(red), part(green), part(blue)});
}
