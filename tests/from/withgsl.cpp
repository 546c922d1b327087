// The tasks of docs/from-gsl-random.md with GSL: withgsl TASK.
#include "tasks.h"

#include <gsl/gsl_histogram.h>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <cstdio>

namespace
{
void uniform()
{
    gsl_rng* const source = gsl_rng_alloc(gsl_rng_mt19937);
    gsl_rng_set(source, 7);
    for (int i = 0; i < 3; ++i)
        std::printf("%.6f\n", gsl_rng_uniform(source));
    gsl_rng_free(source);
}

void normal()
{
    gsl_rng* const source = gsl_rng_alloc(gsl_rng_mt19937);
    double sum = 0, squares = 0;
    for (int i = 0; i < 100000; ++i) {
        const double number = 10 + gsl_ran_gaussian(source, 2);
        sum += number;
        squares += number * number;
    }
    const double mean = sum / 100000;
    std::printf("mean %.2f, variance %.2f\n", mean, squares / 100000 - mean * mean);
    gsl_rng_free(source);
}

void points()
{
    gsl_qrng* const source = gsl_qrng_alloc(gsl_qrng_halton, 2);
    double sum = 0;
    for (int i = 0; i < 4096; ++i) {
        double point[2];
        gsl_qrng_get(source, point);
        sum += point[0] * point[1];
    }
    std::printf("the integral of x y is %.5f\n", sum / 4096);
    gsl_qrng_free(source);
}

void histogram()
{
    gsl_rng* const source = gsl_rng_alloc(gsl_rng_mt19937);
    gsl_histogram* const counts = gsl_histogram_alloc(4);
    gsl_histogram_set_ranges_uniform(counts, 0, 4);
    for (const double number : {0.5, 2.5, 2.5, 2.5})
        gsl_histogram_increment(counts, number);
    gsl_histogram_pdf* const likeIt = gsl_histogram_pdf_alloc(4);
    gsl_histogram_pdf_init(likeIt, counts);
    int above = 0;
    for (int i = 0; i < 100000; ++i)
        above += gsl_histogram_pdf_sample(likeIt, gsl_rng_uniform(source)) >= 2;
    std::printf("%.2f of the numbers are above 2\n", above / 1e5);
    gsl_histogram_pdf_free(likeIt);
    gsl_histogram_free(counts);
    gsl_rng_free(source);
}

void directions()
{
    gsl_rng* const source = gsl_rng_alloc(gsl_rng_mt19937);
    double squares = 0;
    for (int i = 0; i < 100000; ++i) {
        double x, y, z;
        gsl_ran_dir_3d(source, &x, &y, &z);
        squares += z * z;
    }
    std::printf("the mean of z z is %.2f\n", squares / 1e5);
    gsl_rng_free(source);
}

void again()
{
    gsl_rng* const source = gsl_rng_alloc(gsl_rng_mt19937);
    gsl_rng_set(source, 7);
    const double first = gsl_rng_uniform(source);
    gsl_rng_set(source, 7);
    std::puts(gsl_rng_uniform(source) == first ? "the same number" : "another number");
    gsl_rng_free(source);
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
