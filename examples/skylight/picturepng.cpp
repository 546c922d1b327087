// The form with libpng (where there is none: pictureppm.cpp).
#include "picture.h"

#include <png.h>

namespace Skylight
{

char const* getPictureSuffix()
{
    return "png";
}

bool writePicture(std::string const& path, unsigned int width, unsigned int height,
                  std::vector<std::uint8_t> const& bytes)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), 0, nullptr) != 0;
}

}  // namespace Skylight
