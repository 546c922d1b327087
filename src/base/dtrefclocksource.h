#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/rational.h>

#include <cstdint>

namespace Vn
{

/// A clock that counts by itself at a constant rate. DtRefTimeFactory holds the one that the program uses.
///
///     Vn::DtRefClockSource const& clock = Vn::DtRefTimeFactory::getInstance().getClockSource();
///     const double seconds = clock.getCount() * clock.getRate().getReciprocalDouble();
///
/// Name and rates are fixed at construction, so any thread may read them; getCount() is as thread-safe as the form
/// that implements it. Not copyable.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefClockSource
{
public:
    /// Copies `name`; null counts as empty. The rates, in counts per second, are not checked.
    DtRefClockSource(char const* name, Rational const& rate, Rational const& secondaryRate);

    /// @{
    /// A clock has one owner and is not copied.
    DtRefClockSource(DtRefClockSource const&) = delete;
    DtRefClockSource& operator=(DtRefClockSource const&) = delete;
    /// @}

    /// Frees the copy of the name.
    virtual ~DtRefClockSource();

    /// The clock's present count. A form that can fail throws DtRefClockEx::GetCount.
    virtual std::int64_t getCount() const = 0;

    /// The name, never null. It is valid as long as the clock exists.
    char const* getName() const;

    /// Counts per second.
    Rational const& getRate() const;

    /// A second rate, in counts per second. The library only stores it.
    Rational const& getSecondaryRate() const;

private:
    ArrayPtr<char> _name;
    Rational _rate;
    Rational _secondaryRate;
};

/// The clock "HwCounter": counts of HwCounter, beginning with zero when this object is made.
///
///     before the package `profiling` starts  ->  the constructor throws ExInternalError: the rate is not known yet
///     afterwards                             ->  both rates are HwCounter's: 1000000000/1 on Linux
///
/// Any thread may read it.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefClockSourceHwCounter : public DtRefClockSource
{
public:
    /// Takes the count of this moment as zero. Throws ExInternalError while HwCounter's rate is 0, and ExSysErrorANSI
    /// if the system's counter cannot be read.
    DtRefClockSourceHwCounter();

    /// Counts since construction. Throws ExSysErrorANSI if the system's counter cannot be read.
    std::int64_t getCount() const override;

private:
    static Rational counterRate();

    std::uint64_t _start;  ///< the counter's stamp at construction
};

}  // namespace Vn
