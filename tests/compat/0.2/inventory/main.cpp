// inventory: what a folder holds, by suffix, every file read; and a copy of it, compared byte for byte. Shows a program of
// the family: two packages of its own, settings from four sources, a start and stop that the library orders, the
// system's files, dates, processor and modules as the library tells them, and threads that log while they read.
#include "machine.h"
#include "scanner.h"
#include "settings.h"
#include "terminal.h"
#include "threadlog.h"
#include "treecopy.h"
#include "version.h"

#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inoptionparser.h>
#include <base/osfsutils.h>

#include <cstring>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using namespace Inventory;

constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;

/// The command line asks for something that doesn't exist.
class WrongUse : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What the program takes from the raw arguments, before the library has them.
struct CommandLine
{
    bool wantsHelp = false;
    bool wantsGraph = false;
    bool wantsVersion = false;
    bool wantsBuild = false;
    std::vector<char*> arguments;  ///< without the long words
};

void checkOption(int option, char const* value, char const* element)
{
    if (option == '?')
        throw WrongUse(std::string("unknown option in ") + element);
    const bool takesValue = option == 'c' || option == 'd' || option == 's';
    if (takesValue && value == nullptr)
        throw WrongUse(std::string("a value is missing behind ") + element);
    if (option == 'd' && !Settings::isDepth(value))
        throw WrongUse(std::string("-d takes a number of levels, not ") + value);
    if (option == 's' && !Settings::isOrder(value))
        throw WrongUse(std::string("-s takes bytes, files or suffix, not ") + value);
}

void takeLongWord(std::string const& word, CommandLine& line)
{
    if (word == "--help")
        line.wantsHelp = true;
    else if (word == "--graph")
        line.wantsGraph = true;
    else if (word == "--version")
        line.wantsVersion = true;
    else if (word == "--build")
        line.wantsBuild = true;
    else
        throw WrongUse("unknown option " + word);
}

/// Long words end the library's option parsing, so they are looked for here and taken out.
CommandLine readCommandLine(int argc, char** argv)
{
    CommandLine line;
    line.arguments.assign(argv, argv + argc);
    for (;;) {
        std::vector<char*>& arguments = line.arguments;
        Vn::InOptionParser parser(static_cast<int>(arguments.size()), arguments.data(), Settings::optionLetters);
        int last = 0;  // index of the last element that belongs to an option
        for (int option = parser.getOption(); option != -1; option = parser.getOption()) {
            last = parser.getArgumentIndex();
            checkOption(option, parser.getValue(), arguments[static_cast<std::size_t>(last)]);
            line.wantsHelp |= option == 'h';
        }
        // An end mark is consumed, an operand is not.
        const bool isMarked = parser.getArgumentIndex() == last + 2;
        const auto mark = arguments.begin() + last + 1;
        if (!isMarked || std::strcmp(*mark, "--") == 0)
            return line;
        takeLongWord(*mark, line);
        arguments.erase(mark);
    }
}

void checkEnvironment()
{
    char const* const depth = Vn::InInitMgr::getEnv("INVENTORY_DEPTH");
    if (depth != nullptr && !Settings::isDepth(depth))
        throw WrongUse(std::string("INVENTORY_DEPTH must be a number of levels, not ") + depth);
    char const* const order = Vn::InInitMgr::getEnv("INVENTORY_ORDER");
    if (order != nullptr && !Settings::isOrder(order))
        throw WrongUse(std::string("INVENTORY_ORDER must be bytes, files or suffix, not ") + order);
}

void printHelp()
{
    std::cout << "inventory [OPTION]... FOLDER: files and bytes in a folder, by suffix.\n\n";
    Settings::printHelp(std::cout);
    std::cout
        << "  -h, --help   this text\n"
           "  --graph      the packages and their dependencies in the DOT language, instead of a folder\n"
           "  --version    the program and its libraries, instead of a folder\n"
           "  --build      the same, with who built them\n\n"
           "An option counts more than its variable, and that more than the default.\n\n"
           "  VN_LOG_GROUPS=Inventory=Informational   logs each file that is read\n"
           "  VN_LOG_INFORMATIONAL=%FILE              into FILE, and to the standard output; docs/logging.md has\n"
           "                                          all variables of the log\n"
           "  VN_TRACE_OPTIONS=show=Inventory         draws the calls\n\n"
           "Exit code: 0 for success, 1 for a failure, 2 for wrong use.\n";
}

