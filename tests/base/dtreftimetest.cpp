#include <base/dtrefclockex.h>
#include <base/dtreftimefactory.h>
#include <base/hwcounter.h>
#include <base/rationalex.h>

#include "expectchild.h"
#include "expectthrow.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

using Vn::DtRefClockEx;
using Vn::DtRefClockSource;
using Vn::DtRefTime;
using Vn::DtRefTimeFactory;
using Vn::DtTimeIndex;
using Vn::HwCounter;
using Vn::Rational;

namespace
{
/// A clock that stands where it is put.
class StandingClock : public DtRefClockSource
{
public:
    StandingClock(char const* name, std::int64_t count)
        : DtRefClockSource(name, Rational(25, 1), Rational(50, 1)), _count(count)
    {}
    std::int64_t getCount() const override { return _count; }

private:
    std::int64_t _count;
};
}  // namespace

static_assert(sizeof(DtRefTime) == 16);
static_assert(std::is_trivially_copyable_v<DtRefTime> && !std::is_polymorphic_v<DtRefTime>);
static_assert(!std::is_constructible_v<DtRefTime, DtTimeIndex, Rational>);
static_assert(!std::is_default_constructible_v<DtRefTimeFactory> &&
              !std::is_copy_constructible_v<DtRefTimeFactory>);
static_assert(std::is_abstract_v<DtRefClockSource> && std::has_virtual_destructor_v<DtRefClockSource>);

TEST(DtRefTime, isNoReadingByDefault)
{
    const DtRefTime none;
    EXPECT_EQ(std::int64_t(none.getCount()), 0);
    EXPECT_EQ(none.getRate(), Rational(0, 1));
    std::ostringstream stream;
    stream << none << ' ';
    none.dump(stream);
    EXPECT_EQ(stream.str(), "(0 @ (0/1=0)) (0 @ (0/1=0))");
}

TEST(DtRefClockSource, holdsACopyOfItsNameAndBothRates)
{
    char name[] = "Standing";
    const StandingClock clock(name, 42);
    name[0] = 'x';
    EXPECT_STREQ(clock.getName(), "Standing");
    EXPECT_EQ(clock.getRate(), Rational(25, 1));
    EXPECT_EQ(clock.getSecondaryRate(), Rational(50, 1));
    EXPECT_EQ(clock.getCount(), 42);
    EXPECT_STREQ(StandingClock(nullptr, 0).getName(), "");
}

TEST(DtRefClockEx, hasItsTexts)
{
    VnTest::expectThrow<DtRefClockEx::GetCount, std::logic_error>(
        [] { throw DtRefClockEx::GetCount("src/base/x", 1); }, "Reference clock failed to get clock value.");
    VnTest::expectThrow<DtRefClockEx::SourceMismatch, std::logic_error>(
        [] { throw DtRefClockEx::SourceMismatch("src/base/x", 1); },
        "Clock source name does not match system reference clock.");
}

VN_CHILD(dtRefClockBeforeTheStart)
{
    VnTest::report("early", [] { DtRefTimeFactory::getInstance(); });
    VnTest::start();
    VnTest::report("late", [] { DtRefTimeFactory::getInstance(); });
    std::cout << (DtRefTimeFactory::getInstance().create().getRate().getNumerator() > 0) << "\n";
    return 0;
}

TEST(DtRefTimeFactory, isRefusedBeforeTheCounterIsUpAndThereAfterwards)
{
    VnTest::expectOutput("dtRefClockBeforeTheStart",
                         "early: Assertion 'rate.getNumerator() != 0' failed.\nlate: ok\n1\n");
}

