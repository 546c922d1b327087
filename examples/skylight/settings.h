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

/// The program's package. It starts after all packages of the library, the log included.
template <>
class Vn::InInit<VnInit::skylight> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// The user's settings. Each comes from an option, an environment variable or a default, in this order.
namespace Skylight::Settings
{

extern Vn::InVariable<int> width, samples;
extern Vn::InVariable<char const*> source, sampler, picture, histogram;
extern Vn::InVariable<bool> table, quiet;

/// Prints one line for each option.
void printHelp(std::ostream& stream);

/// The first invalid setting and what is allowed instead, as one line; empty if all settings are valid.
std::string getFault();

}  // namespace Skylight::Settings
