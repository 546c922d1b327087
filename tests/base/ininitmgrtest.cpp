#include <base/exinternalerror.h>
#include <base/incontextalias.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/invariable.h>

#include "expectchild.h"
#include "ownsettings.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <typeinfo>
#include <utility>
#include <vector>

using Vn::InInitMgr;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectOutput;
using VnTest::NumberedPackage;
using VnTest::report;
using VnTest::start;
using VnTest::startWith;
using VnTest::stop;

namespace
{
/// The library's packages in start order, with the number of packages that each needs.
constexpr struct
{
    char const* name;
    int needs;
    int listed;
} libraryPackages[] = {
    {"initialize", 0, 0},   {"heapMgr", 1, 1}, {"initArg", 1, 1},   {"osal", 1, 1},     {"initVars", 2, 2},
    {"profiling", 2, 2},    {"logger", 3, 3},  {"debugging", 5, 4}, {"baseMath", 6, 5}, {"random", 6, 5},
    {"discreteTime", 7, 5}, {"testing", 7, 7}, {"base", 12, 12},
};

/// What dump() prints while the library and `clients` (already formatted lines) are up.
std::string dumpOfRunning(std::string const& clients = "", int clientCount = 0)
{
    std::string text = "No packages waiting to be initialize.\n" + std::to_string(13 + clientCount) +
                       " packages currently saved:\n";
    for (auto const& package : libraryPackages)
        text += std::string("\t'") + package.name + "' Initialized (" + std::to_string(package.needs) +
                " dependencies)\n";
    return text + clients;
}

InInitMgr& manager()
{
    return InInitMgr::getInstance();
}
}  // namespace

// ---- order

VN_CHILD(libraryAlone)
{
    start();
    manager().dump(std::cout);
    stop();
    manager().dump(std::cout);
    return 0;
}

TEST(InInitMgr, libraryStartsInTheOrderOfItsTable)
{
    expectOutput("libraryAlone", dumpOfRunning() + "No packages waiting to be initialize.\nNo packages saved.\n");
}

VN_CHILD(clientOrder)
{
    NumberedPackage<1> early("aaa", {Vn::InInit<VnInit::initialize>::getType()});
    NumberedPackage<2> lower("b", {Vn::InInit<VnInit::base>::getType()});
    NumberedPackage<3> upper("Z", {Vn::InInit<VnInit::base>::getType()});
    NumberedPackage<4> last("A", {NumberedPackage<2>::getType()});
    start();
    std::ostringstream text;
    text << manager();
    std::string line;
    std::istringstream lines(text.str());
    for (int i = 0; std::getline(lines, line); ++i)
        if (i == 1 || i == 2 || i == 3 || i == 4 || i >= 15)
            std::cout << line << "\n";
    stop();
    return 0;
}

TEST(InInitMgr, fewerNeedsComeFirstAndTiesGoByBytesOfTheName)
{
    expectOutput("clientOrder", "start aaa\nstart Z\nstart b\nstart A\n"
                                "17 packages currently saved:\n"
                                "\t'initialize' Initialized (0 dependencies)\n"
                                "\t'aaa' Initialized (1 dependencies)\n"
                                "\t'heapMgr' Initialized (1 dependencies)\n"
                                "\t'base' Initialized (12 dependencies)\n"
                                "\t'Z' Initialized (13 dependencies)\n"
                                "\t'b' Initialized (13 dependencies)\n"
                                "\t'A' Initialized (14 dependencies)\n"
                                "stop A\nstop b\nstop Z\nstop aaa\n");
}

VN_CHILD(stopOrder)
{
    NumberedPackage<1> one("one");
    NumberedPackage<2> two("two", {NumberedPackage<1>::getType()});
    NumberedPackage<3> three("three", {NumberedPackage<2>::getType()});
    const auto flags = [&] {
        std::cout << one.isInitialized << two.isInitialized << three.isInitialized << manager().isInitializing()
                  << manager().isFinalizing() << "\n";
    };
    two.onStart = flags;
    two.onStop = flags;
    flags();
    start();
    flags();
    stop();
    flags();
    return 0;
}

TEST(InInitMgr, stopsInTheReverseOrderAndTellsWhatItDoes)
{
    expectOutput("stopOrder", "00000\n"
                              "start one\nstart two\n10010\nstart three\n"
                              "11100\n"
                              "stop three\nstop two\n10001\nstop one\n"
                              "00000\n");
}

VN_CHILD(sameTypeTwice)
{
    NumberedPackage<1> first("first");
    NumberedPackage<1> second("second");
    NumberedPackage<2> needing("z", {NumberedPackage<1>::getType()});
    start();
    const bool isEither = first.isInitialized != second.isInitialized;
    std::cout << isEither << "\n";
    return 0;
}

TEST(InInitMgr, twoObjectsOfOneTypeAreOnePackage)
{
    const ChildRun run = Child("sameTypeTwice").run();
    const bool isFirst = run.out == "start first\nstart z\n1\n";
    const bool isSecond = run.out == "start second\nstart z\n1\n";
    EXPECT_TRUE(isFirst || isSecond) << run.out;
}

VN_CHILD(listedTwice)
{
    NumberedPackage<1> needed("m");
    NumberedPackage<2> twice("a", {NumberedPackage<1>::getType(), NumberedPackage<1>::getType()});
    NumberedPackage<3> once("z", {NumberedPackage<1>::getType()});
    start();
    return 0;
}

TEST(InInitMgr, dependencyListedTwiceCountsTwice)
{
    expectOutput("listedTwice", "start m\nstart z\nstart a\n");
}

VN_CHILD(longNames)
{
    NumberedPackage<1> fits(std::string(127, 'a').c_str());
    NumberedPackage<2> cut(std::string(128, 'b').c_str());
    NumberedPackage<3> null(nullptr);
    std::cout << std::string(fits.getName()).size() << " " << std::string(cut.getName()).size() << " '"
              << null.getName() << "'\n";
    return 0;
}

TEST(InPackageInit, nameIsCutTo127CharactersAndNullIsEmpty)
{
    expectOutput("longNames", "127 127 ''\n");
}

// ---- cycles and missing packages

VN_CHILD(cycleOfTwo)
{
    NumberedPackage<1> a("A", {NumberedPackage<2>::getType()});
    NumberedPackage<2> b("B", {NumberedPackage<1>::getType()});
    report("start", start);
    manager().dump(std::cout);
    manager().reportCycles(std::cout);
    std::cout << manager().isInitializing() << "\n";
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, ringOfTwoIsACycleAndNothingStarts)
{
    const std::string report = "'A' is in a cycle with:\n\t'B'\n";
    expectOutput("cycleOfTwo", "start: Init dependencies contain cycle(s)\n"
                               "No packages waiting to be initialize.\nNo packages saved.\n"
                               "Dependency cycle(s) detected...\n" +
                                   report + report + "0\nstop: ok\n");
}

VN_CHILD(cycleOfThree)
{
    NumberedPackage<1> a("A", {NumberedPackage<2>::getType()});
    NumberedPackage<2> b("B", {NumberedPackage<3>::getType()});
    NumberedPackage<3> c("C", {NumberedPackage<1>::getType()});
    NumberedPackage<4> d("D", {NumberedPackage<1>::getType()});
    report("start", start);
    manager().reportCycles(std::cout);
    return 0;
}

TEST(InInitMgr, ringOfThreeIsReportedWithoutThoseThatOnlyNeedIt)
{
    expectOutput("cycleOfThree",
                 "start: Init dependencies contain cycle(s)\n'A' is in a cycle with:\n\t'B'\n\t'C'\n");
}

