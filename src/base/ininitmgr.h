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
///     Vn::InInitGuard guard(argc, arguments);                 // calls initialize() and finalize()
///     std::cout << Vn::InInitMgr::getInstance() << "\n";      // what runs, in start order
///
/// The order: a package with fewer dependencies, direct and transitive, comes first; among equals `strcmp` of the
/// names decides. Given the same packages, the order is the same whatever order they were registered in.
///
///     base: 12 dependencies, logger: 3, osal: 1, heapMgr: 1  ->  heapMgr, osal, logger, base
///
/// A process initialises once: after finalize() nothing that needs a package of before can start. The manager owns no
/// package, and is never destroyed, and neither are the library's own packages: the stop may come from the destructor
/// of a static object. It takes no lock: start, stop, registration and guards belong to one thread at a time; only
/// getInstance() is thread-safe. With `VN_DEBUG_INITIALIZE` in the environment each step is printed to standard
/// error.
/// Tests: tests/base/ininitmgrtest.cpp, tests/base/inrandomgraphtest.cpp.
class VN_BASE_EXPORT InInitMgr
{
public:
    /// The one manager, made at the first call and never destroyed. Thread-safe; the first call reads the
    /// environment.
    static InInitMgr& getInstance();

    InInitMgr(InInitMgr const&) = delete;
    InInitMgr& operator=(InInitMgr const&) = delete;

    /// Takes over the arguments and starts every package that waits.
    ///
    ///     argc == 3, argv == {"prog", "-v", "file"}
    ///     ->  argc == 0, argv == null, getUnboundArgs() == {"prog", "file"}    // an alias of key "v" took "-v"
    ///
    /// A further call appends its arguments to that list without parsing them, and starts only what waits; what runs
    /// is not started again. `argc` of 0 or below is allowed.
    ///
    /// Throws ExInternalError ("argv != 0") for arguments without a vector; InEx::ExPackageNotRegistered and
    /// InEx::ExDependencyCycle before any package of the batch has started. An exception from a package's hook goes
    /// on to the caller unchanged: the packages before it run until finalize(), it and those behind it don't.
    void initialize(int& argc, char const* const*& argv);

    /// Frees pending overrides and the argument list, then stops what runs, in reverse start order.
    ///
    ///     before initialize()         ->  throws InEx::ExFinaliseBeforeInit
    ///     a second time               ->  throws InEx::ExDoubleFinalise
    ///     from a hook while stopping  ->  throws InEx::ExDoubleFinalise
    ///
    /// Overrides and arguments are freed in these cases too. An exception from a package's hook goes on to the caller
    /// and leaves the packages before it running. A further call then walks from the last package again, so hooks
    /// that have run already run once more.
    void finalize();

    /// @{
    /// Whether packages are being started, or stopped, at this moment: true within a hook, false outside.
    bool isInitializing() const;
    bool isFinalizing() const;
    /// @}

    /// Prints the packages that wait, the ones taken up (in start order), and the cycles if any were found:
    ///
    ///     No packages waiting to be initialize.
    ///     2 packages currently saved:
    ///             'initialize' Initialized (0 dependencies)
    ///             'heapMgr' Initialized (1 dependencies)
    std::ostream& dump(std::ostream& stream) const;

    /// Prints the cycles that the last start found, each package once:
    ///
    ///     'audio' is in a cycle with:
    ///             'mixer'
    ///
    /// or "No dependency cycles to report.".
    std::ostream& reportCycles(std::ostream& stream) const;

    /// Prints the packages taken up as a graph in the DOT language of Graphviz: a node for each, labelled with its
    /// position in the start order, and an edge to each package that it names as a dependency.
    ///
    ///     "heapMgr" [label="2. heapMgr"];
    ///     "heapMgr" -> "initialize";
    std::ostream& dumpGraph(std::ostream& stream) const;

    /// Value of an environment variable as it was when the manager was built; later changes don't show.
    ///
    ///     PATH set to "/bin"     ->  "/bin"
    ///     set to the empty text  ->  ""
    ///     unset, or null `name`  ->  null
    ///
    /// Names are compared bytewise, on Windows too. The text lives as long as the process.
    static char const* getEnv(char const* name);

private:
    friend class InPackageInit;
    friend class InReinitGuard;

    class State;

    InInitMgr();
    ~InInitMgr() = delete;

    void incReinitCount();
    void decReinitCount();

    void registerPackage(InPackageInit* package);
    bool isRunning(std::type_info const& type) const;
    static void forgetPackage(InPackageInit* package) noexcept;

    /// The manager once it exists, under a name that the library exports: a debugger finds it there without debug symbols.
    static InInitMgr* _instance;

    State* _state;
};

/// Same as InInitMgr::dump().
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, InInitMgr const& manager);

/// Brackets `main`: starts everything when it is made and stops everything when it is destroyed.
///
///     int main(int argc, char** argv)
///     {
///         char const* const* arguments = argv;
///         Vn::InInitGuard guard(argc, arguments);
///         ...
///     }
///
/// One for each process, on the thread that drives the start.
/// Tests: tests/base/ininitguardtest.cpp.
class VN_BASE_EXPORT InInitGuard
{
public:
    /// Calls InInitMgr::initialize() and throws what that throws.
    ///
    /// On an InEx it first prints "Initialisation failed: ", the reason and the manager's dump to standard output,
    /// and stops what runs. Any other exception passes through with nothing printed and nothing stopped.
    InInitGuard(int& argc, char const* const*& argv);
    InInitGuard(InInitGuard const&) = delete;
    InInitGuard& operator=(InInitGuard const&) = delete;

    /// Calls InInitMgr::finalize() and lets its exception out, unless another exception is unwinding already: then it
    /// is dropped.
    ~InInitGuard() noexcept(false);
};

/// Lets packages register after the start; the last guard to be destroyed starts them.
///
///     {
///         Vn::InReinitGuard guard;
///         openLibrary("libVNextras");    // its packages register while it loads
///     }                                  // and start here
///
/// Guards nest. Belongs to the thread that drives the start. Don't end one inside a package's hook: the start loop
/// would run within itself, and the rest of the outer batch would not start.
/// Tests: tests/base/ininitguardtest.cpp.
class VN_BASE_EXPORT InReinitGuard
{
public:
    /// Allows registration from here on. Throws nothing.
    InReinitGuard();
    InReinitGuard(InReinitGuard const&) = delete;
    InReinitGuard& operator=(InReinitGuard const&) = delete;

    /// The last guard starts what waits, even if InInitMgr::initialize() has never been called. Throws what that
    /// throws, unless another exception is unwinding already: then it is dropped.
    ~InReinitGuard() noexcept(false);
};

}  // namespace Vn
