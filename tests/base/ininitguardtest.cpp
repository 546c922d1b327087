#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

using Vn::InInitGuard;
using Vn::InInitMgr;
using Vn::InReinitGuard;
using VnTest::Child;
using VnTest::expectOutput;
using VnTest::NumberedPackage;
using VnTest::report;
using VnTest::start;

static_assert(!std::is_nothrow_destructible_v<InReinitGuard>);
static_assert(!std::is_nothrow_destructible_v<InInitGuard>);

VN_CHILD(guardBracketsMain)
{
    NumberedPackage<1> package("p");
    char const* const* arguments = argv;
    {
        InInitGuard guard(argc, arguments);
        std::cout << argc << (arguments == nullptr) << "\n";
    }
    std::cout << "end\n";
    return 0;
}

TEST(InInitGuard, startsAndStops)
{
    expectOutput("guardBracketsMain", "start p\n01\nstop p\nend\n");
}

VN_CHILD(guardMeetsACycle)
{
    NumberedPackage<1> a("A", {NumberedPackage<2>::getType()});
    NumberedPackage<2> b("B", {NumberedPackage<1>::getType()});
    char const* const* arguments = argv;
    report("guard", [&] { InInitGuard guard(argc, arguments); });
    report("stop", VnTest::stop);
    return 0;
}

TEST(InInitGuard, printsWhyTheStartFailedAndStops)
{
    expectOutput("guardMeetsACycle", "Initialisation failed: Init dependencies contain cycle(s)\n"
                                     "No packages waiting to be initialize.\nNo packages saved.\n"
                                     "Dependency cycle(s) detected...\n'A' is in a cycle with:\n\t'B'\n\n"
                                     "guard: Init dependencies contain cycle(s)\n"
                                     "stop: Multiple calls to finalize().\n");
}

VN_CHILD(guardMeetsAnotherException)
{
    NumberedPackage<1> one("1");
    NumberedPackage<2> two("2", {NumberedPackage<1>::getType()});
    two.onStart = [] { throw std::runtime_error("no"); };
    char const* const* arguments = argv;
    report("guard", [&] { InInitGuard guard(argc, arguments); });
    report("stop", VnTest::stop);
    return 0;
}

TEST(InInitGuard, letsOtherExceptionsThroughWithoutAStop)
{
    expectOutput("guardMeetsAnotherException", "start 1\nstart 2\nguard: something else\nstop 1\nstop: ok\n");
}

VN_CHILD(guardFailsAfterTheEnd)
{
    start();
    VnTest::stop();
    NumberedPackage<1>* leaked = nullptr;
    report("guard", [&] {
        InReinitGuard reinit;
        leaked = new NumberedPackage<1>("p");
        leaked->onStart = [] { throw Vn::InEx::ExPackageInitError("src/base/x", 1, "p"); };
        int count = 0;
        char const* const* vector = nullptr;
        InInitGuard guard(count, vector);
    });
    delete leaked;
    return 0;
}

TEST(InInitGuard, givesTheCauseAndNotWhatFollowedFromIt)
{
    expectOutput("guardFailsAfterTheEnd", "start p\nInitialisation failed: Init error in package: 'p'.\n"
                                          "No packages waiting to be initialize.\n1 packages currently saved:\n"
                                          "\t'p' Not initialized\n\nguard: Init error in package: 'p'.\n");
}

VN_CHILD(guardMeetsAFailingStop)
{
    NumberedPackage<1> package("p");
    package.onStop = [] { throw std::runtime_error("no"); };
    char const* const* arguments = argv;
    report("guard", [&] { InInitGuard guard(argc, arguments); });
    try {
        InInitGuard guard(argc, arguments);
        throw 1;
    } catch (int) {
        std::cout << "the first exception\n";
    }
    return 0;
}

TEST(InInitGuard, letsAFailingStopOutUnlessAnotherExceptionUnwinds)
{
    expectOutput("guardMeetsAFailingStop", "start p\nstop p\nguard: something else\nstop p\nthe first exception\n");
}

VN_CHILD(nestedReinitGuards)
{
    start();
    std::optional<NumberedPackage<1>> late;
    {
        InReinitGuard outer;
        {
            InReinitGuard inner;
            late.emplace("late");
        }
        std::cout << "inner ended\n";
    }
    std::cout << "outer ended\n";
    return 0;
}

TEST(InReinitGuard, nestedOnesStartWhenTheOuterEnds)
{
    expectOutput("nestedReinitGuards", "inner ended\nstart late\nouter ended\n");
}

VN_CHILD(reinitGuardBeforeTheStart)
{
    NumberedPackage<1> package("p");
    {
        InReinitGuard guard;
    }
    std::cout << "guard ended\n";
    report("late", [] { NumberedPackage<2> late("late"); });
    report("start", start);
    report("stop", VnTest::stop);
    return 0;
}

TEST(InReinitGuard, startsWhatWaitsEvenBeforeInitialize)
{
    expectOutput("reinitGuardBeforeTheStart", "start p\nguard ended\nlate: Reinitialize without using the "
                                              "reinitialize guard.\nstart: ok\nstop p\nstop: ok\n");
}

VN_CHILD(reinitGuardFails)
{
    start();
    NumberedPackage<1>* leaked = nullptr;
    const auto registerFailing = [&leaked] {
        leaked = new NumberedPackage<1>("p");
        leaked->onStart = [] { throw std::runtime_error("no"); };
    };
    report("guard", [&] {
        InReinitGuard guard;
        registerFailing();
    });
    delete leaked;
    try {
        InReinitGuard guard;
        registerFailing();
        throw 1;
    } catch (int) {
        std::cout << "the first exception\n";
    }
    delete leaked;
    report("still guarded", [] { NumberedPackage<2> late("late"); });
    return 0;
}

TEST(InReinitGuard, letsAFailingStartOutUnlessAnotherExceptionUnwinds)
{
    expectOutput("reinitGuardFails", "start p\nguard: something else\nstart p\nthe first exception\n"
                                     "still guarded: Reinitialize without using the reinitialize guard.\n");
}