VN_CHILD(twoCycles)
{
    NumberedPackage<1> a("A", {NumberedPackage<3>::getType()});
    NumberedPackage<2> b("B", {NumberedPackage<4>::getType()});
    NumberedPackage<3> c("C", {NumberedPackage<1>::getType()});
    NumberedPackage<4> d("D", {NumberedPackage<2>::getType()});
    report("start", start);
    manager().reportCycles(std::cout);
    return 0;
}

TEST(InInitMgr, ringsApartAreReportedApart)
{
    expectOutput("twoCycles", "start: Init dependencies contain cycle(s)\n"
                              "'A' is in a cycle with:\n\t'C'\n'B' is in a cycle with:\n\t'D'\n");
}

VN_CHILD(selfDependency)
{
    NumberedPackage<1> a("a", {NumberedPackage<1>::getType()});
    NumberedPackage<2> b("b", {});
    report("start", start);
    manager().reportCycles(std::cout);
    return 0;
}

TEST(InInitMgr, packageThatListsItselfStartsWithOneDependencyMore)
{
    expectOutput("selfDependency", "start b\nstart a\nstart: ok\nNo dependency cycles to report.\n");
}

VN_CHILD(ringOfSelfListed)
{
    NumberedPackage<1> a("a", {NumberedPackage<1>::getType(), NumberedPackage<2>::getType()});
    NumberedPackage<2> b("b", {NumberedPackage<1>::getType(), NumberedPackage<2>::getType()});
    report("start", start);
    manager().reportCycles(std::cout);
    return 0;
}

TEST(InInitMgr, ringWhoseMembersAllListThemselvesStarts)
{
    expectOutput("ringOfSelfListed", "start a\nstart b\nstart: ok\nNo dependency cycles to report.\n");
}

VN_CHILD(cycleMembersDestroyed)
{
    auto a = std::make_unique<NumberedPackage<1>>("A", std::vector{NumberedPackage<2>::getType()});
    auto b = std::make_unique<NumberedPackage<2>>("B", std::vector{NumberedPackage<3>::getType()});
    NumberedPackage<3> c("C", {NumberedPackage<1>::getType()});
    report("start", start);
    a.reset();
    manager().reportCycles(std::cout);
    b.reset();
    manager().reportCycles(std::cout);
    return 0;
}

TEST(InInitMgr, destroyedMembersLeaveTheReportOfTheirCycle)
{
    expectOutput("cycleMembersDestroyed", "start: Init dependencies contain cycle(s)\n"
                                          "'B' is in a cycle with:\n\t'C'\n'C' is in a cycle with:\n");
}

VN_CHILD(notRegistered)
{
    class Nobody
    {};
    NumberedPackage<1> a("a", {&typeid(Nobody)});
    try {
        start();
    } catch (Vn::InEx::ExPackageNotRegistered const& failure) {
        std::cout << (std::string(failure.what()) ==
                      std::string("Init Package not registered: '") + typeid(Nobody).name() + "'.")
                  << failure.getFileName() << "\n";
    }
    manager().dump(std::cout);
    report("again", start);
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, dependencyThatNobodyRegisteredIsNamedAndNothingStarts)
{
    expectOutput("notRegistered", "1src/base/ininitmgr\nNo packages waiting to be initialize.\nNo packages saved.\n"
                                  "again: ok\nstop: ok\n");
}

VN_CHILD(afterACycle)
{
    {
        NumberedPackage<1> a("A", {NumberedPackage<2>::getType()});
        NumberedPackage<2> b("B", {NumberedPackage<1>::getType()});
        report("start", start);
    }
    std::optional<NumberedPackage<3>> fresh;
    {
        Vn::InReinitGuard guard;
        fresh.emplace("fresh");
    }
    manager().dump(std::cout);
    stop();
    return 0;
}

TEST(InInitMgr, goesOnAfterACycleWithWhatIsRegisteredLater)
{
    expectOutput("afterACycle", "start: Init dependencies contain cycle(s)\nstart fresh\n"
                                "No packages waiting to be initialize.\n1 packages currently saved:\n"
                                "\t'fresh' Initialized (0 dependencies)\nstop fresh\n");
}

VN_CHILD(noCycle)
{
    manager().reportCycles(std::cout);
    NumberedPackage<1> waiting("w");
    std::ostringstream text;
    manager().dump(text);
    std::cout << text.str().substr(0, 43) << "|" << text.str().substr(text.str().find("\t'w'"));
    return 0;
}

TEST(InInitMgr, tellsBeforeTheStartWhatWaits)
{
    expectOutput("noCycle", "No dependency cycles to report.\n14 packages waiting to be initialize:\n\t'bas|"
                            "\t'w' Not initialized\nNo packages saved.\n");
}

// ---- hooks that fail

VN_CHILD(failingHook)
{
    NumberedPackage<1> one("1");
    NumberedPackage<2> two("2", {NumberedPackage<1>::getType()});
    NumberedPackage<3> three("3", {NumberedPackage<2>::getType()});
    two.onStart = [] { throw Vn::InEx::ExPackageInitError("src/base/x", 1, "2"); };
    report("start", start);
    std::cout << manager().isInitializing() << two.isInitialized << "\n";
    std::ostringstream text;
    manager().dump(text);
    std::cout << text.str().substr(text.str().find("\t'1'")).substr(0, 34) << "...\n"
              << text.str().substr(text.str().find("\t'2'")).substr(0, 21) << "...\n"
              << text.str().substr(text.str().find("\t'3'")).substr(0, 21);
    report("again", start);
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, failingStartLeavesWhatRunsToBeStoppedAndSkipsTheRest)
{
    expectOutput("failingHook", "start 1\nstart 2\nstart: Init error in package: '2'.\n00\n"
                                "\t'1' Initialized (0 dependencies)\n...\n"
                                "\t'2' Not initialized\n...\n\t'3' Not initialized\n"
                                "again: ok\nstop 1\nstop: ok\n");
}

VN_CHILD(foreignException)
{
    NumberedPackage<1> one("1");
    NumberedPackage<2> two("2", {NumberedPackage<1>::getType()});
    two.onStart = [] { throw 42; };
    try {
        start();
    } catch (int thrown) {
        std::cout << "caught " << thrown << manager().isInitializing() << "\n";
    }
    stop();
    return 0;
}

TEST(InInitMgr, foreignExceptionOfAHookGoesThroughUnchanged)
{
    expectOutput("foreignException", "start 1\nstart 2\ncaught 420\nstop 1\n");
}

VN_CHILD(failingStop)
{
    NumberedPackage<1> one("1");
    NumberedPackage<2> two("2", {NumberedPackage<1>::getType()});
    NumberedPackage<3> three("3", {NumberedPackage<2>::getType()});
    start();
    two.onStop = [] { throw std::runtime_error("no"); };
    report("stop", stop);
    std::cout << manager().isFinalizing() << "\n";
    two.onStop = nullptr;
    report("stop again", stop);
    report("and again", stop);
    return 0;
}

TEST(InInitMgr, failingStopLeavesTheRestRunningAndCanBeRepeated)
{
    expectOutput("failingStop", "start 1\nstart 2\nstart 3\nstop 3\nstop 2\nstop: something else\n0\n"
                                "stop 3\nstop 2\nstop 1\nstop again: ok\n"
                                "and again: Multiple calls to finalize().\n");
}

VN_CHILD(stopWithinStop)
{
    NumberedPackage<1> one("1");
    one.onStop = [] { report("inner", stop); };
    start();
    report("outer", stop);
    return 0;
}

