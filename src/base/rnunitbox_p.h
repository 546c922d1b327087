#pragma once

namespace Vn
{

/// What all generators of the unit square, cube and 4-cube answer. Private to the library.
template <class T, int N>
struct RnUnitBox
{
    static void setAll(T* values, T value)
    {
        for (int d = 0; d < N; ++d)
            values[d] = value;
    }

    static T getPdf(T const* point)
    {
        bool isInside = true;
        for (int d = 0; d < N; ++d)
            isInside = isInside && point[d] >= T(0) && point[d] < T(1);
        return isInside ? T(1) : T(0);
    }
};

}  // namespace Vn
