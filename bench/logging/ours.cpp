#include "contestant.h"

#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/lglog.h>
#include <base/lgreader.h>

#include <cstdlib>

namespace VnBench
{
namespace
{
Vn::LgQueue* theQueue = nullptr;

Vn::LgQueue* getTheQueue()
{
    return theQueue;
}

Vn::LgMinorGroup const& getGroup()
{
    static const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Bench"), "Bench");
    return group;
}
}  // namespace

Contestant makeOurs(std::string const& folder)
{
    ::setenv("VN_LOG_WARNING", (folder + "/ours.log").c_str(), 1);
    ::setenv("T4Q_TEST_DIR", folder.c_str(), 1);
    int argc = 0;
    char const* const* argv = nullptr;
    Vn::InInitMgr::getInstance().initialize(argc, argv);
    theQueue = new Vn::LgQueue(1);
    Vn::LgLog::getRegistry()->registerQueue(theQueue);
    Vn::LgLog::setQueueFunction(getTheQueue);
    Vn::LgLog::setLoggerActivation(true);
    Vn::LgMinorGroup const& group = getGroup();
    return makeContestant(
        "VNbase",
        [&group](int) { VN_LOG(group, Vn::LgTypes::Warning, "a message of some forty characters in all"); },
        [&group](int i) { VN_LOG(group, Vn::LgTypes::Warning, "a message with the number " << i); },
        [&group](int i) {
            VN_LOG(group, Vn::LgTypes::Warning, "tile " << i << " of " << i * 7 << " took " << i * 0.37);
        },
        [] { Vn::LgReader().flushAll(); });
}

double timeOurReader(int count)
{
    double total = 0;
    for (int done = 0; done < count; done += 1000) {
        for (int i = 0; i < 1000; ++i)
            VN_LOG(getGroup(), Vn::LgTypes::Warning, "a message with the number " << i);
        const Clock::time_point start = Clock::now();
        Vn::LgReader().flushAll();
        total += nanoseconds(Clock::now() - start);
    }
    return total / count;
}

std::pair<double, double> timeDisabledLevel(int count)
{
    Vn::LgMinorGroup const& group = getGroup();
    const auto time = [count](auto const& body) {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < count; ++i) {
            body(i);
            asm volatile("" : : "r"(i) : "memory");  // the loop stays
        }
        return nanoseconds(Clock::now() - start) / count;
    };
    const double disabled =
        time([&group](int i) { VN_LOG(group, Vn::LgTypes::Informational, "nobody reads this " << i); });
    return {disabled, time([](int) {})};
}

}  // namespace VnBench
