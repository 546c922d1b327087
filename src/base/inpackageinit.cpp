#include <base/inpackageinit.h>

#include <base/assertions.h>
#include <base/indiagnostics_p.h>
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

void printHook(InPackageInit const& package, char const* hook)
{
    if (InDiagnostics::areOn())
        std::cerr << std::string(package.getDependencies().size(), ' ') << "InInit<" << package.getName()
                  << ">::" << hook << "()" << std::endl;
}
}  // namespace

InPackageInitBase::~InPackageInitBase() = default;

InPackageInit::InPackageInit(char const* name)
{
    const std::size_t length = name != nullptr ? ::strnlen(name, sizeof _name - 1) : 0;
    if (length != 0)
        std::memcpy(_name, name, length);
    _name[length] = '\0';
}

InPackageInit::~InPackageInit()
{
    InInitMgr::forgetPackage(this);
}

void InPackageInit::addDependency(InVariableBase* variable)
{
    if (variable == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "variable != 0");
    _variables.push_back(variable);
}

void InPackageInit::removeDependency(InVariableBase* variable)
{
    const auto found = std::find(_variables.begin(), _variables.end(), variable);
    if (found != _variables.end())
        _variables.erase(found);
}

char const* InPackageInit::getName() const
{
    return _name;
}

void InPackageInit::performInitialize() {}

void InPackageInit::performFinalize() {}

void InPackageInit::setInitialized(bool) {}

Vector<std::type_info const*> const& InPackageInit::getDependencies() const
{
    return _dependencies;
}

void InPackageInit::initialize()
{
    printHook(*this, "performInitialize");
    // By index: a hook or an alias may well add a variable.
    for (std::size_t i = 0; i < _variables.size(); ++i)
        _variables[i]->initialize();
    performInitialize();
    setInitialized(true);
}

void InPackageInit::finalize()
{
    printHook(*this, "performFinalize");
    setInitialized(false);
    performFinalize();
    for (std::size_t i = _variables.size(); i > 0; --i)
        _variables[i - 1]->finalize();
}

void InPackageInit::registerPackage()
{
    if (InDiagnostics::areOn())
        std::cerr << "Registering Package: InInit<" << getName() << ">" << std::endl;
    InInitMgr::getInstance().registerPackage(this);
}

void InPackageInit::addDependency(std::type_info const* type)
{
    if (type == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "type != 0");
    if (!InInitMgr::getInstance().isRunning(*type))
        _dependencies.push_back(type);
}

}  // namespace Vn
