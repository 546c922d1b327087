// Samplers, histograms and exact numbers, which need nothing of the system but memory; and the list of all acts.
#include "act.h"

#include <base/dttime.h>
#include <base/dttimeutil.h>
#include <base/exinternalerror.h>
#include <base/rngaussianrng.h>
#include <base/rnhaltonmultirng.h>
#include <base/rnhistogrambirng.h>
#include <base/rnhistogramrng.h>
#include <base/rnhistogramspherical.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnniederreitermultirng.h>
#include <base/rnnumrecuniformrng.h>
#include <base/vector.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace Vn;

namespace VnTest
{
namespace
{
class Samplers : public Act
{
public:
    void run() override
    {
        RnLecuyerUniformRng<double> uniform;
        const RnNumRecUniformRng<double> other(7u);
        RnGaussianRng<double> gaussian(&uniform);
        RnNiederreiterMultiRng<double> niederreiter;
        const RnHaltonMultiRng<float, 3> halton;
        double point[4] = {};
        niederreiter.getSample(point);
        gaussian.getSample(point[0]);
    }
};

/// Counted, copied, assigned, drawn from and dumped.
class Histograms : public Act
{
public:
    void run() override
    {
        RnLecuyerUniformRng<double> uniform;
        RnHistogram<double> line(50, 0.0, 1.0);
        line.addSamples(uniform, 100);
        RnHistogram<double> target(4, -1.0, 2.0);
        target = line;
        RnHistogramRng<double> drawn(target, &uniform);
        double sample = 0.0;
        drawn.getSample(sample);
        RnHistogramBi<double> area(9, 7, 0.0, 1.0, 0.0, 1.0);
        area.addSample(0.5, 0.5, 3.0);
        RnHistogramBiRng<double> pairs(area, &uniform);
        RnHistogramSpherical<double> sphere(9, 7);
        sphere.addSampleCosine(0.5, 1.0);
        std::ostringstream text;
        text.exceptions(std::ios::badbit);
        line.dump(text);
        area.dump(text);
        sphere.dump(text);
        _text = text.str();
    }

    std::string findFault(bool hasThrown) override
    {
        if (hasThrown)
            return "";
        if (_first.empty())
            _first = _text;
        return _first != _text ? "another dump" : "";
    }

private:
    std::string _first, _text;
};

/// Containers and the copy of an exception.
class Ownership : public Act
{
public:
    void run() override
    {
        Vector<std::string> texts{"a text too long for the small buffer of a string", "b"};
        texts.push_back("another text too long for the small buffer of a string");
        const Vector<std::string> copy = texts;
        const std::unique_ptr<ExBase> clone(ExInternalError("src/base/x", 1, "text").clone());
    }
};

template <class Kind>
NamedAct makeNamed(char const* name)
{
    return {name, [] { return std::make_unique<Kind>(); }, false};
}
}  // namespace

void addNumberActs(std::vector<NamedAct>& acts)
{
    acts.push_back(makeNamed<Samplers>("samplers"));
    acts.push_back(makeNamed<Histograms>("histograms"));
    acts.push_back(makeNamed<Ownership>("ownership"));
}

std::vector<NamedAct> const& getActs()
{
    static const std::vector<NamedAct> all = [] {
        std::vector<NamedAct> acts;
        addStartActs(acts);
        addLogActs(acts);
        addFileActs(acts);
        addSystemActs(acts);
        addNumberActs(acts);
        return acts;
    }();
    return all;
}

}  // namespace VnTest
