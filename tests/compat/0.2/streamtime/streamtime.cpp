// streamtime: the worked numbers of docs/streamtime.md, reckoned afresh at each run.
#include <base/dtreftimefactory.h>
#include <base/dttimemark.h>
#include <base/dttimeutil.h>
#include <base/exbase.h>
#include <base/ininitmgr.h>

#include <iostream>

namespace
{
std::int64_t countOf(Vn::DtTime const& time)
{
    return time.getCount();
}

void year()
{
    std::cout << "A year\n";
    const Vn::Rational ntsc(30000, 1001);
    const Vn::DtTime year = Vn::DtTime(365 * 86400, 1, 1).convertRate(ntsc);
    std::cout << "  last whole frame      " << year << "\n";
    const Vn::DtTime fromFloat = Vn::DtTimeUtil::getDtTimeFromSeconds(ntsc, Vn::DtTimeUtil::getSecondsFloat(year));
    const Vn::DtTime fromDouble =
        Vn::DtTimeUtil::getDtTimeFromSeconds(ntsc, Vn::DtTimeUtil::getSecondsDouble(year));
    std::cout << "  by way of a float     " << countOf(fromFloat) - countOf(year) << " frames\n";
    std::cout << "  by way of a double    " << countOf(fromDouble) - countOf(year) << " frames\n";
}

void comparison()
{
    std::cout << "Comparison\n" << std::boolalpha;
    const Vn::DtTime frame(945000000, 30000, 1001);
    const Vn::DtTime sample(1513512000000, 48000, 1);
    std::cout << "  frame == sample       " << (frame == sample) << "\n";
    std::cout << "  frame < sample + 1    " << (frame < sample + Vn::DtTimeIndex(1)) << "\n";
    std::cout << "  rates are equal       " << frame.isRateEqual(sample) << "\n";
}

void meeting()
{
    std::cout << "Two rates meet\n";
    Vn::DtTime position(25, 25, 1);
    position += Vn::DtTime(30, 30, 1);
    std::cout << "  25/1 and 30/1         " << position << "\n";
    const Vn::DtTime collapsed = Vn::DtTime(1, 2000, 1) + Vn::DtTime(1, 3000, 1);
    std::cout << "  2000/1 and 3000/1     " << collapsed << "\n";
    const Vn::DtTime sound = Vn::DtTime(30, 30000, 1001).convertRate(Vn::Rational(48000, 1));
    std::cout << "  30 frames in samples  " << sound << "\n";
}

void conversion()
{
    std::cout << "1001 frames of 30000/1001 at 30/1\n";
    const Vn::DtTimeIndex frames(1001);
    const Vn::Rational from(30000, 1001), to(30, 1);
    std::cout << "  toward zero           " << std::int64_t(frames.convert(from, to, std::round_toward_zero))
              << "\n";
    std::cout << "  up                    " << std::int64_t(frames.convert(from, to, std::round_toward_infinity))
              << "\n";
    std::cout << "  away from zero        " << std::int64_t(frames.convert(from, to, std::round_indeterminate))
              << "\n";
}

void text()
{
    std::cout << "Text\n";
    const Vn::DtTime position(100, 30000, 1001);
    const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(position);
    std::cout << "  written               " << text.get() << "\n";
    std::cout << "  read again            " << Vn::DtTimeUtil::getDtTimeFromDtString(text) << "\n";
    try {
        Vn::DtTimeUtil::getDtTimeFromDtString("100 fast 1");
    } catch (Vn::ExBase const& failure) {
        std::cout << "  100 fast 1            " << failure.getReason() << "\n";
    }
}

void marks()
{
    std::cout << "A mark\n";
    // The stream begins now. Its units are thirty-thousandths of a second, 1001 to a frame.
    Vn::DtRefTimeFactory const& clock = Vn::DtRefTimeFactory::getInstance();
    const Vn::DtTimeMark start(Vn::DtTime(0, 30000, 1), clock.create());
    const Vn::DtTimeMark due = start.evalTime(Vn::DtTime(90 * 1001, 30000, 1));
    const std::int64_t wait = due.getRefTime().getCount() - start.getRefTime().getCount();
    std::cout << "  frame 90 is due in    " << double(wait) * clock.getClockSource().getRate().getReciprocalDouble()
              << " s\n";

    // And back: two seconds of the clock after the start.
    const Vn::DtRefTime later = clock.create(start.getRefTime(), 2, Vn::Rational(1, 1));
    const Vn::DtTimeIndex units = start.evalTime(later).getStreamTime().getCount();
    std::cout << "  after 2 s, frame      " << std::int64_t(units / Vn::DtTimeIndex(1001)) << "\n";
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        year();
        comparison();
        meeting();
        conversion();
        text();
        marks();
        return 0;
    } catch (std::exception const& failure) {
        std::cerr << "streamtime: " << failure.what() << "\n";
        return 1;
    }
}
