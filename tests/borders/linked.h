#pragma once

#include <base/exbase.h>
#include <base/ininit.h>
#include <base/inpackages.h>

#include <stdexcept>

// A small library of the family, with an export macro of its own.
#if defined(_WIN32)
#    if defined(VN_LINKED_BUILDING)
#        define VN_LINKED_EXPORT __declspec(dllexport)
#    else
#        define VN_LINKED_EXPORT __declspec(dllimport)
#    endif
#else
#    define VN_LINKED_EXPORT __attribute__((visibility("default")))
#endif

namespace VnInit
{
class testLinked
{};
}  // namespace VnInit

template <>
class VN_LINKED_EXPORT Vn::InInit<VnInit::testLinked> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performInitialize() override;
    void performFinalize() override;
};

namespace Linked
{

/// Family and concrete class that cross the borders of three modules.
class VN_LINKED_EXPORT Ex : public Vn::ExBase
{
public:
    class ExBorder;

protected:
    Ex(char const* file, int line);
};

class VN_LINKED_EXPORT Ex::ExBorder : public std::logic_error, public Ex
{
public:
    ExBorder(char const* file, int line, char const* thrower);
    VN_EX_MEMBERS();
};

VN_LINKED_EXPORT void throwBorder();

/// How this library catches what `thrower` throws: "concrete", "family", "standard", "root" or "nothing", by trying
/// the wider ones only if `widest` asks for them.
VN_LINKED_EXPORT char const* catchFrom(void (*thrower)(), int widest);

}  // namespace Linked
