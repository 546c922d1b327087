// A library that comes and goes, with all that one may have that comes late: packages, groups, a level of trace and
// variables of the environment.
#include <base/envvar.h>
#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/lglog.h>
#include <base/trace.h>

#include <optional>

#if defined(_WIN32)
#    define GUEST_EXPORT extern "C" __declspec(dllexport)
#else
#    define GUEST_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace VnInit
{
class guest
{};
class guestHelper
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::guestHelper> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

template <>
class Vn::InInit<VnInit::guest> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
};

VN_DEFINE_PACKAGE(guestHelper, VnInit::base);
VN_DEFINE_PACKAGE(guest, VnInit::guestHelper, VnInit::base);

namespace
{
Vn::InInit<VnInit::guest> package;
Vn::InInit<VnInit::guestHelper> helper;

Vn::EnvVar text("VN_TEST_GUEST_TEXT", "none");
Vn::EnvIntVar number("VN_TEST_GUEST_NUMBER", 7);
Vn::EnvDoubleVar fraction("VN_TEST_GUEST_FRACTION", 0.5);

Vn::TraceLevel& level = *Vn::Trace::registerLevel("Guest", __FILE__);

std::optional<Vn::LgMinorGroup> group;
}  // namespace

void Vn::InInit<VnInit::guest>::performInitialize()
{
    group.emplace(Vn::LgMajorGroup::getInstanceForName("Guest"), "Arrival");
    VN_LOG(*group, Vn::LgTypes::Warning, "is here");
}

/// The sum of its settings, for which it logs and traces. It needs its package to run.
GUEST_EXPORT double guestWork()
{
    VN_TRACE_ENTRY(level, "guestWork");
    const Vn::LgMinorGroup work(Vn::LgMajorGroup::getInstanceForName("Guest work"), "Work");
    const double sum = number.getValue() + fraction.getValue();
    VN_LOG(work, Vn::LgTypes::Warning, text.getValue() << " " << sum);
    VN_TRACE(level, "sum " << sum);
    return sum;
}
