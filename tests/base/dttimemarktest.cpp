#include <base/dtreftimefactory.h>
#include <base/dttimemark.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <limits>
#include <sstream>
#include <type_traits>

using Vn::DtRefTime;
using Vn::DtRefTimeFactory;
using Vn::DtTime;
using Vn::DtTimeIndex;
using Vn::DtTimeMark;
using Vn::Rational;

namespace
{
DtRefTime reading(std::int64_t count)
{
    return DtRefTimeFactory::getInstance().create(count, "HwCounter");
}

std::int64_t clockRate()
{
    return DtRefTimeFactory::getInstance().getClockSource().getRate().getNumerator();
}

std::int64_t refCount(DtTimeMark const& mark)
{
    return mark.getRefTime().getCount();
}

std::int64_t streamCount(DtTimeMark const& mark)
{
    return mark.getStreamTime().getCount();
}
}  // namespace

static_assert(std::is_trivially_copyable_v<DtTimeMark> && !std::is_polymorphic_v<DtTimeMark>);

TEST(DtTimeMark, isNoTieByDefault)
{
    const DtTimeMark mark;
    EXPECT_EQ(std::int64_t(mark.getStreamTime().getCount()), 0);
    EXPECT_EQ(mark.getStreamTime().getRate(), Rational(1, 1));
    EXPECT_EQ(std::int64_t(mark.getRefTime().getCount()), 0);
    EXPECT_EQ(mark.getRefTime().getRate(), Rational(0, 1));
}

TEST(DtTimeMark, dumpsBothTimes)
{
    const DtTimeMark mark(DtTime(100, 25, 1), DtRefTime());
    std::ostringstream stream;
    stream << mark << '|';
    mark.dump(stream);
    EXPECT_EQ(stream.str(), "((100 @ (25/1=25)) (0 @ (0/1=0)))|((100 @ (25/1=25)) (0 @ (0/1=0)))");
}

VN_CHILD(markFromTheClock)
{
    VnTest::start();
    const std::int64_t second = clockRate();
    const DtTimeMark mark(DtTime(100, 25, 1), reading(5000));
    const struct
    {
        std::int64_t later, frames;
    } table[] = {
        {0, 0},         {second, 25},       {second - 1, 24},     {second + 1, 25},        {2 * second, 50},
        {-second, -25}, {-second + 1, -24}, {second / 25 - 1, 0}, {-(second / 25) + 1, 0}, {3600 * second, 90000}};
    for (auto const& row : table) {
        const DtTimeMark found = mark.evalTime(reading(5000 + row.later));
        std::cout << (streamCount(found) == 100 + row.frames)
                  << (found.getStreamTime().getRate() == Rational(25, 1)) << (refCount(found) == 5000 + row.later)
                  << " ";
    }
    // The rate of the reading isn't looked at: a default one counts as count 0.
    std::cout << (streamCount(mark.evalTime(DtRefTime())) == 100 - 5000 * 25 / second)
              << (mark.evalTime(DtRefTime()).getRefTime().getRate() == Rational(0, 1)) << "\n";
    return 0;
}

TEST(DtTimeMark, findsTheStreamTimeOfAReading)
{
    VnTest::expectOutput("markFromTheClock", "111 111 111 111 111 111 111 111 111 111 11\n");
}

VN_CHILD(markFromTheStream)
{
    VnTest::start();
    const std::int64_t second = clockRate();
    const DtTimeMark mark(DtTime(100, 25, 1), reading(5000));
    const DtTimeMark same = mark.evalTime(mark.getStreamTime());
    std::cout << (same.getStreamTime() == mark.getStreamTime()) << (refCount(same) == 5000)
              << (same.getRefTime().getRate() == mark.getRefTime().getRate()) << "\n";
    std::cout << (refCount(mark.evalTime(DtTime(125, 25, 1))) == 5000 + second)
              << (refCount(mark.evalTime(DtTime(75, 25, 1))) == 5000 - second) << "\n";
    // At another rate: the mark's own count is brought there, and the result keeps that rate.
    const DtTimeMark other = mark.evalTime(DtTime(5000, 1000, 1));
    std::cout << (refCount(other) == 5000 + second) << (other.getStreamTime().getRate() == Rational(1000, 1))
              << streamCount(other) << "\n";
    // 101 frames are 40.4 tenths of a second, and 40 once truncated: so 43 tenths are 3 later, not 2.6.
    const DtTimeMark uneven(DtTime(101, 25, 1), reading(5000));
    std::cout << (refCount(uneven.evalTime(DtTime(43, 10, 1))) == 5000 + second * 3 / 10) << "\n";
    return 0;
}

TEST(DtTimeMark, findsTheReadingOfAStreamTime)
{
    VnTest::expectOutput("markFromTheStream", "111\n11\n115000\n1\n");
}

VN_CHILD(defaultMark)
{
    VnTest::start();
    const DtTimeMark mark;
    VnTest::report("from the clock", [&] { mark.evalTime(reading(5)); });
    VnTest::report("from a reading of no clock", [&] { mark.evalTime(DtRefTime()); });
    const DtTimeMark found = mark.evalTime(DtTime(50, 25, 1));
    std::cout << (refCount(found) == 2 * clockRate())
              << (found.getRefTime().getRate() == Rational(int(clockRate()), 1)) << "\n";
    return 0;
}

TEST(DtTimeMark, aDefaultMarkLeadsToTheClockAndNotBack)
{
    VnTest::expectOutput("defaultMark", "from the clock: Illegal zero denominator.\n"
                                        "from a reading of no clock: Illegal zero denominator.\n11\n");
}

VN_CHILD(markWraps)
{
    VnTest::start();
    const std::int64_t second = clockRate();
    // Counts wrap, and nobody says so.
    const DtTimeMark late(DtTime(std::numeric_limits<std::int64_t>::max(), 1, 1), reading(0));
    std::cout << (streamCount(late.evalTime(reading(second))) == std::numeric_limits<std::int64_t>::min()) << "\n";
    // A rate whose product with the clock's passes 32 bits goes astray; its counts at the numerator alone don't.
    const DtTimeMark exact(DtTime(0, 30000, 1), reading(0));
    std::cout << (refCount(exact.evalTime(DtTime(30000 * 1001, 30000, 1))) == 1001 * second)
              << (streamCount(exact.evalTime(reading(1001 * second))) == 30000 * 1001) << "\n";
    const int wrapped = static_cast<int>(static_cast<unsigned>(second) * 1001u);
    const DtTimeMark ntsc(DtTime(0, 30000, 1001), reading(0));
    const std::int64_t expected = DtTimeIndex(30000) * DtTimeIndex(Rational(wrapped, 30000).getNumerator()) /
                                  DtTimeIndex(Rational(wrapped, 30000).getDenominator());
    std::cout << (refCount(ntsc.evalTime(DtTime(30000, 30000, 1001))) == expected) << "\n";
    return 0;
}

TEST(DtTimeMark, productsWithTheClocksRateWrap)
{
    VnTest::expectOutput("markWraps", "1\n11\n1\n");
}

VN_CHILD(markBeforeTheStart)
{
    const DtTimeMark mark(DtTime(0, 25, 1), DtRefTime());
    VnTest::report("early", [&] { mark.evalTime(DtTime(1, 25, 1)); });
    return 0;
}

TEST(DtTimeMark, isRefusedTheClockBeforeTheStart)
{
    VnTest::expectOutput("markBeforeTheStart", "early: Assertion 'rate.getNumerator() != 0' failed.\n");
}
