#pragma once

#include <base/rnbirng.h>
#include <base/rnhistogrambi.h>
#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Points distributed as a two-dimensional histogram has recorded them, evenly within each bin. Each takes two draws: the
/// first finds the bin and, by its place in the bin, x; the second is y.
///
///     Vn::RnHistogramBiRng<float> likeIt(histogram, &uniform);
///     likeIt.getSample(x, y);
///
/// Otherwise as RnHistogramRng, but for the density: here it is the bin's probability, not divided by its area.
/// Tests: tests/base/rnhistogramrngtest.cpp.
template <class T>
class RnHistogramBiRng : public RnBiRng<T>
{
public:
    /// Throws ExInternalError ("_rng") for a null source.
    RnHistogramBiRng(RnHistogramBi<T> const& histogram, RnRng<T>* rng);

    ~RnHistogramBiRng() override;

    void getSample(T& x, T& y) override;
    /// The points of getSample(), also of a derived class that has its own.
    void getSequence(unsigned int n, T* x, T* y) override;

    /// The range of the edges, and 1.
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    /// The bin's share; 0 outside.
    T getPdf(T x, T y) const override;

    /// Restarts the source.
    void restart() override;

    /// "HistogramBi"
    char const* getName() const override;

private:
    std::uint32_t _xCount;
    std::uint32_t _yCount;
    Vector<T> _cumulative;
    Vector<T> _xEdges;
    Vector<T> _yEdges;
    RnRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnHistogramBiRng<float>;
extern template class VN_BASE_EXPORT RnHistogramBiRng<double>;

}  // namespace Vn
