#pragma once

#include <base/baseexport.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

/// The engine behind HwCounter: 64-bit stamps at a constant rate, whose two terms fit a Rational.
///
///     const std::unique_ptr<Vn::HwCounterEng> engine(Vn::HwCounterEng::create());
///     engine->dump(std::cout);
///
/// Programs normally use HwCounter, which holds the only engine that the library needs. An engine never changes after
/// construction, so any thread may use it.
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT HwCounterEng
{
public:
    virtual ~HwCounterEng();

    /// The present stamp. Throws ExSysErrorANSI if the system fails to read its counter.
    virtual std::uint64_t timeStamp() const = 0;

    /// Seconds from the stamp `start` to the stamp `end`. In the table the rate is 10000000/1:
    ///
    ///     0, 10000000                ->  1.0
    ///     10000000, 0                ->  -1.0
    ///     7, 7                       ->  0.0
    ///     18446744073709551615, 9    ->  1e-6: the counter has wrapped between the stamps
    ///
    virtual double seconds(std::uint64_t start, std::uint64_t end) const = 0;

    /// The present stamp in seconds, so the time since the counter's own origin and not since any moment of the
    /// program. Throws as timeStamp().
    virtual double seconds() const = 0;

    /// Seconds per count.
    virtual double resolution() const = 0;

    /// @{
    /// Counts per second, as a fraction.
    virtual int getRateNumerator() const = 0;
    virtual int getRateDenominator() const = 0;
    /// @}

    /// Writes three lines, the number in the stream's own format, and flushes the stream:
    ///
    ///     HwCounterIA32:
    ///     Rate         = 1000000000/1
    ///     Cycle        = 1e-09 seconds
    ///
    virtual void dump(std::ostream& stream) const = 0;

    /// A HwCounterIA32 for the system's counter; the caller owns it. A frequency beyond 31 bits is halved until it
    /// fits, and stamps are shifted right by as many bits:
    ///
    ///     frequency     rate            shift
    ///     10000000      10000000/1      0
    ///     2147483647    2147483647/1    0
    ///     2147483648    1073741824/1    1
    ///     4294967296    1073741824/1    2
    ///     0             0/1             0       before the package `osal` has started; infinite seconds per count
    ///
    static HwCounterEng* create();
};

/// The engine over OsCpuInfo::getHwCounterValue(): the monotonic clock on Linux, QueryPerformanceCounter on Windows.
///
///     const Vn::HwCounterIA32 engine(10000000, 1, 0);
///     engine.resolution();    // 1e-7
///
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT HwCounterIA32 : public HwCounterEng
{
public:
    /// An engine whose stamps are the raw counter shifted right by `shift`, less than 64, and come at `numerator` /
    /// `denominator` counts per second. Nothing is checked: a numerator of 0 gives infinite seconds per count.
    HwCounterIA32(int numerator, int denominator, unsigned shift);

    std::uint64_t timeStamp() const override;
    double seconds(std::uint64_t start, std::uint64_t end) const override;
    double seconds() const override;
    double resolution() const override;
    int getRateNumerator() const override;
    int getRateDenominator() const override;
    void dump(std::ostream& stream) const override;

private:
    int _rateNumerator;    ///< counts per second, after the shift
    int _rateDenominator;  ///< 1 if create() made the engine
    unsigned _shift;       ///< from the raw counter to a stamp
    double _cycle;         ///< seconds per count, divided once so that seconds() only multiplies
};

}  // namespace Vn
