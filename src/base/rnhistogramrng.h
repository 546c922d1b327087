#pragma once

#include <base/rnhistogram.h>
#include <base/rnrng.h>

#include <cstdint>

namespace Vn
{

/// Numbers distributed as a histogram has recorded them, evenly within each bin.
///
///     Vn::RnHistogramRng<double> likeIt(histogram, &uniform);
///     likeIt();
///
/// Takes a snapshot; later changes of the histogram don't reach it. The source isn't owned and must outlive this object; it
/// should give numbers from 0 to below 1. One below 0 counts as 0; one at or above the sum of all bins gives the upper edge of
/// the last bin that holds something. An empty histogram gives not-a-number, and so does one without bins.
/// Tests: tests/base/rnhistogramrngtest.cpp.
template <class T>
class RnHistogramRng : public RnRng<T>
{
public:
    /// Throws ExInternalError ("_rng") for a null source.
    RnHistogramRng(RnHistogram<T> const& histogram, RnRng<T>* rng);

    ~RnHistogramRng() override;

    T operator()() override;
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;

    /// The range of the edges, and 1.
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    /// The bin's share by its width; 0 outside.
    T getPdf(T x) const override;

    /// Restarts the source.
    void restart() override;

    /// "Histogram"
    char const* getName() const override;

private:
    friend struct RnSource;  ///< looks at what stands behind

    T mapped(T u) const;

    std::uint32_t _count;
    Vector<T> _cumulative;
    Vector<T> _edges;
    RnRng<T>* _rng;
};

extern template class VN_BASE_EXPORT RnHistogramRng<float>;
extern template class VN_BASE_EXPORT RnHistogramRng<double>;

}  // namespace Vn
