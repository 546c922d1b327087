#pragma once

#include <cmath>

namespace Skylight
{

/// Three floats: a point, a direction or a colour.
struct Vec
{
    float x, y, z;
};

inline Vec operator+(Vec a, Vec b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec operator-(Vec a, Vec b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec operator*(Vec a, Vec b)
{
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
inline Vec operator*(float s, Vec a)
{
    return {s * a.x, s * a.y, s * a.z};
}
inline float dot(Vec a, Vec b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec unit(Vec a)
{
    return (1.0f / std::sqrt(dot(a, a))) * a;
}

/// Two directions that make a right-handed frame with a third (J. R. Frisvad, Building an orthonormal basis from a 3D unit
/// vector without normalization, JGT 16, 2012).
struct Frame
{
    explicit Frame(Vec normal) : up(normal)
    {
        if (normal.z < -0.9999999f) {
            side = {0, -1, 0};
            front = {-1, 0, 0};
            return;
        }
        const float a = 1.0f / (1.0f + normal.z);
        const float b = -normal.x * normal.y * a;
        side = {1.0f - normal.x * normal.x * a, b, -normal.x};
        front = {b, 1.0f - normal.y * normal.y * a, -normal.y};
    }

    Vec toWorld(Vec local) const { return local.x * side + local.y * front + local.z * up; }

    Vec side, front, up;
};

}  // namespace Skylight
