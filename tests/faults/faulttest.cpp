// Memory that runs out at each allocation in turn, and clocks that the system refuses to read. What leaks shows under the
// address sanitizer.
#include "clock.h"
#include "memory.h"

#include "expectchild.h"
#include "tempfolder.h"
#include "testpackage.h"

#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/hwcounter.h>
#include <base/hwintervaltimer.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/invariable.h>
#include <base/oscpuinfo.h>
#include <base/osdateutil.h>
#include <base/profiler.h>
#include <base/testgroup.h>
#include <base/testperformer.h>
#include <base/timer.h>
#include <base/todintervaltimer.h>
#include <base/vector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

using namespace Vn;
using VnTest::expectOutput;
using VnTest::failsWithoutMemory;
using VnTest::NumberedPackage;

using Environment = InContextAlias<InInitEnv, 1>;
using Argument = InContextAlias<InInitArg, 1>;
using Default = InContextAlias<InInitDef, 0>;

namespace
{
std::string dump()
{
    std::ostringstream text;
    InInitMgr::getInstance().dump(text);
    return text.str();
}

void printResult(int failures, int unexpected)
{
    std::cout << (failures > 0 ? "failed some, " : "failed none, ") << unexpected << " unexpected\n";
}
}  // namespace

VN_CHILD(registration)
{
    const std::string before = dump();
    const std::vector<std::type_info const*> needs{InInit<VnInit::base>::getType(),
                                                   InInit<VnInit::osal>::getType()};
    std::optional<NumberedPackage<1>> package;
    int unexpected = 0;
    int n = 0;
    for (; failsWithoutMemory(n, [&] { package.emplace("package", needs); }); ++n)
        unexpected += package.has_value() || dump() != before;
    unexpected += !package.has_value() || dump() == before;
    VnTest::start();
    VnTest::stop();
    printResult(n, unexpected);
    return 0;
}

TEST(OutOfMemory, refusedRegistrationLeavesTheManagerAsItWas)
{
    expectOutput("registration", "start package\nstop package\nfailed some, 0 unexpected\n");
}

VN_CHILD(declarations)
{
    NumberedPackage<1> package("package", {InInit<VnInit::initArg>::getType()});
    std::optional<Environment> variable;
    std::optional<Argument> option;
    int failures = 0;
    int unexpected = 0;
    for (int n = 0; failsWithoutMemory(n, [&] { variable.emplace("VN_TEST_UNSET", "d"); }); ++n, ++failures)
        unexpected += variable.has_value();
    for (int n = 0; failsWithoutMemory(n, [&] { option.emplace("o:", "d"); }); ++n, ++failures)
        unexpected += option.has_value();

    std::optional<InVariable<char const*>> setting;
    for (int n = 0; failsWithoutMemory(n, [&] { setting.emplace("handle", package, *variable, *option); });
         ++n, ++failures)
        unexpected += setting.has_value() || InVariableBase::queryViaHandle("handle") != nullptr;

    for (int n = 0; failsWithoutMemory(n, [] { InVariableBase::overrideViaHandle("other", "text", "d"); });
         ++n, ++failures)
        unexpected += InVariableBase::isOverridden("other");
    for (int n = 0; failsWithoutMemory(n, [] { InVariableBase::overrideViaHandle("other", "second", "d"); });
         ++n, ++failures)
        unexpected += !InVariableBase::isOverridden("other");

    VnTest::startWith({"prog", "-o", "given"});
    std::cout << setting->getValue() << "\n";
    VnTest::stop();
    setting.reset();
    variable.reset();
    option.reset();
    printResult(failures, unexpected);
    return 0;
}

TEST(OutOfMemory, refusedDeclarationsLeaveNothingBehind)
{
    expectOutput("declarations", "start package\ngiven\nstop package\nfailed some, 0 unexpected\n");
}

