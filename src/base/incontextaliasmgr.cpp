#include <base/incontextaliasmgr.h>

#include <base/incontextaliasmgr_p.h>
#include <base/indiagnostics_p.h>
#include <base/inex.h>
#include <base/inoptionparser.h>
#include <base/neverdestroyed_p.h>
#include <base/osenv_p.h>

#include <algorithm>
#include <iostream>
#include <string_view>
#include <type_traits>
#include <typeinfo>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/incontextalias";

/// Known options by their letter, in the order in which their keys form the option string.
struct Option
{
    char const* key;    ///< text for the option string
    char const* value;  ///< null while it wasn't given
};
using Options = std::map<signed char, Option>;

signed char letterOf(char const* key)
{
    return static_cast<signed char>(key[0]);
}

/// Runs the parser over `arguments` and tells at which of them it stopped.
int parseOptions(Vector<char*>& arguments, Options& options)
{
    std::string letters;
    for (auto const& [letter, option] : options)
        letters += option.key;
    InOptionParser parser(static_cast<int>(arguments.size()), arguments.data(), letters.c_str());
    for (int found = parser.getOption(); found != -1 && found != '?'; found = parser.getOption()) {
        char const* const value = parser.getValue();
        Option& option = options.try_emplace(static_cast<signed char>(found), Option{"", nullptr}).first->second;
        option.value = value != nullptr ? value : "";
    }
    return parser.getArgumentIndex();
}
}  // namespace

// Arguments are read until the last static object is gone.
VN_NEVER_DESTROYED_MEMBER(Vector<char*>, argsStorage, "_ZN2Vn21InContextAliasMgrBase5_argsE");

InContextAliasMgrBase::InContextAliasMgrBase() = default;

InContextAliasMgrBase::~InContextAliasMgrBase() = default;

Vector<char*>& InContextAliasMgrBase::args()
{
    return _args;
}

Vector<char*> const& InContextAliasMgrBase::getUnboundArgs()
{
    return _args;
}

char const* InContextAliasMgrBase::getApplicationName()
{
    return _args.empty() ? "" : _args[0];
}

void InContextAliasMgrBase::addArgs(std::vector<ArrayPtr<char>>& strings)
{
    // By steps, as a program may add its arguments one by one; and before the list gains the first.
    const std::size_t needed = _args.size() + strings.size();
    if (needed > _args.capacity())
        _args.reserve(std::max(needed, _args.capacity() + _args.capacity() / 2));
    for (ArrayPtr<char>& string : strings)
        _args.push_back(string.release());
}

void InContextAliasMgrBase::clearArgs()
{
    for (char* argument : _args)
        delete[] argument;
    _args.clear();
}

template <class Alias>
std::set<Alias*>* InContextAliasMgr<Alias>::_aliases = nullptr;

template <class Alias>
typename InContextAliasMgr<Alias>::KeyCounts* InContextAliasMgr<Alias>::_keys = nullptr;

template <class Alias>
bool InContextAliasMgr<Alias>::_initialized = false;

template <class Alias>
void InContextAliasMgr<Alias>::initialize()
{
    readSources();
    _initialized = true;
    if (InDiagnostics::areOn())
        dump();
}

template <class Alias>
void InContextAliasMgr<Alias>::finalize()
{
    if (_aliases == nullptr)
        return;
    for (Alias* alias : *_aliases)
        alias->finalize();
}

template <class Alias>
void InContextAliasMgr<Alias>::dump()
{
    std::cerr << "----" << std::endl;
    std::cerr << "Context aliases of type: : " << typeid(InContextAliasMgr).name() << std::endl;
    if (_aliases != nullptr) {
        for (Alias const* alias : *_aliases) {
            std::cerr << "Key             : " << alias->getKey() << std::endl;
            std::cerr << "     Description: " << alias->getDescription() << std::endl;
            std::cerr << "     Value      : " << (alias->isValid() ? alias->getValue() : "(uninitialized)")
                      << std::endl;
        }
    }
    std::cerr << "----" << std::endl;
}

