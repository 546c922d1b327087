#pragma once

#include <base/rnbirng.h>
#include <base/rnmultirng.h>
#include <base/rnrng.h>

namespace Vn
{

/// Points whose two coordinates are drawn, one after the other, from one source.
///
///     Vn::RnSeparableBiRng<float> square(&uniform);
///
/// getSample() pairs draws 0 and 1, then 2 and 3; getSequence() fills the whole first array and then the whole second,
/// so it pairs draws k and n + k: other points. Don't put a radical inverse behind it, whose neighbours belong together:
/// take RnHaltonBiRng.
///
/// The source isn't owned and must outlive this object.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnSeparableBiRng : public RnBiRng<T>
{
public:
    /// Throws ExInternalError ("_uniRng") for null.
    RnSeparableBiRng(RnRng<T>* rng);

    ~RnSeparableBiRng() override;

    void getSample(T& x, T& y) override;
    void getSequence(unsigned int n, T* x, T* y) override;

    /// The source's in each coordinate; the square of its fraction.
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    T getPdf(T x, T y) const override;

    /// Restarts the source.
    void restart() override;

    /// "Symmetrical Bi Separable"
    char const* getName() const override;

private:
    RnRng<T>* _uniRng;
};

/// Points whose coordinates are drawn each from a source of its own.
///
///     Vn::RnVanDerCorputRng<float> base2(2), base3(3);
///     Vn::RnAsymmetricalSeparableBiRng<float> points(&base2, &base3);
///
/// The sources aren't owned and must outlive this object; they may be one and the same.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnAsymmetricalSeparableBiRng : public RnBiRng<T>
{
public:
    /// Throws ExInternalError for null: "_uniRng0" or "_uniRng1".
    RnAsymmetricalSeparableBiRng(RnRng<T>* rng0, RnRng<T>* rng1);

    ~RnAsymmetricalSeparableBiRng() override;

    void getSample(T& x, T& y) override;
    void getSequence(unsigned int n, T* x, T* y) override;

    /// Each coordinate's from its source; the product of their fractions.
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    T getEfficientFraction() const override;
    T getPdf(T x, T y) const override;

    /// Restarts both sources, the first one first.
    void restart() override;

    /// "Assymetrical Bi Separable"
    char const* getName() const override;

private:
    RnRng<T>* _uniRng0;
    RnRng<T>* _uniRng1;
};

/// As RnSeparableBiRng in three dimensions, the only N that is there.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T, int N>
class RnSeparableMultiRng : public RnMultiRng<T, N>
{
public:
    /// Throws ExInternalError ("_uniRng") for null.
    RnSeparableMultiRng(RnRng<T>* rng);

    ~RnSeparableMultiRng() override;

    void getSample(T* const sample) override;
    void getSequence(unsigned int n, T** const samples) override;

    /// The source's in each coordinate; the cube of its fraction.
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    T getEfficientFraction() const override;
    T getPdf(T* const point) const override;

    /// Restarts the source.
    void restart() override;

    /// "Multi Separable"
    char const* getName() const override;

private:
    RnRng<T>* _uniRng;
};

extern template class VN_BASE_EXPORT RnSeparableBiRng<float>;
extern template class VN_BASE_EXPORT RnSeparableBiRng<double>;
extern template class VN_BASE_EXPORT RnAsymmetricalSeparableBiRng<float>;
extern template class VN_BASE_EXPORT RnAsymmetricalSeparableBiRng<double>;
extern template class VN_BASE_EXPORT RnSeparableMultiRng<float, 3>;
extern template class VN_BASE_EXPORT RnSeparableMultiRng<double, 3>;

}  // namespace Vn
