// Private to inbatch.cpp and ininitmgrstate.cpp.
#pragma once

#include <base/independencyclosure_p.h>
#include <base/inpackageentry_p.h>
#include <base/intypetable_p.h>
#include <base/vector.h>

#include <vector>

namespace Vn
{

/// Brings the packages that are taken up together into their start order.
///
///     InBatch batch(packages);
///     batch.sortByName();
///     InDependencyClosure closure = closeDependencies(batch.getDependencies());
///     batch.sortByCount(closure.counts);
///
/// The name order comes first since it decides among packages with equally many dependencies. Works on the list that
/// it is given, which must not change otherwise meanwhile.
/// Tests: tests/base/inrandomgraphtest.cpp, tests/base/ininitmgrtest.cpp.
class InBatch
{
public:
    using Entries = Vector<PackageEntry>;

    explicit InBatch(Entries& packages) : _packages(packages) {}

    /// Leaves out holes, and all but the first of several packages of one type. Equal names keep the order of
    /// registration. Returns the list as it was. If there is no memory, nothing changes.
    Entries sortByName();

    /// What each package lists, as positions in name order. With `isTelling` each name is printed to standard error.
    /// Throws InEx::ExPackageNotRegistered for a type that isn't in the batch.
    InDependencyGraph getDependencies(bool isTelling);

    /// Stores the counts, which stand in name order, and brings the smallest to the front. Equal counts stay in name
    /// order.
    void sortByCount(std::vector<int> const& counts);

private:
    Entries& _packages;
    InTypeTable _positions;  ///< of each type in name order
};

}  // namespace Vn
