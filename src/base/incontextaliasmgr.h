#pragma once

#include <base/baseexport.h>
#include <base/incontextalias.h>
#include <base/vector.h>

#include <functional>
#include <map>
#include <set>
#include <string>
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
    static Vector<char*> const& getUnboundArgs();

    /// Element 0 of that list; the empty string if there is none.
    static char const* getApplicationName();

protected:
    InContextAliasMgrBase();
    virtual ~InContextAliasMgrBase();

    /// The list; it owns its strings, each made with `new[]`.
    static Vector<char*>& args();

private:
    friend class InInitMgr;

    /// Takes the strings over, all or (if there is no memory) none.
    static void addArgs(std::vector<ArrayPtr<char>>& strings);
    static void clearArgs();

    static Vector<char*> _args;
};

/// The living sources of one kind: gives them their values at the start of the package `initialize` (options: of
/// `initArg`) and takes them away at its stop. For those packages, not for clients.
/// Tests: tests/base/incontextaliastest.cpp.
template <class Alias>
class InContextAliasMgr : public InContextAliasMgrBase
{
public:
    InContextAliasMgr() = delete;

    /// Reads the sources. From then on no alias of this kind can be made. Options take their elements out of the
    /// argument list; an unknown option ends that.
    static void initialize();
    static void finalize();

    /// Prints the sources of this kind to the standard error stream.
    static void dump();

private:
    friend Alias;

    using KeyCounts = std::map<std::string, unsigned, std::less<>>;

    enum class Registration
    {
        Declaration,
        Clone
    };

    static void add(Alias& alias, Registration registration);
    static void remove(Alias& alias) noexcept;
    static void countKey(char const* key);
    static void dropKey(char const* key) noexcept;
    static void readSources();
    static void parseArguments();

    static std::set<Alias*>* _aliases;  ///< ordered by address; null while there is none
    static KeyCounts* _keys;   ///< declared keys of a unique kind, with their users; null while there is none
    static bool _initialized;  ///< never cleared
};

extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitOvr, 0>>;
extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitArg, 1>>;
extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitEnv, 1>>;
extern template class VN_BASE_EXPORT InContextAliasMgr<InContextAlias<InInitDef, 0>>;

}  // namespace Vn