std::string takeFolder()
{
    Vn::Vector<char*> const& arguments = Vn::InContextAliasMgrBase::getUnboundArgs();
    if (arguments.size() != 2)
        throw WrongUse(arguments.size() < 2 ? "which folder?" : "one folder at a time");
    const std::string folder = arguments[1];
    if (!Vn::OsFsUtils::isDirectory(folder.c_str()))
        throw WrongUse("there is no folder " + folder);
    return folder;
}

/// Numbers and a list of names, each with the reason.
void printUnread(std::vector<Findings::Unread> const& unread)
{
    std::cout << "\nNot read: " << unread.size() << "\n";
    for (Findings::Unread const& one : unread)
        std::cout << "  " << one.name << ": " << one.reason << "\n";
}

bool copy(Findings const& findings, std::string const& folder, std::string const& target)
{
    const CopyResult result = copyTree(findings, folder, target);
    std::cout << "\nCopied to " << target << ", and compared byte for byte: " << result.folders << " folders, "
              << result.files << " files\n";
    for (std::string const& failure : result.failures)
        std::cout << "  failed: " << failure << "\n";
    return result.failures.empty();
}

/// False if a copy was asked for and a part of it failed.
bool printInventory(std::string const& folder)
{
    std::cout << "Packages, in the order in which they came up:\n" << Vn::InInitMgr::getInstance();
    std::cout << "\nSettings, and where each comes from:\n";
    Settings::print(std::cout);
    std::cout << "\nArguments that no option took:\n ";
    for (char const* argument : Vn::InContextAliasMgrBase::getUnboundArgs())
        std::cout << " " << argument;

    std::cout << "\n\nMachine:\n";
    printMachine(std::cout);
    std::cout << "\nModules of this process, and the bytes of memory that each takes:\n";
    printModules(std::cout);

    Scanner& scanner = Scanner::getInstance();
    scanner.scan(folder);
    std::cout << "\nInventory of " << folder << ":\n";
    scanner.print(std::cout, Settings::order.getValue());
    std::cout << "\nThe largest files, with time of modification, owner and checksum:\n";
    scanner.printLargest(std::cout, 5);
    printUnread(scanner.getFindings().unread);
    std::cout << "\nPasses, and how long each took:\n";
    scanner.printPasses(std::cout);
    std::cout << "\nWhere messages of each level go:\n";
    Vn::LgLog::displaySetup();
    const std::string target = Settings::copy.getValue();
    return target.empty() || copy(scanner.getFindings(), folder, target);
}

int run(int argc, char** argv)
{
    CommandLine line = readCommandLine(argc, argv);
    if (line.wantsHelp) {
        printHelp();
        return success;
    }
    checkEnvironment();
    if (!isErrorStreamATerminal())
        Vn::InVariableBase::overrideViaHandle("inventory.progress", "false", "nobody watches the error stream");

    int count = static_cast<int>(line.arguments.size());
    char const* const* arguments = line.arguments.data();
    Vn::InInitGuard guard(count, arguments);
    const ThreadLog log;
    bool isWhole = true;
    if (line.wantsGraph)
        Vn::InInitMgr::getInstance().dumpGraph(std::cout);
    else if (line.wantsVersion || line.wantsBuild)
        printVersion(std::cout, line.wantsBuild);
    else
        isWhole = printInventory(takeFolder());
    std::cout.flush();
    if (!std::cout)
        throw std::runtime_error("the standard output stream can't be written");
    return isWhole ? success : failed;
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (WrongUse const& wrong) {
        std::cerr << "inventory: " << wrong.what() << "; inventory -h tells more\n";
        return wronglyUsed;
    } catch (std::exception const& failure) {
        std::cerr << "inventory: " << failure.what() << "\n";
        return failed;
    }
}
