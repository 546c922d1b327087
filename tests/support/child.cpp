#include "child.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>

namespace VnTest
{
namespace
{
constexpr char childOption[] = "--child";

std::map<std::string, ChildBody>& bodies()
{
    static std::map<std::string, ChildBody> theBodies;
    return theBodies;
}

bool bearsName(std::string const& entry, std::string const& name)
{
    return entry.compare(0, name.size() + 1, name + "=") == 0;
}
}  // namespace

Child::Child(std::string name) : _command{getProgramPath(), childOption, std::move(name)} {}

Child Child::program(std::string const& name)
{
    Child child;
    child._command.push_back(getProgramFolder() + "/" + name + programSuffix);
    return child;
}

Child& Child::arguments(std::vector<std::string> arguments)
{
    _command.insert(_command.end(), arguments.begin(), arguments.end());
    return *this;
}

Child& Child::with(std::string name, std::string value)
{
    without(name);
    return withEntry(name + "=" + value);
}

Child& Child::without(std::string const& name)
{
    _removed.push_back(name);
    std::erase_if(_added, [&name](std::string const& entry) { return bearsName(entry, name); });
    return *this;
}

Child& Child::withEntry(std::string entry)
{
    _added.push_back(std::move(entry));
    return *this;
}

std::vector<std::string> Child::getEnvironment() const
{
    std::vector<std::string> environment = getOwnEnvironment();
    for (std::string const& name : _removed)
        std::erase_if(environment, [&name](std::string const& entry) { return bearsName(entry, name); });
    environment.insert(environment.end(), _added.begin(), _added.end());
    return environment;
}

ChildRun Child::run() const
{
    return runProcess(_command, getEnvironment());
}

ChildRun Child::runOnTerminal(unsigned short columns) const
{
    return runProcessOnTerminal(_command, getEnvironment(), columns);
}

bool runChildBody(int argc, char** argv, int& exitCode)
{
    if (argc < 3 || std::strcmp(argv[1], childOption) != 0)
        return false;
    const auto found = bodies().find(argv[2]);
    if (found == bodies().end()) {
        std::fprintf(stderr, "no child body '%s'\n", argv[2]);
        exitCode = 127;
        return true;
    }
    argv[2] = argv[0];
    exitCode = found->second(argc - 2, argv + 2);
    return true;
}

ChildRegistration::ChildRegistration(char const* name, ChildBody body)
{
    bodies().emplace(name, body);
}

std::string getProgramFolder()
{
    const std::string path = getProgramPath();
    return path.substr(0, path.find_last_of("/\\"));
}

}  // namespace VnTest
