#include "tempfolder.h"

#include <random>
#include <stdexcept>

namespace VnTest
{

TempFolder::TempFolder()
{
    std::random_device random;
    do {
        _path = std::filesystem::temp_directory_path() / ("vnbase-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(_path));
    _path = std::filesystem::canonical(_path);
}

TempFolder::~TempFolder()
{
    // A program that the test has started may put something in meanwhile; once the folder is gone, nobody can.
    std::error_code ignored;
    for (int tries = 0; tries < 1000 && std::filesystem::exists(_path, ignored); ++tries)
        std::filesystem::remove_all(_path, ignored);
}

std::string TempFolder::path(std::string const& name) const
{
    return (_path / name).make_preferred().string();
}

std::string TempFolder::file(std::string const& name, std::string const& content) const
{
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::ofstream stream(path(name), std::ios::binary);
    if (!(stream << content).flush())
        throw std::runtime_error("the test can't write " + path(name));
    return path(name);
}

std::string TempFolder::folder(std::string const& name) const
{
    std::filesystem::create_directories(path(name));
    return path(name);
}

}  // namespace VnTest
