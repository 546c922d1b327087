#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Skylight
{

/// The ending of this platform's picture files: "png", or "ppm" where Debian has no libpng to build with.
char const* getPictureSuffix();

/// Writes bytes of red, green and blue, row by row from the top. False if the file can't be written.
bool writePicture(std::string const& path, unsigned int width, unsigned int height,
                  std::vector<std::uint8_t> const& bytes);

}  // namespace Skylight