VN_CHILD(readingSettings)
{
    NumberedPackage<1> package("package");
    const Default fallback("a text of more than fifteen characters, so that nothing of it is kept", "d");
    const InVariable<int> whole("int", package, fallback);
    const InVariable<long> large("long", package, fallback);
    const InVariable<bool> truth("bool", package, fallback);
    const InVariable<float> small("float", package, fallback);
    const InVariable<double> number("double", package, fallback);
    const InVariable<char const*> text("text", package, fallback);
    const InVariable<std::chrono::milliseconds> time("time", package, fallback);
    const InVariable<std::string> copy("string", package, fallback);
    InVariableBase const* const all[] = {&whole, &large, &truth, &small, &number, &text, &time, &copy};
    VnTest::start();
    const auto readAll = [&] {
        whole.getValue();
        large.getValue();
        truth.getValue();
        small.getValue();
        number.getValue();
        text.getValue();
        time.getValue();
        for (InVariableBase const* each : all)
            InVariableForm(*each).isWhole("1.5 minutes");
    };
    std::cout << failsWithoutMemory(0, readAll) << failsWithoutMemory(0, [&] { copy.getValue(); }) << "\n";
    return 0;
}

TEST(OutOfMemory, aSettingIsReadWithoutAnyButForACopyOfItsText)
{
    expectOutput("readingSettings", "start package\n01\n");
}

VN_CHILD(argumentVector)
{
    char const* const given[] = {"prog", "a", "b"};
    NumberedPackage<1> package("package");
    int unexpected = 0;
    int n = 0;
    int count = 0;
    char const* const* vector = nullptr;
    InInitMgr::getInstance().initialize(count, vector);
    for (;; ++n) {
        count = 3;
        vector = given;
        if (!failsWithoutMemory(n, [&] { InInitMgr::getInstance().initialize(count, vector); }))
            break;
        unexpected += count != 3 || vector != given || InContextAliasMgrBase::getUnboundArgs().size() != 0;
    }
    unexpected += count != 0 || InContextAliasMgrBase::getUnboundArgs().size() != 3;
    VnTest::stop();
    printResult(n, unexpected);
    return 0;
}

TEST(OutOfMemory, argumentListGainsAllOrNone)
{
    expectOutput("argumentVector", "start package\nstop package\nfailed some, 0 unexpected\n");
}

VN_CHILD(startLoop)
{
    std::ostringstream unread;
    std::streambuf* const console = std::cout.rdbuf(unread.rdbuf());
    VnTest::start();
    const std::string before = dump();
    int unexpected = 0;
    int n = 0;
    for (bool isFailing = true; isFailing; ++n) {
        std::optional<NumberedPackage<1>> one;
        std::optional<NumberedPackage<2>> two;
        std::optional<NumberedPackage<3>> three;
        auto outer = std::make_unique<InReinitGuard>();
        one.emplace("one");
        two.emplace("two", std::vector{NumberedPackage<1>::getType()});
        three.emplace("three", std::vector{NumberedPackage<1>::getType(), NumberedPackage<2>::getType()});
        isFailing = failsWithoutMemory(n, [&outer] { delete outer.release(); });
        unexpected += InInitMgr::getInstance().isInitializing();
        unexpected += !isFailing && !three->isInitialized;
        three.reset();
        two.reset();
        one.reset();
        unexpected += dump() != before;
    }
    std::cout.rdbuf(console);
    VnTest::stop();
    printResult(n, unexpected);
    return 0;
}

TEST(OutOfMemory, failedStartLeavesTheManagerUsable)
{
    expectOutput("startLoop", "failed some, 0 unexpected\n");
}

VN_CHILD(clones)
{
    const ExInternalError error("src/base/x", 1, "text");
    ExBase* clone = nullptr;
    int n = 0;
    for (; failsWithoutMemory(n, [&] { clone = error.clone(); }); ++n) {
    }
    delete clone;
    printResult(n, 0);
    return 0;
}

TEST(OutOfMemory, cloneThatHasNoMemoryLeavesNothing)
{
    expectOutput("clones", "failed some, 0 unexpected\n");
}

TEST(OutOfMemory, vectorStaysAsItIs)
{
    Vector<std::string> vector{"a text too long for the small buffer of a string", "b"};
    vector.shrink_to_fit();
    Vector<std::string> const before = vector;
    const std::string value = "another text too long for the small buffer of a string";
    int failures = 0;
    for (int n = 0; failsWithoutMemory(n, [&] { vector.push_back(value); }); ++n, ++failures)
        EXPECT_EQ(vector, before);
    EXPECT_EQ(vector.size(), 3u);
    EXPECT_GE(failures, 2);
}

