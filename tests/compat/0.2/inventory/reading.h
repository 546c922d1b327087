#pragma once

#include <cstdint>
#include <string>

namespace Inventory
{

/// What reading a file from its first to its last byte found.
struct Reading
{
    std::uint64_t bytes = 0;
    std::uint64_t checksum = 0;  ///< FNV-1a of all bytes
};

/// Throws Vn::ExSysErrorWindows for a file that can't be read.
Reading readFile(std::string const& path);

/// Compares byte by byte. Throws Vn::ExSysErrorWindows if either can't be read.
bool haveSameBytes(std::string const& path, std::string const& other);

}  // namespace Inventory
