// The manager as programs see it, and the two guards. The lists of packages, the start and the stop are in
// ininitmgrstate.cpp, the printing in ininitmgrreport.cpp, the start order in inbatch.cpp.
//
// A program's main() makes an InInitGuard, which starts what waits and at its end stops all:
//
//     InInitGuard      initialize()        arguments are copied, the caller's are taken away, then the packages start
//     InReinitGuard    incReinitCount()    packages may register from here on ...
//                      decReinitCount()    ... and start here, when the outermost guard ends
//     ~InInitGuard     finalize()          stops in reverse
#include <base/ininitmgr.h>

#include <base/arrayptr.h>
#include <base/assertions.h>
#include <base/duplicatestring.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgrstate_p.h>
#include <base/invariable.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>
#include <vector>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/ininitmgr";

/// Copies of the arguments. A null vector with a count would be read without a check later on, hence the assertion.
std::vector<ArrayPtr<char>> copiesOf(int argc, char const* const* argv)
{
    if (argc > 0 && argv == nullptr)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "argv != 0");
    std::vector<ArrayPtr<char>> copies;
    copies.reserve(static_cast<std::size_t>(std::max(argc, 0)));
    for (int i = 0; i < argc; ++i)
        copies.emplace_back(duplicateString(argv[i]));
    return copies;
}

/// For destructors that may throw: calls `action` and lets its exception out, unless another one is unwinding, which
/// would end the program.
template <class Action>
void callInDestructor(Action const& action)
{
    try {
        action();
    } catch (...) {
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}
}  // namespace

InInitMgr* InInitMgr::_instance = nullptr;

/// Never destroyed: packages that are destroyed after this library's static objects still leave it, and a static
/// object may stop everything.
InInitMgr& InInitMgr::getInstance()
{
    static InInitMgr& theInInitMgr = *(_instance = new InInitMgr);
    return theInInitMgr;
}

/// The state reads the environment, so getEnv() shows it as it was at the first use of the manager.
InInitMgr::InInitMgr() : _state(new State) {}

/// All copies are made before anything changes, so an exception for want of memory changes nothing.
void InInitMgr::initialize(int& argc, char const* const*& argv)
{
    // addArgs() takes the copies over, all of them or (if there is no memory) none.
    std::vector<ArrayPtr<char>> copies = copiesOf(argc, argv);
    InContextAliasMgrBase::addArgs(copies);
    argc = 0;
    argv = nullptr;
    _state->startWaiting();
}

/// Intended: overrides and arguments are freed before the checks, and so even if the call is then refused. That order
/// is part of the interface; do not mend.
void InInitMgr::finalize()
{
    InVariableBase::clearPendingOverrides();
    InContextAliasMgrBase::clearArgs();
    _state->stopAll();
}

/// From here on the public names of what the state does.
bool InInitMgr::isInitializing() const
{
    return _state->isInitializing();
}

bool InInitMgr::isFinalizing() const
{
    return _state->isFinalizing();
}

std::ostream& InInitMgr::dump(std::ostream& stream) const
{
    _state->dump(stream);
    return stream;
}

std::ostream& InInitMgr::reportCycles(std::ostream& stream) const
{
    _state->reportCycles(stream);
    return stream;
}

std::ostream& InInitMgr::dumpGraph(std::ostream& stream) const
{
    _state->dumpGraph(stream);
    return stream;
}

/// Null asks for nothing, and is answered without the manager being made.
char const* InInitMgr::getEnv(char const* name)
{
    return name != nullptr ? getInstance()._state->getEnv(name) : nullptr;
}

/// Guards nest; the state counts them.
void InInitMgr::incReinitCount()
{
    _state->enterGuard();
}

void InInitMgr::decReinitCount()
{
    _state->leaveGuard();
}

/// The three below are for InPackageInit: a package registers, asks, and is forgotten when it is destroyed.
void InInitMgr::registerPackage(InPackageInit* package)
{
    _state->registerPackage(package);
}

bool InInitMgr::isRunning(std::type_info const& type) const
{
    return _state->isRunning(type);
}

void InInitMgr::forgetPackage(InPackageInit* package) noexcept
{
    getInstance()._state->forget(package);
}

/// What a failed start prints behind its reason.
std::ostream& operator<<(std::ostream& stream, InInitMgr const& manager)
{
    return manager.dump(stream);
}

/// Intended: only an InEx is handled, since the dump explains it. After any other exception the packages keep
/// running; do not mend.
InInitGuard::InInitGuard(int& argc, char const* const*& argv)
{
    InInitMgr& manager = InInitMgr::getInstance();
    try {
        manager.initialize(argc, argv);
    } catch (InEx const& failure) {
        std::cout << "Initialisation failed: " << failure.getReason() << std::endl;
        std::cout << manager << std::endl;
        try {
            manager.finalize();
        } catch (...) {
            // The caller gets the cause, not what followed from it.
        }
        throw;
    }
}

/// An exception from a hook must reach main(), where the program reports it.
InInitGuard::~InInitGuard() noexcept(false)
{
    callInDestructor([] { InInitMgr::getInstance().finalize(); });
}

InReinitGuard::InReinitGuard()
{
    InInitMgr::getInstance().incReinitCount();
}

/// The start happens here, so its exceptions come from here: a library whose packages don't start must be noticed.
InReinitGuard::~InReinitGuard() noexcept(false)
{
    callInDestructor([] { InInitMgr::getInstance().decReinitCount(); });
}

}  // namespace Vn
