#include <base/exinternalerror.h>
#include <base/inex.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectOutput;
using VnTest::NumberedPackage;
using VnTest::report;
using VnTest::start;
using VnTest::startWith;
using VnTest::stop;

using Override = InContextAlias<InInitOvr, 0>;
using Argument = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

namespace
{
/// A package that may read every source.
class SettingsPackage : public NumberedPackage<1>
{
public:
    SettingsPackage() : NumberedPackage<1>("settings", {InInit<VnInit::initArg>::getType()}) {}
};

template <class T>
void printValue(InVariable<T> const& variable)
{
    if (!variable.isValid()) {
        std::cout << "(invalid) ";
        return;
    }
    std::string const source = variable.initSource();
    std::cout << variable.getValue() << " from "
              << (source == Override::initSourceString()      ? "override"
                  : source == Argument::initSourceString()    ? "argument"
                  : source == Environment::initSourceString() ? "environment"
                  : source == Default::initSourceString()     ? "default"
                                                              : "?")
              << " ";
}
}  // namespace

// ---- ranks

VN_CHILD(ranks)
{
    SettingsPackage package;
    const Default fallback("default", "d");
    const Environment environment("VN_TEST_VALUE", "d");
    const Argument argument("o:", "d");
    // Given from the weakest to the strongest, so that it isn't the order that decides.
    InVariable<char const*> text("text", package, fallback, environment, argument);
    if (std::string(argv[1]) == "override")
        InVariableBase::overrideViaHandle("text", "forced", "d");
    if (std::string(argv[2]) == "argument")
        startWith({"prog", "-o", "given"});
    else
        start();
    printValue(text);
    stop();
    return 0;
}

TEST(InVariable, strongestSourceWithAValueCounts)
{
    const struct
    {
        char const* override;
        char const* argument;
        bool isSet;
        char const* expected;
    } table[] = {
        {"-", "-", false, "default from default"},        {"-", "-", true, "set from environment"},
        {"-", "argument", false, "given from argument"},  {"-", "argument", true, "given from argument"},
        {"override", "-", false, "forced from override"}, {"override", "argument", true, "forced from override"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.expected);
        Child child("ranks");
        child.arguments({row.override, row.argument}).without("VN_TEST_VALUE");
        if (row.isSet)
            child.with("VN_TEST_VALUE", "set");
        EXPECT_EQ(child.run().out, std::string("start settings\n") + row.expected + " stop settings\n");
    }
}

VN_CHILD(equalRanks)
{
    SettingsPackage package;
    const Default first("first", "d");
    const Default second("second", "d");
    InVariable<char const*> text("text", package, first, second);
    InVariable<char const*> reversed("reversed", package, second, first);
    start();
    printValue(text);
    printValue(reversed);
    return 0;
}

TEST(InVariable, ofEqualRanksTheFirstGivenCounts)
{
    expectOutput("equalRanks", "start settings\nfirst from default second from default ");
}

VN_CHILD(tenSources)
{
    SettingsPackage package;
    std::vector<std::unique_ptr<Environment>> unset;
    for (int i = 0; i < 9; ++i)
        unset.push_back(std::make_unique<Environment>(("VN_TEST_UNSET" + std::to_string(i)).c_str(), "d"));
    const Default last("last", "d");
    InVariable<char const*> text("text", package, *unset[0], *unset[1], *unset[2], *unset[3], *unset[4], *unset[5],
                                 *unset[6], *unset[7], *unset[8], last);
    start();
    printValue(text);
    return 0;
}

TEST(InVariable, takesTenSources)
{
    expectOutput("tenSources", "start settings\nlast from default ");
}

// ---- values

VN_CHILD(conversions)
{
    SettingsPackage package;
    const Default text(argc > 1 ? argv[1] : "", "d");
    InVariable<int> number("number", package, text);
    InVariable<bool> flag("flag", package, text);
    InVariable<char const*> string("string", package, text);
    start();
    std::cout << number.getValue() << " " << flag.getValue() << " '" << string.getValue() << "'";
    return 0;
}

