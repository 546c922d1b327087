#pragma once

#include "vec.h"

namespace Skylight
{

/// Where a ray meets something.
struct Hit
{
    bool isThere = false;
    Vec point{};
    Vec normal{};
    Vec colour{};
};

/// A few spheres on a plane under an open sky. Only sums, products, quotients and roots: the same bits everywhere.
namespace World
{

Hit meet(Vec from, Vec direction);
bool isFree(Vec from, Vec direction);

/// The light that comes from a direction of the sky.
Vec getSky(Vec direction);

/// Where the camera stands, and its ray through a point of the picture; both coordinates from -1 to 1, right and up, with
/// the height less by `aspect`.
Vec getEye();
Vec getRay(float right, float up, float aspect);

}  // namespace World
}  // namespace Skylight
