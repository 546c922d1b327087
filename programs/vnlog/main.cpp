// vnlog: shows, merges and counts the logs that programs of the family write.
//
// Each command has a source of its own and a row in the table below. A command declares its settings when it is chosen and not
// before, so "vnlog show --help" tells those of show alone, and two commands may give one letter two meanings. The library makes
// help, pages and completion from the declarations; the name that it sees is "vnlog show".
//
// A program of the library opens its own log when it starts, and empties the default files, which may be the very log that
// somebody wants to read. This one switches all its outputs off first.
#include "command.h"
#include "settings.h"
#include "show.h"
#include "timeline.h"

#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/osenv.h>
#include <base/osterminal.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using namespace vnlog;

constexpr Command commands[] = {showCommand, timelineCommand};

Command const* findCommand(std::string_view name)
{
    const auto found = std::find_if(std::begin(commands), std::end(commands),
                                    [name](Command const& command) { return command.name == name; });
    return found != std::end(commands) ? found : nullptr;
}

/// The whole program's: what it does, and a list of its commands.
Vn::InUsage getUsage()
{
    std::string list = "Commands:";
    for (Command const& command : commands)
        list += std::string("\n  ") + command.name + "  " + command.summary;
    return Vn::InUsage("Reads the logs that programs of the family write.")
        .operands("COMMAND [OPTION]... [FILE]...", 1)
        .note(list.c_str())
        .note("vnlog COMMAND -h tells the options of a command.")
        .note("Exit code: 0 for success, 1 for a failure, 2 for wrong usage.");
}

/// Settings of the library that concern a program's own log: none is written here, and nothing is said about it.
void silenceOwnLog()
{
    for (char const* level :
         {"INTERNAL_ERROR", "FATAL_ERROR", "RECOVERABLE_ERROR", "WARNING", "INFORMATIONAL", "TRACING", "PROFILING"})
        Vn::OsEnv::putVariable((std::string("VN_LOG_") + level + "=--").c_str());
    for (char const* name : {"VN_LOG_GROUPS=", "VN_INTERNAL_INTERPROCESS_LOG_LOCK=", "VN_TRACE_OPTIONS="})
        Vn::OsEnv::putVariable(name);
}

int runCommand(Command const& command, int argc, char** argv)
{
    std::string name = std::string("vnlog ") + command.name;
    argv[0] = name.data();
    if (auto const end = command.getUsage().handle(argc, argv))
        return *end;
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Vn::Vector<char*> const& unbound = Vn::InContextAliasMgrBase::getUnboundArgs();
    std::vector<std::string> operands;
    for (auto argument = unbound.begin(); argument != unbound.end(); ++argument)
        if (argument != unbound.begin())
            operands.emplace_back(*argument);
    return command.run(operands);
}

int run(int argc, char** argv)
{
    silenceOwnLog();
    if (argc > 1 && argv[1][0] != '-') {
        if (Command const* const command = findCommand(argv[1]))
            return runCommand(*command, argc - 1, argv + 1);
        throw WrongUse("there is no command '" + std::string(argv[1]) + "'");
    }
    std::string name = "vnlog";
    if (argc > 0)
        argv[0] = name.data();
    if (auto const end = getUsage().handle(argc, argv))
        return *end;
    throw WrongUse("which command?");
}
}  // namespace

void vnlog::warn(std::string const& text)
{
    std::cerr << "vnlog: " << Vn::OsTerminal::shown(text) << "\n";
}

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (WrongUse const& wrong) {
        warn(std::string(wrong.what()) + "; vnlog -h tells more");
        return wronglyUsed;
    } catch (std::exception const& failure) {
        warn(failure.what());
        return failed;
    }
}
