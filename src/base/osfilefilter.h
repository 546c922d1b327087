#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/osfilepath.h>

#include <cstdint>

namespace Vn
{

/// Chooses which children of a directory are listed, counted or removed.
///
///     struct Frames : Vn::OsFileFilter
///     {
///         bool filter(Vn::OsFilePath const& path) const override { return ...; }
///     };
///
/// OsDirectory calls it in the caller's thread and does not keep it. What it throws ends the listing. The three classes
/// below are not called: OsDirectory knows their rules, and applies them to the name and type that the listing tells.
/// So they cost no question to the system, but for symlinks and on file systems whose listings have no types. A
/// class derived from one of them is called like any other.
/// Tests: tests/base/osdirectorytest.cpp.
class VN_BASE_EXPORT OsFileFilter
{
public:
    virtual ~OsFileFilter();

    /// Whether the child at `path` passes. `path` is the directory's path with the child's name: "frames/0001.exr".
    virtual bool filter(OsFilePath const& path) const = 0;
};

/// Passes every child.
class VN_BASE_EXPORT OsPassThroughFilter : public OsFileFilter
{
public:
    /// True, without a look at the file system.
    bool filter(OsFilePath const& path) const override;
};

/// Passes directories, and symlinks to directories.
class VN_BASE_EXPORT OsDirectoryFilter : public OsFileFilter
{
public:
    /// Asks the file system; what has vanished in the meantime doesn't pass.
    bool filter(OsFilePath const& path) const override;
};

/// Passes everything that is not a directory, or the part of it whose name ends in a given suffix.
///
///     const Vn::OsLeafFileFilter images(".exr");
///
///     "0001.exr"           ->  passes
///     "0001.EXR"           ->  does not: case matters
///     ".exr"               ->  passes: the whole name may be the suffix
///     "old.exr", a folder  ->  does not
///
class VN_BASE_EXPORT OsLeafFileFilter : public OsFileFilter
{
public:
    /// Without a suffix: all that is no directory passes.
    OsLeafFileFilter();

    /// The suffix is copied, and may begin with a dot or without. Null means no suffix.
    explicit OsLeafFileFilter(char const* suffix);

    OsLeafFileFilter(OsLeafFileFilter const&) = delete;
    OsLeafFileFilter& operator=(OsLeafFileFilter const&) = delete;

    /// Compares the base name of `path` byte by byte. Throws ExSysErrorWindows if that name cannot be resolved; a listing
    /// has the name already, and doesn't.
    bool filter(OsFilePath const& path) const override;

private:
    friend class ListingFilter;

    bool acceptsName(char const* name) const;

    ArrayPtr<char> _suffix;  ///< or null
    std::int32_t _suffixLength;
};

}  // namespace Vn
