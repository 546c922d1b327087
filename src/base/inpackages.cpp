// The library's own packages: what each depends on, and what its hooks do.
//
// Their objects register during static construction, before `main`, in alphabetical order. The order of start
// follows from the dependencies listed here alone; docs/design.md has the picture. Each hook only calls the
// subsystem that it belongs to; the order of the calls within a hook is the order in which that subsystem's parts
// need each other.
#include <base/inpackages.h>

#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildinfoutil.h>
#include <base/dbgbuildvalues_p.h>
#include <base/dbggroup_p.h>
#include <base/dtreftimefactory.h>
#include <base/hmheapmgr.h>
#include <base/hwcounter.h>
#include <base/incontextaliasmgr.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/neverdestroyed_p.h>
#include <base/objptr.h>
#include <base/oscpuinfo.h>
#include <base/osmemoryarch.h>
#include <base/sleeper.h>
#include <base/trace.h>

#include <iostream>

// Dependencies as listed; the comment in inpackages.h has the order that follows from them. A package lists what it
// uses itself, also where another of its dependencies lists it too: the lists don't change when that one's do.
VN_DEFINE_PACKAGE(base, VnInit::random, VnInit::discreteTime, VnInit::baseMath, VnInit::initVars, VnInit::testing,
                  VnInit::debugging, VnInit::logger, VnInit::profiling, VnInit::osal, VnInit::initArg,
                  VnInit::heapMgr, VnInit::initialize);
VN_DEFINE_PACKAGE(baseMath, VnInit::debugging, VnInit::profiling, VnInit::osal, VnInit::initArg,
                  VnInit::initialize);
VN_DEFINE_PACKAGE(debugging, VnInit::logger, VnInit::osal, VnInit::initArg, VnInit::initialize);
VN_DEFINE_PACKAGE(discreteTime, VnInit::baseMath, VnInit::debugging, VnInit::profiling, VnInit::initArg,
                  VnInit::initialize);
VN_DEFINE_PACKAGE(heapMgr, VnInit::initialize);
VN_DEFINE_PACKAGE(initArg, VnInit::initialize);
/// Depends on nothing: every other package may have a setting.
VN_DEFINE_PACKAGE(initialize);
VN_DEFINE_PACKAGE(initVars, VnInit::osal, VnInit::initialize);
VN_DEFINE_PACKAGE(logger, VnInit::profiling, VnInit::osal, VnInit::initialize);
VN_DEFINE_PACKAGE(osal, VnInit::initialize);
VN_DEFINE_PACKAGE(profiling, VnInit::osal, VnInit::initialize);
VN_DEFINE_PACKAGE(random, VnInit::debugging, VnInit::profiling, VnInit::osal, VnInit::initArg, VnInit::initialize);
VN_DEFINE_PACKAGE(testing, VnInit::debugging, VnInit::logger, VnInit::profiling, VnInit::osal, VnInit::initArg,
                  VnInit::heapMgr, VnInit::initialize);

namespace Vn
{
namespace
{
/// The managers of the four kinds of sources.
using OverrideMgr = InContextAliasMgr<InContextAlias<InInitOvr, 0>>;
using ArgumentMgr = InContextAliasMgr<InContextAlias<InInitArg, 1>>;
using EnvironmentMgr = InContextAliasMgr<InContextAlias<InInitEnv, 1>>;
using DefaultMgr = InContextAliasMgr<InContextAlias<InInitDef, 0>>;

/// The packages, in the order in which they register, and the settings of one of them.
///
/// Never destroyed: a static object that holds an InInitGuard stops everything at the very end and must find all of
/// them. In one object, so that the addresses of the sources, by which the diagnostics list them, have the same order
/// in every build.
struct OwnPackages
{
    InInit<VnInit::base> base;
    InInit<VnInit::baseMath> baseMath;
    InInit<VnInit::debugging> debugging;
    InInit<VnInit::discreteTime> discreteTime;
    InInit<VnInit::heapMgr> heapMgr;
    InInit<VnInit::initArg> initArg;
    InInit<VnInit::initialize> initialize;
    InInit<VnInit::initVars> initVars;
    InInit<VnInit::logger> logger;
    InInit<VnInit::osal> osal;
    InInit<VnInit::profiling> profiling;
    InInit<VnInit::random> random;
    InInit<VnInit::testing> testing;

