// osdirectoryposix.cpp (Windows form: osdirectorywindows.cpp)
//
// opendir() and readdir(). Most file systems put an entry's type into the listing (d_type); those that don't, and
// symlinks, whose targets the listing doesn't tell, are Unknown.
#include <base/osdirectory_p.h>

#include <base/exsyserror.h>
#include <base/osposix_p.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osdirectorywindows";

/// The type of the entry itself; that of a symlink's target is not known here.
DirectoryListing::Kind kindOf(::dirent const& entry)
{
    switch (entry.d_type) {
    case DT_DIR:
        return DirectoryListing::Kind::Directory;
    case DT_REG:
        return DirectoryListing::Kind::RegularFile;
    case DT_LNK:
    case DT_UNKNOWN:
        return DirectoryListing::Kind::Unknown;
    default:
        return DirectoryListing::Kind::Other;
    }
}
}  // namespace

struct DirectoryListing::State
{
    ~State()
    {
        if (stream != nullptr)
            ::closedir(stream);
    }

    ::DIR* stream = nullptr;
};

DirectoryListing::DirectoryListing(char const* directory) : _state(std::make_unique<State>())
{
    char const* const path = directory[0] != '\0' ? directory : ".";
    // A signal may interrupt the opening on a network file system.
    do {
        _state->stream = ::opendir(path);
    } while (_state->stream == nullptr && errno == EINTR);
    if (_state->stream == nullptr)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

// Through a duplicate, since closing the stream closes its descriptor.
DirectoryListing::DirectoryListing(OpenDirectory const& directory) : _state(std::make_unique<State>())
{
    Posix::Descriptor copy(::fcntl(static_cast<int>(directory.getHandle()), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (copy.isOpen())
        _state->stream = ::fdopendir(copy.get());
    if (_state->stream == nullptr)
        throw ExSysErrorWindows(sourceName, __LINE__);
    copy.release();
}

// Here, where State is complete; it closes the stream.
DirectoryListing::~DirectoryListing() = default;

bool DirectoryListing::readEntry()
{
    ::dirent const* entry;
    do {
        errno = 0;  // null is the end or a failure, and only `errno` tells which
        entry = ::readdir(_state->stream);
    } while (entry == nullptr && errno == EINTR);
    if (entry == nullptr && errno != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if (entry == nullptr)
        return false;
    _name = entry->d_name;
    _kind = kindOf(*entry);
    _links = _kind == Kind::Unknown ? Links::Followed : Links::Refused;
    return true;
}

bool DirectoryListing::leadsToDirectory() const
{
    struct ::stat status;
    return Posix::retry([&] { return ::fstatat(::dirfd(_state->stream), _name, &status, 0); }) == 0 &&
           S_ISDIR(status.st_mode);
}

}  // namespace Vn::System
