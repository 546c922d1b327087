#pragma once

#include <string>
#include <vector>

namespace VnTest
{

/// Notes which variables this thread asks the C library for, for as long as this lives.
class WatchedEnvironment
{
public:
    WatchedEnvironment();
    ~WatchedEnvironment();
    WatchedEnvironment(WatchedEnvironment const&) = delete;
    WatchedEnvironment& operator=(WatchedEnvironment const&) = delete;

    std::vector<std::string> const& getAsked() const { return _asked; }

    void note(char const* name) { _asked.push_back(name); }

private:
    std::vector<std::string> _asked;
};

/// For as long as this lives, the system says that the process has more rights than its caller.
class MoreRights
{
public:
    MoreRights();
    ~MoreRights();
    MoreRights(MoreRights const&) = delete;
    MoreRights& operator=(MoreRights const&) = delete;
};

}  // namespace VnTest
