#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/osfilepath.h>

#include <cstdint>

namespace Vn
{

/// Chooses which children of a directory are listed.
///
///     struct Frames : Vn::OsFileFilter
///     {
///         bool filter(Vn::OsFilePath const& path) const override { return ...; }
///     };
///
/// A filter sees the whole path of each child. What it throws ends the listing.
/// Tests: tests/base/osdirectorytest.cpp.
class VN_BASE_EXPORT OsFileFilter
{
public:
    virtual ~OsFileFilter();

    /// Whether the child at `path` is listed.
    virtual bool filter(OsFilePath const& path) const = 0;
};

/// Lets everything pass.
class VN_BASE_EXPORT OsPassThroughFilter : public OsFileFilter
{
public:
    bool filter(OsFilePath const& path) const override;
};

/// Lets directories pass, and links to directories.
class VN_BASE_EXPORT OsDirectoryFilter : public OsFileFilter
{
public:
    bool filter(OsFilePath const& path) const override;
};

/// Lets pass whatever is no directory: all of it, or what is named with a suffix. Case counts.
///
///     const Vn::OsLeafFileFilter images(".exr");
class VN_BASE_EXPORT OsLeafFileFilter : public OsFileFilter
{
public:
    OsLeafFileFilter();

    /// The suffix is copied; null is as no suffix.
    explicit OsLeafFileFilter(char const* suffix);

    OsLeafFileFilter(OsLeafFileFilter const&) = delete;
    OsLeafFileFilter& operator=(OsLeafFileFilter const&) = delete;

    bool filter(OsFilePath const& path) const override;

private:
    ArrayPtr<char> _suffix;  ///< or null
    std::int32_t _suffixLength;
};

}  // namespace Vn