TEST(InInitMgr, stopFromWithinAStopIsRefused)
{
    expectOutput("stopWithinStop", "start 1\nstop 1\ninner: Multiple calls to finalize().\nouter: ok\n");
}

// ---- arguments

VN_CHILD(arguments)
{
    std::vector<char const*> given{"prog", "-x", "", "file"};
    int count = 4;
    char const* const* vector = given.data();
    manager().initialize(count, vector);
    std::cout << count << (vector == nullptr) << "\n";
    for (char const* argument : Vn::InContextAliasMgrBase::getUnboundArgs())
        std::cout << "'" << argument << "' " << (argument != given[0]) << "\n";
    std::cout << Vn::InContextAliasMgrBase::getApplicationName() << "\n";
    stop();
    std::cout << Vn::InContextAliasMgrBase::getUnboundArgs().size() << "'"
              << Vn::InContextAliasMgrBase::getApplicationName() << "'\n";
    return 0;
}

TEST(InInitMgr, takesTheArgumentsOver)
{
    expectOutput("arguments", "01\n'prog' 1\n'-x' 1\n'' 1\n'file' 1\nprog\n0''\n");
}

VN_CHILD(badArguments)
{
    int count = -4;
    char const* const* vector = nullptr;
    report("negative count", [&] { manager().initialize(count, vector); });
    std::cout << count << Vn::InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    count = 2;
    report("null vector", [&] { manager().initialize(count, vector); });
    std::cout << count << "\n";
    report("null element", [] { startWith({"prog", nullptr}); });
    for (char const* argument : Vn::InContextAliasMgrBase::getUnboundArgs())
        std::cout << "'" << argument << "'\n";
    stop();
    return 0;
}

TEST(InInitMgr, badArgumentVectorsAreBounded)
{
    expectOutput("badArguments", "negative count: ok\n00\nnull vector: Assertion 'argv != 0' failed.\n2\n"
                                 "null element: ok\n'prog'\n''\n");
}

// ---- the table of situations

VN_CHILD(initializeTwice)
{
    NumberedPackage<1> one("1");
    startWith({"prog", "a"});
    report("second", [] { startWith({"b", "c"}); });
    for (char const* argument : Vn::InContextAliasMgrBase::getUnboundArgs())
        std::cout << argument << " ";
    std::cout << "\n";
    stop();
    report("after the end", [] { startWith({"d"}); });
    std::cout << Vn::InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    report("stop", stop);
    std::cout << Vn::InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    return 0;
}

TEST(InInitMgr, secondInitializeAddsArgumentsAndStartsNothingAgain)
{
    expectOutput("initializeTwice", "start 1\nsecond: ok\nprog a b c \nstop 1\nafter the end: ok\n1\n"
                                    "stop: Multiple calls to finalize().\n0\n");
}

VN_CHILD(registeredLate)
{
    start();
    report("without a guard", [] { NumberedPackage<1> late("late"); });
    stop();
    report("after the end", [] { NumberedPackage<1> late("late"); });
    return 0;
}

TEST(InInitMgr, latePackageNeedsAGuard)
{
    expectOutput("registeredLate", "without a guard: Reinitialize without using the reinitialize guard.\n"
                                   "after the end: Reinitialize without using the reinitialize guard.\n");
}

VN_CHILD(registeredUnderAGuard)
{
    start();
    std::optional<NumberedPackage<1>> late;
    {
        Vn::InReinitGuard guard;
        late.emplace("late", std::vector{Vn::InInit<VnInit::base>::getType()});
        std::cout << late->getDependencies().size() << "\nend of guard\n";
    }
    std::ostringstream text;
    manager().dump(text);
    std::cout << text.str().substr(text.str().find("\t'late'"));
    stop();
    return 0;
}

TEST(InInitMgr, latePackageStartsWhenItsGuardEndsAndWhatRunsIsNoDependency)
{
    expectOutput("registeredUnderAGuard",
                 "0\nend of guard\nstart late\n\t'late' Initialized (0 dependencies)\nstop late\n");
}

VN_CHILD(registeredInAHook)
{
    std::optional<NumberedPackage<2>> second;
    NumberedPackage<1> first("first");
    first.onStart = [&] {
        second.emplace("second", std::vector{NumberedPackage<1>::getType()});
        std::cout << second->getDependencies().size() << "\n";
    };
    {
        Vn::InReinitGuard guard;
        report("start", start);
        std::cout << "end of guard\n";
    }
    stop();
    return 0;
}

TEST(InInitMgr, packageThatAHookRegistersWaitsForItsRegistrarAndFails)
{
    // The registrar isn't marked while its hook runs, so it becomes a dependency outside the second's batch.
    const ChildRun run = Child("registeredInAHook").without("VN_DEBUG_INITIALIZE").run();
    EXPECT_EQ(run.out, std::string("start first\n1\nstart: Init Package not registered: '") +
                           NumberedPackage<1>::getType()->name() + "'.\nend of guard\nstop first\n");
}

VN_CHILD(registeredInAHookAlone)
{
    std::optional<NumberedPackage<2>> second;
    NumberedPackage<1> first("first");
    first.onStart = [&] { second.emplace("second"); };
    {
        Vn::InReinitGuard guard;
        report("start", start);
        std::cout << "end of guard\n";
    }
    stop();
    return 0;
}

TEST(InInitMgr, packageThatAHookRegistersUnderAGuardStartsInTheRunningLoop)
{
    expectOutput("registeredInAHookAlone",
                 "start first\nstart second\nstart: ok\nend of guard\nstop second\nstop first\n");
}

VN_CHILD(registeredAfterTheEnd)
{
    start();
    stop();
    std::optional<NumberedPackage<1>> late;
    report("guard", [&] {
        Vn::InReinitGuard guard;
        late.emplace("late", std::vector{Vn::InInit<VnInit::initialize>::getType()});
    });
    return 0;
}

TEST(InInitMgr, afterTheEndDependenciesMustBeRegisteredAnew)
{
    expectOutput("registeredAfterTheEnd", std::string("guard: Init Package not registered: '") +
                                              Vn::InInit<VnInit::initialize>::getType()->name() + "'.\n");
}

VN_CHILD(stopWithinAStart)
{
    const std::vector<std::type_info const*> all = {Vn::InInit<VnInit::base>::getType()};
    NumberedPackage<1> before("a", all);
    NumberedPackage<2> later("c", all);
    NumberedPackage<3> needing("d", {NumberedPackage<2>::getType()});
    later.onStart = [] { report("stop within", stop); };
    report("start", start);
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, aStopWithinAStartStopsWhatRunsAndTheRestStartsForGood)
{
    expectOutput("stopWithinAStart", "start a\nstart c\nstop a\nstop within: ok\nstart d\nstart: ok\n"
                                     "stop: Multiple calls to finalize().\n");
}

VN_CHILD(startWithinAStop)
{
    NumberedPackage<1> running("running");
    std::optional<NumberedPackage<2>> late;
    running.onStop = [&late] {
        const Vn::InReinitGuard guard;
        late.emplace("late");
    };
    start();
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, aPackageThatAStopRegistersUnderAGuardStartsAndIsNotStopped)
{
    expectOutput("startWithinAStop", "start running\nstop running\nstart late\nstop: ok\n");
}

