#include <base/inex.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace Vn;
using std::chrono::milliseconds;
using VnTest::Child;
using VnTest::expectOutput;
using VnTest::NumberedPackage;
using VnTest::report;
using VnTest::start;
using VnTest::startWith;
using VnTest::stop;

namespace
{
class SettingsPackage : public NumberedPackage<1>
{
public:
    SettingsPackage() : NumberedPackage<1>("settings", {InInit<VnInit::initArg>::getType()}) {}
};

std::ostream& operator<<(std::ostream& stream, milliseconds time)
{
    return stream << time.count() << "ms";
}

/// One setting of each type, with the same sources.
struct Settings
{
    Settings(InPackageInit& package, InContextAliasBase const& first, InContextAliasBase const& second)
        : _double("double", package, first, second),
          _float("float", package, first, second),
          _long("long", package, first, second),
          _string("string", package, first, second),
          _time("time", package, first, second),
          _int("int", package, first, second),
          _bool("bool", package, first, second),
          _text("text", package, first, second)
    {}

    InVariable<double> _double;
    InVariable<float> _float;
    InVariable<long> _long;
    InVariable<std::string> _string;
    InVariable<milliseconds> _time;
    InVariable<int> _int;
    InVariable<bool> _bool;
    InVariable<char const*> _text;
};

/// Calls `action` with each of them.
template <class Action>
void forEach(Settings const& settings, Action const& action)
{
    action(settings._double);
    action(settings._float);
    action(settings._long);
    action(settings._string);
    action(settings._time);
    action(settings._int);
    action(settings._bool);
    action(settings._text);
}
}  // namespace

// ---- what a page shows

VN_CHILD(settingsOfTheGuide)
{
    SettingsPackage package;
    const Vn::InContextAlias<Vn::InInitEnv, 1> variable("GREETER_PAUSE", "the pause between two greetings");
    const Vn::InContextAlias<Vn::InInitDef, 0> fallback("1.5s", "default");
    const Vn::InVariable<std::chrono::milliseconds> pause("greeter.pause", package, variable, fallback);
    if (argc > 1)
        Vn::InVariableBase::overrideViaHandle("greeter.pause", "0", "tests don't wait");
    start();
    const std::string source = pause.initSource();
    if (source == Vn::InContextAlias<Vn::InInitOvr, 0>::initSourceString())
        std::cout << "overridden: ";
    else if (source == Vn::InContextAlias<Vn::InInitEnv, 1>::initSourceString())
        std::cout << "from GREETER_PAUSE: ";
    std::cout << pause.getValue().count() << " ms\n";
    return 0;
}

TEST(InVariable, theGuidesSettingHasItsSourcesInTheirRank)
{
    const std::string started = "start settings\n";
    EXPECT_EQ(Child("settingsOfTheGuide").without("GREETER_PAUSE").run().out, started + "1500 ms\n");
    EXPECT_EQ(Child("settingsOfTheGuide").with("GREETER_PAUSE", "250").run().out,
              started + "from GREETER_PAUSE: 250 ms\n");
    EXPECT_EQ(Child("settingsOfTheGuide").with("GREETER_PAUSE", "250").arguments({"test"}).run().out,
              started + "overridden: 0 ms\n");
}

// ---- all types

VN_CHILD(settingsOfAllTypes)
{
    SettingsPackage package;
    const InContextAlias<InInitEnv, 1> unset("VN_TEST_UNSET", "d");
    const InContextAlias<InInitDef, 0> text(argv[1], "d");
    const Settings settings(package, unset, text);
    start();
    std::cout << std::setprecision(17);
    forEach(settings, [](auto const& setting) { std::cout << setting.getValue() << '|'; });
    return 0;
}

