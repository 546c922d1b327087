#include "linked.h"

#include <iostream>

VN_DEFINE_PACKAGE(testLinked, VnInit::base);

namespace
{
Vn::InInit<VnInit::testLinked> package;
}

void Vn::InInit<VnInit::testLinked>::performInitialize()
{
    std::cout << "start testLinked" << std::endl;
}

void Vn::InInit<VnInit::testLinked>::performFinalize()
{
    std::cout << "stop testLinked" << std::endl;
}

namespace Linked
{

Ex::Ex(char const* file, int line) : Vn::ExBase(file, line) {}

Ex::ExBorder::ExBorder(char const* file, int line, char const* thrower) : std::logic_error(""), Ex(file, line)
{
    setReason("thrown by ");
    setReason(thrower);
}

VN_EX_DEFINE_MEMBERS(Ex::ExBorder);

void throwBorder()
{
    throw Ex::ExBorder("src/linked", __LINE__, "linked");
}

char const* catchFrom(void (*thrower)(), int widest)
{
    try {
        switch (widest) {
        case 0:
            try {
                thrower();
            } catch (Ex::ExBorder const&) {
                return "concrete";
            }
            break;
        case 1:
            try {
                thrower();
            } catch (Ex const&) {
                return "family";
            }
            break;
        case 2:
            try {
                thrower();
            } catch (std::logic_error const&) {
                return "standard";
            }
            break;
        default:
            try {
                thrower();
            } catch (Vn::ExBase const&) {
                return "root";
            }
        }
    } catch (...) {
        return "something else";
    }
    return "nothing";
}

}  // namespace Linked