VN_CHILD(typeOfAFailedPackageAgain)
{
    NumberedPackage<1> failing("failing");
    failing.onStart = [] { throw Vn::ExInternalError("src/base/x", 1, "no"); };
    report("start", start);
    std::optional<NumberedPackage<1>> again;
    std::optional<NumberedPackage<2>> other;
    {
        const Vn::InReinitGuard guard;
        again.emplace("again");
        other.emplace("other");
    }
    {
        const Vn::InReinitGuard guard;
        NumberedPackage<3> needing("needing", {NumberedPackage<1>::getType(), NumberedPackage<2>::getType()});
        std::cout << needing.getDependencies().size() << "\n";
    }
    stop();
    return 0;
}

TEST(InInitMgr, aTypeWhoseStartHasFailedKeepsItsPlaceWhenAnotherObjectOfItStarts)
{
    // Its place is that of the first object, which is what the stop calls.
    expectOutput("typeOfAFailedPackageAgain",
                 "start failing\nstart: no\nstart again\nstart other\n0\nstop other\nstop failing\n");
}

VN_CHILD(typeStartedAgainAfterTheEnd)
{
    NumberedPackage<1> first("first");
    start();
    stop();
    std::optional<NumberedPackage<1>> again, third;
    {
        Vn::InReinitGuard guard;
        again.emplace("again");
    }
    {
        Vn::InReinitGuard guard;
        third.emplace("third");
    }
    again.reset();
    {
        Vn::InReinitGuard guard;
        NumberedPackage<2> needing("needing", {NumberedPackage<1>::getType()});
        std::cout << needing.getDependencies().size() << "\n";
    }
    return 0;
}

TEST(InInitMgr, afterTheEndATypeStartsOnceMoreAndThenRuns)
{
    expectOutput("typeStartedAgainAfterTheEnd", "start first\nstop first\nstart again\n1\n");
}

VN_CHILD(finalizeFirst)
{
    Vn::InVariableBase::overrideViaHandle("handle", "text", "description");
    report("stop", stop);
    std::cout << Vn::InVariableBase::isOverridden("handle") << "\n";
    report("start", start);
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, stopBeforeTheStartIsRefusedAfterOverridesWereCleared)
{
    expectOutput("finalizeFirst", "stop: Call to finalize() before initialize().\n0\nstart: ok\nstop: ok\n");
}

VN_CHILD(finalizeTwice)
{
    startWith({"prog"});
    report("stop", stop);
    report("stop", stop);
    report("start", [] { startWith({"prog"}); });
    std::cout << Vn::InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    report("stop", stop);
    std::cout << Vn::InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    return 0;
}

TEST(InInitMgr, secondStopIsRefusedForEverAfterArgumentsWereFreed)
{
    expectOutput("finalizeTwice", "stop: ok\nstop: Multiple calls to finalize().\nstart: ok\n1\n"
                                  "stop: Multiple calls to finalize().\n0\n");
}

// ---- batches

VN_CHILD(failedPackageIsNoDependency)
{
    NumberedPackage<1> failing("failing");
    failing.onStart = [] { throw Vn::ExInternalError("src/base/x", 1, "no"); };
    report("start", start);
    std::optional<NumberedPackage<2>> needing;
    report("guard", [&] {
        Vn::InReinitGuard guard;
        needing.emplace("needing", std::vector{NumberedPackage<1>::getType()});
        std::cout << needing->getDependencies().size() << "\n";
    });
    return 0;
}

TEST(InInitMgr, packageWhoseStartFailedSatisfiesNobody)
{
    expectOutput("failedPackageIsNoDependency",
                 std::string("start failing\nstart: no\n1\nguard: Init Package not registered: '") +
                     NumberedPackage<1>::getType()->name() + "'.\n");
}

VN_CHILD(runningPackageRegisteredAgain)
{
    NumberedPackage<1> first("first");
    start();
    {
        Vn::InReinitGuard guard;
        NumberedPackage<1> again("again");
        std::ostringstream text;
        manager().dump(text);
        std::cout << text.str().substr(0, 38);
    }
    return 0;
}

TEST(InInitMgr, runningPackageDoesNotWaitAgain)
{
    expectOutput("runningPackageRegisteredAgain", "start first\nNo packages waiting to be initialize.\n");
}

VN_CHILD(destroyedPackages)
{
    auto waiting = std::make_unique<NumberedPackage<1>>("waiting");
    waiting.reset();
    auto running = std::make_unique<NumberedPackage<2>>("running");
    NumberedPackage<3> other("other");
    start();
    running.reset();
    std::ostringstream text;
    manager().dump(text);
    std::cout << (text.str().find("running") == std::string::npos) << "\n";
    std::optional<NumberedPackage<2>> anew;
    {
        Vn::InReinitGuard guard;
        anew.emplace("anew");
    }
    stop();
    return 0;
}

TEST(InInitMgr, destroyedPackageLeavesTheLists)
{
    expectOutput("destroyedPackages", "start other\nstart running\n1\nstart anew\nstop anew\nstop other\n");
}

VN_CHILD(addressUsedAgain)
{
    // What a library that is unloaded and another one loaded in its place do to a type's address.
    class Info : public std::type_info
    {
    public:
        explicit Info(char const* name) : std::type_info(name) {}
    };
    NumberedPackage<1> running("running");
    start();
    std::optional<Info> info(std::in_place, NumberedPackage<1>::getType()->name());
    std::type_info const* const address = &*info;
    Vn::InReinitGuard guard;
    {
        NumberedPackage<2> first("first", {address});
        std::cout << first.getDependencies().size() << "\n";
    }
    info.emplace("8NotThere");
    NumberedPackage<3> second("second", {address});
    std::cout << (&*info == address) << second.getDependencies().size() << "\n";
    stop();
    return 0;
}

TEST(InInitMgr, typeAtAnAddressThatWasUsedBeforeIsAnotherType)
{
    expectOutput("addressUsedAgain", "start running\n0\n11\nstop running\n");
}

VN_CHILD(destroyedDuringTheStop)
{
    std::unique_ptr<NumberedPackage<2>> later;
    auto earlier = std::make_unique<NumberedPackage<3>>("a");
    NumberedPackage<1> one("b");
    NumberedPackage<4> four("c");
    start();
    {
        Vn::InReinitGuard guard;
        later = std::make_unique<NumberedPackage<2>>("d");
    }
    four.onStop = [&] {
        later.reset();
        earlier.reset();
    };
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, packagesDestroyedByAStopAreNeitherStoppedNorTouched)
{
    expectOutput("destroyedDuringTheStop",
                 "start a\nstart b\nstart c\nstart d\nstop d\nstop c\nstop b\nstop: ok\n");
}

VN_CHILD(nextDestroyedDuringTheStop)
{
    NumberedPackage<1> one("a");
    auto next = std::make_unique<NumberedPackage<2>>("b");
    auto afterNext = std::make_unique<NumberedPackage<3>>("c");
    NumberedPackage<4> four("d");
    NumberedPackage<5> five("e");
    start();
    five.onStop = [&] { next.reset(); };
    four.onStop = [&] { afterNext.reset(); };
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, thePackageThatIsNextToStopMayBeDestroyedByTheOneBefore)
{
    expectOutput("nextDestroyedDuringTheStop",
                 "start a\nstart b\nstart c\nstart d\nstart e\nstop e\nstop d\nstop a\nstop: ok\n");
}

VN_CHILD(destroyedDuringTheStart)
{
    auto victim = std::make_unique<NumberedPackage<2>>("b");
    NumberedPackage<1> one("a");
    NumberedPackage<3> three("c");
    one.onStart = [&] { victim.reset(); };
    report("start", start);
    stop();
    return 0;
}

