// Private to osdirectory.cpp and ostreecopy.cpp; implemented in osdirectoryposix.cpp and osdirectorywindows.cpp.
#pragma once

#include <base/osopendirectory_p.h>

#include <memory>

namespace Vn::System
{

/// One pass over the children of a directory, without "." and "..", in the system's order.
///
///     for (DirectoryListing listing("pass"); listing.next();)
///         show(listing.getName());
///
class DirectoryListing
{
public:
    /// What the listing itself says about a child, without a question of its own.
    enum class Kind
    {
        Directory,
        RegularFile,
        Other,   ///< a pipe, a device
        Unknown  ///< a symlink, or a file system whose listings have no types: ask for the child itself
    };

    /// Opens the directory; the empty path is the current one. Throws ExSysErrorWindows.
    explicit DirectoryListing(char const* directory);

    /// Of a directory that is open, from its first child. One at a time, since all of them share its position.
    explicit DirectoryListing(OpenDirectory const& directory);
    ~DirectoryListing();

    /// Goes to the next child; false at the end. Throws ExSysErrorWindows.
    bool next();

    // Of the child that next() has found; valid until the next call of it.
    char const* getName() const { return _name; }
    Kind getKind() const { return _kind; }

    /// Followed for what is a symlink, or may be one.
    Links getLinks() const { return _links; }

    /// Whether the child leads to a directory; a question to the system if its kind doesn't tell.
    bool isDirectory() const;

private:
    struct State;

    /// The question of isDirectory(), about this very directory's child.
    bool leadsToDirectory() const;

    /// The platform's part of next(): goes to the next entry, which may be "." or "..".
    bool readEntry();

    std::unique_ptr<State> _state;
    char const* _name = nullptr;  ///< in the system's buffer
    Kind _kind = Kind::Unknown;
    Links _links = Links::Followed;
};

}  // namespace Vn::System
