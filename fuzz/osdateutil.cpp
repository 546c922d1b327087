// Dates of any fields and counts of any bits, in both modes and back: no sanitizer may say a word, what is thrown is
// the stated exception, and what goes there comes back.
#include <base/osdateex.h>
#include <base/osdateutil.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using Vn::OsDateTypes;
using Vn::OsDateUtil;

namespace
{
struct Input
{
    std::int32_t year, month, day, hour, minute;
    std::uint32_t mode;
    double second;
    std::uint64_t ticks, other;
};

void require(bool isTrue)
{
    if (!isTrue)
        std::abort();
}

bool isRefused(OsDateTypes::DateRep const& date, OsDateTypes::TimeMode mode)
{
    try {
        const OsDateTypes::DateStruct fields = OsDateUtil::convertToDateStruct(date, mode);
        require(fields.getMonth() >= 1 && fields.getMonth() <= 12 && fields.getDay() >= 1 &&
                fields.getDay() <= 31 && fields.getHour() < 24 && fields.getMinute() < 60 &&
                fields.getSecond() < 60 && fields.getDayOfWeek() < 7 && fields.getYear() >= 1601 &&
                fields.getYear() <= 30828);
        return false;
    } catch (Vn::OsDateEx::ExInvalidDate const&) {
        return true;
    }
}

/// UTC loses what is below the millisecond and nothing else.
void goThereAndBack(OsDateTypes::DateRep const& date)
{
    if (isRefused(date, OsDateTypes::UTCTime))
        return;
    const OsDateTypes::DateStruct fields = OsDateUtil::convertToDateStruct(date, OsDateTypes::UTCTime);
    if (fields.getYear() > 30827)
        return;
    OsDateTypes::DateRep back;
    require(OsDateUtil::makeTime(fields.getYear(), fields.getMonth(), fields.getDay(), fields.getHour(),
                                 fields.getMinute(), fields.getSecond(), OsDateTypes::UTCTime, back));
    require(back.getTicks() == date.getTicks() / 10000 * 10000);
}

void reckon(OsDateTypes::DateRep const& a, OsDateTypes::DateRep const& b, double seconds)
{
    require(OsDateUtil::compare(a, b) == -OsDateUtil::compare(b, a));
    require((OsDateUtil::compare(a, b) == 0) == (a.getTicks() == b.getTicks()));
    isRefused(OsDateUtil::add(a, seconds), OsDateTypes::LocalTime);
    isRefused(OsDateUtil::diff(b, seconds), OsDateTypes::UTCTime);
    OsDateUtil::diff(a, b);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static const bool isZoneSet = ::setenv("TZ", "America/St_Johns", 1) == 0;
    Input input;
    if (size < sizeof input || !isZoneSet)
        return 0;
    std::memcpy(&input, data, sizeof input);
    const auto mode = input.mode % 2 == 0 ? OsDateTypes::UTCTime : OsDateTypes::LocalTime;
    OsDateTypes::DateRep made(1, 2);
    if (OsDateUtil::makeTime(input.year, input.month, input.day, input.hour, input.minute, input.second, mode,
                             made))
        isRefused(made, mode);
    else
        require(made.getHigh() == 1 && made.getLow() == 2);

    const auto date = OsDateTypes::DateRep::fromTicks(input.ticks);
    require(isRefused(date, OsDateTypes::UTCTime) == (input.ticks >> 63 != 0));
    isRefused(date, OsDateTypes::LocalTime);
    goThereAndBack(date);
    reckon(date, OsDateTypes::DateRep::fromTicks(input.other), input.second);
    return 0;
}