TEST(InVariable, textIsConvertedByItsType)
{
    const struct
    {
        char const* text;
        char const* expected;
    } table[] = {
        {"0", "0 0 '0'"},
        {"00", "0 1 '00'"},
        {"1", "1 1 '1'"},
        {"-17", "-17 1 '-17'"},
        {" 12x", "12 1 ' 12x'"},
        {"abc", "0 1 'abc'"},
        {"false", "0 0 'false'"},
        {"FALSE", "0 0 'FALSE'"},
        {"fAlSe", "0 0 'fAlSe'"},
        {"falsee", "0 1 'falsee'"},
        {"fals", "0 1 'fals'"},
        {"true", "0 1 'true'"},
        {"no", "0 1 'no'"},
        {"2", "2 1 '2'"},
        {"0 ", "0 1 '0 '"},
        {"2147483647", "2147483647 1 '2147483647'"},
        // Beyond an int: just so, beyond its unsigned form, and beyond every type.
        {"2147483648", "2147483647 1 '2147483648'"},
        {"4294967297", "2147483647 1 '4294967297'"},
        {"99999999999999999999x", "2147483647 1 '99999999999999999999x'"},
        {"-2147483648", "-2147483648 1 '-2147483648'"},
        {"-2147483649", "-2147483648 1 '-2147483649'"},
        {"-4294967297", "-2147483648 1 '-4294967297'"},
        {"-99999999999999999999", "-2147483648 1 '-99999999999999999999'"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Child("conversions").arguments({row.text}).run().out,
                  std::string("start settings\n") + row.expected);
    }
}

VN_CHILD(emptyText)
{
    SettingsPackage package;
    const Default text("", "d");
    InVariable<int> number("number", package, text);
    InVariable<bool> flag("flag", package, text);
    InVariable<char const*> string("string", package, text);
    start();
    std::cout << number.getValue() << flag.getValue() << "'" << string.getValue() << "'";
    return 0;
}

TEST(InVariable, emptyTextIsZeroAndTrue)
{
    expectOutput("emptyText", "start settings\n01''");
}

#if !defined(_WIN32)
VN_CHILD(emptyEnvironment)
{
    SettingsPackage package;
    const Environment environment("VN_TEST_VALUE", "d");
    const Default fallback("7", "d");
    InVariable<int> number("number", package, environment, fallback);
    InVariable<bool> flag("flag", package, environment, fallback);
    start();
    printValue(number);
    printValue(flag);
    return 0;
}

TEST(InVariable, environmentCountsEvenIfItIsEmpty)
{
    EXPECT_EQ(Child("emptyEnvironment").with("VN_TEST_VALUE", "").run().out,
              "start settings\n0 from environment 1 from environment ");
    EXPECT_EQ(Child("emptyEnvironment").without("VN_TEST_VALUE").run().out,
              "start settings\n7 from default 1 from default ");
}
#endif

VN_CHILD(noValue)
{
    SettingsPackage package;
    const Environment environment("VN_TEST_UNSET", "d");
    InVariable<int> variable("handle", package, environment);
    start();
    std::cout << variable.isValid() << "\n";
    report("getValue", [&] { variable.getValue(); });
    report("initSource", [&] { variable.initSource(); });
    stop();
    return 0;
}

TEST(InVariable, withoutAValueItsPackageStartsAndReadingIsRefused)
{
    const std::string refused = "Trying to access an object that is not fully initialized: 'handle'.\n";
    expectOutput("noValue",
                 "start settings\n0\ngetValue: " + refused + "initSource: " + refused + "stop settings\n");
}

VN_CHILD(lifeOfAVariable)
{
    SettingsPackage package;
    const Default fallback("5", "d");
    InVariable<int> variable("handle", package, fallback);
    std::cout << variable.getHandle() << variable.isValid() << "\n";
    report("before", [&] { variable.getValue(); });
    start();
    std::cout << variable.isValid() << variable.getValue() << "\n";
    stop();
    std::cout << variable.isValid() << "\n";
    report("after", [&] { variable.getValue(); });
    report("source", [&] { variable.initSource(); });
    return 0;
}

TEST(InVariable, isValidFromStartToStop)
{
    const std::string refused = "Trying to access an object that is not fully initialized: 'handle'.\n";
    expectOutput("lifeOfAVariable", "handle0\nbefore: " + refused +
                                        "start settings\n15\nstop settings\n0\nafter: " + refused +
                                        "source: " + refused);
}

VN_CHILD(sourceNotStarted)
{
    // Depends on `initialize` only, so the options have no values yet.
    NumberedPackage<1> package("a", {InInit<VnInit::initialize>::getType()});
    const Argument argument("o:", "d");
    const Default fallback("default", "d");
    InVariable<char const*> text("text", package, argument, fallback);
    startWith({"prog", "-o", "given"});
    printValue(text);
    stop();
    return 0;
}

