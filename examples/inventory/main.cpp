// inventory: what a folder holds, by suffix, every file read; and a copy of it, compared byte for byte. Shows a program of
// the family: two packages of its own, settings from four sources, a start and stop that the library orders, the
// system's files, dates, processor and modules as the library tells them, and threads that log while they read.
#include "machine.h"
#include "scanner.h"
#include "settings.h"
#include "treecopy.h"
#include "version.h"

#include <threadlog/threadlog.h>

#include <base/dbgbuildinfomgr.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inusage.h>
#include <base/lglog.h>
#include <base/osfsutils.h>
#include <base/osterminal.h>

#include <exception>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using namespace Inventory;

constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;

constexpr std::size_t usualRows = 20;
constexpr std::size_t mostRows = std::numeric_limits<std::size_t>::max();

/// Names and reasons come from outside.
std::string shown(std::string const& text)
{
    return Vn::OsTerminal::shown(text);
}

/// The command line asks for something that doesn't exist.
class WrongUse : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

std::string takeFolder()
{
    Vn::Vector<char*> const& arguments = Vn::InContextAliasMgrBase::getUnboundArgs();
    if (arguments.size() < 2)
        throw WrongUse("which folder?");
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
        std::cout << "  " << shown(one.name) << ": " << shown(one.reason) << "\n";
}

bool copy(Findings const& findings, std::string const& folder, std::string const& target)
{
    const CopyResult result = copyTree(findings, folder, target);
    std::cout << "\nCopied to " << shown(target) << ", and compared byte for byte: " << result.folders
              << " folders, " << result.files << " files\n";
    for (std::string const& failure : result.failures)
        std::cout << "  failed: " << shown(failure) << "\n";
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
        std::cout << " " << shown(argument);

    std::cout << "\n\nMachine:\n";
    printMachine(std::cout);
    std::cout << "\nModules of this process, and the bytes of memory that each takes:\n";
    printModules(std::cout);

    Scanner& scanner = Scanner::getInstance();
    scanner.scan(folder);
    std::cout << "\nInventory of " << shown(folder) << ":\n";
    scanner.print(std::cout, Settings::order.getValue(), Settings::all.getValue() ? mostRows : usualRows);
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
    registerVersion();
    bool wantsGraph = false;
    bool wantsBuild = false;
    const Vn::InUsage usage =
        Settings::getUsage()
            .word("--graph", "the packages and their dependencies in the DOT language, instead of a folder",
                  wantsGraph)
            .word("--build", "the libraries that have started, and who built them, instead of a folder",
                  wantsBuild);
    if (auto const end = usage.handle(argc, argv))
        return *end;
    if (!Vn::OsTerminal::isStandardError())
        Vn::InVariableBase::overrideViaHandle("inventory.progress", "false", "nobody watches the error stream");

    Vn::InVariableBase::overrideViaHandle("threadlog.wait", "all", "a line for each file is wanted");
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    const Vn::ThreadLog log;
    bool isWhole = true;
    if (wantsGraph)
        Vn::InInitMgr::getInstance().dumpGraph(std::cout);
    else if (wantsBuild)
        Vn::DbgBuildInfoMgr::printBuildInfo(std::cout, true);
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
        std::cerr << "inventory: " << shown(wrong.what()) << "; inventory -h tells more\n";
        return wronglyUsed;
    } catch (Vn::InEx::ExPackageNotRegistered const& failure) {
        std::cerr << "inventory: nothing in this process registers the package " << failure.getPackageTag()
                  << ", which another package needs; link or load the library that has it\n";
        return failed;
    } catch (std::exception const& failure) {
        std::cerr << "inventory: " << shown(failure.what()) << "\n";
        return failed;
    }
}
