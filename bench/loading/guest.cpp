// A library with ten packages, which benchloading loads and unloads.
#include <base/ininit.h>
#include <base/inpackages.h>

namespace
{
template <int number>
class Guest : public Vn::InPackageInit
{
public:
    Guest() : InPackageInit("guest")
    {
        registerPackage();
        addDependencies<VnInit::base>();
    }
};

Guest<0> guest0;
Guest<1> guest1;
Guest<2> guest2;
Guest<3> guest3;
Guest<4> guest4;
Guest<5> guest5;
Guest<6> guest6;
Guest<7> guest7;
Guest<8> guest8;
Guest<9> guest9;
}  // namespace
