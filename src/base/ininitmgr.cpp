#include <base/ininitmgr.h>

#include <base/assertions.h>
#include <base/incontextaliasmgr.h>
#include <base/independencyclosure_p.h>
#include <base/indiagnostics_p.h>
#include <base/inholes_p.h>
#include <base/ininitmgr_p.h>
#include <base/inpackageinit.h>
#include <base/intypetable_p.h>
#include <base/invariable.h>
#include <base/objptr.h>
#include <base/vector.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/ininitmgr";

/// Sets a flag for the length of a scope.
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

using Environment = std::map<std::string, std::string, std::less<>>;

Environment takeEnvironment()
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

struct InInitMgr::PackageEntry
{
    InPackageInit* package;
    int nbDependencies;
    bool initialized;
};

class InInitMgr::State
{
public:
    using Entries = Vector<PackageEntry>;

    void takeArguments(int argc, char const* const* argv);
    void startWaiting();
    void stopAll();
    void addWaiting(InPackageInit* package);

    PackageEntry* findSaved(std::type_info const& type);
    bool isRunning(std::type_info const& type);
    void forget(InPackageInit* package) noexcept;

    bool isAnythingSaved() const { return _packagesSaved.size() != _holesSaved; }
    void printWaiting(std::ostream& stream) const;
    void printSaved(std::ostream& stream) const;
    void printCycles(std::ostream& stream) const;
    void printGraph(std::ostream& stream) const;

    // A package that has been destroyed is null in these.
    Entries _packagesWaiting;
    Entries _packagesToInit;
    Entries _packagesSaved;
    bool _cycleDetected = false;
    int _nbPckgs = 0;
    ObjPtr<InBitMatrix> _dependencyMatrix;
    bool _initialized = false;
    bool _finalized = false;
    bool _initializing = false;
    bool _finalizing = false;
    int _reinitCount = 0;

    Environment _environment = takeEnvironment();

private:
    static bool isHole(PackageEntry const& entry) { return entry.package == nullptr; }
    static void drop(Entries& entries) noexcept;
    static void printEntries(std::ostream& stream, Entries const& entries, std::size_t holes, char const* title);

    InTypeTable sortBatch();
    void rememberBatch() noexcept;
    InDependencyGraph buildDependencies();
    void closeMatrix(InDependencyGraph const& graph);
    void startBatch();
    std::vector<std::size_t> saveBatch();
    void indexSaved();
    bool isOnRing(std::size_t i) const;

    static std::type_info const& typeOf(PackageEntry const& entry)
    {
        InPackageInit const& package = *entry.package;
        return typeid(package);
    }

    /// Position in `_packagesSaved` of each type in it; made anew when it doesn't hold.
    InTypeTable _savedByType;
    bool _savedByTypeHolds = true;
    unsigned _batch = 0;  ///< number of the batch in `_packagesToInit`
    std::size_t _holesWaiting = 0;
    std::size_t _holesSaved = 0;
};

/// Empties a list whose packages may live on.
void InInitMgr::State::drop(Entries& entries) noexcept
{
    for (PackageEntry const& entry : entries)
        if (!isHole(entry))
            --entry.package->_listed;
    entries.clear();
}

void InInitMgr::State::takeArguments(int argc, char const* const* argv)
{
    if (argc > 0 && argv == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "argv != 0");
    // All copies are made before the list gains the first, so that it gains all or none.
    std::vector<ArrayPtr<char>> copies;
    for (int i = 0; i < argc; ++i)
        copies.emplace_back(duplicateString(argv[i]));
    InContextAliasMgrBase::addArgs(copies);
}

void InInitMgr::State::startWaiting()
{
    _initialized = true;
    while (!_packagesWaiting.empty()) {
        drop(_packagesToInit);
        _packagesToInit.swap(_packagesWaiting);
        _holesWaiting = 0;
        ++_batch;
        closeMatrix(buildDependencies());
        if (_cycleDetected)
            throw InEx::ExDependencyCycle(sourceName, __LINE__);
        startBatch();
    }
}

/// Puts the batch into the order of the names, with one entry per type, and tells the position of each type. Equal names
/// keep the order of registration; of equal types the first in that order stays.
InTypeTable InInitMgr::State::sortBatch()
{
    struct Named
    {
        char const* name;
        PackageEntry entry;
    };
    std::vector<Named> named;
    named.reserve(_packagesToInit.size());
    for (PackageEntry const& entry : _packagesToInit)
        if (!isHole(entry))
            named.push_back({entry.package->getName(), entry});
    std::stable_sort(named.begin(), named.end(),
                     [](Named const& left, Named const& right) { return std::strcmp(left.name, right.name) < 0; });

    InTypeTable positions;
    positions.reserve(named.size());
    Entries sorted;
    sorted.reserve(named.size());
    for (Named const& next : named)
        if (positions.insert(typeOf(next.entry), static_cast<unsigned>(sorted.size())))
            sorted.push_back(next.entry);
    drop(_packagesToInit);
    _packagesToInit.swap(sorted);
    for (PackageEntry const& entry : _packagesToInit)
        ++entry.package->_listed;
    rememberBatch();
    return positions;
}

