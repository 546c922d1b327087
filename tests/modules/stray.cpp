// A library whose package needs one that nobody registers.
#include <base/ininit.h>
#include <base/inpackages.h>

namespace VnInit
{
class absent
{};
class stray
{};
}  // namespace VnInit

/// Has a type, but no object is made of it.
template <>
class Vn::InInit<VnInit::absent> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

template <>
class Vn::InInit<VnInit::stray> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(absent, VnInit::base);
VN_DEFINE_PACKAGE(stray, VnInit::base, VnInit::absent);

static Vn::InInit<VnInit::stray> package;
