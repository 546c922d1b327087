// The road of a setting's text, from its sources to getValue():
//
// 1. Static construction. The aliases are declared (incontextalias.imp) and enter the register of their kind
//    (incontextaliasmgr.cpp). The variable enters the registry of handles, then its package's list, and clones the
//    aliases that it was given; its own clones stand in `_aliases`, highest rank first.
// 2. Before the start a program may override the variable. The override waits under the handle.
// 3. The packages `initialize` and `initArg` start: each alias, clones included, gets its text, and keeps with it what that
//    says as a number and as a truth value.
// 4. The variable's own package starts: initialize() takes the override, and chooses the first alias that has a text.
// 5. getValue() reads from the chosen alias.
// 6. The package stops: finalize() forgets the choice, and reading throws.
//
// The registry and the overrides are made for their first entry and deleted with their last one, so that a program
// that has destroyed its settings holds no memory of them.
#include <base/invariable.h>

#include <base/duplicatestring.h>
#include <base/indeclarations_p.h>
#include <base/indiagnostics_p.h>
#include <base/inex.h>
#include <base/intable_p.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/invariable";

/// A null text counts as empty.
std::string_view viewOf(char const* text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

/// Frees a map that has become empty.
template <class Map>
void dropIfEmpty(Map*& map) noexcept
{
    if (map->size() == 0) {
        delete map;
        map = nullptr;
    }
}
}  // namespace

/// Keys are the variables' own handles, so an entry must not outlive its variable.
class InVariableBase::Registry : public InTable<InTextKey, InVariableBase*>
{};

/// In the order of the handles, in which those that nobody took are printed.
class InVariableBase::Overrides : public std::map<std::string, Override*, std::less<>>
{};

InVariableBase::Registry* InVariableBase::_registry = nullptr;
InVariableBase::Overrides* InVariableBase::_pendingOverrides = nullptr;
/// Its description shows in a debugger and in the exceptions that its getValue() would throw.
InVariableBase::InContextAliasDummy InVariableBase::_dummy;

/// Recognised by its address alone. A call of a virtual operation means that it was taken for a source, which the
/// program can't recover from.
InVariableBase::InContextAliasDummy::InContextAliasDummy() : InContextAliasBase("InVariableBase::_dummy") {}

InContextAliasBase* InVariableBase::InContextAliasDummy::clone() const
{
    std::abort();
}

unsigned long InVariableBase::InContextAliasDummy::getPriority() const
{
    std::abort();
}

char const* InVariableBase::InContextAliasDummy::getKey() const
{
    std::abort();
}

/// Ten parameters are the interface's: a program lists its sources in one declaration. Here they become a loop.
InVariableBase::InVariableBase(char const* const handle, InPackageInitBase& package,
                               InContextAliasBase const& alias1, InContextAliasBase const& alias2,
                               InContextAliasBase const& alias3, InContextAliasBase const& alias4,
                               InContextAliasBase const& alias5, InContextAliasBase const& alias6,
                               InContextAliasBase const& alias7, InContextAliasBase const& alias8,
                               InContextAliasBase const& alias9, InContextAliasBase const& alias10)
    : _contextAlias(nullptr), _package(&package), _handle(duplicateString(handle))
{
    enterRegistry();
    // Whatever throws from here on, nothing of this variable may stay anywhere: its destructor will not run.
    try {
        package.addDependency(this);
        for (InContextAliasBase const* alias :
             {&alias1, &alias2, &alias3, &alias4, &alias5, &alias6, &alias7, &alias8, &alias9, &alias10})
            if (alias != &_dummy)
                cloneAlias(*alias);
    } catch (...) {
        deleteAliases();
        package.removeDependency(this);
        leaveRegistry();
        throw;
    }
}

/// The package last, as it is the one that may be destroyed next.
InVariableBase::~InVariableBase()
{
    leaveRegistry();
    deleteAliases();
    _package->removeDependency(this);
}

/// For a package that is not an InPackageInit: those look the switch up once for all their variables.
void InVariableBase::initialize()
{
    initialize(InDiagnostics::areOn());
}

/// An alias whose kind has no values yet is passed over in silence: such a variable lacks a dependency on
/// `initialize` or `initArg`. Having no source at all is no error either, until the variable is read.
void InVariableBase::initialize(bool isTelling)
{
    takeOverride();
    for (InContextAliasBase* alias : _aliases) {
        if (alias->isValid()) {
            _contextAlias = alias;
            break;
        }
    }
    if (_contextAlias == nullptr || !isTelling)
        return;
    std::cerr << "----" << std::endl;
    std::cerr << "Initializing variable  : " << _handle.get() << std::endl;
    std::cerr << "     With string       : " << _contextAlias->getValue() << std::endl;
    std::cerr << "     From context alias: " << initSource() << std::endl;
    std::cerr << "     Described as      : " << _contextAlias->getDescription() << std::endl;
    std::cerr << "----" << std::endl;
}

/// The alias keeps its text: only the choice ends here.
void InVariableBase::finalize()
{
    _contextAlias = nullptr;
}

char const* InVariableBase::getHandle() const
{
    return _handle;
}

/// Comparable by its text alone: each module may have the type's name at an address of its own.
char const* InVariableBase::initSource() const
{
    if (_contextAlias == nullptr)
        throw InEx::ExUninitializedObject(sourceName, __LINE__, _handle);
    return typeid(*_contextAlias).name();
}

/// Also finds variables whose package doesn't run.
InVariableBase const* InVariableBase::queryViaHandle(char const* const handle)
{
    if (_registry == nullptr)
        return nullptr;
    InVariableBase* const* const found = _registry->find(handle != nullptr ? handle : "");
    return found != nullptr ? *found : nullptr;
}

