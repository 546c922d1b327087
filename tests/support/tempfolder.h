#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace VnTest
{

/// A folder of its own for one test, empty at first and removed with all that is in it. Made with the standard library,
/// which the file layer is held against.
class TempFolder
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder(TempFolder const&) = delete;
    TempFolder& operator=(TempFolder const&) = delete;

    /// The folder, or what is called `name` in it, as the system writes a path.
    std::string path() const { return _path.string(); }
    std::string path(std::string const& name) const;

    /// Make a file or a folder, and the folders on the way.
    std::string file(std::string const& name, std::string const& content = "") const;
    std::string folder(std::string const& name) const;

private:
    std::filesystem::path _path;
};

inline std::string contentOf(std::string const& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// While it lives the process works in `path`.
class WorkingFolder
{
public:
    explicit WorkingFolder(std::string const& path) : _before(std::filesystem::current_path())
    {
        std::filesystem::current_path(path);
    }
    ~WorkingFolder() { std::filesystem::current_path(_before); }
    WorkingFolder(WorkingFolder const&) = delete;
    WorkingFolder& operator=(WorkingFolder const&) = delete;

private:
    std::filesystem::path _before;
};

}  // namespace VnTest
