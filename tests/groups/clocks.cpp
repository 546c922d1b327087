#include "workgroup.h"

#include <base/hwcounter.h>
#include <base/profiler.h>

#include <ostream>

namespace
{
class Clocks : public WorkGroup
{
public:
    Clocks() : WorkGroup("clocks", "Reads the counter, and profiles what that takes.", 10000), _passes("a stamp") {}

    void dump(std::ostream& stream) override { stream << _passes; }

private:
    void work(unsigned long count) override
    {
        _passes.reset();
        std::uint64_t last = Vn::HwCounter::timeStamp();
        for (unsigned long i = 0; i < count; ++i) {
            _passes.start();
            const std::uint64_t now = Vn::HwCounter::timeStamp();
            _passes.stop();
            _passes.endCycle();
            require(Vn::HwCounter::seconds(last, now) >= 0.0, "time that goes on");
            last = now;
        }
        require(_passes.cycles() == static_cast<int>(count), "the number of passes");
    }

    Vn::Profiler<Vn::HwIntervalTimer> _passes;
} clocks;
}  // namespace
