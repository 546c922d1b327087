#pragma once

#include <base/arrayptr.h>
#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of start, stop and settings. Names in messages are cut to 256 characters; null counts as
/// empty.
/// Tests: tests/base/inextest.cpp.
class VN_BASE_EXPORT InEx : public ExBase
{
public:
    class ExPackageNotRegistered;
    class ExDependencyCycle;
    class ExPackageInitError;
    class ExRegAfterInit;
    class ExReinitWithoutGuard;
    class ExDoubleInit;
    class ExFinaliseBeforeInit;
    class ExDoubleFinalise;
    class ExHandleAlreadyInUse;
    class ExUninitializedObject;
    class ExInvalidObject;
    class ExContextAliasAlreadyDefined;
    class ExVariableAlreadyInitialized;
    class ExNoNewContextAliasAfterInit;

protected:
    InEx(char const* file, int line);
};

/// A package names a dependency that nobody registered. The reason has its run-time type name, as the compiler writes it.
class VN_BASE_EXPORT InEx::ExPackageNotRegistered : public std::runtime_error, public InEx
{
public:
    ExPackageNotRegistered(char const* file, int line, char const* package);

    /// The missing package as sources write its tag, for a program's message: "VnInit::palette". A type that is no
    /// InInit<Tag> has its own name; what is no run-time type name, or one of over 511 characters, stays as it is.
    ArrayPtrRet<char> getPackageTag() const;

    VN_EX_MEMBERS();

private:
    char _package[512];
};

/// Packages depend on each other in a ring; InInitMgr::reportCycles() tells which.
class VN_BASE_EXPORT InEx::ExDependencyCycle : public std::logic_error, public InEx
{
public:
    ExDependencyCycle(char const* file, int line);

    VN_EX_MEMBERS();
};

/// For a package's own hook that refuses to start.
class VN_BASE_EXPORT InEx::ExPackageInitError : public std::runtime_error, public InEx
{
public:
    ExPackageInitError(char const* file, int line, char const* package);

    VN_EX_MEMBERS();
};

/// For clients that forbid late packages altogether.
class VN_BASE_EXPORT InEx::ExRegAfterInit : public std::runtime_error, public InEx
{
public:
    ExRegAfterInit(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A package was registered after the start, outside an InReinitGuard.
class VN_BASE_EXPORT InEx::ExReinitWithoutGuard : public std::runtime_error, public InEx
{
public:
    ExReinitWithoutGuard(char const* file, int line);

    VN_EX_MEMBERS();
};

/// For clients that forbid a second start.
class VN_BASE_EXPORT InEx::ExDoubleInit : public std::runtime_error, public InEx
{
public:
    ExDoubleInit(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The stop was called before the start.
class VN_BASE_EXPORT InEx::ExFinaliseBeforeInit : public std::runtime_error, public InEx
{
public:
    ExFinaliseBeforeInit(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The stop was called again after it had ended.
class VN_BASE_EXPORT InEx::ExDoubleFinalise : public std::runtime_error, public InEx
{
public:
    ExDoubleFinalise(char const* file, int line);

    VN_EX_MEMBERS();
};

/// Two variables of one handle.
class VN_BASE_EXPORT InEx::ExHandleAlreadyInUse : public std::runtime_error, public InEx
{
public:
    ExHandleAlreadyInUse(char const* file, int line, char const* handle);

    VN_EX_MEMBERS();
};

/// A variable (named by its handle) or an alias (named by its description) was read outside its life.
class VN_BASE_EXPORT InEx::ExUninitializedObject : public std::logic_error, public InEx
{
public:
    ExUninitializedObject(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// An alias without a value was read.
class VN_BASE_EXPORT InEx::ExInvalidObject : public std::logic_error, public InEx
{
public:
    ExInvalidObject(char const* file, int line, char const* description);

    VN_EX_MEMBERS();
};

/// An option or an environment variable was declared twice.
class VN_BASE_EXPORT InEx::ExContextAliasAlreadyDefined : public std::logic_error, public InEx
{
public:
    ExContextAliasAlreadyDefined(char const* file, int line, char const* key);

    VN_EX_MEMBERS();
};

/// An override came after its variable had taken a value.
class VN_BASE_EXPORT InEx::ExVariableAlreadyInitialized : public std::logic_error, public InEx
{
public:
    ExVariableAlreadyInitialized(char const* file, int line, char const* handle);

    VN_EX_MEMBERS();
};

/// An alias was made after the aliases of its kind had taken their values.
class VN_BASE_EXPORT InEx::ExNoNewContextAliasAfterInit : public std::logic_error, public InEx
{
public:
    ExNoNewContextAliasAfterInit(char const* file, int line, char const* description, char const* key);

    VN_EX_MEMBERS();
};

}  // namespace Vn
