#pragma once

#include <base/rnbirng.h>
#include <base/rnhaltonmultirng.h>

namespace Vn
{

/// RnHaltonMultiRng in two dimensions, for consumers of RnBiRng. All operations are that class's.
///
///     Vn::RnHaltonBiRng<float> source;
///     Vn::RnUniformSphericalRng<float> directions(&source);
///
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnHaltonBiRng : public RnBiRng<T>
{
public:
    /// Bases 2 and 3.
    RnHaltonBiRng();
    RnHaltonBiRng(unsigned int prime0, unsigned int prime1);

    ~RnHaltonBiRng() override;

    void getSample(T& x, T& y) override;
    void getSequence(unsigned int n, T* x, T* y) override;

    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    T getPdf(T x, T y) const override;

    void restart() override;
    void restart(unsigned int index);

    /// "Halton"
    char const* getName() const override;

    void getPrimeNumbers(unsigned int& prime0, unsigned int& prime1) const;
    void setPrimeNumbers(unsigned int prime0, unsigned int prime1);

private:
    RnHaltonMultiRng<T, 2> _multiRng;
};

extern template class VN_BASE_EXPORT RnHaltonBiRng<float>;
extern template class VN_BASE_EXPORT RnHaltonBiRng<double>;

}  // namespace Vn