namespace
{
/// Expects the error of the system's clock, in the form in which the counter reports it.
template <class Call>
void expectClockError(Call const& call)
{
    VnTest::failClockWith(EINVAL);
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (ExSysErrorANSI const& failure) {
        EXPECT_EQ(failure.getError(), EINVAL);
        EXPECT_STREQ(failure.what(), std::strerror(EINVAL));
        EXPECT_STREQ(failure.getFileName(), "src/base/oscpuinfowinnt");
    }
    VnTest::failClockWith(0);
}
}  // namespace

TEST(ClockFailure, ofTheCounterIsThrownWithItsErrno)
{
    expectClockError([] { OsCpuInfo::getHwCounterValue(); });
    expectClockError([] { HwCounter::timeStamp(); });
    EXPECT_NO_THROW(HwCounter::timeStamp());
}

TEST(ClockFailure, ofTheFrequencyIsThrownAndLeavesItAsItWas)
{
    const std::uint64_t before = OsCpuInfo::getHwCounterFrequency();
    expectClockError([] { OsCpuInfo::initialize(); });
    EXPECT_EQ(OsCpuInfo::getHwCounterFrequency(), before);
}

VN_CHILD(clockFailsAtTheStart)
{
    VnTest::failClockWith(EINVAL);
    VnTest::report("start", VnTest::start);
    VnTest::failClockWith(0);
    std::cout << (dump().find("\t'osal' Not initialized\n") != std::string::npos)
              << (dump().find("\t'initArg' Initialized (1 dependencies)\n") != std::string::npos) << "\n";
    VnTest::report("stop", VnTest::stop);
    return 0;
}

TEST(ClockFailure, atTheStartGoesToTheCallerAndWhatRunsCanBeStopped)
{
    expectOutput("clockFailsAtTheStart", std::string("start: ") + std::strerror(EINVAL) + "\n11\nstop: ok\n");
}

TEST(ClockFailure, goesThroughTheTimersAndLeavesTheirPoints)
{
    VnTest::startOnce();
    HwIntervalTimer timer;
    timer.start();
    timer.stop();
    const double interval = timer.timeInterval();
    expectClockError([&timer] { timer.start(); });
    expectClockError([&timer] { timer.stop(); });
    expectClockError([&timer] { timer.sinceStart(); });
    EXPECT_EQ(timer.timeInterval(), interval);

    Timer<HwIntervalTimer> watch;
    watch.start();
    expectClockError([&watch] { watch.totalTime(); });
    expectClockError([&watch] { watch.stop(); });
    EXPECT_EQ(watch.totalTime(), 0.0);  // stopped, and nothing was added

    Profiler<HwIntervalTimer> profiler;
    profiler.start();
    expectClockError([&profiler] { profiler.stop(); });
    EXPECT_EQ(profiler.cycleTime(), 0.0);
}

TEST(ClockFailure, ofTheTimeOfDayLeavesThePointAsItWas)
{
    VnTest::stopTimeOfDayAt(10900);
    TodIntervalTimer timer;
    timer.start();
    VnTest::stopTimeOfDayAt(12900);
    timer.stop();
    EXPECT_EQ(timer.timeInterval(), 2.0);
    VnTest::failClockWith(EINVAL);
    EXPECT_NO_THROW(timer.start());
    EXPECT_NO_THROW(timer.stop());
    EXPECT_EQ(timer.timeInterval(), 2.0);
    EXPECT_EQ(timer.sinceStart(), -10 + 900 * -0.001);  // a fresh point that was never taken
    VnTest::failClockWith(0);
    VnTest::releaseTimeOfDay();
}

