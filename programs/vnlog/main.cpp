// vnlog: shows, merges and counts the logs that programs of the family write.
//
// Each command has a source of its own and a row in the table below. A command declares its settings when it is chosen and not
// before, so "vnlog show --help" tells those of show alone, and two commands may give one letter two meanings. The library makes
// help, pages and completion from the declarations; the name that it sees is "vnlog show".
//
// A program of the library opens its own log when it starts, and empties the default files, which may be the very log that
// somebody wants to read. This one switches all its outputs off first.
#include "command.h"
#include "merge.h"
#include "settings.h"
#include "show.h"
#include "stats.h"
#include "timeline.h"

#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/osenv.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using namespace vnlog;

constexpr Command commands[] = {showCommand, mergeCommand, statsCommand, timelineCommand};

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

/// The page of a command is found as "vnlog-show", and a page's name has no blank; what is typed does.
void printManPage(Command const& command)
{
    const std::string name = std::string("vnlog-") + command.name;
    std::ostringstream page;
    command.getUsage().printManPage(page, name.c_str());
    std::string text = page.str();
    const std::string bold = std::string("\\fBvnlog\\-") + command.name + "\\fR";
    const std::size_t found = text.find(bold, text.find(".SH SYNOPSIS"));
    if (found != std::string::npos)
        text.replace(found, bold.size(), std::string("\\fBvnlog ") + command.name + "\\fR");
    std::cout << text;
}

/// Completes the name of a command. What stands behind that the command's own function completes, which the program that is being
/// typed prints when it is needed first.
void printBashCompletion()
{
    std::cout << "# Completion of vnlog for bash; each command brings its own.\n"
                 "_vnlog()\n"
                 "{\n"
                 "    local command=${COMP_WORDS[1]} word\n"
                 "    COMPREPLY=()\n"
                 "    if ((COMP_CWORD == 1)); then\n"
                 "        for word in";
    for (Command const& command : commands)
        std::cout << " '" << command.name << "'";
    std::cout << " '-h' '--help' '--settings' '--version'; do\n"
                 "            [[ $word != \"$command\"* ]] || COMPREPLY+=(\"$word\")\n"
                 "        done\n"
                 "        return\n"
                 "    fi\n"
                 "    case $command in\n"
                 "    ";
    for (Command const& command : commands)
        std::cout << (&command != std::begin(commands) ? " | " : "") << command.name;
    std::cout
        << ") ;;\n"
           "    *) return ;;\n"
           "    esac\n"
           "    if ! declare -F \"_vnlog_$command\" > /dev/null; then\n"
           "        eval \"$(\"${COMP_WORDS[0]}\" \"$command\" \"--help=bash:vnlog-$command\" 2> /dev/null)\"\n"
           "    fi\n"
           "    COMP_WORDS=(\"vnlog-$command\" \"${COMP_WORDS[@]:2}\")\n"
           "    ((COMP_CWORD -= 1))\n"
           "    ! declare -F \"_vnlog_$command\" > /dev/null || \"_vnlog_$command\"\n"
           "}\n"
           "complete -o filenames -F _vnlog 'vnlog'\n";
}

/// A page for those who package the program, which the library would make of one command alone, or under its typed name. True if
/// that was asked for.
bool printPage(Command const* command, int argc, char** argv)
{
    if (argc != 2)
        return false;
    const std::string_view word = argv[1];
    const auto is = [word](std::string_view page) {
        return word.starts_with(page) && (word.size() == page.size() || word[page.size()] == ':');
    };
    if (command == nullptr && is("--help=bash"))
        printBashCompletion();
    else if (command != nullptr && is("--help=man"))
        printManPage(*command);
    else
        return false;
    if (!std::cout.flush())
        throw std::runtime_error("the standard output can't be written");
    return true;
}

int runCommand(Command const& command, int argc, char** argv)
{
    if (printPage(&command, argc, argv))
        return success;
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
    if (printPage(nullptr, argc, argv))
        return success;
    std::string name = "vnlog";
    if (argc > 0)
        argv[0] = name.data();
    if (auto const end = getUsage().handle(argc, argv))
        return *end;
    throw WrongUse("which command?");
}
}  // namespace

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