TEST(InVariable, sourceOfAKindThatHasNotStartedIsPassedOver)
{
    expectOutput("sourceNotStarted", "start a\ndefault from default stop a\n");
}

// ---- handles

VN_CHILD(handles)
{
    SettingsPackage package;
    const Default fallback("5", "d");
    std::cout << (InVariableBase::queryViaHandle("one") == nullptr) << "\n";
    {
        InVariable<int> one("one", package, fallback);
        std::cout << (InVariableBase::queryViaHandle("one") == &one)
                  << (InVariableBase::queryViaHandle("One") == nullptr)
                  << (InVariableBase::queryViaHandle(nullptr) == nullptr) << "\n";
        report("second", [&] { InVariable<bool> second("one", package, fallback); });
        std::cout << (InVariableBase::queryViaHandle("one") == &one) << "\n";
        InVariable<int> null(nullptr, package, fallback);
        std::cout << "'" << null.getHandle() << "'" << (InVariableBase::queryViaHandle("") == &null) << "\n";
    }
    std::cout << (InVariableBase::queryViaHandle("one") == nullptr) << "\n";
    report("again", [&] { InVariable<int> one("one", package, fallback); });
    return 0;
}

TEST(InVariable, handleIsUniqueWhileItsVariableLives)
{
    expectOutput("handles",
                 "1\n111\nsecond: Trying to register an object with an already used handle: 'one'.\n1\n''1\n"
                 "1\nagain: ok\n");
}

VN_CHILD(refusedVariable)
{
    SettingsPackage package;
    const Environment environment("VN_TEST_KEY", "d");
    const Default fallback("5", "d");
    InVariable<int> first("taken", package, fallback);
    report("handle", [&] { InVariable<int> second("taken", package, fallback, environment); });
    start();
    report("clone", [&] { InVariable<int> late("late", package, fallback); });
    std::cout << (InVariableBase::queryViaHandle("late") == nullptr) << "\n";
    stop();
    return 0;
}

TEST(InVariable, refusedVariableLeavesNothingBehind)
{
    const ChildRun run = Child("refusedVariable").with("VN_DEBUG_INITIALIZE", "1").run();
    EXPECT_EQ(run.out,
              "handle: Trying to register an object with an already used handle: 'taken'.\nstart settings\n"
              "clone: Trying to do post initialization registration of context alias instance: 'd' (key: 5).\n"
              "1\nstop settings\n");
    // One variable is started, so the refused one isn't in the package.
    const std::string start = "Initializing variable  : taken";
    const std::size_t first = run.err.find(start);
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(run.err.find(start, first + 1), std::string::npos);
    // And its clone of the environment's alias is gone: the dump shows one alias of that key.
    const std::size_t key = run.err.find("Key             : VN_TEST_KEY");
    ASSERT_NE(key, std::string::npos);
    EXPECT_EQ(run.err.find("Key             : VN_TEST_KEY", key + 1), std::string::npos);
}

VN_CHILD(departedVariable)
{
    SettingsPackage package;
    {
        const Environment environment("VN_TEST_KEY", "d");
        const Argument option("k:", "d");
        const InVariable<int> variable("handle", package, environment, option);
    }
    report("variable of the environment", [] { Environment("VN_TEST_KEY", "d"); });
    report("option", [] { Argument("k:", "d"); });
    return 0;
}

TEST(InVariable, takesItsSourcesAlongWhenItGoes)
{
    expectOutput("departedVariable", "variable of the environment: ok\noption: ok\n");
}

VN_CHILD(sourceStopped)
{
    SettingsPackage package;
    package.onStart = [] { throw ExInternalError("src/base/x", 1, "no"); };
    const Default fallback("5", "the usual depth");
    InVariable<int> number("number", package, fallback);
    InVariable<char const*> text("text", package, fallback);
    report("start", start);
    std::cout << number.isValid() << number.getValue() << text.getValue() << "\n";
    report("stop", stop);
    // Nobody stops a package whose start failed: the choice stays.
    std::cout << number.isValid() << (std::string(number.initSource()) == Default::initSourceString()) << "\n";
    report("number", [&] { number.getValue(); });
    report("text", [&] { text.getValue(); });
    return 0;
}