TEST(InInitMgr, packageDestroyedByAStartIsPassedOver)
{
    expectOutput("destroyedDuringTheStart", "start a\nstart c\nstart: ok\nstop c\nstop a\n");
}

VN_CHILD(guardWithinAHook)
{
    std::optional<NumberedPackage<3>> inner;
    NumberedPackage<1> one("a");
    NumberedPackage<2> two("b");
    one.onStart = [&] {
        Vn::InReinitGuard guard;
        inner.emplace("inner");
    };
    report("start", start);
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, guardEndedWithinAHookStaysInBounds)
{
    // The inner loop replaces the batch; the outer one finds it at its end, so "b" isn't started.
    expectOutput("guardWithinAHook", "start a\nstart inner\nstart: ok\nstop inner\nstop a\nstop: ok\n");
}

VN_CHILD(failingGuardWithinAHook)
{
    std::vector<std::unique_ptr<Vn::InPackageInit>> inner;
    NumberedPackage<1> one("a");
    NumberedPackage<2> two("b");
    one.onStart = [&] {
        report("guard", [&] {
            Vn::InReinitGuard guard;
            auto failing = std::make_unique<NumberedPackage<3>>("c");
            failing->onStart = [] { throw std::runtime_error("no"); };
            inner.push_back(std::move(failing));
            inner.push_back(std::make_unique<NumberedPackage<4>>("d"));
            inner.push_back(std::make_unique<NumberedPackage<5>>("e"));
        });
    };
    report("start", start);
    report("stop", stop);
    return 0;
}

TEST(InInitMgr, outerBatchDoesNotGoOnWithAnInnerOneThatFailed)
{
    expectOutput("failingGuardWithinAHook",
                 "start a\nstart c\nguard: something else\nstart: ok\nstop a\nstop: ok\n");
}

VN_CHILD(nullDependency)
{
    NumberedPackage<1> one("a");
    report("null", [] { NumberedPackage<2> two("b", {nullptr}); });
    report("null variable",
           [&] { one.Vn::InPackageInit::addDependency(static_cast<Vn::InVariableBase*>(nullptr)); });
    one.removeDependency(nullptr);
    report("start", start);
    return 0;
}

TEST(InPackageInit, nullDependencyIsRefused)
{
    expectOutput("nullDependency", "null: Assertion 'type != 0' failed.\n"
                                   "null variable: Assertion 'variable != 0' failed.\nstart a\nstart: ok\n");
}

// ---- variables of a package

VN_CHILD(variablesOfAPackage)
{
    NumberedPackage<1> package("p", {Vn::InInit<VnInit::initialize>::getType()});
    const Vn::InContextAlias<Vn::InInitDef, 0> alias("5", "default");
    Vn::InVariable<int> variable("v", package, alias);
    package.onStart = [&] { std::cout << variable.isValid() << variable.getValue() << "\n"; };
    package.onStop = [&] { std::cout << variable.isValid() << variable.getValue() << "\n"; };
    std::cout << variable.isValid() << "\n";
    start();
    stop();
    std::cout << variable.isValid() << "\n";
    return 0;
}

TEST(InPackageInit, variablesLiveAroundBothHooks)
{
    const ChildRun run = Child("variablesOfAPackage").without("VN_DEBUG_INITIALIZE").run();
    // The sources of the variable are taken away after the package, at the stop of `initialize`.
    EXPECT_EQ(run.out, "0\nstart p\n15\nstop p\n15\n0\n");
}

VN_CHILD(variableOrder)
{
    NumberedPackage<1> package("p", {Vn::InInit<VnInit::initialize>::getType()});
    const Vn::InContextAlias<Vn::InInitDef, 0> alias("5", "default");
    auto first = std::make_unique<Vn::InVariable<int>>("first", package, alias);
    Vn::InVariable<int> second("second", package, alias);
    Vn::InVariable<int> third("third", package, alias);
    first.reset();
    package.onStart = [] { std::cerr << "hook\n"; };
    start();
    return 0;
}

TEST(InPackageInit, variablesAreInitialisedInOrderBeforeTheHookAndDestroyedOnesNot)
{
    const ChildRun run = Child("variableOrder").with("VN_DEBUG_INITIALIZE", "1").run();
    const std::size_t second = run.err.find("Initializing variable  : second");
    const std::size_t third = run.err.find("Initializing variable  : third");
    const std::size_t hook = run.err.find("hook\n");
    EXPECT_EQ(run.err.find("Initializing variable  : first"), std::string::npos);
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(second, third);
    EXPECT_LT(third, hook);
    EXPECT_NE(hook, std::string::npos);
}

// ---- departures

namespace
{
/// One type for each number; tells nothing but, at its stop, its name.
template <int number>
class QuietPackage : public Vn::InPackageInit
{
public:
    explicit QuietPackage(char const* name) : InPackageInit(name) { registerPackage(); }
    void performFinalize() override { std::cout << getName() << " "; }

    static std::unique_ptr<Vn::InPackageInit> make(char const* name)
    {
        return std::make_unique<QuietPackage>(name);
    }
};

constexpr int quietCount = 40;

template <int... numbers>
std::unique_ptr<Vn::InPackageInit> makeQuiet(int number, char const* name, std::integer_sequence<int, numbers...>)
{
    static constexpr std::unique_ptr<Vn::InPackageInit> (*makers[])(char const*) = {QuietPackage<numbers>::make...};
    return makers[number](name);
}

/// Packages that come and go, beside plain lists of their names.
class ComersAndGoers
{
public:
    ComersAndGoers()
    {
        for (int i = 0; i < quietCount; ++i)
            _names.push_back(std::string("q") + static_cast<char>('A' + i));
        _packages.resize(quietCount);
    }

    void comeIn(int number)
    {
        char const* const name = _names[static_cast<std::size_t>(number)].c_str();
        _packages[static_cast<std::size_t>(number)] =
            makeQuiet(number, name, std::make_integer_sequence<int, quietCount>());
        _waiting.push_back(name);
        check();
    }

    void go(int number)
    {
        std::string const& name = _names[static_cast<std::size_t>(number)];
        _packages[static_cast<std::size_t>(number)].reset();
        std::erase(_waiting, name);
        std::erase(_running, name);
        check();
    }

    /// To be called when they have been started: those without needs start by their names.
    void haveStarted()
    {
        std::sort(_waiting.begin(), _waiting.end());
        _running.insert(_running.end(), _waiting.begin(), _waiting.end());
        _waiting.clear();
        check();
    }

    bool isHere(int number) const { return _packages[static_cast<std::size_t>(number)] != nullptr; }
    std::vector<std::string> const& getRunning() const { return _running; }

private:
    void check() const
    {
        std::ostringstream text;
        manager().dump(text);
        std::istringstream lines(text.str());
        std::vector<std::string> waiting, running;
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("\t'q") && line.size() > 4)
                (line.ends_with("Not initialized") ? waiting : running).push_back(line.substr(2, 2));
        if (waiting != _waiting || running != _running)
            std::cout << "differs:\n" << text.str();
    }

    std::vector<std::string> _names;
    std::vector<std::unique_ptr<Vn::InPackageInit>> _packages;
    std::vector<std::string> _waiting;  ///< in the order of registration
    std::vector<std::string> _running;  ///< in the order of their start
};
}  // namespace

