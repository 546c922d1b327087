// filewatchlinux.cpp (Windows form: filewatchwindows.cpp)
//
// inotify tells of writes to the file, and of names that come and go in its folder. A watch on the file stays with the file that
// it was made for, wherever that is renamed to.
#include "filewatch.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/inotify.h>
#include <unistd.h>

namespace vnlog
{
namespace
{
constexpr int millisecondsAtMost = 1000;
}

struct FileWatch::State
{
    int descriptor = -1;
    int file = -1;
};

FileWatch::FileWatch(std::string const& name) : _name(name), _state(std::make_unique<State>())
{
    _state->descriptor = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (_state->descriptor < 0)
        throw std::runtime_error("cannot watch '" + name + "': " + std::strerror(errno));
    const std::filesystem::path folder = std::filesystem::path(name).parent_path();
    // Without these watches, wait() still returns once a second.
    ::inotify_add_watch(_state->descriptor, folder.empty() ? "." : folder.c_str(),
                        IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE);
    renew();
}

FileWatch::~FileWatch()
{
    ::close(_state->descriptor);
}

void FileWatch::renew()
{
    const int file =
        ::inotify_add_watch(_state->descriptor, _name.c_str(), IN_MODIFY | IN_MOVE_SELF | IN_DELETE_SELF);
    if (_state->file >= 0 && file != _state->file)
        ::inotify_rm_watch(_state->descriptor, _state->file);
    _state->file = file;
}

void FileWatch::wait()
{
    struct ::pollfd events = {_state->descriptor, POLLIN, 0};
    ::poll(&events, 1, millisecondsAtMost);
    // Which events there were does not matter.
    alignas(struct ::inotify_event) std::array<char, 4096> dropped;
    while (::read(_state->descriptor, dropped.data(), dropped.size()) > 0) {
    }
}

}  // namespace vnlog
