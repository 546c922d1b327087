#pragma once

#include <base/rnbirng.h>
#include <base/rnmultirng.h>
#include <base/rnrng.h>

namespace Vn
{

/// Points with independent coordinates of one distribution, both drawn from one source.
///
///     Vn::RnLecuyerUniformRng<float> uniform;
///     Vn::RnSeparableBiRng<float> square(&uniform);
///
/// getSample() and getSequence() give different points, and programs rely on it. With draws d0, d1,
/// d2 and so on:
///
///     getSample() twice     ->  (d0, d1), (d2, d3)
///     getSequence(2, x, y)  ->  (d0, d2), (d1, d3): the whole first array, then the whole second
///
/// Do not put RnVanDerCorputRng behind it: consecutive radical inverses are correlated, so that the
/// points lie on lines. Take RnHaltonBiRng.
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnSeparableBiRng : public RnBiRng<T>
{
public:
    /// Both coordinates from `rng`. Throws ExInternalError ("_uniRng") for null.
    RnSeparableBiRng(RnRng<T>* rng);

    RnSeparableBiRng(RnSeparableBiRng const&) = delete;
    RnSeparableBiRng& operator=(RnSeparableBiRng const&) = delete;

    /// The source lives on.
    ~RnSeparableBiRng() override;

    /// x, then y, by two draws; or the whole array `x`, then the whole array `y`, by two sequences
    /// of the source.
    /// @{
    void getSample(T& x, T& y) override;
    void getSequence(unsigned int n, T* x, T* y) override;
    /// @}

    /// The efficient range of the source, in both coordinates.
    /// @{
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    /// @}

    /// The square of the source's fraction: the coordinates are independent.
    T getEfficientFraction() const override;

    /// The product of the source's densities at `x` and at `y`.
    ///
    ///     over a uniform source:  (0.5, 0.5) -> 1;  (0.5, 1) -> 0
    T getPdf(T x, T y) const override;

    /// Restarts the source.
    void restart() override;

    char const* getName() const override;

private:
    RnRng<T>* _uniRng;
};

/// Points with independent coordinates, each from a source of its own.
///
///     Vn::RnVanDerCorputRng<float> base2(2), base3(3);
///     Vn::RnAsymmetricalSeparableBiRng<float> points(&base2, &base3);
///
/// With two different sources getSample() and getSequence() give the same points. Both may be one
/// source; the points then differ as those of RnSeparableBiRng.
///
/// Threads: one thread at a time, together with the sources.
/// Ownership: the sources are not owned and must outlive this object.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnAsymmetricalSeparableBiRng : public RnBiRng<T>
{
public:
    /// x from `rng0`, y from `rng1`. Throws ExInternalError for null: "_uniRng0", then "_uniRng1".
    RnAsymmetricalSeparableBiRng(RnRng<T>* rng0, RnRng<T>* rng1);

    RnAsymmetricalSeparableBiRng(RnAsymmetricalSeparableBiRng const&) = delete;
    RnAsymmetricalSeparableBiRng& operator=(RnAsymmetricalSeparableBiRng const&) = delete;

    /// The sources live on.
    ~RnAsymmetricalSeparableBiRng() override;

    /// Both coordinates by a single draw of their sources, or each array by one sequence of its
    /// source.
    /// @{
    void getSample(T& x, T& y) override;
    void getSequence(unsigned int n, T* x, T* y) override;
    /// @}

    /// The efficient range of each coordinate's source.
    /// @{
    void getEfficientWidth(T& x, T& y) const override;
    void getEfficientMin(T& x, T& y) const override;
    void getEfficientMax(T& x, T& y) const override;
    /// @}

    /// The product of the two sources' fractions. For two bounded sources that is 1.
    T getEfficientFraction() const override;

    /// The product of the first source's density at `x` and the second's at `y`.
    ///
    ///     a uniform and a standard Gaussian source:  (0.5, 0) -> 0.3989;  (1.5, 0) -> 0
    T getPdf(T x, T y) const override;

    /// Restarts both sources, that of x first. One source for both is restarted twice.
    void restart() override;

    /// "Assymetrical Bi Separable": the spelling is part of the interface.
    char const* getName() const override;

private:
    RnRng<T>* _uniRng0;
    RnRng<T>* _uniRng1;
};

/// RnSeparableBiRng in three dimensions, the only N that exists.
///
///     Vn::RnLecuyerUniformRng<float> uniform;
///     Vn::RnSeparableMultiRng<float, 3> cube(&uniform);
///
/// Single draws take their coordinates from three consecutive draws of the source; sequences fill
/// one dimension after the other. Threads, ownership and the advice about sources are those of
/// RnSeparableBiRng.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T, int N>
class RnSeparableMultiRng : public RnMultiRng<T, N>
{
public:
    /// All coordinates from `rng`. Throws ExInternalError ("_uniRng") for null.
    RnSeparableMultiRng(RnRng<T>* rng);

    RnSeparableMultiRng(RnSeparableMultiRng const&) = delete;
    RnSeparableMultiRng& operator=(RnSeparableMultiRng const&) = delete;

    /// The source lives on.
    ~RnSeparableMultiRng() override;

    /// The coordinates by three draws, or dimension by dimension by three sequences of the source.
    /// @{
    void getSample(T* const sample) override;
    void getSequence(unsigned int n, T** const samples) override;
    /// @}

    /// The efficient range of the source, in all coordinates.
    /// @{
    void getEfficientWidth(T* const width) const override;
    void getEfficientMin(T* const min) const override;
    void getEfficientMax(T* const max) const override;
    /// @}

    /// The cube of the source's fraction.
    T getEfficientFraction() const override;

    /// The product of the source's densities at the three coordinates.
    T getPdf(T* const point) const override;

    /// Restarts the source.
    void restart() override;

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
