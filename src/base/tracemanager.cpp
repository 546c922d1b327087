// Which manager is the current one.
//
// `_manager` is null until a manager registers or getInstance() is called; then it is the manager of the highest priority so
// far. The library's own manager has priority 0 and is made at the first need, so that a program with a manager of its own
// never makes it. It is never destroyed: static objects trace until the process ends.
//
// Managers come and go in one thread. getInstance() may run in any thread meanwhile and takes no lock; it relies on the
// manager being complete before its address is stored.
#include <base/trace.h>

#include <base/neverdestroyed_p.h>
#include <base/relaxed_p.h>

#include <iostream>

namespace Vn
{

/// The library's own manager: one depth for all threads.
class SingleTraceManager : public TraceManager
{
public:
    /// Two threads may come first at the same time; the guards of the static objects let one of them do each. It registers
    /// behind its constructor: other threads could find a manager whose `_trace` isn't made yet. Not on the heap: the
    /// destructor of another manager may need it, and can't throw.
    static SingleTraceManager& get()
    {
        static NeverDestroyed<SingleTraceManager> manager;
        static const bool isRegistered = (registerManager(&*manager), true);
        static_cast<void>(isRegistered);
        return *manager;
    }

    Trace& getTrace() override { return _trace; }

private:
    Trace _trace;
};

TraceManager* TraceManager::_manager = nullptr;
bool TraceManager::_hasRegistered = false;

TraceManager::TraceManager() : _priority(0) {}

TraceManager::TraceManager(int priority) : _priority(priority)
{
    registerManager(this);
}

TraceManager::~TraceManager()
{
    unregisterManager(this);
}

/// Strictly greater: among equal priorities the manager that came first stays.
void TraceManager::registerManager(TraceManager* manager)
{
    if (_hasRegistered && manager->_priority <= _manager->_priority)
        return;
    // Release, and acquire in getInstance(): without them another thread could find the manager's address before what its
    // constructor has written.
    // model: tests/models/publish.pml.
    storeRelease(_manager, manager);
    _hasRegistered = true;
}

/// Intended: the library's own manager takes over, and not the one that this one replaced, which may be gone. Do not mend.
void TraceManager::unregisterManager(TraceManager* manager)
{
    if (_manager == manager)
        storeRelease(_manager, &SingleTraceManager::get());
}

TraceManager& TraceManager::getInstance()
{
    if (loadAcquire(_manager) == nullptr)
        SingleTraceManager::get();  // registers, as there is none
    return *loadAcquire(_manager);
}

/// A text that ends in a newline makes an empty line: the line end is added whatever the text is.
void TraceManager::print(char const* text) const
{
    if (text != nullptr && *text != '\0')
        std::cout << text << std::endl;
}

}  // namespace Vn
