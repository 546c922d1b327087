// osdirectorywindows.cpp (Linux form: osdirectoryposix.cpp)
#include <base/osdirectory_p.h>

#include <base/exsyserror.h>
#include <base/osfilepath.h>

#include <windows.h>

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
}  // namespace

struct DirectoryListing::State
{
    ~State()
    {
        if (search != INVALID_HANDLE_VALUE)
            ::FindClose(search);
    }

    HANDLE search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAA entry;
    bool isFresh = true;  ///< the entry has come with the search and wasn't looked at yet
};

DirectoryListing::DirectoryListing(char const* directory) : _state(std::make_unique<State>())
{
    const OsFilePath pattern = OsFilePath(directory) + "*";
    _state->search = ::FindFirstFileA(pattern.getChars(), &_state->entry);
    if (_state->search == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_NO_MORE_FILES)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

DirectoryListing::~DirectoryListing() = default;

bool DirectoryListing::next()
{
    if (_state->search == INVALID_HANDLE_VALUE)
        return false;
    for (;;) {
        if (!_state->isFresh && !::FindNextFileA(_state->search, &_state->entry)) {
            if (::GetLastError() != ERROR_NO_MORE_FILES)
                throw ExSysErrorWindows(sourceName, __LINE__);
            return false;
        }
        _state->isFresh = false;
        if (isSelfOrParent(_state->entry.cFileName))
            continue;
        _name = _state->entry.cFileName;
        const bool isDirectory = (_state->entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        _kind = isDirectory ? Kind::Directory : Kind::Other;
        return true;
    }
}

}  // namespace Vn::System