    InContextAlias<InInitEnv, 1> noValidateVariable{"VN_BUILDINFO_NO_VALIDATE",
                                                    "Suppress validation of version numbers"};
    InContextAlias<InInitEnv, 1> checkStampsVariable{"VN_BUILDINFO_CHECK_STAMPS",
                                                     "Enable validation of build stamps"};
    InContextAlias<InInitDef, 0> noValidateDefault{"0", "Default value for validation suppression env var"};
    InContextAlias<InInitDef, 0> checkStampsDefault{"0", "Default value for enabling stamp check env var"};
    InVariable<int> noValidate{"Vn::Tessola::debugging::buildInfoNoValidate", debugging, noValidateVariable,
                               noValidateDefault};
    InVariable<int> checkStamps{"Vn::Tessola::debugging::buildInfoCheckStamps", debugging, checkStampsVariable,
                                checkStampsDefault};
};

NeverDestroyed<OwnPackages> ownPackages;

/// Installs an object as its class's singleton. If there is one already, that throws, and the object is destroyed.
template <class T>
void installSingleton(ObjPtr<T> object)
{
    InSingleton<T>::initialize(object.get());
    object.release();
}

/// Destroys the singleton. It is gone already if a stop failed in another package and is now repeated.
template <class T>
void destroySingleton()
{
    try {
        InSingleton<T>::finalize();
    } catch (InSingletonEx::ExAlreadyDestroyed const&) {
    }
}
}  // namespace

/// Defaults before the environment before overrides; options follow with the package `initArg`. The order shows only
/// in the diagnostics.
void InInit<VnInit::initialize>::performInitialize()
{
    DefaultMgr::initialize();
    EnvironmentMgr::initialize();
    OverrideMgr::initialize();
}

/// Intended: the same order as at the start, and not the reverse. The managers don't depend on each other; do not
/// mend.
void InInit<VnInit::initialize>::performFinalize()
{
    DefaultMgr::finalize();
    EnvironmentMgr::finalize();
    OverrideMgr::finalize();
}

/// The dump comes after the manager is installed: it goes through getInstance() as any client's call does.
void InInit<VnInit::heapMgr>::performInitialize()
{
    installSingleton(ObjPtr<HmHeapMgr>(HmHeapMgr::create()));
    if (HmHeapMgr::getInstance().isDumpHeapInfo())
        HmHeapMgr::getInstance().dump(std::cout);
}

/// The settings of the heap end with the package; the heap itself goes on.
void InInit<VnInit::heapMgr>::performFinalize()
{
    destroySingleton<HmHeapMgr>();
}

/// From here on the argument list holds only what no option took.
void InInit<VnInit::initArg>::performInitialize()
{
    ArgumentMgr::initialize();
}

void InInit<VnInit::initArg>::performFinalize()
{
    ArgumentMgr::finalize();
}

/// Both ask the system once and keep the answer.
void InInit<VnInit::osal>::performInitialize()
{
    OsCpuInfo::initialize();
    OsMemoryArch::getInstance();
}

void InInit<VnInit::osal>::performFinalize()
{
    OsCpuInfo::finalize();
}

/// Until this hook the counter has an engine that doesn't know the processor's frequency.
void InInit<VnInit::profiling>::performInitialize()
{
    // The engine of before is not freed, as another thread may be reading it, and stays reachable, so that no leak
    // checker reports it.
    [[maybe_unused]] static HwCounterEng const* const abandoned = HwCounter::_theHwCounter;
    HwCounter::setEngine(HwCounterEng::create());
    installSingleton(ObjPtr<Sleeper>(Sleeper::create()));
}

/// The counter keeps its engine: code that runs after the stop may still take a time stamp.
void InInit<VnInit::profiling>::performFinalize()
{
    destroySingleton<Sleeper>();
}

void InInit<VnInit::logger>::performInitialize()
{
    LgLog::init();
}

/// Intended: what is left in the queues is not written. The program flushes them before it stops; do not mend.
void InInit<VnInit::logger>::performFinalize()
{
    LgLog::destroy();
}

/// The empty text changes no trace option; the call makes sure that `VN_TRACE_OPTIONS` has been read.
void InInit<VnInit::debugging>::performInitialize()
{
    Trace::setOptions("");
    DbgGroup::create();
    DbgBuildInfoMgr::init();
    if (ownPackages->noValidate.getValue() != 0)
        DbgBuildInfoUtil::setValidateVersions(false);
    if (ownPackages->checkStamps.getValue() != 0)
        DbgBuildInfoUtil::setCheckStamps(true);
}

/// In the reverse order of the start.
void InInit<VnInit::debugging>::performFinalize()
{
    DbgBuildInfoMgr::fini();
    DbgGroup::destroy();
}

void InInit<VnInit::discreteTime>::performInitialize()
{
    DtRefTimeFactory::getInstance();  // fixes the clock's zero
}

/// Last of all packages: everything that a description may refer to runs by now.
void InInit<VnInit::base>::performInitialize()
{
    DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo>(DbgBuildValues::createInfo()));
}

}  // namespace Vn
