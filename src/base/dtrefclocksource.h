#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/rational.h>

#include <cstdint>

namespace Vn
{

/// A clock that runs by itself. DtRefTimeFactory holds the one that the whole program goes by.
///
/// Never copied; its facts are fixed when it is made.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefClockSource
{
public:
    /// Copies `name`; null counts as empty.
    DtRefClockSource(char const* name, Rational const& rate, Rational const& secondaryRate);
    DtRefClockSource(DtRefClockSource const&) = delete;
    DtRefClockSource& operator=(DtRefClockSource const&) = delete;
    virtual ~DtRefClockSource();

    /// The clock's present count. A form that can fail throws DtRefClockEx::GetCount.
    virtual std::int64_t getCount() const = 0;

    char const* getName() const;

    /// Counts per second.
    Rational const& getRate() const;

    /// A second rate, handed back as it was given.
    Rational const& getSecondaryRate() const;

private:
    ArrayPtr<char> _name;
    Rational _rate;
    Rational _secondaryRate;
};

/// "HwCounter": the counter of HwCounter, from zero at the moment when this object is made.
///
/// Any thread may read it. Throws ExInternalError when it is made before the package `profiling` has started, as the
/// counter's rate isn't known by then.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefClockSourceHwCounter : public DtRefClockSource
{
public:
    DtRefClockSourceHwCounter();

    std::int64_t getCount() const override;

private:
    static Rational counterRate();

    std::uint64_t _start;
};

}  // namespace Vn
