#pragma once

#include <base/baseexport.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

/// What HwCounter reads: stamps of 64 bits at a rate whose two terms fit a Rational.
///
/// Immutable once made, so that any thread reads it.
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT HwCounterEng
{
public:
    virtual ~HwCounterEng();

    /// The present stamp. Throws ExSysErrorANSI if the system's counter fails.
    virtual std::uint64_t timeStamp() const = 0;

    /// Seconds from `start` to `end`, negative if `end` is the earlier one; right also where the counter wrapped
    /// between them.
    virtual double seconds(std::uint64_t start, std::uint64_t end) const = 0;

    /// Seconds since the counter's own origin, which has nothing to do with the program's start.
    virtual double seconds() const = 0;

    /// Seconds per count.
    virtual double resolution() const = 0;

    /// Counts per second, as a fraction.
    virtual int getRateNumerator() const = 0;
    virtual int getRateDenominator() const = 0;

    /// Three lines: the engine, its rate, the seconds per count.
    virtual void dump(std::ostream& stream) const = 0;

    /// An engine for the system's counter; the caller owns it. A frequency beyond 31 bits is halved until it fits, and
    /// the stamps with it. Before the package `osal` has started the frequency is 0, and the engine reckons with
    /// infinite seconds per count.
    static HwCounterEng* create();
};

/// The engine over the processor's counter.
/// Tests: tests/base/hwcountertest.cpp.
class VN_BASE_EXPORT HwCounterIA32 : public HwCounterEng
{
public:
    /// `numerator` over `denominator` counts per second, once the raw counter is shifted right by `shift`.
    HwCounterIA32(int numerator, int denominator, unsigned shift);

    std::uint64_t timeStamp() const override;
    double seconds(std::uint64_t start, std::uint64_t end) const override;
    double seconds() const override;
    double resolution() const override;
    int getRateNumerator() const override;
    int getRateDenominator() const override;
    void dump(std::ostream& stream) const override;

private:
    int _rateNumerator;
    int _rateDenominator;
    unsigned _shift;
    double _cycle;  ///< seconds per stamp
};

}  // namespace Vn
