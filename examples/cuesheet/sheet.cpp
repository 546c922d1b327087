#include "sheet.h"

#include <base/dtreftimefactory.h>
#include <base/dttimemark.h>
#include <base/dttimeutil.h>
#include <base/osterminal.h>

#include <algorithm>
#include <cstdio>
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

/// Of `units` at `perSecond` and with `factor` seconds to a unit of 1/perSecond: milliseconds, halves away from zero.
std::int64_t roundedMs(std::int64_t units, std::int64_t factor, std::int64_t perSecond)
{
    std::int64_t const whole = units / perSecond * factor * 1000;
    std::int64_t const rest = units % perSecond * factor * 1000;
    std::int64_t const half = units < 0 ? -perSecond : perSecond;
    return whole + (2 * rest + half) / (2 * perSecond);
}

/// Milliseconds of the stream, from its counts.
std::int64_t streamMs(Vn::DtTime const& time)
{
    return roundedMs(time.getCount(), time.getRate().getDenominator(), time.getRate().getNumerator());
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
    return roundedMs(later, 1, perSecond);
}

/// The one form of every time: "-0:00:03.003".
std::string textOf(std::int64_t ms)
{
    std::int64_t const seconds = std::abs(ms) / 1000;
    char text[40];
    std::snprintf(text, sizeof text, "%s%d:%02d:%02d.%03d", ms < 0 ? "-" : "", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                  static_cast<int>(std::abs(ms) % 1000));
    return text;
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
    stream << "       count           time         due in  float double  name\n";
    for (Cue const& cue : _cues) {
        const Vn::DtTime time = atRate(cue);
        // A cue between two counts is shown at the one toward zero.
        stream << std::setw(12) << std::int64_t(time.getCount()) << (time == cue.time ? ' ' : '~') << std::setw(14)
               << textOf(streamMs(time)) << ' ' << std::setw(14) << textOf(dueMs(start, time));
        stream << std::setw(7) << std::showpos << inFloat.note(driftInFloat(time)) << std::setw(7)
               << inDouble.note(driftInDouble(time)) << std::noshowpos << (cue.name.empty() ? "" : "  ")
               << Vn::OsTerminal::shown(cue.name) << "\n";
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

/// Only a terminal gets less than what the sheet has: anything else may read it again.
void Sheet::printStored(std::ostream& stream) const
{
    const bool isTerminal = Vn::OsTerminal::isStandardOutput();
    for (Cue const& cue : _cues) {
        const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(cue.time);
        stream << text.get();
        if (!cue.name.empty())
            stream << " = " << (isTerminal ? Vn::OsTerminal::shown(cue.name) : cue.name);
        stream << "\n";
    }
}

}  // namespace CueSheet
