#include <base/hwcounter.h>

namespace Vn
{

HwCounterEng* HwCounter::_theHwCounter = nullptr;

HwCounterEng& HwCounter::makeEngine()
{
    HwCounterEng* const made = HwCounterEng::create();
    HwCounterEng* found = nullptr;
    if (std::atomic_ref(_theHwCounter)
            .compare_exchange_strong(found, made, std::memory_order_acq_rel, std::memory_order_acquire))
        return *made;
    delete made;  // another thread was faster
    return *found;
}

HwCounterEng& HwCounter::getOrMakeEngine()
{
    if (HwCounterEng* const engine = std::atomic_ref(_theHwCounter).load(std::memory_order_acquire)) [[likely]]
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
