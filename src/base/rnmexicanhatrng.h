#pragma once

#include <base/rnrng.h>

namespace Vn
{

/// Numbers with a triangular density, made by inverting its distribution function. The name
/// notwithstanding, it is no wavelet: the density rises straight to the centre and falls straight
/// from it.
///
///     Vn::RnMexicanHatRng<double> triangle(&uniform, 0.0, 2.0);    // from -1 to 1
///     const double number = triangle();
///
/// Each sample takes one draw of the source, and a larger draw gives a larger sample. So an even
/// source, such as RnVanDerCorputRng, gives evenly distributed samples.
///
///     draws 0, 0.125, 0.5, 0.875 with centre 0 and width 2  ->  -1, -0.5, 0, 0.5
///
/// Threads: one thread at a time, together with the source.
/// Ownership: the source is not owned and must outlive this object.
/// Edges: the source should give numbers from 0 to 1; from others comes not-a-number.
/// Tests: tests/base/rndistributiontest.cpp.
template <class T>
class RnMexicanHatRng : public RnRng<T>
{
public:
    /// Centre 0 and width 1, from the uniform source `rng`. Numbers lie between -0.5 and 0.5.
    /// Throws ExInternalError ("rng != 0") for null.
    RnMexicanHatRng(RnRng<T>* rng);

    /// Any centre; `width` is that of the whole support, so the density ends at `centre` - `width`
    /// / 2 and `centre` + `width` / 2.
    ///
    /// Throws ExInternalError: "rng != 0" for null, "_halfwidth > 0" for a width of 0, below 0 or
    /// not-a-number.
    RnMexicanHatRng(RnRng<T>* rng, T centre, T width);

    RnMexicanHatRng(RnMexicanHatRng const&) = delete;
    RnMexicanHatRng& operator=(RnMexicanHatRng const&) = delete;

    /// The source lives on.
    ~RnMexicanHatRng() override;

    /// The next number or numbers. A source that is a program's own class is asked for single draws
    /// only, never for a sequence: if it throws, no number that came before is lost.
    /// @{
    T operator()() override;
    void getSample(T& sample) override;
    void getSequence(unsigned int n, T* samples) override;
    /// @}

    /// The efficient range is the support, with all of the probability in it.
    /// @{
    T getEfficientWidth() const override;
    T getEfficientMin() const override;
    T getEfficientMax() const override;
    T getEfficientFraction() const override;
    /// @}

    /// 2 / width at the centre; 0 at the ends of the support and beyond.
    ///
    ///     centre 0, width 2:  x = 0 -> 1;  x = 0.5 -> 0.5;  x = 1 -> 0;  x = 7 -> 0
    T getPdf(T x) const override;

    /// Restarts the source.
    void restart() override;

    char const* getName() const override;

    /// The source as given to the constructor. Never null; not owned.
    RnRng<T> const* getSource() const { return _uniRng; }

private:
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