void InInitMgr::State::rememberBatch() noexcept
{
    for (std::size_t i = 0; i < _packagesToInit.size(); ++i)
        _packagesToInit[i].package->_batchAt = i;
}

InDependencyGraph InInitMgr::State::buildDependencies()
{
    _cycleDetected = false;
    InTypeTable positions = sortBatch();
    _nbPckgs = static_cast<int>(_packagesToInit.size());
    // Asked once: nothing in between could change it, and a thousand questions cost more than all the rest.
    const bool isTelling = InDiagnostics::areOn();
    if (isTelling)
        std::cerr << "-->_nbPckgs:" << std::to_string(_nbPckgs) << std::endl;

    InDependencyGraph graph;
    std::size_t listed = 0;
    for (PackageEntry const& entry : _packagesToInit)
        listed += entry.package->getDependencies().size();
    graph.targets.reserve(listed);
    graph.starts.reserve(_packagesToInit.size() + 1);
    graph.starts.push_back(0);
    for (std::size_t i = 0; i < _packagesToInit.size(); ++i) {
        PackageEntry& entry = _packagesToInit[i];
        if (isTelling)
            std::cerr << "_packagesToInit[" << std::to_string(i) << "]: " << entry.package->getName() << std::endl;
        for (std::type_info const* type : entry.package->getDependencies()) {
            const unsigned needed = positions.find(*type);
            if (needed == InTypeTable::none)
                throw InEx::ExPackageNotRegistered(sourceName, __LINE__, type->name());
            graph.targets.push_back(needed);
            ++entry.nbDependencies;
        }
        graph.starts.push_back(static_cast<unsigned>(graph.targets.size()));
    }
    return graph;
}

void InInitMgr::State::closeMatrix(InDependencyGraph const& graph)
{
    InDependencyClosure closure = closeDependencies(graph);
    for (std::size_t i = 0; i < _packagesToInit.size(); ++i)
        _packagesToInit[i].nbDependencies = closure.counts[i];
    _dependencyMatrix.reset(new InBitMatrix(std::move(closure.needs)));
    _cycleDetected = closure.isCyclic;
}

void InInitMgr::State::startBatch()
{
    std::stable_sort(_packagesToInit.begin(), _packagesToInit.end(),
                     [](PackageEntry const& left, PackageEntry const& right) {
                         return left.nbDependencies < right.nbDependencies;
                     });
    rememberBatch();
    _dependencyMatrix.reset();
    const std::vector<std::size_t> savedAt = saveBatch();

    const FlagScope initializing(_initializing);
    const unsigned batch = _batch;
    for (std::size_t i = 0; i < _packagesToInit.size(); ++i) {
        const PackageEntry entry = _packagesToInit[i];
        if (isHole(entry))
            continue;
        std::type_info const& type = typeOf(entry);  // before the hook, which may destroy the package
        entry.package->initialize();
        const bool isWhereItWas =
            savedAt[i] < _packagesSaved.size() && _packagesSaved[savedAt[i]].package == entry.package;
        if (PackageEntry* const saved = isWhereItWas ? &_packagesSaved[savedAt[i]] : findSaved(type))
            saved->initialized = true;
        if (_batch != batch)
            break;  // the hook has ended a guard, and what stands here now is another batch
    }
    drop(_packagesToInit);
}

/// Takes the batch up, and tells the position of each of its types among the packages taken up.
std::vector<std::size_t> InInitMgr::State::saveBatch()
{
    std::vector<std::size_t> savedAt;
    savedAt.reserve(_packagesToInit.size());
    indexSaved();
    _savedByTypeHolds = false;  // in case there is no memory for what follows
    _savedByType.reserve(_packagesSaved.size() + _packagesToInit.size());
    for (PackageEntry const& entry : _packagesToInit) {
        savedAt.push_back(_packagesSaved.size());
        if (!_savedByType.insert(typeOf(entry), static_cast<unsigned>(_packagesSaved.size())))
            continue;
        _packagesSaved.push_back({entry.package, entry.nbDependencies, false});
        entry.package->_savedAt = savedAt.back();
        ++entry.package->_listed;
    }
    _savedByTypeHolds = true;
    return savedAt;
}

