// What the manager prints: its packages, the dependency cycles, and the packages as a graph. The texts of dump() and
// of the cycles are part of the interface, since programs compare them.
//
// Holes, which packages that were destroyed have left in the lists, are neither printed nor counted.
#include <base/ininitmgrstate_p.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace Vn
{
namespace
{
/// Without those that have been destroyed.
std::size_t countPackages(Vector<PackageEntry> const& entries)
{
    return entries.size() - static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(), isHole));
}

/// Intended: "1 packages" for a single one; programs compare the text. Do not mend. The numbers are formatted apart
/// from the stream, whose base and grouping the caller may have changed.
void printEntries(std::ostream& stream, Vector<PackageEntry> const& entries, char const* title)
{
    stream << std::to_string(countPackages(entries)) << title << std::endl;
    for (PackageEntry const& entry : entries) {
        if (isHole(entry))
            continue;
        stream << "\t'" << entry.package->getName() << "' ";
        if (entry.initialized)
            stream << "Initialized (" << std::to_string(entry.nbDependencies) << " dependencies)";
        else
            stream << "Not initialized";
        stream << std::endl;
    }
}

/// A name as a string of the DOT language.
std::string quotedForDot(std::string_view text)
{
    std::string quoted = "\"";
    for (char character : text) {
        if (character == '"' || character == '\\')
            quoted += '\\';
        quoted += character;
    }
    return quoted + '"';
}
}  // namespace

/// Intended: "waiting to be initialize", grammar included; programs compare the text. Do not mend.
void InInitMgr::State::dump(std::ostream& stream) const
{
    if (_packagesWaiting.empty())
        stream << "No packages waiting to be initialize." << std::endl;
    else
        printEntries(stream, _packagesWaiting, " packages waiting to be initialize:");
    if (countPackages(_packagesSaved) == 0)
        stream << "No packages saved." << std::endl;
    else
        printEntries(stream, _packagesSaved, " packages currently saved:");
    if (_cycleDetected) {
        stream << "Dependency cycle(s) detected..." << std::endl;
        printCycles(stream);
    }
}

/// For a program that caught the exception of a start and wants to say why. The batch and its matrix are still there.
void InInitMgr::State::reportCycles(std::ostream& stream) const
{
    if (_cycleDetected)
        printCycles(stream);
    else
        stream << "No dependency cycles to report." << std::endl;
}

/// Each package on a cycle once: the first of a group as its heading, the others that it depends on below it.
void InInitMgr::State::printCycles(std::ostream& stream) const
{
    // The batch is still in name order: a cycle ends the start before it is sorted by counts.
    const std::size_t count = _packagesToInit.size();
    std::vector<bool> isPrinted(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (isPrinted[i] || !isOnCycle(i))
            continue;
        stream << "'" << _packagesToInit[i].package->getName() << "' is in a cycle with:" << std::endl;
        for (std::size_t j = i + 1; j < count; ++j) {
            if (!_dependencyMatrix->test(i, j) || !isOnCycle(j))
                continue;
            isPrinted[j] = true;
            stream << "\t'" << _packagesToInit[j].package->getName() << "'" << std::endl;
        }
    }
}

/// Whether a package of the batch depends on itself; false for one that was destroyed since.
///
/// Intended: a package that only lists itself is no cycle for the start, but is printed with those that are, since
/// its bit (i, i) is set; do not mend.
bool InInitMgr::State::isOnCycle(std::size_t i) const
{
    return !isHole(_packagesToInit[i]) && _dependencyMatrix->test(i, i);
}

/// Edges come from the dependencies as listed, not from the closure. One to a package that isn't saved is left out.
void InInitMgr::State::dumpGraph(std::ostream& stream) const
{
    std::vector<InPackageInit const*> packages;
    InTypeTable positions;
    for (PackageEntry const& entry : _packagesSaved) {
        if (isHole(entry))
            continue;
        positions.insert(typeOf(entry), static_cast<unsigned>(packages.size()));
        packages.push_back(entry.package);
    }
    const auto nameAt = [&packages](std::size_t i) { return quotedForDot(packages[i]->getName()); };

    // All nodes before the edges, so that the packages are drawn in start order.
    stream << "digraph packages {\n";
    for (std::size_t i = 0; i < packages.size(); ++i) {
        const std::string label = std::to_string(i + 1) + ". " + packages[i]->getName();
        stream << "    " << nameAt(i) << " [label=" << quotedForDot(label) << "];\n";
    }
    for (std::size_t i = 0; i < packages.size(); ++i)
        for (std::type_info const* type : packages[i]->getDependencies())
            if (const unsigned target = positions.find(*type); target != InTypeTable::none)
                stream << "    " << nameAt(i) << " -> " << nameAt(target) << ";\n";
    stream << "}" << std::endl;
}

}  // namespace Vn