TEST(InVariable, ofASourceThatHasStoppedReadingIsRefusedByItsDescription)
{
    const std::string refused = "Trying to access an object that is not fully initialized: 'the usual depth'.\n";
    expectOutput("sourceStopped",
                 "start settings\nstart: no\n155\nstop: ok\n11\nnumber: " + refused + "text: " + refused);
}

VN_CHILD(sharedDeclaration)
{
    SettingsPackage package;
    const Environment environment("VN_TEST_VALUE", "d");
    InVariable<int> one("one", package, environment);
    InVariable<char const*> two("two", package, environment);
    start();
    printValue(one);
    printValue(two);
    return 0;
}

TEST(InVariable, declarationCanBeSharedByVariables)
{
    EXPECT_EQ(Child("sharedDeclaration").with("VN_TEST_VALUE", "12").run().out,
              "start settings\n12 from environment 12 from environment ");
}

// ---- overrides

VN_CHILD(overrideBeforeItsVariable)
{
    InVariableBase::overrideViaHandle("handle", "1", "first");
    InVariableBase::overrideViaHandle("handle", "2", "second");
    std::cout << InVariableBase::isOverridden("handle") << InVariableBase::isOverridden("other")
              << InVariableBase::isOverridden(nullptr) << "\n";
    SettingsPackage package;
    const Default fallback("5", "d");
    InVariable<int> variable("handle", package, fallback);
    start();
    printValue(variable);
    std::cout << InVariableBase::isOverridden("handle") << "\n";
    return 0;
}

TEST(InVariable, lastOverrideIsTakenByAVariableMadeLater)
{
    expectOutput("overrideBeforeItsVariable", "100\nstart settings\n2 from override 0\n");
}

VN_CHILD(overrideTooLate)
{
    SettingsPackage package;
    const Default fallback("5", "d");
    const Environment unset("VN_TEST_UNSET", "d");
    InVariable<int> running("running", package, fallback);
    InVariable<int> invalid("invalid", package, unset);
    start();
    report("running", [] { InVariableBase::overrideViaHandle("running", "1", "d"); });
    report("invalid", [] { InVariableBase::overrideViaHandle("invalid", "1", "d"); });
    report("unknown", [] { InVariableBase::overrideViaHandle("unknown", "1", "d"); });
    std::cout << InVariableBase::isOverridden("unknown") << running.getValue() << "\n";
    stop();
    report("stopped", [] { InVariableBase::overrideViaHandle("running", "1", "d"); });
    return 0;
}

TEST(InVariable, overrideAfterTheStartIsRefused)
{
    const std::string late =
        "Trying to do post initialization registration of context alias instance: 'd' (key: 1).\n";
    expectOutput("overrideTooLate",
                 "start settings\n"
                 "running: Trying to override an InVariable that is already initialized: 'running'.\n"
                 "invalid: " +
                     late + "unknown: " + late + "05\nstop settings\nstopped: " + late);
}

VN_CHILD(unusedOverride)
{
    InVariableBase::overrideViaHandle("nobody", "text", "description");
    start();
    std::cout << InVariableBase::isOverridden("nobody") << "\n";
    stop();
    std::cout << InVariableBase::isOverridden("nobody") << "\n";
    return 0;
}

TEST(InVariable, unusedOverrideIsGoneAfterTheStop)
{
    expectOutput("unusedOverride", "1\n0\n");
}

VN_CHILD(nullOverride)
{
    InVariableBase::overrideViaHandle(nullptr, nullptr, nullptr);
    std::cout << InVariableBase::isOverridden("") << "\n";
    SettingsPackage package;
    const Default fallback("5", "d");
    InVariable<char const*> variable("", package, fallback);
    start();
    std::cout << "'" << variable.getValue() << "'\n";
    return 0;
}

TEST(InVariable, nullsOfAnOverrideAreEmpty)
{
    expectOutput("nullOverride", "1\nstart settings\n''\n");
}

// ---- diagnostics

VN_CHILD(variableDiagnostics)
{
    InVariableBase::overrideViaHandle("nobody", "unused", "nobody's");
    SettingsPackage package;
    const Default fallback("5", "the default");
    const Environment unset("VN_TEST_UNSET", "d");
    InVariable<int> variable("handle", package, fallback);
    InVariable<int> invalid("invalid", package, unset);
    start();
    stop();
    return 0;
}

