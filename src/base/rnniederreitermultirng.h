#pragma once

#include <base/rnmultirng.h>

#include <cstdint>

namespace Vn
{

/// Points that fill the unit 4-cube evenly: a digital sequence in base 2 (H. Niederreiter, Low-discrepancy and
/// low-dispersion sequences, J. Number Theory 30, 1988; after P. Bratley, B. L. Fox and H. Niederreiter, ACM TOMS 20,
/// 1994).
///
///     Vn::RnNiederreiterMultiRng<float> source;
///     float point[4];
///     source.getSample(point);
///
/// The sequence leaves out its first 4,096 points, and its index wraps in 32 bits; the highest bit has no effect.
/// Coordinates are multiples of 2^-31, below 1 in double; in float the largest round to 1.
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnNiederreiterMultiRng : public RnMultiRng<T, 4>
{
public:
    RnNiederreiterMultiRng();

    ~RnNiederreiterMultiRng() override;

    void getSample(T* const sample) override;
    /// The points of getSample(), also of a derived class that has its own.
    void getSequence(unsigned int n, T** const samples) override;

    /// 1, 0 and 1 in each dimension; 1.
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    T getEfficientFraction() const override;
    /// 1 where all coordinates are from 0 up to below 1, otherwise 0.
    T getPdf(T* const point) const override;

    /// Back to the first point.
    void restart() override;
    /// The next point is that after `index` points.
    void restart(unsigned int index);

    /// "Niederreiter"
    char const* getName() const override;

private:
    void moveTo(std::uint32_t index);

    std::uint32_t _index;
    std::uint32_t _upper[4];  ///< what all but the lowest byte of the next point's number make of it
};

extern template class VN_BASE_EXPORT RnNiederreiterMultiRng<float>;
extern template class VN_BASE_EXPORT RnNiederreiterMultiRng<double>;

}  // namespace Vn
