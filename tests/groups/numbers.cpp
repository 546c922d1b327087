#include "workgroup.h"

#include <base/dttime.h>
#include <base/dttimeutil.h>
#include <base/floatutil.h>
#include <base/interval.h>

namespace
{
class StreamTime : public WorkGroup
{
public:
    StreamTime()
        : WorkGroup("streamtime", "Steps through frames, compares them exactly, and reads them back.", 10000)
    {}

private:
    void work(unsigned long count) override
    {
        const Vn::Rational rate(30000, 1001);
        Vn::DtTime position(0, 30000, 1001);
        const Vn::DtTime frame(1, 30000, 1001);
        for (unsigned long i = 1; i <= count; ++i) {
            position += frame;
            require(std::int64_t(position.getCount()) == static_cast<std::int64_t>(i), "the number of the frame");
        }
        const Vn::ArrayPtr<char> text = Vn::DtTimeUtil::getDtStringFromDtTime(position);
        require(Vn::DtTimeUtil::getDtTimeFromDtString(text) == position, "what is read back");
        require(position.convertRate(rate) == position, "the same rate");
    }
} streamTime;

class Numbers : public WorkGroup
{
public:
    Numbers() : WorkGroup("numbers", "Rounds numbers and gathers them into an interval.", 100000) {}

private:
    void work(unsigned long count) override
    {
        double sum = 0.0;
        for (unsigned long i = 0; i < count; ++i) {
            const double value = static_cast<double>(i) + 0.25;
            require(Vn::FloatUtil::floor(value) == static_cast<double>(i), "the floor");
            sum += Vn::FloatUtil::ceil(value) - Vn::FloatUtil::floor(value);
        }
        require(sum == static_cast<double>(count), "the distance between ceiling and floor");
    }
} numbers;
}  // namespace
