#pragma once

#include <base/baseexport.h>
#include <base/inex.h>

#include <iosfwd>
#include <typeinfo>

namespace Vn
{

class InPackageInit;

/// Starts all packages, dependencies first, and stops them in the exact reverse order.
///
/// The order: fewer packages needed, directly or through others, come first; ties go by `strcmp` of the names. A
/// process initialises once. Programs use InInitGuard. Takes no lock: start, stop, registration and guards belong to
/// one thread at a time; only getInstance() may race. It is never destroyed, and neither are the library's packages: the
/// stop may come from the destructor of a static object.
/// Tests: tests/base/ininitmgrtest.cpp, tests/base/inrandomgraphtest.cpp.
class VN_BASE_EXPORT InInitMgr
{
public:
    static InInitMgr& getInstance();

    InInitMgr(InInitMgr const&) = delete;
    InInitMgr& operator=(InInitMgr const&) = delete;

    /// Takes the arguments over (`argc` becomes 0 and `argv` null; InContextAliasMgrBase::getUnboundArgs() has what no
    /// option took) and starts every package that waits. A further call adds its arguments to the list, without
    /// parsing, and starts only what waits.
    ///
    /// Throws InEx::ExPackageNotRegistered and InEx::ExDependencyCycle before any package of the batch has started.
    /// An exception from a package's start goes through: the packages before it run, it and those after it don't.
    void initialize(int& argc, char const* const*& argv);

    /// Frees pending overrides and the argument list, then stops what runs. Throws InEx::ExFinaliseBeforeInit and
    /// InEx::ExDoubleFinalise. An exception from a package's stop goes through and leaves the packages before it
    /// running; a further call walks from the last package again.
    void finalize();

    bool isInitializing() const;
    bool isFinalizing() const;

    /// Prints the packages that wait and those taken up, in start order, and the cycles found if there are any.
    std::ostream& dump(std::ostream& stream) const;

    /// Prints the cycles that the last start found.
    std::ostream& reportCycles(std::ostream& stream) const;

    /// Prints the packages taken up as a graph in the DOT language of Graphviz: a node for each, labelled with its
    /// position in the start order, and an edge to each package that it names as a dependency.
    std::ostream& dumpGraph(std::ostream& stream) const;

    /// Value of an environment variable as it was when the manager was built, or null. Names are compared bytewise.
    static char const* getEnv(char const* name);

private:
    friend class InPackageInit;
    friend class InReinitGuard;

    class State;
    struct PackageEntry;

    InInitMgr();
    ~InInitMgr() = delete;

    void incReinitCount();
    void decReinitCount();

    void registerPackage(InPackageInit* package);
    bool isRunning(std::type_info const& type) const;
    static void forgetPackage(InPackageInit* package) noexcept;

    State* _state;
};

VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, InInitMgr const& manager);

/// Brackets `main`: starts everything when it is made and stops everything when it goes.
///
///     int main(int argc, char** argv)
///     {
///         char const* const* arguments = argv;
///         Vn::InInitGuard guard(argc, arguments);
///         ...
///     }
///
/// If the start throws an InEx, the constructor prints the reason and the manager's state to the standard output
/// stream, stops what runs, and throws on. Other exceptions pass through with nothing printed or stopped. The
/// destructor lets an exception of the stop out, unless another one is unwinding already.
/// Tests: tests/base/ininitguardtest.cpp.
class VN_BASE_EXPORT InInitGuard
{
public:
    InInitGuard(int& argc, char const* const*& argv);
    InInitGuard(InInitGuard const&) = delete;
    InInitGuard& operator=(InInitGuard const&) = delete;
    ~InInitGuard() noexcept(false);
};

/// Lets packages register after the start; the last guard to go starts them.
///
///     {
///         Vn::InReinitGuard guard;
///         openLibrary("libVNextras");       // its packages register while it loads
///     }                                     // and start here
///
/// Don't end one inside a package's hook: the start loop would run within itself. The destructor lets an exception of
/// the start out, unless another one is unwinding already.
/// Tests: tests/base/ininitguardtest.cpp.
class VN_BASE_EXPORT InReinitGuard
{
public:
    InReinitGuard();
    InReinitGuard(InReinitGuard const&) = delete;
    InReinitGuard& operator=(InReinitGuard const&) = delete;
    ~InReinitGuard() noexcept(false);
};

}  // namespace Vn
