#include <base/dttimemark.h>

#include <base/dtreftimefactory.h>

#include <ostream>

namespace Vn
{

// From clock to stream. The result has this mark's stream rate.
DtTimeMark DtTimeMark::evalTime(DtRefTime const& ref) const
{
    // Intended: counts are subtracted without a look at `ref`'s rate, as all readings come from one clock; do not
    // mend.
    const DtTimeIndex delta = ref.getCount() - _refTime.getCount();
    Rational const& streamRate = _streamTime.getRate();
    const DtTimeIndex streamDelta = delta.convert(_refTime.getRate(), streamRate, std::round_toward_zero);
    return DtTimeMark(DtTime(_streamTime.getCount() + streamDelta, streamRate), ref);
}

// From stream to clock. The result keeps the rate of `time`, and the distance is converted from that rate, so a
// default mark, which holds no clock rate, works here.
DtTimeMark DtTimeMark::evalTime(DtTime const& time) const
{
    DtTimeIndex count = _streamTime.getCount();
    if (!time.isRateEqual(_streamTime))
        count = count.convert(_streamTime.getRate(), time.getRate(), std::round_toward_zero);
    const DtTimeIndex delta = time.getCount() - count;
    return DtTimeMark(time, DtRefTimeFactory::getInstance().create(_refTime, delta, time.getRate()));
}

void DtTimeMark::dump(std::ostream& stream) const
{
    stream << '(' << _streamTime << ' ' << _refTime << ')';
}

std::ostream& operator<<(std::ostream& stream, DtTimeMark const& mark)
{
    mark.dump(stream);
    return stream;
}

}  // namespace Vn