void InInitMgr::State::indexSaved()
{
    if (_savedByTypeHolds)
        return;
    _savedByType.clear();
    for (std::size_t i = 0; i < _packagesSaved.size(); ++i)
        if (!isHole(_packagesSaved[i]))
            _savedByType.insert(typeOf(_packagesSaved[i]), static_cast<unsigned>(i));
    _savedByTypeHolds = true;
}

InInitMgr::PackageEntry* InInitMgr::State::findSaved(std::type_info const& type)
{
    if (_packagesSaved.empty())
        return nullptr;
    indexSaved();
    const unsigned found = _savedByType.find(type);
    return found != InTypeTable::none ? &_packagesSaved[found] : nullptr;
}

bool InInitMgr::State::isRunning(std::type_info const& type)
{
    PackageEntry const* const saved = findSaved(type);
    return saved != nullptr && saved->initialized;
}

void InInitMgr::State::stopAll()
{
    {
        const FlagScope finalizing(_finalizing);
        for (std::size_t i = _packagesSaved.size(); i > 0; --i) {
            const PackageEntry entry = _packagesSaved[i - 1];
            if (!isHole(entry) && entry.initialized)
                entry.package->finalize();
        }
    }
    drop(_packagesSaved);
    _holesSaved = 0;
    _savedByType.clear();
    _savedByTypeHolds = true;
    _finalized = true;
}

void InInitMgr::State::addWaiting(InPackageInit* package)
{
    _packagesWaiting.push_back({package, 0, false});
    package->_batchAt = _packagesWaiting.size() - 1;
    ++package->_listed;
}

void InInitMgr::State::forget(InPackageInit* package) noexcept
{
    // The package's library may go with it, and another one may come to stand at its addresses: none is to be
    // remembered, whether this package is in a list or not.
    _savedByTypeHolds = false;

    const auto leave = [package](Entries& entries, std::size_t place) {
        const bool isThere = place < entries.size() && entries[place].package == package;
        if (isThere) {
            entries[place].package = nullptr;
            --package->_listed;
        }
        return isThere;
    };
    _holesWaiting += leave(_packagesWaiting, package->_batchAt);
    leave(_packagesToInit, package->_batchAt);
    _holesSaved += leave(_packagesSaved, package->_savedAt);
    // It may stand elsewhere too: one that was registered twice, or again after its start had failed.
    for (std::size_t i = 0; package->_listed != 0 && i < _packagesWaiting.size(); ++i)
        _holesWaiting += leave(_packagesWaiting, i);
    for (std::size_t i = 0; package->_listed != 0 && i < _packagesToInit.size(); ++i)
        leave(_packagesToInit, i);

    InHoles::tidy(_packagesWaiting, _holesWaiting, isHole,
                  [](PackageEntry const& moved, std::size_t to) { moved.package->_batchAt = to; });
    if (!_initializing && !_finalizing)
        InHoles::tidy(_packagesSaved, _holesSaved, isHole,
                      [](PackageEntry const& moved, std::size_t to) { moved.package->_savedAt = to; });
}

void InInitMgr::State::printWaiting(std::ostream& stream) const
{
    printEntries(stream, _packagesWaiting, _holesWaiting, " packages waiting to be initialize:");
}

void InInitMgr::State::printSaved(std::ostream& stream) const
{
    printEntries(stream, _packagesSaved, _holesSaved, " packages currently saved:");
}

void InInitMgr::State::printEntries(std::ostream& stream, Entries const& entries, std::size_t holes,
                                    char const* title)
{
    stream << std::to_string(entries.size() - holes) << title << std::endl;
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

void InInitMgr::State::printCycles(std::ostream& stream) const
{
    const std::size_t count = _packagesToInit.size();
    std::vector<bool> isGrouped(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (isGrouped[i] || !isOnRing(i))
            continue;
        isGrouped[i] = true;
        stream << "'" << _packagesToInit[i].package->getName() << "' is in a cycle with:" << std::endl;
        for (std::size_t j = i + 1; j < count; ++j) {
            if (!_dependencyMatrix->test(i, j) || !isOnRing(j))
                continue;
            isGrouped[j] = true;
            stream << "\t'" << _packagesToInit[j].package->getName() << "'" << std::endl;
        }
    }
}

/// Whether a package of the batch needs itself; one that was destroyed since needs nothing any more.
bool InInitMgr::State::isOnRing(std::size_t i) const
{
    return !isHole(_packagesToInit[i]) && _dependencyMatrix->test(i, i);
}

void InInitMgr::State::printGraph(std::ostream& stream) const
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

    stream << "digraph packages {\n";
    for (std::size_t i = 0; i < packages.size(); ++i) {
        const std::string label = std::to_string(i + 1) + ". " + packages[i]->getName();
        stream << "    " << nameAt(i) << " [label=" << quotedForDot(label) << "];\n";
    }
    for (std::size_t i = 0; i < packages.size(); ++i)
        for (std::type_info const* type : packages[i]->getDependencies())
            if (const unsigned needed = positions.find(*type); needed != InTypeTable::none)
                stream << "    " << nameAt(i) << " -> " << nameAt(needed) << ";\n";
    stream << "}" << std::endl;
}