template <class Alias>
void InContextAliasMgr<Alias>::readSources()
{
    if (_aliases == nullptr)
        return;
    if constexpr (std::is_same_v<typename Alias::KindTag, InInitArg>) {
        parseArguments();
    } else if constexpr (std::is_same_v<typename Alias::KindTag, InInitEnv>) {
        const System::EnvironmentReader environment;
        for (Alias* alias : *_aliases) {
            char const* const key = alias->getKey();
            alias->initialize(System::isOwnSetting(key) ? System::getOwnVariable(key) : environment.find(key));
        }
    } else {
        for (Alias* alias : *_aliases)
            alias->initialize(alias->getKey());
    }
}

template <class Alias>
void InContextAliasMgr<Alias>::parseArguments()
{
    Options options;
    for (Alias const* alias : *_aliases)
        options.try_emplace(letterOf(alias->getKey()), Option{alias->getKey(), nullptr});

    Vector<char*>& arguments = args();
    const int stoppedAt = parseOptions(arguments, options);
    for (Alias* alias : *_aliases)
        alias->initialize(options.at(letterOf(alias->getKey())).value);

    // The values pointed into these. They go at once: one by one, each would move all that stand behind it.
    if (stoppedAt < 2)
        return;
    const auto firstTaken = arguments.begin() + 1;
    const auto firstKept = arguments.begin() + stoppedAt;
    std::for_each(firstTaken, firstKept, [](char const* taken) { delete[] taken; });
    arguments.erase(firstTaken, firstKept);
}

template <class Alias>
void InContextAliasMgr<Alias>::add(Alias& alias, Registration registration)
{
    constexpr bool isUnique = std::is_same_v<Alias, InContextAlias<typename Alias::KindTag, 1>>;
    char const* const key = alias.getKey();
    if (_initialized)
        throw InEx::ExNoNewContextAliasAfterInit(sourceName, __LINE__, alias.getDescription(), key);
    if (isUnique && registration == Registration::Declaration && _keys != nullptr &&
        _keys->contains(std::string_view(key)))
        throw InEx::ExContextAliasAlreadyDefined(sourceName, __LINE__, key);

    if constexpr (isUnique)
        countKey(key);
    try {
        if (_aliases == nullptr)
            _aliases = new std::set<Alias*>;
        _aliases->insert(&alias);
    } catch (...) {
        remove(alias);
        throw;
    }
}

/// Undoes whatever add() has done.
template <class Alias>
void InContextAliasMgr<Alias>::remove(Alias& alias) noexcept
{
    dropKey(alias.getKey());
    if (_aliases == nullptr)
        return;
    _aliases->erase(&alias);
    if (_aliases->empty()) {
        delete _aliases;
        _aliases = nullptr;
    }
}

template <class Alias>
void InContextAliasMgr<Alias>::countKey(char const* key)
{
    if (_keys == nullptr)
        _keys = new KeyCounts;
    try {
        ++(*_keys)[key];
    } catch (...) {
        dropKey(key);
        throw;
    }
}

template <class Alias>
void InContextAliasMgr<Alias>::dropKey(char const* key) noexcept
{
    if (_keys == nullptr)
        return;
    const auto found = _keys->find(std::string_view(key));
    if (found != _keys->end() && --found->second == 0)
        _keys->erase(found);
    if (_keys->empty()) {
        delete _keys;
        _keys = nullptr;
    }
}

template class InContextAliasMgr<InContextAlias<InInitOvr, 0>>;
template class InContextAliasMgr<InContextAlias<InInitArg, 1>>;
template class InContextAliasMgr<InContextAlias<InInitEnv, 1>>;
template class InContextAliasMgr<InContextAlias<InInitDef, 0>>;

}  // namespace Vn