VN_CHILD(comersAndGoers)
{
    std::mt19937 random(1);
    ComersAndGoers packages;
    const auto move = [&packages, &random] {
        const int number = static_cast<int>(random() % quietCount);
        if (packages.isHere(number))
            packages.go(number);
        else
            packages.comeIn(number);
    };
    for (int i = 0; i < 1000; ++i)
        move();
    start();
    packages.haveStarted();
    for (int round = 0; round < 50; ++round) {
        {
            const Vn::InReinitGuard guard;
            for (int i = 0; i < 30; ++i)
                move();
        }
        packages.haveStarted();
    }
    stop();
    std::cout << "\n";
    for (std::size_t i = packages.getRunning().size(); i > 0; --i)
        std::cout << packages.getRunning()[i - 1] << " ";
    std::cout << "\n";
    return 0;
}

TEST(InInitMgr, packagesComeAndGoInAnyOrderAndTheOthersKeepTheirs)
{
    const ChildRun run = Child("comersAndGoers").without("VN_DEBUG_INITIALIZE").run();
    const std::size_t middle = run.out.find('\n');
    ASSERT_NE(middle, std::string::npos);
    ASSERT_EQ(run.out.find("differs"), std::string::npos) << run.out;
    EXPECT_GT(middle, 30u);  // ten of them at least
    EXPECT_EQ(run.out.substr(0, middle + 1), run.out.substr(middle + 1));
}

namespace
{
/// Registers as often as it likes.
class EagerPackage : public Vn::InPackageInit
{
public:
    EagerPackage() : InPackageInit("eager") { registerPackage(); }
    using InPackageInit::registerPackage;

    void performInitialize() override
    {
        std::cout << "start eager\n";
        if (isFailing)
            throw Vn::InEx::ExPackageInitError("test", 1, "eager");
    }
    void performFinalize() override { std::cout << "stop eager\n"; }

    bool isFailing = false;
};

int timesListed(char const* name)
{
    std::ostringstream text;
    manager().dump(text);
    int times = 0;
    for (std::size_t at = 0; (at = text.str().find(name, at)) != std::string::npos; ++at)
        ++times;
    return times;
}
}  // namespace

VN_CHILD(registeredOften)
{
    {
        EagerPackage package;
        NumberedPackage<1> other("other");
        package.registerPackage();
        package.registerPackage();
        std::cout << timesListed("eager") << "\n";
    }
    std::cout << timesListed("eager") << timesListed("other") << "\n";
    auto package = std::make_unique<EagerPackage>();
    package->registerPackage();
    package->isFailing = true;
    report("start", start);
    {
        const Vn::InReinitGuard guard;
        package->registerPackage();
        std::cout << timesListed("eager") << "\n";  // waits, and stands among those taken up
        package.reset();
        std::cout << timesListed("eager") << "\n";
    }
    stop();
    return 0;
}

TEST(InInitMgr, destroyedPackageLeavesTheListsWhereverItStands)
{
    expectOutput("registeredOften", "3\n00\nstart eager\nstart: Init error in package: 'eager'.\n2\n0\n");
}

VN_CHILD(failedAndWaiting)
{
    NumberedPackage<1> first("aa");
    auto package = std::make_unique<EagerPackage>();
    package->isFailing = true;
    report("start", start);
    std::optional<NumberedPackage<2>> other;
    const Vn::InReinitGuard guard;
    other.emplace("other");
    package->registerPackage();
    std::cout << timesListed("eager") << "\n";
    package.reset();
    std::cout << timesListed("eager") << timesListed("other") << "\n";
    return 0;
}

TEST(InInitMgr, aFailedPackageThatWaitsAgainLeavesBothLists)
{
    expectOutput("failedAndWaiting",
                 "start aa\nstart eager\nstart: Init error in package: 'eager'.\n2\n01\nstart other\n");
}

namespace
{
template <int number>
class FailingPackage : public Vn::InPackageInit
{
public:
    FailingPackage() : InPackageInit("failing") { registerPackage(); }
    void performInitialize() override { throw Vn::ExInternalError("src/base/x", 1, "no"); }
};

/// May be registered again.
template <int number>
class RepeatedPackage : public Vn::InPackageInit
{
public:
    RepeatedPackage(char const* name, std::type_info const* dependency) : InPackageInit(name)
    {
        registerPackage();
        addDependency(dependency);
    }
    using InPackageInit::registerPackage;
    void performInitialize() override {}
};
}  // namespace

VN_CHILD(cyclicAndWaiting)
{
    auto first = std::make_unique<RepeatedPackage<1>>("first", &typeid(RepeatedPackage<2>));
    auto second = std::make_unique<RepeatedPackage<2>>("second", &typeid(RepeatedPackage<1>));
    report("start", start);
    manager().reportCycles(std::cout);
    std::optional<NumberedPackage<1>> other;
    const Vn::InReinitGuard guard;
    other.emplace("other");
    first->registerPackage();
    second->registerPackage();
    second.reset();
    first.reset();
    manager().reportCycles(std::cout);
    return 0;
}

TEST(InInitMgr, membersOfACycleThatWaitAgainLeaveItsReportWhenTheyGo)
{
    expectOutput("cyclicAndWaiting", "start: Init dependencies contain cycle(s)\n'first' is in a cycle with:\n"
                                     "\t'second'\nstart other\n");
}

VN_CHILD(manyChangesWithinAStop)
{
    std::vector<std::unique_ptr<Vn::InPackageInit>> packages;
    const auto come = [&packages](int number) {
        packages[static_cast<std::size_t>(number)] =
            makeQuiet(number, std::to_string(100 + number).c_str(), std::make_integer_sequence<int, quietCount>());
    };
    packages.resize(quietCount);
    for (int i = 0; i < quietCount; ++i)
        come(i);
    NumberedPackage<1> last("the last to start");
    last.onStop = [&] {
        // Leaves the first one, and gaps behind it; the others start again and fill the list to its end.
        for (int i = 1; i < quietCount; ++i)
            packages[static_cast<std::size_t>(i)].reset();
        for (int i = 1; i < quietCount; ++i) {
            const Vn::InReinitGuard guard;
            come(i);
        }
    };
    start();
    stop();
    std::cout << "\n";
    return 0;
}

TEST(InInitMgr, aStopKeepsItsPlaceWhateverComesAndGoesMeanwhile)
{
    expectOutput("manyChangesWithinAStop", "start the last to start\nstop the last to start\n100 \n");
}

VN_CHILD(gapsAreClosed)
{
    ComersAndGoers packages;
    for (int i = 0; i < quietCount; ++i)
        packages.comeIn(i);
    start();
    packages.haveStarted();
    // All go but the first and the last one, which keeps the gaps from being at the end; then they return one by one.
    for (int i = 1; i < quietCount - 1; ++i)
        packages.go(i);
    for (int i = 1; i < quietCount - 1; ++i) {
        {
            const Vn::InReinitGuard guard;
            packages.comeIn(i);
        }
        packages.haveStarted();
    }
    // Where the others have stood are now packages that don't run.
    std::optional<FailingPackage<1>> first;
    std::optional<FailingPackage<2>> second;
    std::optional<FailingPackage<3>> third;
    report("first", [&] {
        Vn::InReinitGuard guard;
        first.emplace();
    });
    report("second", [&] {
        Vn::InReinitGuard guard;
        second.emplace();
    });
    report("third", [&] {
        Vn::InReinitGuard guard;
        third.emplace();
    });
    for (int i = 0; i < quietCount; i += 2)
        packages.go(i);
    {
        const Vn::InReinitGuard guard;
        QuietPackage<1> running("another object of a type that runs");
        std::cout << timesListed("another object");
    }
    std::cout << "\n";
    stop();
    std::cout << "\n";
    for (std::size_t i = packages.getRunning().size(); i > 0; --i)
        std::cout << packages.getRunning()[i - 1] << " ";
    std::cout << "\n";
    return 0;
}

