#pragma once

#include <base/rnrng.h>

namespace Vn
{

/// Numbers with a density that rises straight to the centre and falls straight from it: a triangle, in spite of the
/// name, by inverting its distribution function.
///
///     Vn::RnMexicanHatRng<double> triangle(&uniform, 0.0, 2.0);    // from -1 to 1
///
/// The source isn't owned and must outlive this object.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnMexicanHatRng : public RnRng<T>
{
public:
    /// Centre 0 and width 1. Throws ExInternalError ("rng != 0") for null.
    RnMexicanHatRng(RnRng<T>* rng);

    /// `width` is that of the whole support. Throws ExInternalError: "rng != 0" for null, "_halfwidth > 0" for a width
    /// that isn't positive.
    RnMexicanHatRng(RnRng<T>* rng, T centre, T width);

    ~RnMexicanHatRng() override;

    T operator()() override;
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;

    /// The support, and 1.
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    /// 0 outside the support.
    T getPdf(T x) const override;

    /// Restarts the source.
    void restart() override;

    /// "Mexican Hat"
    char const* getName() const override;

private:
    friend struct RnSource;  ///< looks at what stands behind

    T mapped(T u) const;

    T _centre;
    T _width;
    T _halfwidth;
    T _inverseHalfwidth;
    RnRng<T>* _uniRng;
};

extern template class VN_BASE_EXPORT RnMexicanHatRng<float>;
extern template class VN_BASE_EXPORT RnMexicanHatRng<double>;

}  // namespace Vn
