#pragma once

#include <base/baseexport.h>
#include <base/objptr.h>

namespace Vn
{

/// A child process in the form of the platform. OsProcess makes and owns it; programs have no use for it.
/// Tests: tests/base/osprocesstest.cpp.
class VN_BASE_EXPORT OsProcessImp
{
public:
    OsProcessImp(OsProcessImp const&) = delete;
    OsProcessImp& operator=(OsProcessImp const&) = delete;

    /// Gives up the child, which runs on.
    virtual ~OsProcessImp();

    /// Blocks until the child has ended; at once if it has. Can be repeated.
    virtual void wait() = 0;

protected:
    OsProcessImp() = default;
};

/// Starts another program and waits for it.
///
///     char const* const command[] = {"convert", "in.exr", "out.exr", nullptr};
///     Vn::OsProcess process;
///     process.start(command);
///     process.wait();
///
/// The child has this process's environment, current directory and standard streams. Its exit code is not available,
/// and nothing here ends it: it runs on when its object is destroyed or starts another one. On Linux it leaves no
/// zombie, with two exceptions: where this process takes in orphans, as the first one of a container, and where its
/// children live in another PID namespace (`unshare`), a child that outlives its object is a zombie until the next start.
/// One thread at a time per object; wait() blocks its own thread only.
/// Tests: tests/base/osprocesstest.cpp, tests/faults/systemfaulttest.cpp, tests/soak/processes.cpp.
class VN_BASE_EXPORT OsProcess
{
public:
    /// Without a child.
    OsProcess() = default;
    OsProcess(OsProcess const&) = delete;
    OsProcess& operator=(OsProcess const&) = delete;

    /// Gives up the child, which runs on. Does not wait.
    ~OsProcess();

    /// Starts the program `argv[0]`; `argv` ends with null. Returns once the program runs. From then on wait()
    /// concerns this child; an earlier one runs on.
    ///
    ///     {"convert", "a b.exr", nullptr}  ->  Linux: one argument "a b.exr"
    ///                                          Windows: the line "convert a b.exr ", so two arguments
    ///     {nullptr}                        ->  throws ExSysErrorWindows
    ///     no such program                  ->  throws ExSysErrorWindows (ENOENT on Linux)
    ///
    /// After an exception the object still has its earlier child. Linux looks the program up in `PATH` and gives it
    /// no descriptors but 0 to 2; no other thread may change the environment meanwhile. Windows appends a blank to
    /// each text and quotes nothing. A start takes the same time however much memory this process holds (since
    /// Linux 5.4).
    void start(char const* const* argv);

    /// Blocks the calling thread until the child that was started last has ended.
    ///
    ///     never started              ->  returns at once
    ///     the child has ended        ->  returns at once, also repeatedly
    ///     started twice              ->  waits for the second child
    ///
    /// Throws ExSysErrorWindows if Linux cannot wait; the call can be repeated.
    void wait();

private:
    ObjPtr<OsProcessImp> _imp;  ///< null until the first start()
};

}  // namespace Vn
