// Private to the samplers.
#pragma once

namespace Vn
{

/// What all uniform generators of the unit interval, square, cube and 4-cube answer about their
/// distribution.
template <class T, int N>
struct RnUnitBox
{
    /// Sets all N coordinates to one value: an end or the width of the efficient range.
    static void setAll(T* values, T value)
    {
        for (int d = 0; d < N; ++d)
            values[d] = value;
    }

    /// 1 in the box, each of whose intervals is closed below and open above; otherwise 0.
    ///
    ///     (0, 0.5)    ->  1
    ///     (0.5, 1)    ->  0
    ///     (0.5, NaN)  ->  0
    static T getPdf(T const* point)
    {
        bool isInside = true;
        for (int d = 0; d < N; ++d)
            isInside = isInside && point[d] >= T(0) && point[d] < T(1);
        return isInside ? T(1) : T(0);
    }
};

}  // namespace Vn