TEST(InVariable, diagnosticsAreExactToTheByte)
{
    const std::string err =
        Child("variableDiagnostics").with("VN_DEBUG_INITIALIZE", "1").without("VN_TEST_UNSET").run().err;
    EXPECT_NE(err.find("----\nAdding override for handle: nobody\n     With string          : unused\n"
                       "     Described as         : nobody's\n----\nRegistering Package: InInit<settings>\n"),
              std::string::npos);
    EXPECT_NE(err.find(std::string(" InInit<settings>::performInitialize()\n----\nInitializing variable  : handle\n"
                                   "     With string       : 5\n     From context alias: ") +
                       typeid(Default).name() + "\n     Described as      : the default\n----\n"),
              std::string::npos)
        << err;
    EXPECT_EQ(err.find("invalid"), std::string::npos);
    EXPECT_NE(err.find("----\nUnused override for handle: nobody\n     With string          : unused\n"
                       "     Described as         : nobody's\n----\n"),
              std::string::npos);
}

VN_CHILD(pendingAtAnEarlyStop)
{
    InVariableBase::overrideViaHandle("nobody", "unused", "nobody's");
    report("stop", stop);
    return 0;
}

TEST(InVariable, stopBeforeTheStartPrintsTheUnusedOverridesText)
{
    const ChildRun run = Child("pendingAtAnEarlyStop").with("VN_DEBUG_INITIALIZE", "1").run();
    EXPECT_EQ(run.out, "stop: Call to finalize() before initialize().\n");
    EXPECT_NE(run.err.find("Unused override for handle: nobody\n     With string          : unused\n"),
              std::string::npos);
}

// ---- the mark of a source that isn't given

namespace
{
class DummyProbe : public InVariable<int>
{
public:
    using InVariableBase::_dummy;
};
}  // namespace

TEST(InVariable, dummySourceIsDescribed)
{
    EXPECT_STREQ(DummyProbe::_dummy.getDescription(), "InVariableBase::_dummy");
}

VN_CHILD(dummyOperation)
{
    switch (argv[1][0]) {
    case 'c':
        DummyProbe::_dummy.clone();
        break;
    case 'p':
        DummyProbe::_dummy.getPriority();
        break;
    default:
        DummyProbe::_dummy.getKey();
    }
    return 0;
}

TEST(InVariable, dummySourceAborts)
{
    for (char const* operation : {"clone", "priority", "key"}) {
        SCOPED_TRACE(operation);
        EXPECT_TRUE(Child("dummyOperation").arguments({operation}).run().crashed);
    }
}

// ---- reads follow their source

namespace
{
/// A source of a client's own, which can reach the clone that its variable holds.
class OwnSource : public InContextAliasBase
{
public:
    OwnSource() : InContextAliasBase("own source") {}
    InContextAliasBase* clone() const override { return _last = new OwnSource(*this); }
    unsigned long getPriority() const override { return 20; }
    char const* getKey() const override { return "own"; }
    InContextAliasBase& getClone() const { return *_last; }

private:
    OwnSource(OwnSource const&) = default;

    mutable InContextAliasBase* _last = nullptr;
};

struct ReadValues
{
    ReadValues(InPackageInit& package, InContextAliasBase const& source, InContextAliasBase const& fallback)
        : number("number", package, source, fallback),
          truth("truth", package, source, fallback),
          text("text", package, source, fallback)
    {}

    void initialize()
    {
        number.initialize();
        truth.initialize();
        text.initialize();
    }

    void finalize()
    {
        number.finalize();
        truth.finalize();
        text.finalize();
    }

    InVariable<int> number;
    InVariable<bool> truth;
    InVariable<char const*> text;
};
}  // namespace

VN_CHILD(sourceWithNewText)
{
    SettingsPackage package;
    OwnSource source;
    InVariable<int> number("number", package, source);
    InContextAliasBase& ofNumber = source.getClone();
    InVariable<bool> truth("truth", package, source);
    InContextAliasBase& ofTruth = source.getClone();
    InVariable<char const*> text("text", package, source);
    InContextAliasBase& ofText = source.getClone();
    const auto give = [&](char const* value) {
        for (InContextAliasBase* alias : {&ofNumber, &ofTruth, &ofText})
            alias->initialize(value);
    };
    const auto print = [&] {
        report("", [&] { std::cout << number.getValue() << ' ' << truth.getValue() << ' ' << text.getValue(); });
    };
    give("12");
    start();
    print();
    for (char const* value : {"0", "false", "-3 apples", static_cast<char const*>(nullptr), ""}) {
        give(value);
        print();
    }
    for (InContextAliasBase* alias : {&ofNumber, &ofTruth, &ofText})
        alias->finalize();
    print();
    give(nullptr);
    print();
    give("7");
    print();
    return 0;
}

