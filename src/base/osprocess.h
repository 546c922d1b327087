#pragma once

#include <base/baseexport.h>
#include <base/objptr.h>

namespace Vn
{

/// The record of a child process, in the platform's form.
/// Tests: tests/base/osprocesstest.cpp.
class VN_BASE_EXPORT OsProcessImp
{
public:
    OsProcessImp(OsProcessImp const&) = delete;
    OsProcessImp& operator=(OsProcessImp const&) = delete;
    virtual ~OsProcessImp();

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
/// The child has this process's environment, current directory and standard streams. Nobody asks how it ended, and
/// nothing here ends it: it goes on when its object is destroyed or starts another one. On Linux it leaves no zombie,
/// with two exceptions: where this process takes in orphans, as the first one of a container, and where its children live
/// in another PID namespace (`unshare`), a child that outlives its object is a zombie until the next start. One thread at
/// a time; wait() blocks its own thread only.
/// Tests: tests/base/osprocesstest.cpp, tests/faults/systemfaulttest.cpp, tests/soak/processes.cpp.
class VN_BASE_EXPORT OsProcess
{
public:
    OsProcess() = default;
    OsProcess(OsProcess const&) = delete;
    OsProcess& operator=(OsProcess const&) = delete;
    ~OsProcess();

    /// Starts the program of the null-terminated `argv`, and from then on this is the child that wait() waits for.
    /// Throws ExSysErrorWindows if the system can't, and the earlier child's record stays.
    ///
    /// Linux passes the arguments as they are, looks the program up in `PATH`, and gives it descriptors 0 to 2 and no
    /// others. No other thread may change the environment meanwhile. A start takes the same time whatever memory this
    /// process holds (since Linux 5.4). Windows is given one line: the texts with a blank behind each, so that a text with
    /// a blank in it splits.
    void start(char const* const* argv);

    /// Until the child that was started last has ended; at once without one, or if it has ended already. Throws
    /// ExSysErrorWindows if Linux can't wait; it can be called again.
    void wait();

private:
    ObjPtr<OsProcessImp> _imp;  ///< null until the first start()
};

}  // namespace Vn
