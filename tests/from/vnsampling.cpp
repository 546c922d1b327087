// The tasks of docs/from-gsl-random.md with this library: vnsampling TASK.
#include "tasks.h"

#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnuniformsphericalrng.h>

#include <cstdio>

namespace
{
void uniform()
{
    Vn::RnLecuyerUniformRng<double> number(1, 7);
    for (int i = 0; i < 3; ++i)
        std::printf("%.6f\n", number());
}

void normal()
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnGaussianRng<double> gaussian(&uniform, 10, 2);
    double sum = 0, squares = 0;
    for (int i = 0; i < 100000; ++i) {
        const double number = gaussian();
        sum += number;
        squares += number * number;
    }
    const double mean = sum / 100000;
    std::printf("mean %.2f, variance %.2f\n", mean, squares / 100000 - mean * mean);
}

void points()
{
    Vn::RnHaltonBiRng<double> source;
    double sum = 0;
    for (int i = 0; i < 4096; ++i) {
        double x, y;
        source.getSample(x, y);
        sum += x * y;
    }
    std::printf("the integral of x y is %.5f\n", sum / 4096);
}

void histogram()
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnUniformHistogram<double> counts(4, 0, 4);
    for (const double number : {0.5, 2.5, 2.5, 2.5})
        counts.addSample(number, 1);
    Vn::RnHistogramRng<double> likeIt(counts, &uniform);
    int above = 0;
    for (int i = 0; i < 100000; ++i)
        above += likeIt() >= 2;
    std::printf("%.2f of the numbers are above 2\n", above / 1e5);
}

void directions()
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnSeparableBiRng<double> pairs(&uniform);
    Vn::RnUniformSphericalRng<double> sphere(&pairs);
    double squares = 0;
    for (int i = 0; i < 100000; ++i) {
        double x, y, z;
        sphere.getSampleXYZ(x, y, z);
        squares += z * z;
    }
    std::printf("the mean of z z is %.2f\n", squares / 1e5);
}

void again()
{
    Vn::RnNumRecUniformRng<double> number(7);
    const double first = number();
    number.restart();
    std::puts(number() == first ? "the same number" : "another number");
    Vn::RnLecuyerUniformRng<double> finer(1, 7);
    const double finerFirst = finer();
    finer.restart();
    std::puts(finer() == finerFirst ? "the same number" : "another number");
}
}  // namespace

int main(int argc, char** argv)
{
    return From::runTask({{"uniform", uniform},
                          {"normal", normal},
                          {"points", points},
                          {"histogram", histogram},
                          {"directions", directions},
                          {"again", again}},
                         argc, argv);
}