TEST(TimeOfDay, isCutToTheMillisecond)
{
    VnTest::stopTimeOfDayAt(10900);
    TodIntervalTimer timer;
    timer.start();
    VnTest::stopTimeOfDayAt(11100);
    timer.stop();
    EXPECT_EQ(timer.timeInterval(), 1 + (900.0 - 100.0) * -0.001);
    VnTest::stopTimeOfDayAt(11101);
    EXPECT_EQ(timer.sinceStart(), 1 + (900.0 - 101.0) * -0.001);
    VnTest::stopTimeOfDayAt(12999);
    EXPECT_EQ(timer.sinceStart(), 2 + (999.0 - 900.0) * 0.001);
    EXPECT_EQ(timer.timeInterval(), 1 + (900.0 - 100.0) * -0.001);

    Profiler<TodIntervalTimer> profiler;
    for (long end : {1000, 3000}) {
        VnTest::stopTimeOfDayAt(0);
        profiler.start();
        VnTest::stopTimeOfDayAt(end);
        profiler.stop();
        profiler.endCycle();
    }
    EXPECT_EQ(profiler.averageTime(), 2.0);
    EXPECT_EQ(profiler.minTime(), 1.0);
    EXPECT_EQ(profiler.maxTime(), 3.0);
    VnTest::releaseTimeOfDay();
}

TEST(ClockFailure, ofTheCurrentDateIsThrownWithItsErrno)
{
    VnTest::failClockWith(EINVAL);
    try {
        OsDateUtil::getCurrentTime();
        ADD_FAILURE() << "nothing thrown";
    } catch (ExSysErrorWindows const& failure) {
        EXPECT_EQ(failure.getErrorCode(), EINVAL);
        EXPECT_STREQ(failure.getFileName(), "src/base/osdateutil");
    }
    VnTest::failClockWith(0);
}

TEST(TimeOfDay, isTheCurrentDateCutToTheMillisecond)
{
    VnTest::stopTimeOfDayAt(946684799987);  // the end of 1999
    EXPECT_EQ(OsDateUtil::getCurrentTime().getTicks(), UINT64_C(125911583999870000));
    const OsDateTypes::DateStruct fields =
        OsDateUtil::convertToDateStruct(OsDateUtil::getCurrentTime(), OsDateTypes::UTCTime);
    EXPECT_EQ(fields.getYear(), 1999);
    EXPECT_EQ(fields.getDay(), 31);
    EXPECT_EQ(fields.getSecond(), 987 * 0.001 + 59);
    VnTest::releaseTimeOfDay();
}

namespace
{
/// Takes as many milliseconds of the time of day as its argument says, and next to none of the counter.
class LongRun : public TestGroup
{
public:
    LongRun() : TestGroup("long") {}

    void prepare(int, char** const) override { VnTest::stopTimeOfDayAt(1000000000000); }
    void execute(int, char** const argv) override { VnTest::stopTimeOfDayAt(1000000000000 + std::atol(argv[0])); }
};
}  // namespace

VN_CHILD(groupsComeAndGo)
{
    class Group : public TestGroup
    {
    public:
        explicit Group(char const* name) : TestGroup(name)
        {
            setUsage("COUNT");
            setDescription("Sorts.");
        }
        void execute(int, char** const) override {}
    };
    const Group first("first");  // makes room in the registry
    const long before = VnTest::countBlocks();
    // Where its bytes stay: the registry keeps the address.
    alignas(Group) static char room[sizeof(Group)];
    Group* const second = new (room) Group("second");
    const long held = VnTest::countBlocks() - before;
    second->~Group();
    std::cout << held << " " << VnTest::countBlocks() - before << "\n";
    return 0;
}

TEST(TestGroups, giveTheirTextsBack)
{
    expectOutput("groupsComeAndGo", "3 0\n");
}

VN_CHILD(listsOneAfterTheOther)
{
    static LongRun group;
    VnTest::start();
    const auto execute = [](char const* list) {
        try {
            TestPerformer::getInstance().execute(OsFilePath(list));
        } catch (ExInternalError const&) {
            std::cout << "refused\n";
        }
        return VnTest::countBlocks();
    };
    // From the second time on everything that is made once has been made.
    for (int i = 1; i < argc; ++i) {
        execute(argv[i]);
        const long before = execute(argv[i]);
        const long after = execute(argv[i]);
        std::cout << after - before << " more\n";
    }
    // The table of the list that stays the last shows its arguments.
    execute("no such list");
    VnTest::releaseTimeOfDay();
    std::cout << TestPerformer::getInstance();
    VnTest::stop();
    return 0;
}

