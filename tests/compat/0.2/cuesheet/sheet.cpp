#include "sheet.h"

#include <base/dtreftimefactory.h>
#include <base/dttimemark.h>
#include <base/dttimeutil.h>

#include <algorithm>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <ostream>

namespace CueSheet
{
namespace
{
/// How far a count comes back from its floating seconds.
struct Drift
{
    int moved = 0;
    std::int64_t most = 0;

    std::int64_t note(std::int64_t drift)
    {
        moved += drift != 0;
        most = std::max(most, std::abs(drift));
        return drift;
    }
};

std::int64_t driftInFloat(Vn::DtTime const& time)
{
    const Vn::DtTime back =
        Vn::DtTimeUtil::getDtTimeFromSeconds(time.getRate(), Vn::DtTimeUtil::getSecondsFloat(time));
    return back.getCount() - time.getCount();
}

std::int64_t driftInDouble(Vn::DtTime const& time)
{
    const Vn::DtTime back =
        Vn::DtTimeUtil::getDtTimeFromSeconds(time.getRate(), Vn::DtTimeUtil::getSecondsDouble(time));
    return back.getCount() - time.getCount();
}

/// Milliseconds of the clock from the mark until the time is due. The clock's rate times a denominator such as 1001
/// would pass 32 bits, so the clock is asked at the rate's numerator alone: 1001 units to a count, and as exact.
std::int64_t dueMs(Vn::DtTimeMark const& start, Vn::DtTime const& time)
{
    const int denominator = time.getRate().getDenominator();
    const Vn::DtTime units(time.getCount() * Vn::DtTimeIndex(denominator), start.getStreamTime().getRate());
    const Vn::DtRefTime due = start.evalTime(units).getRefTime();
    std::int64_t const later = due.getCount() - start.getRefTime().getCount();
    std::int64_t const perSecond = due.getRate().getNumerator();
    return later / perSecond * 1000 + later % perSecond * 1000 / perSecond;
}

void printMs(std::ostream& stream, std::int64_t ms)
{
    stream << (ms < 0 ? '-' : ' ') << std::setfill('0') << std::setw(5) << std::abs(ms) / 1000 << '.'
           << std::setw(3) << std::abs(ms) % 1000 << std::setfill(' ');
}

void printDrift(std::ostream& stream, char const* type, Drift const& drift, std::size_t cues)
{
    stream << "Kept as " << type << " seconds, " << drift.moved << " of " << cues << " cues come back moved";
    if (drift.moved != 0)
        stream << ", by up to " << drift.most << (drift.most == 1 ? " count" : " counts");
    stream << ".\n";
}
}  // namespace

void Sheet::add(Cue const& cue)
{
    Vn::Rational const& rate = cue.time.getRate();
    constexpr std::int64_t limit = std::numeric_limits<int>::max();
    if (std::int64_t(rate.getDenominator()) * _rate.getNumerator() > limit ||
        std::int64_t(rate.getNumerator()) * _rate.getDenominator() > limit)
        throw Unreadable("its rate is too far from the sheet's to convert exactly");
    _cues.push_back(cue);
}

void Sheet::order()
{
    std::stable_sort(_cues.begin(), _cues.end(), [](Cue const& a, Cue const& b) { return a.time < b.time; });
    std::vector<Cue> distinct;
    for (Cue const& cue : _cues) {
        if (distinct.empty() || distinct.back().time != cue.time) {
            distinct.push_back(cue);
            continue;
        }
        ++_duplicates;
        if (!cue.name.empty() && cue.name != distinct.back().name)
            distinct.back().name += (distinct.back().name.empty() ? "" : " / ") + cue.name;
    }
    _cues.swap(distinct);
}

Vn::DtTime Sheet::atRate(Cue const& cue) const
{
    return cue.time.convertRate(_rate);
}

void Sheet::print(std::ostream& stream) const
{
    const Vn::DtTimeMark start(Vn::DtTime(0, _rate.getNumerator(), 1),
                               Vn::DtRefTimeFactory::getInstance().create());
    Drift inFloat, inDouble;
    stream << "       count   h  m  s      due in s  float double  name\n";
    for (Cue const& cue : _cues) {
        const Vn::DtTime time = atRate(cue);
        const Vn::DtTimeIndex count = time.getCount();
        // A cue between two counts is shown at the one toward zero.
        stream << std::setw(12) << std::int64_t(count) << (time == cue.time ? ' ' : '~') << std::setw(3)
               << count.getHours(_rate) << std::setw(3) << count.getMinutes(_rate) << ' ' << std::fixed
               << std::setprecision(3) << std::setw(6) << count.getSeconds(_rate) << "  ";
        printMs(stream, dueMs(start, time));
        stream << std::setw(7) << std::showpos << inFloat.note(driftInFloat(time)) << std::setw(7)
               << inDouble.note(driftInDouble(time)) << std::noshowpos << (cue.name.empty() ? "" : "  ") << cue.name
               << "\n";
    }
    stream << "\n"
           << _cues.size() << (_cues.size() == 1 ? " cue at " : " cues at ") << _rate.getNumerator() << "/"
           << _rate.getDenominator();
    if (_duplicates != 0)
        stream << ", and " << _duplicates << " more at the same instants";
    stream << ".\n";
    printDrift(stream, "float", inFloat, _cues.size());
    printDrift(stream, "double", inDouble, _cues.size());
}

void Sheet::printStored(std::ostream& stream) const
{
    for (Cue const& cue : _cues) {
        const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(cue.time);
        stream << text.get();
        if (!cue.name.empty())
            stream << " = " << cue.name;
        stream << "\n";
    }
}

}  // namespace CueSheet
