#pragma once

#include <string>

namespace VnTest
{

/// Lets one process wait for another one's word, once. Both are given the same name, which is that of no file.
class Gate
{
public:
    explicit Gate(std::string name);
    ~Gate();
    Gate(Gate const&) = delete;
    Gate& operator=(Gate const&) = delete;

    /// The name, for the command line of the other process, which makes no gate but takes part in it.
    std::string const& name() const { return _name; }

    void open() { open(_name); }
    void wait() { wait(_name); }

    static void open(std::string const& name);
    static void wait(std::string const& name);

private:
    std::string _name;
    [[maybe_unused]] void* _handle;  ///< where the system has one
};

}  // namespace VnTest
