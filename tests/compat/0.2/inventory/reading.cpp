#include "reading.h"

#include <base/osfilereader.h>

#include <cstring>
#include <memory>

namespace Inventory
{
namespace
{
constexpr unsigned long blockSize = 0x10000;

/// Fills the block: a call of the system may give less than it is asked for before the end of the file.
std::uint32_t readBlock(Vn::OsFileReader& reader, char* block)
{
    std::uint32_t filled = 0;
    while (const std::uint32_t count = reader.read(block + filled, blockSize - filled))
        filled += count;
    return filled;
}
}  // namespace

Reading readFile(std::string const& path)
{
    Vn::OsFileReader reader{Vn::OsFilePath(path.c_str())};
    const std::unique_ptr<char[]> block(new char[blockSize]);
    Reading reading;
    reading.checksum = 0xCBF29CE484222325;
    while (const std::uint32_t count = reader.read(block.get(), blockSize)) {
        reading.bytes += count;
        for (std::uint32_t i = 0; i < count; ++i)
            reading.checksum = (reading.checksum ^ static_cast<unsigned char>(block[i])) * 0x100000001B3;
    }
    return reading;
}

bool haveSameBytes(std::string const& path, std::string const& other)
{
    Vn::OsFileReader reader{Vn::OsFilePath(path.c_str())};
    Vn::OsFileReader otherReader{Vn::OsFilePath(other.c_str())};
    const std::unique_ptr<char[]> block(new char[2 * blockSize]);
    char* const otherBlock = block.get() + blockSize;
    for (;;) {
        const std::uint32_t count = readBlock(reader, block.get());
        if (count != readBlock(otherReader, otherBlock) || std::memcmp(block.get(), otherBlock, count) != 0)
            return false;
        if (count == 0)
            return true;
    }
}

}  // namespace Inventory
