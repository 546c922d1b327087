#pragma once

#include <base/baseexport.h>
#include <base/ininit.h>

/// The packages of this library. A client's package depends on those that it uses, or on `base` for all of them:
///
///     VN_DEFINE_PACKAGE(palette, VnInit::base);
///
/// They start in this order: initialize, heapMgr, initArg, osal, initVars, profiling, logger, debugging, baseMath,
/// random, discreteTime, testing, base.
/// Tests: tests/base/inpackagestest.cpp.
namespace VnInit
{
class base
{};
class baseMath
{};
class debugging
{};
class discreteTime
{};
class heapMgr
{};
class initArg
{};
class initialize
{};
class initVars
{};
class logger
{};
class osal
{};
class profiling
{};
class random
{};
class testing
{};
}  // namespace VnInit

namespace Vn
{

/// The whole library: depends on every other package, and so starts last of them.
template <>
class VN_BASE_EXPORT InInit<VnInit::base> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Registers the build information of this library.
    void performInitialize() override;
};

/// Numeric utilities. Without hooks: it exists to be depended on.
template <>
class VN_BASE_EXPORT InInit<VnInit::baseMath> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// Trace and build information.
template <>
class VN_BASE_EXPORT InInit<VnInit::debugging> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Applies the trace options, makes the build-information log group, and reads two settings:
    /// `VN_BUILDINFO_NO_VALIDATE` and `VN_BUILDINFO_CHECK_STAMPS`, each off at 0.
    void performInitialize() override;

    /// Destroys the build-information list and its log group.
    void performFinalize() override;
};

/// Rates, stream time and the reference clock.
template <>
class VN_BASE_EXPORT InInit<VnInit::discreteTime> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Fixes the zero of the reference clock: DtRefTimeFactory counts from this moment.
    void performInitialize() override;
};

/// Policy of the heap. HmHeapMgr::getInstance() throws InSingletonEx::ExNotInitialized unless this runs.
template <>
class VN_BASE_EXPORT InInit<VnInit::heapMgr> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Creates the HmHeapMgr, and prints its state to standard output if the environment asks for that.
    void performInitialize() override;

    /// Destroys the HmHeapMgr.
    void performFinalize() override;
};

/// Sources of settings on the command line. A package with an option among its sources depends on this one.
template <>
class VN_BASE_EXPORT InInit<VnInit::initArg> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Parses the arguments and takes the options out of the list; the rest is
    /// InContextAliasMgrBase::getUnboundArgs().
    void performInitialize() override;

    /// Takes the values away from the options; the argument list stays.
    void performFinalize() override;
};

/// Sources of settings elsewhere: defaults, environment and overrides. Depends on nothing and so starts first.
template <>
class VN_BASE_EXPORT InInit<VnInit::initialize> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Gives the sources their values. The environment is read here, once; overrides are refused from here on.
    void performInitialize() override;

    /// Takes the values away from the sources.
    void performFinalize() override;
};

/// Settings of this library. Without hooks: it exists to be depended on.
template <>
class VN_BASE_EXPORT InInit<VnInit::initVars> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// Message logging: the outputs of all levels exist from its start to its stop.
template <>
class VN_BASE_EXPORT InInit<VnInit::logger> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// LgLog::init(): reads the environment and opens the log files. Throws what that throws.
    void performInitialize() override;

    /// LgLog::destroy(): closes the log files. What is still in the queues is not written.
    void performFinalize() override;
};

/// Operating system layer.
template <>
class VN_BASE_EXPORT InInit<VnInit::osal> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// OsCpuInfo::initialize() and OsMemoryArch::getInstance(): asks the system about processor and memory.
    void performInitialize() override;

    /// OsCpuInfo::finalize().
    void performFinalize() override;
};

/// Clocks and timers.
template <>
class VN_BASE_EXPORT InInit<VnInit::profiling> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    /// Chooses the engine of the hardware counter and creates the Sleeper singleton.
    void performInitialize() override;

    /// Destroys the Sleeper singleton; the hardware counter's engine stays.
    void performFinalize() override;
};

/// Random and quasi-random samples. Without hooks: it exists to be depended on.
template <>
class VN_BASE_EXPORT InInit<VnInit::random> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// Test harness. Without hooks: it exists to be depended on.
template <>
class VN_BASE_EXPORT InInit<VnInit::testing> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

}  // namespace Vn