TEST(InVariable, eachTypeReadsTheTextInItsForm)
{
    const struct
    {
        char const* text;
        char const* values;  ///< double, float, long, std::string, milliseconds, int, bool, char const*
    } table[] = {
        {"", "0|0|0||0ms|0|1||"},
        {"0", "0|0|0|0|0ms|0|0|0|"},
        {"-7.5", "-7.5|-7.5|-7|-7.5|-8ms|-7|1|-7.5|"},
        {"false", "0|0|0|false|0ms|0|0|false|"},
        {"12 apples", "12|12|12|12 apples|12ms|12|1|12 apples|"},
        {"1.5s", "1.5|1.5|1|1.5s|1500ms|1|1|1.5s|"},
        {"2min", "2|2|2|2min|120000ms|2|1|2min|"},
        {"1e3", "1000|1000|1|1e3|1ms|1|1|1e3|"},
        {"16777217", "16777217|16777216|16777217|16777217|16777217ms|16777217|1|16777217|"},
        {"a text of more than fifteen characters",
         "0|0|0|a text of more than fifteen characters|0ms|0|1|a text of more than fifteen characters|"},
        {"    1234567.25 s",
         "1234567.25|1234567.25|1234567|    1234567.25 s|1234567250ms|1234567|1|    1234567.25 s|"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Child("settingsOfAllTypes").without("VN_TEST_UNSET").arguments({row.text}).run().out,
                  std::string("start settings\n") + row.values);
    }
}

VN_CHILD(longSetting)
{
    SettingsPackage package;
    const InContextAlias<InInitDef, 0> high("99999999999999999999999", "d"), low("-99999999999999999999999", "d");
    const InVariable<long> highest("highest", package, high), lowest("lowest", package, low);
    start();
    std::cout << (highest.getValue() == std::numeric_limits<long>::max())
              << (lowest.getValue() == std::numeric_limits<long>::min());
    return 0;
}

TEST(InVariable, aLongGoesToItsLimits)
{
    expectOutput("longSetting", "start settings\n11");
}

VN_CHILD(settingsWithoutAValue)
{
    SettingsPackage package;
    const InContextAlias<InInitEnv, 1> unset("VN_TEST_UNSET", "d"), also("VN_TEST_UNSET_TOO", "d");
    const InContextAlias<InInitDef, 0> fallback("1", "d");
    const Settings settings(package, unset, also);
    const InVariable<double> number("number", package, fallback);
    report("before", [&] { number.getValue(); });
    start();
    forEach(settings, [](auto const& setting) { report("unset", [&] { setting.getValue(); }); });
    stop();
    report("after", [&] { number.getValue(); });
    return 0;
}

TEST(InVariable, withoutAValueEachTypeThrows)
{
    const auto line = [](std::string const& when, std::string const& handle) {
        return when + ": Trying to access an object that is not fully initialized: '" + handle + "'.\n";
    };
    std::string expected = line("before", "number") + "start settings\n";
    for (char const* handle : {"double", "float", "long", "string", "time", "int", "bool", "text"})
        expected += line("unset", handle);
    EXPECT_EQ(Child("settingsWithoutAValue").without("VN_TEST_UNSET").without("VN_TEST_UNSET_TOO").run().out,
              expected + "stop settings\n" + line("after", "number"));
}

VN_CHILD(optionOfAType)
{
    SettingsPackage package;
    const InContextAlias<InInitArg, 1> option("s:", "-s FACTOR");
    const InContextAlias<InInitDef, 0> fallback("1", "d");
    const InVariable<double> scale("scale", package, option, fallback);
    const InVariable<milliseconds> pause("pause", package, fallback);
    InVariableBase::overrideViaHandle("pause", "1h", "d");
    startWith({"prog", "-s", "-0.25"});
    std::cout << scale.getValue() << ' ' << pause.getValue();
    return 0;
}

TEST(InVariable, eachTypeTakesOptionsAndOverrides)
{
    expectOutput("optionOfAType", "start settings\n-0.25 3600000ms");
}

VN_CHILD(typesOnManyThreads)
{
    SettingsPackage package;
    const InContextAlias<InInitDef, 0> fallback("2.5", "d"), same("2.5", "d");
    const Settings settings(package, fallback, same);
    start();
    std::vector<double> sums(4);
    std::vector<std::thread> threads;
    for (double& sum : sums)
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i)
                sum += settings._double.getValue() + settings._float.getValue() +
                       static_cast<double>(settings._long.getValue()) +
                       static_cast<double>(settings._time.getValue().count()) +
                       static_cast<double>(settings._string.getValue().size());
        });
    for (std::thread& thread : threads)
        thread.join();
    for (double sum : sums)
        std::cout << sum << ' ';
    return 0;
}

TEST(InVariable, eachTypeIsReadOnAnyThread)
{
    expectOutput("typesOnManyThreads", "start settings\n13000 13000 13000 13000 ");
}
