// osprocesswindows.cpp (POSIX form: osprocesslinux.cpp)
#include <base/osprocess_p.h>

#include <base/exsyserror.h>
#include <base/oscommandline_p.h>

#include <windows.h>

namespace Vn
{
namespace
{
constexpr char const* sourceName = "src/base/osprocesswindows";

class OsProcessWindows : public OsProcessImp
{
public:
    explicit OsProcessWindows(char const* const* argv)
    {
        std::string line = commandLineOf(argv);  // the system may write into it
        ::STARTUPINFOA startup = {};
        static_assert(sizeof startup == 104);
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
