// projector: two packages that start in the order of their dependencies, and a singleton. Its page is docs/packages.md.
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/insingleton.h>

#include <iostream>

/// What the package `lamp` makes and the package `film` needs.
struct Lamp
{
    int watts;
};

namespace VnInit
{
class lamp
{};
class film
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::film> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
    void performInitialize() override;
    void performFinalize() override;
};

template <>
class Vn::InInit<VnInit::lamp> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
    void performInitialize() override;
    void performFinalize() override;
};

VN_DEFINE_PACKAGE(film, VnInit::lamp);
VN_DEFINE_PACKAGE(lamp, VnInit::base);

static Vn::InInit<VnInit::film> filmPackage;
static Vn::InInit<VnInit::lamp> lampPackage;

void Vn::InInit<VnInit::lamp>::performInitialize()
{
    InSingleton<Lamp>::initialize(new Lamp{150});
    std::cout << "lamp on\n";
}

void Vn::InInit<VnInit::lamp>::performFinalize()
{
    InSingleton<Lamp>::finalize();
    std::cout << "lamp off\n";
}

void Vn::InInit<VnInit::film>::performInitialize()
{
    std::cout << "film in, before " << InSingleton<Lamp>::getInstance().watts << " watts\n";
}

void Vn::InInit<VnInit::film>::performFinalize()
{
    std::cout << "film out\n";
}

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    std::cout << "the show\n";
}
