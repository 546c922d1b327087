#include "settings.h"

#include "picture.h"
#include "sources.h"

#include <algorithm>
#include <cstring>
#include <ostream>

VN_DEFINE_PACKAGE(skylight, VnInit::base);

namespace Skylight::Settings
{
namespace
{
using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

Vn::InInit<VnInit::skylight> package;

const Option widthOption("w:", "-w PIXELS    width of the picture, 16 to 4096");
const Variable widthVariable("SKYLIGHT_WIDTH", "SKYLIGHT_WIDTH");
const Default widthDefault("320", "320");

const Option samplesOption("n:", "-n COUNT     directions for each pixel, 1 to 65536");
const Variable samplesVariable("SKYLIGHT_SAMPLES", "SKYLIGHT_SAMPLES");
const Default samplesDefault("64", "64");

const Option sourceOption("s:", "-s SOURCE    where points come from");
const Variable sourceVariable("SKYLIGHT_SOURCE", "SKYLIGHT_SOURCE");
const Default sourceDefault("halton", "halton");

const Option samplerOption("d:", "-d SAMPLER   how they become directions");
const Variable samplerVariable("SKYLIGHT_SAMPLER", "SKYLIGHT_SAMPLER");
const Default samplerDefault("cosine", "cosine");

const Option pictureOption("o:", "-o FILE      picture");
const Variable pictureVariable("SKYLIGHT_PICTURE", "SKYLIGHT_PICTURE");
const Default pictureDefault("", "none");

const Option histogramOption("H:", "-H NAME      histogram of directions, to NAME.txt and NAME.iv");
const Variable histogramVariable("SKYLIGHT_HISTOGRAM", "SKYLIGHT_HISTOGRAM");
const Default histogramDefault("", "none");

const Option tableOption("t",
                         "-t           table of errors by source and number of directions, instead of a picture");
const Variable tableVariable("SKYLIGHT_TABLE", "SKYLIGHT_TABLE");
const Default tableDefault("false", "false");

const Option quietOption("q", "-q           no progress and no times");
const Variable quietVariable("SKYLIGHT_QUIET", "SKYLIGHT_QUIET");
const Default quietDefault("false", "false");

void printRow(std::ostream& stream, Option const& option, Variable const& variable, Default const& fallback)
{
    stream << "  " << option.getDescription() << " (" << variable.getKey() << ", default "
           << fallback.getDescription() << ")\n";
}

bool isOneOf(char const* word, std::vector<std::string> const& names)
{
    return std::find(names.begin(), names.end(), word) != names.end();
}

std::string listOf(std::vector<std::string> const& names)
{
    std::string list;
    for (std::string const& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}
}  // namespace

Vn::InVariable<int> width("skylight.width", package, widthOption, widthVariable, widthDefault);
Vn::InVariable<int> samples("skylight.samples", package, samplesOption, samplesVariable, samplesDefault);
Vn::InVariable<char const*> source("skylight.source", package, sourceOption, sourceVariable, sourceDefault);
Vn::InVariable<char const*> sampler("skylight.sampler", package, samplerOption, samplerVariable, samplerDefault);
Vn::InVariable<char const*> picture("skylight.picture", package, pictureOption, pictureVariable, pictureDefault);
Vn::InVariable<char const*> histogram("skylight.histogram", package, histogramOption, histogramVariable,
                                      histogramDefault);
Vn::InVariable<bool> table("skylight.table", package, tableOption, tableVariable, tableDefault);
Vn::InVariable<bool> quiet("skylight.quiet", package, quietOption, quietVariable, quietDefault);

void printHelp(std::ostream& stream)
{
    printRow(stream, widthOption, widthVariable, widthDefault);
    printRow(stream, samplesOption, samplesVariable, samplesDefault);
    printRow(stream, sourceOption, sourceVariable, sourceDefault);
    stream << "               " << listOf(PixelSource::getNames()) << "\n";
    printRow(stream, samplerOption, samplerVariable, samplerDefault);
    stream << "               " << listOf(getSamplerNames()) << "\n";
    printRow(stream, pictureOption, pictureVariable, pictureDefault);
    stream << "               written as " << getPictureSuffix() << " on this platform, whatever the name\n";
    printRow(stream, histogramOption, histogramVariable, histogramDefault);
    printRow(stream, tableOption, tableVariable, tableDefault);
    printRow(stream, quietOption, quietVariable, quietDefault);
}

std::string getFault()
{
    if (width.getValue() < 16 || width.getValue() > 4096)
        return "the width must be from 16 to 4096";
    if (samples.getValue() < 1 || samples.getValue() > 65536)
        return "the number of directions must be from 1 to 65536";
    if (!isOneOf(source.getValue(), PixelSource::getNames()))
        return std::string("there is no source ") + source.getValue();
    if (!isOneOf(sampler.getValue(), getSamplerNames()))
        return std::string("there is no sampler ") + sampler.getValue();
    return "";
}

}  // namespace Skylight::Settings
