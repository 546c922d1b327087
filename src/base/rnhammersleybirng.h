#pragma once

#include <base/rnbirng.h>
#include <base/rnhammersleymultirng.h>

namespace Vn
{

/// RnHammersleyMultiRng in two dimensions, for consumers of RnBiRng. All operations are that class's, the difference
/// between getSample() and getSequence() included.
///
///     Vn::RnHammersleyBiRng<float> source(256);
///     source.getSequence(256, x, y);    // the whole set
///
/// Tests: tests/base/rnquasitest.cpp.
template <class T>
class RnHammersleyBiRng : public RnBiRng<T>
{
public:
    /// Base 2.
    RnHammersleyBiRng(unsigned int length);
    RnHammersleyBiRng(unsigned int length, unsigned int prime);

    ~RnHammersleyBiRng() override;

    void getSample(T& x, T& y) override;
    void getSequence(unsigned int n, T* x, T* y) override;

    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    T getPdf(T x, T y) const override;

    void restart() override;
    void restart(unsigned int index);

    /// "Hammersley"
    char const* getName() const override;

    void getPrimeNumbers(unsigned int& prime) const;
    void setPrimeNumbers(unsigned int prime);

private:
    RnHammersleyMultiRng<T, 2> _multiRng;
};

extern template class VN_BASE_EXPORT RnHammersleyBiRng<float>;
extern template class VN_BASE_EXPORT RnHammersleyBiRng<double>;

}  // namespace Vn
