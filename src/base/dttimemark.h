#pragma once

#include <base/dtreftime.h>
#include <base/dttime.h>

#include <iosfwd>

namespace Vn
{

/// Ties stream time to the reference clock: at that reading of the clock the stream was, or will be, at this time.
///
///     const Vn::DtTimeMark start(Vn::DtTime(0, 25, 1), Vn::DtRefTimeFactory::getInstance().create());
///     start.evalTime(Vn::DtTime(75, 25, 1)).getRefTime();                               // when frame 75 is due
///     start.evalTime(Vn::DtRefTimeFactory::getInstance().create()).getStreamTime();     // the frame of now
///
/// The products of the stream's rate and the clock's wrap at 32 bits, as in every conversion. At 30000/1001 they would;
/// so keep the mark at 30000/1, 1001 units to a frame, which loses nothing.
///
/// A value; any thread its own copy.
/// Tests: tests/base/dttimemarktest.cpp.
class VN_BASE_EXPORT DtTimeMark
{
public:
    /// Stream time 0 at 1/1, and no reading of the clock.
    DtTimeMark() = default;

    DtTimeMark(DtTime const& streamTime, DtRefTime const& refTime) : _streamTime(streamTime), _refTime(refTime) {}

    DtTime const& getStreamTime() const { return _streamTime; }
    DtRefTime const& getRefTime() const { return _refTime; }

    /// The mark at the reading `ref`, at this mark's stream rate, truncated toward zero from here. `ref`'s rate isn't
    /// looked at: both readings come from the same clock. Throws RationalEx::ExDenominatorZero if this mark holds no
    /// reading.
    DtTimeMark evalTime(DtRefTime const& ref) const;

    /// The mark at the stream time `time`, at that time's rate, truncated toward zero. Throws as DtTimeIndex::convert(),
    /// and ExInternalError before the reference clock is up.
    DtTimeMark evalTime(DtTime const& time) const;

    /// "((100 @ (25/1=25)) (7 @ (1000000000/1=1e+09)))".
    void dump(std::ostream& stream) const;

private:
    DtTime _streamTime;
    DtRefTime _refTime;
};

/// Writes what DtTimeMark::dump() writes.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, DtTimeMark const& mark);

}  // namespace Vn
