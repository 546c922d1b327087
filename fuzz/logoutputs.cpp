// Values of an output variable, of any text: the logger starts, shows its outputs and stops.
#include <base/lglog.h>
#include <base/osenv.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <sstream>
#include <string>

namespace
{
namespace fs = std::filesystem;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

/// An empty folder to work in: a value may name any file, but none outside.
fs::path const& getFolder()
{
    // Never destroyed: that would come before it is removed.
    static fs::path const& folder = *new fs::path([] {
        const fs::path path = fs::temp_directory_path() / ("vnbase-fuzz-" + std::to_string(std::random_device()()));
        fs::create_directory(path);
        for (char const* level :
             {"INTERNAL_ERROR", "FATAL_ERROR", "RECOVERABLE_ERROR", "INFORMATIONAL", "TRACING", "PROFILING"})
            Vn::OsEnv::putVariable((std::string("VN_LOG_") + level + "=--").c_str());
        std::atexit([] { fs::remove_all(getFolder()); });
        return path;
    }());
    return folder;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const fs::path before = fs::current_path();
    fs::current_path(getFolder());
    std::string value(reinterpret_cast<char const*>(data), size);
    value = value.c_str();
    for (char& character : value)
        if (character == '/')
            character = '_';
    if (value.empty())
        value = "x";
    Vn::OsEnv::putVariable(("VN_LOG_WARNING=" + value).c_str());

    std::ostringstream shown;
    std::streambuf* const standardOutput = std::cout.rdbuf(shown.rdbuf());
    Vn::LgLog::init();
    Vn::LgLog::displaySetup();
    std::cout.rdbuf(standardOutput);
    const bool isOff = value.starts_with("--");
    check(Vn::LgLog::isLevelEchoed(Vn::LgTypes::Warning) == (value[0] == '%'));
    check(!isOff || shown.str().find("\nWarning: Disabled\n") != std::string::npos);
    check(!isOff || Vn::LgLog::getLevelOutput(Vn::LgTypes::Warning) == nullptr);
    Vn::LgLog::destroy();
    for (fs::directory_entry const& entry : fs::directory_iterator(getFolder()))
        fs::remove_all(entry.path());
    fs::current_path(before);
    return 0;
}
