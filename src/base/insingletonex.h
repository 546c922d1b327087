#pragma once

#include <base/inex.h>

namespace Vn
{

/// Family of the exceptions of InSingleton: the singleton's type name and what is wrong with its state.
/// Tests: tests/base/insingletontest.cpp.
class VN_BASE_EXPORT InSingletonEx : public InEx
{
public:
    class ExNotInitialized;
    class ExAlreadyInitialized;
    class ExAlreadyDestroyed;

protected:
    /// The reason is `name`, a blank, `state` and a full stop.
    InSingletonEx(char const* file, int line, char const* name, char const* state);
};

/// Used before its package started, or after it stopped.
class VN_BASE_EXPORT InSingletonEx::ExNotInitialized : public std::runtime_error, public InSingletonEx
{
public:
    ExNotInitialized(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// Made a second time.
class VN_BASE_EXPORT InSingletonEx::ExAlreadyInitialized : public std::runtime_error, public InSingletonEx
{
public:
    ExAlreadyInitialized(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// Made or destroyed again after its end.
class VN_BASE_EXPORT InSingletonEx::ExAlreadyDestroyed : public std::runtime_error, public InSingletonEx
{
public:
    ExAlreadyDestroyed(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

}  // namespace Vn
