// osprocesswindows.cpp (POSIX form: osprocesslinux.cpp)
//
// CreateProcessA() takes the line's first word for the program, appends ".exe" if that has no extension, and searches
// the program's own directory, the current one, the system's and `PATH`. No handles are inherited. The two handles
// that we get are ours to close; closing them does not end the child.
#include <base/osprocess_p.h>

#include <base/exsyserror.h>
#include <base/oscommandline_p.h>

#include <windows.h>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/osprocesswindows";

/// Owner of a child's two handles. The exit code is not asked for.
class OsProcessWindows : public OsProcessImp
{
public:
    explicit OsProcessWindows(char const* const* argv)
    {
        std::string line = commandLineOf(argv);  // not const: the system may write into it
        ::STARTUPINFOA startup = {};
        static_assert(sizeof startup == 104);  // the system tells versions of the structure apart by the size
        startup.cb = sizeof startup;
        if (!::CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                              &_processInfo))
            throw ExSysErrorWindows(sourceName, __LINE__);
    }

    ~OsProcessWindows() override
    {
        ::CloseHandle(_processInfo.hProcess);
        ::CloseHandle(_processInfo.hThread);
    }

    /// Returns at once after the end, so it can be repeated.
    void wait() override { ::WaitForSingleObject(_processInfo.hProcess, INFINITE); }

private:
    ::PROCESS_INFORMATION _processInfo;
};
}  // namespace

ObjPtrRet<OsProcessImp> System::startProcess(char const* const* argv)
{
    return ObjPtrRet<OsProcessImp>(new OsProcessWindows(argv));
}

}  // namespace Vn
