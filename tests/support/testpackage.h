#pragma once

#include <base/exbase.h>
#include <base/ininitmgr.h>
#include <base/inpackageinit.h>
#include <base/inpackages.h>

#include <functional>
#include <initializer_list>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace VnTest
{

/// A package made at run time, one type for each number, that tells of its hooks on the standard output stream.
///
///     NumberedPackage<1> needed("needed");
///     NumberedPackage<2> needing("needing", {NumberedPackage<1>::getType()});
template <int number>
class NumberedPackage : public Vn::InPackageInit
{
public:
    explicit NumberedPackage(char const* name, std::vector<std::type_info const*> const& dependencies = {})
        : InPackageInit(name)
    {
        registerPackage();
        for (std::type_info const* type : dependencies)
            addDependency(type);
    }

    static std::type_info const* getType() { return &typeid(NumberedPackage); }

    void performInitialize() override
    {
        std::cout << "start " << getName() << "\n";
        if (onStart)
            onStart();
    }

    void performFinalize() override
    {
        std::cout << "stop " << getName() << "\n";
        if (onStop)
            onStop();
    }

    void setInitialized(bool initialized) override { isInitialized = initialized; }

    std::function<void()> onStart;
    std::function<void()> onStop;
    bool isInitialized = false;
};

/// The library brought up without arguments, and brought down again.
inline void start()
{
    int argc = 0;
    char const* const* argv = nullptr;
    Vn::InInitMgr::getInstance().initialize(argc, argv);
}

inline void stop()
{
    Vn::InInitMgr::getInstance().finalize();
}

/// The library brought up for the rest of this process, by whichever test needs it first, and down at its end.
inline void startOnce()
{
    static const struct Started
    {
        Started() { start(); }
        ~Started() { stop(); }
    } started;
}

/// Brings the library up with arguments; the program's name comes first.
inline void startWith(std::initializer_list<char const*> arguments)
{
    int argc = static_cast<int>(arguments.size());
    char const* const* argv = arguments.begin();
    Vn::InInitMgr::getInstance().initialize(argc, argv);
}

/// Prints what became of a call, once it is over: nothing, or the reason of an exception of ours.
template <class Call>
void report(char const* what, Call const& call)
{
    std::string result = "ok";
    try {
        call();
    } catch (Vn::ExBase const& failure) {
        result = failure.getReason();
    } catch (...) {
        result = "something else";
    }
    std::cout << what << ": " << result << "\n";
}

}  // namespace VnTest
