// cuesheet: the cues of an evening, from whatever form they were written down in, at one rate and in order. Shows exact
// stream time: rates, comparison across them, the stored form, and when a cue is due on the system's clock.
#include "cue.h"
#include "sheet.h"

#include <base/incontextalias.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inoptionparser.h>

#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace
{
using namespace CueSheet;

constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;
constexpr char const* optionLetters = "hr:s";

/// The command line asks for something that doesn't exist.
class WrongUse : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct CommandLine
{
    bool wantsHelp = false;
    bool wantsStored = false;
    std::string rate = "ntsc";
    std::string file;
};

void takeOption(int option, char const* value, char const* element, CommandLine& line)
{
    switch (option) {
    case 'h':
        line.wantsHelp = true;
        break;
    case 's':
        line.wantsStored = true;
        break;
    case 'r':
        if (value == nullptr)
            throw WrongUse("a rate is missing behind -r");
        line.rate = value;
        break;
    default:
        throw WrongUse(std::string("unknown option in ") + element);
    }
}

CommandLine readCommandLine(int argc, char** argv)
{
    CommandLine line;
    // A long word ends the library's option parsing, so it is looked for by hand.
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) {
            line.wantsHelp = true;
            return line;
        }
        if (std::strncmp(argv[i], "--", 2) == 0 && argv[i][2] != '\0')
            throw WrongUse(std::string("unknown option ") + argv[i]);
    }
    Vn::InOptionParser parser(argc, argv, optionLetters);
    for (int option = parser.getOption(); option != -1; option = parser.getOption())
        takeOption(option, parser.getValue(), argv[parser.getArgumentIndex()], line);
    const int first = parser.getArgumentIndex();
    if (line.wantsHelp)
        return line;
    if (argc - first != 1)
        throw WrongUse(argc - first < 1 ? "which sheet?" : "one sheet at a time");
    line.file = argv[first];
    return line;
}

void printHelp()
{
    std::cout << "cuesheet [-s] [-r RATE] FILE: the cues of a file at one rate, in order, each instant once.\n\n"
                 "  -r RATE      rate of the sheet: a fraction or a name, ntsc if it isn't told\n"
                 "  -s           print the stored form of each cue and nothing else\n"
                 "  -h, --help   this text\n\n"
                 "A line is TIME = NAME, where TIME is one of\n"
                 "  1001 30000 1001       count, and the rate's terms\n"
                 "  12.345s               seconds\n"
                 "  01:02:03:04 @ ntsc    hours:minutes:seconds:frames, no frame numbers dropped\n"
                 "and # begins a remark. Rates: "
              << describeRates()
              << ".\n\n"
                 "float and double tell by how many counts a cue moves that is kept in such seconds;\n"
                 "~ marks a cue between two counts.\n"
                 "Exit code: 0 for success, 1 for a failure or a line left out, 2 for wrong use.\n";
}

/// The number of lines that were left out.
int readSheet(std::string const& file, Sheet& sheet)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        throw WrongUse("there is no file " + file);
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw WrongUse("can't open " + file);
    int leftOut = 0;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (!holdsCue(line))
            continue;
        try {
            sheet.add(readCue(line));
        } catch (Unreadable const& reason) {
            std::cerr << file << ":" << number << ": " << reason.what() << "\n";
            ++leftOut;
        }
    }
    if (stream.bad())
        throw std::runtime_error("can't read " + file);
    return leftOut;
}

int run(int argc, char** argv)
{
    const CommandLine line = readCommandLine(argc, argv);
    if (line.wantsHelp) {
        printHelp();
        return success;
    }
    Vn::Rational rate;
    try {
        rate = readRate(line.rate);
    } catch (Unreadable const& reason) {
        throw WrongUse(reason.what());
    }

    // The library starts the reference clock, which due times refer to. All options are read by now, so it gets the
    // program's name and no more.
    int count = 1;
    char const* const* arguments = argv;
    Vn::InInitGuard guard(count, arguments);
    Sheet sheet(rate);
    const int leftOut = readSheet(line.file, sheet);
    sheet.order();
    if (line.wantsStored)
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