InInitMgr& InInitMgr::getInstance()
{
    // Never destroyed: packages that are destroyed behind this library's static objects still leave it, and a static
    // object may stop everything.
    static InInitMgr& theInInitMgr = *new InInitMgr;
    return theInInitMgr;
}

InInitMgr::InInitMgr() : _state(new State) {}

void InInitMgr::initialize(int& argc, char const* const*& argv)
{
    _state->takeArguments(argc, argv);
    argc = 0;
    argv = nullptr;
    _state->startWaiting();
}

void InInitMgr::finalize()
{
    InVariableBase::clearPendingOverrides();
    InContextAliasMgrBase::clearArgs();
    if (!_state->_initialized)
        throw InEx::ExFinaliseBeforeInit(sourceName, __LINE__);
    // A hook that stops everything from within the stop would never end.
    if (_state->_finalized || _state->_finalizing)
        throw InEx::ExDoubleFinalise(sourceName, __LINE__);
    _state->stopAll();
}

bool InInitMgr::isInitializing() const
{
    return _state->_initializing;
}

bool InInitMgr::isFinalizing() const
{
    return _state->_finalizing;
}

std::ostream& InInitMgr::dump(std::ostream& stream) const
{
    if (_state->_packagesWaiting.empty())
        stream << "No packages waiting to be initialize." << std::endl;
    else
        _state->printWaiting(stream);
    if (!_state->isAnythingSaved())
        stream << "No packages saved." << std::endl;
    else
        _state->printSaved(stream);
    if (_state->_cycleDetected) {
        stream << "Dependency cycle(s) detected..." << std::endl;
        _state->printCycles(stream);
    }
    return stream;
}

std::ostream& InInitMgr::reportCycles(std::ostream& stream) const
{
    if (_state->_cycleDetected)
        _state->printCycles(stream);
    else
        stream << "No dependency cycles to report." << std::endl;
    return stream;
}

std::ostream& InInitMgr::dumpGraph(std::ostream& stream) const
{
    _state->printGraph(stream);
    return stream;
}

char const* InInitMgr::getEnv(char const* name)
{
    if (name == nullptr)
        return nullptr;
    Environment const& environment = getInstance()._state->_environment;
    const auto found = environment.find(std::string_view(name));
    return found != environment.end() ? found->second.c_str() : nullptr;
}

void InInitMgr::incReinitCount()
{
    ++_state->_reinitCount;
}

void InInitMgr::decReinitCount()
{
    if (_state->_reinitCount-- == 1)
        _state->startWaiting();
}

void InInitMgr::registerPackage(InPackageInit* package)
{
    if (_state->_initialized && _state->_reinitCount == 0)
        throw InEx::ExReinitWithoutGuard(sourceName, __LINE__);
    if (!_state->isRunning(typeid(*package)))
        _state->addWaiting(package);
}

bool InInitMgr::isRunning(std::type_info const& type) const
{
    return _state->isRunning(type);
}

void InInitMgr::forgetPackage(InPackageInit* package) noexcept
{
    getInstance()._state->forget(package);
}

std::ostream& operator<<(std::ostream& stream, InInitMgr const& manager)
{
    return manager.dump(stream);
}

InInitGuard::InInitGuard(int& argc, char const* const*& argv)
{
    InInitMgr& manager = InInitMgr::getInstance();
    try {
        manager.initialize(argc, argv);
    } catch (InEx const& failure) {
        std::cout << "Initialisation failed: " << failure.getReason() << std::endl;
        std::cout << manager << std::endl;
        try {
            manager.finalize();
        } catch (...) {
            // The cause goes on to the caller, not what followed from it.
        }
        throw;
    }
}

InInitGuard::~InInitGuard() noexcept(false)
{
    try {
        InInitMgr::getInstance().finalize();
    } catch (...) {
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}

InReinitGuard::InReinitGuard()
{
    InInitMgr::getInstance().incReinitCount();
}

InReinitGuard::~InReinitGuard() noexcept(false)
{
    try {
        InInitMgr::getInstance().decReinitCount();
    } catch (...) {
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}

}  // namespace Vn
