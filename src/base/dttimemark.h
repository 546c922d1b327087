#pragma once

#include <base/dtreftime.h>
#include <base/dttime.h>

#include <iosfwd>

namespace Vn
{

/// Ties stream time to the reference clock: when the clock shows the mark's reading, the stream is at the mark's
/// time. From one mark the stream time of every other reading follows, and the reading of every other stream time.
///
///     const Vn::DtTimeMark start(Vn::DtTime(0, 25, 1), Vn::DtRefTimeFactory::getInstance().create());
///     start.evalTime(Vn::DtTime(75, 25, 1)).getRefTime();                               // when frame 75 is due
///     start.evalTime(Vn::DtRefTimeFactory::getInstance().create()).getStreamTime();     // the frame of now
///
/// Conversions multiply the numerator of one rate by the denominator of the other in 32 bits, which wrap without a
/// report. On Linux the clock runs at 1000000000/1, so a denominator above 2 is too large:
///
///     stream rate 25/1       1000000000 * 1            fits
///     stream rate 30000/1    1000000000 * 1            fits; count 1001 units for each frame of 30000/1001
///     stream rate 30000/1001 1000000000 * 1001         wraps, and the result is useless
///
/// A value without allocation; each thread may use its own copy.
/// Tests: tests/base/dttimemarktest.cpp.
class VN_BASE_EXPORT DtTimeMark
{
public:
    /// Stream time 0 at 1/1 and a default DtRefTime, which is no reading of the clock: evalTime() of a reading
    /// throws, evalTime() of a stream time works.
    DtTimeMark() = default;

    /// The stream is at `streamTime` when the clock shows `refTime`. Nothing is checked.
    DtTimeMark(DtTime const& streamTime, DtRefTime const& refTime) : _streamTime(streamTime), _refTime(refTime) {}

    /// The time on the stream.
    DtTime const& getStreamTime() const { return _streamTime; }

    /// The clock's reading at that time.
    DtRefTime const& getRefTime() const { return _refTime; }

    /// Where the stream is when the clock shows `ref`: a mark of that stream time, at this mark's stream rate, and
    /// `ref`. The distance from this mark is truncated toward zero.
    ///
    ///     mark (100 at 25/1, reading r), ref is r + 1 s     ->  stream time 125 at 25/1
    ///     mark (100 at 25/1, reading r), ref is r - 0.05 s  ->  stream time 99 at 25/1
    ///
    /// `ref`'s rate is not looked at, because all readings come from one clock. Throws RationalEx::ExDenominatorZero
    /// if this mark was default-constructed.
    DtTimeMark evalTime(DtRefTime const& ref) const;

    /// When the stream is at `time`: a mark of `time`, with its own rate, and the clock's reading. Both the mark's
    /// count at that rate and the distance in clock counts are truncated toward zero.
    ///
    ///     mark (100 at 25/1, reading r), time 101 at 25/1  ->  reading r + 0.04 s
    ///     mark (100 at 25/1, reading r), time 250 at 50/1  ->  reading r + 1 s, stream time still 250 at 50/1
    ///
    /// Throws as DtTimeIndex::convert(), and ExInternalError before the package `profiling` has started.
    DtTimeMark evalTime(DtTime const& time) const;

    /// Writes stream time and reading, the rates' values in the stream's own number format:
    /// `((100 @ (25/1=25)) (7 @ (1000000000/1=1e+09)))`.
    void dump(std::ostream& stream) const;

private:
    DtTime _streamTime;
    DtRefTime _refTime;
};

/// Writes what DtTimeMark::dump() writes.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, DtTimeMark const& mark);

}  // namespace Vn
