#include <base/hwcounter.h>

namespace Vn
{

HwCounterEng* HwCounter::_theHwCounter = nullptr;

void HwCounter::init()
{
    if (_theHwCounter == nullptr)
        _theHwCounter = HwCounterEng::create();
}

std::uint64_t HwCounter::timeStamp()
{
    init();
    return timeStampInline();
}

double HwCounter::seconds()
{
    init();
    return secondsInline();
}

double HwCounter::seconds(std::uint64_t start, std::uint64_t end)
{
    init();
    return secondsInline(start, end);
}

void HwCounter::dump(std::ostream& stream)
{
    init();
    _theHwCounter->dump(stream);
}

}  // namespace Vn
