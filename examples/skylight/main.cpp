// skylight: a small renderer that shows how much a quasi-random source reduces noise.
//
// Spheres lie on a plane under an open sky. Each pixel estimates the light on one point by a number of directions, which
// come from a sampler over a source of points; both are options. The result is a picture, a table of errors for all
// sources, or a histogram of the directions.
//
// settings.cpp has the options, sources.cpp the sources of points, render.cpp the estimate, crew.cpp its threads, world.cpp the
// scene, journal.cpp the log. The files picture*.cpp write the picture in the format that the platform offers.
#include "journal.h"
#include "picture.h"
#include "render.h"
#include "settings.h"

#include <base/ininitmgr.h>
#include <base/osterminal.h>
#include <base/rnhistogramspherical.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <stdexcept>

namespace
{
using namespace Skylight;

constexpr int success = 0;
constexpr int failed = 1;

/// Renders all directions of a picture in eight passes, so that the log shows progress; fewer than eight directions take
/// one pass.
void renderAll(Render& render, unsigned int samples, Journal& journal)
{
    const unsigned int passes = samples < 8 ? 1 : 8;
    for (unsigned int pass = 0; pass < passes; ++pass) {
        const unsigned int first = samples * pass / passes, next = samples * (pass + 1) / passes;
        journal.startPass();
        render.addPass(first, next - first);
        journal.endPass(pass + 1, passes);
    }
}

/// Prints a hash of the picture's floats. Equal options print equal hashes on every platform.
void printFingerprint(std::vector<Vec> const& light)
{
    std::cout << "bits " << std::hex << std::setw(16) << std::setfill('0') << fingerprintOf(light) << std::dec
              << std::setfill(' ') << "\n";
}

unsigned int getThreads()
{
    const int asked = Settings::threads.getValue();
    return asked != 0 ? static_cast<unsigned int>(asked) : Crew::getUsualSize();
}

void makePicture(Journal& journal)
{
    const unsigned int width = static_cast<unsigned int>(Settings::width.getValue());
    const unsigned int samples = static_cast<unsigned int>(Settings::samples.getValue());
    Render render(width, Settings::source.getValue(), Settings::sampler.getValue(), samples, getThreads());
    journal.tell("picture from source " + std::string(Settings::source.getValue()) + " and sampler " +
                 Settings::sampler.getValue());
    renderAll(render, samples, journal);
    journal.tellTimes();
    std::cout << render.getWidth() << " x " << render.getHeight() << " pixels, " << samples << " directions each, "
              << Settings::source.getValue() << ", " << Settings::sampler.getValue() << "\n";
    printFingerprint(render.getLight());
    const std::string path = Settings::picture.getValue();
    if (path.empty())
        return;
    writePicture(path, render.getWidth(), render.getHeight(), render.getBytes());
    std::cout << "picture " << Vn::OsTerminal::shown(std::filesystem::absolute(path).string()) << "\n";
}

/// Directions for each pixel of the picture that errors are measured against. With its source the remaining error is far
/// below all errors of the table.
constexpr unsigned int referenceDirections = 32768;

/// Prints the root of the mean squared error for each source and for 4 to 4096 directions. The pictures are small, because
/// there are many.
void printTable(Journal& journal)
{
    constexpr unsigned int most = 4096;
    const unsigned int width = std::min(48u, static_cast<unsigned int>(Settings::width.getValue()));
    const std::string sampler = Settings::sampler.getValue();
    journal.tell("table of errors for sampler " + sampler);
    Render reference(width, "niederreiter", sampler, referenceDirections, getThreads());
    renderAll(reference, referenceDirections, journal);
    std::cout << "directions";
    for (std::string const& source : PixelSource::getNames())
        std::cout << std::setw(14) << source;
    std::cout << "\n" << std::scientific << std::setprecision(2);
    for (unsigned int samples = 4; samples <= most; samples *= 4) {
        std::cout << std::setw(10) << samples;
        for (std::string const& source : PixelSource::getNames()) {
            Render render(width, source, sampler, samples, getThreads());
            render.addPass(0, samples);
            std::cout << std::setw(14) << differenceOf(render.getLight(), reference.getLight()) << std::flush;
        }
        std::cout << "\n";
    }
    std::cout << std::defaultfloat << std::setprecision(6);
}

/// Writes one dump of a histogram to a file. Throws std::runtime_error with the path and the reason.
template <class Write>
void writeFile(std::string const& path, Write write)
{
    std::ofstream file(path);
    write(file);
    file.close();
    if (file.fail())
        throw std::runtime_error("cannot write '" + path + "': " + std::strerror(errno));
}

/// Draws directions, counts them by hand and writes both dumps. addSamples() would take the cosine of a cosine.
template <class Histogram>
void countDirections(Vn::RnSphericalRng<float>& sampler, unsigned int count, std::string const& name)
{
    Histogram histogram(12, 24);
    for (unsigned int i = 0; i < count; ++i) {
        float cosine, phi;
        sampler.getSampleCosine(cosine, phi);
        histogram.addSampleCosine(cosine, phi);
    }
    writeFile(name + ".txt", [&histogram](std::ostream& stream) { histogram.dump(stream); });
    writeFile(name + ".iv", [&histogram](std::ostream& stream) { histogram.dumpInventor(stream); });
}

void makeHistogram(Journal& journal)
{
    constexpr unsigned int count = 100000;
    const std::string name = Settings::histogram.getValue(), kind = Settings::sampler.getValue();
    auto const source = PixelSource::make(Settings::source.getValue(), count);
    auto const sampler = makeSampler(kind, source.get());
    journal.tell("histogram of " + std::to_string(count) + " directions to " + name + ".txt and " + name + ".iv");
    if (kind == "sphere")
        countDirections<Vn::RnHistogramSpherical<float>>(*sampler, count, name);
    else
        countDirections<Vn::RnHistogramHemispherical<float>>(*sampler, count, name);
}

int run()
{
    Journal journal(Settings::quiet.getValue());
    if (Settings::table.getValue())
        printTable(journal);
    else
        makePicture(journal);
    if (*Settings::histogram.getValue() != '\0')
        makeHistogram(journal);
    if (!std::cout.flush())
        throw std::runtime_error("cannot write to standard output");
    return success;
}
}  // namespace

int main(int argc, char** argv)
{
    if (auto const end = Settings::getUsage().handle(argc, argv))
        return *end;
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        return run();
    } catch (std::exception const& failure) {
        std::cerr << "skylight: " << Vn::OsTerminal::shown(failure.what()) << "\n";
        return failed;
    }
}
