// How packages start and stop.
//
// 1. Static construction: each package enters `_packagesWaiting`.
// 2. startWaiting() takes all that wait as one batch, and repeats while hooks register more. For each batch:
//    orderBatch()  name order, transitive dependencies, fewest dependencies first (inbatch.cpp); a cycle or an
//                  unregistered dependency ends the start here, before any hook has run
//    saveBatch()   all of the batch enter `_packagesSaved`, unmarked
//    startBatch()  each is started, and marked when its hook has returned
// 3. stopAll() walks `_packagesSaved` backwards and skips what is unmarked.
//
// All of this runs on one thread and takes no lock. But hooks may call back into it: they register packages, destroy
// them (with their library), end a guard (which runs startWaiting() within itself), or stop everything. So no
// iterator and no pointer into a list is kept across a hook: entries are copied and positions are checked again. A
// package that is destroyed leaves a hole, which is closed only while no hook runs, so the loops' indices stay right.
#include <base/ininitmgrstate_p.h>

#include <base/inbatch_p.h>
#include <base/indiagnostics_p.h>
#include <base/inex.h>
#include <base/inholes_p.h>
#include <base/ininitmgr_p.h>

#include <iostream>
#include <string_view>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/ininitmgr";

/// Sets a flag for the length of a scope, exceptions included. Restores the former value and not false:
/// startWaiting() can run within itself.
class FlagScope
{
public:
    explicit FlagScope(bool& flag) : _flag(flag), _before(flag) { _flag = true; }
    ~FlagScope() { _flag = _before; }
    FlagScope(FlagScope const&) = delete;
    FlagScope& operator=(FlagScope const&) = delete;

private:
    bool& _flag;
    bool _before;
};
}  // namespace

InInitMgr::State::State() : _environment(takeEnvironment()) {}

/// Of a name that occurs twice the later value is kept.
InInitMgr::State::Environment InInitMgr::State::takeEnvironment()
{
    Environment environment;
    for (std::string const& entry : System::getEnvironmentEntries()) {
        const std::size_t split = entry.find('=');
        if (split == std::string::npos)
            std::cerr << "Skipping over Environment Variable: " << entry << std::endl;
        else
            environment.insert_or_assign(entry.substr(0, split), entry.substr(split + 1));
    }
    return environment;
}

/// Compared bytewise, on Windows too: "Path" is not "PATH" here.
char const* InInitMgr::State::getEnv(char const* name) const
{
    const auto found = _environment.find(std::string_view(name));
    return found != _environment.end() ? found->second.c_str() : nullptr;
}

void InInitMgr::State::leaveGuard()
{
    if (_reinitCount-- == 1)
        startWaiting();
}

/// A type that runs already needs no entry: the package has a second object, in another library.
void InInitMgr::State::registerPackage(InPackageInit* package)
{
    if (_initialized && _reinitCount == 0)
        throw InEx::ExReinitWithoutGuard(sourceName, __LINE__);
    if (isRunning(typeid(*package)))
        return;
    InHoles::makeRoom(_packagesWaiting, isHole,
                      [this](PackageEntry const& moved, std::size_t to) { placesOf(moved).inBatch = to; });
    PackagePlaces& places = _places.get(package);
    _packagesWaiting.push_back({package, 0, false});
    places.inBatch = _packagesWaiting.size() - 1;
    ++places.listed;
}

/// Hooks may register packages, under a guard; these form the next batch.
void InInitMgr::State::startWaiting()
{
    _initialized = true;
    while (!_packagesWaiting.empty()) {
        takeUpWaiting();
        orderBatch();
        startBatch();
    }
}

/// What a failed start has left in `_packagesToInit` goes.
void InInitMgr::State::takeUpWaiting()
{
    drop(_packagesToInit);
    _packagesToInit.swap(_packagesWaiting);
    ++_batchNumber;
}

