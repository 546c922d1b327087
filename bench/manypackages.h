#pragma once

#include <base/inpackageinit.h>

#include <memory>
#include <vector>

namespace VnBench
{

using Needs = std::vector<std::type_info const*>;

/// A package type: each of the many has its own, as real packages do.
struct PackageType
{
    Vn::InPackageInit* (*make)(char const* name, Needs const& needs);
    std::type_info const* type;
};

constexpr int packageTypeCount = 10000;

std::vector<PackageType> const& getPackageTypes();

}  // namespace VnBench
