#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Skylight
{

/// The suffix of this platform's picture files: "png", or "ppm" where the build has no libpng.
char const* getPictureSuffix();

/// Writes a picture to `path`, whatever its suffix: bytes of red, green and blue, row by row from the top.
///
/// Throws std::runtime_error with the path and the reason if the file cannot be written.
void writePicture(std::string const& path, unsigned int width, unsigned int height,
                  std::vector<std::uint8_t> const& bytes);

}  // namespace Skylight