TEST(InInitMgr, whereMostHaveGoneTheOthersMoveUpAndAreKnownAsBefore)
{
    const ChildRun run = Child("gapsAreClosed").without("VN_DEBUG_INITIALIZE").run();
    ASSERT_EQ(run.out.find("differs"), std::string::npos) << run.out;
    const std::string before = "first: no\nsecond: no\nthird: no\n0\n";
    ASSERT_TRUE(run.out.starts_with(before)) << run.out;
    const std::string order = run.out.substr(before.size());
    const std::size_t middle = order.find('\n');
    ASSERT_NE(middle, std::string::npos);
    EXPECT_EQ(middle, 3u * quietCount / 2);
    EXPECT_EQ(order.substr(0, middle + 1), order.substr(middle + 1));
}

VN_CHILD(variablesComeAndGo)
{
    const auto needs = {Vn::InInit<VnInit::initialize>::getType()};
    NumberedPackage<1> owner("owner", needs);
    NumberedPackage<2> other("zother", needs);
    const Vn::InContextAlias<Vn::InInitDef, 0> alias("5", "default");
    std::map<char, std::unique_ptr<Vn::InVariable<int>>> variables;
    for (char name : {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}) {
        const std::string handle = std::string("v") + name;
        variables[name] = std::make_unique<Vn::InVariable<int>>(handle.c_str(), owner, alias);
    }
    for (char name : {'c', 'h', 'a', 'b', 'g', 'f'})
        variables.erase(name);
    for (char name : {'i', 'j'}) {
        const std::string handle = std::string("v") + name;
        variables[name] = std::make_unique<Vn::InVariable<int>>(handle.c_str(), owner, alias);
    }
    // d, e, i, j; by hand now, as nothing prevents it:
    if (argc > 1) {
        owner.addDependency(&*variables['e']);     // twice
        other.addDependency(&*variables['j']);     // of another package
        other.removeDependency(&*variables['d']);  // isn't there
        owner.removeDependency(&*variables['e']);  // the first one
        owner.removeDependency(nullptr);
        variables.erase('d');
    }
    start();
    other.removeDependency(&*variables['j']);
    return 0;
}

TEST(InPackageInit, variablesThatComeAndGoLeaveTheOthersInTheirOrder)
{
    const struct
    {
        std::vector<std::string> arguments;
        char const* order;
    } table[] = {{{}, "vd ve vi vj "}, {{"by hand"}, "vi vj ve vj "}};
    for (auto const& row : table) {
        const ChildRun run =
            Child("variablesComeAndGo").arguments(row.arguments).with("VN_DEBUG_INITIALIZE", "1").run();
        EXPECT_EQ(run.exitCode, 0);
        const std::string head = "Initializing variable  : v";
        std::string order;
        for (std::size_t at = 0; (at = run.err.find(head, at)) != std::string::npos; ++at)
            order += run.err.substr(at + head.size() - 1, 2) + " ";
        EXPECT_EQ(order, row.order);
    }
}

VN_CHILD(listingPackageGone)
{
    const auto needs = {Vn::InInit<VnInit::initialize>::getType()};
    NumberedPackage<1> owner("owner", needs);
    auto other = std::make_unique<NumberedPackage<2>>("zother", needs);
    const Vn::InContextAlias<Vn::InInitDef, 0> alias("5", "default");
    auto a = std::make_unique<Vn::InVariable<int>>("va", owner, alias);
    Vn::InVariable<int> b("vb", owner, alias);
    Vn::InVariable<int> c("vc", owner, alias);
    for (Vn::InVariableBase* variable :
         {static_cast<Vn::InVariableBase*>(&*a), static_cast<Vn::InVariableBase*>(&b),
          static_cast<Vn::InVariableBase*>(&c)})
        other->addDependency(variable);
    other->removeDependency(&b);
    other.reset();
    a.reset();
    Vn::InVariable<int> unlisted("vd", owner, alias);
    owner.removeDependency(&unlisted);
    owner.removeDependency(&unlisted);
    start();
    std::cout << b.getValue() << c.getValue() << unlisted.isValid() << owner.isInitialized << "\n";
    return 0;
}

TEST(InPackageInit, aPackageThatListsTheVariablesOfAnotherMayGoFirst)
{
    const ChildRun run = Child("listingPackageGone").without("VN_DEBUG_INITIALIZE").run();
    EXPECT_EQ(run.out, "start owner\n5501\n") << run.err;
    EXPECT_EQ(run.exitCode, 0);
}

namespace
{
/// Standard error that calls `action` once, within the output of the first line that names `what`.
class WatchedOutput : public std::stringbuf
{
public:
    WatchedOutput(std::string what, std::function<void()> action)
        : _what(std::move(what)), _action(std::move(action)), _before(std::cerr.rdbuf(this))
    {}
    ~WatchedOutput() override { std::cerr.rdbuf(_before); }

protected:
    int sync() override
    {
        if (_action && str().find(_what) != std::string::npos)
            std::exchange(_action, nullptr)();
        return 0;
    }

private:
    std::string _what;
    std::function<void()> _action;
    std::streambuf* _before;
};
}  // namespace

VN_CHILD(changesWithinTheWalk)
{
    const auto needs = {Vn::InInit<VnInit::initialize>::getType()};
    NumberedPackage<1> owner("owner", needs);
    NumberedPackage<2> other("zother", needs);
    const Vn::InContextAlias<Vn::InInitDef, 0> alias("5", "default");
    std::map<char, std::unique_ptr<Vn::InVariable<int>>> variables;
    for (char name : {'a', 'b', 'c', 'd', 'e', 'f'})
        variables[name] = std::make_unique<Vn::InVariable<int>>(std::string(1, name).c_str(), owner, alias);
    for (char name : {'x', 'y'})
        variables[name] = std::make_unique<Vn::InVariable<int>>(std::string(1, name).c_str(), other, alias);
    // The list is full, and most of it would be gaps: the moment to close them, if nobody were walking.
    WatchedOutput output("variable  : d", [&] {
        for (char name : {'a', 'b', 'c', 'f'})
            variables.erase(name);
        variables.erase('y');  // of the package that isn't being walked through
        owner.addDependency(&*variables['x']);
    });
    start();
    std::istringstream lines(output.str());
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("Initializing variable  : ") && line.size() == 26)
            std::cout << line.back();
    std::cout << "\n";
    stop();
    for (auto const& [name, variable] : variables)
        std::cout << name << variable->isValid();
    std::cout << "\n";
    return 0;
}

TEST(InPackageInit, variablesMayComeAndGoWhileTheirPackageWalksThroughThem)
{
    const ChildRun run = Child("changesWithinTheWalk").with("VN_DEBUG_INITIALIZE", "1").run();
    EXPECT_EQ(run.out, "start owner\nstart zother\nabcdexx\nstop zother\nstop owner\nd0e0x0\n") << run.err;
    EXPECT_EQ(run.exitCode, 0);
}

// ---- diagnostics

VN_CHILD(diagnostics)
{
    NumberedPackage<1> one("one");
    NumberedPackage<2> two("two", {NumberedPackage<1>::getType(), Vn::InInit<VnInit::initialize>::getType()});
    start();
    stop();
    return 0;
}

