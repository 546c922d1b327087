#include <base/hwcounter.h>
#include <base/hwcounterrate_p.h>
#include <base/oscpuinfo.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <thread>
#include <type_traits>
#include <vector>

using Vn::HwCounter;
using Vn::HwCounterEng;
using Vn::HwCounterIA32;
using Vn::HwCounterRate;
using Vn::OsCpuInfo;

namespace
{
std::string dumped(HwCounterEng const& engine)
{
    std::ostringstream stream;
    engine.dump(stream);
    return stream.str();
}
}  // namespace

static_assert(!std::is_default_constructible_v<HwCounter>);
static_assert(std::is_abstract_v<HwCounterEng> && std::has_virtual_destructor_v<HwCounterEng>);

TEST(HwCounter, frequenciesBeyond31BitsAreHalved)
{
    const struct
    {
        std::uint64_t frequency;
        int numerator;
        unsigned shift;
    } table[] = {
        {0, 0, 0},
        {10000000, 10000000, 0},
        {2147483647, 2147483647, 0},
        {2147483648, 1073741824, 1},
        {4294967295, 2147483647, 1},  // the low bit is lost
        {4294967296, 1073741824, 2},
        {0xFFFFFFFFFFFFFFFF, 2147483647, 33},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.frequency);
        const HwCounterRate rate = HwCounterRate::fit(row.frequency);
        EXPECT_EQ(rate.numerator, row.numerator);
        EXPECT_EQ(rate.shift, row.shift);
    }
}

TEST(HwCounter, engineReckonsWithItsRate)
{
    const HwCounterIA32 engine(10000000, 1, 0);
    EXPECT_EQ(engine.getRateNumerator(), 10000000);
    EXPECT_EQ(engine.getRateDenominator(), 1);
    EXPECT_EQ(engine.resolution(), 1e-7);
    EXPECT_EQ(engine.seconds(100, 10000100), 10000000 * 1e-7);
    EXPECT_EQ(engine.seconds(7, 7), 0.0);
    EXPECT_EQ(HwCounterIA32(30000, 1001, 0).resolution(), 1001.0 / 30000.0);
}

TEST(HwCounter, anEarlierEndIsNegative)
{
    const HwCounterIA32 engine(1000, 1, 0);
    EXPECT_EQ(engine.seconds(5000, 3000), -2.0);
    EXPECT_EQ(engine.seconds(5000, 3000), -engine.seconds(3000, 5000));
}

TEST(HwCounter, aWrapBetweenTwoStampsDoesNoHarm)
{
    const HwCounterIA32 engine(1000, 1, 0);
    EXPECT_EQ(engine.seconds(0xFFFFFFFFFFFFFC18, 1000), 2.0);
    EXPECT_EQ(engine.seconds(1000, 0xFFFFFFFFFFFFFC18), -2.0);
}

TEST(HwCounter, engineDumpsThreeLines)
{
    EXPECT_EQ(dumped(HwCounterIA32(10000000, 1, 0)),
              "HwCounterIA32:\nRate         = 10000000/1\nCycle        = 1e-07 seconds\n");
    std::ostringstream stream;
    stream << std::fixed;
    HwCounterIA32(8, 1, 0).dump(stream);
    EXPECT_EQ(stream.str(), "HwCounterIA32:\nRate         = 8/1\nCycle        = 0.125000 seconds\n");
}

TEST(HwCounter, stampsAreTheCounterShifted)
{
    const HwCounterIA32 plain(1, 1, 0), shifted(1, 1, 10);
    const std::uint64_t before = OsCpuInfo::getHwCounterValue();
    const std::uint64_t raw = plain.timeStamp(), low = shifted.timeStamp();
    const std::uint64_t after = OsCpuInfo::getHwCounterValue();
    EXPECT_TRUE(before <= raw && raw <= after);
    EXPECT_TRUE(before >> 10 <= low && low <= after >> 10);
    const double seconds = plain.seconds();
    EXPECT_TRUE(static_cast<double>(after) <= seconds &&
                seconds <= static_cast<double>(OsCpuInfo::getHwCounterValue()));
}

TEST(HwCounter, stampsNeverDecrease)
{
    std::uint64_t last = HwCounter::timeStamp();
    for (int i = 0; i < 10000; ++i) {
        const std::uint64_t now = HwCounter::timeStamp();
        ASSERT_GE(now, last);
        last = now;
    }
}

VN_CHILD(hwCounterBeforeTheStart)
{
    std::cout << "frequency " << OsCpuInfo::getHwCounterFrequency() << "\n";
    HwCounter::dump(std::cout);  // makes the engine
    std::cout << HwCounter::resolution() << "\n";
    VnTest::start();
    std::cout << (std::isfinite(HwCounter::resolution()) && HwCounter::resolution() > 0) << "\n";
    std::cout << (HwCounter::getRateNumerator() > 0 && HwCounter::getRateDenominator() == 1) << "\n";
    VnTest::stop();
    std::cout << (HwCounter::timeStamp() > 0 && std::isfinite(HwCounter::resolution())) << "\n";
    return 0;
}

TEST(HwCounter, anEarlyEngineIsReplacedByTheStartAndOutlivesTheStop)
{
    VnTest::expectOutput(
        "hwCounterBeforeTheStart",
        "frequency 0\nHwCounterIA32:\nRate         = 0/1\nCycle        = inf seconds\ninf\n1\n1\n1\n");
}

VN_CHILD(hwCounterFirstThreads)
{
    constexpr int count = 4;
    std::atomic<int> ready = 0;
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&ready, &right] {
            ++ready;
            while (ready != count)
                ;
            const std::uint64_t before = HwCounter::timeStamp();
            right += HwCounter::timeStamp() >= before && HwCounter::getRateNumerator() == 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    std::cout << right << "\n";
    return 0;
}

TEST(HwCounter, threadsMayComeFirstAtOnce)
{
    for (int i = 0; i < 5; ++i)
        VnTest::expectOutput("hwCounterFirstThreads", "4\n");
}

VN_CHILD(hwCounterStarted)
{
    VnTest::start();
    const HwCounterRate rate = HwCounterRate::fit(OsCpuInfo::getHwCounterFrequency());
    std::cout << (OsCpuInfo::getHwCounterFrequency() > 0) << (HwCounter::getRateNumerator() == rate.numerator)
              << (HwCounter::resolution() == 1.0 / rate.numerator) << "\n";
    const std::uint64_t a = HwCounter::timeStamp(), b = HwCounter::timeStamp();
    std::cout << HwCounter::seconds(a, a) << (HwCounter::seconds(a, b) == -HwCounter::seconds(b, a))
              << (HwCounter::seconds(a, b) >= 0) << "\n";
    const double early = HwCounter::seconds(), late = HwCounter::seconds();
    std::cout << (early >= static_cast<double>(a) * HwCounter::resolution()) << (late >= early) << "\n";
    std::ostringstream expected, dumped;
    expected << "HwCounterIA32:\nRate         = " << rate.numerator
             << "/1\nCycle        = " << HwCounter::resolution() << " seconds\n";
    HwCounter::dump(dumped);
    std::cout << (dumped.str() == expected.str()) << "\n";
    const std::unique_ptr<HwCounterEng> other(HwCounterEng::create());
    std::cout << (other->getRateNumerator() == rate.numerator) << (other->resolution() == HwCounter::resolution())
              << "\n";
    return 0;
}

TEST(HwCounter, knowsItsRateAfterTheStart)
{
    VnTest::expectOutput("hwCounterStarted", "111\n011\n11\n1\n11\n");
}