VN_CHILD(dtRefClockSource)
{
    const std::uint64_t before = HwCounter::timeStamp();
    VnTest::start();
    DtRefClockSource const& clock = DtRefTimeFactory::getInstance().getClockSource();
    const Rational rate(HwCounter::getRateNumerator(), HwCounter::getRateDenominator());
    std::cout << clock.getName() << (clock.getRate() == rate) << (clock.getSecondaryRate() == rate) << "\n";
    // The zero lies between the start of the program and now.
    const std::int64_t count = clock.getCount();
    const std::uint64_t after = HwCounter::timeStamp();
    std::cout << (count > 0) << (static_cast<std::uint64_t>(count) <= after - before) << "\n";
    // A clock of one's own starts at its own zero.
    const std::uint64_t made = HwCounter::timeStamp();
    const Vn::DtRefClockSourceHwCounter own;
    const std::int64_t ownCount = own.getCount();
    std::cout << (ownCount >= 0 && static_cast<std::uint64_t>(ownCount) <= HwCounter::timeStamp() - made)
              << (clock.getCount() >= count) << "\n";
    return 0;
}

TEST(DtRefTimeFactory, readsTheCounterFromTheStartOn)
{
    VnTest::expectOutput("dtRefClockSource", "HwCounter11\n11\n11\n");
}

VN_CHILD(dtRefClockZeroIsFixedByThePackage)
{
    VnTest::start();
    const std::uint64_t started = HwCounter::timeStamp();
    std::int64_t passed = 0;
    while (passed < 100)
        passed = static_cast<std::int64_t>(HwCounter::timeStamp() - started);
    // Made at this first use, the clock would show less.
    std::cout << (DtRefTimeFactory::getInstance().create().getCount() >= passed) << "\n";
    std::cout << (&DtRefTimeFactory::getInstance() == &DtRefTimeFactory::getInstance()) << "\n";
    VnTest::stop();
    std::cout << (DtRefTimeFactory::getInstance().create().getCount() >= passed) << "\n";
    return 0;
}

TEST(DtRefTimeFactory, zeroIsTheStartOfThePackageAndTheClockOutlivesTheStop)
{
    VnTest::expectOutput("dtRefClockZeroIsFixedByThePackage", "1\n1\n1\n");
}

VN_CHILD(dtRefTimeCreate)
{
    VnTest::start();
    DtRefTimeFactory const& factory = DtRefTimeFactory::getInstance();
    const Rational rate = factory.getClockSource().getRate();
    const DtRefTime first = factory.create(), second = factory.create();
    std::cout << (first.getRate() == rate) << (second.getCount() >= first.getCount()) << "\n";
    const DtRefTime named = factory.create(12345, "HwCounter");
    std::cout << std::int64_t(named.getCount()) << (named.getRate() == rate) << "\n";
    for (char const* name :
         {"hwcounter", "HWCOUNTER", "HwCounter ", "HwCounte", "", static_cast<char const*>(nullptr)})
        VnTest::report("name", [&] { factory.create(1, name); });
    // Delta is brought to the clock's rate toward zero; the base's rate isn't read.
    const std::int64_t perSecond = rate.getNumerator();
    const DtRefTime base = factory.create(1000, "HwCounter");
    std::cout << (std::int64_t(factory.create(base, 50, Rational(25, 1)).getCount()) == 1000 + 2 * perSecond)
              << (std::int64_t(factory.create(base, -50, Rational(25, 1)).getCount()) == 1000 - 2 * perSecond)
              << (std::int64_t(factory.create(base, 1, Rational(3, 1)).getCount()) == 1000 + perSecond / 3)
              << (std::int64_t(factory.create(base, -1, Rational(3, 1)).getCount()) == 1000 - perSecond / 3)
              << (std::int64_t(factory.create(DtRefTime(), 25, Rational(25, 1)).getCount()) == perSecond)
              << (factory.create(DtRefTime(), 25, Rational(25, 1)).getRate() == rate) << "\n";
    VnTest::report("null rate", [&] { factory.create(base, 1, Rational(0, 1)); });
    return 0;
}

TEST(DtRefTimeFactory, makesReadingsInThreeWays)
{
    std::string expected = "11\n123451\n";
    for (int i = 0; i < 6; ++i)
        expected += "name: Clock source name does not match system reference clock.\n";
    VnTest::expectOutput("dtRefTimeCreate", expected + "111111\nnull rate: Illegal zero denominator.\n");
}
