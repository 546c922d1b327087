#pragma once

#include <base/baseexport.h>
#include <base/dttimeindex.h>

#include <iosfwd>

namespace Vn
{

/// A reading of the system's reference clock: a count and the clock's rate.
///
///     const Vn::DtRefTime now = Vn::DtRefTimeFactory::getInstance().create();
///     const double seconds = now.getCount().getDouble() * now.getRate().getReciprocalDouble();
///
/// Only DtRefTimeFactory makes a reading with a real rate. There is no arithmetic: to move a reading on, hand it to
/// DtRefTimeFactory::create() with a distance.
///
/// A value of 16 bytes without allocation; each thread may use its own copy.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefTime
{
public:
    /// Count 0 at the rate 0/1, which is no reading of the clock. A conversion from that rate throws
    /// RationalEx::ExDenominatorZero.
    DtRefTime() : _count(), _rate(0, 1) {}  // NOLINT(readability-redundant-member-init): -Weffc++ misses it

    /// Counts of the clock since its zero.
    DtTimeIndex const& getCount() const { return _count; }

    /// Counts per second; 0/1 for a default-constructed object.
    Rational const& getRate() const { return _rate; }

    /// Writes count and rate, the rate's value in the stream's own number format.
    ///
    ///     100 at 1000000000/1  ->  (100 @ (1000000000/1=1e+09))
    ///     default              ->  (0 @ (0/1=0))
    ///
    void dump(std::ostream& stream) const;

private:
    friend class DtRefTimeFactory;

    DtRefTime(DtTimeIndex const& count, Rational const& rate) : _count(count), _rate(rate) {}

    DtTimeIndex _count;
    Rational _rate;
};

/// Writes what DtRefTime::dump() writes.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, DtRefTime const& time);

}  // namespace Vn
