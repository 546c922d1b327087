#pragma once

#include <base/ininit.h>
#include <base/inpackages.h>

#include <cstdint>

#if defined(_WIN32)
#    if defined(VN_SWATCH_BUILDING)
#        define VN_SWATCH_EXPORT __declspec(dllexport)
#    else
#        define VN_SWATCH_EXPORT __declspec(dllimport)
#    endif
#else
#    define VN_SWATCH_EXPORT __attribute__((visibility("default")))
#endif

namespace VnInit
{
class swatch
{};
}  // namespace VnInit

/// A small library of the family: the sixteen basic colours of the web and their names.
template <>
class VN_SWATCH_EXPORT Vn::InInit<VnInit::swatch> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
};

namespace Swatch
{

/// Name of the API. Its address is what identifies it, so whoever implements the API returns this one.
extern VN_SWATCH_EXPORT char const apiName[];

struct Colour
{
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

/// The colour of that name; false if there is none, and `colour` stays as it was.
VN_SWATCH_EXPORT bool find(char const* name, Colour& colour);

/// Name of the colour that is nearest to `colour`, by the sum of the squared differences; of equals, the first.
VN_SWATCH_EXPORT char const* nearestName(Colour const& colour);

}  // namespace Swatch

/// nearestName() for those who load the library by its name.
extern "C" VN_SWATCH_EXPORT char const* vnSwatchNearestName(int red, int green, int blue);
