// The tasks of docs/from-chrono-timecode.md with this library: vnexacttime TASK.
#include "tasks.h"

#include <base/dtreftimefactory.h>
#include <base/dttimemark.h>
#include <base/dttimeutil.h>
#include <base/ininitmgr.h>

#include <cstdint>
#include <cstdio>
#include <iomanip>
#include <iostream>

namespace
{
std::int64_t plain(Vn::DtTimeIndex const& count)
{
    return count;
}

void position()
{
    const Vn::DtTime minute(1800, 30000, 1001);
    std::cout << plain(minute.getCount()) << " frames are " << Vn::DtTimeUtil::getSecondsDouble(minute) << " s\n";
}

void compare()
{
    const Vn::DtTime frame(945000000, 30000, 1001);
    const Vn::DtTime sample(1513512000000, 48000, 1);
    std::cout << std::boolalpha << (frame == sample) << ", " << (frame < sample + Vn::DtTimeIndex(1)) << "\n";
}

void add()
{
    const Vn::DtTime sum = Vn::DtTime(25, 25, 1) + Vn::DtTime(30, 30, 1);
    std::cout << plain(sum.getCount()) << " at " << sum.getRate().getNumerator() << "\n";
    const Vn::DtTime small = sum.convertRate(Vn::Rational(150, 1));
    std::cout << plain(small.getCount()) << " at " << small.getRate().getNumerator() << "\n";
}

void convert()
{
    const Vn::DtTimeIndex frames(1001);
    const Vn::Rational from(30000, 1001), to(30, 1);
    std::cout << plain(frames.convert(from, to, std::round_toward_neg_infinity)) << " "
              << plain(frames.convert(from, to, std::round_toward_infinity)) << "\n";
}

void year()
{
    const Vn::Rational rate(30000, 1001);
    for (const int hours : {1, 24, 24 * 365}) {
        const Vn::DtTime frame = Vn::DtTime(hours, 1, 3600).convertRate(rate);
        const Vn::DtTime again = frame.convertRate(Vn::Rational(30000, 1)).convertRate(rate);
        std::cout << std::setw(4) << hours << " h: " << plain(again.getCount() - frame.getCount())
                  << " frames off by way of 30000/1\n";
    }
}

void text()
{
    const Vn::DtTime read = Vn::DtTimeUtil::getDtTimeFromDtString("1800 30000 1001");
    const Vn::ArrayPtr<char> written = Vn::DtTimeUtil::getDtStringFromDtTime(read);
    std::cout << written.get() << "\n";
}

void label()
{
    const Vn::DtTime position(2251525, 25, 1);
    const Vn::Rational rate = position.getRate();
    const Vn::DtTimeIndex count = position.getCount();
    std::printf("%02d:%02d:%04.1f\n", static_cast<int>(count.getHours(rate)),
                static_cast<int>(count.getMinutes(rate)), count.getSeconds(rate));
}

void due()
{
    Vn::DtRefTimeFactory const& clock = Vn::DtRefTimeFactory::getInstance();
    const Vn::DtTimeMark start(Vn::DtTime(0, 30000, 1), clock.create());
    const Vn::DtTimeMark due = start.evalTime(Vn::DtTime(90 * 1001, 30000, 1));
    const Vn::DtTimeIndex wait = due.getRefTime().getCount() - start.getRefTime().getCount();
    std::cout << "frame 90 is due in " << wait.getDouble() * clock.getClockSource().getRate().getReciprocalDouble()
              << " s\n";
}
}  // namespace

int main(int argc, char** argv)
{
    int count = argc;
    char const* const* arguments = argv;
    Vn::InInitGuard guard(count, arguments);
    return From::runTask({{"position", position},
                          {"compare", compare},
                          {"add", add},
                          {"convert", convert},
                          {"year", year},
                          {"text", text},
                          {"label", label},
                          {"due", due}},
                         argc, argv);
}