TEST(TestPerformer, aListFreesWhatTheOneBeforeItHeld)
{
    const VnTest::TempFolder temp;
    std::string sixteen;
    for (int i = 0; i < 16; ++i)
        sixteen += " 1" + std::to_string(i);
    const std::string broken = temp.file("broken", "long 1" + sixteen + "\nlong 1 2 3" + sixteen + "\n");
    const std::string whole = temp.file("whole", "long 1" + sixteen + "\nlong 2 40 50\n");
    const std::string out = VnTest::Child("listsOneAfterTheOther").arguments({broken, whole}).run().out;
    std::string tale;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);)
        if (line == "refused" || line.find(" more") != std::string::npos)
            tale += line + "\n";
    EXPECT_EQ(tale, "refused\nrefused\nrefused\n0 more\n0 more\nrefused\n");
    EXPECT_NE(out.find("40 50 \n\n"), std::string::npos) << out;
}

namespace
{
/// Takes as many milliseconds of the counter as its first argument says, and none of the time of day.
class CountedRun : public TestGroup
{
public:
    CountedRun() : TestGroup("counted") {}

    void prepare(int, char** const) override
    {
        VnTest::stopTimeOfDayAt(1000000000000);
        VnTest::stopCounterAt(_counter);
    }
    void execute(int, char** const argv) override
    {
        _counter += std::atol(argv[0]);
        VnTest::stopCounterAt(_counter);
    }
    /// What lies between two cycles belongs to none of them.
    void terminate() override { VnTest::stopCounterAt(_counter += 77777); }

private:
    long _counter = 5000000;
};
}  // namespace

VN_CHILD(countedRuns)
{
    static CountedRun group;
    VnTest::start();
    for (int i = 1; i < argc; ++i) {
        try {
            TestPerformer::getInstance().execute(OsFilePath(argv[i]));
        } catch (ExInternalError const&) {
        }
        VnTest::releaseTimeOfDay();
        VnTest::releaseCounter();
        std::cout << TestPerformer::getInstance();
    }
    VnTest::stop();
    return 0;
}

TEST(TestPerformer, aCyclesTimeIsThatOfExecuteAlone)
{
    const VnTest::TempFolder temp;
    std::string more;
    for (int i = 2; i <= 16; ++i)
        more += " " + std::to_string(i);
    // Behind 16 arguments the row of a list that was refused later has no average of the one before it.
    const std::string out = VnTest::Child("countedRuns")
                                .arguments({temp.file("list", "counted 1 2500" + more + "\ncounted 3 400\n"),
                                            temp.file("refused", "counted 1 2500" + more + "\nnobody 1\n")})
                                .without("VN_TRACE_OPTIONS")
                                .run()
                                .out;
    EXPECT_NE(out.find("counted                        1       2.500000    2500" + more + " \n"), std::string::npos)
        << out;
    EXPECT_NE(out.find("counted                        3       0.400000    400 \n"), std::string::npos) << out;
    EXPECT_NE(out.find("counted                        1       0.000000    2500" + more + " \n"), std::string::npos)
        << out;
}

VN_CHILD(longRuns)
{
    static LongRun group;
    VnTest::start();
    TestPerformer::getInstance().execute(OsFilePath(argv[1]));
    VnTest::releaseTimeOfDay();
    std::cout << TestPerformer::getInstance();
    VnTest::stop();
    return 0;
}

TEST(TestPerformer, theTimeOfDayServesForAveragesOfOver30Seconds)
{
    const VnTest::TempFolder temp;
    const std::string list = temp.file("list", "long 2 30500\nlong 1 30000\nlong 1 30001\nlong 1 29000\n");
    const std::string out = VnTest::Child("longRuns").arguments({list}).run().out;
    const std::string table = out.substr(std::min(out.find("Group Name"), out.size()));
    EXPECT_NE(table.find("long                           2      30.500000    30500 \n"), std::string::npos) << out;
    EXPECT_NE(table.find("long                           1      30.001000    30001 \n"), std::string::npos) << out;
    EXPECT_EQ(table.find("30.000000"), std::string::npos) << "30 seconds are not over 30";
    EXPECT_EQ(table.find("29.000000"), std::string::npos) << out;
}
