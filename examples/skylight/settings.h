#pragma once

#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>

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

extern Vn::InVariable<int> width, samples, threads;
extern Vn::InVariable<char const*> source, sampler, picture, histogram;
extern Vn::InVariable<bool> table, quiet;

/// The help, and what the settings ask for beyond their types.
Vn::InUsage getUsage();

}  // namespace Skylight::Settings
