// Private to ininitmgr.cpp, ininitmgrreport.cpp and ininitmgrstate.cpp.
#pragma once

#include <base/independencyclosure_p.h>
#include <base/ininitmgr.h>
#include <base/inpackageentry_p.h>
#include <base/intable_p.h>
#include <base/intypetable_p.h>
#include <base/objptr.h>
#include <base/vector.h>

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace Vn
{

/// What InInitMgr holds: the packages that wait, those being started, and those taken up so far. ininitmgrstate.cpp
/// says how they pass from one list to the next; ininitmgrreport.cpp prints them.
///
/// The fields up to `_reinitCount`, their order and their names are part of the interface; others may only follow.
class InInitMgr::State
{
public:
    /// Reads the environment.
    State();

    /// Starts what waits, batch by batch. Throws InEx::ExPackageNotRegistered and InEx::ExDependencyCycle, and what a
    /// hook throws. After the first two the batch stays for dump() and reportCycles(), and nothing retries it.
    void startWaiting();

    /// Stops what runs, in reverse start order. Throws InEx::ExFinaliseBeforeInit and InEx::ExDoubleFinalise before
    /// anything is stopped, and what a hook throws.
    void stopAll();

    /// Takes a package into the list of those that wait, unless its type runs already. Throws
    /// InEx::ExReinitWithoutGuard after the start while there is no guard.
    void registerPackage(InPackageInit* package);

    /// Removes a package that is being destroyed from all lists, at any time, from within any hook.
    void forget(InPackageInit* package) noexcept;

    /// Whether a package of that type has started and not stopped since.
    bool isRunning(std::type_info const& type);

    void enterGuard() { ++_reinitCount; }

    /// The last guard starts what waits, whether InInitMgr::initialize() was called before or not: a program that
    /// only loads libraries may have nothing but guards.
    void leaveGuard();

    /// @{
    /// Plain reads: these flags belong to the thread that drives the start.
    bool isInitializing() const { return _initializing; }
    bool isFinalizing() const { return _finalizing; }
    /// @}

    /// From the copy of the environment, so it is safe while another thread changes the environment.
    char const* getEnv(char const* name) const;

    /// @{
    /// As the functions of InInitMgr of these names.
    void dump(std::ostream& stream) const;
    void reportCycles(std::ostream& stream) const;
    void dumpGraph(std::ostream& stream) const;
    /// @}

private:
    using Entries = Vector<PackageEntry>;
    using Environment = std::map<std::string, std::string, std::less<>>;

    /// Where a package was last put, so that its departure needs no search. A place is only a hint: other entries may
    /// have moved there since, so whoever uses it looks whether the package stands there.
    struct PackagePlaces
    {
        std::size_t inBatch = 0;  ///< in `_packagesWaiting` or `_packagesToInit`
        std::size_t inSaved = 0;
        std::size_t listed = 0;  ///< entries of this package in the three lists
        InTypeTable::Key type;   ///< in `_savedByType`, while the package stands in `_packagesSaved`
    };

    static Environment takeEnvironment();

    void takeUpWaiting();
    void orderBatch();
    void startBatch();
    std::vector<std::size_t> saveBatch();
    void markStarted(PackageEntry const& entry, std::type_info const& type, std::size_t savedAt);

    PackageEntry* findSaved(std::type_info const& type);
    void indexSaved();

    PackagePlaces& placesOf(PackageEntry const& entry) { return _places.get(entry.package); }
    void addListed(Entries const& entries);
    void removeListed(Entries const& entries) noexcept;
    void drop(Entries& entries) noexcept;
    void rememberBatch();
    bool removeEntry(Entries& entries, std::size_t place, InPackageInit const* package) noexcept;

    bool isOnCycle(std::size_t i) const;
    void printCycles(std::ostream& stream) const;

    // A package that has been destroyed is null in these.
    Entries _packagesWaiting;
    Entries _packagesToInit;
    Entries _packagesSaved;
    bool _cycleDetected = false;
    /// Packages in the batch. The matrix has as many rows.
    int _nbPckgs = 0;
    /// Row i, bit j: package i of the batch depends on package j. Kept after a cycle, for the report.
    ObjPtr<InBitMatrix> _dependencyMatrix;
    bool _initialized = false;
    /// Set once and never cleared: a process initialises once.
    bool _finalized = false;
    bool _initializing = false;
    bool _finalizing = false;
    /// Existing InReinitGuards.
    int _reinitCount = 0;

    Environment _environment;
    /// Of each registered package. Not fields of the package, whose fields are part of the interface.
    InTable<InAddressKey, PackagePlaces> _places;
    /// Position in `_packagesSaved` of each type in it, if `_isSavedIndexed`.
    InTypeTable _savedByType;
    bool _isSavedIndexed = true;
    unsigned _batchNumber = 0;  ///< of the batch in `_packagesToInit`
};

}  // namespace Vn
