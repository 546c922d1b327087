// A package's name, dependencies and variables. The lists of packages and the order of start are the manager's
// (ininitmgrstate.cpp); a package only knows what it depends on itself.
//
// Variables come and go in any order, and each departure must take the same time whatever the number of the others.
// So one that goes leaves a hole in `_variables` (inholes_p.h), and a register of all variables knows the place of
// each. The fields of the classes are part of the interface, hence a register. While a package starts or stops, its
// variables keep their places: an override or a diagnostic may add or destroy one meanwhile.
#include <base/inpackageinit.h>

#include <base/assertions.h>
#include <base/indiagnostics_p.h>
#include <base/inholes_p.h>
#include <base/ininitmgr.h>
#include <base/intable_p.h>
#include <base/invariable.h>

#include <algorithm>
#include <cstring>
#include <iostream>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/inpackageinit";

/// One line for each hook, indented by the number of listed dependencies, so that a start reads as a staircase.
void printHook(InPackageInit const& package, char const* hook)
{
    if (InDiagnostics::areOn())
        std::cerr << std::string(package.getDependencies().size(), ' ') << "InInit<" << package.getName()
                  << ">::" << hook << "()" << std::endl;
}

bool isHole(InVariableBase const* variable)
{
    return variable == nullptr;
}

/// Marks a package whose variables are being walked through. The scopes that exist form a chain, innermost first: the
/// start of one package may end a guard and so start others.
class WalkScope
{
public:
    explicit WalkScope(InPackageInit const& package) : _package(package), _outer(_innermost) { _innermost = this; }
    ~WalkScope() { _innermost = _outer; }
    WalkScope(WalkScope const&) = delete;
    WalkScope& operator=(WalkScope const&) = delete;

    static bool isOpenFor(InPackageInit const& package)
    {
        WalkScope const* scope = _innermost;
        while (scope != nullptr && &scope->_package != &package)
            scope = scope->_outer;
        return scope != nullptr;
    }

private:
    static WalkScope const* _innermost;

    InPackageInit const& _package;
    WalkScope const* _outer;
};

WalkScope const* WalkScope::_innermost = nullptr;

/// What is known of a variable's entries, in all packages together. Nearly every variable has one entry, in its own
/// package; for one with several each package searches. Small, as a program may have thousands.
struct Listing
{
    unsigned place = 0;  ///< of the only entry, in a package that isn't told
    unsigned count = 0;
};

/// Never destroyed: static objects of any library may be variables, and leave at any time.
InTable<InAddressKey, Listing>& listings()
{
    static InTable<InAddressKey, Listing>& theListings = *new InTable<InAddressKey, Listing>;
    return theListings;
}

/// For an entry that goes. Every entry of a package is listed.
void forgetListing(InVariableBase const* variable)
{
    if (--listings().find(variable)->count == 0)
        listings().erase(variable);
}
}  // namespace

InPackageInitBase::~InPackageInitBase() = default;

/// Reads at most 127 characters, so a name without a terminator in reach does no harm.
InPackageInit::InPackageInit(char const* name)
{
    const std::size_t length = name != nullptr ? ::strnlen(name, sizeof _name - 1) : 0;
    if (length != 0)
        std::memcpy(_name, name, length);
    _name[length] = '\0';
}

/// Also reached when the constructor of the derived class has thrown after registerPackage(): no list keeps its
/// address. Variables should have gone before; what is known of the others' places ends here.
InPackageInit::~InPackageInit()
{
    for (InVariableBase const* variable : _variables)
        if (!isHole(variable))
            forgetListing(variable);
    InInitMgr::forgetPackage(this);
}

/// Called from the variable's constructor, so only its address is used.
void InPackageInit::addDependency(InVariableBase* variable)
{
    if (variable == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "variable != 0");
    if (!WalkScope::isOpenFor(*this))
        InHoles::makeRoom(_variables, isHole, [](InVariableBase* moved, std::size_t to) {
            listings().get(moved).place = static_cast<unsigned>(to);
        });
    _variables.push_back(variable);
    try {
        Listing& listing = listings().get(variable);
        ++listing.count;
        listing.place = static_cast<unsigned>(_variables.size() - 1);
    } catch (...) {
        _variables.pop_back();
        throw;
    }
}

/// The first equal entry only, as the constructor of a variable adds one.
void InPackageInit::removeDependency(InVariableBase* variable)
{
    const std::size_t place = variable != nullptr ? placeOf(variable) : _variables.size();
    if (place == _variables.size())
        return;
    _variables[place] = nullptr;
    forgetListing(variable);
    if (!WalkScope::isOpenFor(*this))
        InHoles::dropAtEnd(_variables, isHole);
}

/// Place of the first entry of `variable`, or the size of the list. The place that the listing knows may be in
/// another package, or out of date: hence the look.
std::size_t InPackageInit::placeOf(InVariableBase const* variable) const
{
    Listing const* const listing = listings().find(variable);
    if (listing == nullptr)
        return _variables.size();
    if (listing->count == 1 && listing->place < _variables.size() && _variables[listing->place] == variable)
        return listing->place;
    const auto found = std::find(_variables.begin(), _variables.end(), variable);
    return static_cast<std::size_t>(found - _variables.begin());
}

/// Virtual, so a package may have a name that it makes up.
char const* InPackageInit::getName() const
{
    return _name;
}

/// What a package doesn't override does nothing.
void InPackageInit::performInitialize() {}

void InPackageInit::performFinalize() {}

void InPackageInit::setInitialized(bool) {}

Vector<std::type_info const*> const& InPackageInit::getDependencies() const
{
    return _dependencies;
}

/// Variables before the hook, so that the hook can read them. An exception from the hook leaves them readable and the
/// package unmarked, so finalize() is not called for it.
void InPackageInit::initialize()
{
    printHook(*this, "performInitialize");
    {
        const WalkScope walking(*this);
        // Asked once for all of them, as each question walks through the environment.
        const bool isTelling = InDiagnostics::areOn();
        // By index and not by iterator: an override or a diagnostic may add a variable meanwhile.
        for (std::size_t i = 0; i < _variables.size(); ++i)
            if (!isHole(_variables[i]))
                _variables[i]->initialize(isTelling);
    }
    performInitialize();
    setInitialized(true);
}

/// The exact reverse: the hook can still read the variables.
void InPackageInit::finalize()
{
    printHook(*this, "performFinalize");
    setInitialized(false);
    performFinalize();
    const WalkScope walking(*this);
    for (std::size_t i = _variables.size(); i > 0; --i)
        if (!isHole(_variables[i - 1]))
            _variables[i - 1]->finalize();
}

/// The type that counts is the one that the object has while its most derived constructor runs.
void InPackageInit::registerPackage()
{
    if (InDiagnostics::areOn())
        std::cerr << "Registering Package: InInit<" << getName() << ">" << std::endl;
    InInitMgr::getInstance().registerPackage(this);
}

/// A package that runs is not stored, so a later batch never refers to a package outside itself. One that is saved
/// but whose start has failed is stored, and then not found in the batch: starting on top of it throws.
void InPackageInit::addDependency(std::type_info const* type)
{
    if (type == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "type != 0");
    if (!InInitMgr::getInstance().isRunning(*type))
        _dependencies.push_back(type);
}

}  // namespace Vn
