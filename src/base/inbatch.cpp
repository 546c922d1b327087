// How a batch of packages gets its start order.
//
// 1. By name, with one entry for each type. This order breaks ties later on, and positions in it are what the
//    dependency graph and the closure speak of.
// 2. The listed dependencies become a graph of positions. A dependency outside the batch is an error: packages that
//    run already were never listed (InPackageInit::addDependency()).
// 3. The caller closes the graph (independencyclosure.cpp), which gives each package the number of its dependencies.
// 4. By that number. A package's count is always larger than the counts of the packages it depends on, so these come
//    first. Nothing else decides: not the order of registration, and not the addresses.
#include <base/inbatch_p.h>

#include <base/inex.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>

namespace Vn
{
namespace
{
/// The manager's name, whose steps these are.
constexpr char sourceName[] = "src/base/ininitmgr";
}  // namespace

/// A second list and a swap, so that an exception for want of memory leaves the first as it was.
InBatch::Entries InBatch::sortByName()
{
    // getName() is virtual and each comparison needs two names, so they are asked for once.
    struct Named
    {
        char const* name;
        PackageEntry entry;
    };
    std::vector<Named> named;
    named.reserve(_packages.size());
    for (PackageEntry const& entry : _packages)
        if (!isHole(entry))
            named.push_back({entry.package->getName(), entry});
    std::stable_sort(named.begin(), named.end(),
                     [](Named const& left, Named const& right) { return std::strcmp(left.name, right.name) < 0; });

    Entries sorted;
    sorted.reserve(named.size());
    _positions.reserve(named.size());
    for (Named const& next : named)
        if (_positions.insert(typeOf(next.entry), static_cast<unsigned>(sorted.size())))
            sorted.push_back(next.entry);
    _packages.swap(sorted);
    return sorted;
}

/// Intended: a dependency listed twice stands in the graph twice, since both count for the order. Do not mend.
InDependencyGraph InBatch::getDependencies(bool isTelling)
{
    InDependencyGraph graph;
    std::size_t listed = 0;
    for (PackageEntry const& entry : _packages)
        listed += entry.package->getDependencies().size();
    graph.targets.reserve(listed);
    graph.starts.reserve(_packages.size() + 1);
    graph.starts.push_back(0);
    for (std::size_t i = 0; i < _packages.size(); ++i) {
        InPackageInit const& package = *_packages[i].package;
        if (isTelling)
            std::cerr << "_packagesToInit[" << std::to_string(i) << "]: " << package.getName() << std::endl;
        for (std::type_info const* type : package.getDependencies()) {
            const unsigned target = _positions.find(*type);
            if (target == InTypeTable::none)
                throw InEx::ExPackageNotRegistered(sourceName, __LINE__, type->name());
            graph.targets.push_back(target);
        }
        graph.starts.push_back(static_cast<unsigned>(graph.targets.size()));
    }
    return graph;
}

/// A stable sort: equal counts stay in name order, which is the second half of the ordering rule.
void InBatch::sortByCount(std::vector<int> const& counts)
{
    for (std::size_t i = 0; i < _packages.size(); ++i)
        _packages[i].nbDependencies = counts[i];
    std::stable_sort(_packages.begin(), _packages.end(), [](PackageEntry const& left, PackageEntry const& right) {
        return left.nbDependencies < right.nbDependencies;
    });
}

}  // namespace Vn
