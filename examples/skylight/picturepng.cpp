// The form with libpng (without it: pictureppm.cpp).
#include "picture.h"

#include <png.h>

#include <stdexcept>

namespace Skylight
{

char const* getPictureSuffix()
{
    return "png";
}

void writePicture(std::string const& path, unsigned int width, unsigned int height,
                  std::vector<std::uint8_t> const& bytes)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), 0, nullptr) == 0)
        throw std::runtime_error("cannot write '" + path + "': " + image.message);
}

}  // namespace Skylight
