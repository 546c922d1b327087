#include "settings.h"

#include "picture.h"
#include "sources.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>
#include <vector>

VN_DEFINE_PACKAGE(skylight, VnInit::base);

namespace Skylight::Settings
{
namespace
{
using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

Vn::InInit<VnInit::skylight> package;

std::string listOf(std::vector<std::string> const& names)
{
    std::string list;
    for (std::string const& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

const Option widthOption("w:", "-w PIXELS: width of the picture, 16 to 4096");
const Variable widthVariable("SKYLIGHT_WIDTH", "SKYLIGHT_WIDTH");
const Default widthDefault("320", "320");

const Option samplesOption("n:", "-n COUNT: directions for each pixel, 1 to 65536");
const Variable samplesVariable("SKYLIGHT_SAMPLES", "SKYLIGHT_SAMPLES");
const Default samplesDefault("64", "64");

const Option sourceOption("s:", ("-s SOURCE: source of the points: " + listOf(PixelSource::getNames())).c_str());
const Variable sourceVariable("SKYLIGHT_SOURCE", "SKYLIGHT_SOURCE");
const Default sourceDefault("halton", "halton");

const Option
    samplerOption("d:",
                  ("-d SAMPLER: sampler that makes directions of points: " + listOf(getSamplerNames())).c_str());
const Variable samplerVariable("SKYLIGHT_SAMPLER", "SKYLIGHT_SAMPLER");
const Default samplerDefault("cosine", "cosine");

const Option pictureOption("o:",
                           (std::string("-o FILE: write the picture to FILE, in the format ") + getPictureSuffix() +
                            " on this platform, whatever the suffix; an empty name for none")
                               .c_str());
const Variable pictureVariable("SKYLIGHT_PICTURE", "SKYLIGHT_PICTURE");
const Default pictureDefault((std::string("skylight.") + getPictureSuffix()).c_str(), "in the current folder");

const Option histogramOption("H:", "-H NAME: write a histogram of the directions to NAME.txt and NAME.iv");
const Variable histogramVariable("SKYLIGHT_HISTOGRAM", "SKYLIGHT_HISTOGRAM");
const Default histogramDefault("", "none");

const Option tableOption("t", "-t: print errors by source and number of directions instead of making a picture");
const Variable tableVariable("SKYLIGHT_TABLE", "SKYLIGHT_TABLE");
const Default tableDefault("false", "false");

const Option threadsOption(
    "j:", "-j THREADS: threads that render, 0 to 64, 0 for as many as run at once; one for a random source");
const Variable threadsVariable("SKYLIGHT_THREADS", "SKYLIGHT_THREADS");
const Default threadsDefault("0", "0");

const Option quietOption("q", "-q: do not print progress and times");
const Variable quietVariable("SKYLIGHT_QUIET", "SKYLIGHT_QUIET");
const Default quietDefault("false", "false");

bool isOneOf(char const* word, std::vector<std::string> const& names)
{
    return std::find(names.begin(), names.end(), word) != names.end();
}

/// Whether all of the text is a number in that range.
bool isNumber(char const* text, int least, int most)
{
    int number = 0;
    char const* const end = text + std::strlen(text);
    const std::from_chars_result result = std::from_chars(text, end, number);
    return result.ec == std::errc() && result.ptr == end && number >= least && number <= most;
}

bool isWidth(char const* text)
{
    return isNumber(text, 16, 4096);
}

bool isCount(char const* text)
{
    return isNumber(text, 1, 65536);
}

bool isThreads(char const* text)
{
    return isNumber(text, 0, 64);
}

bool isSource(char const* text)
{
    return isOneOf(text, PixelSource::getNames());
}

bool isSampler(char const* text)
{
    return isOneOf(text, getSamplerNames());
}
}  // namespace

Vn::InVariable<int> width("skylight.width", package, widthOption, widthVariable, widthDefault);
Vn::InVariable<int> samples("skylight.samples", package, samplesOption, samplesVariable, samplesDefault);
Vn::InVariable<int> threads("skylight.threads", package, threadsOption, threadsVariable, threadsDefault);
Vn::InVariable<char const*> source("skylight.source", package, sourceOption, sourceVariable, sourceDefault);
Vn::InVariable<char const*> sampler("skylight.sampler", package, samplerOption, samplerVariable, samplerDefault);
Vn::InVariable<char const*> picture("skylight.picture", package, pictureOption, pictureVariable, pictureDefault);
Vn::InVariable<char const*> histogram("skylight.histogram", package, histogramOption, histogramVariable,
                                      histogramDefault);
Vn::InVariable<bool> table("skylight.table", package, tableOption, tableVariable, tableDefault);
Vn::InVariable<bool> quiet("skylight.quiet", package, quietOption, quietVariable, quietDefault);

Vn::InUsage getUsage()
{
    return Vn::InUsage("Renders spheres under an open sky from directions of your choice.")
        .expect(width, "16 to 4096 pixels", isWidth)
        .expect(samples, "1 to 65536 directions", isCount)
        .expect(threads, "0 to 64 threads", isThreads)
        .expect(source, ("one of " + listOf(PixelSource::getNames())).c_str(), isSource)
        .expect(sampler, ("one of " + listOf(getSamplerNames())).c_str(), isSampler)
        .note(
            "Equal options give the same bits on all platforms, except with the source \"system\", which is the "
            "platform's rand().\n"
            "Messages go to events.log and times to prof.log, in the folder that T4Q_TEST_DIR names or else in the "
            "folder for temporary files.\n"
            "VN_TRACE_OPTIONS=show=Skylight VN_LOG_TRACING=FILE writes what each thread does.")
        .note("Exit code: 0 for success, 1 for a failure, 2 for wrong usage.");
}

}  // namespace Skylight::Settings
