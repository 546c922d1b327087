#pragma once

#include <base/inusage.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace vnlog
{

/// What main() knows of a command. Each has its own source, and a row in the table of main.cpp.
struct Command
{
    char const* name;     ///< of one word, as it is given
    char const* summary;  ///< a few words, for the list of commands
    Vn::InUsage (
        *getUsage)();  ///< declares the settings of the command, and no other's; called once, before the start
    int (*run)(std::vector<std::string> const& operands);  ///< called behind the start; gives the exit code
};

constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;

/// The command line asks for something that doesn't exist. Ends the program with `wronglyUsed`.
class WrongUse : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A line on standard error that begins with the program's name. Control characters are shown.
void warn(std::string const& text);

}  // namespace vnlog
