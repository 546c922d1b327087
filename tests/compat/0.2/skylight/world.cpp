#include "world.h"

#include <cmath>

namespace Skylight::World
{
namespace
{
struct Sphere
{
    Vec centre;
    float radius;
    Vec colour;
};

const Sphere spheres[] = {
    {{-1.15f, 0.35f, 0.8f}, 0.8f, {0.85f, 0.35f, 0.25f}},  {{0.55f, 0.0f, 0.6f}, 0.6f, {0.9f, 0.85f, 0.75f}},
    {{1.75f, 0.6f, 0.45f}, 0.45f, {0.3f, 0.55f, 0.8f}},    {{-0.15f, -0.95f, 0.3f}, 0.3f, {0.4f, 0.65f, 0.35f}},
    {{1.15f, -0.85f, 0.22f}, 0.22f, {0.95f, 0.75f, 0.3f}},
};

constexpr float nearest = 1e-3f;  ///< a ray doesn't meet what it starts from

/// How far along the ray the sphere lies; 0 if it is missed.
float distanceTo(Sphere const& sphere, Vec from, Vec direction)
{
    const Vec offset = sphere.centre - from;
    const float along = dot(offset, direction);
    const float inside = sphere.radius * sphere.radius - (dot(offset, offset) - along * along);
    if (inside <= 0.0f)
        return 0.0f;
    const float root = std::sqrt(inside);
    const float front = along - root;
    if (front > nearest)
        return front;
    return along + root > nearest ? along + root : 0.0f;
}

float distanceToPlane(Vec from, Vec direction)
{
    return direction.z < -1e-6f ? -from.z / direction.z : 0.0f;
}
}  // namespace

Hit meet(Vec from, Vec direction)
{
    Hit hit;
    float distance = distanceToPlane(from, direction);
    if (distance > nearest) {
        hit.isThere = true;
        hit.point = from + distance * direction;
        hit.normal = {0, 0, 1};
        hit.colour = {0.7f, 0.7f, 0.68f};
    }
    for (Sphere const& sphere : spheres) {
        const float here = distanceTo(sphere, from, direction);
        if (here > 0.0f && (!hit.isThere || here < distance)) {
            distance = here;
            hit.isThere = true;
            hit.point = from + here * direction;
            hit.normal = (1.0f / sphere.radius) * (hit.point - sphere.centre);
            hit.colour = sphere.colour;
        }
    }
    return hit;
}

bool isFree(Vec from, Vec direction)
{
    for (Sphere const& sphere : spheres)
        if (distanceTo(sphere, from, direction) > 0.0f)
            return false;
    return distanceToPlane(from, direction) <= nearest;
}

Vec getSky(Vec direction)
{
    const float height = direction.z > 0.0f ? direction.z : 0.0f;
    const Vec horizon{1.0f, 0.95f, 0.88f}, zenith{0.35f, 0.55f, 0.95f};
    const Vec sun{0.48f, -0.6f, 0.64f};
    const float near = dot(direction, sun);
    float glow = near > 0.0f ? near : 0.0f;
    for (int i = 0; i < 4; ++i)
        glow *= glow;  // its 16th power
    return (1.0f - height) * horizon + height * zenith + 5.0f * glow * Vec{1.0f, 0.85f, 0.6f};
}

Vec getEye()
{
    return {0.3f, -5.5f, 1.9f};
}

Vec getRay(float right, float up, float aspect)
{
    const Vec front = unit(Vec{0.3f, 0.2f, 0.45f} - getEye());
    const Vec side = unit(Vec{front.y, -front.x, 0.0f});
    const Vec top{side.y * front.z - side.z * front.y, side.z * front.x - side.x * front.z,
                  side.x * front.y - side.y * front.x};
    return unit(front + (0.46f * right) * side + (0.46f * aspect * up) * top);
}

}  // namespace Skylight::World
