#pragma once

#include <base/rnmultirng.h>

#include <cstdint>

namespace Vn
{

/// Points that fill the unit 4-cube evenly, any number of them: a digital sequence in base 2 (H.
/// Niederreiter, Low-discrepancy and low-dispersion sequences, J. Number Theory 30, 1988; after P.
/// Bratley, B. L. Fox and H. Niederreiter, ACM TOMS 20, 1994). Two of its four coordinates serve as
/// well for a square.
///
///     Vn::RnNiederreiterMultiRng<float> source;
///     float point[4];
///     source.getSample(point);
///
/// The first 4,096 points are left out, since the start of the sequence is uneven. Coordinates are
/// multiples of 2^-31: always below 1 in double, while in float the largest are rounded to 1.
///
/// Threads: one thread at a time; the tables are constant and shared.
/// Ownership: none.
/// Edges: nothing throws. The index wraps after 2^32 points. The highest bit of a point's number
/// has no effect, so the sequence repeats after 2^31 points.
/// See also: RnHaltonMultiRng, for two or three dimensions with bases of your choice.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnNiederreiterMultiRng : public RnMultiRng<T, 4>
{
public:
    /// There is nothing to choose: four dimensions, fixed tables.
    RnNiederreiterMultiRng();

    ~RnNiederreiterMultiRng() override;

    /// The next point: four coordinates, of which a caller may use any.
    ///
    ///     the first point  ->  the first coordinate is 2^-13
    void getSample(T* const sample) override;
    /// The points of getSample(). In a derived class with a getSample() of its own, they are that
    /// function's points.
    void getSequence(unsigned int n, T** const samples) override;

    /// The efficient range is [0, 1] in each dimension, with all of the probability in it.
    /// @{
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    T getEfficientFraction() const override;
    /// @}

    /// 1 where every coordinate is from 0 up to below 1; otherwise 0, also for not-a-number.
    ///
    ///     (0, 0, 0, 0)      ->  1
    ///     (0.5, 0.5, 0, 1)  ->  0
    T getPdf(T* const point) const override;

    /// Goes back to the first point, which is number 4,096 of the sequence.
    void restart() override;
    /// Goes to any place, at the cost of one draw.
    ///
    ///     restart(0)  ->  as restart()
    ///     restart(n)  ->  what follows n draws of a new object
    void restart(unsigned int index);

    char const* getName() const override;

private:
    void moveTo(std::uint32_t index);

    std::uint32_t _index;
    std::uint32_t _upper[4];  ///< the part of the next point that all but the lowest byte of its number make
};

extern template class VN_BASE_EXPORT RnNiederreiterMultiRng<float>;
extern template class VN_BASE_EXPORT RnNiederreiterMultiRng<double>;

}  // namespace Vn