void InVariableBase::overrideViaHandle(char const* const handle, char const* const value,
                                       char const* const description)
{
    // Printed even if the override is then refused, so that a failing program shows what it tried.
    if (InDiagnostics::areOn()) {
        std::cerr << "----" << std::endl;
        std::cerr << "Adding override for handle: " << viewOf(handle) << std::endl;
        std::cerr << "     With string          : " << viewOf(value) << std::endl;
        std::cerr << "     Described as         : " << viewOf(description) << std::endl;
        std::cerr << "----" << std::endl;
    }
    InVariableBase const* const variable = queryViaHandle(handle);
    // A variable whose package has stopped counts as not initialised; the next check refuses those.
    if (variable != nullptr && variable->isValid())
        throw InEx::ExVariableAlreadyInitialized(sourceName, __LINE__, handle);

    // Refused by the manager of overrides once these have their values.
    std::unique_ptr<Override> alias = std::make_unique<Override>(value, description);
    if (_pendingOverrides == nullptr)
        _pendingOverrides = new Overrides;
    try {
        // The last call for a handle wins.
        Override*& pending = (*_pendingOverrides)[std::string(viewOf(handle))];
        delete pending;
        pending = alias.release();
    } catch (...) {
        dropIfEmpty(_pendingOverrides);
        throw;
    }
}

/// Intended: false again once a variable has taken the override; initSource() says then where its value came from. Do
/// not mend.
bool InVariableBase::isOverridden(char const* const handle)
{
    return _pendingOverrides != nullptr && _pendingOverrides->contains(viewOf(handle));
}

/// Out of line, so that getValue() stays small enough to be inlined everywhere.
void InVariableBase::throwNoSource() const
{
    if (_contextAlias == nullptr)
        throw InEx::ExUninitializedObject(sourceName, __LINE__, _handle);
    _contextAlias->throwNotValid();
}

/// At the stop, whether it is then refused or not. Prints each: an override that nobody took is as a rule a mistyped
/// handle.
void InVariableBase::clearPendingOverrides()
{
    if (_pendingOverrides == nullptr)
        return;
    const bool isTelling = InDiagnostics::areOn();
    for (auto const& [handle, alias] : *_pendingOverrides) {
        if (isTelling) {
            // The key is the text, and unlike the value it can be read before the start.
            std::cerr << "----" << std::endl;
            std::cerr << "Unused override for handle: " << handle << std::endl;
            std::cerr << "     With string          : " << alias->getKey() << std::endl;
            std::cerr << "     Described as         : " << alias->getDescription() << std::endl;
            std::cerr << "----" << std::endl;
        }
        delete alias;
    }
    delete _pendingOverrides;
    _pendingOverrides = nullptr;
}

/// Before anything else of the variable is registered, so that a handle in use leaves nothing to undo.
void InVariableBase::enterRegistry()
{
    if (_registry == nullptr)
        _registry = new Registry;
    InVariableBase*& entry = _registry->get(_handle.get());
    if (entry != nullptr)
        throw InEx::ExHandleAlreadyInUse(sourceName, __LINE__, _handle);
    entry = this;
}

/// While the handle still exists, which is the key.
void InVariableBase::leaveRegistry() noexcept
{
    _registry->erase(_handle.get());
    dropIfEmpty(_registry);
}

/// insert() puts equal priorities in the order in which they were given, so the first of them is chosen first.
void InVariableBase::cloneAlias(InContextAliasBase const& alias)
{
    std::unique_ptr<InContextAliasBase> copy(alias.clone());
    _aliases.insert(copy.get());
    copy.release();
}

/// Includes an override that was taken, which is owned like the clones.
void InVariableBase::deleteAliases() noexcept
{
    for (InContextAliasBase* alias : _aliases)
        delete alias;
    _aliases.clear();
}

/// From here on the override is a source like the others, and the handle may be overridden anew before another start.
void InVariableBase::takeOverride()
{
    if (_pendingOverrides == nullptr)
        return;
    const auto found = _pendingOverrides->find(viewOf(_handle));
    if (found == _pendingOverrides->end())
        return;
    _aliases.insert(found->second);
    _pendingOverrides->erase(found);
    dropIfEmpty(_pendingOverrides);
}

/// The table has no order of its own.
std::vector<InVariableBase const*> InDeclarations::getVariables()
{
    std::vector<InVariableBase const*> variables;
    if (InVariableBase::_registry == nullptr)
        return variables;
    InVariableBase::_registry->forEach([&](InVariableBase const* variable) { variables.push_back(variable); });
    std::sort(variables.begin(), variables.end(), [](InVariableBase const* left, InVariableBase const* right) {
        return std::strcmp(left->getHandle(), right->getHandle()) < 0;
    });
    return variables;
}

/// The clones, which have what the declared ones have.
std::vector<InContextAliasBase const*> InDeclarations::getSources(InVariableBase const& variable)
{
    return {variable._aliases.begin(), variable._aliases.end()};
}

/// Null behind the stop, too.
InContextAliasBase const* InDeclarations::getChosen(InVariableBase const& variable)
{
    return variable._contextAlias;
}

/// The key is the text, and unlike the value it can be read before the start.
char const* InDeclarations::findOverride(InVariableBase const& variable)
{
    if (InVariableBase::_pendingOverrides == nullptr)
        return nullptr;
    const auto found = InVariableBase::_pendingOverrides->find(viewOf(variable._handle));
    return found != InVariableBase::_pendingOverrides->end() ? found->second->getKey() : nullptr;
}

/// Compiled once. A client compiles variables of the other types itself.
template class InVariable<int>;
template class InVariable<bool>;
template class InVariable<char const*>;

}  // namespace Vn
