#pragma once

#include <base/rnbirng.h>
#include <base/rnrng.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace VnTest
{

/// A source that gives the numbers it was made with, over and over, and tells of its restarts.
template <class T>
class ScriptedRng : public Vn::RnRng<T>
{
public:
    explicit ScriptedRng(std::vector<T> values) : _values(std::move(values)) {}

    T operator()() override { return _values[draws++ % _values.size()]; }
    void getSample(T& sample) override { sample = (*this)(); }
    void getSequence(unsigned int n, T* samples) override
    {
        for (unsigned int i = 0; i < n; ++i)
            samples[i] = (*this)();
    }
    T getEfficientWidth() const override { return T(6); }
    T getEfficientMin() const override { return T(-2); }
    T getEfficientMax() const override { return T(4); }
    T getEfficientFraction() const override { return T(0.5); }
    T getPdf(T x) const override { return x * T(2); }
    void restart() override
    {
        draws = 0;
        if (journal != nullptr)
            *journal += name;
    }
    char const* getName() const override { return "Scripted"; }

    std::size_t draws = 0;
    std::string* journal = nullptr;
    char name = 'r';

private:
    std::vector<T> _values;
};

/// The same for points; its sequence holds other points than its single draws if `sequence` isn't empty.
template <class T>
class ScriptedBiRng : public Vn::RnBiRng<T>
{
public:
    using Points = std::vector<std::pair<T, T>>;

    explicit ScriptedBiRng(Points points, Points sequence = {})
        : _points(std::move(points)), _sequence(std::move(sequence))
    {}

    void getSample(T& x, T& y) override
    {
        auto const& point = _points[draws++ % _points.size()];
        x = point.first;
        y = point.second;
    }
    void getSequence(unsigned int n, T* x, T* y) override
    {
        for (unsigned int i = 0; i < n; ++i) {
            if (_sequence.empty()) {
                getSample(x[i], y[i]);
            } else {
                x[i] = _sequence[i % _sequence.size()].first;
                y[i] = _sequence[i % _sequence.size()].second;
            }
        }
    }
    void getEfficientWidth(T& x, T& y) const override { x = y = T(1); }
    void getEfficientMin(T& x, T& y) const override { x = y = T(0); }
    void getEfficientMax(T& x, T& y) const override { x = y = T(1); }
    T getEfficientFraction() const override { return T(1); }
    T getPdf(T, T) const override { return T(1); }
    void restart() override
    {
        draws = 0;
        ++restarts;
    }
    char const* getName() const override { return "Scripted"; }

    std::size_t draws = 0;
    int restarts = 0;

private:
    Points _points;
    Points _sequence;
};

}  // namespace VnTest
