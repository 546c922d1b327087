// The only place that makes reference times, so all of them are counts of one clock and may be subtracted without a look
// at their rates.
#include <base/dtreftimefactory.h>

#include <base/dtrefclockex.h>

#include <cstring>

namespace Vn
{
namespace
{
constexpr char const* sourceFile = "src/base/dtreftimefactory";
}  // namespace

DtRefTimeFactory::DtRefTimeFactory() : _clockSource(new DtRefClockSourceHwCounter) {}

DtRefTimeFactory& DtRefTimeFactory::getInstance()
{
    // Never destroyed, because destructors of static objects may still evaluate a mark when the process ends. If the
    // constructor throws, the variable stays uninitialised and the next call tries again.
    static DtRefTimeFactory* const factory = new DtRefTimeFactory;
    return *factory;
}

DtRefClockSource const& DtRefTimeFactory::getClockSource() const
{
    return *_clockSource;
}

DtRefTime DtRefTimeFactory::create() const
{
    return DtRefTime(_clockSource->getCount(), _clockSource->getRate());
}

DtRefTime DtRefTimeFactory::create(DtTimeIndex const& count, char const* sourceName) const
{
    // Exactly the same name: a count of another clock would be at an unknown rate.
    if (sourceName == nullptr || std::strcmp(sourceName, _clockSource->getName()) != 0)
        throw DtRefClockEx::SourceMismatch(sourceFile, __LINE__);
    return DtRefTime(count, _clockSource->getRate());
}

DtRefTime DtRefTimeFactory::create(DtRefTime const& base, DtTimeIndex const& delta, Rational const& rate) const
{
    // `base`'s rate is not looked at: the sum is in counts of the clock, whatever clock `base` claims.
    Rational const& clockRate = _clockSource->getRate();
    return DtRefTime(base.getCount() + delta.convert(rate, clockRate, std::round_toward_zero), clockRate);
}

}  // namespace Vn
