// Private to inbatch_p.h and ininitmgrstate_p.h.
#pragma once

#include <base/inpackageinit.h>

#include <typeinfo>

namespace Vn
{

/// A package in one of the manager's lists. The manager owns no package: each is a static object of its library.
struct PackageEntry
{
    InPackageInit* package;  ///< null once it has been destroyed
    int nbDependencies;      ///< direct and transitive, once the batch is ordered; 0 before
    bool initialized;        ///< its start has returned without an exception
};

/// Whether the package of that entry has been destroyed.
inline bool isHole(PackageEntry const& entry)
{
    return entry.package == nullptr;
}

/// The type by which packages are compared. The entry must not be a hole.
inline std::type_info const& typeOf(PackageEntry const& entry)
{
    InPackageInit const& package = *entry.package;
    return typeid(package);
}

}  // namespace Vn
