#pragma once

#include <base/inex.h>

namespace Vn
{

/// Base of the exceptions of InSingleton. The message has the singleton's type name and what is wrong with its state:
///
///     "N2Vn11InSingletonI7PaletteEE is not initialized."
///
/// The name is that of `InSingleton<T>`, as the compiler spells it. Same threads and ownership as InEx.
/// Tests: tests/base/insingletontest.cpp.
class VN_BASE_EXPORT InSingletonEx : public InEx
{
public:
    class ExNotInitialized;
    class ExAlreadyInitialized;
    class ExAlreadyDestroyed;

protected:
    /// The reason is `name`, a blank, `state` and a full stop. Null counts as empty.
    InSingletonEx(char const* file, int line, char const* name, char const* state);
};

/// The singleton was used before its package started, or after that package stopped.
class VN_BASE_EXPORT InSingletonEx::ExNotInitialized : public std::runtime_error, public InSingletonEx
{
public:
    /// The message is "NAME is not initialized.".
    ExNotInitialized(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// InSingleton::initialize() was called while an instance exists.
class VN_BASE_EXPORT InSingletonEx::ExAlreadyInitialized : public std::runtime_error, public InSingletonEx
{
public:
    /// The message is "NAME has already been initialized.".
    ExAlreadyInitialized(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// InSingleton::initialize() or finalize() was called after the instance had been destroyed.
class VN_BASE_EXPORT InSingletonEx::ExAlreadyDestroyed : public std::runtime_error, public InSingletonEx
{
public:
    /// The message is "NAME has already been destroyed.".
    ExAlreadyDestroyed(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

}  // namespace Vn
