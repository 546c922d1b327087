// The tasks of docs/from-gsl-random.md with the standard library: withrandom TASK.
#include "tasks.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <random>

namespace
{
void uniform()
{
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> number(0, 1);
    for (int i = 0; i < 3; ++i)
        std::printf("%.6f\n", number(engine));
}

void normal()
{
    std::mt19937 engine;
    std::normal_distribution<double> gaussian(10, 2);
    double sum = 0, squares = 0;
    for (int i = 0; i < 100000; ++i) {
        const double number = gaussian(engine);
        sum += number;
        squares += number * number;
    }
    const double mean = sum / 100000;
    std::printf("mean %.2f, variance %.2f\n", mean, squares / 100000 - mean * mean);
}

void points()
{
    std::mt19937 engine;
    std::uniform_real_distribution<double> number(0, 1);
    double sum = 0;
    for (int i = 0; i < 4096; ++i) {
        const double x = number(engine);
        sum += x * number(engine);
    }
    std::printf("the integral of x y is %.5f\n", sum / 4096);
}

void histogram()
{
    std::mt19937 engine;
    const std::array<double, 5> edges{0, 1, 2, 3, 4};
    const std::array<double, 4> counts{1, 0, 3, 0};
    std::piecewise_constant_distribution<double> likeIt(edges.begin(), edges.end(), counts.begin());
    int above = 0;
    for (int i = 0; i < 100000; ++i)
        above += likeIt(engine) >= 2;
    std::printf("%.2f of the numbers are above 2\n", above / 1e5);
}

void directions()
{
    std::mt19937 engine;
    std::normal_distribution<double> gaussian;
    double squares = 0;
    for (int i = 0; i < 100000; ++i) {
        const double x = gaussian(engine), y = gaussian(engine), z = gaussian(engine);
        squares += z * z / (x * x + y * y + z * z);
    }
    std::printf("the mean of z z is %.2f\n", squares / 1e5);
}

void again()
{
    std::mt19937 engine(7);
    const auto first = engine();
    engine.seed(7);
    std::puts(engine() == first ? "the same number" : "another number");
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
