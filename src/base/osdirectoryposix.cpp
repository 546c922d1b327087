// osdirectoryposix.cpp (Windows form: osdirectorywindows.cpp)
#include <base/osdirectory_p.h>

#include <base/exsyserror.h>
#include <base/osposix_p.h>

#include <dirent.h>

#include <cerrno>
#include <cstring>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osdirectorywindows";

bool isSelfOrParent(char const* name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

DirectoryListing::Kind kindOf(::dirent const& entry)
{
    switch (entry.d_type) {
    case DT_DIR:
        return DirectoryListing::Kind::Directory;
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
    do {
        _state->stream = ::opendir(path);
    } while (_state->stream == nullptr && errno == EINTR);
    if (_state->stream == nullptr)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

DirectoryListing::~DirectoryListing() = default;

bool DirectoryListing::next()
{
    for (;;) {
        errno = 0;  // the end and a failure look alike otherwise
        ::dirent const* const entry = ::readdir(_state->stream);
        if (entry == nullptr && errno == EINTR)
            continue;
        if (entry == nullptr && errno != 0)
            throw ExSysErrorWindows(sourceName, __LINE__);
        if (entry == nullptr)
            return false;
        if (isSelfOrParent(entry->d_name))
            continue;
        _name = entry->d_name;
        _kind = kindOf(*entry);
        return true;
    }
}

}  // namespace Vn::System
