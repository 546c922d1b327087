// A clock is a name, a rate and a count. The only one is the hardware counter, counted from the construction of the
// source, so that counts begin near zero. The package `discreteTime` constructs it at the start of the program.
#include <base/dtrefclocksource.h>

#include <base/assertions.h>
#include <base/duplicatestring.h>
#include <base/hwcounter.h>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/dtrefclocksource";
}  // namespace

DtRefClockSource::DtRefClockSource(char const* name, Rational const& rate, Rational const& secondaryRate)
    : _name(duplicateString(name)), _rate(rate), _secondaryRate(secondaryRate)
{}

DtRefClockSource::~DtRefClockSource() = default;

char const* DtRefClockSource::getName() const
{
    return _name;
}

Rational const& DtRefClockSource::getRate() const
{
    return _rate;
}

Rational const& DtRefClockSource::getSecondaryRate() const
{
    return _secondaryRate;
}

/// HwCounter's rate, which must be known before the base class is constructed. A clock with a zero rate would be kept
/// for the life of the process, and no conversion from it could succeed; so the constructor throws instead.
Rational DtRefClockSourceHwCounter::counterRate()
{
    HwCounter::init();  // reading the rate does not create the engine
    const Rational rate(HwCounter::getRateNumerator(), HwCounter::getRateDenominator());
    if (rate.getNumerator() == 0)
        Assertions::throwAssertionFailed(sourceName, __LINE__, "rate.getNumerator() != 0");
    return rate;
}

DtRefClockSourceHwCounter::DtRefClockSourceHwCounter()
    : DtRefClockSource("HwCounter", counterRate(), counterRate()), _start(HwCounter::timeStamp())
{}

std::int64_t DtRefClockSourceHwCounter::getCount() const
{
    // The unsigned difference is right also if the counter has wrapped since construction.
    return static_cast<std::int64_t>(HwCounter::timeStamp() - _start);
}

}  // namespace Vn
