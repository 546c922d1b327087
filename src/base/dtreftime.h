#pragma once

#include <base/baseexport.h>
#include <base/dttimeindex.h>

#include <iosfwd>

namespace Vn
{

/// A reading of the system's reference clock: a count and the clock's rate.
///
///     const Vn::DtRefTime now = Vn::DtRefTimeFactory::getInstance().create();
///
/// Only the factory makes one with a real rate; there is no arithmetic on it. A value of 16 bytes, any thread its own
/// copy.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefTime
{
public:
    /// 0 at 0/1: no reading of the clock, and no conversion can start from its rate.
    DtRefTime() : _rate(0, 1) {}

    DtTimeIndex const& getCount() const { return _count; }
    Rational const& getRate() const { return _rate; }

    /// "(100 @ (1000000000/1=1e+09))".
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