TEST(InVariable, aReadFollowsItsSource)
{
    expectOutput("sourceWithNewText",
                 "start settings\n12 1 12: ok\n0 0 0: ok\n0 0 false: ok\n-3 1 -3 apples: ok\n"
                 "-3 1 -3 apples: ok\n0 1 : ok\n: Trying to access an object that is not fully "
                 "initialized: 'own source'.\n0 1 : ok\n7 1 7: ok\n");
}

VN_CHILD(textsOfEachLength)
{
    SettingsPackage package;
    OwnSource source;
    const auto give = [&source](std::string const& value) { source.getClone().initialize(value.c_str()); };
    source.initialize("0");
    InVariable<int> number("number", package, source);
    start();
    for (std::size_t length = 1; length <= 24; ++length) {
        const std::string digits = std::string(length - 1, '0') + "7";
        give(digits);
        std::cout << number.getValue();
        give("-" + digits);
        std::cout << number.getValue() << (source.getClone().getValue() == "-" + digits) << ' ';
    }
    return 0;
}

TEST(InVariable, aNumberMayHaveAnyLength)
{
    std::string expected = "start settings\n";
    for (std::size_t length = 1; length <= 24; ++length)
        expected += "7-71 ";
    expectOutput("textsOfEachLength", expected);
}

VN_CHILD(truthsOfEachLength)
{
    SettingsPackage package;
    OwnSource source;
    source.initialize("0");
    InVariable<bool> truth("truth", package, source);
    start();
    for (std::size_t length = 1; length <= 24; ++length) {
        source.getClone().initialize(std::string(length, '0').c_str());
        std::cout << truth.getValue() << ' ';
    }
    return 0;
}

TEST(InVariable, onlyOneZeroIsFalse)
{
    std::string expected = "start settings\n0 ";
    for (std::size_t length = 2; length <= 24; ++length)
        expected += "1 ";
    expectOutput("truthsOfEachLength", expected);
}

VN_CHILD(sourceWithATextBeforeItIsCloned)
{
    SettingsPackage package;
    OwnSource source;
    source.initialize("7 apples");
    InVariable<int> seven("seven", package, source);
    InVariable<bool> yes("yes", package, source);
    source.initialize("false");
    InVariable<bool> no("no", package, source);
    source.initialize("0000000000000000012");
    InVariable<int> twelve("twelve", package, source);
    start();
    std::cout << seven.getValue() << yes.getValue() << no.getValue() << twelve.getValue() << "\n";
    return 0;
}

TEST(InVariable, aCloneReadsAsItsSource)
{
    expectOutput("sourceWithATextBeforeItIsCloned", "start settings\n71012\n");
}

VN_CHILD(variableChoosesAgain)
{
    SettingsPackage package;
    const Default fallback("5", "d");
    OwnSource source;
    ReadValues values(package, source, fallback);
    const auto print = [&] {
        std::cout << values.number.getValue() << values.truth.getValue() << values.text.getValue() << " ";
    };
    start();
    print();
    values.finalize();
    source.getClone().initialize("false");  // of the last one, the text
    values.initialize();
    print();
    values.finalize();
    source.getClone().finalize();
    values.initialize();
    print();
    return 0;
}

TEST(InVariable, chosenAgainItReadsWhatItHasChosen)
{
    expectOutput("variableChoosesAgain", "start settings\n515 51false 515 ");
}

// ---- threads

VN_CHILD(readOnManyThreads)
{
    SettingsPackage package;
    const Default fallback("5", "d");
    InVariable<int> variable("handle", package, fallback);
    start();
    std::vector<int> sums(4);
    std::vector<std::thread> threads;
    for (int& sum : sums)
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i)
                sum += variable.getValue();
        });
    for (std::thread& thread : threads)
        thread.join();
    for (int sum : sums)
        std::cout << sum << " ";
    stop();
    return 0;
}

TEST(InVariable, isReadOnAnyThread)
{
    expectOutput("readOnManyThreads", "start settings\n5000 5000 5000 5000 stop settings\n");
}