TEST(InInitMgr, diagnosticsAreExactToTheByte)
{
    // On Windows an empty value can't be told from none in every way of starting a process, so it is set to a text.
    const ChildRun run = Child("diagnostics")
                             .with("VN_DEBUG_INITIALIZE", "0")
                             .without("VN_BUILDINFO_NO_VALIDATE")
                             .without("VN_BUILDINFO_CHECK_STAMPS")
                             .run();

    std::string expected;
    for (char const* name : {"base", "baseMath", "debugging", "discreteTime", "heapMgr", "initArg", "initialize",
                             "initVars", "logger", "osal", "profiling", "random", "testing", "one", "two"})
        expected += std::string("Registering Package: InInit<") + name + ">\n";
    expected += "-->_nbPckgs:15\n";
    int index = 0;
    for (char const* name : {"base", "baseMath", "debugging", "discreteTime", "heapMgr", "initArg", "initVars",
                             "initialize", "logger", "one", "osal", "profiling", "random", "testing", "two"})
        expected += "_packagesToInit[" + std::to_string(index++) + "]: " + name + "\n";

    const auto aliases = [](std::string const& manager, std::string const& own = "") {
        return "----\nContext aliases of type: : " + manager + "\n" + own + "----\n";
    };
    using namespace Vn;
    const std::string kinds =
        aliases(typeid(InContextAliasMgr<InContextAlias<InInitDef, 0>>).name(),
                VnTest::OwnSettings::defaults("0")) +
        aliases(typeid(InContextAliasMgr<InContextAlias<InInitEnv, 1>>).name(), VnTest::OwnSettings::variables()) +
        aliases(typeid(InContextAliasMgr<InContextAlias<InInitOvr, 0>>).name());
    const std::string arguments = aliases(typeid(InContextAliasMgr<InContextAlias<InInitArg, 1>>).name());

    std::vector<std::pair<std::string, int>> order;
    for (auto const& package : libraryPackages) {
        order.emplace_back(package.name, package.listed);
        if (order.size() == 1)
            order.emplace_back("one", 0);
        if (order.back().first == "profiling")
            order.emplace_back("two", 2);
    }
    for (auto const& [name, listed] : order) {
        expected +=
            std::string(static_cast<std::size_t>(listed), ' ') + "InInit<" + name + ">::performInitialize()\n";
        if (name == "initialize")
            expected += kinds;
        if (name == "initArg")
            expected += arguments;
        if (name == "debugging")
            expected += VnTest::OwnSettings::choices();
    }
    for (auto position = order.rbegin(); position != order.rend(); ++position)
        expected += std::string(static_cast<std::size_t>(position->second), ' ') + "InInit<" + position->first +
                    ">::performFinalize()\n";
    EXPECT_EQ(VnTest::OwnSettings::inOrder(run.err), VnTest::OwnSettings::inOrder(expected));
    EXPECT_EQ(run.out, "start one\nstart two\nstop two\nstop one\n");
}

#if !defined(_WIN32)
TEST(InInitMgr, emptyValueSwitchesTheDiagnosticsOnToo)
{
    EXPECT_NE(Child("libraryAlone").with("VN_DEBUG_INITIALIZE", "").run().err, "");
    EXPECT_EQ(Child("libraryAlone").without("VN_DEBUG_INITIALIZE").run().err, "");
}
#endif

// ---- the environment snapshot

VN_CHILD(environment)
{
    const auto print = [](char const* name) {
        char const* const value = InInitMgr::getEnv(name);
        std::cout << name << "=" << (value != nullptr ? value : "(null)") << "\n";
    };
    print("VN_TEST_PLAIN");
    print("VN_TEST_EQUALS");
    print("vn_test_plain");
    print("VN_TEST_UNSET");
    static char changed[] = "VN_TEST_PLAIN=changed";
    ::putenv(changed);
    print("VN_TEST_PLAIN");
    std::cout << (InInitMgr::getEnv(nullptr) == nullptr) << "\n";
    return 0;
}

TEST(InInitMgr, environmentIsThatOfTheStart)
{
    const ChildRun run = Child("environment")
                             .with("VN_TEST_PLAIN", "value")
                             .with("VN_TEST_EQUALS", "a=b=c")
                             .without("VN_TEST_UNSET")
                             .run();
    EXPECT_EQ(run.out, "VN_TEST_PLAIN=value\nVN_TEST_EQUALS=a=b=c\nvn_test_plain=(null)\nVN_TEST_UNSET=(null)\n"
                       "VN_TEST_PLAIN=value\n1\n");
    EXPECT_EQ(run.err, "");
}

TEST(InInitMgr, entryWithoutAnEqualsSignIsReportedAndLeftOut)
{
    const ChildRun run = Child("environment").with("VN_TEST_PLAIN", "value").withEntry("VN_TEST_NO_VALUE").run();
    EXPECT_EQ(run.err, "Skipping over Environment Variable: VN_TEST_NO_VALUE\n");
    EXPECT_EQ(run.out.substr(0, 20), "VN_TEST_PLAIN=value\n");
}

#if !defined(_WIN32)
TEST(InInitMgr, nameThatComesTwiceKeepsTheLaterValue)
{
    const ChildRun run =
        Child("environment").with("VN_TEST_PLAIN", "earlier").withEntry("VN_TEST_PLAIN=later").run();
    EXPECT_EQ(run.out.substr(0, 20), "VN_TEST_PLAIN=later\n");
}
#endif

// ---- threads

VN_CHILD(firstUseOnManyThreads)
{
    std::vector<InInitMgr*> seen(8);
    std::vector<std::thread> threads;
    for (InInitMgr*& instance : seen)
        threads.emplace_back([&instance] { instance = &InInitMgr::getInstance(); });
    for (std::thread& thread : threads)
        thread.join();
    for (InInitMgr const* instance : seen)
        std::cout << (instance == seen[0]);
    std::cout << "\n";
    return 0;
}

TEST(InInitMgr, isOneForAllThreads)
{
    expectOutput("firstUseOnManyThreads", "11111111\n");
}

// ---- the graph

VN_CHILD(graph)
{
    NumberedPackage<1> one("quo\"te\\");
    NumberedPackage<2> two("two", {NumberedPackage<1>::getType()});
    start();
    std::ostringstream text;
    manager().dumpGraph(text);
    std::istringstream lines(text.str());
    std::string line;
    while (std::getline(lines, line))
        if (line.find("quo") != std::string::npos || line.find("two") != std::string::npos || line[0] != ' ' ||
            line.find("osal\" ->") != std::string::npos)
            std::cout << line << "\n";
    return 0;
}

TEST(InInitMgr, graphNamesEveryPackageAndItsDependencies)
{
    expectOutput("graph", "start quo\"te\\\nstart two\n"
                          "digraph packages {\n"
                          "    \"quo\\\"te\\\\\" [label=\"2. quo\\\"te\\\\\"];\n"
                          "    \"two\" [label=\"6. two\"];\n"
                          "    \"osal\" -> \"initialize\";\n"
                          "    \"two\" -> \"quo\\\"te\\\\\";\n"
                          "}\n");
}

VN_CHILD(graphWithAGap)
{
    auto one = std::make_unique<NumberedPackage<1>>("one");
    NumberedPackage<2> two("two", {NumberedPackage<1>::getType()});
    start();
    one.reset();
    std::ostringstream text;
    manager().dumpGraph(text);
    std::cout << (text.str().find("\"two\" [label") != std::string::npos)
              << (text.str().find("\"two\" ->") != std::string::npos) << "\n";
    stop();
    return 0;
}

TEST(InInitMgr, graphLeavesOutAPackageThatWasDestroyed)
{
    expectOutput("graphWithAGap", "start one\nstart two\n10\nstop two\n");
}
