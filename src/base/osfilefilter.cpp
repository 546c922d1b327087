// The filters that look at the file system do so for each child, through OsFsUtils. They tolerate a child that
// vanishes between the listing and the question: it counts as no directory, so OsLeafFileFilter passes it, and
// OsDirectoryFilter doesn't.
#include <base/osfilefilter.h>

#include <base/duplicatestring.h>
#include <base/osfsutils.h>

#include <cstring>

namespace Vn
{

OsFileFilter::~OsFileFilter() = default;

// Listings recognise the class by its type and don't call it; a caller of its own may.
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
    if (!_suffix)
        return true;
    // The base name, so that a suffix longer than the name never reaches into the directory's.
    const OsFilePath name = path.getBaseName();
    const std::size_t length = std::strlen(name.getChars());
    const std::size_t suffixLength = static_cast<std::size_t>(_suffixLength);
    return length >= suffixLength && std::strcmp(name.getChars() + (length - suffixLength), _suffix) == 0;
}

}  // namespace Vn
