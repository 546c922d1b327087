// filewatchwindows.cpp (Linux form: filewatchlinux.cpp)
//
// The system tells of changes in the file's folder; of writes only once it has updated the folder's entry, which may be late, so
// wait() returns four times a second anyway.
#include "filewatch.h"

#include <filesystem>
#include <windows.h>

namespace vnlog
{
namespace
{
constexpr DWORD millisecondsAtMost = 250;
}

struct FileWatch::State
{
    HANDLE handle = INVALID_HANDLE_VALUE;
};

FileWatch::FileWatch(std::string const& name) : _name(name), _state(std::make_unique<State>())
{
    const std::string folder = std::filesystem::path(name).parent_path().string();
    _state->handle = ::FindFirstChangeNotificationA(folder.empty() ? "." : folder.c_str(), FALSE,
                                                    FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE |
                                                        FILE_NOTIFY_CHANGE_LAST_WRITE);
}

FileWatch::~FileWatch()
{
    if (_state->handle != INVALID_HANDLE_VALUE)
        ::FindCloseChangeNotification(_state->handle);
}

void FileWatch::renew() {}

void FileWatch::wait()
{
    if (_state->handle == INVALID_HANDLE_VALUE)
        ::Sleep(millisecondsAtMost);
    else if (::WaitForSingleObject(_state->handle, millisecondsAtMost) == WAIT_OBJECT_0)
        ::FindNextChangeNotification(_state->handle);
}

}  // namespace vnlog
