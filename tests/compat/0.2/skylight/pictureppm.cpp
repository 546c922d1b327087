// The form without libpng (with it: picturepng.cpp): a portable pixmap, which most viewers show.
#include "picture.h"

#include <fstream>

namespace Skylight
{

char const* getPictureSuffix()
{
    return "ppm";
}

bool writePicture(std::string const& path, unsigned int width, unsigned int height,
                  std::vector<std::uint8_t> const& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << width << " " << height << "\n255\n";
    for (std::uint8_t byte : bytes)
        file.put(static_cast<char>(byte));
    file.close();
    return !file.fail();
}

}  // namespace Skylight
