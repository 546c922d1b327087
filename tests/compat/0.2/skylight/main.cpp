// skylight: spheres on a plane under an open sky, lit by directions from any source of points behind any sampler of
// directions. Shows what a quasi-random source buys, as a picture and as a table of errors.
#include "journal.h"
#include "picture.h"
#include "render.h"
#include "settings.h"

#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/rnhistogramspherical.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <stdexcept>

namespace
{
using namespace Skylight;

constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;

/// All passes of a picture.
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

void printFingerprint(std::vector<Vec> const& light)
{
    std::cout << "bits " << std::hex << std::setw(16) << std::setfill('0') << fingerprintOf(light) << std::dec
              << std::setfill(' ') << "\n";
}

void makePicture(Journal& journal)
{
    const unsigned int width = static_cast<unsigned int>(Settings::width.getValue());
    const unsigned int samples = static_cast<unsigned int>(Settings::samples.getValue());
    Render render(width, Settings::source.getValue(), Settings::sampler.getValue(), samples);
    journal.tell("picture by " + std::string(Settings::source.getValue()) + " and " + Settings::sampler.getValue());
    renderAll(render, samples, journal);
    journal.tellTimes();
    std::cout << render.getWidth() << " x " << render.getHeight() << " pixels, " << samples << " directions each, "
              << Settings::source.getValue() << ", " << Settings::sampler.getValue() << "\n";
    printFingerprint(render.getLight());
    const std::string path = Settings::picture.getValue();
    if (!path.empty() && !writePicture(path, render.getWidth(), render.getHeight(), render.getBytes()))
        throw std::runtime_error("can't write " + path);
}

/// Errors against a picture of many directions by a source that is good at it; small, as they are many pictures.
void printTable(Journal& journal)
{
    constexpr unsigned int most = 4096, many = 32768;
    const unsigned int width = std::min(48u, static_cast<unsigned int>(Settings::width.getValue()));
    const std::string sampler = Settings::sampler.getValue();
    journal.tell("table of errors for " + sampler);
    Render reference(width, "niederreiter", sampler, many);
    renderAll(reference, many, journal);
    std::cout << "directions";
    for (std::string const& source : PixelSource::getNames())
        std::cout << std::setw(14) << source;
    std::cout << "\n" << std::scientific << std::setprecision(2);
    for (unsigned int samples = 4; samples <= most; samples *= 4) {
        std::cout << std::setw(10) << samples;
        for (std::string const& source : PixelSource::getNames()) {
            Render render(width, source, sampler, samples);
            render.addPass(0, samples);
            std::cout << std::setw(14) << differenceOf(render.getLight(), reference.getLight()) << std::flush;
        }
        std::cout << "\n";
    }
    std::cout << std::defaultfloat << std::setprecision(6);
}

template <class Histogram>
void writeHistogram(Histogram const& histogram, std::string const& name)
{
    std::ofstream text(name + ".txt"), scene(name + ".iv");
    histogram.dump(text);
    histogram.dumpInventor(scene);
    text.close();
    scene.close();
    if (text.fail() || scene.fail())
        throw std::runtime_error("can't write " + name + ".txt and " + name + ".iv");
}

template <class Histogram>
void countDirections(Vn::RnSphericalRng<float>& sampler, unsigned int count, std::string const& name)
{
    Histogram histogram(12, 24);
    for (unsigned int i = 0; i < count; ++i) {
        float cosine, phi;
        sampler.getSampleCosine(cosine, phi);
        histogram.addSampleCosine(cosine, phi);
    }
    writeHistogram(histogram, name);
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
    const std::string fault = Settings::getFault();
    const bool hasOperand = Vn::InContextAliasMgrBase::getUnboundArgs().size() > 1;
    if (hasOperand || !fault.empty()) {
        std::cerr << "skylight: " << (hasOperand ? "there is nothing to name but options" : fault)
                  << "; -h tells what there is\n";
        return wronglyUsed;
    }
    Journal journal(Settings::quiet.getValue());
    if (Settings::table.getValue())
        printTable(journal);
    else
        makePicture(journal);
    if (*Settings::histogram.getValue() != '\0')
        makeHistogram(journal);
    if (!std::cout.flush())
        throw std::runtime_error("the standard output stream can't be written");
    return success;
}

void printHelp()
{
    std::cout << "skylight [OPTION]...: spheres under an open sky, lit by directions of your choice.\n\n";
    Settings::printHelp(std::cout);
    std::cout
        << "  -h, --help   this text\n\n"
           "An option counts more than its variable, and that more than the default. The same options give the\n"
           "same bits on all platforms, but for the source \"system\", which is the platform's own. Messages and\n"
           "times are in events.log and prof.log, in T4Q_TEST_DIR or the folder for temporary files.\n"
           "Exit code: 0 for success, 1 for a failure, 2 for wrong use.\n";
}
}  // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "-h") == 0 || std::strcmp(argv[i], "--help") == 0) {
            printHelp();
            return success;
        }
    }
    try {
        char const* const* arguments = argv;
        Vn::InInitGuard guard(argc, arguments);
        return run();
    } catch (std::exception const& failure) {
        std::cerr << "skylight: " << failure.what() << "\n";
        return failed;
    }
}
