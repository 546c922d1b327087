// The sources of settings, by kind, and how options are taken out of the argument list.
//
// Each alias enters the register of its kind when it is made and leaves it when it is destroyed. When the package
// `initialize` starts (for options: `initArg`), the manager of a kind gives each alias its value:
//
//     default, override  the key itself
//     environment        the variable's text as it is now
//     option             what the option parser found in the argument list
//
// From then on the kind is closed: a further alias would have no value, so its constructor throws. Options are the
// only kind that changes the argument list: what the parser consumed is removed, and the rest is what
// getUnboundArgs() shows.
#include <base/incontextaliasmgr.h>

#include <base/incontextaliasmgr_p.h>
#include <base/indeclarations_p.h>
#include <base/indiagnostics_p.h>
#include <base/inex.h>
#include <base/inoptionparser.h>
#include <base/intable_p.h>
#include <base/neverdestroyed_p.h>
#include <base/osenv_p.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/incontextalias";

/// One option of the command line: all aliases whose keys share the first character.
struct Option
{
    char const* key;    ///< text for the option string
    char const* value;  ///< null while it wasn't given
};

/// Known options by their letter, in the order in which their keys form the option string. The letter is signed, as
/// the parser returns it.
using Options = std::map<signed char, Option>;

/// The empty key has the terminator as its letter, which no argument can hold.
signed char letterOf(char const* key)
{
    return static_cast<signed char>(key[0]);
}

