// filter() asks the file system about the path it is given, through OsFsUtils. A path at which nothing exists is no
// directory: OsLeafFileFilter passes it, OsDirectoryFilter doesn't. Listings don't call filter() of these three
// classes themselves: they know a child's type already, and apply the same rules to that (ListingFilter in
// osdirectory.cpp).
#include <base/osfilefilter.h>

#include <base/duplicatestring.h>
#include <base/osfsutils.h>

#include <cstring>

namespace Vn
{

OsFileFilter::~OsFileFilter() = default;

// The path is not looked at, and may be anything.
bool OsPassThroughFilter::filter(OsFilePath const&) const
{
    return true;
}

// Follows symlinks, so a link to a directory passes.
bool OsDirectoryFilter::filter(OsFilePath const& path) const
{
    return OsFsUtils::isDirectory(path.getChars());
}

// A null suffix differs from "", but both let every name pass: each name ends in the empty text.
OsLeafFileFilter::OsLeafFileFilter() : OsLeafFileFilter(nullptr) {}

OsLeafFileFilter::OsLeafFileFilter(char const* suffix) : _suffixLength(0)
{
    if (suffix == nullptr)
        return;
    _suffix = duplicateString(suffix);
    // Taken once: the filter is asked for each child.
    _suffixLength = static_cast<std::int32_t>(std::strlen(suffix));
}

bool OsLeafFileFilter::filter(OsFilePath const& path) const
{
    if (OsFsUtils::isDirectory(path.getChars()))
        return false;
    // The base name, so that a suffix longer than the name never reaches into the directory's. It isn't asked for
    // without need, as the system can refuse to tell the current directory.
    return !_suffix || acceptsName(path.getBaseName().getChars());
}

bool OsLeafFileFilter::acceptsName(char const* name) const
{
    const std::size_t length = std::strlen(name);
    const std::size_t suffixLength = static_cast<std::size_t>(_suffixLength);
    return !_suffix || (length >= suffixLength && std::strcmp(name + (length - suffixLength), _suffix) == 0);
}

}  // namespace Vn
