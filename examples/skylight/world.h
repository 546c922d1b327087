#pragma once

#include "vec.h"

namespace Skylight
{

/// Where a ray hits a surface.
struct Hit
{
    bool isThere = false;
    Vec point{};
    Vec normal{};
    Vec colour{};
};

/// A few spheres on a plane under an open sky. Only additions, multiplications, divisions and square roots are used, so that
/// pictures have the same bits on every platform.
namespace World
{

/// The first surface that a ray hits.
Hit meet(Vec from, Vec direction);

/// Whether a ray reaches the sky.
bool isFree(Vec from, Vec direction);

/// The light from a direction of the sky.
Vec getSky(Vec direction);

/// The camera's position.
Vec getEye();

/// The camera's ray through a point of the picture. Coordinates go from -1 to 1, to the right and up; `aspect` is the height
/// divided by the width.
Vec getRay(float right, float up, float aspect);

}  // namespace World
}  // namespace Skylight
