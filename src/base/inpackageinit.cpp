// A package's name, dependencies and variables. The lists of packages and the order of start are the manager's
// (ininitmgr.cpp); a package only knows what it depends on itself.
#include <base/inpackageinit.h>

#include <base/assertions.h>
#include <base/indiagnostics_p.h>
#include <base/inholes_p.h>
#include <base/ininitmgr.h>
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

/// Sets a flag for the length of a scope.
class WalkScope
{
public:
    explicit WalkScope(bool& isWalking) : _isWalking(isWalking), _before(isWalking) { _isWalking = true; }
    ~WalkScope() { _isWalking = _before; }
    WalkScope(WalkScope const&) = delete;
    WalkScope& operator=(WalkScope const&) = delete;

private:
    bool& _isWalking;
    bool _before;
};
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
/// address.
InPackageInit::~InPackageInit()
{
    InInitMgr::forgetPackage(this);
}

void InPackageInit::addDependency(InVariableBase* variable)
{
    if (variable == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "variable != 0");
    _variables.push_back(variable);
    if (variable->_package != this || variable->_place != InVariableBase::nowhere)
        _doVariablesKnow = false;
    else
        variable->_place = _variables.size() - 1;
}

/// The first equal entry only, as the constructor of a variable adds one.
void InPackageInit::removeDependency(InVariableBase* variable)
{
    const std::size_t place = variable != nullptr ? placeOf(variable) : nowhere;
    if (place >= _variables.size())
        return;
    _variables[place] = nullptr;
    ++_holes;
    if (_doVariablesKnow)
        variable->_place = InVariableBase::nowhere;
    if (_isWalking)
        return;
    const auto isHole = [](InVariableBase const* entry) { return entry == nullptr; };
    InHoles::tidy(_variables, _holes, isHole, [this](InVariableBase* moved, std::size_t to) {
        if (_doVariablesKnow)
            moved->_place = to;
    });
}

std::size_t InPackageInit::placeOf(InVariableBase const* variable) const
{
    if (_doVariablesKnow)
        return variable->_package == this ? variable->_place : nowhere;
    const auto found = std::find(_variables.begin(), _variables.end(), variable);
    return static_cast<std::size_t>(found - _variables.begin());
}

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
        const WalkScope walking(_isWalking);
        // Asked once for all of them, as each question walks through the environment.
        const bool isTelling = InDiagnostics::areOn();
        // By index and not by iterator: an override or a diagnostic may add a variable meanwhile.
        for (std::size_t i = 0; i < _variables.size(); ++i)
            if (_variables[i] != nullptr)
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
    const WalkScope walking(_isWalking);
    for (std::size_t i = _variables.size(); i > 0; --i)
        if (_variables[i - 1] != nullptr)
            _variables[i - 1]->finalize();
}

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
