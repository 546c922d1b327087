#pragma once

#include <memory>
#include <string>

namespace vnlog
{

/// Waits until a file may have changed, or another one may have its name. Forms: filewatchlinux.cpp, filewatchwindows.cpp.
class FileWatch
{
public:
    /// Watches from now on: what happens between this and wait() is not missed. Throws std::runtime_error if the system refuses.
    explicit FileWatch(std::string const& name);
    ~FileWatch();
    FileWatch(FileWatch const&) = delete;
    FileWatch& operator=(FileWatch const&) = delete;

    /// Blocks until there is something to look at. May return without a reason, and does so once a second: a change on another
    /// machine's disk is seen by nobody else.
    void wait();

    /// The name stands for another file now: watch that one.
    void renew();

private:
    struct State;

    std::string _name;
    std::unique_ptr<State> _state;
};

}  // namespace vnlog
