// The form without libpng (with it: picturepng.cpp). It writes a portable pixmap, which most viewers can show.
#include "picture.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace Skylight
{

char const* getPictureSuffix()
{
    return "ppm";
}

void writePicture(std::string const& path, unsigned int width, unsigned int height,
                  std::vector<std::uint8_t> const& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << width << " " << height << "\n255\n";
    for (std::uint8_t byte : bytes)
        file.put(static_cast<char>(byte));
    file.close();
    if (file.fail())
        throw std::runtime_error("cannot write '" + path + "': " + std::strerror(errno));
}

}  // namespace Skylight