/// Both exceptions leave the batch where it is, for the reports.
void InInitMgr::State::orderBatch()
{
    // Read once: reading it for each of a thousand packages would take longer than all the rest.
    const bool isTelling = InDiagnostics::areOn();
    _cycleDetected = false;
    InBatch batch(_packagesToInit);
    removeListed(batch.sortByName());
    addListed(_packagesToInit);
    rememberBatch();
    _nbPckgs = static_cast<int>(_packagesToInit.size());
    if (isTelling)
        std::cerr << "-->_nbPckgs:" << std::to_string(_nbPckgs) << std::endl;

    InDependencyClosure closure = closeDependencies(batch.getDependencies(isTelling));
    if (closure.isCyclic) {
        _dependencyMatrix.reset(new InBitMatrix(std::move(closure.dependencies)));
        _cycleDetected = true;
        throw InEx::ExDependencyCycle(sourceName, __LINE__);
    }
    batch.sortByCount(closure.counts);
    rememberBatch();
    _dependencyMatrix.reset();
}

/// An exception leaves the loop: the packages before it run, it and those behind it stay unmarked. Nothing retries
/// the batch, which stays in `_packagesToInit` until the next one is taken up.
void InInitMgr::State::startBatch()
{
    const std::vector<std::size_t> savedAt = saveBatch();

    // From here on hooks run.
    const FlagScope initializing(_initializing);
    const unsigned batchNumber = _batchNumber;
    for (std::size_t i = 0; i < _packagesToInit.size(); ++i) {
        const PackageEntry entry = _packagesToInit[i];
        if (isHole(entry))
            continue;
        std::type_info const& type = typeOf(entry);  // before the hook, which may destroy the package
        entry.package->initialize();
        markStarted(entry, type, savedAt[i]);
        // A guard that ended in the hook has started another batch, which stands in `_packagesToInit` now.
        if (_batchNumber != batchNumber)
            break;
    }
    drop(_packagesToInit);
}

/// The hook may have destroyed packages, and this entry may have gone with them: hence the look at `savedAt`.
void InInitMgr::State::markStarted(PackageEntry const& entry, std::type_info const& type, std::size_t savedAt)
{
    const bool isThere = savedAt < _packagesSaved.size() && _packagesSaved[savedAt].package == entry.package;
    if (PackageEntry* const saved = isThere ? &_packagesSaved[savedAt] : findSaved(type))
        saved->initialized = true;
}

/// Appends the batch to `_packagesSaved` and returns the position there for each of its packages. A type that is
/// there already keeps its entry.
std::vector<std::size_t> InInitMgr::State::saveBatch()
{
    std::vector<std::size_t> savedAt;
    savedAt.reserve(_packagesToInit.size());
    if (!_initializing && !_finalizing)
        InHoles::makeRoom(_packagesSaved, isHole, [this](PackageEntry const& moved, std::size_t to) {
            placesOf(moved).inSaved = to;
            _isSavedIndexed = false;
        });
    indexSaved();
    _isSavedIndexed = false;  // in case there is no memory for what follows
    _savedByType.reserve(_packagesSaved.size() + _packagesToInit.size());
    for (PackageEntry const& entry : _packagesToInit) {
        savedAt.push_back(_packagesSaved.size());
        PackagePlaces& places = placesOf(entry);
        if (!_savedByType.insert(typeOf(entry), static_cast<unsigned>(_packagesSaved.size()), &places.type))
            continue;
        _packagesSaved.push_back({entry.package, entry.nbDependencies, false});
        places.inSaved = savedAt.back();
        ++places.listed;
    }
    _isSavedIndexed = true;
    return savedAt;
}

/// Brings `_savedByType` up to date; made anew only when packages have moved up since.
void InInitMgr::State::indexSaved()
{
    if (_isSavedIndexed)
        return;
    _savedByType.clear();
    for (std::size_t i = 0; i < _packagesSaved.size(); ++i)
        if (!isHole(_packagesSaved[i]))
            _savedByType.insert(typeOf(_packagesSaved[i]), static_cast<unsigned>(i),
                                &placesOf(_packagesSaved[i]).type);
    _isSavedIndexed = true;
}

