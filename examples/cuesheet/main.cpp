// cuesheet: the cues of an evening, from whatever form they were written down in, at one rate and in order. Shows exact
// stream time: rates, comparison across them, the stored form, and when a cue is due on the system's clock.
#include "cue.h"
#include "sheet.h"

#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>
#include <base/osterminal.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace VnInit
{
class cuesheet
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::cuesheet> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(cuesheet, VnInit::base);

namespace
{
using namespace CueSheet;

constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;

/// The command line asks for something that doesn't exist.
class WrongUse : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

Vn::InInit<VnInit::cuesheet> package;

const Vn::InContextAlias<Vn::InInitArg, 1> rateOption("r:", "-r RATE: rate of the sheet, a fraction or a name");
const Vn::InContextAlias<Vn::InInitDef, 0> rateDefault("ntsc", "default");
Vn::InVariable<char const*> sheetRate("cuesheet.rate", package, rateOption, rateDefault);

const Vn::InContextAlias<Vn::InInitArg, 1> storedOption("s",
                                                        "-s: print the stored form of each cue and nothing else");
const Vn::InContextAlias<Vn::InInitDef, 0> storedDefault("false", "default");
Vn::InVariable<bool> wantsStored("cuesheet.stored", package, storedOption, storedDefault);

bool isRate(char const* text)
{
    try {
        readRate(text);
        return true;
    } catch (Unreadable const&) {
        return false;
    }
}

Vn::InUsage getUsage()
{
    const std::string rates = "# begins a remark. Rates: " + describeRates() + ".";
    return Vn::InUsage("The cues of a file at one rate, in order, each instant once.")
        .operands("FILE", 1, 1)
        .expect(sheetRate, "a rate", isRate)
        .note("A line of the file is TIME = NAME, where TIME is one of\n"
              "  1001 30000 1001      count, and the rate's terms\n"
              "  12.345s              seconds\n"
              "  01:02:03:04 @ ntsc   hours:minutes:seconds:frames, no frame numbers dropped")
        .note(rates.c_str())
        .note("float and double tell by how many counts a cue moves that is kept in such seconds; ~ marks a cue "
              "between two counts.\n"
              "Exit code: 0 for success, 1 for a failure or a line left out, 2 for wrong use.");
}

/// The number of lines that were left out.
int readSheet(std::string const& file, Sheet& sheet)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        throw WrongUse("there is no file " + Vn::OsTerminal::shown(file));
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw WrongUse("can't open " + Vn::OsTerminal::shown(file));
    int leftOut = 0;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (!holdsCue(line))
            continue;
        try {
            sheet.add(readCue(line));
        } catch (Unreadable const& reason) {
            std::cerr << Vn::OsTerminal::shown(file) << ":" << number << ": "
                      << Vn::OsTerminal::shown(reason.what()) << "\n";
            ++leftOut;
        }
    }
    if (stream.bad())
        throw std::runtime_error("can't read " + Vn::OsTerminal::shown(file));
    return leftOut;
}

int run(int argc, char** argv)
{
    if (auto const end = getUsage().handle(argc, argv))
        return *end;

    // The library starts the reference clock, which due times refer to.
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Sheet sheet(readRate(sheetRate.getValue()));
    const int leftOut = readSheet(Vn::InContextAliasMgrBase::getUnboundArgs()[1], sheet);
    sheet.order();
    if (wantsStored.getValue())
        sheet.printStored(std::cout);
    else
        sheet.print(std::cout);
    std::cout.flush();
    if (!std::cout)
        throw std::runtime_error("the standard output stream can't be written");
    return leftOut == 0 ? success : failed;
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (WrongUse const& wrong) {
        std::cerr << "cuesheet: " << wrong.what() << "; cuesheet -h tells more\n";
        return wronglyUsed;
    } catch (std::exception const& failure) {
        std::cerr << "cuesheet: " << failure.what() << "\n";
        return failed;
    }
}
