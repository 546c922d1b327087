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

/// The whole library: depends on every other package.
template <>
class VN_BASE_EXPORT InInit<VnInit::base> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
};

/// Numeric utilities.
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
    void performInitialize() override;
    void performFinalize() override;
};

/// Rates, stream time and the reference clock.
template <>
class VN_BASE_EXPORT InInit<VnInit::discreteTime> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
};

/// Policy of the heap.
template <>
class VN_BASE_EXPORT InInit<VnInit::heapMgr> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

/// Sources of settings on the command line.
template <>
class VN_BASE_EXPORT InInit<VnInit::initArg> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

/// Sources of settings elsewhere: overrides, environment, defaults. Starts first.
template <>
class VN_BASE_EXPORT InInit<VnInit::initialize> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

/// Settings of this library.
template <>
class VN_BASE_EXPORT InInit<VnInit::initVars> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// Message logging.
template <>
class VN_BASE_EXPORT InInit<VnInit::logger> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

/// Operating system layer.
template <>
class VN_BASE_EXPORT InInit<VnInit::osal> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

/// Clocks and timers.
template <>
class VN_BASE_EXPORT InInit<VnInit::profiling> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

/// Random and quasi-random samples.
template <>
class VN_BASE_EXPORT InInit<VnInit::random> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

/// Test harness.
template <>
class VN_BASE_EXPORT InInit<VnInit::testing> : public InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

}  // namespace Vn
