#pragma once

#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <iosfwd>
#include <string>

namespace VnInit
{
class skylight
{};
}  // namespace VnInit

/// The program's package: it comes up when the whole library is up, log included.
template <>
class Vn::InInit<VnInit::skylight> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// What the user has chosen, by option, environment or default.
namespace Skylight::Settings
{

extern Vn::InVariable<int> width, samples;
extern Vn::InVariable<char const*> source, sampler, picture, histogram;
extern Vn::InVariable<bool> table, quiet;

void printHelp(std::ostream& stream);

/// What is wrong with the settings; empty if nothing is.
std::string getFault();

}  // namespace Skylight::Settings
