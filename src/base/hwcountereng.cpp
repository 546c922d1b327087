// The counter's engine: a rate and a shift, found once, and the conversion to seconds. The counter is 64 bits wide, and
// the rate must fit an int; hwcounterrate_p.h tells how the shift brings them together.
#include <base/hwcountereng.h>

#include <base/hwcounterrate_p.h>
#include <base/oscpuinfo.h>

#include <ostream>

namespace Vn
{

HwCounterEng::~HwCounterEng() = default;

HwCounterEng* HwCounterEng::create()
{
    const HwCounterRate rate = HwCounterRate::fit(OsCpuInfo::getHwCounterFrequency());
    return new HwCounterIA32(rate.numerator, 1, rate.shift);
}

// The only division is made here, so that seconds() is a subtraction, a conversion and a multiplication. A numerator
// of 0 gives infinity, and no exception, as floating-point division has none.
HwCounterIA32::HwCounterIA32(int numerator, int denominator, unsigned shift)
    : _rateNumerator(numerator),
      _rateDenominator(denominator),
      _shift(shift),
      _cycle(static_cast<double>(denominator) / static_cast<double>(numerator))
{}

double HwCounterIA32::seconds(std::uint64_t start, std::uint64_t end) const
{
    // Unsigned, so a counter that wraps gives the right difference; then signed, so an earlier `end` gives a negative
    // one.
    return static_cast<double>(static_cast<std::int64_t>(end - start)) * _cycle;
}

double HwCounterIA32::seconds() const
{
    return static_cast<double>(static_cast<std::int64_t>(timeStamp())) * _cycle;
}

// One count. The clock behind the counter may move in larger steps.
double HwCounterIA32::resolution() const
{
    return _cycle;
}

int HwCounterIA32::getRateNumerator() const
{
    return _rateNumerator;
}

int HwCounterIA32::getRateDenominator() const
{
    return _rateDenominator;
}

// The name in the text is the class's, whatever processor this is.
void HwCounterIA32::dump(std::ostream& stream) const
{
    stream << "HwCounterIA32:" << std::endl;
    stream << "Rate         = " << _rateNumerator << '/' << _rateDenominator << std::endl;
    stream << "Cycle        = " << _cycle << " seconds" << std::endl;
}

}  // namespace Vn
