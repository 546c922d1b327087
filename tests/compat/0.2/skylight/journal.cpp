#include "journal.h"

#include <base/lglog.h>
#include <base/lgreader.h>

#include <cstdio>

namespace Skylight
{
namespace
{
Vn::LgQueue* theQueue = nullptr;

Vn::LgQueue* getTheQueue()
{
    return theQueue;
}

Vn::LgMinorGroup getGroup()
{
    return {Vn::LgMajorGroup::getInstanceForName("Skylight"), "Render"};
}
}  // namespace

Journal::Journal(bool isQuiet) : _isQuiet(isQuiet), _passes("passes")
{
    Vn::LgMajorGroup& group = Vn::LgMajorGroup::getInstanceForName("Skylight");
    group.setLogThreshold(Vn::LgTypes::Informational, false);
    group.setLogThreshold(Vn::LgTypes::Profiling, false);
    theQueue = &_queue;
    Vn::LgLog::getRegistry()->registerQueue(&_queue);
    Vn::LgLog::setQueueFunction(getTheQueue);
    Vn::LgLog::setLoggerActivation(true);
}

Journal::~Journal()
{
    Vn::LgReader().flushAll();
    Vn::LgLog::setLoggerActivation(false);
    Vn::LgLog::setQueueFunction(nullptr);
    Vn::LgLog::getRegistry()->deregisterQueue(&_queue);
    theQueue = nullptr;
}

void Journal::tell(std::string const& message)
{
    VN_LOG(getGroup(), Vn::LgTypes::Informational, message.c_str());
}

void Journal::startPass()
{
    _passes.start();
}

void Journal::endPass(unsigned int pass, unsigned int count)
{
    _passes.stop();
    const double seconds = _passes.cycleTime();
    _passes.endCycle();
    VN_LOG(getGroup(), Vn::LgTypes::Profiling, "pass " << pass << " of " << count << ": " << seconds << " s");
    Vn::LgReader().flushAll();
    if (!_isQuiet)
        std::fprintf(stderr, "pass %u of %u: %.3f s\n", pass, count, seconds);
}

void Journal::tellTimes()
{
    VN_LOG(getGroup(), Vn::LgTypes::Profiling,
           _passes.cycles() << " passes in " << _passes.totalTime() << " s, " << _passes.minTime() << " to "
                            << _passes.maxTime() << " s each");
    if (!_isQuiet)
        std::fprintf(stderr, "%d passes in %.3f s, %.3f to %.3f s each\n", _passes.cycles(), _passes.totalTime(),
                     _passes.minTime(), _passes.maxTime());
}

}  // namespace Skylight
