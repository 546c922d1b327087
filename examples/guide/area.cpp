// area: the area of a quarter of a circle from two sources of numbers, and a histogram. Its page is docs/sampling.md.
#include <base/rngaussianrng.h>
#include <base/rnhaltonbirng.h>
#include <base/rnhistogram.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnseparablemultirng.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <string>

namespace
{
/// How far `n` points miss the area, as the root of the mean square of 20 attempts.
double missBy(Vn::RnBiRng<double>& points, int n)
{
    const double area = 0.78539816339744831, attempts = 20.0;
    double squares = 0.0;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        int hits = 0;
        for (int i = 0; i < n; ++i) {
            double x = 0.0, y = 0.0;
            points.getSample(x, y);
            hits += x * x + y * y < 1.0;
        }
        squares += (hits / double(n) - area) * (hits / double(n) - area);
    }
    return std::sqrt(squares / attempts);
}
}  // namespace

int main()
{
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnSeparableBiRng<double> random(&uniform);
    Vn::RnHaltonBiRng<double> halton;
    std::cout << "points   random   Halton\n" << std::fixed << std::setprecision(5);
    for (const int n : {100, 1000, 10000})
        std::cout << std::setw(6) << n << "  " << missBy(random, n) << "  " << missBy(halton, n) << "\n";

    Vn::RnGaussianRng<double> gaussian(&uniform);
    Vn::RnHistogram<double> histogram(7, -3.5, 3.5);
    histogram.addSamples(gaussian, 1000);
    std::cout << std::setprecision(1);
    for (unsigned bin = 0; bin < 7; ++bin) {
        double from = 0.0, to = 0.0;
        histogram.getBinBounds(bin, from, to);
        const auto stars = static_cast<unsigned>(histogram.getBinValue(bin) / 10.0);
        std::cout << std::setw(6) << from << " " << std::string(stars, '*') << "\n";
    }
}
