// What the thirteen packages of the library do when they start and stop, and nothing else: seen from a package of the
// test's own behind each of them.
#include <base/dbgbuildinfomgr.h>
#include <base/dtreftimefactory.h>
#include <base/hmheapmgr.h>
#include <base/hwcounter.h>
#include <base/incontextalias.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/oscpuinfo.h>
#include <base/sleeper.h>

#include "expectchild.h"
#include "tempfolder.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::NumberedPackage;

namespace
{
template <class Call>
bool works(Call const& call)
{
    try {
        call();
        return true;
    } catch (ExBase const&) {
        return false;
    }
}

/// One letter for each thing that a start brings; "." where it isn't there.
std::string whatIsThere()
{
    static const InVariableBase* const setting =
        InVariableBase::queryViaHandle("Vn::Tessola::debugging::buildInfoNoValidate");
    const std::pair<char, std::function<bool()>> things[] = {
        {'h', [] { return works([] { HmHeapMgr::getInstance(); }); }},
        {'f', [] { return OsCpuInfo::getHwCounterFrequency() != 0; }},
        {'c', [] { return HwCounter::timeStamp() != 0 && std::isfinite(HwCounter::resolution()); }},
        {'s', [] { return works([] { Sleeper::getInstance(); }); }},
        {'l', [] { return LgLog::getLevelOutput(LgTypes::Warning) != nullptr; }},
        {'g', [] { return works([] { LgMajorGroup::getInstanceForName("Base"); }); }},
        {'v', [] { return setting->isValid(); }},
        {'b',
         [] {
             std::ostringstream text;
             DbgBuildInfoMgr::printBuildInfo(text, false);
             return text.str().find("API Tessola") != std::string::npos;
         }},
    };
    std::string there;
    for (auto const& [letter, isThere] : things)
        there += isThere() ? letter : '.';
    return there;
}

template <int number, class Tag>
std::unique_ptr<InPackageInit> behind(char const* name)
{
    auto watcher = std::make_unique<NumberedPackage<number>>(name, std::vector{InInit<Tag>::getType()});
    watcher->onStart = [] { std::cout << whatIsThere() << "\n"; };
    watcher->onStop = watcher->onStart;
    return watcher;
}
}  // namespace

VN_CHILD(startStepByStep)
{
    // Each watcher starts behind the package that it needs and before the next one of the table that does something.
    const std::unique_ptr<InPackageInit> watchers[] = {
        behind<1, VnInit::initialize>("a"), behind<2, VnInit::heapMgr>("b"), behind<3, VnInit::osal>("c"),
        behind<4, VnInit::profiling>("d"),  behind<5, VnInit::logger>("e"),  behind<6, VnInit::debugging>("a"),
        behind<7, VnInit::base>("g"),
    };
    std::cout << whatIsThere() << "\n";
    VnTest::start();
    VnTest::stop();
    std::cout << whatIsThere() << "\n";
    return 0;
}

TEST(InPackages, bringUpAndDownWhatBelongsToThem)
{
    const VnTest::TempFolder folder;
    const ChildRun run = Child("startStepByStep").with("T4Q_TEST_DIR", folder.path()).run();
    EXPECT_EQ(run.out, "........\n"
                       "start a\n........\n"
                       "start b\nhf......\n"  // `osal` comes between the two
                       "start c\nhf......\n"
                       "start d\nhfcs....\n"
                       "start e\nhfcslg..\n"
                       "start a\nhfcslgv.\n"
                       "start g\nhfcslgvb\n"
                       "stop g\nhfcslgvb\n"
                       "stop a\nhfcslgvb\n"  // what is known of libraries goes with `debugging`
                       "stop e\nhfcslg..\n"
                       "stop d\nhfcs....\n"
                       "stop c\nhfc.....\n"
                       "stop b\nhfc.....\n"
                       "stop a\n.fc.....\n"
                       ".fc.....\n")
        << run.err;
    EXPECT_EQ(run.exitCode, 0);
}

VN_CHILD(clockAfterTheStart)
{
    VnTest::start();
    const auto started = HwCounter::timeStamp();
    auto now = started;
    while (HwCounter::seconds(started, now) < 0.005)
        now = HwCounter::timeStamp();
    const std::int64_t count = DtRefTimeFactory::getInstance().create().getCount();
    std::cout << (count >= static_cast<std::int64_t>(now - started)) << "\n";
    VnTest::stop();
    return 0;
}

TEST(InPackages, theReferenceClockBeginsAtTheStartAndNotAtItsFirstReading)
{
    VnTest::expectOutput("clockAfterTheStart", "1\n");
}
