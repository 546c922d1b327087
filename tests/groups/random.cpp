#include "workgroup.h"

#include <base/rnhistogram.h>
#include <base/rnlecuyeruniformrng.h>

namespace
{
class Random : public WorkGroup
{
public:
    Random() : WorkGroup("random", "Draws numbers, and gathers them into a histogram.", 100000) {}

private:
    void work(unsigned long count) override
    {
        Vn::RnLecuyerUniformRng<double> source(1);
        Vn::RnUniformHistogram<double> histogram(10, 0.0, 1.0);
        for (unsigned long i = 0; i < count; ++i) {
            double sample = -1.0;
            source.getSample(sample);
            require(sample > 0.0 && sample < 1.0, "the range of a number");
            histogram.addSample(sample, 1.0);
        }
        double sum = 0.0;
        for (double value : histogram.getBins())
            sum += value;
        require(sum == static_cast<double>(count), "the number of samples in all bins");
    }
} randomNumbers;
}  // namespace