/// Runs the parser over `arguments` and returns the position where it stopped.
///
/// Intended: an unknown option ends the parsing without a message, and what follows stays in the list. A program may
/// parse the rest by itself; do not mend.
int parseOptions(Vector<char*>& arguments, Options& options)
{
    std::string letters;
    for (auto const& [letter, option] : options)
        letters += option.key;
    InOptionParser parser(static_cast<int>(arguments.size()), arguments.data(), letters.c_str());
    for (int found = parser.getOption(); found != -1 && found != '?'; found = parser.getOption()) {
        char const* const value = parser.getValue();
        // Made for "-:", as the parser takes a colon of the option string for a letter.
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

/// Shared by the managers of all kinds, as it is a static member of their base.
Vector<char*>& InContextAliasMgrBase::args()
{
    return _args;
}

Vector<char*> const& InContextAliasMgrBase::getUnboundArgs()
{
    return _args;
}

/// The empty text for an empty list, in the place of a read outside it.
char const* InContextAliasMgrBase::getApplicationName()
{
    return _args.empty() ? "" : _args[0];
}

/// Called for each start, with what main() got.
void InContextAliasMgrBase::addArgs(std::vector<ArrayPtr<char>>& strings)
{
    // By steps, as a program may add its arguments one by one; and before the list gains the first.
    const std::size_t needed = _args.size() + strings.size();
    if (needed > _args.capacity())
        _args.reserve(std::max(needed, _args.capacity() + _args.capacity() / 2));
    for (ArrayPtr<char>& string : strings)
        _args.push_back(string.release());
}

/// At the stop. The memory of the list itself stays, for another start's arguments.
void InContextAliasMgrBase::clearArgs()
{
    for (char* argument : _args)
        delete[] argument;
    _args.clear();
}

/// The aliases of one kind, and the keys that they use.
///
/// A program with a thousand settings has four thousand aliases, most of them clones, and all are made before `main`.
/// So an alias costs one pointer here, and a key one short text and a slot: a node for each, as std::set and std::map
/// have it, took most of the time of the start.
template <class Alias>
class InContextAliasMgr<Alias>::Register
{
public:
    bool isEmpty() const { return _aliases.empty(); }

    /// Whether some alias uses that key.
    bool usesKey(InTextKey const& key) { return _keyUses.find(key) != nullptr; }

    /// Enters an alias, and for unique kinds its key; `key` is null for the others. If there is no memory, nothing
    /// changes.
    void add(Alias& alias, InTextKey const* key)
    {
        _aliases.push_back(&alias);
        try {
            if (_places.size() != 0)
                _places.get(&alias) = _aliases.size() - 1;
            if (key != nullptr)
                useKey(*key);
        } catch (...) {
            _places.erase(&alias);
            _aliases.pop_back();
            throw;
        }
        _isSorted = _isSorted && (_aliases.size() == 1 || isBefore(_aliases[_aliases.size() - 2], &alias));
    }

    /// The last alias takes the place of the one that goes: only walks need an order, and they sort.
    void remove(Alias& alias) noexcept
    {
        releaseKey(alias.getKey());
        const std::size_t place = placeOf(alias);
        _places.erase(&alias);
        if (place + 1 != _aliases.size()) {
            _isSorted = false;
            _aliases[place] = _aliases.back();
            if (_places.size() != 0)
                _places.get(_aliases[place]) = place;
        }
        _aliases.pop_back();
    }

    /// The aliases in the order of their addresses. The order shows in dump(), and of two options with one letter the
    /// first gives the option its form.
    std::vector<Alias*> const& getSorted()
    {
        if (!_isSorted) {
            std::sort(_aliases.begin(), _aliases.end(), isBefore);
            _isSorted = true;
            for (std::size_t i = 0; _places.size() != 0 && i < _aliases.size(); ++i)
                _places.get(_aliases[i]) = i;
        }
        return _aliases;
    }

    /// The aliases in no order.
    std::vector<Alias*> const& getAll() const { return _aliases; }

private:
    static bool isBefore(Alias const* left, Alias const* right) { return std::less<>()(left, right); }

    void useKey(InTextKey const& key)
    {
        if (unsigned* const uses = _keyUses.find(key)) {
            ++*uses;
            return;
        }
        // The table needs a text that lives as long as the entry, which the alias may not.
        ArrayPtr<char> text = duplicateString(key.getText());
        _keyUses.get(key.withText(text)) = 1;
        text.release();
    }

    /// Nothing for a kind that keeps no keys; of the others each alias uses its key.
    void releaseKey(char const* text) noexcept
    {
        if (_keyUses.size() == 0)
            return;
        const InTextKey key(text);
        if (--*_keyUses.find(key) != 0)
            return;
        char const* const owned = _keyUses.keyOf(key).getText();
        _keyUses.erase(key);
        delete[] owned;
    }

    /// Where the alias stands. Static objects go in the reverse of the order in which they came, and then it is the
    /// last; the first that doesn't has the table of places made for all. If there is no memory for that, it is
    /// searched for.
    std::size_t placeOf(Alias const& alias) noexcept
    {
        if (_aliases.back() == &alias)
            return _aliases.size() - 1;
        try {
            for (std::size_t i = _places.size(); i < _aliases.size(); ++i)
                _places.get(_aliases[i]) = i;
        } catch (std::bad_alloc const&) {
            const auto found = std::find(_aliases.begin(), _aliases.end(), &alias);
            return static_cast<std::size_t>(found - _aliases.begin());
        }
        return *_places.find(&alias);
    }

    std::vector<Alias*> _aliases;
    /// Of each alias in `_aliases`; empty until it is needed.
    InTable<InAddressKey, std::size_t> _places;
    /// The keys of a unique kind and how many aliases use each. Owns the texts.
    InTable<InTextKey, unsigned> _keyUses;
    bool _isSorted = true;
};

template <class Alias>
typename InContextAliasMgr<Alias>::Register* InContextAliasMgr<Alias>::_register = nullptr;

template <class Alias>
bool InContextAliasMgr<Alias>::_initialized = false;

/// The flag is set even if the kind has no alias: an alias made later would never get a value.
template <class Alias>
void InContextAliasMgr<Alias>::initialize()
{
    readSources();
    _initialized = true;
    if (InDiagnostics::areOn())
        dump();
}

/// Intended: the kind stays closed, and its aliases keep their texts. A process starts once; do not mend.
template <class Alias>
void InContextAliasMgr<Alias>::finalize()
{
    if (_register == nullptr)
        return;
    for (Alias* alias : _register->getAll())
        alias->finalize();
}

/// Uninitialised aliases are shown too: that a variable is unset is what one looks for.
template <class Alias>
void InContextAliasMgr<Alias>::dump()
{
    std::cerr << "----" << std::endl;
    // Intended: the second colon; programs compare the text. Do not mend.
    std::cerr << "Context aliases of type: : " << typeid(InContextAliasMgr).name() << std::endl;
    if (_register != nullptr) {
        for (Alias const* alias : _register->getSorted()) {
            std::cerr << "Key             : " << alias->getKey() << std::endl;
            std::cerr << "     Description: " << alias->getDescription() << std::endl;
            std::cerr << "     Value      : " << (alias->isValid() ? alias->getValue() : "(uninitialized)")
                      << std::endl;
        }
    }
    std::cerr << "----" << std::endl;
}

/// The environment is read as it is now and not from the manager's copy, so that a program may set variables before
/// it starts the library.
template <class Alias>
void InContextAliasMgr<Alias>::readSources()
{
    if (_register == nullptr)
        return;
    if constexpr (std::is_same_v<typename Alias::KindTag, InInitArg>) {
        parseArguments();
    } else if constexpr (std::is_same_v<typename Alias::KindTag, InInitEnv>) {
        const System::EnvironmentReader environment;
        for (Alias* alias : _register->getAll()) {
            char const* const key = alias->getKey();
            alias->initialize(System::isOwnSetting(key) ? System::getOwnVariable(key) : environment.find(key));
        }
    } else {
        for (Alias* alias : _register->getAll())
            alias->initialize(alias->getKey());
    }
}

/// Intended: without an alias of this kind nothing is parsed and the list stays whole, "--" included. Do not mend.
template <class Alias>
void InContextAliasMgr<Alias>::parseArguments()
{
    Options options;
    for (Alias const* alias : _register->getSorted())
        options.try_emplace(letterOf(alias->getKey()), Option{alias->getKey(), nullptr});

    Vector<char*>& arguments = args();
    const int stoppedAt = parseOptions(arguments, options);
    for (Alias* alias : _register->getAll())
        alias->initialize(options.at(letterOf(alias->getKey())).value);

    // The values pointed into these. They go at once: one by one, each would move all that stand behind it.
    if (stoppedAt < 2)
        return;
    const auto firstTaken = arguments.begin() + 1;
    const auto firstKept = arguments.begin() + stoppedAt;
    std::for_each(firstTaken, firstKept, [](char const* taken) { delete[] taken; });
    arguments.erase(firstTaken, firstKept);
}

/// A closed kind is looked at before the key: then nothing may be registered at all.
template <class Alias>
void InContextAliasMgr<Alias>::add(Alias& alias, Registration registration)
{
    constexpr bool isUnique = std::is_same_v<Alias, InContextAlias<typename Alias::KindTag, 1>>;
    if (_initialized)
        throw InEx::ExNoNewContextAliasAfterInit(sourceName, __LINE__, alias.getDescription(), alias.getKey());
    const InTextKey key = isUnique ? InTextKey(alias.getKey()) : InTextKey();
    if (isUnique && registration == Registration::Declaration && _register != nullptr && _register->usesKey(key))
        throw InEx::ExContextAliasAlreadyDefined(sourceName, __LINE__, alias.getKey());
    if (_register == nullptr)
        _register = new Register;
    try {
        _register->add(alias, isUnique ? &key : nullptr);
    } catch (...) {
        dropRegisterIfEmpty();
        throw;
    }
}

template <class Alias>
void InContextAliasMgr<Alias>::remove(Alias& alias) noexcept
{
    _register->remove(alias);
    dropRegisterIfEmpty();
}

/// The last alias takes the register along.
template <class Alias>
void InContextAliasMgr<Alias>::dropRegisterIfEmpty() noexcept
{
    if (_register->isEmpty()) {
        delete _register;
        _register = nullptr;
    }
}

/// In the order in which the start looks at them, which decides among keys with one letter.
std::vector<InContextAlias<InInitArg, 1> const*> InDeclarations::getOptions()
{
    using Manager = InContextAliasMgr<InContextAlias<InInitArg, 1>>;
    if (Manager::_register == nullptr)
        return {};
    std::vector<InContextAlias<InInitArg, 1>*> const& options = Manager::_register->getSorted();
    return {options.begin(), options.end()};
}

/// As the start reads it: the library's own variables not for a caller whom it can't trust.
char const* InDeclarations::readVariable(char const* name)
{
    return System::isOwnSetting(name) ? System::getOwnVariable(name) : std::getenv(name);
}

/// Compiled once, so that all libraries of a process share one register for each kind.
template class InContextAliasMgr<InContextAlias<InInitOvr, 0>>;
template class InContextAliasMgr<InContextAlias<InInitArg, 1>>;
template class InContextAliasMgr<InContextAlias<InInitEnv, 1>>;
template class InContextAliasMgr<InContextAlias<InInitDef, 0>>;

}  // namespace Vn
