#include <base/hwcounter.h>

namespace Vn
{

HwCounterEng* HwCounter::_theHwCounter = nullptr;

HwCounterEng& HwCounter::getOrMakeEngine()
{
    const std::atomic_ref current(_theHwCounter);
    if (HwCounterEng* const engine = current.load(std::memory_order_acquire))
        return *engine;
    HwCounterEng* const made = HwCounterEng::create();
    HwCounterEng* found = nullptr;
    if (current.compare_exchange_strong(found, made, std::memory_order_acq_rel, std::memory_order_acquire))
        return *made;
    delete made;  // another thread was faster
    return *found;
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
