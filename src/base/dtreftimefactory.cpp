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
    // Without an end: a mark may be evaluated while the process goes down.
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
    if (sourceName == nullptr || std::strcmp(sourceName, _clockSource->getName()) != 0)
        throw DtRefClockEx::SourceMismatch(sourceFile, __LINE__);
    return DtRefTime(count, _clockSource->getRate());
}

DtRefTime DtRefTimeFactory::create(DtRefTime const& base, DtTimeIndex const& delta, Rational const& rate) const
{
    Rational const& clockRate = _clockSource->getRate();
    return DtRefTime(base.getCount() + delta.convert(rate, clockRate, std::round_toward_zero), clockRate);
}

}  // namespace Vn
