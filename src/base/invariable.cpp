#include <base/invariable.h>

#include <base/duplicatestring.h>
#include <base/indiagnostics_p.h>
#include <base/inex.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string_view>
#include <typeinfo>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/invariable";

std::string_view viewOf(char const* text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

/// Frees a map that has become empty.
template <class Map>
void dropIfEmpty(Map*& map) noexcept
{
    if (map->empty()) {
        delete map;
        map = nullptr;
    }
}
}  // namespace

InVariableBase::Registry* InVariableBase::_registry = nullptr;
InVariableBase::Overrides* InVariableBase::_pendingOverrides = nullptr;
InVariableBase::InContextAliasDummy InVariableBase::_dummy;

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

InVariableBase::InVariableBase(char const* const handle, InPackageInitBase& package,
                               InContextAliasBase const& alias1, InContextAliasBase const& alias2,
                               InContextAliasBase const& alias3, InContextAliasBase const& alias4,
                               InContextAliasBase const& alias5, InContextAliasBase const& alias6,
                               InContextAliasBase const& alias7, InContextAliasBase const& alias8,
                               InContextAliasBase const& alias9, InContextAliasBase const& alias10)
    : _contextAlias(nullptr), _package(&package), _handle(duplicateString(handle))
{
    enterRegistry();
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

InVariableBase::~InVariableBase()
{
    leaveRegistry();
    deleteAliases();
    _package->removeDependency(this);
}

void InVariableBase::initialize()
{
    initialize(InDiagnostics::areOn());
}

void InVariableBase::initialize(bool isTelling)
{
    takeOverride();
    for (InContextAliasBase* alias : _aliases) {
        if (alias->isValid()) {
            alias->convert();
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

void InVariableBase::finalize()
{
    _contextAlias = nullptr;
}

char const* InVariableBase::getHandle() const
{
    return _handle;
}

char const* InVariableBase::initSource() const
{
    if (_contextAlias == nullptr)
        throw InEx::ExUninitializedObject(sourceName, __LINE__, _handle);
    return typeid(*_contextAlias).name();
}

InVariableBase const* InVariableBase::queryViaHandle(char const* const handle)
{
    if (_registry == nullptr)
        return nullptr;
    const auto found = _registry->find(viewOf(handle));
    return found != _registry->end() ? found->second : nullptr;
}

void InVariableBase::overrideViaHandle(char const* const handle, char const* const value,
                                       char const* const description)
{
    if (InDiagnostics::areOn()) {
        std::cerr << "----" << std::endl;
        std::cerr << "Adding override for handle: " << viewOf(handle) << std::endl;
        std::cerr << "     With string          : " << viewOf(value) << std::endl;
        std::cerr << "     Described as         : " << viewOf(description) << std::endl;
        std::cerr << "----" << std::endl;
    }
    InVariableBase const* const variable = queryViaHandle(handle);
    if (variable != nullptr && variable->isValid())
        throw InEx::ExVariableAlreadyInitialized(sourceName, __LINE__, handle);

    std::unique_ptr<Override> alias = std::make_unique<Override>(value, description);
    if (_pendingOverrides == nullptr)
        _pendingOverrides = new Overrides;
    try {
        Override*& pending = (*_pendingOverrides)[std::string(viewOf(handle))];
        delete pending;
        pending = alias.release();
    } catch (...) {
        dropIfEmpty(_pendingOverrides);
        throw;
    }
}

bool InVariableBase::isOverridden(char const* const handle)
{
    return _pendingOverrides != nullptr && _pendingOverrides->contains(viewOf(handle));
}

void InVariableBase::throwNoSource() const
{
    if (_contextAlias == nullptr)
        throw InEx::ExUninitializedObject(sourceName, __LINE__, _handle);
    _contextAlias->throwNotValid();
}

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

void InVariableBase::enterRegistry()
{
    if (_registry == nullptr)
        _registry = new Registry;
    try {
        if (!_registry->emplace(_handle.get(), this).second)
            throw InEx::ExHandleAlreadyInUse(sourceName, __LINE__, _handle);
    } catch (...) {
        dropIfEmpty(_registry);
        throw;
    }
}

void InVariableBase::leaveRegistry() noexcept
{
    _registry->erase(_registry->find(viewOf(_handle)));
    dropIfEmpty(_registry);
}

void InVariableBase::cloneAlias(InContextAliasBase const& alias)
{
    std::unique_ptr<InContextAliasBase> copy(alias.clone());
    _aliases.insert(copy.get());
    copy.release();
}

void InVariableBase::deleteAliases() noexcept
{
    for (InContextAliasBase* alias : _aliases)
        delete alias;
    _aliases.clear();
}

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

template class InVariable<int>;
template class InVariable<bool>;
template class InVariable<char const*>;

}  // namespace Vn
