// osdirectorywindows.cpp (Linux form: osdirectoryposix.cpp)
//
// FindFirstFileA() opens the search and returns its first entry together, so that entry waits for the first call of
// readEntry(). Every entry has its attributes with it: no child's kind is Unknown. A reparse point counts as what it
// stands for, a directory or not, and is a link that may be followed.
#include <base/osdirectory_p.h>

#include <base/exsyserror.h>
#include <base/osfilepath_p.h>

#include <windows.h>

#include <string>

namespace Vn::System
{
namespace
{
constexpr char sourceName[] = "src/base/osdirectorywindows";
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
    bool isFirst = true;  ///< the entry came with the search, and readEntry() has not been called yet
};

DirectoryListing::DirectoryListing(char const* directory) : _state(std::make_unique<State>())
{
    // "*" and not "*.*": all names, on every file system.
    const std::string pattern = getPathGrammar().join(directory, "*");
    _state->search = ::FindFirstFileA(pattern.c_str(), &_state->entry);
    if (_state->search == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_NO_MORE_FILES)
        throw ExSysErrorWindows(sourceName, __LINE__);
}

// By its path, which leads to the directory for as long as that is open.
DirectoryListing::DirectoryListing(OpenDirectory const& directory) : DirectoryListing(directory.pathOf("").c_str())
{}

// Here, where State is complete; it closes the search.
DirectoryListing::~DirectoryListing() = default;

bool DirectoryListing::readEntry()
{
    if (_state->search == INVALID_HANDLE_VALUE)  // nothing matches: the listing is empty
        return false;
    if (!_state->isFirst && !::FindNextFileA(_state->search, &_state->entry)) {
        if (::GetLastError() != ERROR_NO_MORE_FILES)
            throw ExSysErrorWindows(sourceName, __LINE__);
        return false;
    }
    _state->isFirst = false;
    _name = _state->entry.cFileName;
    const DWORD attributes = _state->entry.dwFileAttributes;
    _kind = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Kind::Directory : Kind::Other;
    _links = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? Links::Followed : Links::Refused;
    return true;
}

// Never asked: the attributes of an entry always tell.
bool DirectoryListing::leadsToDirectory() const
{
    return _kind == Kind::Directory;
}

}  // namespace Vn::System
