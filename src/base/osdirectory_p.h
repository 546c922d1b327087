// Private to osdirectory.cpp; implemented in osdirectoryposix.cpp and osdirectorywindows.cpp.
#pragma once

#include <memory>

namespace Vn::System
{

/// One pass over what a directory holds, without "." and "..".
class DirectoryListing
{
public:
    enum class Kind
    {
        Directory,
        Other,
        Unknown  ///< the listing doesn't tell: a symbolic link, or an old file system
    };

    /// The empty path is the current directory. Throws ExSysErrorWindows.
    explicit DirectoryListing(char const* directory);
    ~DirectoryListing();

    /// Goes to the next child. Throws ExSysErrorWindows.
    bool next();

    /// Of the present child.
    char const* getName() const { return _name; }
    Kind getKind() const { return _kind; }

private:
    struct State;

    std::unique_ptr<State> _state;
    char const* _name = nullptr;
    Kind _kind = Kind::Unknown;
};

}  // namespace Vn::System
