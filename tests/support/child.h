#pragma once

#include <string>
#include <utility>
#include <vector>

namespace VnTest
{

/// How a child process ended and what it wrote.
struct ChildRun
{
    int exitCode = -1;     ///< -1 if it was ended by a signal or by abort()
    bool crashed = false;  ///< ended by a signal, by abort() or by a system exception
    std::string out;
    std::string err;
};

/// A process of its own for what happens once per process.
///
///     VN_CHILD(startTwice) { ...; return 0; }
///
///     TEST(InInitMgr, startsTwice)
///     {
///         const ChildRun run = Child("startTwice").with("NAME", "value").run();
///         EXPECT_EQ(run.out, "...");
///     }
///
/// The test program starts itself again and runs the body named; the body's result is the exit code. It is a new
/// process, not a copy of this one, so the same test runs on Windows. What text mode adds to its streams there is taken
/// away again.
class Child
{
public:
    /// Runs the body `name` of this program.
    explicit Child(std::string name);

    /// Runs another program, of that name in this program's folder.
    static Child program(std::string const& name);

    /// Arguments for the body, or the program.
    Child& arguments(std::vector<std::string> arguments);

    /// Sets and removes environment variables; all others are this process's own.
    Child& with(std::string name, std::string value);
    Child& without(std::string const& name);

    /// Adds an entry to the environment as it stands, well-formed or not.
    Child& withEntry(std::string entry);

    ChildRun run() const;

    /// Runs it with a terminal of so many columns as both its output streams; `out` has what it got, and nothing is
    /// changed on the way. Linux only, where a terminal can be made without a screen.
    ChildRun runOnTerminal(unsigned short columns) const;

private:
    Child() = default;

    std::vector<std::string> getEnvironment() const;

    std::vector<std::string> _command;
    std::vector<std::string> _added;
    std::vector<std::string> _removed;  ///< names
};

using ChildBody = int (*)(int argc, char** argv);

/// Runs the body that the command line asks for, with what follows as its arguments behind the program's name. False
/// if none is asked for.
bool runChildBody(int argc, char** argv, int& exitCode);

struct ChildRegistration
{
    ChildRegistration(char const* name, ChildBody body);
};

/// Path by which the running test program is started again, and the folder that holds it.
std::string getProgramPath();
std::string getProgramFolder();

/// Path of the file that this process was loaded from. Under an emulator it can't be started as it stands.
std::string getProgramFile();

/// What the file that starts a program is called behind the program's name.
extern char const* const programSuffix;

// Platform side, in childposix.cpp and childwindows.cpp.
std::vector<std::string> getOwnEnvironment();
ChildRun runProcess(std::vector<std::string> const& command, std::vector<std::string> const& environment);
ChildRun runProcessOnTerminal(std::vector<std::string> const& command, std::vector<std::string> const& environment,
                              unsigned short columns);

}  // namespace VnTest

/// Defines a body for Child. Arguments: `argc` and `argv`, with the program's name first.
#define VN_CHILD(NAME)                                                                        \
    static int childBody_##NAME(int argc, char** argv);                                       \
    static const VnTest::ChildRegistration childRegistration_##NAME(#NAME, childBody_##NAME); \
    static int childBody_##NAME([[maybe_unused]] int argc, [[maybe_unused]] char** argv)