/// The entry of that type, or null. The pointer holds until a package is destroyed or a batch is taken up.
PackageEntry* InInitMgr::State::findSaved(std::type_info const& type)
{
    if (_packagesSaved.empty())
        return nullptr;
    indexSaved();
    const unsigned found = _savedByType.find(type);
    return found != InTypeTable::none ? &_packagesSaved[found] : nullptr;
}

/// Saved is not enough: a package whose start failed is saved too.
bool InInitMgr::State::isRunning(std::type_info const& type)
{
    PackageEntry const* const saved = findSaved(type);
    return saved != nullptr && saved->initialized;
}

/// An exception leaves the loop with everything still in the list and marked, so a repeated stop calls all hooks
/// again.
void InInitMgr::State::stopAll()
{
    if (!_initialized)
        throw InEx::ExFinaliseBeforeInit(sourceName, __LINE__);
    // A hook that stops everything from within the stop would never end: it would walk through the same list again.
    if (_finalized || _finalizing)
        throw InEx::ExDoubleFinalise(sourceName, __LINE__);
    {
        const FlagScope finalizing(_finalizing);
        for (std::size_t i = _packagesSaved.size(); i > 0; --i) {
            const PackageEntry entry = _packagesSaved[i - 1];
            if (!isHole(entry) && entry.initialized)
                entry.package->finalize();
        }
    }
    drop(_packagesSaved);
    _savedByType.clear();
    _isSavedIndexed = true;
    // Set last: a stop that ended in an exception can be repeated.
    _finalized = true;
}

void InInitMgr::State::forget(InPackageInit* package) noexcept
{
    // The package's library may be unloaded with it, and another type's information may come to lie at the same
    // address. So the table must not remember any address of that library, whether this package is in a list or not.
    _savedByType.forgetAliases();

    PackagePlaces* const places = _places.find(package);
    if (places == nullptr)
        return;
    std::size_t left = places->listed;
    left -= removeEntry(_packagesWaiting, places->inBatch, package);
    left -= removeEntry(_packagesToInit, places->inBatch, package);
    if (removeEntry(_packagesSaved, places->inSaved, package)) {
        --left;
        // A table that is to be made anew may hold another package's place under that type.
        if (_isSavedIndexed)
            _savedByType.erase(places->type);
    }
    // It may stand elsewhere too: one that was registered twice, or again after its start had failed.
    for (std::size_t i = 0; left != 0 && i < _packagesWaiting.size(); ++i)
        left -= removeEntry(_packagesWaiting, i, package);
    for (std::size_t i = 0; left != 0 && i < _packagesToInit.size(); ++i)
        left -= removeEntry(_packagesToInit, i, package);
    _places.erase(package);

    InHoles::dropAtEnd(_packagesWaiting, isHole);
    if (!_initializing && !_finalizing)
        InHoles::dropAtEnd(_packagesSaved, isHole);
}

/// Makes a hole if that package stands at `place`. The start and the stop walk through these lists by index, so
/// nothing may move.
bool InInitMgr::State::removeEntry(Entries& entries, std::size_t place, InPackageInit const* package) noexcept
{
    const bool isThere = place < entries.size() && entries[place].package == package;
    if (isThere)
        entries[place].package = nullptr;
    return isThere;
}

/// Of packages that are in a list already and so have their places: nothing is allocated.
void InInitMgr::State::addListed(Entries const& entries)
{
    for (PackageEntry const& entry : entries)
        ++placesOf(entry).listed;
}

/// The places themselves stay, as the package may enter another list.
void InInitMgr::State::removeListed(Entries const& entries) noexcept
{
    for (PackageEntry const& entry : entries)
        if (!isHole(entry))
            --placesOf(entry).listed;
}

/// Empties a list whose packages may live on.
void InInitMgr::State::drop(Entries& entries) noexcept
{
    removeListed(entries);
    entries.clear();
}

/// After each sort, as forget() looks there first.
void InInitMgr::State::rememberBatch()
{
    for (std::size_t i = 0; i < _packagesToInit.size(); ++i)
        placesOf(_packagesToInit[i]).inBatch = i;
}

}  // namespace Vn
