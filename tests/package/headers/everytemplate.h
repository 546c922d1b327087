// What a program makes of the templates in the public headers; stands behind them in a source that has included all. Every
// member of a template is compiled, not only those that a test happens to call.
#pragma once

#include <chrono>
#include <ostream>
#include <sstream>
#include <string>

namespace VnInit
{
class everyTemplate
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::everyTemplate> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

namespace EveryTemplate
{
struct Value
{
    int number = 0;
    bool operator==(Value const& other) const { return number == other.number; }
    bool operator<(Value const& other) const { return number < other.number; }
};

/// An exception, a singleton and a setting that both libraries have.
class Failure : public std::exception
{
public:
    char const* what() const noexcept override { return "failure"; }
};
}  // namespace EveryTemplate

template class Vn::ArrayPtr<EveryTemplate::Value>;
template class Vn::ArrayPtrRet<EveryTemplate::Value>;
template class Vn::ObjPtr<EveryTemplate::Value>;
template class Vn::ObjPtrRet<EveryTemplate::Value>;
template class Vn::List<EveryTemplate::Value>;
template class Vn::Vector<EveryTemplate::Value>;
template class Vn::Vector<std::string>;
template class Vn::InSingleton<EveryTemplate::Value>;
template class Vn::InVariable<std::string>;
template class Vn::InVariable<std::chrono::milliseconds>;
template class Vn::Timer<Vn::HwIntervalTimer>;
template class Vn::Profiler<Vn::TodIntervalTimer>;
template class Vn::Interval<float>;
template class Vn::InValueForm<std::chrono::milliseconds>;

namespace EveryTemplate
{
/// One line of what the library computes, so that both are seen to have the same.
inline std::string describe()
{
    std::ostringstream text;
    Vn::Vector<std::string> words;
    words.push_back("one");
    words.push_back("two");
    Vn::RnLecuyerUniformRng<double> uniform;
    Vn::RnGaussianRng<double> gaussian(&uniform);
    double sample = 0;
    gaussian.getSample(sample);
    text << words.size() << words.back() << ' ' << Vn::Rational(6, 4) << ' ' << Vn::DtTime(5, Vn::Rational(25, 1))
         << ' ' << Vn::Interval<float>(1, 2) << ' ' << sample << ' '
         << Vn::InValueForm<std::chrono::milliseconds>::read("1.5s").count();
    return text.str();
}
}  // namespace EveryTemplate
