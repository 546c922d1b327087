// The engine is a static pointer, null at first. It is set in two places: here, by whichever thread asks first, and
// by the package `profiling`, which replaces whatever is there. An engine that was replaced is not freed, because
// another thread may still be using it; this leaks a few bytes once. Nothing is locked: engines never change, and all
// that are made after the package `osal` has started give the same answers.
#include <base/hwcounter.h>

#include <base/relaxed_p.h>

namespace Vn
{

HwCounterEng* HwCounter::_theHwCounter = nullptr;

HwCounterEng& HwCounter::makeEngine()
{
    HwCounterEng* const made = HwCounterEng::create();
    HwCounterEng* found = nullptr;
    // Release, so that a thread that sees the pointer sees the engine's fields as well. Acquire on failure, as this
    // thread then uses an engine that another one has made.
    // model: tests/models/engine.pml.
    if (__atomic_compare_exchange_n(&_theHwCounter, &found, made, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
        return *made;
    delete made;  // another thread was faster; nobody else has seen this one
    return *found;
}

HwCounterEng& HwCounter::getOrMakeEngine()
{
    // Acquire: without it this thread could read the engine's fields before they are set.
    if (HwCounterEng* const engine = loadAcquire(_theHwCounter)) [[likely]]
        return *engine;
    return makeEngine();
}

void HwCounter::init()
{
    getOrMakeEngine();
}

std::uint64_t HwCounter::timeStamp()
{
    return getOrMakeEngine().timeStamp();
}

double HwCounter::seconds()
{
    return getOrMakeEngine().seconds();
}

double HwCounter::seconds(std::uint64_t start, std::uint64_t end)
{
    return getOrMakeEngine().seconds(start, end);
}

void HwCounter::dump(std::ostream& stream)
{
    getOrMakeEngine().dump(stream);
}

}  // namespace Vn
