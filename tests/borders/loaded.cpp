// A library that is loaded while the program runs. It holds a second object of the linked library's package.
#include "linked.h"

#include <iostream>

namespace VnInit
{
class testLoaded
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::testLoaded> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override { std::cout << "start testLoaded" << std::endl; }
    void performFinalize() override { std::cout << "stop testLoaded" << std::endl; }
};

VN_DEFINE_PACKAGE(testLoaded, VnInit::base, VnInit::testLinked);

namespace
{
Vn::InInit<VnInit::testLoaded> package;
Vn::InInit<VnInit::testLinked> second;
}  // namespace

#if defined(_WIN32)
#    define LOADED_EXPORT extern "C" __declspec(dllexport)
#else
#    define LOADED_EXPORT extern "C" __attribute__((visibility("default")))
#endif

LOADED_EXPORT void throwFromLoaded()
{
    throw Linked::Ex::ExBorder("src/loaded", __LINE__, "loaded");
}

LOADED_EXPORT char const* catchInLoaded(void (*thrower)())
{
    try {
        thrower();
    } catch (std::logic_error const& caught) {
        return dynamic_cast<Linked::Ex const*>(&caught) != nullptr ? "standard and family" : "standard";
    } catch (...) {
        return "something else";
    }
    return "nothing";
}

LOADED_EXPORT std::type_info const* typeOfLinked()
{
    Vn::InPackageInit const& object = second;
    return &typeid(object);
}
