#pragma once

#include <base/baseexport.h>
#include <base/incontextalias.h>
#include <base/vector.h>

#include <vector>

namespace Vn
{

/// Base of the managers of sources, and owner of the program's argument list.
///
///     for (char const* argument : Vn::InContextAliasMgrBase::getUnboundArgs())
///         std::puts(argument);
///
/// Belongs to the thread that drives the start.
/// Tests: tests/base/incontextaliastest.cpp.
class VN_BASE_EXPORT InContextAliasMgrBase
{
public:
    /// The arguments that no option took; element 0 is the program's name. Empty before the start and after the stop.
    ///
    ///     prog -v -o out file -x, keys "v" and "o:"   ->  prog, file, -x
    ///     prog -v -q -o out, keys "v" and "o:"        ->  prog, -q, -o, out    // unknown -q ends the options
    ///     prog -- -v, key "v"                         ->  prog, -v             // -- is consumed
    ///     prog -v, no option declared                 ->  prog, -v
    ///
    /// The library owns the strings. A further InInitMgr::initialize() appends its arguments unparsed.
    static Vector<char*> const& getUnboundArgs();

    /// Element 0 of that list; the empty text if the list is empty.
    static char const* getApplicationName();

protected:
    InContextAliasMgrBase();
    virtual ~InContextAliasMgrBase();

    /// The list itself, for the managers. It owns its strings, each made with `new[]`.
    static Vector<char*>& args();

private:
    friend class InInitMgr;

    /// Appends the strings and takes them over: all of them or (if there is no memory) none.
    static void addArgs(std::vector<ArrayPtr<char>>& strings);

    /// Deletes the strings and empties the list.
    static void clearArgs();

    static Vector<char*> _args;
};

/// The existing sources of one kind. Gives them their values when the package `initialize` starts (options: when
/// `initArg` does) and takes them away when it stops.
///
///     InContextAliasMgr<InContextAlias<InInitEnv, 1>>::initialize();
///
/// For those two packages, not for clients. Owns no alias: each enters itself and leaves again. All members are
/// static. Belongs to the thread that drives the start.
/// Tests: tests/base/incontextaliastest.cpp.
template <class Alias>
class InContextAliasMgr : public InContextAliasMgrBase
{
public:
    InContextAliasMgr() = delete;

    /// Gives every alias of this kind its value. No alias of this kind can be made from here on, even after
    /// finalize().
    ///
    /// Options take their elements out of the argument list; an unknown option ends the parsing without a message,
    /// and a repeated option keeps its last value. Keys that share their first character are one option.
    static void initialize();

    /// Calls finalize() of every alias. They can be given their values again, but no new ones can be made.
    static void finalize();

    /// Prints key, description and value of each alias of this kind to standard error, ordered by address.
    static void dump();

private:
    friend Alias;
    friend class InDeclarations;

    class Register;

    enum class Registration
    {
        Declaration,
        Clone
    };

    static void add(Alias& alias, Registration registration);
    static void remove(Alias& alias) noexcept;
    static void dropRegisterIfEmpty() noexcept;
    static void readSources();
    static void parseArguments();

    static Register* _register;  ///< the aliases and their keys; null while there is no alias
    static bool _initialized;    ///< never cleared
};

extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitOvr, 0>>;
extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitArg, 1>>;
extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitEnv, 1>>;
extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitDef, 0>>;

}  // namespace Vn
